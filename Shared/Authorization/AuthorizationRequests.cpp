// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Authorization/AuthorizationRequests.h"

#include "Platform/Core/Threads/BackgroundThread.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Platform/Core/Threads/WorkerThreads.h"

#include <QCoreApplication>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>

using namespace std::chrono_literals;

struct AuthorizationRequests::Request {
    explicit Request(MayBeJoined joined) : mayBeJoined(joined == MayBeJoined::Yes) {}

    bool isAnsweredWithin(std::chrono::milliseconds time) const
    {
        return result.wait_for(time) == std::future_status::ready;
    }

    const bool mayBeJoined;
    int waiting = 0; // with m_mutex
    std::atomic<bool> isGivenUp = false;
    std::promise<bool> answer;
    const std::shared_future<bool> result{answer.get_future()};
};

AuthorizationRequests::~AuthorizationRequests()
{
    giveUp();
    const auto isDone = [this] {
        const std::lock_guard lock(m_mutex);
        return m_open.empty();
    };
    while (!isDone()) {
        std::this_thread::sleep_for(1ms);
    }
    const std::lock_guard last(m_asking); // which the last thread holds for a moment more
}

bool AuthorizationRequests::join(const Ask &ask)
{
    return await(ask, MayBeJoined::Yes);
}

bool AuthorizationRequests::make(const Ask &ask)
{
    return await(ask, MayBeJoined::No);
}

void AuthorizationRequests::giveUp()
{
    const std::lock_guard lock(m_mutex);
    for (const auto &request : m_open) {
        request->isGivenUp = true;
    }
}

bool AuthorizationRequests::await(const Ask &ask, MayBeJoined mayBeJoined)
{
    auto request = std::make_shared<Request>(mayBeJoined);
    bool isNew = true;
    {
        const std::lock_guard lock(m_mutex);
        const auto other = std::find_if(m_open.begin(), m_open.end(), [](const auto &open) {
            return open->mayBeJoined && !open->isGivenUp;
        });
        isNew = mayBeJoined == MayBeJoined::No || other == m_open.end();
        if (isNew) {
            m_open.push_back(request);
        } else {
            request = *other;
        }
        ++request->waiting;
    }
    if (isNew) {
        perform(request, ask);
    }
    if (platform::isMainThread() && QCoreApplication::instance() != nullptr) {
        platform::pumpEventsUntil([&request] { return request->isAnsweredWithin(0ms); });
    } else {
        while (!request->isAnsweredWithin(200ms) &&
               !platform::WorkerThreads::currentThreadShouldStop()) {
        }
    }
    return leave(*request) && request->result.get();
}

// Without a thread who makes the request is held up by it.
void AuthorizationRequests::perform(const std::shared_ptr<Request> &request, const Ask &ask)
{
    const auto body = [this, request, ask] {
        bool isGranted = false;
        {
            const std::lock_guard asking(m_asking);
            isGranted = ask([&request] { return request->isGivenUp.load(); });
            const std::lock_guard lock(m_mutex);
            m_open.erase(std::find(m_open.begin(), m_open.end(), request));
        }
        request->answer.set_value(isGranted);
    };
    if (!platform::startBackgroundThread(body)) {
        body();
    }
}

// Whether the answer is there or, as nobody else waits for it, comes at once.
bool AuthorizationRequests::leave(Request &request)
{
    const std::lock_guard lock(m_mutex);
    if (--request.waiting == 0) {
        request.isGivenUp = true;
        return true;
    }
    return request.isAnsweredWithin(0ms);
}
