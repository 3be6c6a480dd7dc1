// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/CreateFolder.h"

#include "Platform/FileName.h"
#include "Platform/FolderEntries.h"
#include "Platform/ReplaceableFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace platform {
namespace {

constexpr mode_t everybody = 0777;

bool exists(const QByteArray &folder)
{
    struct stat status {};
    return ::stat(folder.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

// The folder and those above it up to the first that is there; the folder itself first.
std::vector<QByteArray> missingFolders(QByteArray folder)
{
    std::vector<QByteArray> missing;
    for (;;) {
        while (folder.size() > 1 && folder.endsWith('/')) {
            folder.chop(1);
        }
        if (folder.isEmpty() || exists(folder)) {
            return missing;
        }
        missing.push_back(folder);
        folder.truncate(std::max(folder.lastIndexOf('/'), decltype(folder.size())(0)));
    }
}

// As root in somebody's folder, gives a new folder to that somebody. By its name it may be another
// one by now, so only an empty one is given away.
void giveToOwnerAbove(const ItemPlace &place)
{
    const Descriptor made(::openat(place.folder.number(), place.name.constData(),
                                   O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    EntryBatch entries;
    if (made.isOpen() && ::fstat(made.number(), &status) == 0 && status.st_uid == 0 &&
        !(entries.read(made.number()) && entries.next())) {
        giveToOwnerOfFolder(place.folder.number(), made.number());
    }
}

// 0, else the reason (errno).
int makeFolder(const QByteArray &folder)
{
    ItemPlace place;
    if (const auto error = openPlace(fileNameFromBytes(folder), place); error != 0) {
        return error;
    }
    if (::mkdirat(place.folder.number(), place.name.constData(), everybody) != 0) {
        return errno;
    }
    if (::geteuid() == 0) {
        giveToOwnerAbove(place);
    }
    return 0;
}

} // namespace

FileError createFolder(const QString &path)
{
    const auto bytes = fileNameBytes(path);
    if (bytes.isEmpty() || bytes.contains('\0')) {
        return {bytes.isEmpty() ? ENOENT : EINVAL, path};
    }
    auto missing = missingFolders(bytes);
    std::vector<QByteArray> made;
    for (; !missing.empty(); missing.pop_back()) {
        const auto &folder = missing.back();
        const auto error = makeFolder(folder);
        if (error == 0) {
            made.push_back(folder);
        } else if (error != EEXIST || !exists(folder)) {
            for (; !made.empty(); made.pop_back()) {
                ::rmdir(made.back().constData());
            }
            return {error, fileNameFromBytes(folder)};
        }
    }
    return {};
}

} // namespace platform
