// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Files/ZQFileManager.h"
#include "Tests/Shared/Files/FileManagerFixture.h"
#include "Tests/Support/CommandRecorder.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using test::CommandRecorder;
using test::FileManagerFixture;
using test::isRoot;

namespace {

std::string trash()
{
    return std::string(isRoot() ? "/root" : "/home/tester") + "/.Trash/";
}

// A tree as it is after a way through an archive: a pipe is left out.
void makeTree(const std::string &path)
{
    test::makeTree(path);
    QCOMPARE(::unlink((path + "/folder/pipe").c_str()), 0);
}

} // namespace

class ZQFileManagerArchivesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { m_fixture = std::make_unique<FileManagerFixture>(); }
    void cleanup() { m_fixture.reset(); }

    void theArchiverIsRunWithTheseArguments();
    void aRelativePathIsNoOption();
    void successIsThatTheArchiveExists();
    void everyNameGoesThroughAnArchive_data();
    void everyNameGoesThroughAnArchive();
    void withoutTheParentTheArchiveHoldsWhatIsInTheFolder();
    void anArchiveThatExistsGoesToTheTrash();
    void aFolderThatExistsIsReplacedNotMerged();
    void aFolderThatCannotGoToTheTrashIsKept();
    void aDamagedArchiveLeavesNoFolder();
    void anArchiveThatIsCutBehindAnotherOneInItIsNotUnpacked();
    void anArchiveIsNoMoreReadableThanWhatItIsMadeOf();
    void aMissingSourceLeavesNoArchive();
    void whatHasNoPathIsRefused();

private:
    std::unique_ptr<FileManagerFixture> m_fixture;
};

void ZQFileManagerArchivesTest::theArchiverIsRunWithTheseArguments()
{
    auto &at = *m_fixture;
    const CommandRecorder ditto(QStringLiteral("/usr/bin/ditto"));
    CommandRecorder::forget();
    QVERIFY(!ZQFileManager::compressFile(at.path("a b"), at.path("x.zip")));
    QVERIFY(!ZQFileManager::compressFile(at.path("a"), at.path("x.zip"), IncludeParent::No));
    QVERIFY(!ZQFileManager::decompressFile(at.path("x.zip"), at.path("out")));
    const auto folder = at.path("");
    QCOMPARE(
        CommandRecorder::runs(),
        (QStringList{QStringLiteral("ditto [-ck] [--keepParent] [%1a b] [%1x.zip]").arg(folder),
                     QStringLiteral("ditto [-ck] [%1a] [%1x.zip]").arg(folder),
                     QStringLiteral("ditto [-xk] [%1x.zip] [%1out]").arg(folder)}));
}

void ZQFileManagerArchivesTest::aRelativePathIsNoOption()
{
    auto &at = *m_fixture;
    test::writeFile(at / "-x", "contents");
    QCOMPARE(::chdir(at.folder().path().c_str()), 0);
    const auto compressed =
        ZQFileManager::compressFile(QStringLiteral("-x"), QStringLiteral("--keepParent"));
    const auto decompressed =
        ZQFileManager::decompressFile(QStringLiteral("--keepParent"), QStringLiteral("-k"));
    QCOMPARE(::chdir("/tmp"), 0);
    QVERIFY(compressed);
    QVERIFY(decompressed);
    QCOMPARE(test::readFile(at / "-k/-x"), std::string("contents"));
}

void ZQFileManagerArchivesTest::successIsThatTheArchiveExists()
{
    auto &at = *m_fixture;
    const CommandRecorder ditto(QStringLiteral("/usr/bin/ditto"),
                                QStringLiteral("touch \"$3\"; exit 1"));
    QVERIFY(ZQFileManager::compressFile(at.path("a"), at.path("x.zip"), IncludeParent::No));
    QVERIFY(ZQFileManager::decompressFile(at.path("x.zip"), at.path("out")));
}

void ZQFileManagerArchivesTest::everyNameGoesThroughAnArchive_data()
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < test::oddNames().size(); ++i) {
        QTest::newRow(test::oddNames()[i].why) << static_cast<int>(i);
    }
}

void ZQFileManagerArchivesTest::everyNameGoesThroughAnArchive()
{
    QFETCH(int, index);
    auto &at = *m_fixture;
    const auto name = test::oddNames()[static_cast<std::size_t>(index)].name;
    makeTree(at / name);
    test::makeFolder(at / "archives");
    const auto archive = at.path("archives/" + name);
    QVERIFY(ZQFileManager::compressFile(at.path(name), archive));
    test::makeFolder(at / "out");
    QVERIFY(ZQFileManager::decompressFile(archive, at.path("out/" + name)));
    QCOMPARE(test::tree(at / ("out/" + name + '/' + name)), test::tree(at / name));
}

void ZQFileManagerArchivesTest::withoutTheParentTheArchiveHoldsWhatIsInTheFolder()
{
    auto &at = *m_fixture;
    makeTree(at / "tree");
    QVERIFY(ZQFileManager::compressFile(at.path("tree"), at.path("x.zip"), IncludeParent::No));
    QVERIFY(ZQFileManager::decompressFile(at.path("x.zip"), at.path("out")));
    QCOMPARE(test::tree(at / "out"), test::tree(at / "tree"));
}

void ZQFileManagerArchivesTest::anArchiveThatExistsGoesToTheTrash()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file");
    test::writeFile(at / "goes to the trash.zip", "old");
    QVERIFY(ZQFileManager::compressFile(at.path("file"), at.path("goes to the trash.zip")));
    QCOMPARE(test::readFile(trash() + "goes to the trash.zip"), std::string("old"));
    QVERIFY(test::readFile(at / "goes to the trash.zip").substr(0, 2) == "PK");
}

void ZQFileManagerArchivesTest::aFolderThatExistsIsReplacedNotMerged()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file", "new");
    QVERIFY(ZQFileManager::compressFile(at.path("file"), at.path("x.zip")));
    test::makeFolder(at / "replaced folder");
    test::writeFile(at / "replaced folder/other", "old");
    QVERIFY(ZQFileManager::decompressFile(at.path("x.zip"), at.path("replaced folder")));
    QVERIFY(!test::exists(at / "replaced folder/other"));
    QCOMPARE(test::readFile(at / "replaced folder/file"), std::string("new"));
    QCOMPARE(test::readFile(trash() + "replaced folder/other"), std::string("old"));
}

void ZQFileManagerArchivesTest::aFolderThatCannotGoToTheTrashIsKept()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file");
    QVERIFY(ZQFileManager::compressFile(at.path("file"), at.path("x.zip")));
    // Folders of the system are never moved, and for an ordinary user neither is this one.
    QVERIFY(!ZQFileManager::decompressFile(at.path("x.zip"), QStringLiteral("/Library")));
    QVERIFY(!test::exists("/Library/file"));
    if (!isRoot()) {
        test::makeFolder(at / "closed/folder");
        QCOMPARE(::chmod((at / "closed").c_str(), 0500), 0);
        QVERIFY(!ZQFileManager::decompressFile(at.path("x.zip"), at.path("closed/folder")));
        QVERIFY(!test::exists(at / "closed/folder/file"));
    }
}

void ZQFileManagerArchivesTest::aDamagedArchiveLeavesNoFolder()
{
    auto &at = *m_fixture;
    makeTree(at / "tree");
    QVERIFY(ZQFileManager::compressFile(at.path("tree"), at.path("x.zip")));
    const auto whole = test::readFile(at / "x.zip");
    test::writeFile(at / "x.zip", whole.substr(0, whole.size() / 2));
    QVERIFY(!ZQFileManager::decompressFile(at.path("x.zip"), at.path("out")));
    QVERIFY(!ZQFileManager::decompressFile(at.path("missing.zip"), at.path("out")));
    QCOMPARE(at.folder().names().size(), 2);
}

void ZQFileManagerArchivesTest::anArchiveThatIsCutBehindAnotherOneInItIsNotUnpacked()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file", "inner");
    QVERIFY(ZQFileManager::compressFile(at.path("file"), at.path("x.zip")));
    // The header in front of an entry that is as it is, and the entry; the rest is lost.
    const std::string header("PK\x03\x04\x0a\0\0\0\0\0\0\0\x21\0\0\0\0\0\0\0\0\0\0\0\0\0\x09\0\0\0",
                             30);
    test::writeFile(at / "cut.zip", header + "inner.zip" + test::readFile(at / "x.zip"));
    test::makeFolder(at / "kept in the trash");
    test::writeFile(at / "kept in the trash/old", "old");
    QVERIFY(!ZQFileManager::decompressFile(at.path("cut.zip"), at.path("kept in the trash")));
    QVERIFY(!test::exists(at / "kept in the trash"));
    QCOMPARE(test::readFile(trash() + "kept in the trash/old"), std::string("old"));
    QVERIFY(ZQFileManager::decompressFile(at.path("x.zip"), at.path("out")));
}

void ZQFileManagerArchivesTest::anArchiveIsNoMoreReadableThanWhatItIsMadeOf()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "folder");
    const auto mask = ::umask(0027);
    for (const auto mode : {0700U, 0750U, 0777U, 0500U, 0711U}) {
        ::chmod((at / "folder").c_str(), mode);
        const auto name = std::to_string(mode) + ".zip";
        QVERIFY(ZQFileManager::compressFile(at.path("folder"), at.path(name)));
        struct stat status {};
        QCOMPARE(::stat((at / name).c_str(), &status), 0);
        QCOMPARE(status.st_mode & 07777U, 0600U | (mode & 0040U));
    }
    ::umask(mask);
}

void ZQFileManagerArchivesTest::aMissingSourceLeavesNoArchive()
{
    auto &at = *m_fixture;
    QVERIFY(!ZQFileManager::compressFile(at.path("missing"), at.path("x.zip")));
    QVERIFY(!ZQFileManager::compressFile(at.path("missing"), at.path("missing/x.zip")));
    QVERIFY(at.folder().names().isEmpty());
}

void ZQFileManagerArchivesTest::whatHasNoPathIsRefused()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file", "contents");
    for (const auto &none : {QString(), QStringLiteral(""), at.path("file") + QChar(0)}) {
        QVERIFY(!ZQFileManager::compressFile(none, at.path("file")));
        QVERIFY(!ZQFileManager::compressFile(at.path("file"), none));
        QVERIFY(!ZQFileManager::decompressFile(none, at.path("file")));
        QVERIFY(!ZQFileManager::decompressFile(at.path("file"), none));
    }
    QCOMPARE(test::readFile(at / "file"), std::string("contents"));
}

TEST_CLASS(ZQFileManagerArchivesTest, QCoreApplication)
#include "ZQFileManagerArchivesTest.moc"
