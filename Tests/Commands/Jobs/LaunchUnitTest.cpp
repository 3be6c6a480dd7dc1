// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/Jobs/LaunchUnit.h"

#include "Tests/Support/TestProgram.h"

#include <QTest>

using KeepAlive = platform::LaunchJob::KeepAlive;

namespace {

platform::LaunchJob plainJob()
{
    platform::LaunchJob job;
    job.file = "/Library/LaunchAgents/com.example.job.plist";
    job.label = "com.example.job";
    job.program = "/bin/true";
    job.arguments = {"/bin/true"};
    return job;
}

// The values of a setting in the job's unit.
QByteArrayList settings(const platform::LaunchJob &job, const QByteArray &name)
{
    QByteArrayList values;
    const auto lines = platform::launchUnitFile(job).split('\n');
    for (const auto &line : lines) {
        if (line.startsWith(name + '=')) {
            values << line.mid(name.size() + 1);
        }
    }
    return values;
}

QByteArray commandOf(const QByteArray &program, const QByteArrayList &arguments)
{
    auto job = plainJob();
    job.program = program;
    job.arguments = arguments;
    return settings(job, "ExecStart").value(0);
}

} // namespace

class LaunchUnitTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theUnitIsNamedAfterTheLabel_data();
    void theUnitIsNamedAfterTheLabel();
    void anotherSpellingIsNoUnitOfOurs();
    void whoCrashesIsBackAfterTheThrottleInterval();
    void noUnitGivesUpStarting();
    void endingBySignalIsNoSuccess();
    void aCommandLineHasNoSpecifiersVariablesAndBreaks();
    void whatSystemdCannotRunAShellRuns();
    void pathsStandAsTheyAre();
    void whatSystemdCannotExpressIsRefused();
    void theUnitLeadsBackToTheJobFile();
    void aFolderThatSystemdCannotNameIsRefused();
};

void LaunchUnitTest::theUnitIsNamedAfterTheLabel_data()
{
    QTest::addColumn<QByteArray>("label");
    QTest::addColumn<QByteArray>("unit");
    const auto row = [](const char *label, const char *unit) {
        QTest::newRow(label) << QByteArray(label) << QByteArray(unit);
    };
    row("com.corvane.OstrelListener", "app-com.corvane.OstrelListener.service");
    row("a-b", "app-a\\x2db.service");
    row("a.b", "app-a.b.service");
    row("a b'\"%$\\@", R"(app-a\x20b\x27\x22\x25\x24\x5c\x40.service)");
    row("gr\xC3\xBC\xC3\x9F", R"(app-gr\xc3\xbc\xc3\x9f.service)");
    row("\\x2d", "app-\\x5cx2d.service");
}

void LaunchUnitTest::theUnitIsNamedAfterTheLabel()
{
    QFETCH(QByteArray, label);
    QFETCH(QByteArray, unit);
    QCOMPARE(platform::launchUnitName(label), unit);
    QCOMPARE(platform::launchUnitLabel(unit), label);
}

void LaunchUnitTest::anotherSpellingIsNoUnitOfOurs()
{
    for (const auto *unit :
         {"", "app-.service", "app-a-b.service", "app-\\x61.service", "app-a.timer", "a.service",
          "app-\\x.service", "app-.a.service", "app-\\x2ea.service", "app-a\\x0a.service",
          "app-a@1.service", "app-\\x2f.service"}) {
        QVERIFY2(platform::launchUnitLabel(unit).isEmpty(), unit);
    }
}

void LaunchUnitTest::whoCrashesIsBackAfterTheThrottleInterval()
{
    auto job = plainJob();
    QCOMPARE(settings(job, "Restart"), QByteArrayList{"no"});
    job.keepAlive = KeepAlive::AfterFailure;
    QCOMPARE(settings(job, "Restart"), QByteArrayList{"on-failure"});
    QCOMPARE(settings(job, "RestartSec"), QByteArrayList{"10"});
    job.keepAlive = KeepAlive::Always;
    job.throttleInterval = std::chrono::seconds(86400);
    QCOMPARE(settings(job, "Restart"), QByteArrayList{"always"});
    QCOMPARE(settings(job, "RestartSec"), QByteArrayList{"86400"});
    job.keepAlive = KeepAlive::AfterSuccess;
    job.throttleInterval = std::chrono::seconds(1);
    QCOMPARE(settings(job, "Restart"), QByteArrayList{"on-success"});
    QCOMPARE(settings(job, "RestartSec"), QByteArrayList{"1"});
}

void LaunchUnitTest::noUnitGivesUpStarting()
{
    auto job = plainJob();
    for (const auto keepAlive :
         {KeepAlive::Never, KeepAlive::Always, KeepAlive::AfterFailure, KeepAlive::AfterSuccess}) {
        job.keepAlive = keepAlive;
        QCOMPARE(settings(job, "StartLimitIntervalSec"), QByteArrayList{"0"});
    }
}

void LaunchUnitTest::endingBySignalIsNoSuccess()
{
    auto job = plainJob();
    const QByteArrayList signalNames{"SIGHUP SIGINT SIGTERM SIGPIPE"};
    job.keepAlive = KeepAlive::AfterFailure;
    QCOMPARE(settings(job, "RestartForceExitStatus"), signalNames);
    job.keepAlive = KeepAlive::AfterSuccess;
    QCOMPARE(settings(job, "RestartPreventExitStatus"), signalNames);
}

void LaunchUnitTest::aCommandLineHasNoSpecifiersVariablesAndBreaks()
{
    const QByteArrayList arguments{"me", "$HOME %h", "a\nb\t\x7F", "\"\\'", "", "-x", "gr\xC3\xBC"};
    const QByteArray expected =
        R"("@:/bin/echo" "me" "$HOME %%h" "a\x0ab\x09\x7f" "\"\\'" "" "-x" "grü")";
    QCOMPARE(commandOf("/bin/echo", arguments), expected);
}

void LaunchUnitTest::whatSystemdCannotRunAShellRuns()
{
    const QByteArray shell = R"(":/bin/sh" "-c" "exec \"$@\"" "sh" )";
    for (const auto *program : {"/a'b", "/a\"b", "/a\\b", "/a\nb", "/a ", "/../b"}) {
        QVERIFY2(commandOf(program, {"me", "x"}).startsWith(shell), program);
    }
}

void LaunchUnitTest::pathsStandAsTheyAre()
{
    auto job = plainJob();
    job.workingDirectory = "/it's \"here\" %h $HOME";
    job.standardInPath = "/in%";
    job.standardOutPath = "/out \\x";
    job.standardErrorPath = "/error";
    QCOMPARE(settings(job, "WorkingDirectory"), QByteArrayList{"/it's \"here\" %%h $HOME"});
    QCOMPARE(settings(job, "StandardInput"), QByteArrayList{"file:/in%%"});
    QCOMPARE(settings(job, "StandardOutput"), QByteArrayList{"append:/out \\x"});
    QCOMPARE(settings(job, "StandardError"), QByteArrayList{"append:/error"});
    QVERIFY(platform::launchUnitObjection(job).isNull());
}

void LaunchUnitTest::theUnitLeadsBackToTheJobFile()
{
    auto job = plainJob();
    job.file = "/home/an n/100%/com.example.job.plist";
    QCOMPARE(settings(job, "SourcePath"), QByteArrayList{"/home/an n/100%%/com.example.job.plist"});
    QCOMPARE(settings(job, "Documentation"),
             QByteArrayList{"file:///home/an%%20n/100%%25/com.example.job.plist"});
}

void LaunchUnitTest::aFolderThatSystemdCannotNameIsRefused()
{
    auto job = plainJob();
    QVERIFY(platform::launchUnitObjection(job).isNull());
    job.file = "/home/a\nb/com.example.job.plist";
    QCOMPARE(platform::launchUnitObjection(job),
             QString::fromUtf8("/home/a\uFFFDb/com.example.job.plist: systemd cannot take a job "
                               "file in a folder with such a name"));
}

void LaunchUnitTest::whatSystemdCannotExpressIsRefused()
{
    const QByteArrayList paths{"/a\nb", "/out\\", "/out ", "/a/../b", "/a\xFF", "/a\xEF\xBF\xBE"};
    for (const auto &path : paths) {
        for (QByteArray platform::LaunchJob::*const place :
             {&platform::LaunchJob::workingDirectory, &platform::LaunchJob::standardInPath,
              &platform::LaunchJob::standardOutPath, &platform::LaunchJob::standardErrorPath}) {
            auto job = plainJob();
            job.*place = path;
            QCOMPARE(platform::launchUnitObjection(job),
                     QStringLiteral("/Library/LaunchAgents/com.example.job.plist: systemd cannot "
                                    "take a path with such a name: ") +
                         platform::readableName(path));
        }
    }
    auto job = plainJob();
    job.program = "/a\xFF";
    const auto notUtf8 =
        QString::fromUtf8("/Library/LaunchAgents/com.example.job.plist: systemd cannot take what "
                          "is not UTF-8: /a\uFFFD");
    QCOMPARE(platform::launchUnitObjection(job), notUtf8);
    job = plainJob();
    job.arguments << "/a\xFF";
    QCOMPARE(platform::launchUnitObjection(job), notUtf8);
}

TEST_CLASS(LaunchUnitTest, QCoreApplication)
#include "LaunchUnitTest.moc"
