// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Support/ZQTroubleshootingUtils.h"
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Shared/Support/GatheringFixture.h"
#include "Tests/Support/CommandRecorder.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/Faults/Faults.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QTest>

#include <sys/stat.h>

using test::CommandRecorder;
using test::GatheringFixture;
using test::write;

namespace {

const auto ditto = QStringLiteral("/usr/bin/ditto");

QString userLog(const QString &name = QStringLiteral("Ostrel.1.log"))
{
    return GatheringFixture::home(QStringLiteral("Library/Logs/Corvane/") + name);
}

bool gather()
{
    return ZQTroubleshootingUtils::gatherLogsForAppsWithNames({QStringLiteral("Ostrel")},
                                                              Silent::Yes);
}

unsigned modeOf(const QString &path)
{
    struct stat status {};
    return ::lstat(path.toStdString().c_str(), &status) == 0 ? status.st_mode & 07777U : ~0U;
}

} // namespace

// Who can read what is gathered, at every moment.
class ZQLogGatheringPrivacyTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { m_mask = ::umask(0); }
    void cleanupTestCase() { ::umask(m_mask); }

    void anArchiveThatIsMovedAwayAtOnceIsPrivate();
    void theArchiveIsPrivateWheneverItsMakerIsKilled();
    void theCopiesArePrivate();
    void aFolderThatLetsNobodyWriteDoesNotEndTheGatherings();
    void aFolderThatAKilledGatheringLeftDoesNotEndTheGatherings();

private:
    mode_t m_mask = 0;
};

void ZQLogGatheringPrivacyTest::anArchiveThatIsMovedAwayAtOnceIsPrivate()
{
    const GatheringFixture fixture;
    write(userLog(), "private");
    const auto moved = GatheringFixture::home(QStringLiteral("moved.zip"));
    const CommandRecorder mover(ditto,
                                QStringLiteral(DITTO " \"$@\" && mv \"$4\" '%1'").arg(moved));
    QVERIFY(!gather());
    QCOMPARE(modeOf(moved), 0600U);
    QVERIFY(QFile::remove(moved));
}

void ZQLogGatheringPrivacyTest::theArchiveIsPrivateWheneverItsMakerIsKilled()
{
    const GatheringFixture fixture;
    write(userLog(), "private");
    const CommandRecorder command(
        ditto, QStringLiteral("exec env LD_PRELOAD=" FAULTS_LIBRARY " " DITTO " \"$@\""));
    auto found = 0;
    for (int nth = 1;; ++nth) {
        const auto fault = QStringLiteral("%1 %2 %3 0 0")
                               .arg(test::AllCalls)
                               .arg(nth)
                               .arg(int(test::Outcome::Kills));
        const test::EnvironmentVariable variable("FAULT", fault.toUtf8());
        const auto isDone = gather();
        const auto names = GatheringFixture::desktopNames();
        for (const auto &name : names) {
            const auto path = GatheringFixture::desktop(name);
            QVERIFY2((modeOf(path) & 077U) == 0, qPrintable(name));
            QVERIFY(QFile::remove(path));
            ++found;
        }
        if (isDone && found > 0 && !QFile::exists(GatheringFixture::temporaryFolder())) {
            // Killed after that, or not at all: two more calls make no difference.
            QVERIFY(nth > 10);
            break;
        }
        QVERIFY(nth < 1000);
    }
}

void ZQLogGatheringPrivacyTest::theCopiesArePrivate()
{
    const GatheringFixture fixture;
    write(userLog(), "private");
    const auto modes = GatheringFixture::home(QStringLiteral("modes"));
    const CommandRecorder recorder(
        ditto, QStringLiteral("stat -c %a \"$3\" >'%1'; exec " DITTO " \"$@\"").arg(modes));
    QVERIFY(gather());
    QCOMPARE(test::contents(modes), QByteArray("700\n"));
    QVERIFY(QFile::remove(modes));
}

void ZQLogGatheringPrivacyTest::aFolderThatLetsNobodyWriteDoesNotEndTheGatherings()
{
    GatheringFixture fixture;
    write(userLog(), "log");
    const auto closed = userLog(QStringLiteral("Ostrel closed.log"));
    write(closed + QStringLiteral("/below/file"), "in a folder that lets nobody write");
    ::chmod((closed + QStringLiteral("/below")).toStdString().c_str(), 0500);
    ::chmod(closed.toStdString().c_str(), 0500);
    for (int i = 0; i < 3; ++i) {
        const auto isDone = gather();
        const auto isLeft = QFile::exists(GatheringFixture::temporaryFolder());
        if (!isDone || isLeft || i == 2) {
            ::chmod(closed.toStdString().c_str(), 0700);
            ::chmod((closed + QStringLiteral("/below")).toStdString().c_str(), 0700);
        }
        QVERIFY2(isDone, qPrintable(fixture.console().join(QLatin1Char('\n'))));
        QVERIFY(!isLeft);
        for (const auto &name : GatheringFixture::desktopNames()) {
            QVERIFY(QFile::remove(GatheringFixture::desktop(name)));
        }
    }
}

void ZQLogGatheringPrivacyTest::aFolderThatAKilledGatheringLeftDoesNotEndTheGatherings()
{
    GatheringFixture fixture;
    write(userLog(), "log");
    const auto left = GatheringFixture::temporaryFolder(QStringLiteral("/closed"));
    write(left + QStringLiteral("/unreadable/file"), "left");
    ::chmod((left + QStringLiteral("/unreadable")).toStdString().c_str(), 0);
    ::chmod(left.toStdString().c_str(), 0500);
    const auto isDone = gather();
    ::chmod(left.toStdString().c_str(), 0700);
    QVERIFY2(isDone, qPrintable(fixture.console().join(QLatin1Char('\n'))));
    QVERIFY(!QFile::exists(GatheringFixture::temporaryFolder()));
}

TEST_CLASS(ZQLogGatheringPrivacyTest, QApplication)
#include "ZQLogGatheringPrivacyTest.moc"
