// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Basics/SystemCommand.h"
#include "Platform/Core/Files/ExecutableFile.h"
#include "Platform/Core/Processes/ChildProcess.h"

#include <memory>

// The command at a path, not launched yet. A path in a folder of the system's commands stands for
// that command wherever the system has it.
inline std::shared_ptr<platform::ChildProcess> taskProcess(const QString &path,
                                                           const QStringList &arguments)
{
    auto process = std::make_shared<platform::ChildProcess>();
    process->setLaunchPath(path, platform::systemCommand(path));
    process->setArguments(arguments);
    return process;
}

// Whether the command is a file that may be executed. A package is a folder, so it is none.
inline bool isExecutable(const platform::ChildProcess &process)
{
    return platform::isExecutableFile(process.executable());
}
