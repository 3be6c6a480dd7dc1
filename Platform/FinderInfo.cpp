// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/FinderInfo.h"

#include "Platform/FileName.h"

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
    if (::lgetxattr(path.constData(), attribute, information.data(), information.size()) >= 0) {
        return 0;
    }
    const auto error = errno;
    information = {};
    return error == ENODATA || error == EOPNOTSUPP ? 0 : error;
}

} // namespace

std::optional<std::uint16_t> finderFlags(const QString &path)
{
    const auto bytes = fileNameBytes(path);
    Information information{};
    if (bytes.contains('\0') || readInformation(bytes, information) != 0) {
        return std::nullopt;
    }
    return static_cast<std::uint16_t>(information[highByte] << 8U | information[lowByte]);
}

bool setFinderFlags(std::uint16_t flags, const QString &path)
{
    const auto bytes = fileNameBytes(path);
    Information information{};
    if (bytes.contains('\0') || readInformation(bytes, information) != 0) {
        return false;
    }
    information[highByte] = static_cast<unsigned char>(flags >> 8U);
    information[lowByte] = static_cast<unsigned char>(flags & 0xFFU);
    return ::lsetxattr(bytes.constData(), attribute, information.data(), information.size(), 0) ==
           0;
}

} // namespace platform
