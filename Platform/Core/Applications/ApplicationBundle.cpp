// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Applications/ApplicationBundle.h"

#include "Platform/Core/Applications/ApplicationFolders.h"
#include "Platform/Core/Basics/MessageLocales.h"
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/PathText.h"

#include <QDir>

namespace platform {
namespace {

// Text only: a number is no identifier and no name.
QString textOf(const QVariantMap &information, const char *key)
{
    const auto value = information.value(QLatin1String(key));
    return value.userType() == QMetaType::QString ? value.toString() : QString();
}

QString firstOf(const QStringList &texts)
{
    for (const auto &text : texts) {
        if (!text.isEmpty()) {
            return text;
        }
    }
    return {};
}

QString nameOfFile(const QString &path)
{
    return deletingPathExtension(lastPathComponent(path));
}

} // namespace

ApplicationBundle ApplicationBundle::withPath(const QString &path)
{
    if (path.isEmpty() || path.contains(QChar(0))) {
        return {};
    }
    ApplicationBundle bundle;
    bundle.m_path = QDir::cleanPath(absolutePath(path));
    const auto ending = pathExtension(bundle.m_path);
    if (ending.compare(QLatin1String("app"), Qt::CaseInsensitive) == 0) {
        return bundle.readFolder() ? bundle : ApplicationBundle();
    }
    return ending == QLatin1String("desktop") && bundle.readEntry() ? bundle : ApplicationBundle();
}

bool ApplicationBundle::readFolder()
{
    const auto information = dictionaryFromFile(m_path + QLatin1String("/Contents/Info.plist"));
    if (!information) {
        return false;
    }
    m_isFolder = true;
    const auto identifier = textOf(*information, "CFBundleIdentifier");
    m_identifier = identifier.isEmpty() ? QString() : identifier;
    m_entry.name = firstOf({textOf(*information, "CFBundleDisplayName"),
                            textOf(*information, "CFBundleName"), nameOfFile(m_path)});
    m_entry.icon = textOf(*information, "CFBundleIconFile");
    m_program = textOf(*information, "CFBundleExecutable");
    return true;
}

bool ApplicationBundle::readEntry()
{
    const auto contents = contentsOfFile(m_path, maxDesktopEntrySize);
    auto entry = contents ? desktopEntryFromData(*contents, messageLocales()) : std::nullopt;
    if (!entry) {
        return false;
    }
    m_entry = std::move(*entry);
    m_identifier = desktopFileId(m_path);
    m_entry.name = firstOf({m_entry.name, nameOfFile(m_path)});
    m_program = m_entry.program();
    return true;
}

bool ApplicationBundle::isListed() const
{
    const auto desktops = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(QLatin1Char(':'));
    return !isNull() && !m_entry.hidden && !m_entry.noDisplay && m_entry.isShownIn(desktops) &&
           m_entry.isInstalled();
}

} // namespace platform
