// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QStringList>

// Paths as text: nothing is looked up on disk. As in NSString, slashes at the end and double
// slashes do not count, and a name's leading dot begins no extension.
namespace platform {

// "/a//b/" is "/", "a", "b".
QStringList pathComponents(const QString &path);

// "b" of "/a/b/", "/" of "/".
QString lastPathComponent(const QString &path);

// "/a" of "/a/b/", "/" of "/a" and "/", empty of "a".
QString deletingLastPathComponent(const QString &path);

// One slash between them.
QString appendingPathComponent(const QString &path, const QString &component);

// "gz" of "/a/b.tar.gz"; empty of "b", ".b" and "b.".
QString pathExtension(const QString &path);

// "/a/b.tar" of "/a/b.tar.gz"; a path without extension as it is, without slashes at the end.
QString deletingPathExtension(const QString &path);

// The path behind the current folder unless it is absolute or empty; nothing in it is resolved.
QString absolutePath(const QString &path);

// The path's bytes with all but the plain ones percent-encoded, as in a URL.
QByteArray percentEncodedPath(const QString &path);

} // namespace platform
