// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/PathText.h"

#include "Platform/Core/Text/FileName.h"

#include <unistd.h>

#include <array>
#include <climits>

namespace platform {
namespace {

QString withoutEndingSlashes(QString path)
{
    while (path.size() > 1 && path.endsWith(u'/')) {
        path.chop(1);
    }
    return path;
}

} // namespace

QStringList pathComponents(const QString &path)
{
    auto components = path.split(u'/', Qt::SkipEmptyParts);
    if (path.startsWith(u'/')) {
        components.prepend(QStringLiteral("/"));
    }
    return components;
}

QString lastPathComponent(const QString &path)
{
    const auto whole = withoutEndingSlashes(path);
    return whole == QStringLiteral("/") ? whole : whole.mid(whole.lastIndexOf(u'/') + 1);
}

QString deletingLastPathComponent(const QString &path)
{
    const auto whole = withoutEndingSlashes(path);
    const auto slash = whole.lastIndexOf(u'/');
    if (slash < 0) {
        return QStringLiteral("");
    }
    return slash == 0 ? QStringLiteral("/") : withoutEndingSlashes(whole.left(slash));
}

QString appendingPathComponent(const QString &path, const QString &component)
{
    auto start = withoutEndingSlashes(path);
    auto end = component;
    while (end.startsWith(u'/')) {
        end.remove(0, 1);
    }
    end = withoutEndingSlashes(end);
    if (start.isEmpty() || end.isEmpty()) {
        return start.isEmpty() ? end : start;
    }
    return start.endsWith(u'/') ? start + end : start + u'/' + end;
}

QString pathExtension(const QString &path)
{
    const auto name = lastPathComponent(path);
    const auto dot = name.lastIndexOf(u'.');
    return dot <= 0 ? QString() : name.mid(dot + 1);
}

QString deletingPathExtension(const QString &path)
{
    const auto extension = pathExtension(path);
    const auto whole = withoutEndingSlashes(path);
    return extension.isEmpty() ? whole : whole.chopped(extension.size() + 1);
}

QString absolutePath(const QString &path)
{
    std::array<char, PATH_MAX> folder{};
    if (path.isEmpty() || path.startsWith(u'/') ||
        ::getcwd(folder.data(), folder.size()) == nullptr) {
        return path;
    }
    return appendingPathComponent(fileNameFromBytes(folder.data()), path);
}

QByteArray percentEncodedPath(const QString &path)
{
    return fileNameBytes(path).toPercentEncoding("/");
}

} // namespace platform
