// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Jobs/RootsJobFile.h"

#include "Platform/Core/Basics/TrustedPath.h"
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Text/FileName.h"
#include "Shared/Authorization/ZQAuthorization.h"
#include "Shared/Basics/ZQLocalPaths.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr auto settingLimit = 10s; // as every command of a job gets
constexpr mode_t permissions = 07777;
constexpr mode_t jobMode = 0644;

platform::TrustedFile judged(const QString &path)
{
    const auto name = platform::fileNameBytes(path);
    return platform::openTrusted({name.constData(), static_cast<std::size_t>(name.size())});
}

// A name that nothing has and that is no job's.
QString temporaryName(const QString &folder)
{
    return folder + QStringLiteral("/.") + ZQLocalPaths::uuid();
}

} // namespace

RootsJobFile::RootsJobFile(QString path, QByteArray contents)
    : m_path(std::move(path)), m_contents(std::move(contents))
{
}

QString RootsJobFile::folderObjection(const QString &folder)
{
    // Of what is not there all that leads there is judged.
    const auto nothing = judged(temporaryName(folder));
    return nothing.error == EPERM ? QString::fromStdString(nothing.objection) : QString();
}

// One tool for all of it, which runs to its end even if this process does not. The contents come
// with the request, and through no file that somebody could write to.
bool RootsJobFile::replace() const
{
    const auto name = platform::fileNameBytes(m_path);
    struct stat old {};
    struct stat made {};
    if (::lstat(name.constData(), &old) != 0) {
        return false;
    }
    const auto script =
        QStringLiteral("umask 022; set -C; "
                       "printf %s \"$1\" >\"$2\" && { /bin/chgrp --reference=\"$3\" \"$2\"; "
                       "/bin/mv -fT \"$2\" \"$3\"; } || /bin/rm -f \"$2\"");
    ZQAuthorization::sharedController().authExecTask(
        QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), script, QStringLiteral("sh"), QString::fromUtf8(m_contents),
         temporaryName(m_path.left(m_path.lastIndexOf(u'/'))), m_path},
        Async::No);
    return ::lstat(name.constData(), &made) == 0 && S_ISREG(made.st_mode) && made.st_uid == 0 &&
           (made.st_ino != old.st_ino || made.st_dev != old.st_dev);
}

bool RootsJobFile::isInPlace() const
{
    const auto end = std::chrono::steady_clock::now() + settingLimit;
    for (;;) {
        const auto found = judged(m_path);
        struct stat status {};
        if (found.file.isOpen() && ::fstat(found.file.fd(), &status) == 0 && status.st_nlink == 1 &&
            (status.st_mode & permissions) == jobMode) {
            const auto pinned = QStringLiteral("/proc/self/fd/") + QString::number(found.file.fd());
            return platform::contentsOfFile(pinned, m_contents.size()) == m_contents;
        }
        if (found.error == ENOENT || std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(1ms);
    }
}

void RootsJobFile::setModeOfFileOnly() const
{
    const platform::Descriptor file(
        ::open(platform::fileNameBytes(m_path).constData(), // NOLINT(*-vararg)
               O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (file.isOpen() && ::fstat(file.fd(), &status) == 0 && S_ISREG(status.st_mode) &&
        status.st_nlink == 1) {
        ::fchmod(file.fd(), jobMode);
    }
}

void RootsJobFile::remove() const
{
    ZQAuthorization::sharedController().authExecTask(QStringLiteral("/bin/rm"),
                                                     {QStringLiteral("-Rdf"), m_path}, Async::No);
}
