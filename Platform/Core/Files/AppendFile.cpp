// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/AppendFile.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

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
    std::size_t written = 0;
    while (written < size) {
        const auto part = ::write(m_descriptor, bytes + written, size - written);
        if (part > 0) {
            written += static_cast<std::size_t>(part);
        } else if (part == 0 || errno != EINTR) {
            return {written, part == 0 ? ENOSPC : errno};
        }
    }
    return {written, 0};
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
