// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/OpenPath.h"

#include "Platform/Core/Basics/FileError.h"

#include <QList>

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <climits>

namespace platform {
namespace {

// As a folder first: only then the system mounts what it mounts when it is needed (autofs).
int openUnchecked(int folder, const char *path, int flags, Descriptor &open)
{
    for (const auto asFolder : {O_DIRECTORY, 0}) {
        open = Descriptor(
            retried([&] { return ::openat(folder, path, O_PATH | O_CLOEXEC | asFolder | flags); }));
        if (open.isOpen() || errno != ENOTDIR) {
            break;
        }
    }
    return open.isOpen() ? 0 : errno;
}

// Goes a path step by step, so that each link is looked at before it is followed.
class LinkCheckingWalk {
public:
    explicit LinkCheckingWalk(Descriptor start) : m_at(std::move(start)) {}

    int go(const QByteArray &path, LastLink last);
    Descriptor takeEnd() { return std::move(m_at); }

private:
    static constexpr int maxLinks = 40; // as the system's own limit

    int follow(const Descriptor &link, uid_t owner);

    Descriptor m_at;
    int m_links = 0;
};

int LinkCheckingWalk::follow(const Descriptor &link, uid_t owner)
{
    if (++m_links > maxLinks) {
        return ELOOP;
    }
    std::array<char, PATH_MAX> target{};
    if (::readlinkat(link.fd(), "", target.data(), target.size() - 1) < 0) {
        return errno;
    }
    if (const auto error = go(target.data(), LastLink::Follow); error != 0 || owner == 0) {
        return error;
    }
    struct stat status {};
    if (::fstat(m_at.fd(), &status) != 0) {
        return errno;
    }
    return status.st_uid == owner ? 0 : EACCES;
}

// NOLINTNEXTLINE(misc-no-recursion): as many times as there may be links
int LinkCheckingWalk::go(const QByteArray &path, LastLink last)
{
    if (path.startsWith('/')) {
        if (const auto error = openUnchecked(AT_FDCWD, "/", O_DIRECTORY, m_at); error != 0) {
            return error;
        }
    }
    const auto parts = path.split('/');
    for (int i = 0; i < static_cast<int>(parts.size()); ++i) {
        if (parts[i].isEmpty()) {
            continue;
        }
        Descriptor next;
        struct stat status {};
        if (const auto error = openUnchecked(m_at.fd(), parts[i].constData(), O_NOFOLLOW, next);
            error != 0) {
            return error;
        }
        if (::fstat(next.fd(), &status) != 0) {
            return errno;
        }
        const auto isKept = last == LastLink::Keep && i + 1 == static_cast<int>(parts.size());
        if (!S_ISLNK(status.st_mode) || isKept) {
            m_at = std::move(next);
        } else if (const auto error = follow(next, status.st_uid); error != 0) {
            return error;
        }
    }
    return 0;
}

} // namespace

int openPath(int folder, const QByteArray &path, LastLink last, Descriptor &open)
{
    if (path.isEmpty() || path.contains('\0')) {
        return path.isEmpty() ? ENOENT : EINVAL;
    }
    if (::geteuid() != 0) {
        return openUnchecked(folder, path.constData(), last == LastLink::Keep ? O_NOFOLLOW : 0,
                             open);
    }
    Descriptor start;
    if (const auto error = openUnchecked(folder, ".", O_DIRECTORY, start); error != 0) {
        return error;
    }
    LinkCheckingWalk walk(std::move(start));
    const auto error = walk.go(path, last);
    if (error == 0) {
        open = walk.takeEnd();
    }
    return error;
}

} // namespace platform
