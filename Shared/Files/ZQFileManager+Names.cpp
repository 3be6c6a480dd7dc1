// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Text/PathText.h"
#include "Platform/Core/Text/TextFormat.h"
#include "Shared/Files/ZQFileManagerPaths.h"

QString ZQFileManagerPaths::validateFilename(const QString &name)
{
    if (name == QStringLiteral(".")) {
        return QStringLiteral("");
    }
    const auto undotted = name.startsWith(u'.') ? name.mid(1) : name;
    return undotted.trimmed().remove(u'/').remove(u':');
}

QString ZQFileManagerPaths::uniqueFilename(const QString &path)
{
    if (!platform::itemExists(path)) {
        return path;
    }
    const auto extension = platform::pathExtension(path);
    const auto ending = extension.isEmpty() ? QString() : u'.' + extension;
    const auto stem = platform::deletingPathExtension(path);
    for (long number = 2;; ++number) {
        auto candidate = stem + u' ' + QString::number(number) + ending;
        if (!platform::itemExists(candidate)) {
            return candidate;
        }
    }
}

QString ZQFileManagerPaths::formatFileSize(double bytes)
{
    constexpr double step = 1024;
    constexpr double kilobyte = step;
    constexpr double megabyte = step * kilobyte;
    constexpr double gigabyte = step * megabyte;
    if (bytes < kilobyte) {
        return platform::format(QStringLiteral("%0.0f B"), bytes);
    }
    if (bytes < megabyte) {
        return platform::format(QStringLiteral("%0.2f KB"), bytes / kilobyte);
    }
    if (bytes < gigabyte) {
        return platform::format(QStringLiteral("%0.2f MB"), bytes / megabyte);
    }
    return platform::format(QStringLiteral("%0.2f GB"), bytes / gigabyte);
}
