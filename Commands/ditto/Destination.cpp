// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/Destination.h"

#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/ItemPlace.h"

#include <QList>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <iterator>

using platform::Descriptor;
using platform::retried;

namespace {

// Not the bits that hand out the owner's rights: whoever made the archive is not him.
constexpr mode_t keptModeBits = 01777;
constexpr mode_t allPermissions = 0777;
constexpr mode_t everybody = 0666;

std::array<timespec, 2> timesOf(time_t time)
{
    return {timespec{0, UTIME_NOW}, timespec{time, 0}};
}

int errorOf(int result)
{
    return result == 0 ? 0 : errno;
}

QByteArray pathOf(const std::vector<QByteArray> &names)
{
    QByteArray path;
    for (const auto &name : names) {
        path += '/' + name;
    }
    return path;
}

} // namespace

Destination::Destination(int folder) : m_root(folder), m_usualMode(usualFolderMode()) {}

mode_t Destination::usualFolderMode()
{
    const auto mask = ::umask(0);
    ::umask(mask);
    return allPermissions & ~mask;
}

bool Destination::split(const QByteArray &name, Names &names)
{
    if (name.isEmpty() || name.startsWith('/')) {
        return false;
    }
    for (const auto &part : name.split('/')) {
        if (part == "..") {
            return false;
        }
        if (!part.isEmpty() && part != ".") {
            names.push_back(part);
        }
    }
    return true;
}

int Destination::enter(int folder, const QByteArray &name, const QByteArray &path,
                       Descriptor &entered)
{
    if (::mkdirat(folder, name.constData(), S_IRWXU) == 0) {
        m_folders.insert({path, {m_usualMode, false, 0}});
    } else if (errno != EEXIST) {
        return errno;
    }
    entered = Descriptor(retried([&] {
        return ::openat(folder, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    }));
    if (entered.isOpen()) {
        return 0;
    }
    // A link, or a file, where a folder has to be.
    return errno == ELOOP || errno == ENOTDIR ? EPERM : errno;
}

int Destination::open(const Names &names)
{
    // On from the folder of the last item where that is on the way.
    const auto isOnTheWay = m_open.isOpen() && m_openNames.size() <= names.size() &&
                            std::equal(m_openNames.begin(), m_openNames.end(), names.begin());
    if (!isOnTheWay) {
        m_openNames.clear();
        m_open = Descriptor(
            retried([&] { return ::openat(m_root, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
        if (!m_open.isOpen()) {
            return errno;
        }
    }
    auto path = pathOf(m_openNames);
    while (m_openNames.size() < names.size()) {
        const auto &name = names[m_openNames.size()];
        Descriptor entered;
        path += '/' + name;
        if (const auto error = enter(m_open.fd(), name, path, entered); error != 0) {
            return error;
        }
        m_open = std::move(entered);
        m_openNames.push_back(name);
    }
    return 0;
}

int Destination::parentOf(const QByteArray &name, Names &names, int &folder)
{
    if (!split(name, names) || names.empty()) {
        return EPERM;
    }
    const auto error = open(Names(names.begin(), names.end() - 1));
    folder = m_open.fd();
    return error;
}

int Destination::addFolder(const QByteArray &name, std::optional<mode_t> mode, time_t time)
{
    Names names;
    if (!split(name, names)) {
        return EPERM;
    }
    const auto error = open(names);
    if (error == 0 && !names.empty()) {
        m_folders[pathOf(names)] = {mode.value_or(m_usualMode) & keptModeBits, true, time};
    }
    return error;
}

int Destination::addLink(const QByteArray &name, const QByteArray &target, time_t time)
{
    Names names;
    int folder = -1;
    if (const auto error = parentOf(name, names, folder); error != 0) {
        return error;
    }
    const auto temporary = platform::temporaryName();
    if (::symlinkat(target.constData(), folder, temporary.constData()) != 0) {
        return errno;
    }
    const auto times = timesOf(time);
    ::utimensat(folder, temporary.constData(), times.data(), AT_SYMLINK_NOFOLLOW);
    const auto error =
        errorOf(::renameat(folder, temporary.constData(), folder, names.back().constData()));
    if (error != 0) {
        ::unlinkat(folder, temporary.constData(), 0);
    }
    return error;
}

int Destination::beginFile(const QByteArray &name, platform::UnnamedFile &file)
{
    Names names;
    int folder = -1;
    const auto error = parentOf(name, names, folder);
    return error != 0 ? error : file.create(folder, S_IRUSR | S_IWUSR);
}

int Destination::endFile(const QByteArray &name, platform::UnnamedFile &file,
                         std::optional<mode_t> mode, time_t time)
{
    Names names;
    int folder = -1;
    if (const auto error = parentOf(name, names, folder); error != 0) {
        return error;
    }
    const auto times = timesOf(time);
    if (::fchmod(file.descriptor(), mode.value_or(m_usualMode & everybody) & keptModeBits) != 0 ||
        ::futimens(file.descriptor(), times.data()) != 0) {
        return errno;
    }
    return file.publishOrReplace(names.back());
}

int Destination::finish()
{
    m_open.close();
    // What is in a folder comes behind it in the order of paths, and so before it here.
    while (!m_folders.empty()) {
        const auto folder = std::prev(m_folders.end());
        Names names;
        split(folder->first.mid(1), names);
        if (const auto error = open(names); error != 0) {
            return error;
        }
        const auto &state = folder->second;
        const auto times = timesOf(state.time);
        if (::fchmod(m_open.fd(), state.mode) != 0 ||
            (state.hasTime && ::futimens(m_open.fd(), times.data()) != 0)) {
            return errno;
        }
        m_folders.erase(folder);
    }
    m_open.close();
    return 0;
}
