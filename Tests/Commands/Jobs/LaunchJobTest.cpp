// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/Jobs/LaunchJob.h"

#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <array>

using platform::LaunchJob;
using KeepAlive = platform::LaunchJob::KeepAlive;

namespace {

const QByteArray file("/Library/LaunchAgents/com.example.job.plist");

const std::array pathKeys{"Program", "WorkingDirectory", "StandardInPath", "StandardOutPath",
                          "StandardErrorPath"};

QString text(const char *characters)
{
    return QString::fromUtf8(characters);
}

// A sound job with one key set or, for an invalid value, removed.
QVariantMap jobWith(const char *key, const QVariant &value)
{
    QVariantMap job{{text("Label"), text("com.example.job")},
                    {text("Program"), text("/Library/programs/real/program")}};
    if (value.isValid()) {
        job.insert(text(key), value);
    } else {
        job.remove(text(key));
    }
    return job;
}

std::optional<LaunchJob> read(const QVariantMap &dictionary, QString *error)
{
    return platform::launchJobFromData(platform::propertyListToXml(dictionary), file, error);
}

std::optional<LaunchJob> read(const char *key, const QVariant &value)
{
    QString error;
    auto job = read(jobWith(key, value), &error);
    if (!job) {
        qWarning("%s", qPrintable(error));
    }
    return job;
}

void write(const QString &path, const QByteArray &contents, uint mode)
{
    QFile out(path);
    QVERIFY(out.open(QIODevice::WriteOnly));
    QCOMPARE(out.write(contents), contents.size());
    out.close();
    QCOMPARE(::chmod(path.toUtf8().constData(), mode), 0);
}

} // namespace

class LaunchJobTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void theListenersJobIsRead();
    void everyOtherKeyIsRead();
    void whatIsNotGivenHasItsDefault();
    void keepAliveIsATruthValueOrADictionary();
    void aJobThatIsKeptAliveStartsAtLoad();
    void programArgumentsAloneNameTheProgram();
    void bytesThatAreNotUtf8AreGivenAsData();
    void aUmaskMayBeOctalText();
    void aWrongJobIsRefusedWithFileAndReason_data();
    void aWrongJobIsRefusedWithFileAndReason();
    void theLongestPathIsTaken();
    void aProgramAmongTheArgumentsIsAPathToo();
    void bytesThatAreNoDictionaryAreRefused();
    void aFileOfAnotherUserIsRefused();
    void aFileThatOthersMayWriteToIsRefused();
    void onlyARegularFileIsRead();
    void aFileLargerThanAnyJobIsRefused();
    void aComputersJobWhoseProgramOthersCanChangeIsRefused_data();
    void aComputersJobWhoseProgramOthersCanChangeIsRefused();
    void aComputersJobInAFolderThatOthersCanChangeIsRefused();
    void aUsersOwnJobMayRunWhatItLikesUnlessItIsRoots();
    void aDisabledJobsProgramIsNotJudged();
    void theLabelComesFromTheFilesName_data();
    void theLabelComesFromTheFilesName();
    void messagesHoldNoControlCharacters();
};

// Has a program at a path of its own, by way of a folder and of a link.
void LaunchJobTest::initTestCase()
{
    QVERIFY(QDir().mkpath(text("/Library/LaunchAgents")));
    QVERIFY(QDir().mkpath(text("/Library/programs/real")));
    QVERIFY(QDir().mkpath(text("/Library/programs/links")));
    write(text("/Library/programs/real/program"), "#!/bin/sh\n", 0755);
    QVERIFY(QFile::link(text("../real"), text("/Library/programs/links/link")));
    QVERIFY(QDir().mkpath(text("/Library/Ostrel.prefPane/Contents/MacOS")));
    write(text("/Library/Ostrel.prefPane/Contents/MacOS/OstrelListener"), "#!/bin/sh\n", 0755);
}

void LaunchJobTest::theListenersJobIsRead()
{
    const QVariantMap settings{
        {text("Label"), text("com.corvane.OstrelListener")},
        {text("Program"), text("/Library/Ostrel.prefPane/Contents/MacOS/OstrelListener")},
        {text("WorkingDirectory"), text("/Library/Ostrel.prefPane/Contents/MacOS")},
        {text("RunAtLoad"), true},
        {text("KeepAlive"), QVariantMap{{text("SuccessfulExit"), false}}}};
    const QByteArray path("/Library/LaunchAgents/com.corvane.OstrelListener.plist");
    write(QString::fromUtf8(path), platform::propertyListToXml(settings), 0644);
    QString error;
    const auto job = platform::launchJobFromFile(path, &error);
    QVERIFY2(job, qPrintable(error));
    QCOMPARE(job->file, path);
    QCOMPARE(job->label, QByteArray("com.corvane.OstrelListener"));
    QCOMPARE(job->program, QByteArray("/Library/Ostrel.prefPane/Contents/MacOS/OstrelListener"));
    QCOMPARE(job->arguments, QByteArrayList{job->program});
    QCOMPARE(job->workingDirectory, QByteArray("/Library/Ostrel.prefPane/Contents/MacOS"));
    QVERIFY(job->runAtLoad);
    QVERIFY(job->keepAlive == KeepAlive::AfterFailure);
}

void LaunchJobTest::everyOtherKeyIsRead()
{
    QString error;
    const auto job =
        read({{text("Label"), text("com.example.job")},
              {text("Program"), text("/bin/true")},
              {text("ProgramArguments"), QVariantList{text("me"), text(""), text("-x")}},
              {text("EnvironmentVariables"), QVariantMap{{text("A_1"), text("b=c\nd\t%$\"")}}},
              {text("StandardInPath"), text("/in")},
              {text("StandardOutPath"), text("/out")},
              {text("StandardErrorPath"), text("/error")},
              {text("Nice"), -5LL},
              {text("Umask"), 18LL},
              {text("ThrottleInterval"), 3LL},
              {text("ProcessType"), text("Background")},
              {text("Disabled"), true}},
             &error);
    QVERIFY2(job, qPrintable(error));
    QCOMPARE(job->arguments, (QByteArrayList{"me", "", "-x"}));
    QCOMPARE(job->environment, QByteArrayList{"A_1=b=c\nd\t%$\""});
    QCOMPARE(job->standardInPath, QByteArray("/in"));
    QCOMPARE(job->standardOutPath, QByteArray("/out"));
    QCOMPARE(job->standardErrorPath, QByteArray("/error"));
    QCOMPARE(job->nice.value_or(0), -5);
    QCOMPARE(job->umask.value_or(0), mode_t(022));
    QCOMPARE(job->throttleInterval, std::chrono::seconds(3));
    QVERIFY(job->isBackground);
    QVERIFY(job->isDisabled);
    QVERIFY(!job->startsAtLoad());
}

void LaunchJobTest::whatIsNotGivenHasItsDefault()
{
    const auto job = read("Disabled", false);
    QVERIFY(job);
    QCOMPARE(job->workingDirectory, QByteArray("/"));
    QCOMPARE(job->throttleInterval, std::chrono::seconds(10));
    QVERIFY(job->keepAlive == KeepAlive::Never);
    QVERIFY(!job->isDisabled && !job->isBackground && !job->runAtLoad);
    QVERIFY(!job->nice && !job->umask && job->environment.isEmpty());
}

void LaunchJobTest::keepAliveIsATruthValueOrADictionary()
{
    const auto dictionary = [](bool value) { return QVariantMap{{text("SuccessfulExit"), value}}; };
    QVERIFY(read("KeepAlive", true)->keepAlive == KeepAlive::Always);
    QVERIFY(read("KeepAlive", false)->keepAlive == KeepAlive::Never);
    QVERIFY(read("KeepAlive", dictionary(true))->keepAlive == KeepAlive::AfterSuccess);
    QVERIFY(read("KeepAlive", dictionary(false))->keepAlive == KeepAlive::AfterFailure);
}

void LaunchJobTest::aJobThatIsKeptAliveStartsAtLoad()
{
    QVERIFY(read("KeepAlive", true)->startsAtLoad());
    QVERIFY(read("RunAtLoad", true)->startsAtLoad());
    QVERIFY(!read("RunAtLoad", false)->startsAtLoad());
}

void LaunchJobTest::programArgumentsAloneNameTheProgram()
{
    QString error;
    const auto job = read({{text("Label"), text("com.example.job")},
                           {text("ProgramArguments"), QVariantList{text("/bin/echo"), text("x")}}},
                          &error);
    QVERIFY2(job, qPrintable(error));
    QCOMPARE(job->program, QByteArray("/bin/echo"));
    QCOMPARE(job->arguments, (QByteArrayList{"/bin/echo", "x"}));
}

void LaunchJobTest::bytesThatAreNotUtf8AreGivenAsData()
{
    QCOMPARE(read("Program", QByteArray("/bin/\xFF\n-"))->program, QByteArray("/bin/\xFF\n-"));
    QCOMPARE(read("ProgramArguments", QVariantList{QByteArray("\xFE")})->arguments,
             QByteArrayList{"\xFE"});
}

void LaunchJobTest::aUmaskMayBeOctalText()
{
    QCOMPARE(read("Umask", text("027"))->umask.value_or(0), mode_t(027));
}

void LaunchJobTest::aWrongJobIsRefusedWithFileAndReason_data()
{
    QTest::addColumn<QVariantMap>("job");
    QTest::addColumn<QString>("reason");
    const auto row = [](const QByteArray &name, const char *key, const QVariant &value,
                        const QByteArray &reason) {
        QTest::newRow(name.constData()) << jobWith(key, value) << text(reason.constData());
    };
    row("no label", "Label", {}, "the key \"Label\" is missing");
    row("label of a wrong type", "Label", 5, "the key \"Label\" must be a string");
    row("empty label", "Label", text(""), "the key \"Label\" is empty");
    row("label with a slash", "Label", text("a/b"),
        "the key \"Label\" holds a slash or a control character");
    row("label with a line break", "Label", text("a\nb"),
        "the key \"Label\" holds a slash or a control character");
    row("label that begins with a dot", "Label", text(".job"),
        "the key \"Label\" begins with a dot");
    for (const auto *noncharacter : {"\uFDD0", "\uFDEF", "\U0001FFFF", "\U0010FFFE"}) {
        const auto with = [&](const char *what) {
            return QByteArray(what) + " with " + QByteArray(noncharacter).toHex();
        };
        const QByteArray path = QByteArray("/bin/") + noncharacter;
        row(with("label"), "Label", QString(text("a") + text(noncharacter)),
            R"(the key "Label" holds a noncharacter)");
        row(with("variable"), "EnvironmentVariables",
            QVariantMap{{text("A"), text(path.constData())}},
            R"(the key "EnvironmentVariables" has a noncharacter in the value of A)");
        row(with("argument"), "ProgramArguments", QVariantList{text("a"), path},
            R"(the key "ProgramArguments" holds a noncharacter)");
        for (const auto *key : pathKeys) {
            row(with(key), key, path, "the key \"" + QByteArray(key) + "\" holds a noncharacter");
        }
    }
    // XML has no place for this one but among bytes.
    row("bytes with U+FFFE", "Program", QByteArray("/bin/\uFFFE"),
        R"(the key "Program" holds a noncharacter)");
    const QString longest(text("/") + QString(255, QChar(u'x')));
    for (const auto *key : pathKeys) {
        const QByteArray begin = "the key \"" + QByteArray(key) + "\" is a path ";
        row(key + QByteArray(" with a long name"), key, QString(longest + text("x")),
            begin + "with a name of more than 255 bytes");
        row(key + QByteArray(" of 4096 bytes"), key, longest.repeated(16),
            begin + "of more than 4095 bytes");
    }
    row("label too long for a unit", "Label", QString(100, QChar(u'-')),
        "the key \"Label\" is too long");
    row("another label than the file's", "Label", text("com.example.other"),
        "a job with the label \"com.example.other\" belongs in a file "
        "\"com.example.other.plist\"");
    row("no program", "Program", {},
        R"(the keys "Program" and "ProgramArguments" are both missing)");
    row("relative program", "Program", text("bin/true"),
        "the key \"Program\" must be an absolute path");
    row("program that is a folder", "Program", text("/bin/"), "the program is a folder");
    row("program of a wrong type", "Program", true, "the key \"Program\" must be a string");
    row("program with a null", "Program", QByteArray("/a\0b", 4),
        "the key \"Program\" holds a null character");
    row("program too long", "Program", QString(text("/") + QString(100001, QChar(u'x'))),
        "the key \"Program\" is too long");
    row("no arguments", "ProgramArguments", QVariantList(),
        "the key \"ProgramArguments\" must be an array of 1 to 4096 strings");
    row("argument of a wrong type", "ProgramArguments", QVariantList{text("a"), 1},
        "the key \"ProgramArguments\" must be a string");
    row("arguments too long together", "ProgramArguments",
        QVariantList{QString(60000, QChar(u'x')), QString(60000, QChar(u'x'))},
        "the key \"ProgramArguments\" is too long");
    row("relative folder", "WorkingDirectory", text("."),
        "the key \"WorkingDirectory\" must be an absolute path");
    row("truth value as text", "RunAtLoad", text("yes"),
        "the key \"RunAtLoad\" must be true or false");
    row("truth value as number", "RunAtLoad", 1, "the key \"RunAtLoad\" must be true or false");
    row("kept alive by a number", "KeepAlive", 1,
        "the key \"KeepAlive\" must be true, false or a dictionary");
    row("kept alive by the network", "KeepAlive", QVariantMap{{text("NetworkState"), true}},
        R"(the key "KeepAlive" may only hold "SuccessfulExit", true or false)");
    row("kept alive by two", "KeepAlive",
        QVariantMap{{text("SuccessfulExit"), true}, {text("Crashed"), true}},
        R"(the key "KeepAlive" may only hold "SuccessfulExit", true or false)");
    row("kept alive by a text", "KeepAlive", QVariantMap{{text("SuccessfulExit"), text("no")}},
        R"(the key "KeepAlive" may only hold "SuccessfulExit", true or false)");
    row("environment as list", "EnvironmentVariables", QVariantList{text("A=b")},
        "the key \"EnvironmentVariables\" must be a dictionary of strings");
    row("environment of numbers", "EnvironmentVariables", QVariantMap{{text("A"), 1}},
        "the key \"EnvironmentVariables\" must be a dictionary of strings");
    row("variable name with a digit first", "EnvironmentVariables",
        QVariantMap{{text("1A"), text("")}},
        R"(the key "EnvironmentVariables" has the name "1A", which no environment variable has)");
    row("variable name with an equals sign", "EnvironmentVariables",
        QVariantMap{{text("A=B"), text("")}},
        R"(the key "EnvironmentVariables" has the name "A=B", which no environment variable has)");
    row("variable with a control character", "EnvironmentVariables",
        QVariantMap{{text("A"), text("\x7F")}},
        "the key \"EnvironmentVariables\" has control characters in the value of A");
    row("too nice", "Nice", 20, "the key \"Nice\" must be an integer from -20 to 19");
    row("nice by half", "Nice", 0.5, "the key \"Nice\" must be an integer from -20 to 19");
    row("mask too large", "Umask", 512, "the key \"Umask\" must be an integer from 0 to 511");
    row("mask not octal", "Umask", text("9"), "the key \"Umask\" must be an integer from 0 to 511");
    row("no pause", "ThrottleInterval", 0,
        "the key \"ThrottleInterval\" must be an integer from 1 to 86400");
    row("endless pause", "ThrottleInterval", QVariant::fromValue(~0ULL),
        "the key \"ThrottleInterval\" must be an integer from 1 to 86400");
    row("unknown kind", "ProcessType", text("Fast"),
        "the key \"ProcessType\" must be Background, Standard, Adaptive or Interactive");
    for (const auto *key : {"Sockets", "StartInterval", "UserName", "label", "X\n%1"}) {
        row(key, key, true,
            "the key \"" + QByteArray(key).replace('\n', "\uFFFD") + "\" has no meaning here");
    }
}

void LaunchJobTest::theLongestPathIsTaken()
{
    const auto path = (text("/") + QString(255, QChar(u'x'))).repeated(16).chopped(1);
    for (const auto *key : pathKeys) {
        QVERIFY2(read(key, path), key);
    }
}

void LaunchJobTest::aProgramAmongTheArgumentsIsAPathToo()
{
    QString error;
    const QString path(text("/") + QString(256, QChar(u'x')));
    QVERIFY(!read(
        {{text("Label"), text("com.example.job")}, {text("ProgramArguments"), QVariantList{path}}},
        &error));
    QCOMPARE(error,
             text("/Library/LaunchAgents/com.example.job.plist: the key \"ProgramArguments\" "
                  "is a path with a name of more than 255 bytes"));
}

void LaunchJobTest::aWrongJobIsRefusedWithFileAndReason()
{
    QFETCH(QVariantMap, job);
    QFETCH(QString, reason);
    QString error;
    QVERIFY(!read(job, &error));
    QCOMPARE(error, QString(QString::fromUtf8(file) + text(": ") + reason));
}

void LaunchJobTest::bytesThatAreNoDictionaryAreRefused()
{
    for (const auto &data : {QByteArray(), QByteArray("junk"), QByteArray("bplist00"),
                             platform::propertyListToXml(QVariantList{1})}) {
        QString error;
        QVERIFY(!platform::launchJobFromData(data, file, &error));
        QCOMPARE(error, text("/Library/LaunchAgents/com.example.job.plist: not a property list "
                             "with a dictionary"));
    }
}

void LaunchJobTest::aFileOfAnotherUserIsRefused()
{
    struct stat status {};
    status.st_mode = S_IFREG | 0644;
    status.st_uid = 1001;
    QCOMPARE(platform::launchFileObjection(status, 1000),
             text("Dubious ownership: the file belongs to another user"));
    QCOMPARE(platform::launchFileObjection(status, 0),
             text("Dubious ownership: the file belongs to another user"));
    QVERIFY(platform::launchFileObjection(status, 1001).isNull());
    status.st_uid = 0;
    QVERIFY(platform::launchFileObjection(status, 1000).isNull());
}

void LaunchJobTest::aFileThatOthersMayWriteToIsRefused()
{
    const auto path = QString::fromUtf8(file);
    const auto contents = platform::propertyListToXml(jobWith("RunAtLoad", true));
    for (const auto mode : {0664U, 0646U, 0666U}) {
        write(path, contents, mode);
        QString error;
        QVERIFY(!platform::launchJobFromFile(file, &error));
        QCOMPARE(error, QString(path + text(": Dubious ownership: others than the owner may write "
                                            "to the file")));
    }
    write(path, contents, 0600);
    QString error;
    QVERIFY2(platform::launchJobFromFile(file, &error), qPrintable(error));
}

void LaunchJobTest::onlyARegularFileIsRead()
{
    const QByteArray pipe("/Library/LaunchAgents/pipe.plist");
    QCOMPARE(::mkfifo(pipe.constData(), 0600), 0);
    QString error;
    QVERIFY(!platform::launchJobFromFile(pipe, &error));
    QCOMPARE(error, QString(QString::fromUtf8(pipe) + text(": not a regular file")));
    QVERIFY(!platform::launchJobFromFile("/Library/LaunchAgents", &error));
    QVERIFY(!platform::launchJobFromFile("/Library/LaunchAgents/none.plist", &error));
    QCOMPARE(error, text("/Library/LaunchAgents/none.plist: No such file or directory"));
}

void LaunchJobTest::aFileLargerThanAnyJobIsRefused()
{
    auto contents = platform::propertyListToXml(jobWith("RunAtLoad", true));
    contents = contents.leftJustified(static_cast<int>(platform::maximumLaunchJobSize), '\n');
    write(QString::fromUtf8(file), contents, 0644);
    QString error;
    QVERIFY2(platform::launchJobFromFile(file, &error), qPrintable(error));
    write(QString::fromUtf8(file), contents + '\n', 0644);
    QVERIFY(!platform::launchJobFromFile(file, &error));
    QVERIFY2(error.endsWith(text(": larger than any job file")), qPrintable(error));
}

void LaunchJobTest::aComputersJobWhoseProgramOthersCanChangeIsRefused_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<uint>("mode");
    const auto program = text("/Library/programs/real/program").toUtf8();
    QTest::newRow("everybody the program") << program << 0777U;
    QTest::newRow("a group the program") << program << 0775U;
    QTest::newRow("everybody its folder") << QByteArray("/Library/programs/real") << 0777U;
    QTest::newRow("a sticky folder") << QByteArray("/Library/programs/real") << 01777U;
    QTest::newRow("a folder above") << QByteArray("/Library/programs") << 0777U;
    QTest::newRow("the folder of a link") << QByteArray("/Library/programs/links") << 01777U;
}

void LaunchJobTest::aComputersJobWhoseProgramOthersCanChangeIsRefused()
{
    QFETCH(QByteArray, path);
    QFETCH(uint, mode);
    const auto program = text("/Library/programs/links/link/program");
    for (const auto &job :
         {jobWith("Program", program),
          QVariantMap{{text("Label"), text("com.example.job")},
                      {text("ProgramArguments"), QVariantList{program, text("argument")}}}}) {
        write(QString::fromUtf8(file), platform::propertyListToXml(job), 0644);
        QString error;
        QVERIFY2(platform::launchJobFromFile(file, &error), qPrintable(error));
        struct stat before {};
        QCOMPARE(::stat(path.constData(), &before), 0);
        QCOMPARE(::chmod(path.constData(), mode), 0);
        const auto refused = !platform::launchJobFromFile(file, &error);
        QCOMPARE(::chmod(path.constData(), before.st_mode & 07777U), 0);
        if (mode == 0775U && ::geteuid() != 0) {
            QVERIFY(!refused); // "tester" is alone in the group "tester"
            continue;
        }
        QVERIFY(refused);
        QCOMPARE(error,
                 QString(QString::fromUtf8(file) + text(": others could change what it runs: ") +
                         QString::fromUtf8(path) + text(" can be changed by ") +
                         (mode == 0775U ? text("group 0") : text("everybody"))));
    }
}

void LaunchJobTest::aComputersJobInAFolderThatOthersCanChangeIsRefused()
{
    write(QString::fromUtf8(file), platform::propertyListToXml(jobWith("RunAtLoad", true)), 0644);
    QCOMPARE(::chmod("/Library/LaunchAgents", 01777), 0);
    QString error;
    const auto refused = !platform::launchJobFromFile(file, &error);
    QCOMPARE(::chmod("/Library/LaunchAgents", 0755), 0);
    QVERIFY(refused);
    QCOMPARE(error, QString(QString::fromUtf8(file) +
                            text(": others could put another file there: /Library/LaunchAgents can "
                                 "be changed by everybody")));
    QVERIFY2(platform::launchJobFromFile(file, &error), qPrintable(error));
}

void LaunchJobTest::aUsersOwnJobMayRunWhatItLikesUnlessItIsRoots()
{
    const auto folder = QDir::homePath() + text("/Library/LaunchAgents");
    QVERIFY(QDir().mkpath(folder));
    const auto own = folder + text("/com.example.job.plist");
    const auto program = text("/Library/programs/real/program");
    write(own, platform::propertyListToXml(jobWith("Program", program)), 0644);
    QCOMPARE(::chmod("/Library/programs/real", 0777), 0);
    QString error;
    const auto job = platform::launchJobFromFile(own.toUtf8(), &error);
    QCOMPARE(::chmod("/Library/programs/real", 0755), 0);
    QCOMPARE(job.has_value(), ::geteuid() != 0);
    QVERIFY(QFile::remove(own));
}

void LaunchJobTest::aDisabledJobsProgramIsNotJudged()
{
    auto settings = jobWith("Disabled", true);
    settings.insert(text("Program"), text("/nowhere"));
    write(QString::fromUtf8(file), platform::propertyListToXml(settings), 0644);
    QString error;
    QVERIFY2(platform::launchJobFromFile(file, &error), qPrintable(error));
    settings.remove(text("Disabled"));
    write(QString::fromUtf8(file), platform::propertyListToXml(settings), 0644);
    QVERIFY(!platform::launchJobFromFile(file, &error));
    QCOMPARE(error, QString(QString::fromUtf8(file) +
                            text(": /nowhere cannot be run: No such file or directory")));
}

void LaunchJobTest::theLabelComesFromTheFilesName_data()
{
    QTest::addColumn<QByteArray>("path");
    QTest::addColumn<QByteArray>("label");
    QTest::newRow("usual") << QByteArray("/a/com.x.y.plist") << QByteArray("com.x.y");
    QTest::newRow("no folder") << QByteArray("x.plist") << QByteArray("x");
    QTest::newRow("dash and quotes") << QByteArray("/-'\"%.plist") << QByteArray("-'\"%");
    QTest::newRow("other ending") << QByteArray("/a/com.x.y") << QByteArray();
    QTest::newRow("nothing before the ending") << QByteArray("/a/.plist") << QByteArray();
    QTest::newRow("line break") << QByteArray("/a/b\nc.plist") << QByteArray();
    QTest::newRow("not UTF-8") << QByteArray("/a/\xFF.plist") << QByteArray();
}

void LaunchJobTest::theLabelComesFromTheFilesName()
{
    QFETCH(QByteArray, path);
    QFETCH(QByteArray, label);
    QCOMPARE(platform::launchLabelOfFile(path), label);
}

void LaunchJobTest::messagesHoldNoControlCharacters()
{
    QCOMPARE(platform::readableName("a\x1B[31m\n\xFF" + QString(QChar(0x202E)).toUtf8() + 'b'),
             text("a\uFFFD[31m\uFFFD\uFFFD\uFFFDb"));
    QCOMPARE(platform::readableName("Grüße 🎹 %1"), text("Grüße 🎹 %1"));
}

TEST_CLASS(LaunchJobTest, QCoreApplication)
#include "LaunchJobTest.moc"
