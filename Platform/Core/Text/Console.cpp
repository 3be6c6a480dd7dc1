// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/Console.h"

#include <poll.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>

namespace platform {
namespace {

// UTF-16 units of one console line; system logs cut or refuse what is much longer.
constexpr int maxLineLength = 30000;

// Line and paragraph separators and the marks that turn the direction of text count as control
// characters: they make a terminal show what is not there.
bool mustBeEscaped(char16_t character)
{
    return character < 0x20 || (character >= 0x7F && character < 0xA0) ||
           (character >= 0x2028 && character <= 0x202E) ||
           (character >= 0x2066 && character <= 0x2069);
}

QString escaped(const QString &text)
{
    QString line;
    line.reserve(text.size());
    for (const QChar character : text) {
        const auto code = character.unicode();
        if (!mustBeEscaped(code)) {
            line += character;
        } else if (code == u'\n') {
            line += QStringLiteral("\\n");
        } else if (code == u'\r') {
            line += QStringLiteral("\\r");
        } else if (code == u'\t') {
            line += QStringLiteral("\\t");
        } else {
            line += QStringLiteral("\\u%1").arg(static_cast<uint>(code), 4, 16, QLatin1Char('0'));
        }
    }
    return line;
}

void writeWhole(int file, const QByteArray &bytes)
{
    const char *rest = bytes.constData();
    auto left = static_cast<std::size_t>(bytes.size());
    while (left > 0) {
        const auto written = ::write(file, rest, left);
        if (written >= 0) {
            rest += written;
            left -= static_cast<std::size_t>(written);
        } else if (errno == EAGAIN) {
            pollfd writable{file, POLLOUT, 0};
            if (::poll(&writable, 1, 1000) <= 0) {
                return;
            }
        } else if (errno != EINTR) {
            return;
        }
    }
}

// Writes also to a pipe without a reader, without the signal that would end the program.
void writeWithoutSignal(int file, const QByteArray &bytes)
{
    sigset_t pipe;
    sigset_t before;
    sigset_t pending;
    ::sigemptyset(&pipe);
    ::sigaddset(&pipe, SIGPIPE);
    ::sigpending(&pending);
    const bool wasPending = ::sigismember(&pending, SIGPIPE) == 1;
    ::pthread_sigmask(SIG_BLOCK, &pipe, &before);
    writeWhole(file, bytes);
    if (!wasPending) {
        const timespec now{};
        ::sigtimedwait(&pipe, nullptr, &now);
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

} // namespace

void consoleLine(const QString &text)
{
    auto line = escaped(text.left(maxLineLength));
    if (text.size() > maxLineLength) {
        line += QStringLiteral("... (%1 characters)").arg(text.size());
    }
    const auto bytes = line.toUtf8();
    ::syslog(LOG_USER | LOG_NOTICE, "%s", bytes.constData());
    if (::isatty(STDERR_FILENO) == 1) {
        writeWithoutSignal(STDERR_FILENO,
                           QByteArray(program_invocation_short_name) + ": " + bytes + '\n');
    }
}

void printLine(const QString &text)
{
    std::fflush(stdout); // what was printed by other means stays in front
    writeWithoutSignal(STDOUT_FILENO, text.toUtf8() + '\n');
}

} // namespace platform
