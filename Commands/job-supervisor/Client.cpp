// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/job-supervisor/Client.h"

#include "Commands/Jobs/Messages.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>

namespace {

constexpr std::chrono::seconds requestTimeout{5};
constexpr std::chrono::seconds jobEndTimeout{20}; // they take five seconds to be ended

bool hasToWait()
{
    return errno == EAGAIN || errno == EINTR;
}

} // namespace

Client::Client(platform::Descriptor socket)
    : m_socket(std::move(socket)), m_deadline(Clock::now() + requestTimeout)
{
}

std::optional<QByteArrayList> Client::read()
{
    std::array<char, 4096> buffer{};
    for (;;) {
        const auto size = ::recv(descriptor(), buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (size < 0 && hasToWait()) {
            return std::nullopt;
        }
        if (size < 0 || m_input.size() + size > messages::maxRequest) {
            close();
            return std::nullopt;
        }
        if (size == 0) {
            m_isRequestRead = true;
            return messages::split(m_input);
        }
        m_input.append(buffer.data(), static_cast<int>(size));
    }
}

void Client::waitFor(const QByteArray &label)
{
    m_awaited = label;
    m_deadline = Clock::now() + jobEndTimeout;
}

void Client::answer(const QByteArrayList &fields)
{
    m_awaited.clear();
    m_answer = messages::join(fields);
    m_deadline = Clock::now() + requestTimeout;
    write();
}

void Client::write()
{
    while (!m_answer.isEmpty()) {
        const auto size =
            ::send(descriptor(), m_answer.constData(), static_cast<std::size_t>(m_answer.size()),
                   MSG_DONTWAIT | MSG_NOSIGNAL);
        if (size < 0 && hasToWait()) {
            return;
        }
        if (size < 0) {
            break;
        }
        m_answer.remove(0, static_cast<int>(size));
    }
    m_answer.clear();
    close();
}
