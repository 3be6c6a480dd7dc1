// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Processes/ChildProcess.h"

#include <memory>

// The command at a path, as the task runner runs it. A path in a folder of the system's commands
// stands for that command wherever the system has it.
class ZQTaskCommand {
public:
    explicit ZQTaskCommand(const QString &path);

    // Whether there is a file that may be executed. A package is a folder, so it is none.
    bool isExecutable() const;

    // Not launched yet.
    std::shared_ptr<platform::ChildProcess> process(const QStringList &arguments) const;

private:
    QString m_path;
    QString m_file;
};
