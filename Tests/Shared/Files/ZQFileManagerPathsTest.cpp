// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Files/ZQFileManager.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <unistd.h>

#include <limits>

using test::text;

class ZQFileManagerPathsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aSizeIsToldInStepsOf1024_data();
    void aSizeIsToldInStepsOf1024();
    void aTieIsRoundedToTheEvenDigit();
    void aNameIsCleaned_data();
    void aNameIsCleaned();
    void aPatternListsTheMatchingFilesBelowTheBase();
    void aPatternWithoutAStarIsJoinedWhetherOrNotItExists();
    void aPatternMayHaveStarsInEveryComponent();
    void onlyAComponentWithAStarIsAPattern();
    void anAbsolutePatternIsReadFromTheBase();
    void withoutABaseItBeginsAtTheRoot();
    void aLinkThatLeadsNowhereIsNotListed();
    void everyNameIsListed();
    void theFirstMatchIsDecodedElseThePatternAsItIs();
};

void ZQFileManagerPathsTest::aSizeIsToldInStepsOf1024_data()
{
    QTest::addColumn<double>("bytes");
    QTest::addColumn<QString>("words");
    constexpr double gigabyte = 1073741824;
    QTest::newRow("0") << 0.0 << QStringLiteral("0 B");
    QTest::newRow("1023") << 1023.0 << QStringLiteral("1023 B");
    QTest::newRow("almost 1024") << 1023.9 << QStringLiteral("1024 B");
    QTest::newRow("1024") << 1024.0 << QStringLiteral("1.00 KB");
    QTest::newRow("1536") << 1536.0 << QStringLiteral("1.50 KB");
    QTest::newRow("almost a megabyte") << 1048575.0 << QStringLiteral("1024.00 KB");
    QTest::newRow("1048576") << 1048576.0 << QStringLiteral("1.00 MB");
    QTest::newRow("almost a gigabyte") << gigabyte - 1 << QStringLiteral("1024.00 MB");
    QTest::newRow("a gigabyte") << gigabyte << QStringLiteral("1.00 GB");
    QTest::newRow("five gigabytes") << 5 * gigabyte << QStringLiteral("5.00 GB");
    QTest::newRow("no larger unit") << 2048 * gigabyte << QStringLiteral("2048.00 GB");
    QTest::newRow("negative") << -5.0 << QStringLiteral("-5 B");
    QTest::newRow("endless") << std::numeric_limits<double>::infinity() << QStringLiteral("inf GB");
}

void ZQFileManagerPathsTest::aSizeIsToldInStepsOf1024()
{
    QFETCH(double, bytes);
    QFETCH(QString, words);
    QCOMPARE(ZQFileManager::formatFileSize(bytes), words);
}

// In whole numbers: of the hundredths of a kilobyte, what is left over decides, and of a half the
// digit before it.
void ZQFileManagerPathsTest::aTieIsRoundedToTheEvenDigit()
{
    for (int bytes = 1024; bytes < 70000; ++bytes) {
        const int left = bytes * 100 % 1024;
        int hundredths = bytes * 100 / 1024;
        hundredths += left > 512 || (left == 512 && hundredths % 2 == 1) ? 1 : 0;
        QCOMPARE(ZQFileManager::formatFileSize(bytes),
                 QStringLiteral("%1.%2 KB")
                     .arg(hundredths / 100)
                     .arg(hundredths % 100, 2, 10, QLatin1Char('0')));
    }
    QCOMPARE(ZQFileManager::formatFileSize(1152), QStringLiteral("1.12 KB"));
    QCOMPARE(ZQFileManager::formatFileSize(1.125 * 1048576), QStringLiteral("1.12 MB"));
    QCOMPARE(ZQFileManager::formatFileSize(1.125 * 1073741824), QStringLiteral("1.12 GB"));
    QCOMPARE(ZQFileManager::formatFileSize(0.5), QStringLiteral("0 B"));
    QCOMPARE(ZQFileManager::formatFileSize(1.5), QStringLiteral("2 B"));
    QCOMPARE(ZQFileManager::formatFileSize(2.5), QStringLiteral("2 B"));
}

void ZQFileManagerPathsTest::aNameIsCleaned_data()
{
    QTest::addColumn<QString>("cleaned");
    const auto row = [](const char *name, const char *cleaned) {
        QTest::newRow(name) << QString::fromUtf8(cleaned);
    };
    row(".", "");
    row("..", ".");
    row("...", "..");
    row(".hidden", "hidden");
    row("  .My/File:Name", ".MyFileName"); // the dot is looked for before the spaces go
    row(". name", "name");
    row(" \t\r\n name \n", "name");
    row("a b", "a b");
    row("a/b:c/:d", "abcd");
    row("/ a", " a"); // nor are the spaces looked for again
    row("", "");
    row("/", "");
    row("\\*?\"<>|", "\\*?\"<>|");
    row("\xF0\x9F\x8E\xB9", "\xF0\x9F\x8E\xB9");
}

void ZQFileManagerPathsTest::aNameIsCleaned()
{
    QFETCH(QString, cleaned);
    QCOMPARE(ZQFileManager::validateFilename(QString::fromUtf8(QTest::currentDataTag())), cleaned);
}

void ZQFileManagerPathsTest::aPatternListsTheMatchingFilesBelowTheBase()
{
    const test::Folder folder;
    test::makeFolder(folder / "Logs");
    for (const auto *name : {"Logs/b.log", "Logs/a.log", "Logs/.log", "Logs/a.txt", "c.log"}) {
        test::writeFile(folder / name);
    }
    const auto logs = text(folder / "Logs/");
    const QStringList expected{logs + QStringLiteral(".log"), logs + QStringLiteral("a.log"),
                               logs + QStringLiteral("b.log")};
    const auto pattern = QStringLiteral("Logs/*.log");
    const auto base = text(folder.path());
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(pattern, base), expected);
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(pattern + u'/', base + u'/'), expected);
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(QStringLiteral("../*"), logs),
             (QStringList{logs + QStringLiteral("../Logs"), logs + QStringLiteral("../c.log")}));
}

void ZQFileManagerPathsTest::aPatternWithoutAStarIsJoinedWhetherOrNotItExists()
{
    const auto pattern = QStringLiteral("a/[b]?");
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(pattern, QStringLiteral("/missing")),
             QStringList(QStringLiteral("/missing/a/[b]?")));
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(pattern), QStringList(pattern));
    QCOMPARE(
        ZQFileManager::filesMatchingWildcardPath(QStringLiteral("/a"), QStringLiteral("/missing")),
        QStringList(QStringLiteral("/missing/a")));
}

void ZQFileManagerPathsTest::aPatternMayHaveStarsInEveryComponent()
{
    const test::Folder folder;
    for (const auto *name : {"a1/x/f1", "a1/y/f2", "a2/x/f1", "b/x/f1"}) {
        const std::string whole(name);
        test::makeFolder(folder / whole.substr(0, whole.rfind('/')));
        test::writeFile(folder / whole);
    }
    test::writeFile(folder / "a3"); // no folder: nothing is in it
    QStringList expected;
    for (const auto *name : {"a1/x/f1", "a1/y/f2", "a2/x/f1"}) {
        expected << text(folder / name);
    }
    const auto base = text(folder.path());
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(QStringLiteral("a*/*/f*"), base), expected);
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(QStringLiteral("a*/x/f1"), base),
             (QStringList{expected[0], expected[2]}));
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(QStringLiteral("*/x/missing"), base),
             QStringList());
}

void ZQFileManagerPathsTest::onlyAComponentWithAStarIsAPattern()
{
    const test::Folder folder;
    test::makeFolder(folder / "?");
    test::makeFolder(folder / "a");
    test::writeFile(folder / "?/1");
    test::writeFile(folder / "a/2");
    const auto base = text(folder.path());
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(QStringLiteral("?/*"), base),
             QStringList(text(folder / "?/1")));
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(QStringLiteral("?*/*"), base).size(), 2);
}

void ZQFileManagerPathsTest::anAbsolutePatternIsReadFromTheBase()
{
    const test::Folder folder;
    test::makeFolder(folder / "Logs");
    test::writeFile(folder / "Logs/a.log");
    QCOMPARE(
        ZQFileManager::filesMatchingWildcardPath(QStringLiteral("/Logs/*"), text(folder.path())),
        QStringList(text(folder / "Logs/a.log")));
}

void ZQFileManagerPathsTest::withoutABaseItBeginsAtTheRoot()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    const auto pattern = text(folder / "f*");
    const QStringList expected(text(folder / "file"));
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(pattern), expected);
    // Also a pattern that is not absolute, wherever the process is.
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(pattern.mid(1)), expected);
    QVERIFY(ZQFileManager::filesMatchingWildcardPath(QStringLiteral("/*"))
                .contains(QStringLiteral("/usr")));
}

void ZQFileManagerPathsTest::aLinkThatLeadsNowhereIsNotListed()
{
    const test::Folder folder;
    test::makeFolder(folder / "real");
    test::writeFile(folder / "real/file");
    test::makeLink("nowhere", folder / "lost");
    test::makeLink("real", folder / "found");
    const auto base = text(folder.path());
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(QStringLiteral("*o*"), base),
             QStringList(text(folder / "found")));
    QCOMPARE(ZQFileManager::filesMatchingWildcardPath(QStringLiteral("f*/*"), base),
             QStringList(text(folder / "found/file")));
}

void ZQFileManagerPathsTest::everyNameIsListed()
{
    const test::Folder folder;
    QStringList expected;
    for (const auto &odd : test::oddNames()) {
        test::makeFolder(folder / odd.name);
        test::writeFile(folder / (odd.name + "/file"));
        expected << text(folder / (odd.name + "/file"));
    }
    auto found =
        ZQFileManager::filesMatchingWildcardPath(QStringLiteral("*/f*"), text(folder.path()));
    expected.sort();
    found.sort();
    QCOMPARE(found, expected);
}

void ZQFileManagerPathsTest::theFirstMatchIsDecodedElseThePatternAsItIs()
{
    const test::Folder folder;
    test::writeFile(folder / "b");
    test::writeFile(folder / "a");
    const auto base = text(folder.path());
    QCOMPARE(ZQFileManager::decodeWildcardPath(QStringLiteral("*"), base), text(folder / "a"));
    QCOMPARE(ZQFileManager::decodeWildcardPath(QStringLiteral("x*"), base), text(folder / "x*"));
    QCOMPARE(ZQFileManager::decodeWildcardPath(QStringLiteral("x"), base), text(folder / "x"));
    QCOMPARE(ZQFileManager::decodeWildcardPath(QStringLiteral("/missing*/x"), QString()),
             QStringLiteral("/missing*/x"));
}

TEST_CLASS(ZQFileManagerPathsTest, QCoreApplication)
#include "ZQFileManagerPathsTest.moc"
