// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Support/ZQSoftwareUpdate.h"

#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/Faults/Faults.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"
#include "Tests/Support/UpdaterForTest.h"

#include <QDateTime>
#include <QDir>
#include <QProcess>
#include <QTest>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace updater = test::updater;

namespace {

const auto bundle = QStringLiteral("/tmp/Host of the updater.prefPane");
const auto name = QStringLiteral("Corvane Software Update.app");

QString enclosed()
{
    return bundle + QStringLiteral("/Contents/Resources/") + name;
}

QString workingCopy()
{
    return ZQLocalPaths::tempDirectory() + QLatin1Char('/') + name;
}

QString executable(const QString &path)
{
    return path + QStringLiteral("/Contents/MacOS/updater");
}

QString checkBy(const QString &path)
{
    return executable(path) + QStringLiteral(" [-checkpath] [") + bundle + QLatin1Char(']');
}

// Lets a program in that bundle carry out commands. What it prints, one line each.
QStringList run(const QStringList &commands)
{
    const auto program = bundle + QStringLiteral("/Contents/MacOS/program");
    if (!QFile::exists(program)) {
        QDir().mkpath(bundle + QStringLiteral("/Contents/MacOS"));
        if (!QFile::copy(QStringLiteral(UPDATE_PROGRAM), program)) {
            qFatal("cannot copy the program");
        }
    }
    QProcess process;
    process.start(program, commands);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        qFatal("the program failed: %s", process.readAllStandardError().constData());
    }
    auto lines = QString::fromUtf8(process.readAllStandardOutput()).split(QLatin1Char('\n'));
    lines.removeLast();
    return lines;
}

// The same program, which stops before every renaming and removing.
class StoppingProgram {
public:
    explicit StoppingProgram(const QString &command)
    {
        const auto program = (bundle + QStringLiteral("/Contents/MacOS/program")).toUtf8();
        const auto fault = QByteArray::number(test::Rename | test::Remove) + " 1 " +
                           QByteArray::number(static_cast<int>(test::Outcome::Stops)) + " 0 1";
        const test::EnvironmentVariable variable("FAULT", fault);
        const test::EnvironmentVariable library("LD_PRELOAD", FAULTS_LIBRARY);
        const auto argument = command.toUtf8();
        m_process = ::fork();
        if (m_process == 0) {
            ::execl(program.constData(), program.constData(), argument.constData(), nullptr);
            ::_exit(127);
        }
    }
    ~StoppingProgram()
    {
        if (m_process > 0) {
            ::kill(m_process, SIGKILL);
            ::waitpid(m_process, nullptr, 0);
        }
    }
    StoppingProgram(const StoppingProgram &) = delete;
    StoppingProgram &operator=(const StoppingProgram &) = delete;

    // Lets it go on to where it stops next. False where it has ended.
    bool goOn()
    {
        ::kill(m_process, SIGCONT); // stopped, or only begun
        int status = 0;
        if (::waitpid(m_process, &status, WUNTRACED) == m_process && WIFSTOPPED(status)) {
            return true;
        }
        m_process = -1;
        m_hasSucceeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
        return false;
    }
    bool hasSucceeded() const { return m_hasSucceeded; }

private:
    pid_t m_process = -1;
    bool m_hasSucceeded = false;
};

QStringList temporaryItems()
{
    return QDir(ZQLocalPaths::tempDirectory())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

// What it logs, without the header, for commands that print the same.
QStringList logged(const QStringList &commands)
{
    const auto printed = run(QStringList(QStringLiteral("log")) + commands);
    const auto lines = test::body(
        test::generation(1, QStringLiteral("program"),
                         ::getuid() == 0 ? test::localLogFolder() : test::userLogFolder()));
    return lines == printed ? lines : QStringList(QStringLiteral("printed: ")) + printed;
}

void setCheckAtStartup(const QVariant &value)
{
    const auto folder = ZQLocalPaths::prefsDirectory(Domain::User);
    QDir().mkpath(folder);
    platform::writeDictionaryToFile({{QStringLiteral("SUCheckAtStartup"), value}},
                                    folder + QStringLiteral("/com.corvane.global.plist"));
}

} // namespace

class ZQSoftwareUpdateTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();

    void theNewerOfTwoUpdatersIsChosen_data();
    void theNewerOfTwoUpdatersIsChosen();
    void aNewerEnclosedUpdaterReplacesAnEarlierWorkingCopy();
    void theWorkingCopyIsWhole();
    void theEnclosedUpdaterIsNeverTouched();
    void withoutAnyUpdaterTheInstalledPathIsGiven();
    void aFileOrALinkInTheWorkingCopysPlaceIsReplaced();

    void theAutomaticCheckPassesTheBundlesPath();
    void theAutomaticCheckRunsTheWorkingCopyOfTheEnclosedUpdater();
    void theAutomaticCheckDoesNotWait();
    void withoutAnyUpdaterTheAutomaticCheckLogsThat();
    void anUpdaterWithoutAnExecutableIsLogged();
    void anExecutableThatMayNotBeExecutedIsLogged();
    void overlappingChecksAllRunAWholeUpdater();
    void aCheckNeverTakesTheWorkingCopyOfAnotherAway();
    void aWorkingCopyThatCannotBeMadeIsLoggedWhenRun();

    void theManualCheckLaunchesWithoutArguments();
    void theManualCheckWithoutAnyUpdaterIsSilent();
    void theActionOfAControlIsAManualCheck();

    void startupChecksUnlessTheSettingIsNo_data();
    void startupChecksUnlessTheSettingIsNo();
    void aDamagedPreferencesFileCountsAsYes();
    void awakeFromNibIsStartup();
    void anUpdaterIsAvailableWhenItCanBeLaunched();
};

void ZQSoftwareUpdateTest::init()
{
    test::clearLibraries();
    if (::getuid() == 0) {
        QDir().mkpath(test::localLogFolder()); // root's log wants it there
    }
    for (const auto &path : {updater::installedPath(), enclosed(), workingCopy()}) {
        QFile::remove(path);
        updater::remove(path);
    }
    updater::forget();
}

void ZQSoftwareUpdateTest::theNewerOfTwoUpdatersIsChosen_data()
{
    QTest::addColumn<QVariant>("installed");
    QTest::addColumn<QVariant>("inBundle");
    QTest::addColumn<bool>("isCopied");
    const auto text = [](const char *version) { return QVariant(QLatin1String(version)); };
    QTest::newRow("7 and 8") << text("7") << text("8") << true;
    QTest::newRow("8 and 8") << text("8") << text("8") << false;
    QTest::newRow("9 and 8") << text("9") << text("8") << false;
    QTest::newRow("9 and 10: as numbers") << text("9") << text("10") << true;
    QTest::newRow("3.1 and 3.9: leading integers") << text("3.1") << text("3.9") << false;
    QTest::newRow("3.9 and 3.1") << text("3.9") << text("3.1") << false;
    QTest::newRow("12.5 and 12") << text("12.5") << text("12") << false;
    QTest::newRow("12.5 and 13a") << text("12.5") << text("13a") << true;
    QTest::newRow("white space") << text("7") << text(" \t8") << true;
    QTest::newRow("no number in it") << text("beta") << text("beta 2") << false;
    QTest::newRow("no number and 1") << text("beta") << text("1") << true;
    QTest::newRow("below zero") << text("0") << text("-1") << false;
    QTest::newRow("numbers") << QVariant(7) << QVariant(8) << true;
    QTest::newRow("reals are cut") << QVariant(7.9) << QVariant(7.99999) << false;
    QTest::newRow("beyond 64 bits")
        << text("99999999999999999998") << text("99999999999999999999") << false;
    QTest::newRow("installed without a version") << QVariant() << text("1") << true;
    QTest::newRow("both without a version") << QVariant() << QVariant() << false;
}

void ZQSoftwareUpdateTest::theNewerOfTwoUpdatersIsChosen()
{
    QFETCH(QVariant, installed);
    QFETCH(QVariant, inBundle);
    QFETCH(bool, isCopied);
    updater::make(updater::installedPath(), installed);
    updater::make(enclosed(), inBundle);
    QCOMPARE(run({QStringLiteral("path")}),
             QStringList(isCopied ? workingCopy() : updater::installedPath()));
    QCOMPARE(QFile::exists(workingCopy()), isCopied);
}

void ZQSoftwareUpdateTest::aNewerEnclosedUpdaterReplacesAnEarlierWorkingCopy()
{
    updater::make(workingCopy(), QStringLiteral("99"));
    test::write(workingCopy() + QStringLiteral("/Contents/old"), "old");
    updater::make(updater::installedPath(), QStringLiteral("7"));
    updater::make(enclosed(), QStringLiteral("8"));
    run({QStringLiteral("check")});
    QCOMPARE(updater::waitForRuns(1), QStringList(checkBy(workingCopy())));
    QCOMPARE(test::tree(workingCopy().toStdString()), test::tree(enclosed().toStdString()));
}

void ZQSoftwareUpdateTest::theWorkingCopyIsWhole()
{
    updater::make(enclosed(), QStringLiteral("1"));
    test::makeTree((enclosed() + QStringLiteral("/Contents/Resources")).toStdString());
    // Twice: what is there is removed, folders that let nobody write included.
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(run({QStringLiteral("path")}), QStringList(workingCopy()));
        QCOMPARE(test::tree(workingCopy().toStdString()), test::tree(enclosed().toStdString()));
        QCOMPARE(temporaryItems(), QStringList(name));
    }
    for (const auto &path : {enclosed(), workingCopy()}) {
        const auto closed = path + QStringLiteral("/Contents/Resources/closed");
        ::chmod(closed.toStdString().c_str(), 0700);
    }
}

void ZQSoftwareUpdateTest::theEnclosedUpdaterIsNeverTouched()
{
    updater::make(enclosed(), QStringLiteral("1"));
    const auto before = test::tree(enclosed().toStdString());
    run({QStringLiteral("check"), QStringLiteral("launch")});
    QCOMPARE(updater::waitForRuns(2).size(), 2);
    QCOMPARE(test::tree(enclosed().toStdString()), before);
}

void ZQSoftwareUpdateTest::withoutAnyUpdaterTheInstalledPathIsGiven()
{
    QCOMPARE(run({QStringLiteral("path")}), QStringList(updater::installedPath()));
    QCOMPARE(ZQSoftwareUpdate::updaterPath(), updater::installedPath());
}

void ZQSoftwareUpdateTest::aFileOrALinkInTheWorkingCopysPlaceIsReplaced()
{
    updater::make(enclosed(), QStringLiteral("1"));
    test::write(workingCopy(), "a file");
    QCOMPARE(run({QStringLiteral("path")}), QStringList(workingCopy()));
    QVERIFY(QFileInfo(executable(workingCopy())).isExecutable());
    updater::remove(workingCopy());
    const test::Folder folder;
    test::writeFile(folder / "kept");
    test::makeLink(folder.path(), workingCopy().toStdString());
    QCOMPARE(run({QStringLiteral("path")}), QStringList(workingCopy()));
    QVERIFY(!QFileInfo(workingCopy()).isSymLink());
    QVERIFY(test::exists(folder / "kept"));
}

void ZQSoftwareUpdateTest::theAutomaticCheckPassesTheBundlesPath()
{
    updater::make(updater::installedPath(), QStringLiteral("8"));
    updater::make(enclosed(), QStringLiteral("8"));
    QCOMPARE(logged({QStringLiteral("check")}), QStringList());
    QCOMPARE(updater::waitForRuns(1), QStringList(checkBy(updater::installedPath())));
}

void ZQSoftwareUpdateTest::theAutomaticCheckRunsTheWorkingCopyOfTheEnclosedUpdater()
{
    updater::make(enclosed(), QStringLiteral("1"));
    run({QStringLiteral("check")});
    QCOMPARE(updater::waitForRuns(1), QStringList(checkBy(workingCopy())));
}

void ZQSoftwareUpdateTest::theAutomaticCheckDoesNotWait()
{
    updater::make(updater::installedPath(), QStringLiteral("8"));
    const auto script = executable(updater::installedPath()).toStdString();
    test::writeFile(script, test::readFile(script) + "exec sleep infinity\n");
    run({QStringLiteral("check")});
    QCOMPARE(updater::waitForRuns(1).size(), 1);
}

void ZQSoftwareUpdateTest::withoutAnyUpdaterTheAutomaticCheckLogsThat()
{
    QCOMPARE(logged({QStringLiteral("check")}),
             QStringList(
                 QStringLiteral("Unable to launch Software Update - updater bundle not found.")));
}

void ZQSoftwareUpdateTest::anUpdaterWithoutAnExecutableIsLogged()
{
    const QStringList message(
        QStringLiteral("Unable to launch Software Update - executable path doesn't exist"));
    updater::make(updater::installedPath(), QStringLiteral("8"));
    QFile::remove(executable(updater::installedPath()));
    QCOMPARE(logged({QStringLiteral("check")}), message);
    QCOMPARE(logged({QStringLiteral("launch")}), QStringList());
    updater::remove(updater::installedPath());
    QDir().mkpath(updater::installedPath()); // a folder and nothing in it
    QCOMPARE(logged({QStringLiteral("check")}), message);
    QCOMPARE(updater::runs(), QStringList());
}

void ZQSoftwareUpdateTest::anExecutableThatMayNotBeExecutedIsLogged()
{
    updater::make(updater::installedPath(), QStringLiteral("8"));
    ::chmod(executable(updater::installedPath()).toStdString().c_str(), 0644);
    run({QStringLiteral("log"), QStringLiteral("check")});
    const auto log = test::body(
        test::generation(1, QStringLiteral("program"),
                         ::getuid() == 0 ? test::localLogFolder() : test::userLogFolder()));
    QCOMPARE(log, QStringList(QStringLiteral("Error: %1 is not executable")
                                  .arg(executable(updater::installedPath()))));
}

void ZQSoftwareUpdateTest::overlappingChecksAllRunAWholeUpdater()
{
    updater::make(enclosed(), QStringLiteral("1"));
    run({QStringLiteral("path")});
    constexpr auto checks = 10;
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int i = 0; i < checks; ++i) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->start(bundle + QStringLiteral("/Contents/MacOS/program"),
                                {QStringLiteral("check"), QStringLiteral("launch")});
    }
    for (auto &process : processes) {
        QVERIFY(process->waitForFinished());
        QCOMPARE(process->exitCode(), 0);
    }
    QCOMPARE(updater::waitForRuns(2 * checks).size(), 2 * checks);
    QCOMPARE(test::tree(workingCopy().toStdString()), test::tree(enclosed().toStdString()));
    // Nor is anything left of those that were replaced.
    QCOMPARE(temporaryItems(), QStringList(name));
}

// Another check is done, as a whole, at each place where the first one can meet it.
void ZQSoftwareUpdateTest::aCheckNeverTakesTheWorkingCopyOfAnotherAway()
{
    updater::make(enclosed(), QStringLiteral("1"));
    run({QStringLiteral("path")});
    auto places = 1;
    for (int meeting = 1; meeting <= places; ++meeting) {
        updater::remove(workingCopy());
        StoppingProgram first(QStringLiteral("path"));
        auto stops = 0;
        while (first.goOn()) {
            ++stops;
            if (stops == meeting) {
                QCOMPARE(run({QStringLiteral("path")}), QStringList(workingCopy()));
            }
            QVERIFY2(stops < meeting || QFileInfo(executable(workingCopy())).isExecutable(),
                     qPrintable(QStringLiteral("met at %1, gone at %2").arg(meeting).arg(stops)));
        }
        QVERIFY(first.hasSucceeded());
        QCOMPARE(test::tree(workingCopy().toStdString()), test::tree(enclosed().toStdString()));
        QCOMPARE(temporaryItems(), QStringList(name));
        places = stops;
    }
    QVERIFY(places > 1);
}

void ZQSoftwareUpdateTest::aWorkingCopyThatCannotBeMadeIsLoggedWhenRun()
{
    updater::make(workingCopy(), QStringLiteral("1"));
    updater::make(enclosed(), QStringLiteral("2"));
    // A limit on the size of files stands for the full disk; the earlier copy must not be run.
    test::write(enclosed() + QStringLiteral("/Contents/large"), QByteArray(2'000'000, 'l'));
    const auto before = test::tree(enclosed().toStdString());
    run({});
    QProcess shell;
    shell.start(QStringLiteral("/bin/sh"),
                {QStringLiteral("-c"), QStringLiteral("trap '' XFSZ; ulimit -f 1000; "
                                                      "exec '%1/Contents/MacOS/program' check")
                                           .arg(bundle)});
    QVERIFY(shell.waitForFinished());
    QVERIFY(shell.readAllStandardOutput().contains(
        "Unable to launch Software Update - updater bundle not found.\n"));
    QVERIFY(!QFile::exists(workingCopy()));
    QCOMPARE(updater::runs(), QStringList());
    QCOMPARE(test::tree(enclosed().toStdString()), before);
}

void ZQSoftwareUpdateTest::theManualCheckLaunchesWithoutArguments()
{
    updater::make(updater::installedPath(), QStringLiteral("7"));
    QCOMPARE(logged({QStringLiteral("launch")}), QStringList());
    QCOMPARE(updater::waitForRuns(1), QStringList(executable(updater::installedPath())));
    updater::forget();
    updater::make(enclosed(), QStringLiteral("8"));
    run({QStringLiteral("launch")});
    QCOMPARE(updater::waitForRuns(1), QStringList(executable(workingCopy())));
}

void ZQSoftwareUpdateTest::theManualCheckWithoutAnyUpdaterIsSilent()
{
    QCOMPARE(logged({QStringLiteral("launch")}), QStringList());
}

void ZQSoftwareUpdateTest::theActionOfAControlIsAManualCheck()
{
    updater::make(updater::installedPath(), QStringLiteral("7"));
    run({QStringLiteral("action")});
    QCOMPARE(updater::waitForRuns(1), QStringList(executable(updater::installedPath())));
}

void ZQSoftwareUpdateTest::startupChecksUnlessTheSettingIsNo_data()
{
    QTest::addColumn<QVariant>("setting");
    QTest::addColumn<bool>("checks");
    QTest::newRow("missing") << QVariant() << true;
    QTest::newRow("YES") << QVariant(true) << true;
    QTest::newRow("NO") << QVariant(false) << false;
    QTest::newRow("0") << QVariant(0) << false;
    QTest::newRow("0.0") << QVariant(0.0) << false;
    QTest::newRow("1") << QVariant(1) << true;
    QTest::newRow("text NO") << QVariant(QStringLiteral("NO")) << true;
    QTest::newRow("text 0") << QVariant(QStringLiteral("0")) << true;
}

void ZQSoftwareUpdateTest::startupChecksUnlessTheSettingIsNo()
{
    QFETCH(QVariant, setting);
    QFETCH(bool, checks);
    if (setting.isValid()) {
        setCheckAtStartup(setting);
    }
    updater::make(updater::installedPath(), QStringLiteral("8"));
    run({QStringLiteral("startup")});
    if (!checks) {
        QTest::qWait(300); // for a run that would be wrong
    }
    QCOMPARE(updater::waitForRuns(checks ? 1 : 0),
             checks ? QStringList(checkBy(updater::installedPath())) : QStringList());
}

void ZQSoftwareUpdateTest::aDamagedPreferencesFileCountsAsYes()
{
    test::write(ZQLocalPaths::prefsDirectory(Domain::User) +
                    QStringLiteral("/com.corvane.global.plist"),
                "<plist><dict><key>SUCheckAtStartup");
    updater::make(updater::installedPath(), QStringLiteral("8"));
    run({QStringLiteral("startup")});
    QCOMPARE(updater::waitForRuns(1).size(), 1);
}

void ZQSoftwareUpdateTest::awakeFromNibIsStartup()
{
    updater::make(updater::installedPath(), QStringLiteral("8"));
    run({QStringLiteral("awake")});
    QCOMPARE(updater::waitForRuns(1), QStringList(checkBy(updater::installedPath())));
}

void ZQSoftwareUpdateTest::anUpdaterIsAvailableWhenItCanBeLaunched()
{
    const QStringList available(QStringLiteral("available"));
    QCOMPARE(run(available), QStringList(QStringLiteral("no")));
    updater::make(enclosed(), QStringLiteral("1"));
    QCOMPARE(run(available), QStringList(QStringLiteral("yes")));
    updater::remove(enclosed());
    updater::make(updater::installedPath(), QStringLiteral("1"));
    QCOMPARE(run(available), QStringList(QStringLiteral("yes")));
    QFile::remove(executable(updater::installedPath()));
    QCOMPARE(run(available), QStringList(QStringLiteral("no")));
}

TEST_CLASS(ZQSoftwareUpdateTest, QCoreApplication)
#include "ZQSoftwareUpdateTest.moc"
