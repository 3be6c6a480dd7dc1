// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Commands/Jobs/LaunchSession.h"

#include <QByteArrayList>

#include <sys/socket.h>
#include <sys/un.h>

#include <cstring>

// What launchctl and the supervisor say to one another. A request is a word and its argument,
// "load" also with variables that say where the display is, for all starts from then on. An answer
// is "ok" and what was asked for, or "error" and why. Each piece ends with a null character, the
// whole with the end of the stream.
namespace messages {

// Bytes of the longest request.
constexpr qsizetype maxRequest = 65536;

// Fields of one job in the answer to "list": label, process (0: none), last status, job file,
// state, restarts.
constexpr int fieldsOfJob = 6;

// The supervisor's socket in the current folder, whose path may be longer than an address.
inline sockaddr_un socketAddress()
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, platform::supervisorSocketName, sizeof address.sun_path - 1);
    return address;
}

inline QByteArray join(const QByteArrayList &fields)
{
    return fields.join('\0') + '\0';
}

// Empty where the bytes are no whole message.
inline QByteArrayList split(const QByteArray &bytes)
{
    if (!bytes.endsWith('\0')) {
        return {};
    }
    return bytes.chopped(1).split('\0');
}

} // namespace messages
