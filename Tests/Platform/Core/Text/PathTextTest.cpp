// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/PathText.h"

#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <unistd.h>

class PathTextTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aPathIsTakenApart_data();
    void aPathIsTakenApart();
    void componentsHaveOneSlashBetweenThem();
    void aRelativePathIsMadeAbsoluteWithTheCurrentFolder();
    void allButPlainBytesAreEncoded();
};

void PathTextTest::aPathIsTakenApart_data()
{
    QTest::addColumn<QString>("last");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QString>("stem");
    const auto row = [](const char *path, const char *last, const char *folder,
                        const char *extension, const char *stem) {
        QTest::newRow(path) << QString::fromLatin1(last) << QString::fromLatin1(folder)
                            << QString::fromLatin1(extension) << QString::fromLatin1(stem);
    };
    row("/tmp/scratch.tiff", "scratch.tiff", "/tmp", "tiff", "/tmp/scratch");
    row("/tmp/scratch", "scratch", "/tmp", "", "/tmp/scratch");
    row("/tmp/", "tmp", "/", "", "/tmp");
    row("/a//b//", "b", "/a", "", "/a//b");
    row("scratch..tiff", "scratch..tiff", "", "tiff", "scratch.");
    row(".tiff", ".tiff", "", "", ".tiff");
    row("a.b/c", "c", "a.b", "", "a.b/c");
    row("report.", "report.", "", "", "report.");
    row("b.tar.gz/", "b.tar.gz", "", "gz", "b.tar");
    row("/", "/", "/", "", "/");
    row("//", "/", "/", "", "/");
    row("", "", "", "", "");
}

void PathTextTest::aPathIsTakenApart()
{
    QFETCH(QString, last);
    QFETCH(QString, folder);
    QFETCH(QString, extension);
    QFETCH(QString, stem);
    const auto path = QString::fromLatin1(QTest::currentDataTag());
    QCOMPARE(platform::lastPathComponent(path), last);
    QCOMPARE(platform::deletingLastPathComponent(path), folder);
    QCOMPARE(platform::pathExtension(path), extension);
    QCOMPARE(platform::deletingPathExtension(path), stem);
}

void PathTextTest::componentsHaveOneSlashBetweenThem()
{
    const auto joined = [](const char *one, const char *two) {
        return platform::appendingPathComponent(QString::fromLatin1(one), QString::fromLatin1(two));
    };
    QCOMPARE(joined("/a", "b"), QStringLiteral("/a/b"));
    QCOMPARE(joined("/a/", "/b/"), QStringLiteral("/a/b"));
    QCOMPARE(joined("/", "b"), QStringLiteral("/b"));
    QCOMPARE(joined("/a", ""), QStringLiteral("/a"));
    QCOMPARE(joined("", "b"), QStringLiteral("b"));
    const QStringList components{QStringLiteral("/"), QStringLiteral("a"), QStringLiteral("b")};
    QCOMPARE(platform::pathComponents(QStringLiteral("//a//b/")), components);
    QVERIFY(platform::pathComponents(QString()).isEmpty());
}

void PathTextTest::aRelativePathIsMadeAbsoluteWithTheCurrentFolder()
{
    QCOMPARE(::chdir("/usr"), 0);
    QCOMPARE(platform::absolutePath(QStringLiteral("-rf")), QStringLiteral("/usr/-rf"));
    QCOMPARE(platform::absolutePath(QStringLiteral("/a/../b")), QStringLiteral("/a/../b"));
    QVERIFY(platform::absolutePath(QString()).isNull());
    QVERIFY(platform::absolutePath(QStringLiteral("")).isEmpty());
}

void PathTextTest::allButPlainBytesAreEncoded()
{
    const auto path = QStringLiteral("/a b/100%/\n") + QChar(0xDCFF) + QStringLiteral("\u00e4-_.~");
    QCOMPARE(platform::percentEncodedPath(path), QByteArray("/a%20b/100%25/%0A%FF%C3%A4-_.~"));
}

TEST_CLASS(PathTextTest, QCoreApplication)
#include "PathTextTest.moc"
