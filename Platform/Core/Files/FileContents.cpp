// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileContents.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Files/ReadToEnd.h"
#include "Platform/Core/Files/ReplaceableFile.h"
#include "Platform/Core/Files/UnnamedFile.h"
#include "Platform/Core/Text/FileName.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace platform {
namespace {

constexpr mode_t readableAndWritable = 0666; // by all whom the process's mask lets

bool canBePath(const QString &path)
{
    return !path.isEmpty() && !path.contains(QChar(0)) && !path.endsWith(u'/');
}

// Some file systems cannot, or need not.
bool writtenToDisk(int file)
{
    return retried([&] { return ::fsync(file); }) == 0 || errno == EINVAL || errno == EROFS ||
           errno == EOPNOTSUPP;
}

// 0, else the reason (errno).
int writeInPlaceOf(const ReplaceableFile &old, const QByteArray &contents)
{
    const auto folder = old.place.folder.fd();
    UnnamedFile file;
    auto error = file.create(folder, old.exists ? S_IRUSR | S_IWUSR : readableAndWritable);
    if (error == 0) {
        error = file.write(contents.constData(), static_cast<std::size_t>(contents.size()));
    }
    if (error == 0 && old.exists) {
        error = takeOver(old.status, file.descriptor());
    } else if (error == 0) {
        giveToOwnerOfFolder(folder, file.descriptor());
    }
    if (error == 0 && !writtenToDisk(file.descriptor())) {
        error = errno;
    }
    return error == 0 ? file.publishOrReplace(old.place.name) : error;
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
    if (file.fd() < 0 || ::fstat(file.fd(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > maximumSize) {
        return std::nullopt;
    }
    try {
        return readToEnd(file.fd(), maximumSize);
    } catch (const Exception &) {
        return std::nullopt;
    }
}

bool replaceFile(const QString &path, const QByteArray &contents, QString *error)
{
    ReplaceableFile old;
    auto reason =
        canBePath(path) ? findReplaceable(path, old) : QStringLiteral("This is not a path.");
    if (reason.isNull()) {
        reason = FileError(writeInPlaceOf(old, contents), path).reason();
    }
    if (error != nullptr && !reason.isNull()) {
        *error = reason;
    }
    return reason.isNull();
}

} // namespace platform
