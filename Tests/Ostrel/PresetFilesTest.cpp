// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Ostrel/PresetFiles.h"

#include "Tests/Preference Pane/Presets/PresetFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QTest>

class PresetFilesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theUserFolderIsInApplicationSupport();
    void anIdentifierInBothFormsIsInTheListTwice();
    void aFileWithoutIdentifiersIsListedWithNone();
    void identifiersOfOtherTypesAreLeftOut();
    void anUnreadableFileIsListedWithoutIdentifiers();
    void anEndingInCapitalsIsNoPreset();
    void theUsersFileShadowsTheDefaultOne();
    void aTitleInNeitherFolderIsTheDefaultPathThatDoesNotExist();
    void oddFileNamesAreTitles();
};

void PresetFilesTest::theUserFolderIsInApplicationSupport()
{
    QCOMPARE(presets::userFolder(),
             qEnvironmentVariable("HOME") +
                 QStringLiteral("/Library/Application Support/Corvane/Ostrel/Keyboard Layouts"));
}

void PresetFilesTest::anIdentifierInBothFormsIsInTheListTwice()
{
    PresetFixture fixture;
    PresetFixture::writeUser(
        QStringLiteral("A"),
        {{QStringLiteral("bundleids"), QStringList{QStringLiteral("b"), QStringLiteral("a")}},
         {QStringLiteral("bundleid"), QStringLiteral("b")}});
    fixture.open();
    QCOMPARE(fixture.browser().dataArray().first().bundleIDs,
             QStringList({QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("b")}));
}

void PresetFilesTest::aFileWithoutIdentifiersIsListedWithNone()
{
    PresetFixture fixture;
    PresetFixture::writeUser(QStringLiteral("A"), {{QStringLiteral("keys"), QVariantMap()}});
    fixture.open();
    QCOMPARE(fixture.titles(), QStringList{QStringLiteral("A")});
    QVERIFY(fixture.browser().dataArray().first().bundleIDs.isEmpty());
}

void PresetFilesTest::identifiersOfOtherTypesAreLeftOut()
{
    QCOMPARE(presets::identifiers(
                 {{QStringLiteral("bundleids"),
                   QVariantList{7, QStringLiteral("a"), QVariantMap(), QByteArray("x")}},
                  {QStringLiteral("bundleid"), 3.5}}),
             QStringList{QStringLiteral("a")});
    QVERIFY(presets::identifiers({{QStringLiteral("bundleids"), QStringLiteral("a")}}).isEmpty());
}

void PresetFilesTest::anUnreadableFileIsListedWithoutIdentifiers()
{
    PresetFixture fixture;
    PresetFixture::writeUserBytes(QStringLiteral("Broken.okl"), "<plist><dict><key>bundleid");
    PresetFixture::writeUserBytes(QStringLiteral("List.okl"),
                                  "<plist><array><string>x</string></array></plist>");
    PresetFixture::writeUserBytes(QStringLiteral("Folder.okl/file"), "x");
    fixture.open();
    QCOMPARE(fixture.titles(), QStringList({QStringLiteral("Broken"), QStringLiteral("Folder"),
                                            QStringLiteral("List")}));
    for (const auto &row : fixture.browser().dataArray()) {
        QVERIFY(row.bundleIDs.isEmpty());
    }
}

void PresetFilesTest::anEndingInCapitalsIsNoPreset()
{
    PresetFixture fixture;
    for (const auto *name : {"A.OKL", "B.Okl", "C.okl~", "D", "E.okl.bak", "F.okl"}) {
        PresetFixture::writeUserBytes(QString::fromLatin1(name), "<plist><dict/></plist>");
    }
    fixture.open();
    QCOMPARE(fixture.titles(), QStringList{QStringLiteral("F")});
}

void PresetFilesTest::theUsersFileShadowsTheDefaultOne()
{
    PresetFixture fixture;
    fixture.writeDefault(QStringLiteral("A"), {});
    QCOMPARE(presets::pathForPreset(fixture.bundle(), QStringLiteral("A")),
             fixture.defaultPath(QStringLiteral("A")));
    PresetFixture::writeUser(QStringLiteral("A"), {});
    QCOMPARE(presets::pathForPreset(fixture.bundle(), QStringLiteral("A")),
             PresetFixture::userPath(QStringLiteral("A")));
}

void PresetFilesTest::aTitleInNeitherFolderIsTheDefaultPathThatDoesNotExist()
{
    const PresetFixture fixture;
    const QString path = presets::pathForPreset(fixture.bundle(), QStringLiteral("None"));
    QCOMPARE(path, fixture.defaultPath(QStringLiteral("None")));
    QVERIFY(!QFileInfo::exists(path));
}

void PresetFilesTest::oddFileNamesAreTitles()
{
    PresetFixture fixture;
    const QStringList names{QStringLiteral("-rf"), QStringLiteral("a\nb"), QStringLiteral("\"'`"),
                            QStringLiteral("%@ %n"), QStringLiteral("пульт")};
    for (const QString &name : names) {
        PresetFixture::writeUser(name, {{QStringLiteral("bundleid"), name}});
    }
    fixture.open();
    QStringList sorted = names;
    sorted.sort();
    QCOMPARE(fixture.titles(), sorted);
    for (const auto &row : fixture.browser().dataArray()) {
        QCOMPARE(row.bundleIDs, QStringList{row.title});
        QCOMPARE(fixture.browser().pathForPreset(row.title), PresetFixture::userPath(row.title));
    }
}

TEST_CLASS(PresetFilesTest, QApplication)
#include "PresetFilesTest.moc"
