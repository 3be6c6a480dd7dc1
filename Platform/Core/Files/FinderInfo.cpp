// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FinderInfo.h"

#include "Platform/Core/Basics/DescriptorPath.h"
#include "Platform/Core/Files/OpenPath.h"
#include "Platform/Core/Text/FileName.h"

#include <fcntl.h>
#include <sys/xattr.h>

#include <array>
#include <cerrno>

namespace platform {
namespace {

constexpr auto attribute = "user.com.apple.FinderInfo";
constexpr std::size_t highByte = 8;
constexpr std::size_t lowByte = 9;
using Information = std::array<unsigned char, 32>;

// All zeros where the item has none or its file system keeps none. 0, else the reason (errno).
int readInformation(const QByteArray &path, Information &information)
{
    information = {};
    if (::getxattr(path.constData(), attribute, information.data(), information.size()) >= 0) {
        return 0;
    }
    const auto error = errno;
    information = {};
    return error == ENODATA || error == EOPNOTSUPP ? 0 : error;
}

std::uint16_t flagsOf(const Information &information)
{
    return static_cast<std::uint16_t>(information[highByte] << 8U | information[lowByte]);
}

} // namespace

std::optional<std::uint16_t> finderFlags(const QString &path)
{
    Descriptor item;
    Information information{};
    if (openPath(AT_FDCWD, fileNameBytes(path), LastLink::Keep, item) != 0 ||
        readInformation(pathOfDescriptor(item.fd()), information) != 0) {
        return std::nullopt;
    }
    return flagsOf(information);
}

bool setFinderFlags(std::uint16_t flags, const QString &path, std::uint16_t which)
{
    Descriptor item;
    Information information{};
    if (openPath(AT_FDCWD, fileNameBytes(path), LastLink::Keep, item) != 0) {
        return false;
    }
    const auto pinned = pathOfDescriptor(item.fd());
    if (readInformation(pinned, information) != 0) {
        return false;
    }
    const auto all = (flags & which) | (flagsOf(information) & ~static_cast<unsigned>(which));
    information[highByte] = static_cast<unsigned char>(all >> 8U & 0xFFU);
    information[lowByte] = static_cast<unsigned char>(all & 0xFFU);
    return ::setxattr(pinned.constData(), attribute, information.data(), information.size(), 0) ==
           0;
}

} // namespace platform
