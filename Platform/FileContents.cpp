// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/FileContents.h"

#include <QFile>
#include <QSaveFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {
namespace {

// Closes its file when it goes.
class Descriptor {
public:
    explicit Descriptor(int number) : m_number(number) {}
    ~Descriptor()
    {
        if (m_number >= 0) {
            ::close(m_number);
        }
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;
    int number() const { return m_number; }

private:
    int m_number;
};

bool canBePath(const QString &path)
{
    return !path.isEmpty() && !path.contains(QChar(0));
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

} // namespace

std::optional<QByteArray> contentsOfFile(const QString &path, qint64 maximumSize)
{
    const auto name = QFile::encodeName(path);
    struct stat status {};
    // Asked before as well as after: opening a device may already do something.
    if (!canBePath(path) || ::stat(name.constData(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    const Descriptor file(
        ::open(name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)); // NOLINT(*-vararg)
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > maximumSize) {
        return std::nullopt;
    }
    // One byte more than the size, to meet the end at once; it may have grown or tell no size.
    QByteArray contents(static_cast<int>(status.st_size) + 1, Qt::Uninitialized);
    for (int size = 0;;) {
        const auto count = ::read(file.number(), contents.data() + size,
                                  static_cast<std::size_t>(contents.size() - size));
        if (count < 0 && errno == EINTR) {
            continue;
        }
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
    auto reason = canBePath(path) ? objection(QFile::encodeName(path), old, exists)
                                  : QStringLiteral("This is not a path.");
    if (reason.isNull()) {
        QSaveFile file(path);
        auto written = file.open(QIODevice::WriteOnly);
        if (written && exists && ::geteuid() == 0 &&
            ::fchown(file.handle(), old.st_uid, old.st_gid) != 0) {
            // In a container the owner may be one that cannot be given; the file is worth more.
        }
        written = written && file.write(contents) == contents.size() && file.commit();
        if (written) {
            return true;
        }
        reason = file.errorString();
    }
    if (error != nullptr) {
        *error = reason;
    }
    return false;
}

} // namespace platform
