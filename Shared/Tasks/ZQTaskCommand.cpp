// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Tasks/ZQTaskCommand.h"

#include "Platform/Core/Basics/SystemCommand.h"
#include "Platform/Core/Files/ExecutableFile.h"

ZQTaskCommand::ZQTaskCommand(const QString &path)
    : m_path(path), m_file(platform::systemCommand(path))
{
}

bool ZQTaskCommand::isExecutable() const
{
    return platform::isExecutableFile(m_file);
}

std::shared_ptr<platform::ChildProcess> ZQTaskCommand::process(const QStringList &arguments) const
{
    auto process = std::make_shared<platform::ChildProcess>();
    process->setLaunchPath(m_path, m_file);
    process->setArguments(arguments);
    return process;
}
