// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/Descriptor.h"

#include <sys/types.h>

#include <string>
#include <vector>

// A tool that may be started, or why it may not.
struct Tool {
    platform::Descriptor file; // that is executed, as it was judged
    std::vector<std::string>
        arguments;         // the first is the path that was asked for, or its substitute
    std::string path;      // of the tool, also where it is a script
    int error = 0;         // the system's error number; EPERM where others can change it
    std::string objection; // one line then
};

// Finds a tool and checks who can change it. A script's interpreter is checked in the same way and
// takes its place, with the script's path as an argument, which only root can change.
Tool findTool(const std::vector<std::string> &words);

// Starts it with a fixed environment, default signals and the null device for what is not the
// output. 0, or the system's error number.
int startTool(const Tool &tool, int output, pid_t *process);
