// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Folders/PrivateFiles.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/ItemPlace.h"
#include "Platform/Core/Files/ReplaceableFile.h"
#include "Platform/Core/Files/UnnamedFile.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Trees/CreateFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace platform {
namespace {

constexpr mode_t ownerOnly = 0700;

} // namespace

bool createPrivateFolder(const QString &path)
{
    Descriptor folder;
    return !openFolderOrMake(path, ownerOnly, folder);
}

bool createEmptyPrivateFile(const QString &path, QString *error)
{
    ItemPlace place;
    UnnamedFile file;
    auto code = openPlace(path, place);
    if (code == 0) {
        code = file.create(place.folder.fd(), S_IRUSR | S_IWUSR);
    }
    if (code == 0) {
        giveToOwnerOfFolder(place.folder.fd(), file.descriptor());
        code = file.publishOrReplace(place.name);
    }
    if (code != 0) {
        *error = FileError(code, path).reason();
    }
    return code == 0;
}

bool renameWithoutReplacing(const QString &from, const QString &to)
{
    ItemPlace source;
    ItemPlace target;
    return openPlace(from, source) == 0 && openPlace(to, target) == 0 &&
           renameInPlace(source.folder.fd(), source.name, target.folder.fd(), target.name) == 0;
}

bool exchangeNames(const QString &one, const QString &other)
{
    ItemPlace first;
    ItemPlace second;
    return openPlace(one, first) == 0 && openPlace(other, second) == 0 &&
           ::renameat2(first.folder.fd(), first.name.constData(), second.folder.fd(),
                       second.name.constData(), RENAME_EXCHANGE) == 0;
}

bool nameExists(const QString &path)
{
    struct stat status {};
    return ::lstat(fileNameBytes(path).constData(), &status) == 0;
}

} // namespace platform
