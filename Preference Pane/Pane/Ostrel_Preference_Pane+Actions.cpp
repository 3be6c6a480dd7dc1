// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// What the controls do, and the simple actions of the buttons.
#include "Preference Pane/Pane/Ostrel_Preference_Pane.h"
#include "Shared/Support/ZQSoftwareUpdate.h"
#include "Shared/Support/ZQTroubleshootingUtils.h"
#include "ui_Ostrel_Preference_Pane.h"

#include <QAbstractItemView>
#include <QDesktopServices>
#include <QPointer>
#include <QStyle>
#include <QUrl>

#include <functional>
#include <memory>
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

// Calls changed when another item is chosen, and when the one that shows is chosen again: it may
// stand for one that is not there any more.
void connectMenu(QComboBox *menu, QObject *context, const std::function<void()> &changed)
{
    const auto reported = std::make_shared<int>(-1);
    QObject::connect(menu, QOverload<int>::of(&QComboBox::currentIndexChanged), context,
                     [reported, changed](int index) {
                         *reported = index;
                         changed();
                     });
    QObject::connect(menu, QOverload<int>::of(&QComboBox::activated), context,
                     [reported, changed](int index) {
                         if (std::exchange(*reported, -1) != index) {
                             changed();
                         }
                     });
    // A screen reader selects in the list without going there, and nothing would choose the item.
    // Keys and mouse do both, one after the other.
    auto *list = menu->view();
    const auto choose = [menu, list, reported] {
        const auto selected = list->selectionModel()->selectedIndexes();
        if (selected.size() == 1 && selected.first() != list->currentIndex()) {
            menu->hidePopup();
            menu->setCurrentIndex(selected.first().row());
            *reported = -1; // nothing is activated
        }
    };
    QObject::connect(list->selectionModel(), &QItemSelectionModel::selectionChanged, context,
                     choose, Qt::QueuedConnection);
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
    connectMenu(m_ui->networkInterfacePopUp, this, [this] { networkSettingChanged(); });
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

    m_ui->noticeCloseButton->setIcon(
        m_mainView->style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    connect(m_ui->noticeCloseButton, &QToolButton::clicked, m_ui->noticeFrame, &QWidget::hide);
    connect(m_ui->updateCheckButton, &QPushButton::clicked, this,
            &Ostrel_Preference_Pane::manualUpdateCheck);
    connect(m_ui->userManualButton, &QPushButton::clicked, this,
            &Ostrel_Preference_Pane::userManual);
    connect(m_ui->feedbackButton, &QPushButton::clicked, this,
            &Ostrel_Preference_Pane::leaveFeedback);
    connect(m_ui->gatherLogsButton, &QPushButton::clicked, this,
            &Ostrel_Preference_Pane::gatherLogs);
    if (!ZQSoftwareUpdate::isAvailable()) {
        disableWithReason(m_ui->updateCheckButton,
                          tr("The application “Corvane Software Update”, which checks for updates, "
                             "is not installed on this computer."));
    }
    if (manualPath().isNull()) {
        disableWithReason(m_ui->userManualButton, tr("This version comes without a manual."));
    }
}

QString Ostrel_Preference_Pane::manualPath() const
{
    return bundle().pathForResource(QStringLiteral("Ostrel User Manual"), QStringLiteral("pdf"));
}

void Ostrel_Preference_Pane::showNotice(const QString &text)
{
    const int side = m_ui->noticeLabel->fontMetrics().height() * 3 / 2;
    m_ui->noticeIcon->setPixmap(
        m_mainView->style()->standardIcon(QStyle::SP_MessageBoxInformation).pixmap(side, side));
    m_ui->noticeLabel->setText(text);
    m_ui->noticeFrame->setVisible(!text.isNull());
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
    }
}

void Ostrel_Preference_Pane::userManual()
{
    const QString path = manualPath();
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
                self->showRemarks(remarks);
            }
        });
    // Nothing more: the pane may have been closed meanwhile.
}

void Ostrel_Preference_Pane::showRemarks(const ZQGatheringRemarks &remarks)
{
    if (!remarks.failure.isNull()) {
        showNotice(tr("The logs could not be gathered: %1").arg(remarks.failure));
    } else if (!remarks.unreadableFolders.isEmpty()) {
        showNotice(tr("Not gathered, because it cannot be read: %1")
                       .arg(remarks.unreadableFolders.join(QStringLiteral("; "))));
    } else {
        showNotice({});
    }
}
