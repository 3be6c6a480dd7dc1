// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Listener/StandInListener.h"

#include "Ostrel/OstrelNames.h"

#include <QTimer>

using namespace std::chrono_literals;

namespace {
// Long enough for a person to read the word in between.
constexpr auto relaunchTime = 1s;
} // namespace

StandInListener::StandInListener(QString statusWord)
    : m_statusWord(std::move(statusWord)),
      m_statusRequests(names::currentStatus,
                       [this](const auto & /*request*/) { say(m_statusWord); }),
      m_disconnects(names::disconnectClient,
                    [this](const auto & /*request*/) {
                        say(names::disconnected);
                        m_isDisconnected = true;
                    }),
      m_relaunches(names::relaunchClient, [this](const auto & /*request*/) {
          say(names::relaunching);
          QTimer::singleShot(relaunchTime, this, [this] { say(m_statusWord); });
      })
{
    say(m_statusWord);
}

void StandInListener::say(const QString &word) const
{
    if (m_isDisconnected) {
        return;
    }
    platform::postDistributedNotification({names::statusUpdate, {}, {{names::status, word}}});
}
