// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/CleanProcess.h"

#include "Platform/Core/Processes/SpawnProgram.h"

namespace platform {

pid_t startCleanProcess(const QByteArray &path, const QList<QByteArray> &arguments,
                        const StandardDescriptors &descriptors, int *error)
{
    Program program{path.toStdString(),
                    {path.toStdString()},
                    cleanEnvironment,
                    {descriptors.input, descriptors.output, descriptors.error}};
    for (const auto &argument : arguments) {
        program.arguments.push_back(argument.toStdString());
    }
    pid_t process = -1;
    *error = spawnProgram(std::move(program), &process);
    return *error == 0 ? process : -1;
}

} // namespace platform
