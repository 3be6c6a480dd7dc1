// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariant>

// What the pane ships in its resource folder, read by the tests.
namespace shipped {

extern const QString general; // the title of the preset that is for no application
extern const QString sources; // the resource folder of the source tree
extern const QString bundled; // the one in the bundle

QByteArray contents(const QString &path);
QStringList titles(const QString &folder = sources);
QString layoutPath(const QString &title, const QString &folder = sources);
QVariantMap layout(const QString &title);
QVariantMap shortcuts(const QString &title);

// The keys of the remote: dictionaries with "key" and "name".
QVariantList remoteKeys();

// An entry of a dictionary; -1 or a null text when it is missing.
qlonglong number(const QVariant &dictionary, const char *key);
QString text(const QVariant &dictionary, const char *key);

// One row of test data for each preset, with its "title".
void addTitles();

} // namespace shipped
