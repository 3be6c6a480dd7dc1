// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/PresetTransfer.h"

#include "Platform/FileContents.h"
#include "Platform/PathText.h"
#include "Platform/PropertyList.h"
#include "Platform/PropertyListLimits.h"
#include "Preference Pane/PresetFiles.h"
#include "Shared/ZQFileManager.h"

#include <QCoreApplication>

namespace presets {
namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("PresetTransfer", text);
}

std::optional<QByteArray> contents(const QString &path)
{
    return platform::contentsOfFile(path, platform::propertylist::maximumSize);
}

bool writeUserFile(const QString &title, const QByteArray &bytes, QString *error)
{
    const QString folder = userFolder();
    if (!ZQFileManager::fileExistsAtPath(folder)) {
        ZQFileManager::createDirectory(folder);
    }
    return platform::replaceFile(userFile(title), bytes, error);
}

bool isText(const QVariantMap &preset, const QString &key)
{
    return !preset.contains(key) || preset.value(key).userType() == QMetaType::QString;
}

} // namespace

QString reasonAgainst(const QString &path)
{
    if (!platform::lastPathComponent(path).endsWith(ending)) {
        return tr("The names of presets end in “.okl”.");
    }
    const auto bytes = contents(path);
    if (!bytes) {
        return tr("The file cannot be read.");
    }
    const auto value = platform::propertyListFromData(*bytes);
    if (!value || value->userType() != QMetaType::QVariantMap) {
        return tr("It is not a property list with a dictionary.");
    }
    const QVariantMap preset = value->toMap();
    if (preset.value(keysKey).userType() != QMetaType::QVariantMap) {
        return tr("It has no dictionary “keys”.");
    }
    const bool identifiers = !preset.contains(bundleIdsKey) ||
                             preset.value(bundleIdsKey).userType() == QMetaType::QVariantList;
    if (!identifiers || !isText(preset, bundleIdKey) || !isText(preset, nameKey)) {
        return tr("Its “name”, “bundleid” or “bundleids” is of the wrong kind.");
    }
    return {};
}

bool importFile(const QString &path, const QString &title, QString *error)
{
    const auto bytes = contents(path);
    if (!bytes) {
        *error = tr("The file cannot be read.");
        return false;
    }
    return writeUserFile(title, *bytes, error);
}

bool exportFile(const QString &preset, const QString &path, QString *error)
{
    const auto bytes = contents(preset);
    if (!bytes) {
        *error = tr("The preset cannot be read.");
        return false;
    }
    return platform::replaceFile(path, *bytes, error);
}

QString freeTitle(const QString &title)
{
    const QString path = ZQFileManager::uniqueFilename(userFile(title));
    return titleOf(platform::lastPathComponent(path));
}

KeptPreset::KeptPreset(const QString &title)
    : m_title(title), m_contents(contents(userFile(title)).value_or(QByteArray()))
{
}

QString KeptPreset::putBack(QString *error) const
{
    const QString title = freeTitle(m_title);
    return writeUserFile(title, m_contents, error) ? title : QString();
}

} // namespace presets
