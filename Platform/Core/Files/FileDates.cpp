// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileDates.h"

#include "Platform/Core/Basics/DescriptorPath.h"
#include "Platform/Core/Files/OpenPath.h"
#include "Platform/Core/Text/FileName.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <array>

namespace platform {
namespace {

constexpr auto attribute = "user.creation_date";
constexpr qint64 thousand = 1000;
constexpr qint64 million = 1000000;

QDateTime dateFrom(qint64 seconds, qint64 nanoseconds)
{
    return QDateTime::fromMSecsSinceEpoch(seconds * thousand + nanoseconds / million);
}

// What a path leads to, whatever the path leads to by and by.
struct PinnedItem {
    Descriptor item;
    bool isNull() const { return !item.isOpen(); }
    QByteArray path() const { return pathOfDescriptor(item.fd()); }
};

PinnedItem pinned(const QString &path)
{
    PinnedItem found;
    openPath(AT_FDCWD, fileNameBytes(path), LastLink::Follow, found.item);
    return found;
}

} // namespace

QDateTime modificationDate(const QString &path)
{
    struct stat status {};
    const auto bytes = fileNameBytes(path);
    return !bytes.contains('\0') && ::stat(bytes.constData(), &status) == 0
               ? dateFrom(status.st_mtim.tv_sec, status.st_mtim.tv_nsec)
               : QDateTime();
}

bool setModificationDate(const QDateTime &date, const QString &path)
{
    const auto item = pinned(path);
    if (!date.isValid() || item.isNull()) {
        return false;
    }
    const auto milliseconds = date.toMSecsSinceEpoch();
    const auto part = (milliseconds % thousand + thousand) % thousand;
    const std::array<timespec, 2> times{
        timespec{0, UTIME_OMIT},
        timespec{(milliseconds - part) / thousand, static_cast<long>(part * million)}};
    return ::utimensat(AT_FDCWD, item.path().constData(), times.data(), 0) == 0;
}

QDateTime creationDate(const QString &path)
{
    const auto bytes = fileNameBytes(path);
    if (bytes.contains('\0')) {
        return {};
    }
    std::array<char, 64> text{};
    const auto size = ::getxattr(bytes.constData(), attribute, text.data(), text.size());
    if (size > 0) {
        auto date = QDateTime::fromString(QString::fromLatin1(text.data(), static_cast<int>(size)),
                                          Qt::ISODateWithMs);
        if (date.isValid()) {
            return date;
        }
    }
    struct statx status {};
    if (::statx(AT_FDCWD, bytes.constData(), 0, STATX_BTIME, &status) != 0 ||
        (status.stx_mask & STATX_BTIME) == 0) {
        return {};
    }
    return dateFrom(status.stx_btime.tv_sec, status.stx_btime.tv_nsec);
}

bool setCreationDate(const QDateTime &date, const QString &path)
{
    const auto item = pinned(path);
    if (!date.isValid() || item.isNull()) {
        return false;
    }
    const auto text = date.toUTC().toString(Qt::ISODateWithMs).toLatin1();
    return ::setxattr(item.path().constData(), attribute, text.constData(),
                      static_cast<std::size_t>(text.size()), 0) == 0;
}

} // namespace platform
