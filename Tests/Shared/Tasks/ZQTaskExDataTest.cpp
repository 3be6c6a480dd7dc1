// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/FileName.h"
#include "Shared/Tasks/ZQTaskEx.h"
#include "Tests/Shared/Tasks/TaskFixture.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QElapsedTimer>
#include <QTest>

#include <csignal>
#include <thread>

using test::text;
using Encoding = ZQTaskEx::Encoding;
using LogOutput = ZQTaskEx::LogOutput;

Q_DECLARE_METATYPE(ZQTaskEx::Encoding)

class ZQTaskExDataTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void theStandardOutputIsTheResult();
    void standardErrorAloneIsTheResult();
    void ofBothOnlyTheStandardOutputIsTheResult();
    void noOutputIsEmptyDataAndNotNull();
    void theExitStatusIsNotLookedAt();
    void outputIsAnyBytes();
    void argumentsAreAnyBytes();
    void withoutCapturingStandardOutputIsTheCallersOwn();
    void anEnvironmentReplacesTheInheritedOne();
    void standardInputIsAPipeThatStaysOpen();
    void theCommandIsNotWaitedFor();
    void aCommandThatIsHandedOutCanBeTerminated();
    void theEndsOfTheReadPipesAreClosedInACommandThatIsKept();
    void whatIsNotExecutableIsLoggedAndPrintedAndGivesNull_data();
    void whatIsNotExecutableIsLoggedAndPrintedAndGivesNull();
    void whatCannotBeLaunchedIsToldToTheConsoleAndGivesNull();

    void twoHundredMegabytesAreRead();
    void standardErrorThatFitsItsPipeWaitsItsTurn();
    void standardErrorThatFillsItsPipeFirstBlocksTheCommand();
    void standardErrorOfAnySizeIsReadAfterTheEndOfStandardOutput();

    void textIsAsciiUnlessToldOtherwise();
    void textThatCannotBeDecodedIsNull_data();
    void textThatCannotBeDecodedIsNull();
    void textOfWhatIsNotExecutableIsEmpty();
    void textOfWhatCannotBeLaunchedIsEmpty();
    void textHandsOutTheCommand();
};

namespace {

QByteArray shellData(const char *script)
{
    return ZQTaskEx::dataFromTask(text("/bin/sh"), {text("-c"), text(script)}, nullptr);
}

} // namespace

void ZQTaskExDataTest::init()
{
    test::startTaskLog();
}

void ZQTaskExDataTest::cleanup()
{
    QVERIFY(test::losesItsChildren());
}

void ZQTaskExDataTest::theStandardOutputIsTheResult()
{
    QCOMPARE(shellData("echo one; sleep 0.05; echo two"), QByteArray("one\ntwo\n"));
}

void ZQTaskExDataTest::standardErrorAloneIsTheResult()
{
    QCOMPARE(shellData("echo error >&2"), QByteArray("error\n"));
}

void ZQTaskExDataTest::ofBothOnlyTheStandardOutputIsTheResult()
{
    QCOMPARE(shellData("echo error >&2; echo output; echo error >&2"), QByteArray("output\n"));
}

void ZQTaskExDataTest::noOutputIsEmptyDataAndNotNull()
{
    const auto data = shellData("exit 0");
    QVERIFY(data.isEmpty());
    QVERIFY(!data.isNull());
}

void ZQTaskExDataTest::theExitStatusIsNotLookedAt()
{
    QCOMPARE(shellData("echo output; exit 3"), QByteArray("output\n"));
    QCOMPARE(shellData("echo output; kill -9 $$"), QByteArray("output\n"));
}

void ZQTaskExDataTest::outputIsAnyBytes()
{
    QCOMPARE(shellData("printf '\\0\\377\\376%%@\\r\\n\\033'"),
             QByteArray("\0\xFF\xFE%@\r\n\x1B", 8));
}

void ZQTaskExDataTest::argumentsAreAnyBytes()
{
    const QByteArray argument("-n \xFF\n\"%@'");
    QCOMPARE(ZQTaskEx::dataFromTask(text("/usr/bin/printf"),
                                    {text("%s"), platform::fileNameFromBytes(argument)}, nullptr),
             argument);
}

void ZQTaskExDataTest::withoutCapturingStandardOutputIsTheCallersOwn()
{
    const auto run = [](const char *script) {
        return ZQTaskEx::dataFromTask(text("/bin/sh"), {text("-c"), text(script)}, nullptr,
                                      std::nullopt, LogOutput::No);
    };
    QByteArray data;
    auto printed = test::outputOf([&] { data = run("echo output; echo error >&2"); });
    QCOMPARE(data, QByteArray("error\n"));
    QCOMPARE(printed, text("output\n"));
    printed = test::outputOf([&] { data = run("echo output"); });
    QVERIFY(data.isEmpty());
    QVERIFY(!data.isNull());
    QCOMPARE(printed, text("output\n"));
}

void ZQTaskExDataTest::anEnvironmentReplacesTheInheritedOne()
{
    const test::EnvironmentVariable variable("OSTREL_TEST", "inherited");
    const QStringList arguments{text("OSTREL_TEST"), text("OTHER")};
    const auto path = text("/usr/bin/printenv");
    QCOMPARE(ZQTaskEx::dataFromTask(path, arguments, nullptr), QByteArray("inherited\n"));
    QCOMPARE(ZQTaskEx::dataFromTask(path, arguments, nullptr, std::nullopt),
             QByteArray("inherited\n"));
    const ZQTaskEx::Environment environment{{text("OTHER"), platform::fileNameFromBytes("\xFF")}};
    QCOMPARE(ZQTaskEx::dataFromTask(path, arguments, nullptr, environment), QByteArray("\xFF\n"));
    QCOMPARE(ZQTaskEx::dataFromTask(path, {}, nullptr, ZQTaskEx::Environment()), QByteArray(""));
    QCOMPARE(ZQTaskEx::dataFromTask(path, arguments, nullptr, environment, LogOutput::Yes),
             QByteArray("\xFF\n"));
}

void ZQTaskExDataTest::standardInputIsAPipeThatStaysOpen()
{
    // Reading it would wait for as long as the command is known to somebody.
    ZQTaskEx::Task task;
    const QStringList script{text("-c"), text("test -p /proc/$$/fd/0 && exec cat")};
    std::thread ending([&] {
        const auto process = test::launched(task);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        process->terminate();
    });
    QCOMPARE(ZQTaskEx::dataFromTask(text("/bin/sh"), script, &task), QByteArray(""));
    ending.join();
    task.get()->waitUntilExit();
    QCOMPARE(task.get()->terminationStatus(), SIGTERM);
}

void ZQTaskExDataTest::theCommandIsNotWaitedFor()
{
    ZQTaskEx::Task task;
    const QStringList script{text("-c"), text("echo output; exec sleep 60 > /dev/null 2>&1")};
    QCOMPARE(ZQTaskEx::dataFromTask(text("/bin/sh"), script, &task), QByteArray("output\n"));
    QVERIFY(task.get()->isRunning());
    task.get()->terminate();
    task.get()->waitUntilExit();
    QCOMPARE(task.get()->terminationStatus(), SIGTERM);
}

void ZQTaskExDataTest::aCommandThatIsHandedOutCanBeTerminated()
{
    ZQTaskEx::Task task;
    std::thread ending([&] {
        const auto process = test::launched(task);
        test::appears(text("/tmp/has-written"));
        process->terminate();
    });
    const QStringList script{text("-c"),
                             text("echo output; echo > /tmp/has-written; exec sleep 60")};
    QCOMPARE(ZQTaskEx::dataFromTask(text("/bin/sh"), script, &task), QByteArray("output\n"));
    ending.join();
}

void ZQTaskExDataTest::theEndsOfTheReadPipesAreClosedInACommandThatIsKept()
{
    ZQTaskEx::Task task;
    ZQTaskEx::dataFromTask(text("/bin/true"), {}, &task);
    QVERIFY(!task.get()->standardOutput().isOpen());
    QVERIFY(!task.get()->standardError().isOpen());
}

void ZQTaskExDataTest::whatIsNotExecutableIsLoggedAndPrintedAndGivesNull_data()
{
    test::addPathsThatAreNotExecutable();
}

void ZQTaskExDataTest::whatIsNotExecutableIsLoggedAndPrintedAndGivesNull()
{
    QFETCH(QString, path);
    QFETCH(QString, message);
    QByteArray data("not null");
    test::TaskReports reports([&] { data = ZQTaskEx::dataFromTask(path, {}, nullptr); });
    QVERIFY(data.isNull());
    QCOMPARE(reports.printed(), QStringList(message));
    QCOMPARE(reports.logged(), QStringList(message));
    QCOMPARE(reports.console(), QStringList());
}

void ZQTaskExDataTest::whatCannotBeLaunchedIsToldToTheConsoleAndGivesNull()
{
    const auto path = test::fileThatIsNoProgram();
    QByteArray data("not null");
    test::TaskReports reports([&] { data = ZQTaskEx::dataFromTask(path, {}, nullptr); });
    QVERIFY(data.isNull());
    QCOMPARE(reports.console(),
             QStringList(text("Exception running task %1: Exec format error").arg(path)));
    QCOMPARE(reports.logged(), QStringList());
    QCOMPARE(reports.printed(), QStringList());
    const auto before = test::openDescriptors();
    QVERIFY(ZQTaskEx::dataFromTask(path, {}, nullptr).isNull());
    QCOMPARE(test::openDescriptors(), before);
}

void ZQTaskExDataTest::twoHundredMegabytesAreRead()
{
    const auto data = shellData("yes 0123456789abcde | head -c 209715200");
    QCOMPARE(data.size(), 209715200);
    for (int i = 0; i < data.size(); i += 16 * 999) {
        QCOMPARE(data.mid(i, 16), QByteArray("0123456789abcde\n"));
    }
    QVERIFY(data.endsWith("0123456789abcde\n"));
}

void ZQTaskExDataTest::standardErrorThatFitsItsPipeWaitsItsTurn()
{
    QCOMPARE(shellData("head -c 60000 /dev/zero >&2; echo output"), QByteArray("output\n"));
}

// The rules demand that standard output is read first. More than the pipe of standard error holds,
// written while standard output is open, waits for ever: until somebody terminates the command.
void ZQTaskExDataTest::standardErrorThatFillsItsPipeFirstBlocksTheCommand()
{
    ZQTaskEx::Task task;
    const QStringList script{text("-c"), text("echo output; echo > /tmp/fills; "
                                              "exec head -c 4000000 /dev/zero 3>&1 >&2")};
    bool blocked = false;
    std::thread ending([&] {
        const auto process = test::launched(task);
        test::appears(text("/tmp/fills"));
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        blocked = process->isRunning();
        process->terminate();
    });
    QCOMPARE(ZQTaskEx::dataFromTask(text("/bin/sh"), script, &task), QByteArray("output\n"));
    ending.join();
    QVERIFY(blocked);
}

void ZQTaskExDataTest::standardErrorOfAnySizeIsReadAfterTheEndOfStandardOutput()
{
    const auto data = shellData("exec >&-; head -c 5000000 /dev/zero >&2");
    QVERIFY(data == QByteArray(5000000, '\0'));
}

void ZQTaskExDataTest::textIsAsciiUnlessToldOtherwise()
{
    const auto path = text("/bin/echo");
    QCOMPARE(ZQTaskEx::stringFromTask(path, {text("plain")}), text("plain\n"));
    QCOMPARE(ZQTaskEx::stringFromTask(path, {text("plain")}, nullptr), text("plain\n"));
    QVERIFY(ZQTaskEx::stringFromTask(path, {text("é")}).isNull());
    QVERIFY(ZQTaskEx::stringFromTask(path, {text("é")}, nullptr).isNull());
    QVERIFY(ZQTaskEx::stringFromTask(path, {text("é")}, std::chrono::seconds(1)).isNull());
    QCOMPARE(ZQTaskEx::stringFromTask(path, {text("é")}, Encoding::UTF8, nullptr), text("é\n"));
    QCOMPARE(static_cast<int>(Encoding::ASCII), 1);
    QCOMPARE(static_cast<int>(Encoding::UTF8), 4);
    QCOMPARE(static_cast<int>(Encoding::Latin1), 5);
}

void ZQTaskExDataTest::textThatCannotBeDecodedIsNull_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Encoding>("encoding");
    QTest::addColumn<QString>("expected");
    const QString null;
    const auto add = [](const char *row, const QByteArray &bytes, Encoding encoding,
                        const QString &expected) {
        QTest::newRow(row) << bytes << encoding << expected;
    };
    add("ASCII", "a\x7F\n", Encoding::ASCII, text("a\x7F\n"));
    add("ASCII with a null", QByteArray("a\0b", 3), Encoding::ASCII,
        text("a") + QChar(0) + text("b"));
    add("not ASCII", "a\x80", Encoding::ASCII, null);
    add("no output, ASCII", "", Encoding::ASCII, text(""));
    add("UTF-8", "\xE2\x82\xAC\xF0\x9F\x98\x80", Encoding::UTF8, text("€😀"));
    add("UTF-8 with a mark",
        "\xEF\xBB\xBF"
        "a",
        Encoding::UTF8, QChar(0xFEFF) + text("a"));
    add("UTF-8 with a replacement", "\xEF\xBF\xBD", Encoding::UTF8, QString(QChar(0xFFFD)));
    add("cut UTF-8", "a\xE2\x82", Encoding::UTF8, null);
    add("overlong UTF-8", "\xC0\x80", Encoding::UTF8, null);
    add("surrogate in UTF-8", "\xED\xA0\x80", Encoding::UTF8, null);
    add("no UTF-8", "\xFF\xFE", Encoding::UTF8, null);
    add("no output, UTF-8", "", Encoding::UTF8, text(""));
    add("Latin-1", "\xE9\xFF\x80", Encoding::Latin1, QString::fromLatin1("\xE9\xFF\x80"));
    add("unknown", "a", static_cast<Encoding>(99), null);
}

void ZQTaskExDataTest::textThatCannotBeDecodedIsNull()
{
    QFETCH(QByteArray, bytes);
    QFETCH(Encoding, encoding);
    QFETCH(QString, expected);
    test::write(text("/tmp/bytes"), bytes);
    const QStringList arguments{text("/tmp/bytes")};
    for (const auto &result :
         {ZQTaskEx::stringFromTask(text("/bin/cat"), arguments, encoding, nullptr),
          ZQTaskEx::stringFromTask(text("/bin/cat"), arguments, encoding,
                                   std::chrono::seconds(1))}) {
        QCOMPARE(result, expected);
        QCOMPARE(result.isNull(), expected.isNull());
    }
}

void ZQTaskExDataTest::textOfWhatIsNotExecutableIsEmpty()
{
    QString result;
    const auto message = text("Error: /missing is not executable");
    test::TaskReports reports([&] { result = ZQTaskEx::stringFromTask(text("/missing"), {}); });
    QVERIFY(result.isEmpty());
    QVERIFY(!result.isNull());
    QCOMPARE(reports.printed(), QStringList(message));
    QCOMPARE(reports.logged(), QStringList(message));
    const auto timed = ZQTaskEx::stringFromTask(text("/missing"), {}, std::chrono::seconds(1));
    QVERIFY(timed.isEmpty());
    QVERIFY(!timed.isNull());
}

void ZQTaskExDataTest::textOfWhatCannotBeLaunchedIsEmpty()
{
    const auto result = ZQTaskEx::stringFromTask(test::fileThatIsNoProgram(), {});
    QVERIFY(result.isEmpty());
    QVERIFY(!result.isNull());
}

void ZQTaskExDataTest::textHandsOutTheCommand()
{
    ZQTaskEx::Task task;
    QCOMPARE(ZQTaskEx::stringFromTask(text("/bin/echo"), {}, &task), text("\n"));
    QCOMPARE(task.get()->launchPath(), text("/bin/echo"));
}

TEST_CLASS(ZQTaskExDataTest, QCoreApplication)
#include "ZQTaskExDataTest.moc"
