// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Jobs/ZQLaunchd.h"

#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/CommandRecorder.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
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

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Shell for a "mv" that can what root of this sandbox cannot; before the first move it does what
// somebody might who can write to the temporary folder. "$2" is the file that is moved.
QString mvAfter(const QString &plant)
{
    return QStringLiteral(
               "if [ ! -d /Library/LaunchAgents ]; then\n"
               "/opt/bin/rm /Library/LaunchAgents; /opt/bin/mkdir /Library/LaunchAgents\n"
               "%1\n"
               "fi\n"
               "exec /opt/bin/mv \"$@\"")
        .arg(plant);
}

bool startByMoving()
{
    makeAFolderThatNobodyCanWriteTo();
    return test::onWorker([] {
        return ZQLaunchd::startJob(label, settings(), Domain::Local, JobKind::Agent,
                                   ShouldAuth::No);
    });
}

QString refusal(const QString &reason)
{
    return QStringLiteral("Error: The job %1 is not loaded: %2").arg(job, reason);
}

const QString notWhatWasAskedFor =
    QStringLiteral("the file is not root's alone as it was asked for");

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
    void whoHeldTheMovedFileOpenCannotChangeTheJob();
    void whatALateMoveDoesToTheFileIsUndoneBeforeTheLoad();
    void aLinkInPlaceOfTheMovedFileLeadsRootNowhere();
    void whatIsNotTheFileThatWasMovedIsTakenAway();
    void aMovedFileThatCannotBeReplacedIsNotLoaded();
    void aJobInAFolderThatOthersCanChangeIsNotLoaded();
    void aFileThatIsNotWhatWasAskedForIsNotLoaded();
    void whatLaunchctlSaysAgainstTheJobIsHandedOver();
    void rootFollowsNoLinkInAUsersLibrary();
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
    QStringList expected{QStringLiteral("chown [root:wheel] [") + job + QLatin1Char(']'),
                         QStringLiteral("chmod [644] [") + job + QLatin1Char(']'),
                         QStringLiteral("launchctl [unload] [") + job + QLatin1Char(']')};
    if (isRoot()) { // of an ordinary user's file no job for all is made
        expected << QStringLiteral("launchctl [load] [") + job + QLatin1Char(']');
    }
    QCOMPARE(CommandRecorder::runs(), expected);
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
    QCOMPARE(runs.filter(QStringLiteral("launchctl [load]")).size(), isRoot() ? 1 : 0);
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
    QStringList expected{QStringLiteral("launchctl [unload] ") + path,
                         QStringLiteral("  file: old"),
                         QStringLiteral("launchctl [remove] [com.corvane.Test]"),
                         QStringLiteral("  file: old"),
                         QStringLiteral("launchctl [unload] ") + path,
                         QStringLiteral("  file: new")};
    if (isRoot()) {
        expected << QStringLiteral("launchctl [load] ") + path << QStringLiteral("  file: new");
    }
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
    QCOMPARE(CommandRecorder::runs().size(), isRoot() ? 4 : 3);
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
    add(QStringLiteral("/usr/bin/mv"), mvAfter({}));
    QElapsedTimer time;
    time.start();
    QVERIFY(startByMoving());
    QVERIFY(time.elapsed() >= 1000);
    QCOMPARE(platform::dictionaryFromFile(job).value_or(QVariantMap()), settings());
    QCOMPARE(modeOf(job), 0644U);
    QVERIFY(CommandRecorder::runs().contains(QStringLiteral("chown [root:wheel] [") + job +
                                             QLatin1Char(']')));
    QVERIFY(!QFile::exists(temporaryFile()));
}

void ZQLaunchdTest::whoHeldTheMovedFileOpenCannotChangeTheJob()
{
    if (!isRoot()) {
        QSKIP("an ordinary user would be asked for a password here");
    }
    m_recorders.clear();
    add(QStringLiteral("/usr/bin/chmod"), QStringLiteral("exec /opt/bin/chmod \"$@\""));
    // Opened while it is still its maker's, written to when it has got its owner and mode.
    add(QStringLiteral("/usr/bin/mv"),
        mvAfter(QStringLiteral(
            "/opt/bin/mv \"$@\"; exec 3<>\"$3\"\n"
            "(until /opt/bin/grep -q 'chmod .644' /tmp/recorded-commands; do sleep 0.02; done\n"
            " echo HOSTILE >&3; : >/tmp/attacked) & exit 0")));
    add(launchctl, QStringLiteral("[ $1 = load ] || exit 0\n"
                                  "until [ -e /tmp/attacked ]; do sleep 0.02; done\n"
                                  "cat \"$2\" >/tmp/loaded"));
    QVERIFY(startByMoving());
    QCOMPARE(contentsOf(QStringLiteral("/tmp/loaded")), platform::propertyListToXml(settings()));
    struct stat status {};
    QCOMPARE(::stat(job.toUtf8().constData(), &status), 0);
    QCOMPARE(status.st_nlink, static_cast<nlink_t>(1));
    QCOMPARE(QDir(agents).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

void ZQLaunchdTest::whatALateMoveDoesToTheFileIsUndoneBeforeTheLoad()
{
    if (!isRoot()) {
        QSKIP("an ordinary user would be asked for a password here");
    }
    m_recorders.clear();
    // It gives the file to its old owner, who writes to it; here that is the same user.
    add(QStringLiteral("/usr/bin/chmod"),
        QStringLiteral("/opt/bin/chmod \"$@\"; echo HOSTILE >\"$2\""));
    add(QStringLiteral("/usr/bin/mv"), mvAfter({}));
    QFile::remove(QStringLiteral("/tmp/loaded"));
    add(launchctl, QStringLiteral("[ $1 = load ] && cat \"$2\" >/tmp/loaded; exit 0"));
    QVERIFY(startByMoving());
    QCOMPARE(contentsOf(QStringLiteral("/tmp/loaded")), platform::propertyListToXml(settings()));
}

void ZQLaunchdTest::aLinkInPlaceOfTheMovedFileLeadsRootNowhere()
{
    if (!isRoot()) {
        QSKIP("an ordinary user would be asked for a password here");
    }
    add(QStringLiteral("/usr/bin/mv"),
        mvAfter(QStringLiteral("umask 077; echo secret >/tmp/secret\n"
                               "/opt/bin/rm \"$2\"; /opt/bin/ln -s /tmp/secret \"$2\"")));
    QVERIFY(startByMoving());
    QCOMPARE(modeOf(QStringLiteral("/tmp/secret")), 0600U);
    QCOMPARE(contentsOf(QStringLiteral("/tmp/secret")), QByteArray("secret\n"));
    QVERIFY(!QFileInfo(job).isSymLink());
    QCOMPARE(platform::dictionaryFromFile(job).value_or(QVariantMap()), settings());
    QCOMPARE(CommandRecorder::runs().filter(QStringLiteral("launchctl [load]")).size(), 1);
}

void ZQLaunchdTest::whatIsNotTheFileThatWasMovedIsTakenAway()
{
    if (!isRoot()) {
        QSKIP("an ordinary user would be asked for a password here");
    }
    add(QStringLiteral("/usr/bin/mv"),
        mvAfter(QStringLiteral("/opt/bin/rm \"$2\"; /opt/bin/mkdir \"$2\"; : >\"$2/inside\"")));
    test::ConsoleCapture console;
    QVERIFY(startByMoving());
    QVERIFY(!QFile::exists(job));
    QVERIFY(QDir(agents).isEmpty());
    QVERIFY(CommandRecorder::runs().filter(QStringLiteral("chown")).isEmpty());
    QVERIFY(CommandRecorder::runs().filter(QStringLiteral("launchctl [load]")).isEmpty());
    QVERIFY(console.lines().contains(refusal(notWhatWasAskedFor)));
}

void ZQLaunchdTest::aMovedFileThatCannotBeReplacedIsNotLoaded()
{
    if (!isRoot()) {
        QSKIP("an ordinary user would be asked for a password here");
    }
    // Only the first move works.
    add(QStringLiteral("/usr/bin/mv"),
        QStringLiteral("[ -d /Library/LaunchAgents ] && exit 1\n") + mvAfter({}));
    test::ConsoleCapture console;
    QVERIFY(startByMoving());
    QVERIFY(
        QDir(agents).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot).isEmpty());
    QVERIFY(CommandRecorder::runs().filter(QStringLiteral("chown")).isEmpty());
    QVERIFY(CommandRecorder::runs().filter(QStringLiteral("launchctl [load]")).isEmpty());
    QVERIFY(console.lines().contains(refusal(notWhatWasAskedFor)));
}

void ZQLaunchdTest::aJobInAFolderThatOthersCanChangeIsNotLoaded()
{
    // Of an ordinary user the folder is his own; root's is opened to everybody.
    QCOMPARE(::chmod(agents.toUtf8().constData(), isRoot() ? 01777 : 0755), 0);
    test::ConsoleCapture console;
    for (const auto shouldAuth : {ShouldAuth::No, ShouldAuth::Yes}) {
        CommandRecorder::forget();
        QVERIFY(ZQLaunchd::startJob(label, settings(), Domain::Local, JobKind::Agent, shouldAuth));
        const auto runs = CommandRecorder::runs();
        QVERIFY(runs.contains(QStringLiteral("launchctl [unload] [") + job + QLatin1Char(']')));
        QVERIFY(runs.filter(QStringLiteral("launchctl [load]")).isEmpty());
        if (isRoot()) { // whose tools would follow what somebody else has put there
            QVERIFY(runs.filter(QStringLiteral("chmod")).isEmpty());
            QVERIFY(runs.filter(QStringLiteral("chown")).isEmpty());
        }
    }
    QVERIFY(console.lines().contains(
        refusal(isRoot() ? agents + QStringLiteral(" can be changed by everybody")
                         : QStringLiteral("/ belongs to user 1000"))));
}

void ZQLaunchdTest::aFileThatIsNotWhatWasAskedForIsNotLoaded()
{
    if (!isRoot()) {
        QSKIP("an ordinary user would be asked for a password here");
    }
    m_recorders.clear();
    add(launchctl);
    add(QStringLiteral("/usr/bin/chmod"),
        QStringLiteral("/opt/bin/chmod \"$@\"; echo more >>\"$2\""));
    test::ConsoleCapture console;
    QString objection;
    QVERIFY(ZQLaunchd::startJob(label, settings(), Domain::Local, JobKind::Agent, ShouldAuth::No,
                                {}, &objection));
    QVERIFY(CommandRecorder::runs().filter(QStringLiteral("launchctl [load]")).isEmpty());
    QVERIFY(console.lines().contains(refusal(notWhatWasAskedFor)));
    QVERIFY(!QFile::exists(job)); // nor at the next log-in
    QCOMPARE(objection, notWhatWasAskedFor);
}

void ZQLaunchdTest::whatLaunchctlSaysAgainstTheJobIsHandedOver()
{
    for (const auto &said : {QString(), QStringLiteral("launchctl: no load")}) {
        add(launchctl,
            QStringLiteral("echo output; test \"%1\" = '' || echo \"%1\" >&2; exit 1").arg(said));
        QString objection;
        QVERIFY(ZQLaunchd::startJob(label, settings(), Domain::User, JobKind::Agent, ShouldAuth::No,
                                    {}, &objection));
        QCOMPARE(objection, said);
    }
}

void ZQLaunchdTest::rootFollowsNoLinkInAUsersLibrary()
{
    if (!isRoot()) {
        QSKIP("an ordinary user has no such rights");
    }
    const auto path = userFolder() + QStringLiteral("/com.corvane.Test.plist");
    QVERIFY(QDir().mkpath(userFolder()));
    QCOMPARE(::chmod(userFolder().toUtf8().constData(), 01777), 0);
    QFile secret(QStringLiteral("/tmp/secret"));
    QVERIFY(secret.open(QIODevice::WriteOnly));
    secret.close();
    QCOMPARE(::chmod("/tmp/secret", 0600), 0);
    // Somebody is quick between the writing and the command.
    add(QStringLiteral("/usr/bin/killall"),
        QStringLiteral("/opt/bin/rm '%1'; /opt/bin/ln -s /tmp/secret '%1'").arg(path));
    const auto start = [](const QString &program) {
        return ZQLaunchd::startJob(label, settings(), Domain::User, JobKind::Agent, ShouldAuth::No,
                                   program);
    };
    QVERIFY(start(QStringLiteral("Some Program")));
    QCOMPARE(modeOf(QStringLiteral("/tmp/secret")), 0600U);
    QVERIFY(QFile::remove(path));
    ::umask(077);
    const auto started = start({});
    ::umask(022);
    QVERIFY(started);
    QCOMPARE(modeOf(path), 0644U);
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

TEST_CLASS(ZQLaunchdTest, QApplication)
#include "ZQLaunchdTest.moc"
