// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/UnnamedFile.h"

#include "Platform/Core/Basics/DescriptorPath.h"
#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/ItemPlace.h"
#include "Platform/Core/Files/WriteAll.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace platform {
namespace {

int openUnnamed(int folder, mode_t mode)
{
    return retried([&] { return ::openat(folder, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode); });
}

bool cannotBeUnnamed(int error)
{
    return error == EOPNOTSUPP || error == EISDIR || error == EINVAL;
}

} // namespace

UnnamedFile::~UnnamedFile()
{
    if (!m_temporaryName.isNull()) {
        ::unlinkat(m_folder, m_temporaryName.constData(), 0);
    }
}

int UnnamedFile::create(int folder, mode_t mode)
{
    m_folder = folder;
    m_file = Descriptor(openUnnamed(folder, mode));
    if (m_file.isOpen()) {
        if (::access(pathOfDescriptor(m_file.fd()).constData(), F_OK) == 0) {
            return 0;
        }
    } else if (!cannotBeUnnamed(errno)) {
        return errno;
    }
    const auto name = temporaryName();
    m_file = Descriptor(retried([&] {
        return ::openat(folder, name.constData(),
                        O_CREAT | O_EXCL | O_NOFOLLOW | O_WRONLY | O_CLOEXEC, mode);
    }));
    if (!m_file.isOpen()) {
        return errno;
    }
    m_temporaryName = name;
    return 0;
}

int UnnamedFile::write(const char *data, std::size_t size) const
{
    std::size_t written = 0;
    return writeAll(m_file.fd(), data, size, written);
}

int UnnamedFile::publishUnnamed(const QByteArray &name) const
{
    return ::linkat(AT_FDCWD, pathOfDescriptor(m_file.fd()).constData(), m_folder, name.constData(),
                    AT_SYMLINK_FOLLOW) == 0
               ? 0
               : errno;
}

int UnnamedFile::publish(const QByteArray &name)
{
    if (m_temporaryName.isNull()) {
        return publishUnnamed(name);
    }
    const auto error = renameInPlace(m_folder, m_temporaryName, m_folder, name);
    if (error == 0) {
        m_temporaryName = QByteArray();
    }
    return error;
}

int UnnamedFile::publishOrReplace(const QByteArray &name)
{
    if (m_temporaryName.isNull()) {
        // Straight to its name where that is free: there is nothing in between then.
        if (const auto error = publishUnnamed(name); error != EEXIST) {
            return error;
        }
        const auto temporary = temporaryName();
        if (const auto error = publishUnnamed(temporary); error != 0) {
            return error;
        }
        m_temporaryName = temporary;
    }
    if (::renameat(m_folder, m_temporaryName.constData(), m_folder, name.constData()) != 0) {
        return errno;
    }
    m_temporaryName = QByteArray();
    return 0;
}

} // namespace platform
