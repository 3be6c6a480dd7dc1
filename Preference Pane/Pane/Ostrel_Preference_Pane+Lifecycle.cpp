// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// Starting, stopping and refreshing the listener, each on a worker thread of its own.
#include "Ostrel/ListenerPreferences.h"
#include "Ostrel/OstrelNames.h"
#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Processes/ProcessList.h"
#include "Platform/Core/Text/Console.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Platform/Desktop/Alerts/MainWindow.h"
#include "Preference Pane/Pane/Ostrel_Preference_Pane.h"
#include "Shared/Alerts/ZQAlert.h"
#include "Shared/Authorization/ZQAuthorization.h"
#include "Shared/Jobs/ZQLaunchd.h"
#include "Shared/Log/ZQException.h"
#include "Shared/Tasks/ZQTaskEx.h"
#include "ui_Ostrel_Preference_Pane.h"

#include <QFileInfo>

#include <mutex>

using namespace std::chrono_literals;

namespace {

// What a listener is given to come up before the time-out, and before it is started by hand.
constexpr auto launchTime = 15s;

QString listenerPath(const platform::Bundle &bundle)
{
    const auto path = bundle.path();
    return path.isEmpty() ? QString() : path + QStringLiteral("/Contents/MacOS/") + names::listener;
}

QVariantMap listenerJob(const QString &program)
{
    return {
        {QStringLiteral("Label"), names::listenerLabel},
        {QStringLiteral("Program"), program},
        {QStringLiteral("WorkingDirectory"), program.left(program.lastIndexOf(QLatin1Char('/')))},
        {QStringLiteral("RunAtLoad"), true},
        {QStringLiteral("KeepAlive"), QVariantMap{{QStringLiteral("SuccessfulExit"), false}}}};
}

// Logs the platform's exceptions under the method's name; the closing steps follow any exception.
void runLogged(const char *method, const std::function<void()> &operation,
               const std::function<void()> &closing)
{
    try {
        operation();
    } catch (const platform::Exception &exception) {
        ZQException::logException(exception, method);
    } catch (...) {
        closing();
        throw;
    }
    closing();
}

} // namespace

void Ostrel_Preference_Pane::setProcessing(bool processing)
{
    m_isProcessing.store(processing, std::memory_order_relaxed);
}

void Ostrel_Preference_Pane::runClientOperation(const char *method,
                                                const std::function<void()> &operation)
{
    // The maker wants a lock that is private to each call, which excludes nothing. The disabled
    // switch and isProcessing keep two operations apart.
    std::mutex lock;
    const std::lock_guard locked(lock);
    const AuthorizationUse use; // also beyond the pane's own
    setProcessing(true);
    runLogged(method, operation, [this] { endClientOperation(); });
}

// A refusal is the user's own and gets no message; that nobody could be asked does.
bool Ostrel_Preference_Pane::authorize()
{
    auto &authorization = ZQAuthorization::sharedController();
    if (authorization.authStart()) {
        return true;
    }
    const auto status = authorization.lastStatus();
    const auto notice =
        status == platform::AuthorizationStatus::InteractionNotAllowed
            ? tr("The administrator's password cannot be asked for: no polkit agent is running in "
                 "this session.")
        : status == platform::AuthorizationStatus::Internal
            ? tr("The administrator's password cannot be asked for on this computer. The system "
                 "log gives the reason.")
            : QString();
    platform::performOnMainThreadAndWait([this, notice] {
        notice.isNull() ? m_ui->noticeFrame->clearButFailedStart()
                        : m_ui->noticeFrame->showText(notice);
    });
    return false;
}

void Ostrel_Preference_Pane::endClientOperation()
{
    setProcessing(false);
    platform::performOnMainThreadAndWait([this] { updateEnabledStatus(); });
    // Also while logs are gathered: the maker wants the end of a start or stop to be seen.
    platform::performOnMainThreadAndWait([this] { m_ui->statusSpinner->stopAnimation(); });
}

void Ostrel_Preference_Pane::setupClient()
{
    runClientOperation("-[Ostrel_Preference_Pane setupClient]", [this] {
        platform::performOnMainThreadAndWait([this] {
            disableInterface();
            m_ui->noticeFrame->showText({});
            m_ui->statusSpinner->startAnimation();
        });
        const auto path = listenerPath(bundle());
        if (path.isNull()) {
            platform::consoleLine(
                QStringLiteral("Error - unable to determine application path. Please report this "
                               "error to Corvane."));
            ZQAlert::alertSheetWithMessageText(
                QStringLiteral("Error - unable to determine application path"),
                QStringLiteral("Please report this error to Corvane."), platform::mainWindow());
            return;
        }
        if (!authorize()) {
            return;
        }
        performLater([this] { updateStatus(names::statusNotification(names::creatingJob)); });
        QString objection;
        m_startWatch.begin();
        ZQLaunchd::startJob(names::listenerLabel, listenerJob(path), Domain::Local, JobKind::Agent,
                            ShouldAuth::Yes, names::listener, &objection);
        performLater([this] { updateStatus(names::statusNotification(names::launchingService)); });
        performLater([this] { scheduleTimeOut(launchTime); });
        m_workers.start([this] { launchClientAfterDelay(); });
        m_workers.start([this, objection] { m_startWatch.follow(objection, inPaneTime(1s)); });
    });
}

void Ostrel_Preference_Pane::stopClient()
{
    m_startWatch.end();
    runClientOperation("-[Ostrel_Preference_Pane stopClient]", [this] {
        if (!authorize()) {
            return;
        }
        platform::performOnMainThreadAndWait([this] {
            disableInterface();
            m_ui->noticeFrame->clearButFailedStart();
        });
        platform::performOnMainThreadAndWait(
            [this] { updateStatus(names::statusNotification(names::disconnecting)); });
        platform::performOnMainThreadAndWait([this] { m_ui->statusSpinner->startAnimation(); });
        platform::performOnMainThreadAndWait([this] {
            postNotification({names::disconnectClient, {}, {}});
        });
        // Cut short when the pane closes: what has been begun is still done to its end.
        m_workers.sleepFor(inPaneTime(2s));
        platform::performOnMainThreadAndWait(
            [this] { updateStatus(names::statusNotification(names::unloadingJob)); });
        ZQLaunchd::removeJob(names::listenerLabel, Domain::Local, JobKind::Agent, ShouldAuth::Yes);
        ZQTaskEx::runTask(QStringLiteral("/usr/bin/killall"), {names::listener});
    });
}

void Ostrel_Preference_Pane::launchClientAfterDelay()
{
    const auto begin = std::chrono::steady_clock::now();
    // The maker wants the thread to spin, not to sleep.
    while (std::chrono::steady_clock::now() - begin < inPaneTime(launchTime)) {
        if (platform::WorkerThreads::currentThreadShouldStop()) {
            return;
        }
    }
    const auto launch = [this] {
        const auto path = listenerPath(bundle());
        if (!isProcessRunning(names::listener)) {
            platform::consoleLine(QStringLiteral("Launching client manually"));
            ZQTaskEx::runTaskAndReturn(path, {});
        }
    };
    runLogged("-[Ostrel_Preference_Pane launchClientAfterDelay]", launch,
              [this] { platform::performOnMainThreadAndWait([this] { updateEnabledStatus(); }); });
}

void Ostrel_Preference_Pane::reloadClientIfNew()
{
    const auto reload = [this] {
        if (m_workers.sleepFor(inPaneTime(1s))) {
            reloadChangedListener();
        }
    };
    runLogged("-[Ostrel_Preference_Pane reloadClientIfNew]", reload,
              [this] { m_isLoading.store(false, std::memory_order_relaxed); });
}

void Ostrel_Preference_Pane::reloadChangedListener()
{
    QVariantMap preferences = listenerPreferences::load();
    const QVariant lastVersion = preferences.value(listenerPreferences::lastRunVersion);
    const QVariant version = bundle().infoDictionary().value(QStringLiteral("CFBundleVersion"));
    const auto jobFile = jobFilePath();
    if (lastVersion.isValid() && lastVersion.toString() != version.toString() &&
        QFileInfo::exists(jobFile)) {
        platform::postDistributedNotification({names::disconnectClient, {}, {}});
        m_workers.sleepFor(inPaneTime(1s));
        const QString launchctl = QStringLiteral("/bin/launchctl");
        ZQTaskEx::runTask(launchctl, {QStringLiteral("unload"), jobFile}, 10s);
        ZQTaskEx::runTask(launchctl, {QStringLiteral("load"), jobFile}, 10s);
    }
    if (version.isValid()) {
        preferences[listenerPreferences::lastRunVersion] = version;
    }
    listenerPreferences::write(preferences);
}

bool Ostrel_Preference_Pane::isProcessRunning(const QString &processName)
{
    if (processName.isEmpty()) {
        return false; // as the value that no process information has
    }
    const QString ending = QLatin1Char('/') + processName;
    return platform::findProcess([&](const platform::ProcessInformation &process) {
        // The maker wants the second key tested, which no process information has.
        return process.value(QStringLiteral("CFBundleExecutable")).endsWith(ending) ||
               process.value(QStringLiteral("kCFBundleNameKey")) == processName;
    });
}
