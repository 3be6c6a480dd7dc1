// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Ostrel/PresetFiles.h"

#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Text/TextFormat.h"
#include "Shared/Basics/ZQLocalPaths.h"

#include <QFileInfo>

namespace presets {
namespace {

constexpr qint64 kibibyte = 1024;
constexpr qint64 maxFileSize = 16 * kibibyte * kibibyte; // bytes
constexpr qint64 maxListing = 2 * maxFileSize;           // all files together
constexpr qint64 costOfFile = 4 * kibibyte;              // of opening it, in bytes read instead

std::optional<QVariantMap> readUpTo(const QString &path, qint64 maxSize)
{
    const auto bytes = platform::contentsOfFile(path, maxSize);
    const auto value = bytes ? platform::propertyListFromData(*bytes) : std::nullopt;
    return value && value->userType() == QMetaType::QVariantMap ? std::optional(value->toMap())
                                                                : std::nullopt;
}

} // namespace

QString userFolder()
{
    return ZQLocalPaths::appSupportDirectory(Domain::User) +
           QStringLiteral("/Corvane/Ostrel/Keyboard Layouts");
}

QString defaultFolder(const platform::Bundle &bundle)
{
    return bundle.path() + QStringLiteral("/Contents/Resources/Default Layouts");
}

QString userFile(const QString &title)
{
    return platform::format(QStringLiteral("%@/%@.okl"), userFolder(), title);
}

QString pathForPreset(const platform::Bundle &bundle, const QString &title)
{
    const QString path = userFile(title);
    return platform::fileExists(path)
               ? path
               : platform::format(QStringLiteral("%@/%@.okl"), defaultFolder(bundle), title);
}

QStringList fileNames(const QString &folder)
{
    QStringList names;
    for (const QString &name : platform::namesInFolder(folder)) {
        if (name.endsWith(ending)) {
            names.append(name);
        }
    }
    return names;
}

QString titleOf(const QString &fileName)
{
    return platform::deletingPathExtension(fileName);
}

QStringList identifiers(const QVariantMap &preset)
{
    QStringList list;
    const auto append = [&list](const QVariant &value) {
        if (value.userType() == QMetaType::QString) {
            list.append(value.toString());
        }
    };
    for (const QVariant &value : preset.value(bundleIdsKey).toList()) {
        append(value);
    }
    append(preset.value(bundleIdKey));
    return list;
}

std::optional<QVariantMap> read(const QString &path)
{
    return readUpTo(path, maxFileSize);
}

QList<QStringList> identifiersOfFiles(const QStringList &paths)
{
    QList<QStringList> lists;
    qint64 left = maxListing;
    for (const QString &path : paths) {
        const qint64 size = QFileInfo(path).size();
        const bool fits = size + costOfFile <= left;
        left -= fits ? size + costOfFile : 0;
        lists.append(fits ? identifiers(readUpTo(path, size).value_or(QVariantMap()))
                          : QStringList());
    }
    return lists;
}

QVariantMap blank(const QString &name, const QString &identifier)
{
    return {{nameKey, name},
            {bundleIdKey, identifier},
            {bundleIdsKey, QVariantList{identifier}},
            {keysKey, QVariantMap()}};
}

} // namespace presets
