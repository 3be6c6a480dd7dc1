// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/ChildProcess.h"

#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Threads/MainThread.h"

#include <QCoreApplication>

#include <csignal>

namespace platform {
namespace {

Exception misuse(const QString &reason)
{
    return {QStringLiteral("NSInvalidArgumentException"), reason};
}

} // namespace

ChildProcess::~ChildProcess()
{
    reapInBackground();
}

void ChildProcess::setLaunchPath(const QString &path, const QString &executable)
{
    m_launchPath = path;
    m_executable = executable.isNull() ? path : executable;
}

std::shared_ptr<ChildExit> ChildProcess::child() const
{
    const std::lock_guard lock(m_mutex);
    return m_child;
}

std::shared_ptr<ChildExit> ChildProcess::launchedChild() const
{
    auto launched = child();
    if (launched == nullptr) {
        throw misuse(QStringLiteral("task not launched"));
    }
    return launched;
}

bool ChildProcess::isRunning() const
{
    const auto launched = child();
    return launched != nullptr && !launched->hasEnded();
}

void ChildProcess::waitUntilExit()
{
    const auto launched = launchedChild();
    if (isMainThread() && QCoreApplication::instance() != nullptr) {
        launched->waitAndPumpEvents();
    } else {
        launched->wait();
    }
}

void ChildProcess::terminate()
{
    launchedChild()->signal(SIGTERM);
}

int ChildProcess::terminationStatus() const
{
    const auto launched = launchedChild();
    if (!launched->hasEnded()) {
        throw misuse(QStringLiteral("task still running"));
    }
    return launched->status();
}

pid_t ChildProcess::processIdentifier() const
{
    return launchedChild()->processIdentifier();
}

void ChildProcess::reapInBackground()
{
    if (const auto launched = child()) {
        launched->reapInBackground();
    }
}

} // namespace platform
