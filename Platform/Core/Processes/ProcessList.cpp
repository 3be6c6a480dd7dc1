// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Processes/ProcessList.h"

#include "Platform/Core/Basics/RunningExecutable.h"
#include "Platform/Core/Bundles/Bundle.h"
#include "Platform/Core/Files/FolderEntries.h"

#include <QFile>

namespace platform {

QString ProcessInformation::value(const QString &key) const
{
    if (key == QLatin1String("CFBundleExecutable")) {
        return QFile::decodeName(m_executable);
    }
    if (key == QLatin1String("CFBundleName")) {
        const auto name =
            Bundle::ofProgram(QFile::decodeName(m_executable)).infoDictionary().value(key);
        return name.userType() == QMetaType::QString ? name.toString() : QString();
    }
    return {};
}

bool findProcess(const std::function<bool(const ProcessInformation &)> &visit)
{
    for (const auto &name : namesInFolder(QStringLiteral("/proc"))) {
        auto isNumber = false;
        const pid_t pid = name.toInt(&isNumber);
        auto executable =
            isNumber ? runningExecutable("/proc/" + name.toLatin1() + "/exe") : QByteArray();
        if (!executable.isEmpty() && visit(ProcessInformation(pid, std::move(executable)))) {
            return true;
        }
    }
    return false;
}

} // namespace platform
