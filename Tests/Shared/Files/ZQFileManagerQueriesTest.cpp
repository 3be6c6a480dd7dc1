// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Files/ZQFileManager.h"
#include "Tests/Shared/Files/FileManagerFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

using test::FileManagerFixture;
using test::text;

class ZQFileManagerQueriesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { m_fixture = std::make_unique<FileManagerFixture>(); }
    void cleanup() { m_fixture.reset(); }

    void linksAreFollowedToSeeWhatExists();
    void aFolderWithAPackagesEndingIsAPackage();
    void everyNameIsAnswered_data();
    void everyNameIsAnswered();

    void pathsOutsideVolumesOrTooShortCountAsMounted_data();
    void pathsOutsideVolumesOrTooShortCountAsMounted();
    void aVolumeThatDoesNotExistIsNotMounted();
    void onlyTheDriveTestWantsTheSlashAndWritesItsMountPoint();

    void aFolderThatHoldsOnlyDSStoreIsEmpty();
    void aFolderThatHoldsDSStoreAndIconIsEmpty();
    void aTreeOfNothingButEmptyFoldersIsEmpty();
    void aPlainFileOrALinkMakesAFolderNotEmpty();
    void anUnreadableFolderIsEmpty();

    void theSizeOfAFolderIsTheSumOverItsContents();

    void aFreePathIsUniqueAsItIs();
    void aTakenPathGetsTheFirstFreeNumberFromTwo();
    void lockingThatFailsIsLoggedInTheWordsOfUnlocking();
    void aFolderIsUnlockedWithAllBelowAndWithoutLinks();
    void aReferenceLeadsToItsItemOnly();

private:
    std::unique_ptr<FileManagerFixture> m_fixture;
};

void ZQFileManagerQueriesTest::linksAreFollowedToSeeWhatExists()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file");
    test::makeFolder(at / "folder");
    test::makeLink("file", at / "to file");
    test::makeLink("folder", at / "to folder");
    test::makeLink("missing", at / "to nothing");
    const auto answers = [&](const char *name) {
        const auto path = at.path(name);
        return QList<bool>{ZQFileManager::fileExistsAtPath(path),
                           ZQFileManager::isDirectoryAtPath(path),
                           ZQFileManager::isSymbolicLinkAtPath(path)};
    };
    QCOMPARE(answers("file"), (QList<bool>{true, false, false}));
    QCOMPARE(answers("folder"), (QList<bool>{true, true, false}));
    QCOMPARE(answers("to file"), (QList<bool>{true, false, true}));
    QCOMPARE(answers("to folder"), (QList<bool>{true, true, true}));
    QCOMPARE(answers("to nothing"), (QList<bool>{false, false, true}));
    QCOMPARE(answers("missing"), (QList<bool>{false, false, false}));
    QVERIFY(!ZQFileManager::fileExistsAtPath(QString()));
    QVERIFY(!ZQFileManager::isDirectoryAtPath(QString()));
    QVERIFY(!ZQFileManager::isSymbolicLinkAtPath(QString()));
}

void ZQFileManagerQueriesTest::aFolderWithAPackagesEndingIsAPackage()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "Program.app");
    test::makeFolder(at / "folder");
    test::writeFile(at / "file.app");
    QVERIFY(ZQFileManager::isPackageAtPath(at.path("Program.app")));
    QVERIFY(!ZQFileManager::isPackageAtPath(at.path("folder")));
    QVERIFY(!ZQFileManager::isPackageAtPath(at.path("file.app")));
}

void ZQFileManagerQueriesTest::everyNameIsAnswered_data()
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < test::oddNames().size(); ++i) {
        QTest::newRow(test::oddNames()[i].why) << static_cast<int>(i);
    }
}

void ZQFileManagerQueriesTest::everyNameIsAnswered()
{
    QFETCH(int, index);
    auto &at = *m_fixture;
    const auto name = test::oddNames()[static_cast<std::size_t>(index)].name;
    QCOMPARE(ZQFileManager::uniqueFilename(at.path(name)), at.path(name));
    test::makeFolder(at / name);
    test::writeFile(at / (name + '/' + name), "12345");
    test::makeLink(name, at / "link");
    const auto path = at.path(name);
    QVERIFY(ZQFileManager::fileExistsAtPath(path));
    QVERIFY(ZQFileManager::isDirectoryAtPath(path));
    QVERIFY(!ZQFileManager::isSymbolicLinkAtPath(path));
    QVERIFY(ZQFileManager::isSymbolicLinkAtPath(at.path("link")));
    QVERIFY(!ZQFileManager::isFolderEmpty(path));
    QVERIFY(!ZQFileManager::isFileLocked(path));
    QCOMPARE(ZQFileManager::fileSize(path), quint64(5));
    QVERIFY(ZQFileManager::uniqueFilename(path) != path);
    const auto reference = ZQFileManager::stringToFSRef(path);
    QVERIFY(reference.has_value());
    QCOMPARE(ZQFileManager::stringWithFSRef(*reference), path);
}

void ZQFileManagerQueriesTest::pathsOutsideVolumesOrTooShortCountAsMounted_data()
{
    QTest::addColumn<int>("unused");
    for (const auto *path : {"", "/", "/tmp/x", "Volumes/x/y", "/a/Volumes/b", "/Volumes",
                             "/Volumes/", "/volumes/x/y"}) {
        QTest::newRow(path) << 0;
    }
}

void ZQFileManagerQueriesTest::pathsOutsideVolumesOrTooShortCountAsMounted()
{
    const auto path = QString::fromLatin1(QTest::currentDataTag());
    QVERIFY(ZQFileManager::isVolumeMountedForPath(path));
    QVERIFY(ZQFileManager::isDriveMountedForPath(path));
    QVERIFY(m_fixture->console().isEmpty());
}

void ZQFileManagerQueriesTest::aVolumeThatDoesNotExistIsNotMounted()
{
    test::makeFolder("/Volumes/There is");
    for (const auto *path :
         {"/Volumes/There is", "/Volumes/There is/a/b", "/Volumes//There is/a"}) {
        QVERIFY(ZQFileManager::isVolumeMountedForPath(QString::fromLatin1(path)));
        QVERIFY(ZQFileManager::isDriveMountedForPath(QString::fromLatin1(path)));
    }
    for (const auto *path : {"/Volumes/Gone", "/Volumes/Gone/", "/Volumes/Gone/a/b"}) {
        QVERIFY(!ZQFileManager::isVolumeMountedForPath(QString::fromLatin1(path)));
        QVERIFY(!ZQFileManager::isDriveMountedForPath(QString::fromLatin1(path)));
    }
    std::filesystem::remove("/Volumes/There is");
}

void ZQFileManagerQueriesTest::onlyTheDriveTestWantsTheSlashAndWritesItsMountPoint()
{
    // A folder whose name merely begins like that counts for the volume test.
    QVERIFY(!ZQFileManager::isVolumeMountedForPath(QStringLiteral("/VolumesX/a/b")));
    QVERIFY(ZQFileManager::isDriveMountedForPath(QStringLiteral("/VolumesX/a/b")));
    QVERIFY(m_fixture->console().isEmpty());
    QVERIFY(!ZQFileManager::isDriveMountedForPath(QStringLiteral("/Volumes/Gone/a/b")));
    QVERIFY(!ZQFileManager::isDriveMountedForPath(QStringLiteral("/Volumes/Gone")));
    const auto line = QStringLiteral("mountpoint: /Volumes/Gone");
    QCOMPARE(m_fixture->console(), (QStringList{line, line}));
}

void ZQFileManagerQueriesTest::aFolderThatHoldsOnlyDSStoreIsEmpty()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "nothing");
    test::makeFolder(at / "store");
    test::writeFile(at / "store/.DS_Store");
    test::makeFolder(at / "icon");
    test::writeFile(at / "icon/Icon\r");
    for (const auto *name : {"nothing", "store", "icon"}) {
        QVERIFY(ZQFileManager::isFolderEmpty(at.path(name)));
    }
    test::writeFile(at / "nothing/Icon");
    QVERIFY(!ZQFileManager::isFolderEmpty(at.path("nothing")));
}

void ZQFileManagerQueriesTest::aFolderThatHoldsDSStoreAndIconIsEmpty()
{
    auto &at = *m_fixture;
    test::writeFile(at / ".DS_Store");
    test::writeFile(at / "Icon\r");
    QVERIFY(ZQFileManager::isFolderEmpty(text(at.folder().path())));
}

void ZQFileManagerQueriesTest::aTreeOfNothingButEmptyFoldersIsEmpty()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "a/b/c");
    test::makeFolder(at / "a/d/.DS_Store"); // the name counts, not what it is
    test::writeFile(at / "a/b/.DS_Store");
    test::writeFile(at / "a/b/c/Icon\r");
    QVERIFY(ZQFileManager::isFolderEmpty(at.path("a")));
    test::writeFile(at / "a/b/c/file", "");
    QVERIFY(!ZQFileManager::isFolderEmpty(at.path("a")));
}

void ZQFileManagerQueriesTest::aPlainFileOrALinkMakesAFolderNotEmpty()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "a/b");
    test::makeFolder(at / "c");
    test::makeLink("../c", at / "a/b/link"); // to an empty folder, and yet something to lose
    QVERIFY(!ZQFileManager::isFolderEmpty(at.path("a")));
}

void ZQFileManagerQueriesTest::anUnreadableFolderIsEmpty()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "closed/a");
    test::writeFile(at / "closed/file");
    ::chmod((at / "closed").c_str(), 0);
    QCOMPARE(ZQFileManager::isFolderEmpty(at.path("closed")), !test::isRoot());
    QVERIFY(ZQFileManager::isFolderEmpty(at.path("missing")));
    QVERIFY(ZQFileManager::isFolderEmpty(QString()));
}

void ZQFileManagerQueriesTest::theSizeOfAFolderIsTheSumOverItsContents()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "folder/below/empty");
    test::writeFile(at / "folder/a", "12345");
    test::writeFile(at / "folder/below/b", "1234567");
    QCOMPARE(ZQFileManager::fileSize(at.path("folder")), quint64(12));
    QCOMPARE(ZQFileManager::fileSize(at.path("folder/a")), quint64(5));
    QCOMPARE(ZQFileManager::fileSize(at.path("folder/below/empty")), quint64(0));
    QCOMPARE(ZQFileManager::fileSize(at.path("missing")), quint64(0));
    ::truncate((at / "folder/a").c_str(), 5LL << 32U);
    QCOMPARE(ZQFileManager::fileSize(at.path("folder")), (5ULL << 32U) + 7U);
}

void ZQFileManagerQueriesTest::aFreePathIsUniqueAsItIs()
{
    for (const auto *name : {"Report.txt", "Archive", "-", "a b.c d"}) {
        QCOMPARE(ZQFileManager::uniqueFilename(m_fixture->path(name)), m_fixture->path(name));
    }
}

void ZQFileManagerQueriesTest::aTakenPathGetsTheFirstFreeNumberFromTwo()
{
    auto &at = *m_fixture;
    for (const auto *name :
         {"Report.txt", "Archive", ".hidden", "a.tar.gz", "dot.", "folder.d/a"}) {
        test::makeFolder(std::filesystem::path(at / name).parent_path());
        test::writeFile(at / name);
    }
    const auto unique = [&](const char *name) {
        return ZQFileManager::uniqueFilename(at.path(name));
    };
    QCOMPARE(unique("Report.txt"), at.path("Report 2.txt"));
    test::writeFile(at / "Report 2.txt");
    test::makeLink("nowhere", at / "Report 3.txt"); // a name that is taken all the same
    QCOMPARE(unique("Report.txt"), at.path("Report 4.txt"));
    QCOMPARE(unique("Archive"), at.path("Archive 2"));
    QCOMPARE(unique(".hidden"), at.path(".hidden 2"));
    QCOMPARE(unique("a.tar.gz"), at.path("a.tar 2.gz"));
    QCOMPARE(unique("dot."), at.path("dot. 2"));
    QCOMPARE(unique("folder.d/a"), at.path("folder.d/a 2"));
}

void ZQFileManagerQueriesTest::lockingThatFailsIsLoggedInTheWordsOfUnlocking()
{
    auto &at = *m_fixture;
    ZQFileManager::lockFile(at.path("missing"));
    ZQFileManager::unlockFile(at.path("missing"));
    const auto line = QStringLiteral("Unable to unlock file %1: No such file or directory")
                          .arg(at.path("missing"));
    QCOMPARE(FileManagerFixture::logged(), (QStringList{line, line}));
    test::makeLink("missing", at / "link");
    ZQFileManager::lockFile(at.path("link"));
    ZQFileManager::unlockFile(at.path("link"));
    QCOMPARE(FileManagerFixture::logged().size(), 3);
    QVERIFY(!ZQFileManager::isFileLocked(at.path("link")));
}

void ZQFileManagerQueriesTest::aFolderIsUnlockedWithAllBelowAndWithoutLinks()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "folder/a/b");
    test::writeFile(at / "folder/a/b/file");
    test::makeLink("/etc", at / "folder/a/b/link");
    ZQFileManager::unlockFolder(at.path("folder"));
    ZQFileManager::unlockFolder(at.path("missing"));
    QVERIFY(FileManagerFixture::logged().isEmpty());
    ZQFileManager::lockFolder(at.path("folder"));
    const auto isLocked = ZQFileManager::isFileLocked(at.path("folder/a/b/file"));
    // A link cannot be locked; a file only by a root that has all of root's rights.
    QCOMPARE(FileManagerFixture::logged().size(), isLocked ? 1 : 2);
    QVERIFY(!ZQFileManager::isFileLocked(at.path("folder/a")));
    QVERIFY(!ZQFileManager::isFileLocked(at.path("folder")));
    ZQFileManager::unlockFolder(at.path("folder"));
    QVERIFY(!ZQFileManager::isFileLocked(at.path("folder/a/b/file")));
}

void ZQFileManagerQueriesTest::aReferenceLeadsToItsItemOnly()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file");
    const auto reference = ZQFileManager::stringToFSRef(at.path("file"));
    QVERIFY(reference.has_value());
    QCOMPARE(ZQFileManager::stringWithFSRef(*reference), at.path("file"));
    test::writeFile(at / "other");
    std::filesystem::rename(at / "other", at / "file");
    QVERIFY(ZQFileManager::stringWithFSRef(*reference).isNull());
    ::unlink((at / "file").c_str());
    QVERIFY(ZQFileManager::stringWithFSRef(*reference).isNull());
    QVERIFY(!ZQFileManager::stringToFSRef(at.path("file")));
    QVERIFY(!ZQFileManager::stringToFSRef(QString()));
    QVERIFY(ZQFileManager::stringToFSRef(QStringLiteral("/")).has_value());
}

TEST_CLASS(ZQFileManagerQueriesTest, QCoreApplication)
#include "ZQFileManagerQueriesTest.moc"
