// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/ZQLaunchd.h"

#include "Platform/PropertyList.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/CommandRecorder.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/OnWorker.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QMainWindow>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <vector>

using test::CommandRecorder;

namespace {

const QString label = QStringLiteral("com.corvane.Test");
const QString agents = QStringLiteral("/Library/LaunchAgents");
const QString job = agents + QStringLiteral("/com.corvane.Test.plist");
const QString launchctl = QStringLiteral("/usr/bin/launchctl");

QVariantMap settings(const QString &program = QStringLiteral("/bin/true"))
{
    return {{QStringLiteral("Label"), label}, {QStringLiteral("Program"), program}};
}

bool isRoot()
{
    return ::geteuid() == 0;
}

uint modeOf(const QString &path)
{
    struct stat status {};
    return ::stat(path.toUtf8().constData(), &status) == 0 ? status.st_mode & 07777U : 0;
}

QString userFolder()
{
    return ZQLocalPaths::libraryDirectory(Domain::User) + QStringLiteral("/LaunchAgents");
}

// Not even root: there is a file in its place.
void makeAFolderThatNobodyCanWriteTo()
{
    QVERIFY(QDir().rmdir(agents));
    QFile file(agents);
    QVERIFY(file.open(QIODevice::WriteOnly));
}

QString temporaryFile()
{
    return ZQLocalPaths::tempDirectory() + QStringLiteral("/com.corvane.Test.plist");
}

const QString checkPermissions = QStringLiteral(
    "Please check you have correct permissions for the directory /Library/LaunchAgents.");

// Answers every alert with its default button and keeps its texts.
class AnsweredAlerts {
public:
    const QStringList &texts() const { return m_texts; }

private:
    QStringList m_texts;
    test::AlertWatcher m_watcher{[this](platform::AlertPanel &alert) {
        m_texts << alert.description().messageText << alert.description().informativeText;
        test::click(alert, "defaultButton");
    }};
};

} // namespace

class ZQLaunchdTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void theFileHoldsTheSettingsAsGiven();
    void theFolderIsMadeWhenMissing();
    void aJobForAllUsersGetsOwnerAndMode();
    void aJobInTheUsersLibraryGetsItsModeButNoChangeOfOwner();
    void daemonsHaveAFolderOfTheirOwn();
    void oldCopiesOfTheProgramAreEndedBeforeTheJobIsLoaded();
    void withoutAProcessNameNothingIsKilled();
    void anOldJobIsUnloadedRemovedAndDeletedFirst();
    void aFailingCommandDoesNotMatter();
    void withAuthorisationTheCommandsArePaced();
    void anUnwritableFolderWithoutAuthorisationEndsInAnAlert();
    void afterAPrivilegedMoveOwnershipIsPrivilegedToo();
    void noTemporaryFolderIsAnotherMessage();
    void stoppingLeavesTheFile();
    void stoppingWithoutALabelDoesNothing();
    void removingDeletesTheFile();
    void removingWithoutAFileOnlyUnloads();
    void aFailedRemovalIsShownOnlyWithAuthorisation();
    void removingAnAgentAlwaysMeansTheUsersLibrary();

private:
    void add(const QString &path, const QString &shell = {})
    {
        m_recorders.push_back(std::make_unique<CommandRecorder>(path, shell));
    }

    std::vector<std::unique_ptr<CommandRecorder>> m_recorders;
};

void ZQLaunchdTest::init()
{
    CommandRecorder::forget();
    ::chmod(agents.toUtf8().constData(), 0755);
    QFile::remove(agents);
    QDir(agents).removeRecursively();
    QDir(userFolder()).removeRecursively();
    QDir().mkpath(agents);
    for (const auto *path : {"/usr/bin/launchctl", "/usr/bin/killall", "/usr/sbin/chown"}) {
        add(QString::fromUtf8(path));
    }
    add(QStringLiteral("/usr/bin/chmod"), QStringLiteral("exec /opt/bin/chmod \"$@\""));
}

void ZQLaunchdTest::cleanup()
{
    m_recorders.clear();
}

void ZQLaunchdTest::theFileHoldsTheSettingsAsGiven()
{
    const QVariantMap given{
        {QStringLiteral("Label"), label},
        {QStringLiteral("RunAtLoad"), true},
        {QStringLiteral("KeepAlive"), QVariantMap{{QStringLiteral("SuccessfulExit"), false}}}};
    QVERIFY(ZQLaunchd::startJob(label, given, Domain::Local, JobKind::Agent, ShouldAuth::No));
    QCOMPARE(platform::dictionaryFromFile(job).value_or(QVariantMap()), given);
}

void ZQLaunchdTest::theFolderIsMadeWhenMissing()
{
    QDir(agents).removeRecursively();
    QVERIFY(ZQLaunchd::startJob(label, settings(), Domain::Local, JobKind::Agent, ShouldAuth::No));
    QVERIFY(QFile::exists(job));
}

void ZQLaunchdTest::aJobForAllUsersGetsOwnerAndMode()
{
    QVERIFY(ZQLaunchd::startJob(label, settings(), Domain::Local, JobKind::Agent, ShouldAuth::No));
    QCOMPARE(CommandRecorder::runs(),
             (QStringList{QStringLiteral("chown [root:wheel] [") + job + QLatin1Char(']'),
                          QStringLiteral("chmod [644] [") + job + QLatin1Char(']'),
                          QStringLiteral("launchctl [unload] [") + job + QLatin1Char(']'),
                          QStringLiteral("launchctl [load] [") + job + QLatin1Char(']')}));
    QCOMPARE(modeOf(job), 0644U);
}

void ZQLaunchdTest::aJobInTheUsersLibraryGetsItsModeButNoChangeOfOwner()
{
    QVERIFY(ZQLaunchd::startLaunchAgent(label, settings(), Domain::User));
    const auto path = userFolder() + QStringLiteral("/com.corvane.Test.plist");
    QCOMPARE(CommandRecorder::runs(),
             (QStringList{QStringLiteral("chmod [644] [") + path + QLatin1Char(']'),
                          QStringLiteral("launchctl [unload] [") + path + QLatin1Char(']'),
                          QStringLiteral("launchctl [load] [") + path + QLatin1Char(']')}));
    QCOMPARE(modeOf(path), 0644U);
}

void ZQLaunchdTest::daemonsHaveAFolderOfTheirOwn()
{
    QVERIFY(ZQLaunchd::startJob(label, settings(), Domain::Local, JobKind::Daemon, ShouldAuth::No));
    QVERIFY(QFile::exists(QStringLiteral("/Library/LaunchDaemons/com.corvane.Test.plist")));
    ZQLaunchd::removeJob(label, Domain::Local, JobKind::Daemon, ShouldAuth::No);
    QVERIFY(!QFile::exists(QStringLiteral("/Library/LaunchDaemons/com.corvane.Test.plist")));
}

void ZQLaunchdTest::oldCopiesOfTheProgramAreEndedBeforeTheJobIsLoaded()
{
    QVERIFY(ZQLaunchd::startJob(label, settings(), Domain::Local, JobKind::Agent, ShouldAuth::No,
                                QStringLiteral("Some Program")));
    const auto runs = CommandRecorder::runs();
    QCOMPARE(runs.value(0), QStringLiteral("killall [Some Program]"));
    QVERIFY(runs.last().startsWith(QStringLiteral("launchctl [load]")));
}

void ZQLaunchdTest::withoutAProcessNameNothingIsKilled()
{
    QVERIFY(ZQLaunchd::startJob(label, settings(), Domain::Local, JobKind::Agent, ShouldAuth::No));
    QVERIFY(CommandRecorder::runs().filter(QStringLiteral("killall")).isEmpty());
}

void ZQLaunchdTest::anOldJobIsUnloadedRemovedAndDeletedFirst()
{
    m_recorders.clear();
    // Each run of launchctl notes whether the file is there and whose it is.
    add(launchctl, QStringLiteral("grep=no; while read -r line; do case $line in *new*) grep=new;; "
                                  "*old*) grep=old;; esac; done <%1; echo \"  file: $grep\" >>"
                                  "/tmp/recorded-commands")
                       .arg(job));
    QVERIFY(platform::writeDictionaryToFile(settings(QStringLiteral("/old")), job));
    QVERIFY(ZQLaunchd::startJob(label, settings(QStringLiteral("/new")), Domain::Local,
                                JobKind::Agent, ShouldAuth::No));
    const auto path = QLatin1Char('[') + job + QLatin1Char(']');
    const QStringList expected{QStringLiteral("launchctl [unload] ") + path,
                               QStringLiteral("  file: old"),
                               QStringLiteral("launchctl [remove] [com.corvane.Test]"),
                               QStringLiteral("  file: old"),
                               QStringLiteral("launchctl [unload] ") + path,
                               QStringLiteral("  file: new"),
                               QStringLiteral("launchctl [load] ") + path,
                               QStringLiteral("  file: new")};
    QCOMPARE(CommandRecorder::runs(), expected);
}

void ZQLaunchdTest::aFailingCommandDoesNotMatter()
{
    m_recorders.clear();
    for (const auto *path : {"/usr/bin/launchctl", "/usr/bin/killall", "/usr/sbin/chown"}) {
        add(QString::fromUtf8(path), QStringLiteral("exit 1"));
    }
    QVERIFY(ZQLaunchd::startJob(label, settings(), Domain::Local, JobKind::Agent, ShouldAuth::No,
                                QStringLiteral("Some Program")));
    QCOMPARE(CommandRecorder::runs().size(), 4);
}

void ZQLaunchdTest::withAuthorisationTheCommandsArePaced()
{
    if (!isRoot()) {
        QSKIP("an ordinary user would be asked for a password here");
    }
    QElapsedTimer time;
    time.start();
    QVERIFY(ZQLaunchd::startJob(label, settings(), Domain::Local, JobKind::Agent, ShouldAuth::Yes));
    QVERIFY2(time.elapsed() >= 1000, qPrintable(QString::number(time.elapsed())));
    auto runs = CommandRecorder::runs();
    QVERIFY(runs.contains(QStringLiteral("chown [root:wheel] [") + job + QLatin1Char(']')));
    QVERIFY(runs.contains(QStringLiteral("chmod [644] [") + job + QLatin1Char(']')));
    QCOMPARE(runs.mid(2),
             (QStringList{QStringLiteral("launchctl [unload] [") + job + QLatin1Char(']'),
                          QStringLiteral("launchctl [load] [") + job + QLatin1Char(']')}));
}

void ZQLaunchdTest::anUnwritableFolderWithoutAuthorisationEndsInAnAlert()
{
    makeAFolderThatNobodyCanWriteTo();
    QMainWindow window;
    window.show();
    test::ConsoleCapture console;
    AnsweredAlerts alerts;
    const auto started = test::onWorker([] {
        return ZQLaunchd::startJob(label, settings(), Domain::Local, JobKind::Agent,
                                   ShouldAuth::No);
    });
    QVERIFY(!started);
    QCOMPARE(alerts.texts(), (QStringList{QStringLiteral("Error: Unable to create LaunchAgent"),
                                          checkPermissions}));
    const auto line =
        QStringLiteral("Error: Unable to create LaunchAgent. ") + checkPermissions.chopped(1);
    QVERIFY(console.lines().contains(line));
    QVERIFY(!QFile::exists(job));
    QVERIFY(!QFile::exists(temporaryFile()));
    QVERIFY(CommandRecorder::runs().filter(QStringLiteral("launchctl")).isEmpty());
}

void ZQLaunchdTest::afterAPrivilegedMoveOwnershipIsPrivilegedToo()
{
    if (!isRoot()) {
        QSKIP("an ordinary user would be asked for a password here");
    }
    // A "mv" that can what root of this sandbox cannot.
    add(QStringLiteral("/usr/bin/mv"),
        QStringLiteral("/opt/bin/rm /Library/LaunchAgents; /opt/bin/mkdir /Library/LaunchAgents; "
                       "exec /opt/bin/mv \"$@\""));
    makeAFolderThatNobodyCanWriteTo();
    QElapsedTimer time;
    time.start();
    QVERIFY(test::onWorker([] {
        return ZQLaunchd::startJob(label, settings(), Domain::Local, JobKind::Agent,
                                   ShouldAuth::No);
    }));
    QVERIFY(time.elapsed() >= 1000);
    QCOMPARE(platform::dictionaryFromFile(job).value_or(QVariantMap()), settings());
    QCOMPARE(modeOf(job), 0644U);
    QVERIFY(CommandRecorder::runs().contains(QStringLiteral("chown [root:wheel] [") + job +
                                             QLatin1Char(']')));
    QVERIFY(!QFile::exists(temporaryFile()));
}

void ZQLaunchdTest::noTemporaryFolderIsAnotherMessage()
{
    makeAFolderThatNobodyCanWriteTo();
    QVERIFY(QDir().mkpath(temporaryFile())); // a folder where the file should go
    QMainWindow window;
    window.show();
    test::ConsoleCapture console;
    AnsweredAlerts alerts;
    const auto started = test::onWorker([] {
        return ZQLaunchd::startJob(label, settings(), Domain::Local, JobKind::Agent,
                                   ShouldAuth::No);
    });
    QDir(temporaryFile()).removeRecursively();
    QVERIFY(!started);
    QCOMPARE(alerts.texts(), (QStringList{QStringLiteral("Error: Unable to write LaunchAgent data"),
                                          checkPermissions}));
    QVERIFY(console.lines().contains(QStringLiteral("Error: Unable to write LaunchAgent data. ") +
                                     checkPermissions.chopped(1)));
}

void ZQLaunchdTest::stoppingLeavesTheFile()
{
    QVERIFY(platform::writeDictionaryToFile(settings(), job));
    ZQLaunchd::stopJob(label, Domain::Local, JobKind::Agent, ShouldAuth::Yes);
    QCOMPARE(CommandRecorder::runs(),
             (QStringList{QStringLiteral("launchctl [unload] [") + job + QLatin1Char(']'),
                          QStringLiteral("launchctl [remove] [com.corvane.Test]")}));
    QVERIFY(QFile::exists(job));
}

void ZQLaunchdTest::stoppingWithoutALabelDoesNothing()
{
    ZQLaunchd::stopJob({}, Domain::Local, JobKind::Agent, ShouldAuth::Yes);
    QVERIFY(CommandRecorder::runs().isEmpty());
}

void ZQLaunchdTest::removingDeletesTheFile()
{
    QVERIFY(platform::writeDictionaryToFile(settings(), job));
    ZQLaunchd::removeJob(label, Domain::Local, JobKind::Agent, ShouldAuth::Yes);
    QVERIFY(!QFile::exists(job));
    QCOMPARE(CommandRecorder::runs().size(), 2);
}

void ZQLaunchdTest::removingWithoutAFileOnlyUnloads()
{
    AnsweredAlerts alerts;
    ZQLaunchd::removeJob(label, Domain::Local, JobKind::Agent, ShouldAuth::Yes);
    QCOMPARE(CommandRecorder::runs().size(), 2);
    QVERIFY(alerts.texts().isEmpty());
}

void ZQLaunchdTest::aFailedRemovalIsShownOnlyWithAuthorisation()
{
    QVERIFY(platform::writeDictionaryToFile(settings(), job));
    QCOMPARE(::chmod(agents.toUtf8().constData(), 0555), 0);
    QMainWindow window;
    window.show();
    AnsweredAlerts alerts;
    const auto remove = [](ShouldAuth shouldAuth) {
        return test::onWorker([=] {
            ZQLaunchd::removeJob(label, Domain::Local, JobKind::Agent, shouldAuth);
            return true;
        });
    };
    QVERIFY(remove(ShouldAuth::No));
    QVERIFY(alerts.texts().isEmpty());
    QVERIFY(remove(ShouldAuth::Yes));
    if (isRoot()) {
        // Root may; and a tool that root has started counts as done.
        QVERIFY(alerts.texts().isEmpty());
        return;
    }
    QCOMPARE(alerts.texts(), (QStringList{QStringLiteral("Error: Unable to remove LaunchAgent"),
                                          checkPermissions}));
    QVERIFY(QFile::exists(job));
}

void ZQLaunchdTest::removingAnAgentAlwaysMeansTheUsersLibrary()
{
    const auto own = userFolder() + QStringLiteral("/com.corvane.Test.plist");
    QVERIFY(QDir().mkpath(userFolder()));
    QVERIFY(platform::writeDictionaryToFile(settings(), own));
    QVERIFY(platform::writeDictionaryToFile(settings(), job));
    ZQLaunchd::removeLaunchAgent(label, Domain::Local);
    QVERIFY(!QFile::exists(own));
    QVERIFY(QFile::exists(job));
}

QTEST_MAIN(ZQLaunchdTest)
#include "ZQLaunchdTest.moc"
