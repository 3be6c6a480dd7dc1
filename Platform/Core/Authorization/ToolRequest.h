// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <sys/socket.h>

#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// What the holder of an administrator's authorisation and its helper say to each other: packets
// over a socket that keeps their bounds. See Documentation/Authorization.md. Plain C++: the helper
// is built with it.
namespace platform {

// Bytes of one request.
constexpr std::size_t maxToolRequest = 128UL * 1024;

// The helper's first packet, with one descriptor: the socket that takes the requests. A parent
// hands that socket down to a child by the same packet.
constexpr std::string_view toolGreeting = "authorization-helper 2";

// How long the helper may take to start a tool, as long as a command may run elsewhere.
constexpr std::chrono::milliseconds toolStartTimeout{10'000};

// A request is the path of a tool and its arguments: their number, then each with its length in
// front, all numbers of 32 bits in the machine's order. None at all asks only whether the helper is
// there; with the descriptor of a process it has the helper serve that child, too. Nothing for
// bytes that are no request.
std::string encodeToolRequest(const std::vector<std::string> &toolAndArguments);
std::optional<std::vector<std::string>> decodeToolRequest(std::string_view bytes);

struct Packet {
    std::string bytes;
    std::vector<Descriptor> descriptors;
    std::optional<ucred> sender; // where the socket passes credentials
    bool isWhole = true;         // false where it was longer than was to be received
};

// Sends one packet, waiting for room. False where nobody receives any more; no signal then.
bool sendPacket(int socket, std::string_view bytes, std::initializer_list<int> descriptors = {});

// Waits for a packet and takes it. Nothing at the end of the connection, for which an empty packet
// counts.
std::optional<Packet> receivePacket(int socket);

// Waits at most that long for something to read or the end of the connection.
bool becomesReadable(int descriptor, std::chrono::milliseconds limit);

// Waits for the helper's answer to a request: 0 or the system's error number.
// Nothing when the helper is gone, or has not answered within the limit (errno is ETIMEDOUT then).
std::optional<std::int32_t> receiveToolReply(int pipe, std::chrono::milliseconds limit);

} // namespace platform
