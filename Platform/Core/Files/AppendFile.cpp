// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/AppendFile.h"

#include "Platform/Core/Files/WriteAll.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

std::shared_ptr<AppendFile> AppendFile::open(const QString &path)
{
    const int descriptor =
        ::open(QFile::encodeName(path).constData(),
               O_WRONLY | O_APPEND | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0) {
        return nullptr;
    }
    auto file = std::make_shared<AppendFile>(descriptor);
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) ? file : nullptr;
}

AppendFile::~AppendFile()
{
    ::close(m_descriptor);
}

AppendFile::Outcome AppendFile::append(const char *bytes, std::size_t size) const
{
    Outcome outcome{};
    outcome.error = writeAll(m_descriptor, bytes, size, outcome.written);
    return outcome;
}

void AppendFile::removeTail(std::size_t size) const
{
    const auto end = ::lseek(m_descriptor, 0, SEEK_CUR);
    struct stat status {};
    if (end >= static_cast<off_t>(size) && ::fstat(m_descriptor, &status) == 0 &&
        status.st_size == end) {
        // Where this fails the tail stays, which does no harm but to the eye.
        [[maybe_unused]] const auto result =
            ::ftruncate(m_descriptor, end - static_cast<off_t>(size));
    }
}

} // namespace platform
