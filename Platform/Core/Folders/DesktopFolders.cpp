// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Folders/DesktopFolders.h"

#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/Text/FileName.h"
#include "Platform/Core/Text/PathText.h"

#include <QDir>

namespace platform {
namespace {

// A value as the shell reads it, in double quotes; null where that is no absolute path.
QString folderOfValue(const QByteArray &value, const QString &home)
{
    QByteArray path;
    for (int at = value.startsWith('"') ? 1 : 0; at < value.size() && value.at(at) != '"'; ++at) {
        at += value.at(at) == '\\' && at + 1 < value.size() ? 1 : 0;
        path += value.at(at);
    }
    if (path == "$HOME" || path.startsWith("$HOME/")) {
        path.replace(0, 5, fileNameBytes(home));
    }
    return path.startsWith('/') ? QDir::cleanPath(fileNameFromBytes(path)) : QString();
}

} // namespace

QString baseFolder(const char *variable, const QString &home, const QString &inHome)
{
    const auto folder = fileNameFromBytes(qgetenv(variable));
    if (folder.startsWith(u'/') && home == homeDirectory()) {
        return QDir::cleanPath(folder);
    }
    return home.isNull() ? QString() : appendingPathComponent(home, inHome);
}

QString folderNamedByDesktop(SearchPathDirectory directory, const QString &home)
{
    constexpr qint64 maxSize = 64 * 1024; // it has a line for each of eight folders
    const bool isDesktop = directory == SearchPathDirectory::Desktop;
    if (home.isNull() || (!isDesktop && directory != SearchPathDirectory::Document)) {
        return {};
    }
    const auto settings = baseFolder("XDG_CONFIG_HOME", home, QStringLiteral(".config"));
    const auto file = contentsOfFile(settings + QStringLiteral("/user-dirs.dirs"), maxSize);
    const QByteArray key = isDesktop ? "XDG_DESKTOP_DIR=" : "XDG_DOCUMENTS_DIR=";
    QString folder;
    for (const auto &line : file.value_or(QByteArray()).split('\n')) {
        const auto entry = line.trimmed();
        if (entry.startsWith(key)) {
            folder = folderOfValue(entry.mid(key.size()), home);
        }
    }
    return folder;
}

} // namespace platform
