// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <QByteArray>

#include <mutex>

namespace platform {

// The reading end of a pipe that one thread reads and any thread may close, even while it waits.
class PipeReader {
public:
    // Throws an Exception with the reason when it has nothing to wait with.
    explicit PipeReader(Descriptor pipe);

    // What there is, at most 64 KiB, waiting for the first byte. Empty at the end of the pipe and
    // when it is closed. Throws an Exception with the reason when it cannot be read.
    QByteArray readAvailable();

    void close();

private:
    void waitForData() const;

    Descriptor m_pipe;
    Descriptor m_closing;
    std::mutex m_mutex;
    bool m_isWaiting = false;
    bool m_isClosed = false;
};

} // namespace platform
