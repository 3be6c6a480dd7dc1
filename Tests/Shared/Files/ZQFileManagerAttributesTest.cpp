// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileDates.h"
#include "Shared/Files/ZQFileManager.h"
#include "Tests/Shared/Files/FileManagerFixture.h"
#include "Tests/Support/CommandRecorder.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <sys/stat.h>

#include <atomic>
#include <thread>

using namespace std::chrono_literals;
using test::CommandRecorder;
using test::FileManagerFixture;
using test::isRoot;

namespace {

QDateTime secondsAgo(double seconds)
{
    return QDateTime::currentDateTimeUtc().addMSecs(static_cast<qint64>(-1000 * seconds));
}

mode_t modeOf(const std::string &path)
{
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

} // namespace

class ZQFileManagerAttributesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { m_fixture = std::make_unique<FileManagerFixture>(); }
    void cleanup() { m_fixture.reset(); }

    void permissionsAreSetAndFailuresLogged();
    void anEmptyFileIsMadeElsewhereAndMoved();
    void anEmptyFileReplacesNothingWithOnesOwnRights();
    void touchingGivesAFileThePresentTime();
    void touchRunsTheCommandWithAPathThatIsNoOption();
    void touchingMakesNoFile();
    void touchingWithACreationDateSetsIt();
    void aNullPathIsNotTouched();
    void aModificationDateIsSetSilently();

    void waitingForAFileThatIsThereReturnsAtOnce();
    void waitingForAFileLooksOnceAndLogs();
    void aNegativeTimeOutDoesNotEvenLog();
    void aFileThatIsOldIsNotWaitedFor();
    void aFreshFileIsWaitedForUntilItIsFourSecondsOld();
    void aLockFileOnlyDecidesWhetherTheWaitBegins();
    void aMissingFileWithALockFileIsWaitedForUntilItComes();

private:
    QStringList lines(const std::string &name) const;

    std::unique_ptr<FileManagerFixture> m_fixture;
};

void ZQFileManagerAttributesTest::permissionsAreSetAndFailuresLogged()
{
    auto &at = *m_fixture;
    for (const auto &odd : test::oddNames()) {
        test::writeFile(at / odd.name);
        ZQFileManager::setPosixPermissions(0604, at.path(odd.name));
        QCOMPARE(modeOf(at / odd.name), mode_t{0604});
    }
    QVERIFY(FileManagerFixture::logged().isEmpty());
    ZQFileManager::setPosixPermissions(0600, at.path("missing"));
    QCOMPARE(FileManagerFixture::logged(),
             QStringList(QStringLiteral("Error setting permissions for file %1: No such file or "
                                        "directory")
                             .arg(at.path("missing"))));
}

void ZQFileManagerAttributesTest::anEmptyFileIsMadeElsewhereAndMoved()
{
    auto &at = *m_fixture;
    for (const auto &odd : test::oddNames()) {
        QVERIFY(ZQFileManager::createEmptyFile(at.path(odd.name)));
        QCOMPARE(test::readFile(at / odd.name), std::string());
    }
    QVERIFY(!ZQFileManager::createEmptyFile(QString()));
    QCOMPARE(at.folder().names().size(), static_cast<int>(test::oddNames().size()));
}

void ZQFileManagerAttributesTest::anEmptyFileReplacesNothingWithOnesOwnRights()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file", "contents");
    // For root the tool replaces it, with administrator rights.
    QCOMPARE(ZQFileManager::createEmptyFile(at.path("file")), isRoot());
    if (!isRoot()) {
        QCOMPARE(test::readFile(at / "file"), std::string("contents"));
    }
}

void ZQFileManagerAttributesTest::touchingGivesAFileThePresentTime()
{
    auto &at = *m_fixture;
    for (const auto &odd : test::oddNames()) {
        test::writeFile(at / odd.name, "contents");
        QVERIFY(ZQFileManager::setModificationDate(secondsAgo(1000), at.path(odd.name)));
        QVERIFY(ZQFileManager::touchFile(at.path(odd.name)));
        const auto date = platform::modificationDate(at.path(odd.name));
        QVERIFY(date.secsTo(QDateTime::currentDateTimeUtc()) < 100);
        QCOMPARE(test::readFile(at / odd.name), std::string("contents"));
    }
}

void ZQFileManagerAttributesTest::touchRunsTheCommandWithAPathThatIsNoOption()
{
    auto &at = *m_fixture;
    const CommandRecorder touch(QStringLiteral("/usr/bin/touch"));
    CommandRecorder::forget();
    test::writeFile(at / "-r");
    QCOMPARE(::chdir(at.folder().path().c_str()), 0);
    QVERIFY(ZQFileManager::touchFile(QStringLiteral("-r")));
    QCOMPARE(::chdir("/tmp"), 0);
    QCOMPARE(CommandRecorder::runs(),
             QStringList(QStringLiteral("touch [-c] [%1]").arg(at.path("-r"))));
}

void ZQFileManagerAttributesTest::touchingMakesNoFile()
{
    auto &at = *m_fixture;
    // It cannot be written to, so that an administrator has to be asked.
    QCOMPARE(ZQFileManager::touchFile(at.path("missing")), isRoot());
    QVERIFY(at.folder().names().isEmpty());
}

void ZQFileManagerAttributesTest::touchingWithACreationDateSetsIt()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file");
    const auto path = at.path("file");
    QVERIFY(platform::setCreationDate(secondsAgo(100000), path));
    QVERIFY(ZQFileManager::touchFile(path, SetCreationDate::No));
    QVERIFY(platform::creationDate(path) < secondsAgo(90000));
    QVERIFY(ZQFileManager::touchFile(path, SetCreationDate::Yes));
    QVERIFY(platform::creationDate(path) > secondsAgo(100));
}

void ZQFileManagerAttributesTest::aNullPathIsNotTouched()
{
    QVERIFY(!ZQFileManager::touchFile(QString()));
    QVERIFY(!ZQFileManager::touchFile(QString(), SetCreationDate::Yes));
}

void ZQFileManagerAttributesTest::aModificationDateIsSetSilently()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file");
    const auto date = QDateTime::fromMSecsSinceEpoch(1234567890000);
    QVERIFY(ZQFileManager::setModificationDate(date, at.path("file")));
    QCOMPARE(platform::modificationDate(at.path("file")), date);
    QVERIFY(!ZQFileManager::setModificationDate(date, at.path("missing")));
    QVERIFY(!ZQFileManager::setModificationDate(QDateTime(), at.path("file")));
    QVERIFY(FileManagerFixture::logged().isEmpty());
}

void ZQFileManagerAttributesTest::waitingForAFileThatIsThereReturnsAtOnce()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file", "contents");
    ZQFileManager::waitForFileCreation(at.path("file"), 10s);
    QVERIFY(FileManagerFixture::logged().isEmpty());
}

void ZQFileManagerAttributesTest::waitingForAFileLooksOnceAndLogs()
{
    auto &at = *m_fixture;
    test::writeFile(at / "empty", "");
    ZQFileManager::waitForFileCreation(at.path("missing"), 24h);
    ZQFileManager::waitForFileCreation(at.path("empty"), 0s);
    const auto words = QStringLiteral("File %1 is not yet created. Waiting...");
    QCOMPARE(FileManagerFixture::logged(),
             (QStringList{words.arg(at.path("missing")), words.arg(at.path("empty"))}));
}

void ZQFileManagerAttributesTest::aNegativeTimeOutDoesNotEvenLog()
{
    ZQFileManager::waitForFileCreation(m_fixture->path("missing"), -1s);
    QVERIFY(FileManagerFixture::logged().isEmpty());
}

QStringList ZQFileManagerAttributesTest::lines(const std::string &name) const
{
    const auto path = m_fixture->path(name);
    return {QStringLiteral("File %1 is currently being written to. Waiting...").arg(path),
            QStringLiteral("File %1 finished writing.").arg(path)};
}

void ZQFileManagerAttributesTest::aFileThatIsOldIsNotWaitedFor()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file");
    QVERIFY(ZQFileManager::setModificationDate(secondsAgo(5), at.path("file")));
    ZQFileManager::waitForFileWrites(at.path("file"));
    ZQFileManager::waitForFileWrites(at.path("missing"));
    ZQFileManager::waitForFileWrites(at.path("file"), QStringLiteral("lock"));
    ZQFileManager::waitForFileWrites(at.path("missing"), QStringLiteral("lock"));
    QVERIFY(FileManagerFixture::logged().isEmpty());
}

void ZQFileManagerAttributesTest::aFreshFileIsWaitedForUntilItIsFourSecondsOld()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file");
    QVERIFY(ZQFileManager::setModificationDate(secondsAgo(3.5), at.path("file")));
    ZQFileManager::waitForFileWrites(at.path("file"));
    const auto date = platform::modificationDate(at.path("file"));
    QVERIFY(date.msecsTo(QDateTime::currentDateTimeUtc()) > 4000);
    QCOMPARE(FileManagerFixture::logged(), lines("file"));
}

void ZQFileManagerAttributesTest::aLockFileOnlyDecidesWhetherTheWaitBegins()
{
    auto &at = *m_fixture;
    test::writeFile(at / "file");
    test::writeFile(at / "lock");
    QVERIFY(ZQFileManager::setModificationDate(secondsAgo(5), at.path("file")));
    // It begins, and ends at once although the lock file is still there.
    ZQFileManager::waitForFileWrites(at.path("file"), QStringLiteral("lock"));
    QCOMPARE(FileManagerFixture::logged(), lines("file"));
    QVERIFY(test::exists(at / "lock"));
}

void ZQFileManagerAttributesTest::aMissingFileWithALockFileIsWaitedForUntilItComes()
{
    auto &at = *m_fixture;
    test::writeFile(at / "lock");
    std::atomic<bool> ended = false;
    std::thread waiting([&] {
        ZQFileManager::waitForFileWrites(at.path("file"), QStringLiteral("lock"));
        ended = true;
    });
    QTest::qSleep(300);
    const auto endedEarly = ended.load();
    test::writeFile(at / "other");
    ZQFileManager::setModificationDate(secondsAgo(5), at.path("other"));
    QCOMPARE(std::rename((at / "other").c_str(), (at / "file").c_str()), 0);
    waiting.join();
    QVERIFY(!endedEarly);
    QCOMPARE(FileManagerFixture::logged(), lines("file"));
}

TEST_CLASS(ZQFileManagerAttributesTest, QCoreApplication)
#include "ZQFileManagerAttributesTest.moc"
