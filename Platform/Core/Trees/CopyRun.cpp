// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/CopyRun.h"

#include "Platform/Core/Threads/BackgroundThread.h"
#include "Platform/Core/Trees/CopyItem.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>
#include <vector>

namespace platform {
namespace {

// How long the end of the application waits for what is left of cancelled copies to be removed.
constexpr auto longestWait = std::chrono::seconds(2);

struct RunningCopies {
    std::mutex mutex;
    std::vector<std::shared_ptr<CopyRun>> runs;
    bool areEndedWithApplication = false;
};

RunningCopies &running()
{
    static auto *copies = new RunningCopies; // never destroyed: a thread may still use it
    return *copies;
}

void forget(const std::shared_ptr<CopyRun> &run)
{
    const std::lock_guard lock(running().mutex);
    auto &runs = running().runs;
    runs.erase(std::remove(runs.begin(), runs.end(), run), runs.end());
}

} // namespace

CopyRun::CopyRun(QString source, QString destination)
    : m_source(std::move(source)), m_destination(std::move(destination))
{
}

int CopyRun::copy()
{
    try {
        return copyItem(m_source, m_destination, &m_progress).code();
    } catch (const std::bad_alloc &) {
        return ENOMEM;
    }
}

bool CopyRun::start(std::function<void(int error)> ended)
{
    const auto self = shared_from_this();
    {
        const std::lock_guard lock(running().mutex);
        running().runs.push_back(self);
        if (!std::exchange(running().areEndedWithApplication, true)) {
            qAddPostRoutine(endAll);
        }
    }
    const auto hasStarted = startBackgroundThread([self, ended = std::move(ended)] {
        const auto error = self->copy();
        ended(error);
        forget(self);
        const std::lock_guard lock(self->m_mutex);
        self->m_hasEnded = true;
        self->m_changed.notify_all();
    });
    if (!hasStarted) {
        forget(self);
    }
    return hasStarted;
}

void CopyRun::endAll()
{
    std::vector<std::shared_ptr<CopyRun>> runs;
    {
        const std::lock_guard lock(running().mutex);
        runs = running().runs;
        running().areEndedWithApplication = false; // another application may follow
    }
    for (const auto &run : runs) {
        run->m_progress.cancel();
    }
    const auto end = std::chrono::steady_clock::now() + longestWait;
    for (const auto &run : runs) {
        std::unique_lock lock(run->m_mutex);
        run->m_changed.wait_until(lock, end, [&] { return run->m_hasEnded; });
    }
}

bool CopyRun::hasEnded() const
{
    const std::lock_guard lock(m_mutex);
    return m_hasEnded;
}

void CopyRun::startCounting()
{
    startBackgroundThread([self = shared_from_this()] {
        const auto total = countItem(
            self->m_source, [&] { return self->m_progress.isCancelled() || self->hasEnded(); });
        const std::lock_guard lock(self->m_mutex);
        self->m_total = total;
    });
}

std::optional<ItemCount> CopyRun::total() const
{
    const std::lock_guard lock(m_mutex);
    return m_total;
}

} // namespace platform
