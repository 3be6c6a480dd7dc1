// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/PresetFiles.h"

#include "Platform/BackgroundThread.h"
#include "Platform/FolderEntries.h"
#include "Platform/PathText.h"
#include "Platform/PropertyList.h"
#include "Platform/TextFormat.h"
#include "Shared/ZQFileManager.h"
#include "Shared/ZQLocalPaths.h"

#include <atomic>
#include <vector>

namespace presets {

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
    return ZQFileManager::fileExistsAtPath(path)
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

QList<QStringList> identifiersOfFiles(const QStringList &paths)
{
    constexpr std::size_t few = 20; // as many take less than starting a thread may
    std::vector<QString> files(paths.begin(), paths.end());
    std::vector<QStringList> lists(files.size());
    std::atomic<std::size_t> next = 0;
    const auto read = [&] {
        for (std::size_t at = next++; at < files.size(); at = next++) {
            lists[at] =
                identifiers(platform::dictionaryFromFile(files[at]).value_or(QVariantMap()));
        }
    };
    std::thread second;
    if (files.size() > few) {
        second = platform::startThread(read); // without it this one reads all of them
    }
    read();
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
