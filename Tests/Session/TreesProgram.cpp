// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// usage: TreesProgram WORD PATH [ARGUMENT]; writes why that failed, or "done".
#include "Platform/Core/Files/FilePermissions.h"
#include "Platform/Core/Folders/PrivateFiles.h"
#include "Platform/Core/Folders/Trash.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Trees/CopyItem.h"
#include "Platform/Core/Trees/CreateFolder.h"
#include "Platform/Core/Trees/MoveItem.h"
#include "Platform/Core/Trees/RemoveItem.h"

#include <cerrno>
#include <cstdio>

namespace {

platform::FileError perform(const QString &word, const QString &path, const QString &argument)
{
    if (word == QStringLiteral("copy")) {
        return platform::copyItem(path, argument);
    }
    if (word == QStringLiteral("move")) {
        return platform::moveItem(path, argument);
    }
    if (word == QStringLiteral("trash")) {
        return platform::recycleItem(path, argument);
    }
    if (word == QStringLiteral("remove")) {
        return platform::removeItem(path);
    }
    if (word == QStringLiteral("make")) {
        return platform::createFolder(path);
    }
    if (word == QStringLiteral("private")) {
        return platform::createPrivateFolder(path) ? platform::FileError()
                                                   : platform::FileError(EACCES, path);
    }
    if (word == QStringLiteral("mode")) {
        return platform::setPermissions(path, argument.toUInt(nullptr, 8));
    }
    return {EINVAL, word};
}

} // namespace

int main(int count, char *arguments[])
{
    const auto argument = [&](int number) {
        return number < count ? platform::fileNameFromBytes(arguments[number]) : QString();
    };
    const auto error = perform(argument(1), argument(2), argument(3));
    std::puts(error ? qUtf8Printable(error.reason()) : "done");
    return 0;
}
