// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/FileOperation.h"

#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Threads/MainThread.h"
#include "Platform/Core/Trees/CopyRun.h"

#include <QCoreApplication>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <mutex>
#include <utility>
#include <vector>

namespace platform {
namespace {

// How long a cancelled copy has to clear up before it is reported as ended.
constexpr auto clearingUp = std::chrono::milliseconds(20);
// What takes less than that is over before the first report and need not be counted.
constexpr auto worthCounting = std::chrono::milliseconds(400);

std::atomic<int> operations = 0;

// What the main run loop keeps alive.
struct Schedule {
    std::mutex mutex;
    std::vector<std::shared_ptr<FileOperation>> operations;
};

Schedule &schedule()
{
    static auto *instance = new Schedule; // never destroyed: a worker may still be there
    return *instance;
}

// The object belongs to the main thread, whoever lets go of it last.
void destroy(FileOperation *operation)
{
    if (isMainThread()) {
        delete operation;
    } else {
        performOnMainThread([operation] { delete operation; });
    }
}

} // namespace

const QString FileOperation::bytesComplete = QStringLiteral("bytesComplete");
const QString FileOperation::bytesTotal = QStringLiteral("bytesTotal");
const QString FileOperation::itemsComplete = QStringLiteral("itemsComplete");
const QString FileOperation::itemsTotal = QStringLiteral("itemsTotal");
const QString FileOperation::throughput = QStringLiteral("throughput");
const QString FileOperation::secondsRemaining = QStringLiteral("secondsRemaining");

FileOperation::FileOperation() : m_rate(TransferRate::Clock::now())
{
    ++operations;
}

FileOperation::~FileOperation()
{
    if (m_run != nullptr) {
        m_run->progress().cancel();
    }
    --operations;
}

int FileOperation::liveCount()
{
    return operations;
}

std::shared_ptr<FileOperation> FileOperation::create()
{
    return {new FileOperation, destroy};
}

bool FileOperation::isScheduled() const
{
    const std::lock_guard lock(schedule().mutex);
    const auto &all = schedule().operations;
    return std::any_of(all.begin(), all.end(),
                       [this](const auto &operation) { return operation.get() == this; });
}

int FileOperation::scheduleWithMainRunLoop()
{
    auto *application = QCoreApplication::instance();
    if (application == nullptr) {
        return ENOTSUP;
    }
    if (isScheduled()) {
        return EALREADY;
    }
    if (thread() != application->thread()) {
        moveToThread(application->thread());
    }
    const std::lock_guard lock(schedule().mutex);
    schedule().operations.push_back(shared_from_this());
    return 0;
}

int FileOperation::unscheduleFromMainRunLoop()
{
    const auto self = weak_from_this().lock(); // goes after the lock
    const std::lock_guard lock(schedule().mutex);
    auto &all = schedule().operations;
    const auto found = std::find(all.begin(), all.end(), self);
    if (found == all.end()) {
        return EINVAL;
    }
    all.erase(found);
    return 0;
}

int FileOperation::copyItemAsync(const QString &source, const QString &destinationFolder,
                                 const QString &destinationName, Callback callback,
                                 std::chrono::milliseconds interval, const QVariantMap &context)
{
    if (m_run != nullptr || !isScheduled()) {
        return EINVAL;
    }
    auto run = std::make_shared<CopyRun>(
        source, appendingPathComponent(destinationFolder, destinationName));
    m_run = run;
    m_callback = std::move(callback);
    m_context = context;
    const auto hasStarted = run->start([weak = weak_from_this()](int error) {
        performOnMainThread([weak, error] {
            if (const auto self = weak.lock()) {
                self->complete(error);
            }
        });
    });
    if (!hasStarted) {
        m_run = nullptr;
        m_callback = nullptr;
        return EAGAIN;
    }
    performOnMainThread([weak = weak_from_this(), interval] {
        if (const auto self = weak.lock()) {
            self->beginReports(interval);
        }
    });
    return 0;
}

void FileOperation::beginReports(std::chrono::milliseconds interval)
{
    if (m_isComplete) {
        return; // it was that quick
    }
    m_reports = new QTimer(this);
    m_reports->setTimerType(Qt::PreciseTimer);
    connect(m_reports, &QTimer::timeout, this, &FileOperation::report);
    m_reports->start(interval);
    QTimer::singleShot(std::min(worthCounting, interval), this, [this] {
        if (!m_isComplete) {
            m_run->startCounting();
        }
    });
}

QString FileOperation::currentItem() const
{
    const auto below = m_run->progress().currentItem();
    return below.isEmpty() ? m_run->source()
                           : appendingPathComponent(m_run->source(), fileNameFromBytes(below));
}

void FileOperation::report()
{
    if (m_isComplete || m_run->progress().isCancelled() || !isScheduled()) {
        return;
    }
    const auto self = shared_from_this(); // the callback may let go of it
    const TransferRate::Amount done{m_run->progress().bytes(), m_run->progress().items()};
    m_rate.note(done, TransferRate::Clock::now());
    QVariantMap status{{bytesComplete, QVariant::fromValue<quint64>(done.bytes)},
                       {itemsComplete, QVariant::fromValue<quint64>(done.items)},
                       {throughput, m_rate.bytesPerSecond()}};
    if (const auto counted = m_run->total()) {
        // The source may have grown since.
        const TransferRate::Amount total{std::max<std::uint64_t>(counted->bytes, done.bytes),
                                         std::max<std::uint64_t>(counted->items, done.items)};
        status[bytesTotal] = QVariant::fromValue<quint64>(total.bytes);
        status[itemsTotal] = QVariant::fromValue<quint64>(total.items);
        if (const auto seconds =
                m_rate.secondsFor({total.bytes - done.bytes, total.items - done.items})) {
            status[secondsRemaining] = *seconds;
        }
    }
    const auto callback = m_callback;
    callback(*this, currentItem(), Stage::Running, 0, status, m_context);
}

void FileOperation::complete(int error)
{
    if (std::exchange(m_isComplete, true)) {
        return;
    }
    const auto self = shared_from_this();
    if (m_reports != nullptr) {
        m_reports->stop();
    }
    const auto callback = std::exchange(m_callback, nullptr);
    if (isScheduled()) {
        callback(*this, currentItem(), Stage::Complete, error, std::nullopt, m_context);
    }
}

void FileOperation::cancel()
{
    if (m_run == nullptr || !m_run->progress().cancel()) {
        return;
    }
    // The worker may be held up by a slow disk, or by the removal of much that was copied: from now
    // on it gives nothing its final name, so that nobody has to wait for it.
    performOnMainThread([weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            QTimer::singleShot(clearingUp, Qt::PreciseTimer, self.get(),
                               [operation = self.get()] { operation->complete(ECANCELED); });
        }
    });
}

} // namespace platform
