// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/ParallelTreeCopy.h"

#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Files/OpenBeneath.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Threads/SignalsBlocked.h"
#include "Platform/Core/Trees/CopyAttributes.h"
#include "Platform/Core/Trees/CopyContents.h"
#include "Platform/Core/Trees/CopyProgress.h"
#include "Platform/Core/Trees/CopyTasks.h"
#include "Platform/Core/Trees/HardLinks.h"
#include "Platform/Core/Trees/UnfinishedItem.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>
#include <thread>

namespace platform {
namespace {

constexpr auto asFolder = O_RDONLY | O_DIRECTORY;
constexpr auto asFile = O_RDONLY | O_NONBLOCK | O_NOCTTY;
// Beyond that a folder becomes a new start: the system takes paths of 4096 bytes.
constexpr auto maxRelativePathLength = 3500;
// Files in one folder are made one after the other, so that more would be in each other's way.
constexpr unsigned maxThreads = 4;

QByteArray joined(const QByteArray &path, const QByteArray &name)
{
    return path.isEmpty() ? name : path + '/' + name;
}

// A folder and its copy whose entries are done.
std::shared_ptr<const FolderPair> openAgain(const CopiedFolder &folder)
{
    if (folder.newStart != nullptr || folder.path.isEmpty()) {
        return folder.newStart != nullptr ? folder.newStart : folder.start;
    }
    auto open = std::make_shared<FolderPair>();
    const auto *path = folder.path.constData();
    open->from = Descriptor(openBeneath(folder.start->from.fd(), path, asFolder));
    if (open->from.isOpen()) {
        open->to = Descriptor(openBeneath(folder.start->to.fd(), path, asFolder));
    }
    return open;
}

class ParallelTreeCopy {
public:
    ParallelTreeCopy(QString source, std::shared_ptr<const FolderPair> top, CopyProgress &progress,
                     CopyPurpose purpose)
        : m_source(std::move(source)), m_top(std::move(top)), m_purpose(purpose),
          m_links(m_top->to.fd()), m_progress(progress)
    {
    }

    FileError run();

private:
    // One of the threads.
    class Worker {
    public:
        explicit Worker(ParallelTreeCopy &copy) : m_copy(copy), m_progress(copy.m_progress) {}
        void work();

    private:
        // Each: 0, else the reason (errno), with m_failed for the name in the folder.
        int carryOut(CopyTask &task);
        int enter(CopyTask &task);
        int readOn(const CopyTask &task);
        int copyEntry(const CopyTask &task, const char *name, unsigned char type);
        int copyFile(const CopyTask &task, const QByteArray &name);
        int makeFile(const CopyTask &task, const QByteArray &name, const struct stat &status,
                     Descriptor &copy);

        template <typename Make>
        HardLinks::Outcome linkOrMake(const CopyTask &task, const QByteArray &name,
                                      const struct stat &status, const Make &make);
        void finish(const CopyTask &task);

        ParallelTreeCopy &m_copy;
        CopyProgress &m_progress;
        EntryBatch m_batch;
        std::vector<QByteArray> m_below;
        QByteArray m_failed;
    };

    bool shouldStop() const
    {
        return m_hasFailed.load(std::memory_order_relaxed) || m_progress.isCancelled();
    }
    void fail(int error, const CopiedFolder &folder, const QByteArray &name);
    void noteRemovability(int from, CopiedFolder &folder) const;
    void startThreadIfUseful();

    QString m_source;
    std::shared_ptr<const FolderPair> m_top;
    CopyPurpose m_purpose;
    HardLinks m_links;
    CopyProgress &m_progress;
    CopyTasks m_tasks;
    std::atomic<bool> m_hasFailed = false;
    std::mutex m_mutex; // of the rest
    FileError m_error;
    std::vector<std::thread> m_threads;
    bool m_mayStartThreads = true;
};

void ParallelTreeCopy::fail(int error, const CopiedFolder &folder, const QByteArray &name)
{
    const std::lock_guard lock(m_mutex);
    if (m_hasFailed) {
        return; // the first counts
    }
    auto path = joined(folder.path, name);
    for (const auto *above = folder.above.get(); above != nullptr; above = above->above.get()) {
        if (above->newStart != nullptr) {
            path = joined(above->path, path);
        }
    }
    m_error = {error, fileNameFromBytes(joined(fileNameBytes(m_source), path))};
    m_hasFailed = true;
}

void ParallelTreeCopy::noteRemovability(int from, CopiedFolder &folder) const
{
    if (m_purpose == CopyPurpose::Move) {
        folder.removability = Removability(from, folder.status);
    }
}

void ParallelTreeCopy::startThreadIfUseful()
{
    if (!m_tasks.areMany()) {
        return;
    }
    const std::lock_guard lock(m_mutex);
    const auto maxWorkers = std::clamp(std::thread::hardware_concurrency(), 2U, maxThreads);
    if (!m_mayStartThreads || m_threads.size() + 1 >= maxWorkers) {
        return;
    }
    const SignalsBlocked blocked;
    try {
        m_threads.emplace_back([this] { Worker(*this).work(); });
    } catch (const std::system_error &) {
        m_mayStartThreads = false; // those that there are do it, too
    }
}

FileError ParallelTreeCopy::run()
{
    auto top = std::make_shared<CopiedFolder>();
    top->start = m_top;
    if (::fstat(m_top->from.fd(), &top->status) != 0) {
        return {errno, m_source};
    }
    noteRemovability(m_top->from.fd(), *top);
    m_tasks.add({top, {}, m_top});
    Worker(*this).work();
    for (auto &thread : m_threads) {
        thread.join();
    }
    if (m_error || top->pending == 0) {
        return m_error;
    }
    return {ECANCELED, m_source};
}

void ParallelTreeCopy::Worker::work()
{
    for (CopyTask task; m_copy.m_tasks.take(task); m_copy.m_tasks.done()) {
        if (!m_copy.shouldStop()) {
            m_failed = QByteArray();
            if (const auto error = carryOut(task); error != 0) {
                m_copy.fail(error, *task.folder, m_failed);
            }
        }
        task = {};
    }
}

int ParallelTreeCopy::Worker::carryOut(CopyTask &task)
{
    if (task.open == nullptr) {
        if (const auto error = enter(task); error != 0) {
            return error;
        }
    }
    if (const auto error = readOn(task); error != 0) {
        return m_copy.shouldStop() ? 0 : error;
    }
    finish(task);
    return 0;
}

// Makes the folder below and goes on in that.
int ParallelTreeCopy::Worker::enter(CopyTask &task)
{
    const auto &above = task.folder;
    auto folder = std::make_shared<CopiedFolder>();
    folder->start = above->newStart != nullptr ? above->newStart : above->start;
    folder->path = above->newStart != nullptr ? task.below : joined(above->path, task.below);
    m_failed = task.below;
    m_progress.setCurrentItem(above->path, task.below);
    const auto *path = folder->path.constData();
    auto open = std::make_shared<FolderPair>();
    open->from = Descriptor(openBeneath(folder->start->from.fd(), path, asFolder));
    if (!open->from.isOpen() || ::fstat(open->from.fd(), &folder->status) != 0) {
        return errno;
    }
    if (const auto error = above->removability.errorFor(folder->status.st_uid); error != 0) {
        return error;
    }
    m_copy.noteRemovability(open->from.fd(), *folder);
    // Its own mode at the end: it may be one that lets nobody write.
    if (::mkdirat(folder->start->to.fd(), path, S_IRWXU) != 0) {
        return errno;
    }
    open->to = Descriptor(openBeneath(folder->start->to.fd(), path, asFolder));
    if (!open->to.isOpen()) {
        return errno;
    }
    if (folder->path.size() > maxRelativePathLength) {
        folder->newStart = open;
    }
    folder->above = above;
    m_failed = QByteArray();
    task = {std::move(folder), {}, std::move(open)};
    return 0;
}

// Copies the files and makes tasks of the folders.
int ParallelTreeCopy::Worker::readOn(const CopyTask &task)
{
    auto &folder = *task.folder;
    auto goesOnElsewhere = false;
    while (!goesOnElsewhere && m_batch.read(task.open->from.fd())) {
        if (m_batch.isFull()) {
            // The rest of a large folder is for whoever has time.
            folder.pending.fetch_add(1, std::memory_order_relaxed);
            m_copy.m_tasks.add(task);
            goesOnElsewhere = true;
            m_copy.startThreadIfUseful();
        }
        m_below.clear();
        while (m_batch.next()) {
            if (m_copy.shouldStop()) {
                return ECANCELED;
            }
            if (const auto error = copyEntry(task, m_batch.name(), m_batch.type()); error != 0) {
                if (m_failed.isNull()) {
                    m_failed = m_batch.name();
                }
                return error;
            }
        }
        for (auto &name : m_below) {
            folder.pending.fetch_add(1, std::memory_order_relaxed);
            m_copy.m_tasks.add({task.folder, std::move(name), {}});
        }
        if (!m_below.empty()) {
            m_copy.startThreadIfUseful();
        }
    }
    return goesOnElsewhere ? 0 : m_batch.error();
}

int ParallelTreeCopy::Worker::copyEntry(const CopyTask &task, const char *name, unsigned char type)
{
    if (type == DT_DIR) {
        m_below.emplace_back(name);
        return 0;
    }
    if (type == DT_REG) {
        return copyFile(task, name);
    }
    struct stat status {};
    if (::fstatat(task.open->from.fd(), name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno;
    }
    if (S_ISDIR(status.st_mode)) {
        m_below.emplace_back(name);
        return 0;
    }
    if (S_ISREG(status.st_mode)) {
        return copyFile(task, name);
    }
    const QByteArray bytes(name);
    auto error = task.folder->removability.errorFor(status.st_uid);
    if (error != 0) {
        return error;
    }
    const auto outcome = linkOrMake(task, bytes, status, [&] {
        error = copySpecial(task.open->from.fd(), bytes, status, task.open->to.fd(), bytes);
        return error == 0;
    });
    if (outcome != HardLinks::Outcome::Failed) {
        m_progress.addBytes(static_cast<std::uint64_t>(status.st_size));
        m_progress.addItem();
    }
    return error;
}

template <typename Make>
HardLinks::Outcome ParallelTreeCopy::Worker::linkOrMake(const CopyTask &task,
                                                        const QByteArray &name,
                                                        const struct stat &status, const Make &make)
{
    // So far down that the path from the top would be too long, each name gets a copy of its own.
    const auto canBeLinked = status.st_nlink > 1 && task.folder->start == m_copy.m_top;
    if (canBeLinked) {
        return m_copy.m_links.linkOrMake(status, joined(task.folder->path, name), make);
    }
    return make() ? HardLinks::Outcome::Made : HardLinks::Outcome::Failed;
}

// A copy is made under its final name at once: the folder around it all does not have its own yet.
int ParallelTreeCopy::Worker::copyFile(const CopyTask &task, const QByteArray &name)
{
    m_progress.setCurrentItem(task.folder->path, name);
    const Descriptor source(openBeneath(task.open->from.fd(), name.constData(), asFile));
    struct stat status {};
    if (!source.isOpen() || ::fstat(source.fd(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return ESTALE; // replaced by something else meanwhile
    }
    Descriptor copy;
    auto error = task.folder->removability.errorFor(status.st_uid);
    if (error == 0) {
        error = makeFile(task, name, status, copy);
    }
    if (error == 0 && copy.isOpen()) {
        error = copyContents(source.fd(), status, copy.fd(), &m_progress);
        if (error == 0) {
            error = copyAttributes(source.fd(), status, copy.fd());
        }
    }
    if (error == 0) {
        m_progress.addItem();
    }
    return error;
}

// The copy stays closed where it is another name of one that was made before.
int ParallelTreeCopy::Worker::makeFile(const CopyTask &task, const QByteArray &name,
                                       const struct stat &status, Descriptor &copy)
{
    int error = 0;
    const auto outcome = linkOrMake(task, name, status, [&] {
        copy = Descriptor(retried([&] {
            return ::openat(task.open->to.fd(), name.constData(),
                            O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                            S_IRUSR | S_IWUSR);
        }));
        error = copy.isOpen() ? 0 : errno;
        return copy.isOpen();
    });
    if (outcome == HardLinks::Outcome::Linked) {
        m_progress.addBytes(static_cast<std::uint64_t>(status.st_size));
    }
    return error;
}

// Ends the task. The last one of a folder gives it its attributes, and so on upwards.
void ParallelTreeCopy::Worker::finish(const CopyTask &task)
{
    auto open = task.open;
    for (auto folder = task.folder; folder != nullptr; folder = folder->above) {
        if (folder->pending.fetch_sub(1, std::memory_order_acq_rel) != 1) {
            return;
        }
        if (open == nullptr) {
            open = openAgain(*folder);
        }
        const auto error = open->from.isOpen() && open->to.isOpen()
                               ? copyAttributes(open->from.fd(), folder->status, open->to.fd())
                               : errno;
        if (error != 0) {
            folder->pending = 1; // is not finished
            m_copy.fail(error, *folder, {});
            return;
        }
        m_progress.addItem();
        open = nullptr;
    }
}

} // namespace

FileError copyTree(const ItemPlace &from, const ItemPlace &to, const QString &source,
                   CopyProgress &progress, CopyPurpose purpose, CopiedItem &copied)
{
    auto top = std::make_shared<FolderPair>();
    top->from = Descriptor(openBeneath(from.folder.fd(), from.name.constData(), asFolder));
    if (!top->from.isOpen()) {
        return {errno, source};
    }
    UnfinishedItem copy;
    if (const auto error = copy.create(to.folder.fd()); error != 0) {
        return {error, source};
    }
    if (::mkdirat(copy.folder(), UnfinishedItem::name, S_IRWXU) != 0) {
        return {errno, source};
    }
    top->to = Descriptor(openBeneath(copy.folder(), UnfinishedItem::name, asFolder));
    if (!top->to.isOpen() || ::fstat(top->from.fd(), &copied.original) != 0 ||
        ::fstat(top->to.fd(), &copied.copy) != 0) {
        return {errno, source};
    }
    if (auto error = ParallelTreeCopy(source, std::move(top), progress, purpose).run()) {
        return error;
    }
    const auto error = progress.beginPublishing() ? copy.publish(to.name) : ECANCELED;
    return error == 0 ? FileError() : FileError(error, source);
}

} // namespace platform
