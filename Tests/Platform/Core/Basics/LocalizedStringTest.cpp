// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Bundles/Bundle.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QLocale>
#include <QTest>
#include <QVariantMap>

using platform::Bundle;

class LocalizedStringTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void theTextOfTheUsersLanguageIsUsed();
    void theLanguageOfARegionIsThatOfTheLanguage();
    void aTableWithoutTheKeyGivesTheKey();
    void withoutATableTheKeyItselfComesBack();
    void aValueComesBackInsteadOfTheKey();
    void aDamagedTableIsNone();
    void theMainBundleOfAProgramWithoutABundleHasNone();

private:
    // A bundle with a table for a language.
    static Bundle withTable(const test::Folder &folder, const std::string &language,
                            const QByteArray &table);
    static QByteArray german()
    {
        return platform::propertyListToXml(QVariantMap{
            {QStringLiteral("Space"), QStringLiteral("Leertaste")}, {QStringLiteral("Odd"), 1}});
    }
};

Bundle LocalizedStringTest::withTable(const test::Folder &folder, const std::string &language,
                                      const QByteArray &table)
{
    auto path = folder.path();
    for (const auto *part : {"/Contents", "/Resources"}) {
        path += part;
        test::makeFolder(path);
    }
    path += "/" + language + ".lproj";
    test::makeFolder(path);
    test::writeFile(path + "/Localizable.strings", table.toStdString());
    return Bundle(test::text(folder.path()));
}

void LocalizedStringTest::theTextOfTheUsersLanguageIsUsed()
{
    const test::Folder folder;
    const auto bundle = withTable(folder, "de", german());
    QLocale::setDefault(QLocale(QStringLiteral("de_DE")));
    QCOMPARE(bundle.localizedString(QStringLiteral("Space"), {}), QStringLiteral("Leertaste"));
    QLocale::setDefault(QLocale(QStringLiteral("fr_FR")));
    QCOMPARE(bundle.localizedString(QStringLiteral("Space"), {}), QStringLiteral("Space"));
}

void LocalizedStringTest::theLanguageOfARegionIsThatOfTheLanguage()
{
    const test::Folder folder;
    const auto bundle = withTable(folder, "de", german());
    QLocale::setDefault(QLocale(QStringLiteral("de_AT")));
    QCOMPARE(bundle.localizedString(QStringLiteral("Space"), {}), QStringLiteral("Leertaste"));
}

void LocalizedStringTest::aTableWithoutTheKeyGivesTheKey()
{
    const test::Folder folder;
    const auto bundle = withTable(folder, "de", german());
    QLocale::setDefault(QLocale(QStringLiteral("de_DE")));
    QCOMPARE(bundle.localizedString(QStringLiteral("Tab"), {}), QStringLiteral("Tab"));
    QCOMPARE(bundle.localizedString(QStringLiteral("Odd"), {}), QStringLiteral("Odd"));
}

void LocalizedStringTest::withoutATableTheKeyItselfComesBack()
{
    const test::Folder folder;
    QCOMPARE(Bundle(test::text(folder.path())).localizedString(QStringLiteral("Space"), {}),
             QStringLiteral("Space"));
    QCOMPARE(Bundle().localizedString(QStringLiteral("Space"), {}), QStringLiteral("Space"));
}

void LocalizedStringTest::aValueComesBackInsteadOfTheKey()
{
    const test::Folder folder;
    QCOMPARE(Bundle(test::text(folder.path()))
                 .localizedString(QStringLiteral("Space"), QStringLiteral("blank")),
             QStringLiteral("blank"));
}

void LocalizedStringTest::aDamagedTableIsNone()
{
    const test::Folder folder;
    const auto bundle = withTable(folder, "de", "<plist><dict><key>Space</key>");
    QLocale::setDefault(QLocale(QStringLiteral("de_DE")));
    QCOMPARE(bundle.localizedString(QStringLiteral("Space"), {}), QStringLiteral("Space"));
}

void LocalizedStringTest::theMainBundleOfAProgramWithoutABundleHasNone()
{
    QCOMPARE(Bundle::main().localizedString(QStringLiteral("Page Up"), {}),
             QStringLiteral("Page Up"));
}

TEST_CLASS(LocalizedStringTest, QCoreApplication)
#include "LocalizedStringTest.moc"
