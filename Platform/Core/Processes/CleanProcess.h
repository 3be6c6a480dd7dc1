// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

#include <sys/types.h>

// Programs of the system that must not take anything over from ours.
namespace platform {

struct StandardDescriptors {
    int input;
    int output;
    int error;
};

// Starts the program at this path with these arguments, with a fixed environment (PATH and LANG
// only), no signal ignored or blocked, and of our descriptors none but the three; a negative one is
// the null device. Negative, with the system's error number in error, where it cannot be started.
pid_t startCleanProcess(const QByteArray &path, const QList<QByteArray> &arguments,
                        const StandardDescriptors &descriptors, int *error);

} // namespace platform
