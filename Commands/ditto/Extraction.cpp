// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/Extraction.h"

#include "Commands/ditto/Complaint.h"
#include "Commands/ditto/Destination.h"
#include "Commands/ditto/Interruption.h"
#include "Commands/ditto/ZipReader.h"
#include "Platform/Core/Files/ItemPlace.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Trees/CreateFolder.h"
#include "Platform/Core/Trees/UnfinishedItem.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>

using platform::Descriptor;
using platform::retried;

namespace {

bool failed(const QByteArray &name, int error)
{
    return error == EPERM ? complain(name, "leads out of the folder, or through a link or a file")
                          : complain(name, error);
}

// What comes of an entry's bytes goes to a function that says whether it could take them.
template <typename Take>
bool readContents(ZipReader &reader, const Take &take)
{
    const char *data = nullptr;
    std::size_t size = 0;
    for (;;) {
        const auto step = reader.nextBlock(data, size);
        if (step == ZipReader::Step::AtEnd) {
            return true;
        }
        if (step == ZipReader::Step::Failed || isInterrupted() || !take(data, size)) {
            return false;
        }
    }
}

// EPERM has words of its own only where a name may be at fault.
bool extractFile(ZipReader &reader, Destination &destination)
{
    const auto &entry = reader.entry();
    platform::UnnamedFile file;
    if (const auto error = destination.beginFile(entry.name, file); error != 0) {
        return failed(entry.name, error);
    }
    if (!readContents(reader, [&](const char *data, std::size_t size) {
            const auto error = file.write(data, size);
            return error == 0 || complain(entry.name, error);
        })) {
        return false;
    }
    const auto error = destination.endFile(entry.name, file, entry.permissions, entry.time);
    return error == 0 || failed(entry.name, error);
}

bool extractLink(ZipReader &reader, Destination &destination)
{
    const auto &entry = reader.entry();
    QByteArray target;
    if (!readContents(reader, [&](const char *data, std::size_t size) {
            target.append(data, static_cast<int>(std::min<std::size_t>(size, PATH_MAX)));
            return target.size() < PATH_MAX || complain(entry.name, ENAMETOOLONG);
        })) {
        return false;
    }
    if (target.isEmpty() || target.contains('\0')) {
        return complain(entry.name, "is a link that leads nowhere");
    }
    const auto error = destination.addLink(entry.name, target, entry.time);
    return error == 0 || failed(entry.name, error);
}

bool extractEntry(ZipReader &reader, Destination &destination)
{
    const auto &entry = reader.entry();
    switch (entry.type) {
    case S_IFREG:
        return extractFile(reader, destination);
    case S_IFDIR: {
        const auto error = destination.addFolder(entry.name, entry.permissions, entry.time);
        return error == 0 || failed(entry.name, error);
    }
    case S_IFLNK:
        return extractLink(reader, destination);
    default:
        return complain(entry.name, "neither a file, a folder nor a link");
    }
}

bool extractAll(ZipReader &reader, Destination &destination, const QByteArray &path)
{
    for (;;) {
        const auto step = reader.nextEntry();
        if (step == ZipReader::Step::AtEnd) {
            break;
        }
        if (step == ZipReader::Step::Failed || isInterrupted() ||
            !extractEntry(reader, destination)) {
            return false;
        }
    }
    const auto error = destination.finish();
    return error == 0 || complain(path, error);
}

// Has no name before all is in it, and is gone again unless it gets its own.
class NewFolder {
public:
    int create(const QString &path)
    {
        auto error = platform::openPlace(path, m_place);
        if (error == 0) {
            error = m_item.create(m_place.folder.fd());
        }
        if (error != 0) {
            return error;
        }
        if (::mkdirat(m_item.folder(), platform::UnfinishedItem::name, S_IRWXU) != 0) {
            return errno;
        }
        m_folder = Descriptor(retried([&] {
            return ::openat(m_item.folder(), platform::UnfinishedItem::name,
                            O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        }));
        return m_folder.isOpen() ? 0 : errno;
    }

    int fd() const { return m_folder.fd(); }

    int publish()
    {
        return ::fchmod(m_folder.fd(), Destination::usualFolderMode()) == 0
                   ? m_item.publish(m_place.name)
                   : errno;
    }

private:
    platform::ItemPlace m_place;
    platform::UnfinishedItem m_item;
    Descriptor m_folder;
};

bool extractIntoNewFolder(ZipReader &reader, NewFolder &folder, const QString &path)
{
    const auto bytes = platform::fileNameBytes(path);
    const auto above = platform::deletingLastPathComponent(platform::absolutePath(path));
    if (const auto error = platform::createFolder(above)) {
        return complain(platform::fileNameBytes(error.path()), error.code());
    }
    if (const auto error = folder.create(path); error != 0) {
        return complain(bytes, error);
    }
    Destination destination(folder.fd());
    if (!extractAll(reader, destination, bytes) || isInterrupted()) {
        return false;
    }
    const auto error = folder.publish();
    return error == 0 || complain(bytes, error);
}

} // namespace

bool extract(const Arguments &arguments)
{
    NewFolder newFolder; // taken away last, when the memory for it is free again
    ZipReader reader;
    if (!reader.open(platform::fileNameBytes(arguments.source))) {
        return false;
    }
    const auto path = platform::fileNameBytes(arguments.destination);
    const Descriptor folder(
        retried([&] { return ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (folder.isOpen()) {
        Destination destination(folder.fd());
        return extractAll(reader, destination, path) && !isInterrupted();
    }
    return errno == ENOENT ? extractIntoNewFolder(reader, newFolder, arguments.destination)
                           : complain(path, errno);
}
