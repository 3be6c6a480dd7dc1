// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/ConsoleCapture.h"

#include <QRegularExpression>

#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <cstring>

namespace test {
namespace {
constexpr auto logSocket = "/dev/log";
} // namespace

ConsoleCapture::ConsoleCapture() : m_socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(&address.sun_path[0], logSocket, sizeof address.sun_path - 1);
    ::unlink(logSocket);
    if (::bind(m_socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        qFatal("cannot listen at /dev/log; run this test in the sandbox");
    }
    ::closelog(); // the C library keeps its connection to an older listener otherwise
}

ConsoleCapture::~ConsoleCapture()
{
    ::closelog();
    ::close(m_socket);
    ::unlink(logSocket);
}

QStringList ConsoleCapture::lines()
{
    // "<13>Jan  1 00:00:00 program[12]: message"
    static const QRegularExpression head(QStringLiteral(R"(^<\d+>.{15} [^:]*: )"));
    std::array<char, 65536> buffer{};
    for (;;) {
        const auto size = ::recv(m_socket, buffer.data(), buffer.size(), MSG_DONTWAIT);
        if (size < 0) {
            return m_lines;
        }
        m_lines << QString::fromUtf8(buffer.data(), static_cast<int>(size)).remove(head);
    }
}

} // namespace test
