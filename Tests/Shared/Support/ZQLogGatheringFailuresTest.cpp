// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Basics/ZQLocalPaths.h"
#include "Shared/Support/ZQTroubleshootingUtils.h"
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Shared/Support/GatheringFixture.h"
#include "Tests/Support/Children.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/Faults/Faults.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QDir>
#include <QRegularExpression>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

using test::GatheringFixture;
using test::write;

namespace {

const auto ostrel = QStringLiteral("Ostrel");

QString userLog(int number = 1)
{
    return GatheringFixture::home(QStringLiteral("Library/Logs/Corvane/Ostrel.%1.log").arg(number));
}

struct Result {
    bool gathered = true;
    ZQGatheringRemarks remarks;
};

Result gather(const QStringList &additionalFiles = {})
{
    Result result;
    result.gathered = ZQTroubleshootingUtils::gatherLogsForAppsWithNames(
        {ostrel}, Silent::No, additionalFiles,
        [&](const ZQGatheringRemarks &remarks) { result.remarks = remarks; });
    return result;
}

QString notGathered()
{
    return test::modalAlert(QStringLiteral("Logs could not be gathered"),
                            QStringLiteral("Please check your file permissions."));
}

} // namespace

// What the user is told, and what is left, when a gathering goes wrong.
class ZQLogGatheringFailuresTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void anUnreadableLogEndsTheGatheringWithoutAnAlert();
    void anUnreadableFolderIsNamedAndTheRestIsGathered();
    void anAdditionalFileThatIsMissingEndsTheGathering();
    void anAdditionalFileThatIsThereAlreadyEndsTheGathering();
    void aFullDiskWhileCopyingLosesNothing();
    void aFullDiskWhileCompressingLeavesNoPartOfAnArchive();
    void aDesktopThatCannotBeWrittenToIsTold();
    void anOldFolderThatCannotBeRemovedIsToldToTheConsole();
    void aFolderThatCannotBeMadeIsToldToTheConsole();
    void noFaultLosesALogOrLeavesADamagedArchive();
    void logsThatGoMeanwhileAreNoFailure();
    void aFileThatIsNoFileDoesNotBlock();
    void aGatheringWaitsForThatOfAnotherProgram();
};

void ZQLogGatheringFailuresTest::anUnreadableLogEndsTheGatheringWithoutAnAlert()
{
    if (::geteuid() == 0) {
        QSKIP("root may read everything");
    }
    GatheringFixture fixture;
    write(userLog(1), "readable");
    write(userLog(2), "not for us");
    ::chmod(userLog(2).toStdString().c_str(), 0);
    const auto result = gather();
    const auto reason = userLog(2) + QStringLiteral(": Permission denied");
    QVERIFY(!result.gathered);
    QCOMPARE(result.remarks.failure, reason);
    QCOMPARE(fixture.console(), QStringList(QStringLiteral("Unable to copy log: ") + reason));
    QCOMPARE(fixture.alerts(), QStringList());
    QCOMPARE(GatheringFixture::desktopNames(), QStringList());
    QCOMPARE(test::contents(GatheringFixture::temporaryFolder(userLog(1))), QByteArray("readable"));
    QCOMPARE(test::contents(userLog(1)), QByteArray("readable"));
}

void ZQLogGatheringFailuresTest::anUnreadableFolderIsNamedAndTheRestIsGathered()
{
    if (::geteuid() == 0) {
        QSKIP("root may read everything");
    }
    GatheringFixture fixture;
    const auto closed = QStringLiteral("/Library/Logs/Corvane");
    write(userLog(), "log");
    write(closed + QStringLiteral("/Ostrel.1.log"), "root's");
    ::chmod(closed.toStdString().c_str(), 0);
    const auto result = gather();
    ::chmod(closed.toStdString().c_str(), 0755);
    QVERIFY(result.gathered);
    QVERIFY(result.remarks.failure.isNull());
    QCOMPARE(result.remarks.unreadableFolders,
             QStringList(closed + QStringLiteral(": Permission denied")));
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog()}), QString());
    QCOMPARE(fixture.alerts().size(), 1);
}

void ZQLogGatheringFailuresTest::anAdditionalFileThatIsMissingEndsTheGathering()
{
    GatheringFixture fixture;
    write(userLog(), "log");
    const auto result = gather({QStringLiteral("/nowhere/at/all")});
    QVERIFY(!result.gathered);
    QCOMPARE(fixture.console(),
             QStringList(QStringLiteral("Unable to copy file: ") + result.remarks.failure));
    QVERIFY(result.remarks.failure.contains(QStringLiteral("No such file or directory")));
    QCOMPARE(fixture.alerts(), QStringList());
    QCOMPARE(test::contents(GatheringFixture::temporaryFolder(userLog())), QByteArray("log"));
}

void ZQLogGatheringFailuresTest::anAdditionalFileThatIsThereAlreadyEndsTheGathering()
{
    GatheringFixture fixture;
    write(userLog(), "log");
    QVERIFY(!gather({userLog()}).gathered);
    QCOMPARE(fixture.console().size(), 1);
    QVERIFY(fixture.console().first().startsWith(QStringLiteral("Unable to copy file: ")));
    QVERIFY(fixture.console().first().endsWith(QStringLiteral("File exists")));
}

void ZQLogGatheringFailuresTest::aFullDiskWhileCopyingLosesNothing()
{
    GatheringFixture fixture;
    write(userLog(1), QByteArray(100'000, 'a'));
    write(userLog(2), QByteArray(100'000, 'b'));
    Result result;
    {
        const test::Faults full(
            {test::Write | test::Copy, 1, test::Outcome::Fails, ENOSPC, true, true});
        result = gather();
    }
    QVERIFY(!result.gathered);
    QVERIFY(result.remarks.failure.endsWith(QStringLiteral("No space left on device")));
    QCOMPARE(fixture.console(),
             QStringList(QStringLiteral("Unable to copy log: ") + result.remarks.failure));
    QCOMPARE(GatheringFixture::desktopNames(), QStringList());
    QCOMPARE(test::contents(userLog(2)), QByteArray(100'000, 'b'));
    // The next one, on a disk with room, begins afresh.
    QVERIFY(gather().gathered);
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog(1), userLog(2)}), QString());
}

void ZQLogGatheringFailuresTest::aFullDiskWhileCompressingLeavesNoPartOfAnArchive()
{
    GatheringFixture fixture;
    write(userLog(), QByteArray(100'000, 'a'));
    Result result;
    {
        const auto fault = QByteArray::number(test::Write | test::Copy) + " 1 0 " +
                           QByteArray::number(ENOSPC) + " 1";
        const test::EnvironmentVariable variable("FAULT", fault);
        const test::EnvironmentVariable library("LD_PRELOAD", FAULTS_LIBRARY);
        result = gather();
    }
    QVERIFY(!result.gathered);
    QCOMPARE(fixture.alerts(), QStringList(notGathered()));
    QVERIFY2(result.remarks.failure.endsWith(QStringLiteral("No space left on device")),
             qPrintable(result.remarks.failure));
    QVERIFY(!result.remarks.failure.startsWith(QStringLiteral("ditto")));
    QVERIFY(result.remarks.archive.isNull());
    QCOMPARE(GatheringFixture::desktopNames(), QStringList());
    QVERIFY(!QDir(GatheringFixture::temporaryFolder()).exists());
    QCOMPARE(test::contents(userLog()), QByteArray(100'000, 'a'));
}

void ZQLogGatheringFailuresTest::aDesktopThatCannotBeWrittenToIsTold()
{
    GatheringFixture fixture;
    write(userLog(), "log");
    // A file in its place stops root, too.
    QVERIFY(QDir().rmdir(GatheringFixture::desktop()));
    write(GatheringFixture::desktop(), "no folder");
    const auto result = gather();
    QFile::remove(GatheringFixture::desktop());
    QVERIFY(!result.gathered);
    QCOMPARE(fixture.alerts(), QStringList(notGathered()));
    QVERIFY(!QDir(GatheringFixture::temporaryFolder()).exists());
}

void ZQLogGatheringFailuresTest::anOldFolderThatCannotBeRemovedIsToldToTheConsole()
{
    GatheringFixture fixture;
    write(userLog(), "log");
    write(GatheringFixture::temporaryFolder(QStringLiteral("/old")), "old");
    Result result;
    {
        const test::Faults refused({test::Remove, 1, test::Outcome::Fails, EACCES, true, true});
        result = gather();
    }
    QVERIFY(!result.gathered);
    QCOMPARE(fixture.console(), QStringList(QStringLiteral("Error removing existing folder: ") +
                                            result.remarks.failure));
    QVERIFY(result.remarks.failure.endsWith(QStringLiteral("Permission denied")));
    QCOMPARE(fixture.alerts(), QStringList());
}

void ZQLogGatheringFailuresTest::aFolderThatCannotBeMadeIsToldToTheConsole()
{
    GatheringFixture fixture;
    write(userLog(), "log");
    Result result;
    {
        // The first one makes sure of the temporary folder's own folder.
        const test::Faults refused({test::Make, 1, test::Outcome::Fails, ENOSPC, true, true});
        result = gather();
    }
    QVERIFY(!result.gathered);
    QCOMPARE(fixture.console(),
             QStringList(QStringLiteral("Error creating temp folder: ") + result.remarks.failure));
    QCOMPARE(fixture.alerts(), QStringList());
}

void ZQLogGatheringFailuresTest::noFaultLosesALogOrLeavesADamagedArchive()
{
    constexpr auto calls = test::Open | test::Read | test::Write | test::Rename | test::Link |
                           test::Make | test::Remove | test::Copy | test::Spawn | test::Thread;
    int struck = 0;
    for (int nth = 1;; ++nth) {
        const GatheringFixture fixture;
        write(userLog(1), QByteArray(1000, 'a'));
        write(userLog(2), QByteArray(1000, 'b'));
        auto gathered = false;
        auto hasStruck = false;
        {
            const test::Faults faults({calls, nth, test::Outcome::Fails, EIO, false, true});
            gathered = ZQTroubleshootingUtils::gatherLogsForAppsWithNames({ostrel}, Silent::Yes);
            hasStruck = test::Faults::haveStruck();
        }
        QCOMPARE(test::contents(userLog(1)), QByteArray(1000, 'a'));
        QCOMPARE(test::contents(userLog(2)), QByteArray(1000, 'b'));
        const auto archives = GatheringFixture::desktopNames();
        QCOMPARE(!archives.isEmpty(), gathered);
        if (!hasStruck) {
            QVERIFY(gathered);
            break;
        }
        ++struck;
        QVERIFY(nth < 1000);
    }
    qInfo("%d faults", struck);
    QVERIFY(struck > 20);
}

void ZQLogGatheringFailuresTest::logsThatGoMeanwhileAreNoFailure()
{
    GatheringFixture fixture;
    std::atomic<bool> done = false;
    // Renames its files as a busy log does, all the time.
    const std::unique_ptr<QThread> log(QThread::create([&] {
        while (!done) {
            for (int i = 4; i > 0; --i) {
                ::rename(userLog(i).toStdString().c_str(), userLog(i + 1).toStdString().c_str());
            }
            write(userLog(1), "new");
        }
    }));
    write(userLog(9), "stays");
    log->start();
    int gathered = 0;
    constexpr auto times = 20;
    for (int i = 0; i < times; ++i) {
        gathered += gather().gathered ? 1 : 0;
    }
    done = true;
    log->wait();
    QCOMPARE(fixture.console(), QStringList());
    QCOMPARE(gathered, times);
}

void ZQLogGatheringFailuresTest::aFileThatIsNoFileDoesNotBlock()
{
    const GatheringFixture fixture;
    write(userLog(1), "log");
    QCOMPARE(::mkfifo(userLog(2).toStdString().c_str(), 0600), 0);
    QVERIFY(gather().gathered);
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog(1)}), QString());
}

void ZQLogGatheringFailuresTest::aGatheringWaitsForThatOfAnotherProgram()
{
    const GatheringFixture fixture;
    write(userLog(), "log");
    const auto folder = ZQLocalPaths::tempDirectory().toStdString();
    const auto other = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    QVERIFY(other >= 0);
    QCOMPARE(::flock(other, LOCK_EX), 0);
    auto hasWaited = false;
    QTimer::singleShot(300, this, [&] {
        hasWaited = !QDir(GatheringFixture::temporaryFolder()).exists() &&
                    GatheringFixture::desktopNames().isEmpty();
        ::close(other);
    });
    QVERIFY(gather().gathered);
    QVERIFY(hasWaited);
}

TEST_CLASS(ZQLogGatheringFailuresTest, QApplication)
#include "ZQLogGatheringFailuresTest.moc"
