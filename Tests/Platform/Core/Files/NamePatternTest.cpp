// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/NamePattern.h"

#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <fnmatch.h>

#include <random>
#include <string>

class NamePatternTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aNameMatchesOrNot_data();
    void aNameMatchesOrNot();
    void itAgreesWithTheSystemOnPlainPatterns();
    void noPatternTakesLong();
    void itemsAreSortedAndExist();
    void everyNameIsFound();
};

void NamePatternTest::aNameMatchesOrNot_data()
{
    QTest::addColumn<QByteArray>("pattern");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("matches");
    auto row = [number = 0](const char *pattern, const char *name, bool matches) mutable {
        QTest::addRow("%d %s %s", ++number, pattern, name)
            << QByteArray(pattern) << QByteArray(name) << matches;
    };
    row("*", "", true);
    row("*", ".hidden", true);
    row("*.log", "a.log", true);
    row("*.log", ".log", true);
    row("*.log", "a.LOG", false);
    row("*.log", "a.log.gz", false);
    row("a*", "b", false);
    row("a*b*c", "aXbYbZc", true);
    row("a*b*c", "aXbYbZ", false);
    row("**a**", "bab", true);
    row("*a", "", false);
    row("*??", "a", false);
    row("*?", "\xC3\xA9", true); // one character of two bytes
    row("*??", "\xC3\xA9", false);
    row("?*", "\xF0\x9F\x8E\xB9", true);
    row("*?", "\xFF", true);       // no UTF-8: a byte is a character
    row("?\?*", "\xE2\x82", true); // cut short: two
    row("?", "\n", true);
    row("*[abc]", "xb", true);
    row("*[abc]", "xd", false);
    row("*[a-c]x", "bx", true);
    row("*[a-c]x", "dx", false);
    row("*[!a-c]", "d", true);
    row("*[^a-c]", "a", false);
    row("*[!a]", "", false);
    row("*[]a]", "]", true);
    row("*[!]a]", "]", false);
    row("*[a-]", "-", true);
    row("*[*]", "*", true);
    row("*[*]", "a", false);
    row("*[?]", "?", true);
    row("*[\xC3\xA0-\xC3\xBF]", "\xC3\xA9", true); // from a to y, with accents
    row("*[\xC3\xA0-\xC3\xBF]", "\xC3", false);
    row("*[a", "[a", true); // never closed
    row("*[a", "a", false);
    row("*[", "x[", true);
    row("*[]", "[]", true);
    row("*\\", "a\\", true); // nothing is escaped
    row("\\*", "\\a", true);
    row("\\*", "*", false);
    row("a", "a", true);
    row("a", "ab", false);
    row("", "", true);
    row("", "a", false);
    row("caf\xE9*", "caf\xE9.txt", true);
}

void NamePatternTest::aNameMatchesOrNot()
{
    QFETCH(QByteArray, pattern);
    QFETCH(QByteArray, name);
    const platform::NamePattern matcher(pattern);
    const auto matches = matcher.matches(name.constData(), static_cast<std::size_t>(name.size()));
    QTEST(matches, "matches");
}

void NamePatternTest::itAgreesWithTheSystemOnPlainPatterns()
{
    std::mt19937 random(1); // NOLINT(*-msc51-cpp): the same every time
    const auto text = [&](const std::string &letters, unsigned most) {
        std::string made;
        for (auto length = random() % most; made.size() < length;) {
            made += letters[random() % letters.size()];
        }
        return made;
    };
    int matching = 0;
    for (int i = 0; i < 200000; ++i) {
        const auto pattern = text("ab*?*", 8);
        const auto name = text("ab", 9);
        const auto expected = ::fnmatch(pattern.c_str(), name.c_str(), FNM_NOESCAPE) == 0;
        const platform::NamePattern matcher(QByteArray::fromStdString(pattern));
        matching += expected ? 1 : 0;
        if (matcher.matches(name.c_str(), name.size()) != expected) {
            QFAIL(std::string(pattern).append(" ").append(name).c_str());
        }
    }
    QVERIFY(matching > 1000);
}

void NamePatternTest::noPatternTakesLong()
{
    QByteArray pattern;
    for (int i = 0; i < 60; ++i) {
        pattern += "*a";
    }
    const platform::NamePattern matcher(pattern + 'b');
    const QByteArray name(255, 'a');
    for (int i = 0; i < 100; ++i) {
        QVERIFY(!matcher.matches(name.constData(), static_cast<std::size_t>(name.size())));
    }
}

void NamePatternTest::itemsAreSortedAndExist()
{
    const test::Folder folder;
    for (const auto *name : {"b.log", "a.log", "C.log", "a.txt", ".log"}) {
        test::writeFile(folder / name);
    }
    test::makeFolder(folder / "folder.log");
    test::makeLink("nowhere", folder / "dangling.log");
    test::makeLink("a.txt", folder / "link.log");
    const auto path = test::text(folder.path());
    QCOMPARE(platform::itemsInFolderMatching(path, QStringLiteral("*.log"))
                 .join(u' ')
                 .remove(path + u'/'),
             QStringLiteral(".log C.log a.log b.log folder.log link.log"));
    QVERIFY(platform::itemsInFolderMatching(path, QStringLiteral("*.gz")).isEmpty());
    QVERIFY(platform::itemsInFolderMatching(path + QStringLiteral("/a.txt"), QStringLiteral("*"))
                .isEmpty());
    QVERIFY(platform::itemsInFolderMatching(path + QChar(0), QStringLiteral("*")).isEmpty());
    QVERIFY(platform::itemsInFolderMatching(QString(), QStringLiteral("*")).isEmpty());
}

void NamePatternTest::everyNameIsFound()
{
    const test::Folder folder;
    QStringList names;
    for (const auto &name : test::oddNames()) {
        test::writeFile(folder / name.name);
        names << test::text(folder / name.name);
    }
    auto found = platform::itemsInFolderMatching(test::text(folder.path()), QStringLiteral("*"));
    names.sort();
    found.sort();
    QCOMPARE(found, names);
}

TEST_CLASS(NamePatternTest, QCoreApplication)
#include "NamePatternTest.moc"
