// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Files/ZQFileManager.h"
#include "Tests/Shared/Files/FileManagerFixture.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/StandardOutputCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

using namespace std::chrono_literals;
using test::FileManagerFixture;
using test::text;

// Removing, making folders and copying.
class ZQFileManagerChangesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { m_fixture = std::make_unique<FileManagerFixture>(); }
    void cleanup() { m_fixture.reset(); }

    void everyNameGoesThroughEveryChange_data();
    void everyNameGoesThroughEveryChange();
    void aRelativeNameWithADashIsNoOptionOfTheToolsThatRootRuns();

    void removingAMissingPathReturnsTrueAndLogsNothing();
    void whatMayNotBeLookedAtDoesNotCountAsRemoved();
    void removingIsRecursiveAndTakesDanglingLinks();
    void aFailedRemovalIsLoggedAsAuthorizingWhetherOrNotItMay();
    void aProtectedFolderIsNeverRemoved_data();
    void aProtectedFolderIsNeverRemoved();
    void whatIsInAProtectedFolderIsRemoved();
    void onlyAnEmptyFolderIsRemovedIfEmpty();

    void aFolderIsMadeWithThoseAboveIt();
    void aFolderOnAnUnmountedVolumeIsRefusedWithoutAPrivilegedAttempt();
    void aFailedCreationIsLoggedAsAuthorizingWhetherOrNotItMay();
    void aStructureReappearsUnderTheDestination();
    void theStructureOfAPackageOrAFileIsThatOfItsFolder();
    void theStructuresPathIsGivenWhateverTheOutcome();

    void copyingWithoutAPathIsLoggedAndPrinted();
    void aFailedCopyIsLoggedAsAuthorizingWhetherOrNotItMay();
    void aCopyReplacesNothingWithOnesOwnRights();
    void contentsAreCopiedEntryByEntryWithALineForEach();
    void copyingContentsStopsAtTheFirstFailure();
    void anUnreadableFolderHasNoContentsToCopy();

    void theTimedFormsSayWhatCanBeSeenAtTheEnd();
    void theTimedFormsFailAtOnceWhereThePlainFormsFail();
    void anEndlessTimeOutEndsWithTheChange();
    void theMainThreadDispatchesEventsWhileItWaits();
    void otherThreadsSleepInStepsOfThreeTenthsOfASecond();

private:
    // Something that a removal cannot remove: its folder lets nobody write, and for root, who may
    // all the same, a file that the kernel keeps.
    QString irremovable() const;

    std::unique_ptr<FileManagerFixture> m_fixture;
};

QString ZQFileManagerChangesTest::irremovable() const
{
    if (test::isRoot()) {
        return QStringLiteral("/proc/version");
    }
    test::makeFolder(*m_fixture / "closed");
    test::writeFile(*m_fixture / "closed/file");
    ::chmod((*m_fixture / "closed").c_str(), 0500);
    return m_fixture->path("closed/file");
}

void ZQFileManagerChangesTest::everyNameGoesThroughEveryChange_data()
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < test::oddNames().size(); ++i) {
        QTest::newRow(test::oddNames()[i].why) << static_cast<int>(i);
    }
}

void ZQFileManagerChangesTest::everyNameGoesThroughEveryChange()
{
    QFETCH(int, index);
    auto &at = *m_fixture;
    const auto name = test::oddNames()[static_cast<std::size_t>(index)].name;
    const auto path = at.path(name);
    QVERIFY(ZQFileManager::createDirectory(path + u'/' + text(name), ShouldAuth::No));
    test::writeFile(at / (name + "/file"), "contents");
    const auto whole = test::tree(at / name);
    QVERIFY(ZQFileManager::copyFile(path, at.path("copy"), ShouldAuth::No));
    QCOMPARE(test::tree(at / "copy"), whole);
    test::makeFolder(at / "other");
    QVERIFY(ZQFileManager::copyFile(at.path("copy"), at.path("other/" + name), ShouldAuth::No));
    QCOMPARE(test::tree(at / ("other/" + name)), whole);
    test::makeFolder(at / "third");
    QVERIFY(ZQFileManager::copyContentsOfDirectory(at.path("other"), at.path("third"), 0s));
    QCOMPARE(test::tree(at / ("third/" + name)), whole);
    QVERIFY(ZQFileManager::removeFile(path, ShouldAuth::No));
    QVERIFY(!test::exists(at / name));
    QCOMPARE(at.folder().names().size(), 3);
}

void ZQFileManagerChangesTest::aRelativeNameWithADashIsNoOptionOfTheToolsThatRootRuns()
{
    auto &at = *m_fixture;
    QCOMPARE(::chdir(at.folder().path().c_str()), 0);
    test::writeFile(at / "-v", "new");
    test::writeFile(at / "target", "old");
    // With one's own rights nothing is replaced, so that this is the tool's work.
    const auto copied =
        ZQFileManager::copyFile(QStringLiteral("-v"), QStringLiteral("target"), ShouldAuth::Yes);
    QCOMPARE(::chdir("/tmp"), 0);
    QCOMPARE(copied, test::isRoot());
    if (test::isRoot()) {
        QTRY_COMPARE_WITH_TIMEOUT(test::readFile(at / "target"), std::string("new"), 60000);
    }
}

void ZQFileManagerChangesTest::removingAMissingPathReturnsTrueAndLogsNothing()
{
    for (const auto shouldAuth : {ShouldAuth::Yes, ShouldAuth::No}) {
        QVERIFY(ZQFileManager::removeFile(m_fixture->path("missing"), shouldAuth));
        QVERIFY(ZQFileManager::removeFile(m_fixture->path("missing/a"), shouldAuth));
        QVERIFY(ZQFileManager::removeFile(QString(), shouldAuth));
        QVERIFY(ZQFileManager::trashFile(m_fixture->path("missing"), shouldAuth));
        QVERIFY(ZQFileManager::trashFile(QString(), shouldAuth));
    }
    QVERIFY(FileManagerFixture::logged().isEmpty());
    QVERIFY(m_fixture->console().isEmpty());
}

void ZQFileManagerChangesTest::whatMayNotBeLookedAtDoesNotCountAsRemoved()
{
    if (test::isRoot()) {
        QSKIP("root may look at everything");
    }
    auto &at = *m_fixture;
    test::makeFolder(at / "closed");
    test::writeFile(at / "closed/file");
    ::chmod((at / "closed").c_str(), 0600);
    const auto path = at.path("closed/file");
    QVERIFY(!ZQFileManager::removeFile(path, ShouldAuth::No));
    QCOMPARE(
        FileManagerFixture::logged().last(),
        QStringLiteral("Error removing file: %1: Permission denied. Authorizing...").arg(path));
    // A move with other rights is tried as well, and not refused as one of nothing.
    QVERIFY(m_fixture->console().isEmpty());
    QVERIFY(!ZQFileManager::moveFile(path, at.path("moved"), ShouldAuth::Yes));
    QVERIFY(!m_fixture->console().isEmpty());
    ::chmod((at / "closed").c_str(), 0700);
    QVERIFY(test::exists(at / "closed/file"));
}

void ZQFileManagerChangesTest::removingIsRecursiveAndTakesDanglingLinks()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "tree/a/b");
    test::writeFile(at / "tree/a/b/file");
    test::makeFolder(at / "kept/a");
    test::makeLink("../../kept", at / "tree/a/link");
    QVERIFY(ZQFileManager::removeFile(at.path("tree")));
    test::makeLink("nowhere", at / "link");
    QVERIFY(ZQFileManager::removeFile(at.path("link")));
    QCOMPARE(at.folder().names(), QStringList(QStringLiteral("kept")));
    QVERIFY(test::exists(at / "kept/a"));
    QVERIFY(FileManagerFixture::logged().isEmpty());
}

void ZQFileManagerChangesTest::aFailedRemovalIsLoggedAsAuthorizingWhetherOrNotItMay()
{
    const auto path = irremovable();
    const auto line = QStringLiteral("Error removing file: %1: %2. Authorizing...")
                          .arg(path, test::isRoot() ? QStringLiteral("Operation not permitted")
                                                    : QStringLiteral("Permission denied"));
    QVERIFY(!ZQFileManager::removeFile(path, ShouldAuth::No));
    QCOMPARE(FileManagerFixture::logged(), QStringList(line));
    QVERIFY(m_fixture->console().isEmpty());
    if (test::isRoot()) {
        return; // root runs the tool on whatever it is
    }
    // Nobody can be asked here: the privileged result is the result.
    QVERIFY(!ZQFileManager::removeFile(path, ShouldAuth::Yes));
    QVERIFY(!ZQFileManager::removeFile(path));
    QCOMPARE(FileManagerFixture::logged(), (QStringList{line, line, line}));
    QCOMPARE(m_fixture->console().size(), 2);
    QVERIFY(ZQFileManager::fileExistsAtPath(path));
}

void ZQFileManagerChangesTest::aProtectedFolderIsNeverRemoved_data()
{
    QTest::addColumn<QString>("path");
    const auto home = test::isRoot() ? QStringLiteral("/root") : QStringLiteral("/home/tester");
    for (const auto &path :
         {QStringLiteral("/"), QStringLiteral("/Library"), QStringLiteral("/Applications"),
          QStringLiteral("/Users/Shared"), QStringLiteral("/Volumes"), home}) {
        QTest::newRow(qPrintable(path)) << path;
    }
}

void ZQFileManagerChangesTest::aProtectedFolderIsNeverRemoved()
{
    QFETCH(QString, path);
    auto &at = *m_fixture;
    for (const auto shouldAuth : {ShouldAuth::No, ShouldAuth::Yes}) {
        QVERIFY(!ZQFileManager::removeFile(path, shouldAuth));
        QVERIFY(!ZQFileManager::trashFile(path, shouldAuth));
        QVERIFY(!ZQFileManager::moveFile(path, at.path("moved"), shouldAuth));
        QVERIFY(ZQFileManager::isDirectoryAtPath(path));
    }
    QVERIFY(!test::exists(at / "moved"));
    const auto refusal = QStringLiteral(" path %1 because it is a system directory.").arg(path);
    QCOMPARE(at.console(), (QStringList{QStringLiteral("Unable to delete") + refusal,
                                        QStringLiteral("Unable to trash") + refusal,
                                        QStringLiteral("Unable to move") + refusal}));
}

void ZQFileManagerChangesTest::whatIsInAProtectedFolderIsRemoved()
{
    if (!test::isRoot()) {
        QSKIP("belongs to root");
    }
    test::makeFolder("/Library/Caches/x");
    QVERIFY(ZQFileManager::removeFile(QStringLiteral("/Library/Caches/x")));
    QVERIFY(!test::exists("/Library/Caches/x"));
}

void ZQFileManagerChangesTest::onlyAnEmptyFolderIsRemovedIfEmpty()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "empty/below");
    test::writeFile(at / "empty/.DS_Store");
    test::makeFolder(at / "full");
    test::writeFile(at / "full/file");
    QVERIFY(ZQFileManager::removeFolderIfEmpty(at.path("empty")));
    QVERIFY(!test::exists(at / "empty"));
    QVERIFY(!ZQFileManager::removeFolderIfEmpty(at.path("full")));
    QVERIFY(test::exists(at / "full/file"));
    QVERIFY(ZQFileManager::removeFolderIfEmpty(at.path("missing")));
}

void ZQFileManagerChangesTest::aFolderIsMadeWithThoseAboveIt()
{
    auto &at = *m_fixture;
    QVERIFY(ZQFileManager::createDirectory(at.path("a/b/c")));
    QVERIFY(ZQFileManager::createDirectory(at.path("a/b")));
    QVERIFY(ZQFileManager::isDirectoryAtPath(at.path("a/b/c")));
    QVERIFY(FileManagerFixture::logged().isEmpty());
}

void ZQFileManagerChangesTest::aFolderOnAnUnmountedVolumeIsRefusedWithoutAPrivilegedAttempt()
{
    const auto path = QStringLiteral("/Volumes/Gone/x");
    QVERIFY(!ZQFileManager::createDirectory(path));
    QVERIFY(!ZQFileManager::createDirectory(path, ShouldAuth::Yes));
    QVERIFY(!ZQFileManager::createDirectory(path, 1s));
    QVERIFY(FileManagerFixture::logged().isEmpty());
    QStringList lines;
    for (int i = 0; i < 3; ++i) {
        lines << QStringLiteral("mountpoint: /Volumes/Gone")
              << QStringLiteral("Unable to create directory. Drive is not mounted.");
    }
    QCOMPARE(m_fixture->console(), lines);
    QVERIFY(!test::exists("/Volumes/Gone"));
}

void ZQFileManagerChangesTest::aFailedCreationIsLoggedAsAuthorizingWhetherOrNotItMay()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file");
    const auto path = at.path("file/below");
    QVERIFY(!ZQFileManager::createDirectory(path, ShouldAuth::No));
    const auto line = QStringLiteral("Error creating folder: %1: File exists. Authorizing...")
                          .arg(at.path("file"));
    QCOMPARE(FileManagerFixture::logged(), QStringList(line));
    QVERIFY(at.console().isEmpty());
    // Root has the tool started, whatever comes of it; others cannot be asked here.
    QCOMPARE(ZQFileManager::createDirectory(path, ShouldAuth::Yes), test::isRoot());
    QCOMPARE(FileManagerFixture::logged(), (QStringList{line, line}));
}

void ZQFileManagerChangesTest::aStructureReappearsUnderTheDestination()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "from/a/b");
    test::makeFolder(at / "to");
    const auto made = ZQFileManager::createDirectoryStructure(at.path("from/a/b"), at.path("to"));
    QCOMPARE(made, at.path("to") + at.path("from/a/b"));
    QVERIFY(ZQFileManager::isDirectoryAtPath(made));
    QCOMPARE(ZQFileManager::createDirectoryStructure(at.path("from/a/b/"), at.path("to/")), made);
}

void ZQFileManagerChangesTest::theStructureOfAPackageOrAFileIsThatOfItsFolder()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "from/Program.app");
    test::writeFile(at / "from/file");
    const auto expected = at.path("to") + at.path("from");
    for (const auto *name : {"from/Program.app", "from/file", "from/missing"}) {
        QCOMPARE(ZQFileManager::createDirectoryStructure(at.path(name), at.path("to")), expected);
        QVERIFY(ZQFileManager::isDirectoryAtPath(expected));
        std::filesystem::remove_all(at / "to");
    }
}

void ZQFileManagerChangesTest::theStructuresPathIsGivenWhateverTheOutcome()
{
    const auto destination = QStringLiteral("/Volumes/Gone");
    QCOMPARE(ZQFileManager::createDirectoryStructure(QStringLiteral("/etc"), destination),
             QStringLiteral("/Volumes/Gone/etc"));
    QVERIFY(!test::exists("/Volumes/Gone"));
}

void ZQFileManagerChangesTest::copyingWithoutAPathIsLoggedAndPrinted()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file");
    const auto noSource = QStringLiteral("Error copying file: source path is nil");
    const auto noDestination =
        QStringLiteral("Error copying file %1: destination path is nil").arg(at.path("file"));
    QList<bool> results;
    const auto printed = test::linesOf([&] {
        results << ZQFileManager::copyFile(QString(), at.path("copy"))
                << ZQFileManager::copyFile(QString(), QString(), ShouldAuth::No)
                << ZQFileManager::copyFile(at.path("file"), QString());
    });
    QCOMPARE(results, (QList<bool>{false, false, false}));
    QCOMPARE(printed, (QStringList{noSource, noSource, noDestination}));
    QCOMPARE(FileManagerFixture::logged(), (QStringList{noSource, noSource, noDestination}));
    QVERIFY(at.console().isEmpty());
    QCOMPARE(at.folder().names().size(), 1);
}

void ZQFileManagerChangesTest::aFailedCopyIsLoggedAsAuthorizingWhetherOrNotItMay()
{
    auto &at = *m_fixture;
    const auto source = at.path("missing");
    const auto line =
        QStringLiteral("Error copying file: %1: No such file or directory. Authorizing...")
            .arg(source);
    for (const auto shouldAuth : {ShouldAuth::No, ShouldAuth::Yes}) {
        QVERIFY(!ZQFileManager::copyFile(source, at.path("copy"), shouldAuth));
    }
    QCOMPARE(FileManagerFixture::logged(), (QStringList{line, line}));
}

void ZQFileManagerChangesTest::aCopyReplacesNothingWithOnesOwnRights()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file", "new");
    test::writeFile(at / "copy", "old");
    QVERIFY(!ZQFileManager::copyFile(at.path("file"), at.path("copy"), ShouldAuth::No));
    QCOMPARE(test::readFile(at / "copy"), std::string("old"));
    // The tool replaces it; for an ordinary user that has to be authorised first.
    QCOMPARE(ZQFileManager::copyFile(at.path("file"), at.path("copy")), test::isRoot());
    if (test::isRoot()) {
        QTRY_COMPARE_WITH_TIMEOUT(test::readFile(at / "copy"), std::string("new"), 60000);
    }
}

void ZQFileManagerChangesTest::contentsAreCopiedEntryByEntryWithALineForEach()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "from/folder/below");
    test::writeFile(at / "from/.hidden");
    test::writeFile(at / "from/folder/below/file");
    test::makeFolder(at / "to");
    QVERIFY(ZQFileManager::copyContentsOfDirectory(at.path("from"), at.path("to"), 0s));
    QCOMPARE(test::tree(at / "to"), test::tree(at / "from"));
    QCOMPARE(FileManagerFixture::logged(),
             (QStringList{QStringLiteral("File: .hidden"), QStringLiteral("File: folder")}));
}

void ZQFileManagerChangesTest::copyingContentsStopsAtTheFirstFailure()
{
    auto &at = *m_fixture;
    for (const auto *name : {"from/a", "from/b", "from/c", "to/b/below"}) {
        test::makeFolder(std::filesystem::path(at / name).parent_path());
        test::writeFile(at / name);
    }
    if (!test::isRoot()) {
        QVERIFY(!ZQFileManager::copyContentsOfDirectory(at.path("from"), at.path("to"), 0s));
        QCOMPARE(test::tree(at / "to").size(), 4); // itself, "a", "b" with what was in it
    }
    // The destination is not made.
    QVERIFY(!ZQFileManager::copyContentsOfDirectory(at.path("from"), at.path("missing"), 0s));
    QVERIFY(!test::exists(at / "missing"));
}

void ZQFileManagerChangesTest::anUnreadableFolderHasNoContentsToCopy()
{
    auto &at = *m_fixture;
    QVERIFY(ZQFileManager::copyContentsOfDirectory(at.path("missing"), at.path("to"), 0s));
    QVERIFY(ZQFileManager::copyContentsOfDirectory(at.path("missing"), QString(), 0s));
    QVERIFY(FileManagerFixture::logged().isEmpty());
}

void ZQFileManagerChangesTest::theTimedFormsSayWhatCanBeSeenAtTheEnd()
{
    auto &at = *m_fixture;
    QVERIFY(ZQFileManager::createDirectory(at.path("folder"), 0s));
    QVERIFY(ZQFileManager::copyFile(at.path("folder"), at.path("copy"), 0s));
    test::makeLink("nowhere", at / "link");
    QVERIFY(ZQFileManager::copyFile(at.path("link"), at.path("copied link"), 0s));
    QVERIFY(ZQFileManager::moveFile(at.path("copy"), at.path("moved"), 0s));
    QVERIFY(ZQFileManager::trashFile(at.path("moved"), 0s));
    QVERIFY(ZQFileManager::removeFile(at.path("folder"), 0s));
    QVERIFY(ZQFileManager::removeFile(at.path("folder"), std::chrono::seconds(-1)));
    QCOMPARE(at.folder().names(),
             (QStringList{QStringLiteral("copied link"), QStringLiteral("link")}));
}

void ZQFileManagerChangesTest::theTimedFormsFailAtOnceWhereThePlainFormsFail()
{
    auto &at = *m_fixture;
    QVERIFY(!ZQFileManager::copyFile(at.path("missing"), at.path("copy"), 3600s));
    QVERIFY(!ZQFileManager::moveFile(at.path("missing"), at.path("moved"), 3600s));
    QVERIFY(!ZQFileManager::createDirectory(QStringLiteral("/Volumes/Gone/x"), 3600s));
}

void ZQFileManagerChangesTest::anEndlessTimeOutEndsWithTheChange()
{
    auto &at = *m_fixture;
    QVERIFY(ZQFileManager::createDirectory(at.path("folder"), std::chrono::seconds::max()));
    QVERIFY(ZQFileManager::removeFile(at.path("folder"), std::chrono::seconds::max()));
}

// The root of a mount: nothing can take it away, but root's tool counts as started.
void ZQFileManagerChangesTest::theMainThreadDispatchesEventsWhileItWaits()
{
    if (!test::isRoot()) {
        QSKIP("an ordinary user's change is done, or not, when the plain form returns");
    }
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] { ++ticks; });
    timer.start(10);
    QElapsedTimer time;
    time.start();
    QVERIFY(!ZQFileManager::removeFile(QStringLiteral("/proc/version"), 1s));
    QVERIFY(time.elapsed() >= 1000);
    QVERIFY(ticks > 3);
    ticks = 0;
    QVERIFY(!ZQFileManager::removeFile(QStringLiteral("/proc/version"), 0s));
    QCOMPARE(ticks, 0);
}

void ZQFileManagerChangesTest::otherThreadsSleepInStepsOfThreeTenthsOfASecond()
{
    if (!test::isRoot()) {
        QSKIP("an ordinary user's change is done, or not, when the plain form returns");
    }
    QElapsedTimer time;
    time.start();
    QVERIFY(!test::onWorker(
        [] { return ZQFileManager::removeFile(QStringLiteral("/proc/version"), 1s); }));
    QVERIFY(time.elapsed() >= 1200); // four steps
}

TEST_CLASS(ZQFileManagerChangesTest, QCoreApplication)
#include "ZQFileManagerChangesTest.moc"
