// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/ditto/Complaint.h"

#include <cstdio>
#include <cstring>

namespace {

// Names come from anywhere; a terminal must not take one for a command.
QByteArray printable(QByteArray text)
{
    for (auto &byte : text) {
        if (static_cast<unsigned char>(byte) < 0x20U || byte == 0x7F) {
            byte = '?';
        }
    }
    return text;
}

} // namespace

bool complain(const QByteArray &words)
{
    std::fprintf(stderr, "ditto: %s\n", printable(words).constData());
    return false;
}

bool complain(const QByteArray &path, const char *reason)
{
    return complain(path + ": " + reason);
}

bool complain(const QByteArray &path, int error)
{
    return complain(path, std::strerror(error)); // NOLINT(concurrency-mt-unsafe)
}
