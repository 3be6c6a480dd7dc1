// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/FileContents.h"

#include "Platform/Descriptor.h"
#include "Platform/FileError.h"
#include "Platform/FileName.h"
#include "Platform/ItemPlace.h"
#include "Platform/UnnamedFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>

namespace platform {
namespace {

constexpr auto mostLinks = 40; // as the system follows
constexpr mode_t permissions = 0777;
constexpr mode_t readableAndWritable = 0666; // by all whom the process's mask lets

bool canBePath(const QString &path)
{
    return !path.isEmpty() && !path.contains(QChar(0)) && !path.endsWith(u'/');
}

// The path that a chain of symbolic links leads to, whether or not anything is there.
QByteArray withoutLinkAtTheEnd(QByteArray path)
{
    std::array<char, PATH_MAX> target{};
    for (int i = 0; i < mostLinks; ++i) {
        const auto size = ::readlink(path.constData(), target.data(), target.size());
        if (size < 0) {
            break;
        }
        const QByteArray next(target.data(), static_cast<int>(size));
        path = next.startsWith('/') ? next : path.left(path.lastIndexOf('/') + 1) + next;
    }
    return path;
}

// Why the file at the path must not be replaced; null where it may be. Tells about the old file.
QString objection(const QByteArray &path, struct stat &old, bool &exists)
{
    struct stat link {};
    const auto linked = ::lstat(path.constData(), &link) == 0 && S_ISLNK(link.st_mode);
    if (linked && link.st_uid != ::geteuid() && link.st_uid != 0) {
        return QStringLiteral("The symbolic link belongs to another user.");
    }
    exists = ::stat(path.constData(), &old) == 0;
    return exists && !S_ISREG(old.st_mode) ? QStringLiteral("This is not a regular file.")
                                           : QString();
}

// Some file systems cannot, or need not.
bool writtenToDisk(int file)
{
    return retried([&] { return ::fsync(file); }) == 0 || errno == EINVAL || errno == EROFS ||
           errno == EOPNOTSUPP;
}

// 0, else the reason (errno).
int takeOver(const struct stat &old, int file)
{
    if (::geteuid() == 0 && ::fchown(file, old.st_uid, old.st_gid) != 0) {
        // In a container the owner may be one that cannot be given; the file is worth more.
    }
    return ::fchmod(file, old.st_mode & permissions) == 0 || errno == EPERM ? 0 : errno;
}

int writeInPlaceOf(const QString &path, const struct stat *old, const QByteArray &contents)
{
    ItemPlace place;
    if (const auto error = openPlace(path, place); error != 0) {
        return error;
    }
    if (old != nullptr &&
        ::faccessat(place.folder.number(), place.name.constData(), W_OK, AT_EACCESS) != 0) {
        return errno;
    }
    UnnamedFile file;
    auto error = file.create(place.folder.number(),
                             old != nullptr ? S_IRUSR | S_IWUSR : readableAndWritable);
    if (error == 0) {
        error = file.write(contents.constData(), static_cast<std::size_t>(contents.size()));
    }
    if (error == 0 && old != nullptr) {
        error = takeOver(*old, file.descriptor());
    }
    if (error == 0 && !writtenToDisk(file.descriptor())) {
        error = errno;
    }
    return error == 0 ? file.publishOrReplace(place.name) : error;
}

} // namespace

std::optional<QByteArray> contentsOfFile(const QString &path, qint64 maximumSize)
{
    const auto name = fileNameBytes(path);
    struct stat status {};
    // Asked before as well as after: opening a device may already do something.
    if (!canBePath(path) || ::stat(name.constData(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    const Descriptor file(retried(
        [&] { return ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC); }));
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > maximumSize) {
        return std::nullopt;
    }
    // One byte more than the size, to meet the end at once; it may have grown or tell no size.
    QByteArray contents(static_cast<int>(status.st_size) + 1, Qt::Uninitialized);
    for (int size = 0;;) {
        const auto count = retried([&] {
            return ::read(file.number(), contents.data() + size,
                          static_cast<std::size_t>(contents.size() - size));
        });
        if (count < 0 || size + count > maximumSize) {
            return std::nullopt;
        }
        size += static_cast<int>(count);
        if (count == 0) {
            contents.truncate(size);
            return contents;
        }
        if (size == contents.size()) {
            contents.resize(size * 2);
        }
    }
}

bool replaceFile(const QString &path, const QByteArray &contents, QString *error)
{
    struct stat old {};
    auto exists = false;
    const auto name = fileNameBytes(path);
    auto reason =
        canBePath(path) ? objection(name, old, exists) : QStringLiteral("This is not a path.");
    if (reason.isNull()) {
        const auto target = fileNameFromBytes(withoutLinkAtTheEnd(name));
        const auto code = writeInPlaceOf(target, exists ? &old : nullptr, contents);
        reason = FileError(code, path).reason();
    }
    if (error != nullptr && !reason.isNull()) {
        *error = reason;
    }
    return reason.isNull();
}

} // namespace platform
