// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Bundle.h"

#include "Platform/PropertyList.h"

#include <QFile>
#include <QFileInfo>

#include <dlfcn.h>

namespace platform {
namespace {

// Null where the system does not tell.
QString runningProgram()
{
    // Never destroyed: the log still asks while the process exits.
    static const auto *program = [] {
        const auto target = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
        return new QString(target.isEmpty() ? QString() : target);
    }();
    return *program;
}

// The bundle folder of a program at "Contents/MacOS/NAME" in it; null for any other place.
QString bundlePathOfProgram(const QString &program)
{
    static const auto middle = QStringLiteral("/Contents/MacOS");
    const auto folder = program.left(program.lastIndexOf(QLatin1Char('/')));
    return folder.endsWith(middle) && folder.size() > middle.size()
               ? folder.left(folder.size() - middle.size())
               : QString();
}

} // namespace

Bundle Bundle::main()
{
    const auto program = runningProgram();
    auto path = bundlePathOfProgram(program);
    if (path.isNull()) {
        path = QFileInfo(program).path();
    }
    Bundle bundle(path);
    bundle.m_executable = program;
    return bundle;
}

Bundle Bundle::containing(const void *address)
{
    Dl_info info{};
    if (::dladdr(address, &info) != 0 && info.dli_fname != nullptr) {
        const auto program = QFileInfo(QFile::decodeName(info.dli_fname)).absoluteFilePath();
        const auto path = bundlePathOfProgram(program);
        if (!path.isNull()) {
            return Bundle(path);
        }
    }
    return main();
}

QVariantMap Bundle::infoDictionary() const
{
    return isNull() ? QVariantMap()
                    : dictionaryFromFile(m_path + QStringLiteral("/Contents/Info.plist"))
                          .value_or(QVariantMap());
}

QString Bundle::executablePath() const
{
    if (isNull() || !m_executable.isNull()) {
        return m_executable;
    }
    const auto name = infoDictionary().value(QStringLiteral("CFBundleExecutable")).toString();
    const auto path = m_path + QStringLiteral("/Contents/MacOS/") + name;
    return !name.isEmpty() && QFileInfo(path).isFile() ? path : QString();
}

QString Bundle::pathForResource(const QString &name, const QString &type) const
{
    if (isNull() || name.isEmpty()) {
        return {};
    }
    auto path = m_path + QStringLiteral("/Contents/Resources/") + name;
    if (!type.isEmpty()) {
        path += QLatin1Char('.') + type;
    }
    return QFileInfo::exists(path) ? path : QString();
}

} // namespace platform
