// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Files/NamePattern.h"
#include "Platform/Core/Text/PathText.h"
#include "Shared/Files/ZQFileManagerPaths.h"

namespace {

const QString root = QStringLiteral("/");

bool isPattern(const QString &text)
{
    return text.contains(u'*');
}

// The base may be null.
QString joined(const QString &basePath, const QString &pattern)
{
    return basePath.isNull() ? pattern : platform::appendingPathComponent(basePath, pattern);
}

// What has that name, or a name like it, in one of the folders.
QStringList itemsIn(const QStringList &folders, const QString &component)
{
    QStringList items;
    for (const auto &folder : folders) {
        if (isPattern(component)) {
            items += platform::itemsInFolderMatching(folder, component);
        } else if (auto path = platform::appendingPathComponent(folder, component);
                   platform::fileExists(path)) {
            items << path;
        }
    }
    return items;
}

} // namespace

QStringList ZQFileManagerPaths::filesMatchingWildcardPath(const QString &pattern,
                                                          const QString &basePath)
{
    if (!isPattern(pattern)) {
        return {joined(basePath, pattern)};
    }
    const QStringList start(basePath.isNull() ? root : basePath);
    auto items = start;
    for (const auto &component : platform::pathComponents(pattern)) {
        items = component == root ? start : itemsIn(items, component);
    }
    return items;
}

QStringList ZQFileManagerPaths::filesMatchingWildcardPath(const QString &pattern)
{
    return filesMatchingWildcardPath(pattern, QString());
}

QString ZQFileManagerPaths::decodeWildcardPath(const QString &pattern, const QString &basePath)
{
    const auto files = filesMatchingWildcardPath(pattern, basePath);
    return files.isEmpty() ? joined(basePath, pattern) : files.first();
}
