// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/Compression.h"

#include "Commands/ditto/Complaint.h"
#include "Commands/ditto/Interruption.h"
#include "Commands/ditto/TreeReader.h"
#include "Platform/Core/Basics/FileError.h"
#include "Platform/Core/Files/ItemPlace.h"
#include "Platform/Core/Text/FileName.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>

namespace {

// Nobody may read the archive who may not read what it is made of: from its first byte on.
mode_t modeFor(const platform::ItemPlace &source)
{
    constexpr mode_t owner = 0600;
    constexpr mode_t others = 0066;
    struct stat status {};
    const auto isThere =
        ::fstatat(source.folder.fd(), source.name.constData(), &status, AT_SYMLINK_NOFOLLOW) == 0;
    return owner | (isThere ? status.st_mode & others : 0);
}

bool isSame(const struct stat &one, const struct stat &other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// "." and ".." have names of their own elsewhere.
int openSource(const QString &path, platform::ItemPlace &place)
{
    const auto error = platform::openPlace(path, place);
    if (error != EINVAL) {
        return error;
    }
    std::array<char, PATH_MAX> real{};
    const auto bytes = platform::fileNameBytes(path);
    if (bytes.contains('\0') || ::realpath(bytes.constData(), real.data()) == nullptr) {
        return EINVAL;
    }
    return platform::openPlace(platform::fileNameFromBytes(real.data()), place);
}

// The archive that is being made, and the one whose name it takes: neither is put into it.
class OwnFiles {
public:
    OwnFiles(const platform::UnnamedFile &file, const platform::ItemPlace &place)
    {
        m_hasNew = ::fstat(file.descriptor(), &m_new) == 0;
        m_hasOld =
            ::fstatat(place.folder.fd(), place.name.constData(), &m_old, AT_SYMLINK_NOFOLLOW) == 0;
    }

    bool contains(const struct stat &status) const
    {
        return (m_hasNew && isSame(m_new, status)) || (m_hasOld && isSame(m_old, status));
    }
    bool isFolder() const { return m_hasOld && S_ISDIR(m_old.st_mode); }

private:
    struct stat m_new {};
    struct stat m_old {};
    bool m_hasNew = false;
    bool m_hasOld = false;
};

} // namespace

bool compress(const Arguments &arguments)
{
    const auto source = platform::fileNameBytes(arguments.source);
    const auto archive = platform::fileNameBytes(arguments.destination);
    platform::ItemPlace from;
    platform::ItemPlace to;
    if (const auto error = openSource(arguments.source, from); error != 0) {
        return complain(source, error);
    }
    if (const auto error = platform::openPlace(arguments.destination, to); error != 0) {
        return complain(archive, error);
    }
    // Held open for reading, in case it is to have no name.
    const platform::Descriptor folder(platform::retried(
        [&] { return ::openat(to.folder.fd(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    const auto folderNumber = folder.isOpen() ? folder.fd() : to.folder.fd();
    platform::UnnamedFile file;
    if (const auto error = file.create(folderNumber, modeFor(from)); error != 0) {
        return complain(archive, error);
    }
    const OwnFiles own(file, to);
    if (own.isFolder()) {
        return complain(archive, EISDIR);
    }
    ZipWriter writer(file);
    if (const auto error = writer.begin(); error != 0) {
        return complain(archive, error);
    }
    TreeReader reader(writer, archive,
                      [&](const struct stat &status) { return own.contains(status); });
    if (!reader.read(from, source, arguments.keepParent) || isInterrupted()) {
        return false;
    }
    auto error = writer.finish();
    if (error == 0) {
        error = file.publishOrReplace(to.name);
    }
    return error == 0 || complain(archive, error);
}
