// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/TreeReader.h"

#include "Commands/ditto/Complaint.h"
#include "Commands/ditto/Interruption.h"
#include "Platform/FileError.h"
#include "Platform/FolderEntries.h"

#include <fcntl.h>
#include <libdeflate.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>

using platform::Descriptor;
using platform::retried;

namespace {

constexpr auto longestName = 65535; // the zip file's field has 16 bits

// One descriptor is held for each folder on the way down.
void allowManyDescriptors()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

ZipItem itemOf(const QByteArray &name, const struct stat &status)
{
    const auto size = S_ISREG(status.st_mode) ? status.st_size : 0;
    return {name, status.st_mode, status.st_mtim.tv_sec, static_cast<std::uint64_t>(size)};
}

} // namespace

bool TreeReader::read(const platform::ItemPlace &place, const QByteArray &path, bool keepParent)
{
    allowManyDescriptors();
    struct stat status {};
    const Source top{place.folder.number(), place.name, path, place.name};
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
        const Source source{level.folder.number(), name, level.path + '/' + name,
                            level.prefix + name};
        if (!readItem(source)) {
            return false;
        }
    }
    return writeAll();
}

bool TreeReader::readItem(const Source &source)
{
    struct stat status {};
    if (isInterrupted()) {
        return false;
    }
    if (source.nameInArchive.size() >= longestName) {
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
    return addSmall(itemOf(prefix, status), {}) && enter(std::move(folder), source.path, prefix);
}

bool TreeReader::enter(Descriptor folder, const QByteArray &path, const QByteArray &prefix)
{
    Level level{std::move(folder), {}, path, prefix};
    if (const auto error = platform::readNames(level.folder.number(), level.names); error != 0) {
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
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0) {
        return failedToRead(source, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return complain(source.path, "changed meanwhile");
    }
    if (m_isLeftOut(status)) {
        return true;
    }
    const auto item = itemOf(source.nameInArchive, status);
    return item.mostBytes == 0 ? addSmall(item, {}) : readPieces(file.number(), source, item);
}

bool TreeReader::readPieces(int file, const Source &source, const ZipItem &item)
{
    std::uint64_t total = 0;
    std::uint32_t crc = 0;
    for (auto isLast = false; !isLast;) {
        auto *const piece = idlePiece();
        if (piece == nullptr) {
            return false;
        }
        piece->plain.resize(PackingLine::pieceSize);
        const auto wanted = static_cast<std::size_t>(
            std::min<std::uint64_t>(item.mostBytes - total, PackingLine::pieceSize));
        ssize_t count = 1;
        while (piece->plainSize < wanted && count > 0) {
            count = retried([&] {
                return ::read(file, piece->plain.data() + piece->plainSize,
                              wanted - piece->plainSize);
            });
            piece->plainSize += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
        if (count < 0) {
            const auto error = errno;
            m_line.giveBack(piece);
            return complain(source.path, error);
        }
        piece->isFirst = total == 0;
        total += piece->plainSize;
        crc = ::libdeflate_crc32(crc, piece->plain.data(), piece->plainSize);
        isLast = total == item.mostBytes || piece->plainSize < wanted;
        piece->item = item;
        piece->isLast = isLast;
        piece->isStored = piece->isFirst && isLast && piece->plainSize == 0;
        piece->totalSize = total;
        piece->crc = crc;
        m_line.add(piece);
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
    return addSmall(itemOf(source.nameInArchive, status),
                    QByteArray(target.data(), static_cast<int>(size)));
}

bool TreeReader::addSmall(const ZipItem &item, const QByteArray &contents)
{
    auto *const piece = idlePiece();
    if (piece == nullptr) {
        return false;
    }
    const auto size = static_cast<std::size_t>(contents.size());
    piece->plain.resize(PackingLine::pieceSize);
    std::memcpy(piece->plain.data(), contents.constData(), size);
    piece->plainSize = size;
    piece->item = item;
    piece->isFirst = piece->isLast = piece->isStored = true;
    piece->totalSize = size;
    piece->crc = ::libdeflate_crc32(0, contents.constData(), size);
    m_line.add(piece);
    return true;
}

Piece *TreeReader::idlePiece()
{
    if (isInterrupted()) {
        return nullptr;
    }
    if (auto *const piece = m_line.takeIdle(); piece != nullptr) {
        return piece;
    }
    return writeOldest() ? m_line.takeIdle() : nullptr;
}

bool TreeReader::writeOldest()
{
    auto *const piece = m_line.takeOldest();
    const auto error = m_writer.write(*piece);
    m_line.giveBack(piece);
    return error == 0 || complain(m_archive, error);
}

bool TreeReader::writeAll()
{
    while (auto *const piece = m_line.takeOldest()) {
        const auto error = m_writer.write(*piece);
        m_line.giveBack(piece);
        if (error != 0) {
            return complain(m_archive, error);
        }
    }
    return true;
}
