// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Bundles/Bundle.h"

#include "Platform/Core/Basics/RunningExecutable.h"
#include "Platform/Core/PropertyLists/PropertyList.h"

#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <dlfcn.h>
#include <link.h>

namespace platform {

Bundle Bundle::main()
{
    // Asked once: where the program is moved while it runs, its bundle is still where it was. Never
    // destroyed: the log still asks while the process exits.
    static const auto *program = new QString(QFile::decodeName(ownExecutable()));
    auto bundle = ofProgram(*program);
    if (bundle.isNull()) {
        bundle = Bundle(QFileInfo(*program).path());
    }
    bundle.m_executable = *program;
    return bundle;
}

Bundle Bundle::containing(const void *address)
{
    Dl_info info{};
    link_map *object = nullptr;
    void *extra = nullptr;
    if (::dladdr1(address, &info, &extra, RTLD_DL_LINKMAP) != 0) {
        object = static_cast<link_map *>(extra);
    }
    // The program's own name is empty here; elsewhere the linker tells it as it was called, which
    // need not be a path.
    if (object != nullptr && object->l_name != nullptr && *object->l_name != '\0') {
        const auto file = QFileInfo(QFile::decodeName(object->l_name)).absoluteFilePath();
        auto bundle = ofProgram(file);
        if (!bundle.isNull()) {
            return bundle;
        }
    }
    return main();
}

Bundle Bundle::ofProgram(const QString &program)
{
    const QLatin1String middle("/Contents/MacOS");
    const auto folder = program.left(program.lastIndexOf(QLatin1Char('/')));
    return folder.endsWith(middle) && folder.size() > middle.size()
               ? Bundle(folder.left(folder.size() - middle.size()))
               : Bundle();
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
    const auto isName = !name.isEmpty() && !name.contains(QLatin1Char('/'));
    return isName && QFileInfo(path).isFile() ? path : QString();
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

QString Bundle::localizedString(const QString &key, const QString &value) const
{
    const auto languages = QLocale().uiLanguages();
    for (const auto &language : languages) {
        for (const auto &name : {language, language.section(QLatin1Char('-'), 0, 0)}) {
            const auto file = pathForResource(name + QStringLiteral(".lproj/Localizable"),
                                              QStringLiteral("strings"));
            const auto table = file.isNull() ? std::nullopt : dictionaryFromFile(file);
            if (table) {
                const auto text = table->value(key);
                if (text.userType() == QMetaType::QString) {
                    return text.toString();
                }
                return value.isEmpty() ? key : value;
            }
        }
    }
    return value.isEmpty() ? key : value;
}

} // namespace platform
