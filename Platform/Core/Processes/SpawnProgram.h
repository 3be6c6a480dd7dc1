// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <sys/types.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

// The one way in which programs are started. Plain C++: the helper that runs as root is built with
// it.
namespace platform {

// In place of a descriptor.
constexpr int nullDevice = -1;
constexpr int inheritedStream = -2;

struct Program {
    std::string path;
    std::vector<std::string> arguments; // the first is the name that it is called by
    std::optional<std::vector<std::string>> environment; // "NAME=value"; none: ours
    std::array<int, 3> streams{nullDevice, nullDevice, nullDevice};
};

// What a program of the system gets that must not take anything over from ours.
inline std::vector<std::string> cleanEnvironment()
{
    return {"PATH=/usr/sbin:/usr/bin:/sbin:/bin", "LANG=C.UTF-8"};
}

// Starts the program without any other descriptor of ours and with no signal blocked or ignored.
// 0, or the system's error number.
int spawnProgram(Program program, pid_t *process);

// A copy above the standard streams, any of which this process may have closed. Not open, with the
// reason in errno, where there is none.
Descriptor copyAboveStandardStreams(int descriptor);

// As the system takes texts: with a null behind the last. Valid as long as the texts.
template <typename Texts>
std::vector<char *> textPointers(Texts &texts)
{
    std::vector<char *> pointers;
    for (auto &text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace platform
