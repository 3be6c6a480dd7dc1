// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Support/ZQTroubleshootingUtils.h"

#include "Platform/Core/Text/FileName.h"
#include "Shared/Log/ZQLog.h"
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Shared/Support/GatheringFixture.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QTimer>

#include <sys/stat.h>
#include <unistd.h>

using test::GatheringFixture;
using test::write;

namespace {

const auto ostrel = QStringLiteral("Ostrel");
const auto listener = QStringLiteral("OstrelListener");
const auto localLog = QStringLiteral("/Library/Logs/Corvane/Ostrel.1.log");

QString userLog(const QString &name = QStringLiteral("Ostrel.1.log"))
{
    return GatheringFixture::home(QStringLiteral("Library/Logs/Corvane/") + name);
}

QString userReport(const QString &name)
{
    return GatheringFixture::home(QStringLiteral("Library/Logs/DiagnosticReports/") + name);
}

QString userPreferences(const QString &name)
{
    return GatheringFixture::home(QStringLiteral("Library/Preferences/com.corvane.") + name +
                                  QStringLiteral(".plist"));
}

bool gather(const QStringList &names)
{
    return ZQTroubleshootingUtils::gatherLogsForAppsWithNames(names, Silent::Yes);
}

} // namespace

// What is gathered, and where it goes.
class ZQTroubleshootingUtilsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void noNameOrNoNamesTouchNothing();
    void logsOfBothDomainsEachKeepTheirOwnFolder();
    void logsBeginWithTheNameAndEndInLog();
    void aLogOfTwoNamesIsGatheredOnce();
    void crashReportsNeedTheNameAndAnUnderscore();
    void crashReportsOfBothFoldersAreGathered();
    void preferencesAreLookedForWithoutSpacesThenInLowerCase();
    void preferencesOfTheComputerAreGatheredToo();
    void nothingElseIsInTheArchive();
    void aSymbolicLinkIsGatheredAsWhatItLeadsTo();
    void aDanglingLinkIsGatheredAsALink();
    void linksAreReadFromTheirOwnFolder();
    void additionalFilesAreGatheredUnderTheirOwnPaths();
    void additionalFilesAloneMakeAnArchive();
    void oddNamesArriveUnharmed_data();
    void oddNamesArriveUnharmed();
    void anEarlierArchiveIsLeftAlone();
    void theSuccessIsToldInAModalAlert();
    void nothingFoundIsToldAndTheFolderStays();
    void nothingFoundAndSilentShowsNoAlert();
    void whatAnEarlierGatheringLeftIsNotInTheNext();
    void theTemporaryFolderGoes();
    void theProcessStaysInTheLastFolderListed();
    void theArchiveIsTheUsersAlone();
    void aMissingDesktopIsMade();
    void aWorkerMayGather();
    void theMainThreadDispatchesEventsMeanwhile();
    void twoGatheringsAtOnceBothSucceed();
    void theLogIsWrittenOutBeforeItIsGathered();
};

void ZQTroubleshootingUtilsTest::noNameOrNoNamesTouchNothing()
{
    GatheringFixture fixture;
    write(userLog(), "log");
    QVERIFY(!ZQTroubleshootingUtils::gatherLogsForAppsWithNames({}));
    QVERIFY(!ZQTroubleshootingUtils::gatherLogsForAppWithName(QString()));
    QVERIFY(!QDir(GatheringFixture::temporaryFolder()).exists());
    QCOMPARE(GatheringFixture::desktopNames(), QStringList());
    QCOMPARE(fixture.alerts(), QStringList());
    QCOMPARE(fixture.console(), QStringList());
}

void ZQTroubleshootingUtilsTest::logsOfBothDomainsEachKeepTheirOwnFolder()
{
    const GatheringFixture fixture;
    write(userLog(), "the user's");
    write(localLog, "the computer's");
    QVERIFY(gather({ostrel}));
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog(), localLog}), QString());
    QCOMPARE(GatheringFixture::gathered(userLog()), QByteArray("the user's"));
    QCOMPARE(GatheringFixture::gathered(localLog), QByteArray("the computer's"));
}

void ZQTroubleshootingUtilsTest::logsBeginWithTheNameAndEndInLog()
{
    const GatheringFixture fixture;
    const QStringList all{QStringLiteral("Ostrel.1.log"), QStringLiteral("Ostrel.5.log"),
                          QStringLiteral("Ostrel.1.task.log"), QStringLiteral("Ostrelette.log")};
    for (const auto &name : all) {
        write(userLog(name), "log");
    }
    for (const auto &name : {QStringLiteral("ostrel.1.log"), QStringLiteral("Ostrel.1.txt"),
                             QStringLiteral("Ostrel.1.LOG"), QStringLiteral("My Ostrel.1.log"),
                             QStringLiteral("Ostrel.1.log.old"), QStringLiteral("Runvale.1.log")}) {
        write(userLog(name), "not ours");
    }
    QVERIFY(gather({ostrel}));
    QStringList files;
    for (const auto &name : all) {
        files << userLog(name);
    }
    QCOMPARE(GatheringFixture::complaintAboutArchive(files), QString());
}

void ZQTroubleshootingUtilsTest::aLogOfTwoNamesIsGatheredOnce()
{
    const GatheringFixture fixture;
    const auto log = userLog(QStringLiteral("OstrelListener.1.log"));
    write(log, "begins with either name");
    QVERIFY(gather({ostrel, listener}));
    QCOMPARE(GatheringFixture::complaintAboutArchive({log}), QString());
}

void ZQTroubleshootingUtilsTest::crashReportsNeedTheNameAndAnUnderscore()
{
    const GatheringFixture fixture;
    const auto own = userReport(QStringLiteral("Ostrel_2024-01-31-120000_host.crash"));
    const auto listeners =
        userReport(QStringLiteral("OstrelListener_2024-01-31-120000_host.crash"));
    write(own, "the pane's");
    write(listeners, "the listener's");
    write(userReport(QStringLiteral("Ostrel.crash")), "no underscore");
    write(userReport(QStringLiteral("Ostrel_2024.txt")), "no report");
    QVERIFY(gather({ostrel}));
    QCOMPARE(GatheringFixture::complaintAboutArchive({own}), QString());
    QVERIFY(gather({listener}));
    QCOMPARE(GatheringFixture::complaintAboutArchive({listeners},
                                                     QStringLiteral("OstrelListener Logs.zip")),
             QString());
}

void ZQTroubleshootingUtilsTest::crashReportsOfBothFoldersAreGathered()
{
    const GatheringFixture fixture;
    const QStringList files{
        userReport(QStringLiteral("Ostrel_1.crash")),
        GatheringFixture::home(QStringLiteral("Library/Logs/CrashReporter/Ostrel_2.crash")),
        QStringLiteral("/Library/Logs/CrashReporter/Ostrel_3.crash"),
        QStringLiteral("/Library/Logs/DiagnosticReports/Ostrel_4.crash")};
    for (const auto &file : files) {
        write(file, "crash");
    }
    QVERIFY(gather({ostrel}));
    QCOMPARE(GatheringFixture::complaintAboutArchive(files), QString());
}

void ZQTroubleshootingUtilsTest::preferencesAreLookedForWithoutSpacesThenInLowerCase()
{
    const GatheringFixture fixture;
    const auto usual = userPreferences(QStringLiteral("OstrelListener"));
    const auto lower = userPreferences(QStringLiteral("ostrellistener"));
    const auto name = QStringLiteral("Ostrel Listener");
    const auto archive = QStringLiteral("Ostrel Listener Logs.zip");
    write(usual, "usual");
    write(lower, "lower");
    write(userPreferences(name), "with the space");
    QVERIFY(gather({name}));
    QCOMPARE(GatheringFixture::complaintAboutArchive({usual}, archive), QString());
    QFile::remove(usual);
    QFile::remove(GatheringFixture::desktop(archive));
    QVERIFY(gather({name}));
    QCOMPARE(GatheringFixture::complaintAboutArchive({lower}, archive), QString());
}

void ZQTroubleshootingUtilsTest::preferencesOfTheComputerAreGatheredToo()
{
    const GatheringFixture fixture;
    const auto file = QStringLiteral("/Library/Preferences/com.corvane.Ostrel.plist");
    write(file, "preferences");
    QVERIFY(gather({ostrel}));
    QCOMPARE(GatheringFixture::complaintAboutArchive({file}), QString());
}

void ZQTroubleshootingUtilsTest::nothingElseIsInTheArchive()
{
    const GatheringFixture fixture;
    write(userLog(), "log");
    write(userPreferences(listener), "preferences");
    // What a person types and keeps is nobody's business.
    for (const auto &file :
         {GatheringFixture::home(QStringLiteral("Library/Application Support/Corvane/Ostrel/"
                                                "Keyboard Layouts/Safari.okl")),
          userPreferences(QStringLiteral("global")), userPreferences(QStringLiteral("Runvale")),
          userLog(QStringLiteral("Runvale.1.log")),
          GatheringFixture::home(QStringLiteral("Documents/Ostrel.1.log")),
          GatheringFixture::home(QStringLiteral(".xsession-errors")),
          QStringLiteral("/Library/LaunchAgents/com.corvane.OstrelListener.plist"),
          GatheringFixture::home(QStringLiteral("Library/Logs/Ostrel.1.log"))}) {
        write(file, "private");
    }
    QVERIFY(gather({ostrel, listener}));
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog(), userPreferences(listener)}),
             QString());
}

void ZQTroubleshootingUtilsTest::aSymbolicLinkIsGatheredAsWhatItLeadsTo()
{
    const GatheringFixture fixture;
    write(QStringLiteral("/tmp/elsewhere"), "elsewhere");
    write(userLog(QStringLiteral("keep")), "keep");
    test::makeLink("/tmp/elsewhere", "/tmp/between");
    test::makeLink("/tmp/between", userLog().toStdString());
    QVERIFY(gather({ostrel}));
    QFile::remove(QStringLiteral("/tmp/between"));
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog()}), QString());
    QCOMPARE(GatheringFixture::gathered(userLog()), QByteArray("elsewhere"));
}

void ZQTroubleshootingUtilsTest::aDanglingLinkIsGatheredAsALink()
{
    const GatheringFixture fixture;
    write(userLog(QStringLiteral("keep")), "keep");
    test::makeLink("/nowhere/at all", userLog().toStdString());
    QVERIFY(gather({ostrel}));
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog()}), QString());
    QCOMPARE(GatheringFixture::gathered(userLog()), QByteArray("/nowhere/at all"));
}

void ZQTroubleshootingUtilsTest::linksAreReadFromTheirOwnFolder()
{
    const GatheringFixture fixture;
    write(userPreferences(QStringLiteral("kept")), "kept");
    test::makeLink("com.corvane.kept.plist", userPreferences(ostrel).toStdString());
    QVERIFY(gather({ostrel}));
    QCOMPARE(GatheringFixture::gathered(userPreferences(ostrel)), QByteArray("kept"));
}

void ZQTroubleshootingUtilsTest::additionalFilesAreGatheredUnderTheirOwnPaths()
{
    const GatheringFixture fixture;
    const auto one = QStringLiteral("/tmp/additional/one");
    const auto two = QStringLiteral("/tmp/additional/below/two");
    write(userLog(), "log");
    write(one, "1");
    write(two, "2");
    QVERIFY(ZQTroubleshootingUtils::gatherLogsForAppsWithNames({ostrel}, Silent::Yes, {two, one}));
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog(), one, two}), QString());
}

void ZQTroubleshootingUtilsTest::additionalFilesAloneMakeAnArchive()
{
    const GatheringFixture fixture;
    const auto file = QStringLiteral("/tmp/alone");
    write(file, "alone");
    QVERIFY(ZQTroubleshootingUtils::gatherLogsForAppsWithNames({ostrel}, Silent::Yes, {file}));
    QCOMPARE(GatheringFixture::complaintAboutArchive({file}), QString());
}

void ZQTroubleshootingUtilsTest::oddNamesArriveUnharmed_data()
{
    QTest::addColumn<QString>("name");
    const std::string ending = ".log";
    for (const auto &odd : test::oddNames()) {
        auto name = "Ostrel" + odd.name;
        name.resize(std::min<std::size_t>(name.size(), 255 - ending.size()));
        QTest::newRow(odd.why) << test::text(name + ending);
    }
}

void ZQTroubleshootingUtilsTest::oddNamesArriveUnharmed()
{
    QFETCH(QString, name);
    const GatheringFixture fixture;
    write(userLog(QStringLiteral("keep")), "keep");
    const auto log =
        userLog(QString()).toStdString() + std::string(platform::fileNameBytes(name).constData());
    test::writeFile(log, "odd");
    QVERIFY(gather({ostrel}));
    // What an archive makes of a name that is no text, an unpacker of this system undoes.
    const test::Folder unpacked;
    QCOMPARE(QProcess::execute(QStringLiteral("/usr/bin/bsdtar"),
                               {QStringLiteral("-xf"),
                                GatheringFixture::desktop(QStringLiteral("Ostrel Logs.zip")),
                                QStringLiteral("-C"), test::text(unpacked.path())}),
             0);
    QCOMPARE(test::readFile(unpacked.path() + "/ZQ_App_Logs" + log), std::string("odd"));
}

void ZQTroubleshootingUtilsTest::anEarlierArchiveIsLeftAlone()
{
    const GatheringFixture fixture;
    const auto first = QStringLiteral("Ostrel Logs.zip");
    write(GatheringFixture::desktop(first), "the earlier one");
    write(userLog(), "log");
    const auto before = QDateTime::currentDateTime();
    QVERIFY(gather({ostrel}));
    QCOMPARE(test::contents(GatheringFixture::desktop(first)), QByteArray("the earlier one"));
    auto names = GatheringFixture::desktopNames();
    QVERIFY(names.removeOne(first));
    QCOMPARE(names.size(), 1);
    const auto match =
        QRegularExpression(QStringLiteral("^Ostrel Logs_(\\d{14})\\.zip$")).match(names.first());
    QVERIFY2(match.hasMatch(), qPrintable(names.first()));
    const auto time = QDateTime::fromString(match.captured(1), QStringLiteral("yyyyMMddHHmmss"));
    QVERIFY(time.isValid());
    QVERIFY(time >= before.addSecs(-1) && time <= QDateTime::currentDateTime());
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog()}, names.first()), QString());
}

void ZQTroubleshootingUtilsTest::theSuccessIsToldInAModalAlert()
{
    GatheringFixture fixture;
    write(userLog(), "log");
    QVERIFY(ZQTroubleshootingUtils::gatherLogsForAppWithName(ostrel));
    QCOMPARE(fixture.alerts(),
             QStringList(test::modalAlert(
                 QStringLiteral("Logs gathered successfully"),
                 QStringLiteral("The gathered logs were placed on your desktop."))));
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog()}), QString());
}

void ZQTroubleshootingUtilsTest::nothingFoundIsToldAndTheFolderStays()
{
    GatheringFixture fixture;
    QVERIFY(!ZQTroubleshootingUtils::gatherLogsForAppsWithNames({ostrel}));
    QCOMPARE(fixture.alerts(), QStringList(test::modalAlert(
                                   QStringLiteral("No logs found"),
                                   QStringLiteral("There were no logs available to gather."))));
    QVERIFY(QDir(GatheringFixture::temporaryFolder()).isEmpty());
    QVERIFY(QDir(GatheringFixture::temporaryFolder()).exists());
    QCOMPARE(GatheringFixture::desktopNames(), QStringList());
}

void ZQTroubleshootingUtilsTest::nothingFoundAndSilentShowsNoAlert()
{
    GatheringFixture fixture;
    QVERIFY(!gather({ostrel}));
    QCOMPARE(fixture.alerts(), QStringList());
    QVERIFY(QDir(GatheringFixture::temporaryFolder()).exists());
}

void ZQTroubleshootingUtilsTest::whatAnEarlierGatheringLeftIsNotInTheNext()
{
    const GatheringFixture fixture;
    write(GatheringFixture::temporaryFolder(QStringLiteral("/left/over")), "left");
    write(userLog(), "log");
    QVERIFY(gather({ostrel}));
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog()}), QString());
}

void ZQTroubleshootingUtilsTest::theTemporaryFolderGoes()
{
    const GatheringFixture fixture;
    write(userLog(), "log");
    QVERIFY(gather({ostrel}));
    QVERIFY(!QDir(GatheringFixture::temporaryFolder()).exists());
}

void ZQTroubleshootingUtilsTest::theProcessStaysInTheLastFolderListed()
{
    const GatheringFixture fixture;
    write(userLog(), "log");
    write(localLog, "log");
    QDir::setCurrent(QStringLiteral("/"));
    QVERIFY(gather({ostrel}));
    QCOMPARE(QDir::currentPath(), QStringLiteral("/Library/Logs/Corvane"));
    QDir().mkpath(QStringLiteral("/Library/Logs/DiagnosticReports"));
    QVERIFY(gather({ostrel}));
    QCOMPARE(QDir::currentPath(), QStringLiteral("/Library/Logs/DiagnosticReports"));
}

void ZQTroubleshootingUtilsTest::theArchiveIsTheUsersAlone()
{
    const GatheringFixture fixture;
    write(userLog(), "log");
    QVERIFY(gather({ostrel}));
    struct stat status {};
    const auto path = GatheringFixture::desktop(QStringLiteral("Ostrel Logs.zip")).toStdString();
    QCOMPARE(::stat(path.c_str(), &status), 0);
    QCOMPARE(status.st_mode & 07777U, 0600U);
}

void ZQTroubleshootingUtilsTest::aMissingDesktopIsMade()
{
    const GatheringFixture fixture;
    write(userLog(), "log");
    QVERIFY(QDir().rmdir(GatheringFixture::desktop()));
    QVERIFY(gather({ostrel}));
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog()}), QString());
}

void ZQTroubleshootingUtilsTest::aWorkerMayGather()
{
    GatheringFixture fixture;
    write(userLog(), "log");
    QVERIFY(test::onWorker(
        [] { return ZQTroubleshootingUtils::gatherLogsForAppsWithNames({ostrel}); }));
    QCOMPARE(fixture.alerts().size(), 1);
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog()}), QString());
}

void ZQTroubleshootingUtilsTest::theMainThreadDispatchesEventsMeanwhile()
{
    const GatheringFixture fixture;
    for (int i = 1; i <= 5; ++i) {
        write(userLog(QStringLiteral("Ostrel.%1.log").arg(i)), QByteArray(20'000'000, 'l'));
    }
    QElapsedTimer time;
    qint64 longest = 0;
    int ticks = 0;
    QTimer ticker;
    connect(&ticker, &QTimer::timeout, &ticker, [&] {
        longest = std::max(longest, time.restart());
        ++ticks;
    });
    ticker.start(5);
    time.start();
    QVERIFY(gather({ostrel}));
    longest = std::max(longest, time.elapsed());
    qInfo("%d ticks, the longest pause %lld ms", ticks, static_cast<long long>(longest));
    QVERIFY(ticks > 3);
    QVERIFY(longest < 500);
}

void ZQTroubleshootingUtilsTest::twoGatheringsAtOnceBothSucceed()
{
    const GatheringFixture fixture;
    const auto listeners = userLog(QStringLiteral("OstrelListener.1.log"));
    write(userLog(), QByteArray(5'000'000, 'l'));
    write(listeners, QByteArray(5'000'000, 'l'));
    auto second = false;
    auto begun = false;
    QTimer::singleShot(0, this, [&] {
        begun = true;
        second = gather({listener});
    });
    QVERIFY(gather({QStringLiteral("Ostrel.")}));
    QVERIFY(begun);
    QVERIFY(second);
    QCOMPARE(
        GatheringFixture::complaintAboutArchive({userLog()}, QStringLiteral("Ostrel. Logs.zip")),
        QString());
    QCOMPARE(GatheringFixture::complaintAboutArchive({listeners},
                                                     QStringLiteral("OstrelListener Logs.zip")),
             QString());
}

void ZQTroubleshootingUtilsTest::theLogIsWrittenOutBeforeItIsGathered()
{
    const GatheringFixture fixture;
    const auto folder = QStringLiteral("/Library/Logs/Corvane");
    const auto path = ::geteuid() == 0 ? folder + QStringLiteral("/Ostrel.1.log") : userLog();
    QVERIFY(::geteuid() != 0 || QDir().mkpath(folder)); // for root nobody makes it
    ZQLog::sharedController().setAppName(ostrel);
    ZQLog::createNewLog();
    constexpr auto lines = 5000; // the queue takes longer than the gathering to come to them
    for (auto line = 1; line <= lines; ++line) {
        ZQLog::fastAppendLog(QStringLiteral("line %@"), line);
    }
    QVERIFY(gather({ostrel}));
    const auto log = GatheringFixture::gathered(path);
    QCOMPARE(log.count(" - line "), lines);
}

TEST_CLASS(ZQTroubleshootingUtilsTest, QApplication)
#include "ZQTroubleshootingUtilsTest.moc"
