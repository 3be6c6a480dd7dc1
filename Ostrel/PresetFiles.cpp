// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Ostrel/PresetFiles.h"

#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Text/TextFormat.h"
#include "Platform/Core/Threads/BackgroundThread.h"
#include "Shared/Basics/ZQLocalPaths.h"

#include <QFileInfo>

#include <atomic>
#include <vector>

namespace presets {
namespace {

constexpr qint64 kibibyte = 1024;
constexpr qint64 largestFile = 16 * kibibyte * kibibyte; // bytes
constexpr qint64 largestListing = 2 * largestFile;       // all files together
constexpr qint64 costOfFile = 4 * kibibyte;              // of opening it, in bytes read instead

std::optional<QVariantMap> readUpTo(const QString &path, qint64 largest)
{
    const auto bytes = platform::contentsOfFile(path, largest);
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
    return readUpTo(path, largestFile);
}

QList<QStringList> identifiersOfFiles(const QStringList &paths)
{
    constexpr std::size_t few = 20; // as many take less than starting a thread may
    std::vector<QString> files(paths.begin(), paths.end());
    std::vector<QStringList> lists(files.size());
    std::vector<qint64> sizes(files.size());
    qint64 left = largestListing;
    for (std::size_t at = 0; at < files.size(); ++at) {
        const qint64 size = QFileInfo(files[at]).size();
        const bool fits = size + costOfFile <= left;
        left -= fits ? size + costOfFile : 0;
        sizes[at] = fits ? size : -1;
    }
    std::atomic<std::size_t> next = 0;
    const auto readAll = [&] {
        for (std::size_t at = next++; at < files.size(); at = next++) {
            lists[at] = identifiers(readUpTo(files[at], sizes[at]).value_or(QVariantMap()));
        }
    };
    std::thread second;
    if (files.size() > few) {
        second = platform::startThread(readAll); // without it this one reads all of them
    }
    readAll();
    if (second.joinable()) {
        second.join();
    }
    return {lists.begin(), lists.end()};
}

QVariantMap blank(const QString &name, const QString &identifier)
{
    return {{nameKey, name},
            {bundleIdKey, identifier},
            {bundleIdsKey, QVariantList{identifier}},
            {keysKey, QVariantMap()}};
}

} // namespace presets
