// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/DamagedPropertyList.h"

#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/ReplaceableFile.h"
#include "Platform/Core/Files/UnnamedFile.h"
#include "Platform/Core/PropertyLists/PropertyList.h"

#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

#include <array>

namespace platform {
namespace {

// A copy of the file's owner and mode.
bool copyFile(const ItemPlace &from, const ItemPlace &to)
{
    const Descriptor original(retried([&] {
        return ::openat(from.folder.fd(), from.name.constData(),
                        O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }));
    struct stat status {};
    UnnamedFile copy;
    if (!original.isOpen() || ::fstat(original.fd(), &status) != 0 || !S_ISREG(status.st_mode) ||
        copy.create(to.folder.fd(), S_IRUSR | S_IWUSR) != 0) {
        return false;
    }
    constexpr std::size_t piece = 65536;
    std::array<char, piece> bytes; // NOLINT(*-member-init): filled by read()
    for (;;) {
        const auto size =
            retried([&] { return ::read(original.fd(), bytes.data(), bytes.size()); });
        if (size == 0) {
            return takeOver(status, copy.descriptor()) == 0 && copy.publishOrReplace(to.name) == 0;
        }
        if (size < 0 || copy.write(bytes.data(), static_cast<std::size_t>(size)) != 0) {
            return false;
        }
    }
}

} // namespace

bool keepDamagedPropertyList(const QString &path)
{
    const QFileInfo info(path);
    if (!info.isFile() || info.size() == 0 || dictionaryFromFile(path)) {
        return true;
    }
    ReplaceableFile file;
    ItemPlace kept;
    if (!findReplaceable(path, file).isNull() || !file.exists ||
        openPlace(path + QStringLiteral(".damaged"), kept) != 0) {
        return false;
    }
    ::unlinkat(kept.folder.fd(), kept.name.constData(), 0);
    // A second name needs no right to read the file, and the file is never away. Of a symbolic link
    // the file behind it gets the name, as that is what will be replaced.
    return ::linkat(file.place.folder.fd(), file.place.name.constData(), kept.folder.fd(),
                    kept.name.constData(), 0) == 0 ||
           copyFile(file.place, kept);
}

} // namespace platform
