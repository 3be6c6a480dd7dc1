// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/SystemCommand.h"

#include "Platform/Core/Basics/CommandPath.h"
#include "Platform/Core/Text/FileName.h"

namespace platform {

QString privateCommandFolder()
{
    return fileNameFromBytes(QByteArray::fromStdString(privateCommandPath()));
}

QString systemCommand(const QString &path)
{
    return fileNameFromBytes(
        QByteArray::fromStdString(commandPath(fileNameBytes(path).toStdString())));
}

} // namespace platform
