// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Trees/CopyProgress.h"
#include "Platform/Core/Trees/FolderSize.h"

#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace platform {

// The work of a copy in the background. Any thread.
class CopyRun : public std::enable_shared_from_this<CopyRun> {
public:
    CopyRun(QString source, QString destination);

    // Copies on a thread of its own, which tells ended() the reason why it failed (errno), or 0.
    // False when there is no thread to be had. When the application ends, the copy is cancelled and
    // waited for, though not for ever.
    bool start(std::function<void(int error)> ended);

    // Counts, on another thread, what there is to copy. Nothing happens when there is none.
    void startCounting();
    // None until that is counted.
    std::optional<ItemCount> total() const;

    CopyProgress &progress() { return m_progress; }
    const QString &source() const { return m_source; }

private:
    static void endAll();

    int copy();

    QString m_source;
    QString m_destination;
    CopyProgress m_progress;
    std::atomic<bool> m_hasEnded = false;
    mutable std::mutex m_mutex;
    std::optional<ItemCount> m_total;
};

} // namespace platform
