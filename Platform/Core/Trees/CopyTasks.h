// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Trees/Removability.h"

#include <QByteArray>

#include <sys/stat.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace platform {

// A folder and its copy, both open.
struct FolderPair {
    Descriptor from;
    Descriptor to;
};

// A folder that is being copied. Its path is relative to folders that stay open, not a descriptor
// each, of which there are few.
struct CopiedFolder {
    CopiedFolder() = default;
    CopiedFolder(const CopiedFolder &) = delete;
    CopiedFolder &operator=(const CopiedFolder &) = delete;
    // Those above go one by one: a chain of destructors may be too deep for the stack.
    ~CopiedFolder()
    {
        thread_local std::shared_ptr<CopiedFolder> *next = nullptr;
        if (next != nullptr) {
            *next = std::move(above);
            return;
        }
        auto last = std::move(above);
        next = &last;
        while (last != nullptr) {
            const auto folder = std::exchange(last, nullptr); // whose end brings the one above it
        }
        next = nullptr;
    }

    std::shared_ptr<CopiedFolder> above; // null for the top
    std::shared_ptr<const FolderPair> start;
    QByteArray path; // empty for the start itself
    // Its own, where the paths below would become longer than the system takes.
    std::shared_ptr<const FolderPair> newStart;
    struct stat status {};
    Removability removability; // of what is in it; any where nothing is to be removed
    // What has to be done before the folder is finished: tasks in it, folders directly below.
    std::atomic<int> pending = 1;
};

// The next thing to do in a folder: to begin with one below it, or to read its entries on.
struct CopyTask {
    std::shared_ptr<CopiedFolder> folder;
    QByteArray below;
    std::shared_ptr<const FolderPair> open; // null for one below
};

// What is to be done, for several threads. The last comes first, so that a folder is finished
// before others are begun, and not many wait at a time.
class CopyTasks {
public:
    void add(CopyTask task)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_waiting.push_back(std::move(task));
        }
        m_changed.notify_one();
    }

    // Waits while others may still add something. False when there is nothing any more. The caller
    // calls done() afterwards.
    bool take(CopyTask &task)
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_waiting.empty() || m_busy == 0; });
        if (m_waiting.empty()) {
            return false;
        }
        task = std::move(m_waiting.back());
        m_waiting.pop_back();
        ++m_busy;
        return true;
    }

    void done()
    {
        const std::lock_guard lock(m_mutex);
        if (--m_busy == 0) {
            m_changed.notify_all();
        }
    }

    // Whether another thread would be useful.
    bool areMany()
    {
        const std::lock_guard lock(m_mutex);
        return m_waiting.size() > 1;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<CopyTask> m_waiting;
    int m_busy = 0;
};

} // namespace platform
