// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Pane/Ostrel_Preference_Pane.h"

#include "Ostrel/ListenerPreferences.h"
#include "Ostrel/OstrelNames.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/TextFormat.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Shared/Support/ZQSoftwareUpdate.h"
#include "ui_Ostrel_Preference_Pane.h"

#include <QFileInfo>
#include <QPointer>

namespace {

// From the file itself: an update of the pane may have replaced it since the bundle was opened.
QString versionIn(const platform::Bundle &bundle)
{
    const auto info =
        platform::dictionaryFromFile(bundle.path() + QStringLiteral("/Contents/Info.plist"));
    const QVariant version =
        info.value_or(QVariantMap()).value(QStringLiteral("CFBundleShortVersionString"));
    return version.isValid() ? platform::format(QStringLiteral("%@"), version) : QString();
}

} // namespace

Ostrel_Preference_Pane::Ostrel_Preference_Pane(const platform::Bundle &bundle)
    : PreferencePane(bundle), m_ui(std::make_unique<Ui::Ostrel_Preference_Pane>()),
      m_startWatch(m_workers, [this](const QString &failure) {
          performLater([this, failure] { m_ui->noticeFrame->showFailedStart(failure); });
      })
{
    m_messageTimer.setSingleShot(true);
    m_messageTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_messageTimer, &QTimer::timeout, this, &Ostrel_Preference_Pane::timedOut);
    m_statusTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_statusTimer, &QTimer::timeout, this, &Ostrel_Preference_Pane::fetchCurrentStatus);
    connect(&m_statusTimer, &QTimer::timeout, &m_preferencesWatch, // its folder may be made yet
            [this] { m_preferencesWatch.follow(listenerPreferences::filePath()); });
    connect(&m_preferencesWatch, &FileWatch::changed, this,
            &Ostrel_Preference_Pane::readChangedPreferences);
}

Ostrel_Preference_Pane::~Ostrel_Preference_Pane()
{
    if (m_mainView != nullptr) {
        savePortBeforeClosing();
        m_ui->masterSwitch->disconnect(this);
    }
    m_statusTimer.stop();
    m_statusObserver.reset();
    // The last calls of the workers onto the main thread still find the controls.
    m_workers.end();
    m_authorization.end();
    invalidateTimeOut();
}

QWidget *Ostrel_Preference_Pane::loadMainView(QWidget *parent)
{
    // The slowest step of the opening, and independent of the controls: it runs beside their
    // making.
    readInterfacesAhead();
    m_mainView = new QWidget(parent);
    m_ui->setupUi(m_mainView);
    m_ui->keyboard->setBundle(bundle());
    m_ui->keyboard->setTabOrderAfter(m_ui->volFeedbackCheck); // the page before it ends there
    m_authorization.follow(m_mainView);
    connectControls();
    const QPointer<QWidget> view(m_mainView);
    mainViewDidLoad();
    return view;
}

void Ostrel_Preference_Pane::mainViewDidLoad()
{
    m_isLoading.store(true, std::memory_order_relaxed);
    if (QFileInfo::exists(jobFilePath()) && isProcessRunning(names::listener)) {
        updateStatus(names::statusNotification(names::running));
    }
    fetchCurrentStatus();
    m_preferencesWatch.follow(listenerPreferences::filePath()); // before it is read: no gap
    const QVariantMap preferences = listenerPreferences::load();
    showPreferences(preferences);
    updateEnabledStatus();
    m_statusObserver = std::make_unique<platform::DistributedObserver>(
        names::statusUpdate,
        [this](const platform::Notification &notification) { updateStatus(notification); });
    startStatusPoll();
    m_ui->masterOffLabel->setBackgroundStyle(EmbossedLabel::BackgroundStyle::Raised);
    m_ui->masterOnLabel->setBackgroundStyle(EmbossedLabel::BackgroundStyle::Raised);
    m_ui->versionLabel->setText(versionIn(bundle()));
    connect(m_ui->masterSwitch, &ZQSwitch::onChanged, this, &Ostrel_Preference_Pane::observeSwitch);
    const QPointer<Ostrel_Preference_Pane> self(this);
    populateNetworkInterfaces();
    if (self == nullptr) {
        return;
    }
    if (!m_workers.start([this] { reloadClientIfNew(); })) {
        m_isLoading.store(false, std::memory_order_relaxed);
    }
    if (listenerPreferences::isOnUnlessZero(preferences, listenerPreferences::autoUpdateCheck)) {
        m_workers.start([] { ZQSoftwareUpdate::automaticallyCheckForUpdates(); });
    }
}

QStringList Ostrel_Preference_Pane::pages() const
{
    return {QStringLiteral("general"), QStringLiteral("keyboard"), QStringLiteral("network"),
            QStringLiteral("security")};
}

bool Ostrel_Preference_Pane::showPage(const QString &name)
{
    auto *page = pages().contains(name) ? m_ui->pages->findChild<QWidget *>(name) : nullptr;
    if (page == nullptr) {
        return false;
    }
    if (page == m_ui->keyboard) {
        m_ui->keyboard->load();
    }
    m_ui->pages->setCurrentWidget(page);
    return true;
}

QString Ostrel_Preference_Pane::jobFilePath()
{
    return ZQLocalPaths::libraryDirectory(Domain::Local) + QStringLiteral("/LaunchAgents/") +
           names::listenerFile;
}

void Ostrel_Preference_Pane::observeSwitch()
{
    if (!isLoading() && !isProcessing()) {
        enableDisableClient();
    }
}

void Ostrel_Preference_Pane::enableDisableClient()
{
    if (!m_ui->masterSwitch->enabled()) {
        return;
    }
    disableInterface();
    const auto isOn = m_ui->masterSwitch->isOn();
    if (!m_workers.start([this, isOn] { isOn ? setupClient() : stopClient(); })) {
        performLater([this] { endClientOperation(); });
    }
}

bool Ostrel_Preference_Pane::isListenerUp() const
{
    static const QStringList downTexts{
        QStringLiteral("Status: Disconnected"), QStringLiteral("Status: Timed out"),
        QStringLiteral("Status: Not loaded"), QStringLiteral("Status: Relaunching...")};
    return QFileInfo::exists(jobFilePath()) && !downTexts.contains(m_ui->statusLabel->text());
}

void Ostrel_Preference_Pane::updateEnabledStatus(ChangeSwitch changeSwitch)
{
    m_ui->masterSwitch->setEnabled(true);
    if (changeSwitch == ChangeSwitch::Yes) {
        // A move made here reaches observeSwitch() as the user's own does, and so starts or stops
        // the listener while nothing else is under way: it does what the user sees.
        const bool up = isListenerUp();
        m_ui->masterSwitch->setOn(up, Animated::No);
        if (!up) {
            updateStatus(names::statusNotification(names::notLoaded));
        }
    }
    m_ui->networkCustomPortText->setEnabled(m_ui->networkCustomPortCheck->isChecked());
    m_ui->autoUpdateCheck->update();
}

void Ostrel_Preference_Pane::disableInterface()
{
    m_ui->masterSwitch->setEnabled(false);
}
