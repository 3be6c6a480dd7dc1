// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/CopyRun.h"

#include "Platform/Core/Threads/BackgroundThread.h"
#include "Platform/Core/Trees/CopyItem.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <new>
#include <utility>
#include <vector>

namespace platform {
namespace {

// How long the end of the application waits for what is left of cancelled copies to be removed.
constexpr auto maxWait = std::chrono::seconds(2);

struct RunningCopies {
    std::mutex mutex;
    std::condition_variable changed;
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
    running().changed.notify_all();
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
        self->m_hasEnded = true;
        ended(error);
        forget(self);
    });
    if (!hasStarted) {
        forget(self);
    }
    return hasStarted;
}

void CopyRun::endAll()
{
    std::unique_lock lock(running().mutex);
    running().areEndedWithApplication = false; // another application may follow
    for (const auto &run : running().runs) {
        run->m_progress.cancel();
    }
    running().changed.wait_for(lock, maxWait, [] { return running().runs.empty(); });
}

void CopyRun::startCounting()
{
    startBackgroundThread([self = shared_from_this()] {
        const auto total = countItem(
            self->m_source, [&] { return self->m_progress.isCancelled() || self->m_hasEnded; });
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
