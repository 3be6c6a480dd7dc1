// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Preference Pane/Presets/ShippedLayouts.h"
#include "Tests/Support/TestProgram.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

using shipped::contents;
using shipped::general;
using shipped::layout;
using shipped::layoutPath;
using shipped::remoteKeys;
using shipped::shortcuts;
using shipped::text;
using shipped::titles;

namespace {

QString document()
{
    return QString::fromUtf8(
        contents(shipped::sources + QStringLiteral("/../../Documentation/Presets.md")));
}

} // namespace

// What the pane ships: the keys of the remote and a preset for each of many applications.
class DefaultLayoutsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyKeyOfTheRemoteHasAnIdentifierAndAName();
    void noKeyOfTheRemoteIsThereTwice();
    void atLeastTwelveApplicationsHaveAPreset();
    void noApplicationHasTwoPresets();
    void aPresetHasTheRequiredEntriesAndNoOthers_data() { shipped::addTitles(); }
    void aPresetHasTheRequiredEntriesAndNoOthers();
    void onlyTheGeneralPresetHasNoIdentifiers_data() { shipped::addTitles(); }
    void onlyTheGeneralPresetHasNoIdentifiers();
    void anIdentifierIsTheNameOfADesktopFile_data() { shipped::addTitles(); }
    void anIdentifierIsTheNameOfADesktopFile();
    void aPresetUsesOnlyKeysOfTheRemote_data() { shipped::addTitles(); }
    void aPresetUsesOnlyKeysOfTheRemote();
    void rewritingAPresetChangesNoByte_data() { shipped::addTitles(); }
    void rewritingAPresetChangesNoByte();
    void theBundleHoldsTheseFilesAndNoOthers();
    void theDocumentNamesEveryKeyAndEveryPreset();
    void theDocumentSaysHowEachPresetWasChecked();
};

void DefaultLayoutsTest::everyKeyOfTheRemoteHasAnIdentifierAndAName()
{
    const auto keys = remoteKeys();
    QVERIFY2(keys.size() >= 50, qPrintable(QString::number(keys.size())));
    const QRegularExpression form(QStringLiteral("^[a-z]+(-[a-z0-9]+)*$"));
    for (const auto &key : keys) {
        const auto identifier = text(key, "key");
        QVERIFY2(form.match(identifier).hasMatch(), qPrintable(identifier));
        QVERIFY2(!text(key, "name").isEmpty(), qPrintable(identifier));
        QCOMPARE(key.toMap().size(), 2);
    }
}

void DefaultLayoutsTest::noKeyOfTheRemoteIsThereTwice()
{
    QSet<QString> identifiers;
    QSet<QString> names;
    for (const auto &key : remoteKeys()) {
        QVERIFY2(!identifiers.contains(text(key, "key")), qPrintable(text(key, "key")));
        QVERIFY2(!names.contains(text(key, "name")), qPrintable(text(key, "name")));
        identifiers.insert(text(key, "key"));
        names.insert(text(key, "name"));
    }
}

void DefaultLayoutsTest::atLeastTwelveApplicationsHaveAPreset()
{
    auto applications = titles();
    QCOMPARE(applications.removeAll(general), 1);
    QVERIFY2(applications.size() >= 12, qPrintable(QString::number(applications.size())));
}

void DefaultLayoutsTest::noApplicationHasTwoPresets()
{
    QMap<QString, QString> owners;
    for (const auto &title : titles()) {
        for (const auto &identifier : layout(title).value(QStringLiteral("bundleids")).toList()) {
            const auto owner = owners.value(identifier.toString());
            QVERIFY2(owner.isEmpty(), qPrintable(identifier.toString()));
            owners.insert(identifier.toString(), title);
        }
    }
}

void DefaultLayoutsTest::aPresetHasTheRequiredEntriesAndNoOthers()
{
    QFETCH(QString, title);
    QVERIFY2(QFile::exists(layoutPath(title)), "the name does not end in .okl");
    const auto preset = layout(title);
    QStringList entries{QStringLiteral("bundleids"), QStringLiteral("keys"),
                        QStringLiteral("name")};
    if (title != general) {
        entries.prepend(QStringLiteral("bundleid"));
    }
    QCOMPARE(QStringList(preset.keys()), entries);
    QCOMPARE(preset.value(QStringLiteral("name")), QVariant(title));
    QCOMPARE(preset.value(QStringLiteral("bundleids")).userType(), int(QMetaType::QVariantList));
    QCOMPARE(preset.value(QStringLiteral("keys")).userType(), int(QMetaType::QVariantMap));
    QVERIFY(!shortcuts(title).isEmpty());
}

void DefaultLayoutsTest::onlyTheGeneralPresetHasNoIdentifiers()
{
    QFETCH(QString, title);
    const auto identifiers = layout(title).value(QStringLiteral("bundleids")).toList();
    QCOMPARE(identifiers.isEmpty(), title == general);
    for (const auto &identifier : identifiers) {
        QCOMPARE(identifier.userType(), int(QMetaType::QString));
    }
    QCOMPARE(layout(title).value(QStringLiteral("bundleid")), identifiers.value(0));
}

void DefaultLayoutsTest::anIdentifierIsTheNameOfADesktopFile()
{
    QFETCH(QString, title);
    const QRegularExpression form(QStringLiteral("^[A-Za-z0-9_-]+(\\.[A-Za-z0-9_-]+)*\\.desktop$"));
    QSet<QString> seen;
    for (const auto &identifier : layout(title).value(QStringLiteral("bundleids")).toList()) {
        const auto name = identifier.toString();
        QVERIFY2(form.match(name).hasMatch() && !seen.contains(name), qPrintable(name));
        seen.insert(name);
    }
}

void DefaultLayoutsTest::aPresetUsesOnlyKeysOfTheRemote()
{
    QFETCH(QString, title);
    QStringList known;
    for (const auto &key : remoteKeys()) {
        known.append(text(key, "key"));
    }
    for (const auto &key : shortcuts(title).keys()) {
        QVERIFY2(known.contains(key), qPrintable(key));
    }
}

void DefaultLayoutsTest::rewritingAPresetChangesNoByte()
{
    QFETCH(QString, title);
    QCOMPARE(platform::propertyListToXml(layout(title)), contents(layoutPath(title)));
}

void DefaultLayoutsTest::theBundleHoldsTheseFilesAndNoOthers()
{
    QCOMPARE(titles(shipped::bundled), titles());
    for (const auto &title : titles()) {
        QCOMPARE(contents(layoutPath(title, shipped::bundled)), contents(layoutPath(title)));
    }
    const auto keyNames = QStringLiteral("/keynames.plist");
    QVERIFY(!contents(shipped::sources + keyNames).isEmpty());
    QCOMPARE(contents(shipped::bundled + keyNames), contents(shipped::sources + keyNames));
}

void DefaultLayoutsTest::theDocumentNamesEveryKeyAndEveryPreset()
{
    const auto page = document();
    for (const auto &key : remoteKeys()) {
        const auto identifier = text(key, "key");
        QVERIFY2(page.contains(QLatin1Char('`') + identifier + QLatin1Char('`')),
                 qPrintable(identifier));
    }
    for (const auto &title : titles()) {
        QVERIFY2(page.contains(QStringLiteral("\n| ") + title), qPrintable(title));
    }
}

void DefaultLayoutsTest::theDocumentSaysHowEachPresetWasChecked()
{
    const auto table = document().section(QStringLiteral("\n### How they were checked\n"), 1);
    for (const auto &title : titles()) {
        const QRegularExpression row(
            QStringLiteral("^\\| %1 \\|[^|]*\\| .*\\b(run|read|only)\\b.*\\|$")
                .arg(QRegularExpression::escape(title)),
            QRegularExpression::MultilineOption);
        QVERIFY2(row.match(table).hasMatch(), qPrintable(title));
    }
}

TEST_CLASS(DefaultLayoutsTest, QCoreApplication)
#include "DefaultLayoutsTest.moc"
