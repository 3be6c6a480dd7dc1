// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/ChildReaper.h"

#include "Platform/Core/Processes/ProcessDescriptor.h"
#include "Platform/Core/Threads/BackgroundThread.h"

#include <sys/epoll.h>

#include <algorithm>
#include <array>
#include <unordered_map>
#include <vector>

namespace platform {
namespace {

class Waiter {
public:
    // False when it cannot wait for the child.
    bool add(const std::shared_ptr<ChildExit> &child);

private:
    struct Entry {
        std::shared_ptr<ChildExit> child;
        Descriptor process;
    };

    bool start();
    void run();
    Entry remove(int process);

    std::mutex m_mutex;
    std::unordered_map<int, Entry> m_entries; // by the descriptor of the process
    Descriptor m_events;
    bool m_runs = false;
};

bool Waiter::start()
{
    if (!m_events.isOpen()) {
        m_events = Descriptor(::epoll_create1(EPOLL_CLOEXEC));
    }
    if (m_events.isOpen() && !m_runs) {
        m_runs = startBackgroundThread([this] { run(); });
    }
    return m_runs;
}

bool Waiter::add(const std::shared_ptr<ChildExit> &child)
{
    auto process = openProcess(child->processIdentifier());
    const std::lock_guard lock(m_mutex);
    if (!process.isOpen() || !start()) {
        return false;
    }
    const int number = process.number();
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = number;
    if (::epoll_ctl(m_events.number(), EPOLL_CTL_ADD, number, &event) != 0) {
        return false;
    }
    m_entries.emplace(number, Entry{child, std::move(process)});
    return true;
}

Waiter::Entry Waiter::remove(int process)
{
    const std::lock_guard lock(m_mutex);
    auto node = m_entries.extract(process);
    return node.empty() ? Entry{} : std::move(node.mapped());
}

void Waiter::run()
{
    ::pthread_setname_np(::pthread_self(), "child reaper");
    std::array<epoll_event, 16> events{};
    for (;;) {
        const int count =
            ::epoll_wait(m_events.number(), events.data(), static_cast<int>(events.size()), -1);
        for (int i = 0; i < count; ++i) {
            if (const auto entry = remove(events.at(static_cast<std::size_t>(i)).data.fd);
                entry.child != nullptr) {
                entry.child->reapAtEnd();
            }
        }
    }
}

} // namespace

void ChildReaper::take(const std::shared_ptr<ChildExit> &child)
{
    // Never destroyed: the thread uses it to the very end.
    static auto *waiter = new Waiter;
    static auto *left = new std::vector<std::shared_ptr<ChildExit>>;
    static auto *leftMutex = new std::mutex;
    const bool taken = waiter->add(child) || startBackgroundThread([child] { child->reapAtEnd(); });
    const std::lock_guard lock(*leftMutex);
    if (!taken) {
        // Neither a descriptor nor a thread to be had: looked after when the next child comes.
        child->leaveToOthers();
        left->push_back(child);
    }
    left->erase(std::remove_if(left->begin(), left->end(),
                               [](const auto &other) { return other->hasEnded(); }),
                left->end());
}

} // namespace platform
