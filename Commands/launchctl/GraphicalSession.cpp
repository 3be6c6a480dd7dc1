// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/launchctl/GraphicalSession.h"

#include "Commands/Jobs/LaunchSession.h"
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Files/FolderEntries.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

// What one of logind's questions answers with; empty for none.
template <typename Question, typename... Arguments>
QByteArray answer(Question question, Arguments... arguments)
{
    char *text = nullptr;
    const QByteArray result(question(arguments..., &text) >= 0 ? text : nullptr);
    std::free(text); // NOLINT(*-no-malloc,*-owning-memory)
    return result;
}

QByteArrayList environmentOf(pid_t pid)
{
    constexpr qint64 maxSize = qint64(4) << 20;
    const auto contents =
        platform::contentsOfFile(QStringLiteral("/proc/%1/environ").arg(pid), maxSize);
    return contents ? contents->split('\0') : QByteArrayList();
}

} // namespace

std::optional<GraphicalSession> GraphicalSession::current()
{
    // The user's foremost one, a graphical one before all others.
    const auto id = answer(::sd_uid_get_display, ::getuid());
    const auto type = answer(::sd_session_get_type, id.constData());
    const auto state = answer(::sd_session_get_state, id.constData());
    const auto isWayland = type == "wayland";
    if (id.isEmpty() || state == "closing" || !(isWayland || type == "x11")) {
        return std::nullopt;
    }
    return GraphicalSession(id, isWayland);
}

bool GraphicalSession::hasDisplayIn(const QByteArrayList &environment) const
{
    const QByteArray name(m_isWayland ? "WAYLAND_DISPLAY=" : "DISPLAY=");
    return std::any_of(environment.begin(), environment.end(), [&](const auto &text) {
        return text.startsWith(name) && text.size() > name.size();
    });
}

QByteArrayList GraphicalSession::displayOfPrograms() const
{
    std::vector<pid_t> processes;
    for (const auto &name : platform::namesInFolder(QStringLiteral("/proc"))) {
        processes.push_back(name.toInt());
    }
    // The first ones first: a display inside the session's own comes later.
    std::sort(processes.begin(), processes.end());
    for (const auto pid : processes) {
        if (pid <= 0 || answer(::sd_pid_get_session, pid) != m_id) {
            continue;
        }
        const auto environment = environmentOf(pid);
        if (hasDisplayIn(environment)) {
            return platform::displayVariablesIn(environment);
        }
    }
    return {};
}

SessionMonitor::SessionMonitor()
{
    sd_login_monitor *monitor = nullptr;
    if (::sd_login_monitor_new("session", &monitor) >= 0) {
        m_monitor.reset(monitor);
    }
}

void SessionMonitor::wait(int milliseconds) const
{
    pollfd event{::sd_login_monitor_get_fd(m_monitor.get()), POLLIN, 0};
    ::poll(&event, 1, milliseconds);
    ::sd_login_monitor_flush(m_monitor.get());
}
