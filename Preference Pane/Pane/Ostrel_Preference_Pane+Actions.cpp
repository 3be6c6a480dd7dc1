// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// What the controls do, and the simple actions of the buttons.
#include "Platform/Core/Applications/ShowInFolder.h"
#include "Platform/Core/Text/PathText.h"
#include "Preference Pane/Pane/Ostrel_Preference_Pane.h"
#include "Shared/Support/ZQSoftwareUpdate.h"
#include "Shared/Support/ZQTroubleshootingUtils.h"
#include "ui_Ostrel_Preference_Pane.h"

#include <QDesktopServices>
#include <QEvent>
#include <QPointer>
#include <QUrl>

#include <functional>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr auto portPause = 1s;
constexpr int menuCharacters = 60; // of an interface's name; more widens no window

void disableWithReason(QPushButton *button, const QString &reason)
{
    button->setEnabled(false);
    button->setToolTip(reason);
    button->setAccessibleDescription(reason);
}

// Calls shown when the view comes into sight, also from behind another window.
class ShownFilter : public QObject {
public:
    ShownFilter(QObject *parent, std::function<void()> shown)
        : QObject(parent), m_shown(std::move(shown))
    {
    }
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Show || event->type() == QEvent::WindowActivate) {
            m_shown();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> m_shown;
};

QString manualPath(const platform::Bundle &bundle)
{
    return bundle.pathForResource(QStringLiteral("Ostrel User Manual"), QStringLiteral("pdf"));
}

// Why there is no updater, null where there is one. The button stays enabled: one that is not says
// nothing to who has no mouse.
QString lookForUpdater(const Ui::Ostrel_Preference_Pane &ui)
{
    const auto reason =
        ZQSoftwareUpdate::isAvailable()
            ? QString()
            : Ostrel_Preference_Pane::tr(
                  "The application “Corvane Software Update”, which checks for updates, is not "
                  "installed on this computer.");
    for (QWidget *control : {static_cast<QWidget *>(ui.autoUpdateCheck),
                             static_cast<QWidget *>(ui.updateCheckButton)}) {
        control->setToolTip(reason);
        control->setAccessibleDescription(reason);
    }
    ui.autoUpdateHint->setText(reason);
    ui.autoUpdateHint->setVisible(!reason.isNull());
    return reason;
}

void showRemarks(PageNotice *notice, const ZQGatheringRemarks &remarks)
{
    if (!remarks.failure.isNull()) {
        notice->showText(
            Ostrel_Preference_Pane::tr("The logs could not be gathered: %1").arg(remarks.failure));
        return;
    }
    using Pane = Ostrel_Preference_Pane;
    const auto unread = remarks.unreadableFolders.join(QStringLiteral("; "));
    const auto text =
        !unread.isEmpty() ? Pane::tr("Not gathered, because it cannot be read: %1").arg(unread)
        : !remarks.archive.isNull() ? Pane::tr("The logs are gathered in “%1”.")
                                          .arg(platform::lastPathComponent(remarks.archive))
                                    : QString();
    const auto show = [archive = remarks.archive] { platform::showInFolder(archive); };
    remarks.archive.isNull() ? notice->showText(text)
                             : notice->showText(text, Pane::tr("Show in Folder"), show);
}

} // namespace

void Ostrel_Preference_Pane::connectControls()
{
    // Not clicked, activated and textEdited: these tell of a hand's changes only, not of those that
    // a screen reader or a voice control makes.
    for (auto *box : {m_ui->autoUpdateCheck, m_ui->volFeedbackCheck,
                      m_ui->securityConfirmConnections, m_ui->securityAllowOneConnection}) {
        connect(box, &QCheckBox::toggled, this, &Ostrel_Preference_Pane::settingChanged);
    }
    for (auto *box : {m_ui->networkCustomPortCheck, m_ui->networkDisableBonjour}) {
        connect(box, &QCheckBox::toggled, this, &Ostrel_Preference_Pane::networkSettingChanged);
    }
    connect(m_ui->networkCustomPortCheck, &QCheckBox::toggled, this,
            &Ostrel_Preference_Pane::showPortHint);
    m_ui->networkInterfacePopUp->setMaximumWidth(
        m_ui->networkInterfacePopUp->fontMetrics().averageCharWidth() * menuCharacters);
    connect(m_ui->networkInterfacePopUp, &PopUpButton::chosen, this,
            &Ostrel_Preference_Pane::networkSettingChanged);
    m_portTimer.setSingleShot(true);
    m_portTimer.setInterval(portPause);
    connect(m_ui->networkCustomPortText, &QLineEdit::textChanged, this, [this] {
        showPortHint();
        // A listener that relaunched at every digit would serve nobody.
        m_portTimer.start();
    });
    connect(&m_portTimer, &QTimer::timeout, this, &Ostrel_Preference_Pane::networkSettingChanged);
    connect(m_ui->networkCustomPortText, &QLineEdit::editingFinished, this, [this] {
        if (m_portTimer.isActive()) {
            networkSettingChanged();
        }
    });

    m_ui->noticeFrame->followInTabOrder(m_ui->masterSwitch);
    connect(m_ui->updateCheckButton, &QPushButton::clicked, this,
            &Ostrel_Preference_Pane::manualUpdateCheck);
    connect(m_ui->userManualButton, &QPushButton::clicked, this,
            &Ostrel_Preference_Pane::userManual);
    connect(m_ui->feedbackButton, &QPushButton::clicked, this,
            &Ostrel_Preference_Pane::leaveFeedback);
    connect(m_ui->gatherLogsButton, &QPushButton::clicked, this,
            &Ostrel_Preference_Pane::gatherLogs);
    m_mainView->installEventFilter(new ShownFilter(this, [this] { lookForUpdater(*m_ui); }));
    lookForUpdater(*m_ui);
    if (manualPath(bundle()).isNull()) {
        disableWithReason(m_ui->userManualButton, tr("This version comes without a manual."));
    }
}

bool Ostrel_Preference_Pane::beginAction(QPushButton *button)
{
    const auto begun = m_actions.begin(button);
    if (begun) {
        m_ui->statusSpinner->startAnimation();
    }
    return begun;
}

void Ostrel_Preference_Pane::endAction(QPushButton *button)
{
    m_actions.end(button);
    if (!isProcessing() && m_actions.areNone()) {
        m_ui->statusSpinner->stopAnimation();
    }
}

void Ostrel_Preference_Pane::manualUpdateCheck()
{
    if (!beginAction(m_ui->updateCheckButton)) {
        return;
    }
    const QPointer<Ostrel_Preference_Pane> self(this);
    ZQSoftwareUpdate::launchSoftwareUpdate();
    if (self != nullptr) {
        endAction(m_ui->updateCheckButton);
        const auto reason = lookForUpdater(*m_ui);
        reason.isNull() ? m_ui->noticeFrame->clearButFailedStart()
                        : m_ui->noticeFrame->showText(reason);
    }
}

void Ostrel_Preference_Pane::userManual()
{
    const QString path = manualPath(bundle());
    if (!path.isNull()) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(path));
    }
}

void Ostrel_Preference_Pane::leaveFeedback()
{
    QDesktopServices::openUrl(
        QUrl(QStringLiteral("http://support.corvane.com/ostrel/feedback/?app=ostrel_pref_pane")));
}

void Ostrel_Preference_Pane::gatherLogs()
{
    if (!beginAction(m_ui->gatherLogsButton)) {
        return;
    }
    const QPointer<Ostrel_Preference_Pane> self(this);
    ZQTroubleshootingUtils::gatherLogsForAppsWithNames(
        {QStringLiteral("Ostrel"), QStringLiteral("OstrelListener")}, Silent::No, {},
        [self](const ZQGatheringRemarks &remarks) {
            if (self != nullptr) {
                self->endAction(self->m_ui->gatherLogsButton);
                showRemarks(self->m_ui->noticeFrame, remarks);
            }
        });
    // Nothing more: the pane may have been closed meanwhile.
}
