// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// Notifications to and from the listener, the status line and its time-outs.
#include "Ostrel/OstrelNames.h"
#include "Platform/Core/Text/TextFormat.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Preference Pane/Pane/Ostrel_Preference_Pane.h"
#include "ui_Ostrel_Preference_Pane.h"

#include <QPointer>

using namespace std::chrono_literals;

namespace {

constexpr auto pollInterval = 10s;
constexpr auto answerTimeOut = 10s;

std::chrono::milliseconds lengthOfSecond = 1000ms;

// More than a pass of the event loop puts between a poll and the start of its time-out.
std::chrono::milliseconds dueTolerance()
{
    return lengthOfSecond / 4;
}

} // namespace

void Ostrel_Preference_Pane::setLengthOfSecond(std::chrono::milliseconds length)
{
    lengthOfSecond = length;
}

std::chrono::milliseconds Ostrel_Preference_Pane::inPaneTime(std::chrono::seconds interval)
{
    return interval.count() * lengthOfSecond;
}

void Ostrel_Preference_Pane::startStatusPoll()
{
    m_statusTimer.start(inPaneTime(pollInterval));
}

void Ostrel_Preference_Pane::updateStatus(const platform::Notification &notification)
{
    platform::performOnMainThreadAndWait([this] { invalidateTimeOut(); });
    const QVariant status = notification.userInfo.value(names::status);
    if (status.userType() != QMetaType::QString) {
        return;
    }
    const QString word = status.toString();
    m_ui->statusLabel->setText(QStringLiteral("Status: ") + word);
    m_ui->statusLabel->update();
    if (word == names::notLoaded || isProcessing()) {
        return;
    }
    updateEnabledStatus(word == names::relaunching ? ChangeSwitch::No : ChangeSwitch::Yes);
}

void Ostrel_Preference_Pane::postNotification(const platform::Notification &notification)
{
    platform::postDistributedNotification(notification);
    platform::performOnMainThreadAndWait([this] { scheduleTimeOut(answerTimeOut); });
}

void Ostrel_Preference_Pane::fetchCurrentStatus()
{
    platform::postDistributedNotification({names::currentStatus, {}, {}});
    const auto arm = [this] {
        // A poll arms a time-out at the moment when the one of the poll before is due. Which of the
        // two the event loop would take first is chance, so what is due fires first: else a
        // listener that fell silent might never be noticed.
        if (m_isTimeOutOfPoll && m_messageTimer.isActive() &&
            m_messageTimer.remainingTimeAsDuration() <= dueTolerance()) {
            timedOut();
        }
        scheduleTimeOut(answerTimeOut);
        m_isTimeOutOfPoll = true;
    };
    // Not performLater(): the wait for the system profiler runs those calls, and a time-out that
    // began there could be over before the answer is read.
    QMetaObject::invokeMethod(this, arm, Qt::QueuedConnection);
}

void Ostrel_Preference_Pane::scheduleTimeOut(std::chrono::seconds interval)
{
    platform::performOnMainThreadAndWait([this] { invalidateTimeOut(); });
    m_messageTimer.start(inPaneTime(interval));
}

void Ostrel_Preference_Pane::invalidateTimeOut()
{
    m_messageTimer.stop();
    m_isTimeOutOfPoll = false;
}

void Ostrel_Preference_Pane::timedOut()
{
    platform::performOnMainThreadAndWait([this] { invalidateTimeOut(); });
    updateStatus(names::statusNotification(names::timedOut));
}

void Ostrel_Preference_Pane::performLater(std::function<void()> call)
{
    platform::performOnMainThread(
        [self = QPointer<Ostrel_Preference_Pane>(this), call = std::move(call)] {
            if (self) {
                call();
            }
        });
}
