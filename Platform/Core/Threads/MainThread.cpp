// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Threads/MainThread.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace platform {
namespace {

struct CallQueue {
    std::mutex mutex;
    std::deque<std::function<void()>> calls;
};

CallQueue &callQueue()
{
    // Never destroyed: a worker may still call while the process exits.
    static auto *queue = new CallQueue;
    return *queue;
}

class CallReceiver : public QObject {
public:
    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::User) {
            runPendingMainThreadCalls();
            return true;
        }
        return QObject::event(event);
    }
};

// The thread of the application; null before it and from its end on.
std::atomic<const QThread *> applicationThread = nullptr;

// Held while an event is posted, so that the application does not go meanwhile.
std::mutex &applicationMutex()
{
    static auto *mutex = new std::mutex; // never destroyed, as the queue
    return *mutex;
}

QObject *receiver()
{
    static auto *object = new CallReceiver; // never destroyed either
    return object;
}

// A posted event is the main thread's alone from then on, unlike a queued method call, which its
// sender still holds while the main thread may be freeing it.
void wakeMainThread()
{
    const std::lock_guard lock(applicationMutex());
    if (applicationThread != nullptr) {
        QCoreApplication::postEvent(receiver(), new QEvent(QEvent::User));
    }
}

void applicationEnds()
{
    const std::lock_guard lock(applicationMutex());
    applicationThread = nullptr;
}

void applicationBegins()
{
    {
        const std::lock_guard lock(applicationMutex());
        applicationThread = QCoreApplication::instance()->thread();
        receiver()->moveToThread(QCoreApplication::instance()->thread());
    }
    qAddPostRoutine(applicationEnds);
    wakeMainThread(); // for what was queued before
}

Q_COREAPP_STARTUP_FUNCTION(applicationBegins)

} // namespace

bool isMainThread()
{
    if (const auto *thread = applicationThread.load()) {
        return thread == QThread::currentThread();
    }
    // Before the application and after it the process's first thread: a worker that is still there
    // then must not take itself for the main thread.
    return ::gettid() == ::getpid();
}

void performOnMainThread(std::function<void()> call)
{
    {
        const std::lock_guard lock(callQueue().mutex);
        callQueue().calls.push_back(std::move(call));
    }
    wakeMainThread();
}

void performOnMainThreadAndWait(const std::function<void()> &call)
{
    if (isMainThread()) {
        call();
        return;
    }
    std::mutex mutex;
    std::condition_variable finished;
    bool done = false;
    performOnMainThread([&] {
        call();
        // Notified under the lock: the waiting frame may be gone as soon as the lock is free.
        const std::lock_guard lock(mutex);
        done = true;
        finished.notify_one();
    });
    std::unique_lock lock(mutex);
    finished.wait(lock, [&] { return done; });
}

void runPendingMainThreadCalls()
{
    auto &queue = callQueue();
    std::unique_lock lock(queue.mutex);
    // What a call queues belongs to a later pass, so only what is there now is counted. A call may
    // come here again by pumping events; taking one at a time keeps the order even then.
    for (auto left = queue.calls.size(); left > 0 && !queue.calls.empty(); --left) {
        auto call = std::move(queue.calls.front());
        queue.calls.pop_front();
        lock.unlock();
        call();
        call = nullptr; // before the lock: what it held may queue a call as it goes
        lock.lock();
    }
}

void pumpEvents(std::chrono::milliseconds maxWait)
{
    QTimer limit;
    limit.setTimerType(Qt::PreciseTimer);
    limit.start(maxWait);
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

bool pumpEventsUntil(const std::function<bool()> &ended)
{
    if (ended()) {
        return true;
    }
    // A real event loop, because only that is notified when the application quits.
    QEventLoop loop;
    QTimer poll;
    poll.setTimerType(Qt::PreciseTimer);
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
        if (ended()) {
            loop.quit();
        }
    });
    poll.start(std::chrono::milliseconds(10));
    loop.exec();
    return ended();
}

} // namespace platform
