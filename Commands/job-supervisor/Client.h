// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <QByteArrayList>

#include <chrono>
#include <optional>

// A connection with one request, which is read, may wait, and is answered.
class Client {
public:
    using Clock = std::chrono::steady_clock;

    explicit Client(platform::Descriptor socket);

    int descriptor() const { return m_socket.fd(); }
    bool isReading() const { return m_socket.isOpen() && !m_isRequestRead; }
    bool isWriting() const { return !m_answer.isEmpty(); }
    bool isOver() const { return !m_socket.isOpen(); }

    // The connection is closed then.
    Clock::time_point deadline() const { return m_deadline; }

    // Reads what is there. The request, once, when it is whole; an empty one if it is malformed.
    std::optional<QByteArrayList> read();

    // Leaves it waiting for the end of that job.
    void waitFor(const QByteArray &label);
    const QByteArray &awaitedLabel() const { return m_awaited; }

    void answer(const QByteArrayList &fields);
    void write();
    void close() { m_socket.close(); }

private:
    platform::Descriptor m_socket;
    QByteArray m_input;
    QByteArray m_answer;
    QByteArray m_awaited;
    bool m_isRequestRead = false;
    Clock::time_point m_deadline;
};
