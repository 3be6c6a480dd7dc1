// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/FolderSize.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Threads/BackgroundThread.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <condition_variable>
#include <iterator>
#include <memory>
#include <mutex>
#include <vector>

namespace platform {
namespace {

// Beyond that a folder's own descriptor is the new start, since the system takes no longer paths.
constexpr auto maxRelativePathLength = 2000;
// As many must be waiting before a second thread is useful.
constexpr std::size_t enoughForTwo = 2;
// No more batches of entries may wait: they take memory.
constexpr std::size_t maxWaitingBatches = 64;

int openFolder(int start, const char *path, int flags)
{
    return retried([&] {
        return ::openat(start, path, O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC | flags);
    });
}

ItemCount &operator+=(ItemCount &count, const ItemCount &other)
{
    count.bytes += other.bytes;
    count.items += other.items;
    return count;
}

class Measurement {
public:
    explicit Measurement(const std::function<bool()> &shouldStop) : m_shouldStop(shouldStop) {}
    ItemCount run(std::shared_ptr<Descriptor> top);

private:
    // A folder still to be measured: a path relative to an open folder, not a descriptor each, of
    // which there are few. Or some entries of a folder that is open already.
    struct Task {
        std::shared_ptr<Descriptor> start;
        QByteArray path; // empty for the start itself
        std::shared_ptr<Descriptor> folder;
        std::unique_ptr<EntryBatch> entries;
    };
    using Tasks = std::vector<Task>;

    void work();
    ItemCount measure(Task task, Tasks &below);
    ItemCount measureEntries(const Task &task, Tasks &below);
    bool handOver(Task &task);
    void wakeOther();
    void startSecondThread();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    Tasks m_waiting;
    int m_busy = 0;
    ItemCount m_all;
    const std::function<bool()> &m_shouldStop;
    bool m_hasSecondThread = false;
    std::thread m_second;
};

ItemCount Measurement::measureEntries(const Task &task, Tasks &below)
{
    const auto isFar = task.path.size() > maxRelativePathLength;
    const auto subfolder = [&](const char *name) {
        if (isFar) {
            below.push_back({task.folder, name, {}, {}});
        } else {
            below.push_back({task.start,
                             task.path.isEmpty() ? QByteArray(name) : task.path + '/' + name,
                             {},
                             {}});
        }
    };
    ItemCount count;
    auto &entries = *task.entries;
    while (entries.next()) {
        if (entries.type() == DT_DIR) {
            subfolder(entries.name());
            continue;
        }
        struct stat status {};
        if (::fstatat(task.folder->fd(), entries.name(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            continue;
        }
        if (S_ISDIR(status.st_mode)) {
            subfolder(entries.name());
        } else {
            count += {static_cast<quint64>(status.st_size), 1};
        }
    }
    return count;
}

ItemCount Measurement::measure(Task task, Tasks &below)
{
    if (task.entries != nullptr) {
        return measureEntries(task, below);
    }
    task.folder = task.path.isEmpty() ? task.start
                                      : std::make_shared<Descriptor>(openFolder(
                                            task.start->fd(), task.path.constData(), O_NOFOLLOW));
    if (!task.folder->isOpen()) {
        return {0, 1};
    }
    ItemCount count{0, 1};
    task.entries = std::make_unique<EntryBatch>();
    while (!m_shouldStop() && task.entries->read(task.folder->fd())) {
        if (!task.entries->isFull() || !handOver(task)) {
            count += measureEntries(task, below);
        }
    }
    return count;
}

// A large folder's entries are for both threads. Takes them, unless too many are waiting already.
bool Measurement::handOver(Task &task)
{
    const std::lock_guard lock(m_mutex);
    if (m_waiting.size() >= maxWaitingBatches) {
        return false;
    }
    m_waiting.push_back({task.start, task.path, task.folder, std::move(task.entries)});
    task.entries = std::make_unique<EntryBatch>();
    wakeOther();
    return true;
}

// With the lock held, when there is more to do, or nothing any more.
void Measurement::wakeOther()
{
    if (m_hasSecondThread) {
        m_changed.notify_one();
    } else if (m_waiting.size() >= enoughForTwo) {
        startSecondThread();
    }
}

void Measurement::startSecondThread()
{
    m_hasSecondThread = true;
    m_second = startThread([this] { work(); }); // one does it, too
}

void Measurement::work()
{
    Tasks below;
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return !m_waiting.empty() || m_busy == 0; });
        if (m_waiting.empty()) {
            return;
        }
        auto task = std::move(m_waiting.back());
        m_waiting.pop_back();
        ++m_busy;
        lock.unlock();
        const auto count = measure(std::move(task), below);
        lock.lock();
        --m_busy;
        m_all += count;
        std::move(below.begin(), below.end(), std::back_inserter(m_waiting));
        below.clear();
        if (!m_waiting.empty() || m_busy == 0) {
            wakeOther();
        }
    }
}

ItemCount Measurement::run(std::shared_ptr<Descriptor> top)
{
    m_waiting.push_back({std::move(top), {}, {}, {}});
    work();
    if (m_second.joinable()) {
        m_second.join();
    }
    return m_all;
}

} // namespace

quint64 sizeOfItem(const QString &path)
{
    return countItem(path, [] { return false; }).bytes;
}

ItemCount countItem(const QString &path, const std::function<bool()> &shouldStop)
{
    const auto bytes = fileNameBytes(path);
    struct stat status {};
    if (bytes.contains('\0') ||
        ::fstatat(AT_FDCWD, bytes.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return {};
    }
    if (S_ISREG(status.st_mode)) {
        return {static_cast<quint64>(status.st_size), 1};
    }
    auto top = std::make_shared<Descriptor>(openFolder(AT_FDCWD, bytes.constData(), 0));
    if (!top->isOpen()) {
        return {S_ISDIR(status.st_mode) ? 0 : static_cast<quint64>(status.st_size), 1};
    }
    return Measurement(shouldStop).run(std::move(top));
}

} // namespace platform
