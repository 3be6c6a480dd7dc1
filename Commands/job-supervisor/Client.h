// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <QByteArrayList>

#include <chrono>
#include <optional>

// Somebody who has a request: first it is read, then it may wait, then it is answered.
class Client {
public:
    using Clock = std::chrono::steady_clock;

    explicit Client(platform::Descriptor socket);

    int descriptor() const { return m_socket.number(); }
    bool isReading() const { return m_socket.isOpen() && !m_isRequestRead; }
    bool isWriting() const { return !m_answer.isEmpty(); }
    bool isOver() const { return !m_socket.isOpen(); }

    // Who asks slowly or does not take the answer is left.
    Clock::time_point deadline() const { return m_deadline; }

    // Reads what is there. The request, once, when it is whole; an empty one for nonsense.
    std::optional<QByteArrayList> read();

    // Leaves it waiting for the end of that job.
    void waitFor(const QByteArray &label);
    const QByteArray &awaitedLabel() const { return m_awaited; }

    void answer(const QByteArrayList &fields);
    void write();
    void leave() { m_socket.close(); }

private:
    platform::Descriptor m_socket;
    QByteArray m_input;
    QByteArray m_answer;
    QByteArray m_awaited;
    bool m_isRequestRead = false;
    Clock::time_point m_deadline;
};
