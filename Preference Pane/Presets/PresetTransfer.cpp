// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/PresetTransfer.h"

#include "Ostrel/PresetFiles.h"
#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/PropertyLists/PropertyListLimits.h"
#include "Platform/Core/Text/PathText.h"
#include "Preference Pane/Authorization/AuthorizationUse.h"
#include "Shared/Files/ZQFileManager.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>
#include <iterator>

namespace presets {
namespace {

QString tr(const char *text)
{
    return QCoreApplication::translate("PresetTransfer", text);
}

constexpr qint64 maxImportSize = qint64(1024) * 1024; // bytes
constexpr int maxIdentifiers = 1000;
constexpr int maxTextLength = 500; // UTF-16 units

std::optional<QByteArray> contents(const QString &path)
{
    return platform::contentsOfFile(path, platform::propertylist::maximumSize);
}

bool writeUserFile(const QString &title, const QByteArray &bytes, QString *error)
{
    const AuthorizationUse use; // the pane may be hidden by now
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

bool isLong(const QVariant &value)
{
    return value.userType() == QMetaType::QString && value.toString().size() > maxTextLength;
}

// All that the page shows of a preset.
QVariantList shownValues(const QVariantMap &preset)
{
    QVariantList values = preset.value(bundleIdsKey).toList();
    values << preset.value(bundleIdKey) << preset.value(nameKey);
    for (const QVariant &shortcut : preset.value(keysKey).toMap()) {
        const bool isEntry = shortcut.userType() == QMetaType::QVariantMap;
        values << (isEntry ? QVariantList(shortcut.toMap().values()) : QVariantList{shortcut});
    }
    return values;
}

QString reasonAgainstSize(const QVariantMap &preset)
{
    const QLocale locale(QLocale::English);
    if (preset.value(bundleIdsKey).toList().size() > maxIdentifiers) {
        return tr("It is for more than %1 applications.").arg(locale.toString(maxIdentifiers));
    }
    const QVariantList values = shownValues(preset);
    if (std::any_of(values.begin(), values.end(), isLong)) {
        return tr("A text in it has more than %1 characters.").arg(locale.toString(maxTextLength));
    }
    return {};
}

// The dictionary of a preset with its shortcuts as the pane writes them, those without one left
// out.
std::optional<QVariantMap> withoutBlanks(const QByteArray &bytes)
{
    const auto value = platform::propertyListFromData(bytes);
    if (!value || value->userType() != QMetaType::QVariantMap) {
        return std::nullopt;
    }
    QVariantMap preset = value->toMap();
    QVariantMap shortcuts = preset.value(keysKey).toMap();
    for (auto shortcut = shortcuts.begin(); shortcut != shortcuts.end();) {
        if (shortcut->userType() == QMetaType::QString) {
            *shortcut = QVariantMap{{valueKey, *shortcut}};
        }
        const bool isBlank =
            *shortcut == QVariant(QVariantMap{{valueKey, QString(QLatin1String(""))}});
        shortcut = isBlank ? shortcuts.erase(shortcut) : std::next(shortcut);
    }
    preset[keysKey] = shortcuts;
    return preset;
}

bool sameApartFromBlanks(const QByteArray &one, const QByteArray &other)
{
    const auto preset = withoutBlanks(one);
    return one == other || (preset && preset == withoutBlanks(other));
}

} // namespace

QString reasonAgainst(const QString &path)
{
    if (!platform::lastPathComponent(path).endsWith(ending)) {
        return tr("The name of a preset must end in “.okl”.");
    }
    const QFileInfo file(path);
    if (file.isFile() && file.size() > maxImportSize) {
        return tr("The file is larger than 1 MB.");
    }
    const auto bytes = platform::contentsOfFile(path, maxImportSize);
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
    return reasonAgainstSize(preset);
}

bool importFile(const QString &path, const QString &title, QString *error)
{
    const auto bytes = platform::contentsOfFile(path, maxImportSize);
    if (!bytes) {
        *error = tr("The file cannot be read.");
        return false;
    }
    return writeUserFile(title, *bytes, error);
}

bool copyFile(const QString &preset, const QString &title, QString *error)
{
    const auto bytes = contents(preset);
    if (!bytes) {
        *error = tr("The preset cannot be read.");
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

void KeptPreset::noteReplacement()
{
    m_replacement = contents(userFile(m_title)).value_or(QByteArray());
}

QString KeptPreset::putBack(QString *error) const
{
    // Changes of it that were undone have left entries for all keys.
    const auto now = contents(userFile(m_title));
    const bool isReplaced =
        now && !m_replacement.isEmpty() && sameApartFromBlanks(*now, m_replacement);
    const QString title = isReplaced ? m_title : freeTitle(m_title);
    return writeUserFile(title, m_contents, error) ? title : QString();
}

} // namespace presets
