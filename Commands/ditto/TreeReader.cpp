// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/TreeReader.h"

#include "Commands/ditto/Complaint.h"
#include "Commands/ditto/Interruption.h"
#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/FolderEntries.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>

using platform::Descriptor;
using platform::retried;

namespace {

constexpr std::size_t bufferSize = std::size_t{256} * 1024;
constexpr auto maxNameLength = 65535; // the zip file's field has 16 bits

// One descriptor is held for each folder on the way down.
void allowManyDescriptors()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

} // namespace

TreeReader::TreeReader(ZipWriter &writer, QByteArray archive, IsLeftOut isLeftOut)
    : m_writer(writer), m_archive(std::move(archive)), m_isLeftOut(std::move(isLeftOut)),
      m_buffer(bufferSize)
{
}

bool TreeReader::read(const platform::ItemPlace &place, const QByteArray &path, bool keepParent)
{
    allowManyDescriptors();
    struct stat status {};
    const Source top{place.folder.fd(), place.name, path, place.name};
    if (::fstatat(top.folder, top.name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return complain(path, errno);
    }
    if (S_ISDIR(status.st_mode) && !keepParent) {
        Descriptor folder(retried([&] {
            return ::openat(top.folder, top.name.constData(),
                            O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        }));
        if (!folder.isOpen()) {
            return complain(path, errno);
        }
        if (!enter(std::move(folder), path, {})) {
            return false;
        }
    } else if (!S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode) && !S_ISLNK(status.st_mode)) {
        return complain(path, "neither a file, a folder nor a link");
    } else if (m_isLeftOut(status)) {
        return complain(path, "is the archive itself");
    } else if (!readItem(top)) {
        return false;
    }
    while (!m_levels.empty()) {
        auto &level = m_levels.back();
        if (level.names.empty()) {
            m_levels.pop_back();
            continue;
        }
        const auto name = std::move(level.names.back());
        level.names.pop_back();
        const Source source{level.folder.fd(), name, level.path + '/' + name, level.prefix + name};
        if (!readItem(source)) {
            return false;
        }
    }
    return true;
}

bool TreeReader::readItem(const Source &source)
{
    struct stat status {};
    if (isInterrupted()) {
        return false;
    }
    if (source.nameInArchive.size() >= maxNameLength) {
        return complain(source.path, ENAMETOOLONG);
    }
    if (::fstatat(source.folder, source.name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return failedToRead(source, errno);
    }
    if (S_ISDIR(status.st_mode)) {
        return readFolder(source, status);
    }
    if (S_ISREG(status.st_mode)) {
        return readFile(source);
    }
    if (S_ISLNK(status.st_mode)) {
        return readLink(source, status);
    }
    complain(source.path, "left out, being neither a file, a folder nor a link");
    return true;
}

// What went away meanwhile is not part of the tree any more.
bool TreeReader::failedToRead(const Source &source, int error)
{
    return error == ENOENT || complain(source.path, error);
}

bool TreeReader::readFolder(const Source &source, const struct stat &status)
{
    Descriptor folder(retried([&] {
        return ::openat(source.folder, source.name.constData(),
                        O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    }));
    if (!folder.isOpen()) {
        return failedToRead(source, errno);
    }
    const auto prefix = source.nameInArchive + '/';
    return begin(prefix, status) && enter(std::move(folder), source.path, prefix);
}

bool TreeReader::enter(Descriptor folder, const QByteArray &path, const QByteArray &prefix)
{
    Level level{std::move(folder), {}, path, prefix};
    if (const auto error = platform::readNames(level.folder.fd(), level.names); error != 0) {
        return complain(path, error);
    }
    std::reverse(level.names.begin(), level.names.end());
    m_levels.push_back(std::move(level));
    return true;
}

bool TreeReader::readFile(const Source &source)
{
    const Descriptor file(retried([&] {
        return ::openat(source.folder, source.name.constData(),
                        O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }));
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.fd(), &status) != 0) {
        return failedToRead(source, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return complain(source.path, "changed meanwhile");
    }
    if (m_isLeftOut(status)) {
        return true;
    }
    return begin(source.nameInArchive, status) && readContents(file.fd(), source, status.st_size);
}

// No more than there was when its turn came.
bool TreeReader::readContents(int file, const Source &source, off_t size)
{
    while (size > 0) {
        const auto wanted = std::min<off_t>(size, static_cast<off_t>(m_buffer.size()));
        const auto count = retried(
            [&] { return ::read(file, m_buffer.data(), static_cast<std::size_t>(wanted)); });
        if (count < 0) {
            return complain(source.path, errno);
        }
        if (count == 0) {
            break;
        }
        if (isInterrupted()) {
            return false;
        }
        const auto error = m_writer.write(m_buffer.data(), static_cast<std::size_t>(count));
        if (error != 0) {
            return complain(m_archive, error);
        }
        size -= count;
    }
    return true;
}

bool TreeReader::readLink(const Source &source, const struct stat &status)
{
    std::array<char, PATH_MAX> target{};
    const auto size =
        ::readlinkat(source.folder, source.name.constData(), target.data(), target.size());
    if (size < 0) {
        return failedToRead(source, errno);
    }
    return begin(source.nameInArchive, status, QByteArray(target.data(), static_cast<int>(size)));
}

bool TreeReader::begin(const QByteArray &nameInArchive, const struct stat &status,
                       const QByteArray &linkTarget)
{
    const auto error = m_writer.beginItem(nameInArchive, status, linkTarget);
    return error == 0 || complain(m_archive, error);
}
