// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/CreateFolder.h"

#include "Platform/Core/Files/OpenPath.h"
#include "Platform/Core/Files/ReplaceableFile.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Trees/UnfinishedItem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>
#include <vector>

namespace platform {
namespace {

constexpr mode_t everybody = 0777;

// Whether root works in the folder of another.
bool belongsToAnotherUser(int folder)
{
    struct stat status {};
    return ::geteuid() == 0 && ::fstat(folder, &status) == 0 && status.st_uid != 0;
}

// Goes down a path with each folder pinned, so that none is another one by the time it is used.
class FolderMaker {
public:
    explicit FolderMaker(mode_t mode) : m_mode(mode) {}

    // Each: 0, else the reason (errno).
    int begin(bool atRoot);
    int enter(const QByteArray &name);

    void removeMade();
    Descriptor takeEnd() { return std::move(m_at); }

private:
    struct Made {
        Descriptor above;
        QByteArray name;
    };

    static int openFolder(int above, const QByteArray &name, Descriptor &folder);
    int make(const QByteArray &name);
    int makeHere(const QByteArray &name, Descriptor &made) const;
    int makeForOwnerAbove(const QByteArray &name, Descriptor &made) const;

    mode_t m_mode;
    Descriptor m_at;
    std::vector<Made> m_made;
};

int FolderMaker::begin(bool atRoot)
{
    return openPath(AT_FDCWD, atRoot ? "/" : ".", LastLink::Follow, m_at);
}

int FolderMaker::openFolder(int above, const QByteArray &name, Descriptor &folder)
{
    const auto error = openPath(above, name, LastLink::Follow, folder);
    struct stat status {};
    if (error != 0 || ::fstat(folder.fd(), &status) != 0) {
        return error != 0 ? error : errno;
    }
    return S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
}

int FolderMaker::enter(const QByteArray &name)
{
    Descriptor below;
    const auto error = openFolder(m_at.fd(), name, below);
    if (error == ENOENT || error == ENOTDIR) {
        return make(name);
    }
    if (error == 0) {
        m_at = std::move(below);
    }
    return error;
}

int FolderMaker::make(const QByteArray &name)
{
    Descriptor made;
    const auto error =
        belongsToAnotherUser(m_at.fd()) ? makeForOwnerAbove(name, made) : makeHere(name, made);
    if (made.isOpen()) {
        m_made.push_back({std::exchange(m_at, std::move(made)), name});
        return error;
    }
    Descriptor below; // made by somebody else meanwhile?
    if (error == EEXIST && openFolder(m_at.fd(), name, below) == 0) {
        m_at = std::move(below);
        return 0;
    }
    return error;
}

int FolderMaker::makeHere(const QByteArray &name, Descriptor &made) const
{
    if (::mkdirat(m_at.fd(), name.constData(), m_mode) != 0) {
        return errno;
    }
    made = Descriptor(retried([&] {
        return ::openat(m_at.fd(), name.constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    }));
    if (made.isOpen()) {
        return 0;
    }
    const auto error = errno;
    ::unlinkat(m_at.fd(), name.constData(), AT_REMOVEDIR);
    return error;
}

// It has its owner before others can put another folder in its place.
int FolderMaker::makeForOwnerAbove(const QByteArray &name, Descriptor &made) const
{
    UnfinishedItem item;
    if (const auto error = item.create(m_at.fd()); error != 0) {
        return error;
    }
    if (::mkdirat(item.folder(), UnfinishedItem::name, m_mode) != 0) {
        return errno;
    }
    Descriptor folder(retried([&] {
        return ::openat(item.folder(), UnfinishedItem::name,
                        O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    }));
    if (!folder.isOpen()) {
        return errno;
    }
    giveToOwnerOfFolder(m_at.fd(), folder.fd());
    const auto error = item.publish(name);
    if (error == 0) {
        made = std::move(folder);
    }
    return error;
}

void FolderMaker::removeMade()
{
    for (; !m_made.empty(); m_made.pop_back()) {
        ::unlinkat(m_made.back().above.fd(), m_made.back().name.constData(), AT_REMOVEDIR);
    }
}

} // namespace

FileError openFolderOrMake(const QString &path, mode_t mode, Descriptor &folder)
{
    const auto bytes = fileNameBytes(path);
    if (bytes.isEmpty() || bytes.contains('\0')) {
        return {bytes.isEmpty() ? ENOENT : EINVAL, path};
    }
    FolderMaker way(mode);
    auto error = way.begin(bytes.startsWith('/'));
    for (decltype(bytes.size()) begin = 0, end = 0; error == 0 && begin < bytes.size();
         begin = end + 1) {
        end = bytes.indexOf('/', begin);
        end = end < 0 ? bytes.size() : end;
        if (end == begin) {
            continue;
        }
        error = way.enter(bytes.mid(begin, end - begin));
        if (error != 0) {
            way.removeMade();
            return {error, fileNameFromBytes(bytes.left(end))};
        }
    }
    if (error != 0) {
        return {error, path};
    }
    folder = way.takeEnd();
    return {};
}

FileError createFolder(const QString &path)
{
    Descriptor folder;
    return openFolderOrMake(path, everybody, folder);
}

} // namespace platform
