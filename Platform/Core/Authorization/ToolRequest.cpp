// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Authorization/ToolRequest.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <iterator>

namespace platform {
namespace {

constexpr std::size_t maxDescriptors = 4;

union ControlBuffer {
    cmsghdr alignment;
    std::array<char, CMSG_SPACE(sizeof(int) * maxDescriptors) + CMSG_SPACE(sizeof(ucred))> bytes;
};

void appendNumber(std::string &bytes, std::size_t number)
{
    const auto value = static_cast<std::uint32_t>(number);
    std::array<char, sizeof value> text{};
    std::memcpy(text.data(), &value, sizeof value);
    bytes.append(text.data(), text.size());
}

// Takes the number at the beginning; nothing where the bytes end before it does.
std::optional<std::uint32_t> takeNumber(std::string_view &bytes)
{
    std::uint32_t value = 0;
    if (bytes.size() < sizeof value) {
        return {};
    }
    std::memcpy(&value, bytes.data(), sizeof value);
    bytes.remove_prefix(sizeof value);
    return value;
}

void takeControlMessages(const msghdr &message, Packet *packet)
{
    auto header = message;
    for (auto *control = CMSG_FIRSTHDR(&header); control != nullptr;
         control = CMSG_NXTHDR(&header, control)) {
        if (control->cmsg_level != SOL_SOCKET) {
            continue;
        }
        const auto *data = CMSG_DATA(control);
        const auto size = control->cmsg_len - CMSG_LEN(0);
        if (control->cmsg_type == SCM_RIGHTS) {
            for (std::size_t at = 0; at + sizeof(int) <= size; at += sizeof(int)) {
                int number = -1;
                std::memcpy(&number, data + at, sizeof number);
                packet->descriptors.emplace_back(number);
            }
        } else if (control->cmsg_type == SCM_CREDENTIALS && size >= sizeof(ucred)) {
            ucred sender{};
            std::memcpy(&sender, data, sizeof sender);
            packet->sender = sender;
        }
    }
}

} // namespace

std::string encodeToolRequest(const std::vector<std::string> &toolAndArguments)
{
    std::string bytes;
    appendNumber(bytes, toolAndArguments.size());
    for (const auto &text : toolAndArguments) {
        appendNumber(bytes, text.size());
        bytes += text;
    }
    return bytes;
}

std::optional<std::vector<std::string>> decodeToolRequest(std::string_view bytes)
{
    const auto count = takeNumber(bytes);
    if (!count) {
        return {};
    }
    std::vector<std::string> texts;
    for (std::uint32_t i = 0; i < *count; ++i) {
        const auto length = takeNumber(bytes);
        if (!length || *length > bytes.size()) {
            return {};
        }
        const auto text = bytes.substr(0, *length);
        if (text.find('\0') != std::string_view::npos) {
            return {}; // the system would take it for its end
        }
        texts.emplace_back(text);
        bytes.remove_prefix(*length);
    }
    if (!bytes.empty() || (!texts.empty() && texts.front().empty())) {
        return {};
    }
    return texts;
}

bool sendPacket(int socket, std::string_view bytes, std::initializer_list<int> descriptors)
{
    std::string content(bytes);
    iovec part{content.data(), content.size()};
    ControlBuffer control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (descriptors.size() > 0) {
        const auto size = sizeof(int) * descriptors.size();
        message.msg_control = control.bytes.data();
        message.msg_controllen = CMSG_SPACE(size);
        auto *header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(size);
        std::memcpy(CMSG_DATA(header), std::data(descriptors), size);
    }
    ssize_t sent = -1;
    do {
        sent = ::sendmsg(socket, &message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent >= 0 && static_cast<std::size_t>(sent) == bytes.size();
}

std::optional<Packet> receivePacket(int socket)
{
    Packet packet;
    packet.bytes.resize(maxToolRequest);
    iovec part{packet.bytes.data(), packet.bytes.size()};
    ControlBuffer control{};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.bytes.data();
    message.msg_controllen = control.bytes.size();
    ssize_t size = -1;
    do {
        size = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    } while (size < 0 && errno == EINTR);
    if (size >= 0) {
        takeControlMessages(message, &packet); // what comes with an empty packet is closed, too
    }
    if (size > 0) {
        packet.bytes.resize(static_cast<std::size_t>(size));
        packet.isWhole = (message.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) == 0;
        return packet;
    }
    return {};
}

bool becomesReadable(int descriptor, std::chrono::milliseconds limit)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + limit;
    pollfd readable{descriptor, POLLIN, 0};
    int ready = 0;
    do {
        const auto rest = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        ready = ::poll(&readable, 1, static_cast<int>(std::max<std::int64_t>(rest, 0)));
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

std::optional<std::int32_t> receiveToolReply(int pipe, std::chrono::milliseconds limit)
{
    std::array<char, sizeof(std::int32_t)> bytes{};
    for (std::size_t size = 0; size < bytes.size();) {
        if (!becomesReadable(pipe, limit)) {
            errno = ETIMEDOUT;
            return {};
        }
        const auto more = ::read(pipe, bytes.data() + size, bytes.size() - size);
        if (more == 0 || (more < 0 && errno != EINTR)) {
            errno = EPIPE;
            return {};
        }
        size += more > 0 ? static_cast<std::size_t>(more) : 0;
    }
    std::int32_t reply = 0;
    std::memcpy(&reply, bytes.data(), sizeof reply);
    return reply;
}

} // namespace platform
