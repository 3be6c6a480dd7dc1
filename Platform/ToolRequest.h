// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Descriptor.h"

#include <QByteArray>
#include <QList>

#include <sys/socket.h>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

// What the holder of an administrator's authorisation and its helper say to each other: packets
// over a socket that keeps their bounds. See Documentation/Authorization.md.
namespace platform {

// Bytes of one request.
constexpr int longestToolRequest = 128 * 1024;

// First word of the helper, in a packet with one descriptor: the socket that takes the requests.
constexpr const char *toolGreeting = "authorization-helper 1";

// A request is the path of a tool and its arguments: their number, then each with its length in
// front, all numbers of 32 bits in the machine's order. None at all asks only whether the helper is
// there. Nothing for bytes that are no request.
QByteArray encodeToolRequest(const QList<QByteArray> &toolAndArguments);
std::optional<QList<QByteArray>> decodeToolRequest(const QByteArray &bytes);

struct Packet {
    QByteArray bytes;
    std::vector<Descriptor> descriptors;
    std::optional<ucred> sender; // where the socket passes credentials
    bool isWhole = true;         // false where it was longer than was to be received
};

// Sends one packet, waiting for room. False where nobody receives any more; no signal then.
bool sendPacket(int socket, const QByteArray &bytes, std::initializer_list<int> descriptors = {});

// Waits for a packet and takes it. Nothing at the end of the connection, for which an empty packet
// counts.
std::optional<Packet> receivePacket(int socket);

// Waits for the helper's word that a request has been carried out: 0 or the system's error number.
// Nothing when the helper is gone.
std::optional<std::int32_t> receiveToolReply(int pipe);

} // namespace platform
