// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Preference Pane/Presets/ShippedLayouts.h"

#include "Platform/Core/PropertyLists/PropertyList.h"

#include <QDir>
#include <QTest>

namespace shipped {

const QString general = QStringLiteral("General");
const QString sources = QStringLiteral(RESOURCES);
const QString bundled = QStringLiteral(BUNDLED_RESOURCES);

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList titles(const QString &folder)
{
    QStringList result;
    const QDir layouts(folder + QStringLiteral("/Default Layouts"));
    for (const auto &entry : layouts.entryInfoList(QDir::Files | QDir::Hidden)) {
        result.append(entry.completeBaseName());
    }
    return result;
}

QString layoutPath(const QString &title, const QString &folder)
{
    return folder + QStringLiteral("/Default Layouts/") + title + QStringLiteral(".okl");
}

QVariantMap layout(const QString &title)
{
    return platform::dictionaryFromFile(layoutPath(title)).value_or(QVariantMap());
}

QVariantMap shortcuts(const QString &title)
{
    return layout(title).value(QStringLiteral("keys")).toMap();
}

qlonglong number(const QVariant &dictionary, const char *key)
{
    return dictionary.toMap().value(QLatin1String(key), -1).toLongLong();
}

QString text(const QVariant &dictionary, const char *key)
{
    return dictionary.toMap().value(QLatin1String(key)).toString();
}

QVariantList remoteKeys()
{
    const auto list =
        platform::propertyListFromData(contents(sources + QStringLiteral("/keynames.plist")));
    return list ? list->toList() : QVariantList();
}

void addTitles()
{
    QTest::addColumn<QString>("title");
    for (const auto &title : titles()) {
        QTest::newRow(qPrintable(title)) << title;
    }
}

} // namespace shipped
