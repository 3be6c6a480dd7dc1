// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Trees/TransferRate.h"

#include <QObject>
#include <QVariantMap>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class QTimer;

namespace platform {

class CopyRun;

// A copy in the background, with reports to the main thread. Made by create(), scheduled with the
// main run loop (the application's event loop), which keeps it alive from then on, started once,
// and unscheduled by whoever gets the completion report.
//
// Any thread may call; the reports come, and the last holder's letting go takes effect, on the main
// thread. What still runs when the application ends is cancelled.
class FileOperation : public QObject, public std::enable_shared_from_this<FileOperation> {
    Q_OBJECT
    Q_DISABLE_COPY(FileOperation)
public:
    enum class Stage : qint64 { Undefined = 0, Preflighting = 1, Running = 2, Complete = 3 };

    // A report. currentItem: the path of what is being copied. error: why the copy failed (errno),
    // 0 for success. status: the keys below; none for the completion.
    using Callback = std::function<void(
        FileOperation &operation, const QString &currentItem, Stage stage, int error,
        const std::optional<QVariantMap> &status, const QVariantMap &context)>;

    // Keys of the status. The totals, and what follows from them, are missing while they are still
    // being counted.
    static const QString bytesComplete; // quint64: bytes copied, holes included
    static const QString bytesTotal;
    static const QString itemsComplete; // quint64: files, folders, links, ..., the top included
    static const QString itemsTotal;
    static const QString throughput;       // double: bytes per second of late
    static const QString secondsRemaining; // double: an estimate

    static std::shared_ptr<FileOperation> create();
    ~FileOperation() override;

    // 0, else the reason (errno): ENOTSUP without an application, EALREADY when it is scheduled.
    int scheduleWithMainRunLoop();
    // 0, else EINVAL: it is not scheduled.
    int unscheduleFromMainRunLoop();

    // Copies an item, as copyItem(), into a folder under a name. A report of the stage Running each
    // interval, then one of the stage Complete, whatever became of the copy. 0, else the reason
    // (errno) why it has not begun: EINVAL when it is not scheduled or was started before.
    int copyItemAsync(const QString &source, const QString &destinationFolder,
                      const QString &destinationName, Callback callback,
                      std::chrono::milliseconds interval, const QVariantMap &context);

    // The copy ends at once, completion report included, and has its final name only where it was
    // whole already. Traces of what was begun may go a little later.
    void cancel();

    // How many there are in this process.
    static int liveCount();

private:
    FileOperation();

    bool isScheduled() const;
    void beginReports(std::chrono::milliseconds interval);
    void report();
    void complete(int error);
    QString currentItem() const;

    std::shared_ptr<CopyRun> m_run; // null before the start
    Callback m_callback;
    QVariantMap m_context;
    // The rest is the main thread's.
    QTimer *m_reports = nullptr;
    TransferRate m_rate;
    bool m_isComplete = false;
};

} // namespace platform
