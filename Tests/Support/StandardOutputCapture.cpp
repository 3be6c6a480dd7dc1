// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Support/StandardOutputCapture.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>

namespace test {

QString outputOf(const std::function<void()> &work)
{
    const int file = ::memfd_create("output", MFD_CLOEXEC);
    const int original = ::dup(STDOUT_FILENO);
    std::fflush(stdout);
    ::dup2(file, STDOUT_FILENO);
    work();
    std::fflush(stdout);
    ::dup2(original, STDOUT_FILENO);
    ::close(original);

    QByteArray bytes(static_cast<int>(::lseek(file, 0, SEEK_END)), '\0');
    const auto size = ::pread(file, bytes.data(), static_cast<std::size_t>(bytes.size()), 0);
    ::close(file);
    return QString::fromUtf8(bytes.left(static_cast<int>(size)));
}

QStringList linesOf(const std::function<void()> &work)
{
    auto lines = outputOf(work).split(QLatin1Char('\n'));
    if (!lines.takeLast().isEmpty()) {
        qFatal("the output does not end with a line break");
    }
    return lines;
}

} // namespace test
