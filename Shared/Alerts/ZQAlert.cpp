// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Alerts/ZQAlert.h"

#include "Platform/Core/Threads/BackgroundThread.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Platform/Core/Threads/WorkerThreads.h"
#include "Platform/Desktop/Alerts/MainWindow.h"
#include "Shared/Log/ZQLog.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <mutex>
#include <thread>
#include <vector>

namespace {

// The sheet of an alert that nobody waits for still needs its object when it is answered, so such
// objects are never released; being reachable here, they do not look lost either.
void keepForever(const std::shared_ptr<ZQAlert> &alert)
{
    static std::mutex mutex;
    static auto *kept = new std::vector<std::shared_ptr<ZQAlert>>;
    const std::lock_guard lock(mutex);
    kept->push_back(alert);
}

void putUnlessNull(QVariantMap &dictionary, const QString &key, const QString &text)
{
    if (!text.isNull()) {
        dictionary.insert(key, text);
    }
}

} // namespace

ZQAlert::ZQAlert()
{
    if (!platform::isMainThread() && QCoreApplication::instance() != nullptr) {
        moveToThread(QCoreApplication::instance()->thread());
    }
}

ZQAlert::~ZQAlert()
{
    if (m_alert == nullptr) {
        return;
    }
    if (platform::isMainThread()) {
        setAlert(nullptr);
        return;
    }
    m_alert->disconnect(this);
    platform::performOnMainThread([panel = m_alert] {
        if (panel != nullptr) {
            panel->orderOut();
            panel->deleteLater();
        }
    });
}

qint64 ZQAlert::alertSheetWithMessageText(const QString &messageText,
                                          const QString &informativeText, QWidget *parentWindow)
{
    return alertSheetWithMessageText(messageText, {}, {}, {}, informativeText, parentWindow,
                                     nullptr, {}, Block::Yes);
}

qint64 ZQAlert::alertSheetWithMessageText(const QString &messageText, const QString &defaultButton,
                                          const QString &alternateButton,
                                          const QString &otherButton,
                                          const QString &informativeText, QWidget *parentWindow,
                                          Block block)
{
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton,
                                     informativeText, parentWindow, nullptr, {}, block);
}

qint64 ZQAlert::alertSheetWithMessageText(const QString &messageText, const QString &defaultButton,
                                          const QString &alternateButton,
                                          const QString &otherButton,
                                          const QString &informativeText, QWidget *parentWindow,
                                          QObject * /*delegate*/,
                                          const QString & /*didEndSelector*/, Block /*block*/)
{
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton,
                                     informativeText, parentWindow, nullptr, {}, Block::Yes,
                                     nullptr);
}

qint64 ZQAlert::alertSheetWithMessageText(const QString &messageText, const QString &defaultButton,
                                          const QString &alternateButton,
                                          const QString &otherButton,
                                          const QString &informativeText, QWidget *parentWindow,
                                          QObject *delegate, const QString &didEndSelector,
                                          Block block, const std::shared_ptr<ZQAlert> &alertObject)
{
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton,
                                     informativeText, parentWindow, delegate, didEndSelector, block,
                                     alertObject, {});
}

qint64 ZQAlert::alertSheetWithMessageText(const QString &messageText, const QString &defaultButton,
                                          const QString &alternateButton,
                                          const QString &otherButton,
                                          const QString &informativeText, QWidget *parentWindow,
                                          QObject *delegate, const QString &didEndSelector,
                                          Block block, const std::shared_ptr<ZQAlert> &alertObject,
                                          const QString &suppressionBinding)
{
    const auto alert = alertObject != nullptr ? alertObject : std::make_shared<ZQAlert>();
    alert->setParentWindow(parentWindow);
    alert->setDelegate(delegate != nullptr ? delegate : alert.get());
    // An end that the timer has come to already stands.
    if (!std::exchange(alert->m_mayHaveTimedOut, false)) {
        alert->setAlertEnded(false);
    }
    const auto selector = didEndSelector.isNull()
                              ? QStringLiteral("alertDidEnd:returnCode:contextInfo:")
                              : didEndSelector;
    if (!completionMethod(*alert->delegate(), selector).isValid()) {
        ZQLog::appendLog(QStringLiteral("Alert error: delegate does not respond to selector %@"),
                         selector);
        return -1;
    }

    QVariantMap dictionary;
    putUnlessNull(dictionary, QStringLiteral("messageText"), messageText);
    putUnlessNull(dictionary, QStringLiteral("defaultButtonTitle"), defaultButton);
    putUnlessNull(dictionary, QStringLiteral("alternateButtonTitle"), alternateButton);
    putUnlessNull(dictionary, QStringLiteral("otherButtonTitle"), otherButton);
    putUnlessNull(dictionary, QStringLiteral("informativeText"), informativeText);
    putUnlessNull(dictionary, QStringLiteral("didEndSelector"), selector);
    putUnlessNull(dictionary, QStringLiteral("suppressionBinding"), suppressionBinding);
    const bool hasWindows = platform::hasWindows();
    const auto begin = [&] { alert->alertSheetWithDictionary(dictionary); };
    // Without an application the main thread may have no event loop.
    hasWindows ? platform::performOnMainThreadAndWait(begin) : begin();

    if (block == Block::No) {
        keepForever(alert);
        return -1;
    }
    if (hasWindows) {
        alert->wait();
        platform::performOnMainThreadAndWait([&] { alert->setAlert(nullptr); });
    }
    return alert->returnCode();
}

qint64 ZQAlert::timedAlertSheetWithMessageText(const QString &messageText,
                                               const QString &defaultButton,
                                               const QString &alternateButton,
                                               const QString &otherButton,
                                               const QString &informativeText,
                                               QWidget *parentWindow, qint64 interval)
{
    const auto alert = std::make_shared<ZQAlert>();
    alert->m_mayHaveTimedOut = true;
    alert->startTimer(interval);
    return alertSheetWithMessageText(messageText, defaultButton, alternateButton, otherButton,
                                     informativeText, parentWindow, nullptr, {}, Block::Yes, alert);
}

void ZQAlert::defaultReturnAfterTimeInterval(qint64 seconds)
{
    endAfter(*m_outcome, seconds);
}

void ZQAlert::endAfter(Outcome &outcome, qint64 seconds)
{
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    endByDefault(outcome);
}

void ZQAlert::endByDefault(Outcome &outcome)
{
    outcome.returnCode.store(platform::AlertDefaultReturn, std::memory_order_relaxed);
    outcome.ended.store(true, std::memory_order_release);
}

// The thread is detached and owns all it touches: neither the alert nor the end of the process
// waits for it. Without a thread the main thread's event loop keeps the time.
void ZQAlert::startTimer(qint64 seconds)
{
    if (platform::startBackgroundThread(
            [outcome = m_outcome, seconds] { endAfter(*outcome, seconds); })) {
        return;
    }
    constexpr qint64 aWeek = 604800; // what a timer takes is counted in milliseconds of 32 bits
    const std::chrono::seconds time(std::clamp(seconds, qint64(0), aWeek));
    platform::performOnMainThread([outcome = m_outcome, time] {
        QTimer::singleShot(time, [outcome] { endByDefault(*outcome); });
    });
}

// Returns when the alert has ended, or at once, unanswered, if nobody can answer any more.
void ZQAlert::wait()
{
    using namespace std::chrono_literals;

    const auto ended = [this] { return alertEnded(); };
    if (platform::isMainThread()) {
        if (!platform::pumpEventsUntil(ended)) {
            endWithoutAnswer();
        }
        return;
    }
    while (!alertEnded()) {
        if (platform::WorkerThreads::currentThreadShouldStop()) {
            platform::performOnMainThreadAndWait([this] { endWithoutAnswer(); });
            return;
        }
        std::this_thread::sleep_for(200ms);
    }
}
