// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <array>
#include <optional>

namespace platform {

// Of a pipe, the first is the end to read from.
struct DescriptorPair {
    Descriptor first;
    Descriptor second;
};

// Nothing, with the reason in errno, where there is none to be had.
inline std::optional<DescriptorPair> openPipe()
{
    std::array<int, 2> ends{};
    return ::pipe2(ends.data(), O_CLOEXEC) == 0
               ? std::optional(DescriptorPair{Descriptor(ends[0]), Descriptor(ends[1])})
               : std::nullopt;
}

// Of SOCK_STREAM or SOCK_SEQPACKET.
inline std::optional<DescriptorPair> openSocketPair(int type)
{
    std::array<int, 2> ends{};
    return ::socketpair(AF_UNIX, type | SOCK_CLOEXEC, 0, ends.data()) == 0
               ? std::optional(DescriptorPair{Descriptor(ends[0]), Descriptor(ends[1])})
               : std::nullopt;
}

} // namespace platform
