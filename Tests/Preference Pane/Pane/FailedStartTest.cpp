// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Support/CommandRecorder.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QTest>

using namespace std::chrono_literals;
using test::CommandRecorder;

namespace {

const QString unit = QStringLiteral("app-com.corvane.OstrelListener.service");
const QString processExited = QStringLiteral("98e322203f7a4ed290d09fe03c09fe15");

// A shell's lines that write an entry as the journal does, of now or of an hour ago.
QString entry(const QString &fields, int secondsAgo = 0)
{
    return QStringLiteral(
               "time=$(($(/opt/bin/date +%s) - %1))999999\n"
               "/opt/bin/printf '{\"__REALTIME_TIMESTAMP\":\"%s\",%s}\\n' \"$time\" '%2'\n")
        .arg(secondsAgo)
        .arg(fields);
}

QString said(const QString &message)
{
    return QStringLiteral("\"_SYSTEMD_USER_UNIT\":\"%1\",\"MESSAGE\":%2").arg(unit, message);
}

QString exited()
{
    return QStringLiteral(
               "\"USER_UNIT\":\"%1\",\"MESSAGE_ID\":\"%2\",\"MESSAGE\":\"%1: Main process "
               "exited, code=exited, status=3/NOTIMPLEMENTED\"")
        .arg(unit, processExited);
}

} // namespace

// What the page says when a start fails. As root, who needs no authorisation; the service manager
// and the journal are stood for by recorders. In a session the real ones are asked.
class FailedStartTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void whatLaunchctlSaysAgainstTheJobIsShown();
    void theLastLinesOfTheUnitAreShown();
    void whatItSaidBeforeTheStartIsNotShown();
    void aListenerThatSaidNothingIsToldByItsManager();
    void oneThatEndsAgainAndAgainKeepsFailing();
    void withoutAJournalTheManagerIsAsked();
    void oneThatRunsIsNoFailure();
    void whatAProgramWritesStaysSmallAndPlain();
    void theNoticeOutlivesTheStopThatFollowsByItself();

private:
    void add(const QString &path, const QString &shell = {})
    {
        m_recorders.push_back(std::make_unique<CommandRecorder>(path, shell));
    }
    void giveJournal(const QString &shell) { add(QStringLiteral("/usr/bin/journalctl"), shell); }
    void giveLaunchctl(const QString &shell) { add(QStringLiteral("/usr/bin/launchctl"), shell); }
    static void start(PaneFixture &fixture)
    {
        fixture.open();
        fixture.waitUntilLoaded();
        QTest::mouseClick(&fixture.masterSwitch(), Qt::LeftButton);
    }

    std::vector<std::unique_ptr<CommandRecorder>> m_recorders;
};

void FailedStartTest::init()
{
    CommandRecorder::forget();
    add(QStringLiteral("/usr/bin/killall"));
    add(QStringLiteral("/usr/sbin/chown"));
    giveLaunchctl({});
}

void FailedStartTest::cleanup()
{
    m_recorders.clear();
}

void FailedStartTest::whatLaunchctlSaysAgainstTheJobIsShown()
{
    giveLaunchctl(QStringLiteral("test \"$1\" = load || exit 0\n"
                                 "echo 'launchctl: the job: /home/ann belongs to user 1000' >&2\n"
                                 "exit 1"));
    PaneFixture fixture(100ms);
    start(fixture);
    QTRY_COMPARE_WITH_TIMEOUT(
        fixture.notice(),
        QStringLiteral("The listener could not be loaded: launchctl: the job: "
                       "/home/ann belongs to user 1000"),
        30000);
}

void FailedStartTest::theLastLinesOfTheUnitAreShown()
{
    QString lines;
    for (const auto *word : {"one", "two", "three", "four", "five"}) {
        lines += entry(said(QStringLiteral("\"%1\"").arg(QLatin1String(word))));
    }
    giveJournal(lines + entry(exited()));
    PaneFixture fixture(100ms);
    start(fixture);
    QTRY_COMPARE_WITH_TIMEOUT(fixture.notice(),
                              QStringLiteral("The listener has failed:\ntwo\nthree\nfour\nfive"),
                              30000);
    const auto asked = CommandRecorder::runs().filter(QStringLiteral("journalctl "));
    QVERIFY(asked.first().contains(QStringLiteral("[--user-unit=%1]").arg(unit)));
    QVERIFY(CommandRecorder::runs().filter(QStringLiteral("[list]")).isEmpty());
}

void FailedStartTest::whatItSaidBeforeTheStartIsNotShown()
{
    constexpr auto hour = 3600;
    giveJournal(entry(said(QStringLiteral("\"old\"")), hour) + entry(exited(), hour) +
                entry(said(QStringLiteral("\"new\""))) + entry(exited()));
    PaneFixture fixture(100ms);
    start(fixture);
    QTRY_COMPARE_WITH_TIMEOUT(fixture.notice(), QStringLiteral("The listener has failed:\nnew"),
                              30000);
}

void FailedStartTest::aListenerThatSaidNothingIsToldByItsManager()
{
    giveJournal(entry(exited()));
    PaneFixture fixture(100ms);
    start(fixture);
    QTRY_COMPARE_WITH_TIMEOUT(fixture.notice(),
                              QStringLiteral("The listener has failed:\n%1: Main process exited, "
                                             "code=exited, status=3/NOTIMPLEMENTED")
                                  .arg(unit),
                              30000);
}

void FailedStartTest::oneThatEndsAgainAndAgainKeepsFailing()
{
    giveJournal(entry(exited()) + entry(said(QStringLiteral("\"no port\""))) + entry(exited()));
    PaneFixture fixture(100ms);
    start(fixture);
    QTRY_COMPARE_WITH_TIMEOUT(
        fixture.notice(),
        QStringLiteral("The listener keeps failing (2 times since the start):\nno port"), 30000);
}

void FailedStartTest::withoutAJournalTheManagerIsAsked()
{
    giveLaunchctl(QStringLiteral("test \"$1\" = list || exit 0\n"
                                 "echo \"Label = $2\"; echo 'PID = -'; echo 'Status = 203'\n"
                                 "echo 'File = /x'; echo 'Restarts = 2'"));
    PaneFixture fixture(100ms);
    start(fixture);
    QTRY_COMPARE_WITH_TIMEOUT(fixture.notice(),
                              QStringLiteral("The listener keeps failing (3 times since the "
                                             "start):\nIt ended with the exit status 203."),
                              30000);
}

void FailedStartTest::oneThatRunsIsNoFailure()
{
    giveLaunchctl(QStringLiteral("test \"$1\" = list || exit 0\n"
                                 "echo \"Label = $2\"; echo 'PID = 77'; echo 'Status = 1'\n"
                                 "echo 'Restarts = 2'"));
    PaneFixture fixture(100ms);
    start(fixture);
    QTRY_VERIFY_WITH_TIMEOUT(CommandRecorder::runs().filter(QStringLiteral("[list]")).size() >= 2,
                             30000);
    QVERIFY(fixture.notice().isNull());
}

void FailedStartTest::whatAProgramWritesStaysSmallAndPlain()
{
    // Bytes that are no UTF-8 come as numbers; the escape would colour a terminal.
    giveJournal(entry(said(QStringLiteral("[60,98,62,27,91,51,49,109,255]"))) +
                entry(said(QStringLiteral("\"%1\"").arg(QString(5000, QLatin1Char('w'))))) +
                entry(exited()));
    PaneFixture fixture(100ms);
    start(fixture);
    QTRY_VERIFY_WITH_TIMEOUT(!fixture.notice().isNull(), 30000);
    const auto lines = fixture.notice().split(QLatin1Char('\n'));
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines[1], QStringLiteral("<b> [31m\uFFFD"));
    QVERIFY(lines[2].size() <= 161);
}

void FailedStartTest::theNoticeOutlivesTheStopThatFollowsByItself()
{
    giveJournal(entry(said(QStringLiteral("\"no port\""))) + entry(exited()));
    PaneFixture fixture(200ms);
    start(fixture);
    QTRY_VERIFY_WITH_TIMEOUT(
        !CommandRecorder::runs().filter(QStringLiteral("launchctl [remove]")).isEmpty(), 60000);
    QTRY_VERIFY_WITH_TIMEOUT(!fixture.pane().isProcessing() && !fixture.masterSwitch().isOn(),
                             60000);
    QCOMPARE(fixture.notice(), QStringLiteral("The listener has failed:\nno port"));
}

TEST_CLASS(FailedStartTest, QApplication)
#include "FailedStartTest.moc"
