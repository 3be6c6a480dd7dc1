// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Log/ZQLog.h"
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <thread>
#include <utility>

// Which calls wait for the file, and what the end of the process does to what still waits.
class ZQLogWaitingTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();

    void aShortTextOfABackgroundThreadIsWrittenWhenTheCallReturns();
    void aShortTextOfABackgroundThreadWaitsForWhatIsQueuedBeforeIt();
    void theMainThreadNeverWaits();
    void aTextOf100CharactersDoesNotWait();
    void aTextDoesNotWaitWith100CharactersInTheQueue();
    void fastAppendLogNeverWaits();

    void theEndWritesWhatIsPending_data();
    void theEndWritesWhatIsPending();
    void theEndMayBeginANewFile_data();
    void theEndMayBeginANewFile();
    void theEndWaitsForFewerThan20PendingEntries_data();
    void theEndWaitsForFewerThan20PendingEntries();
    void theEndAbandons20PendingEntries_data();
    void theEndAbandons20PendingEntries();
    void afterTheEndEntriesAreNeitherWrittenNorWaitedFor();
    void aForkedChildThatLogsALineAndEndsHasItWritten_data();
    void aForkedChildThatLogsALineAndEndsHasItWritten();
    void aForkedChildEndsWhateverTheLogIsAt();
    void aForkedChildEndsWhileTheLogIsStuck();

    void anUncaughtExceptionIsLoggedAndPrinted_data();
    void anUncaughtExceptionIsLoggedAndPrinted();
};

namespace {

using test::body;
using test::generation;

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QString programsFile()
{
    return generation(1, text("LogProgram"));
}

// The log's thread stays in the printing of the entry "first"; what follows waits.
QStringList stuck()
{
    return {text("stick-output"), text("append=first"), text("wait-until-stuck"),
            text("create-file")};
}

QString letters(int count)
{
    return QString().fill(QLatin1Char('x'), count);
}

void addWaysToEnd()
{
    QTest::addColumn<QString>("end");
    QTest::newRow("the event loop ends") << text("quit");
    QTest::newRow("main returns") << text("finish-main");
    QTest::newRow("exit is called") << text("exit");
    QTest::newRow("exit is called on a thread") << text("exit-on-thread");
}

QStringList lines(int count)
{
    QStringList all;
    for (int line = 1; line <= count; ++line) {
        all << text("line %1").arg(line);
    }
    return all;
}

} // namespace

void ZQLogWaitingTest::init()
{
    test::clearLibraries();
}

void ZQLogWaitingTest::aShortTextOfABackgroundThreadIsWrittenWhenTheCallReturns()
{
    ZQLog::createNewLog();
    ZQLog::finishWriting();
    for (const int size : {1, 50, 99}) {
        QByteArray after;
        std::thread([&] {
            ZQLog::appendLog(letters(size));
            after = test::contents(generation(1));
        }).join();
        QVERIFY(after.endsWith(" - " + letters(size).toUtf8() + '\n'));
    }
}

void ZQLogWaitingTest::aShortTextOfABackgroundThreadWaitsForWhatIsQueuedBeforeIt()
{
    // 5 + 94 characters are just few enough. The call returns after the release only.
    const auto run = test::runLogProgram(stuck() + QStringList{text("release-later"),
                                                               text("thread=") + letters(94),
                                                               text("check-released")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(test::entries(programsFile()), QStringList(letters(94)));
}

void ZQLogWaitingTest::theMainThreadNeverWaits()
{
    const auto run = test::runLogProgram(stuck() + QStringList{text("append=x"), text("release")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(test::entries(programsFile()), QStringList(text("x")));
}

void ZQLogWaitingTest::aTextOf100CharactersDoesNotWait()
{
    // White space counts here, though it is not written.
    const auto run = test::runLogProgram(
        stuck() + QStringList{text("thread=x") + QString(99, QLatin1Char(' ')), text("release")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(test::entries(programsFile()), QStringList(text("x")));
}

void ZQLogWaitingTest::aTextDoesNotWaitWith100CharactersInTheQueue()
{
    // 5 + 95 characters.
    const auto run =
        test::runLogProgram(stuck() + QStringList{text("thread=") + letters(95), text("release")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(test::entries(programsFile()), QStringList(letters(95)));
}

void ZQLogWaitingTest::fastAppendLogNeverWaits()
{
    const auto run =
        test::runLogProgram(stuck() + QStringList{text("fast-on-thread=x"), text("release")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(test::entries(programsFile()), QStringList(text("x")));
}

void ZQLogWaitingTest::theEndWritesWhatIsPending_data()
{
    addWaysToEnd();
}

void ZQLogWaitingTest::theEndWritesWhatIsPending()
{
    QFETCH(QString, end);
    const auto run = test::runLogProgram({text("new"), text("lines=14"), end});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(body(programsFile()), lines(14));
}

void ZQLogWaitingTest::theEndMayBeginANewFile_data()
{
    addWaysToEnd();
}

void ZQLogWaitingTest::theEndMayBeginANewFile()
{
    // All that a new log needs must still be there.
    QFETCH(QString, end);
    const auto run =
        test::runLogProgram({text("new"), text("letters=500000"), text("append=last"), end});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.output, QStringList());
    QCOMPARE(body(generation(2, text("LogProgram"))), QStringList(letters(500000)));
    QCOMPARE(body(programsFile()), (QStringList{text("Log truncated at 500KB"), text("last")}));
}

void ZQLogWaitingTest::theEndWaitsForFewerThan20PendingEntries_data()
{
    addWaysToEnd();
}

void ZQLogWaitingTest::theEndWaitsForFewerThan20PendingEntries()
{
    QFETCH(QString, end);
    const auto run =
        test::runLogProgram(stuck() + QStringList{text("lines=18"), text("release-later"), end});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(test::entries(programsFile()), lines(18));
}

void ZQLogWaitingTest::theEndAbandons20PendingEntries_data()
{
    addWaysToEnd();
}

void ZQLogWaitingTest::theEndAbandons20PendingEntries()
{
    QFETCH(QString, end);
    const auto run = test::runLogProgram(stuck() + QStringList{text("lines=19"), end});
    QCOMPARE(run.exitCode, 0);
    QVERIFY(!run.crashed);
    QCOMPARE(test::contents(programsFile()), QByteArray());
}

void ZQLogWaitingTest::afterTheEndEntriesAreNeitherWrittenNorWaitedFor()
{
    const auto run =
        test::runLogProgram({text("new"), text("append=before"), text("quit"), text("append=after"),
                             text("thread=after"), text("finish"), text("state")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(body(programsFile()), QStringList(text("before")));
    QVERIFY(run.output.last().startsWith(text("queue 10 ")));
}

void ZQLogWaitingTest::aForkedChildThatLogsALineAndEndsHasItWritten_data()
{
    QTest::addColumn<QString>("end");
    QTest::newRow("exit") << text("child");
    QTest::newRow("_Exit") << text("short-child");
}

void ZQLogWaitingTest::aForkedChildThatLogsALineAndEndsHasItWritten()
{
    QFETCH(QString, end);
    const auto run =
        test::runLogProgram({text("new"), text("finish"), text("append=before"), end + text("=one"),
                             text("append=between"), end + text("=two"), text("append=after")});
    QCOMPARE(run.exitCode, 0);
    auto lines = body(programsFile());
    // The parent's own come at their own time, and once.
    for (const auto *own : {"before", "between", "after"}) {
        QCOMPARE(lines.removeAll(text(own)), 1);
    }
    QCOMPARE(lines, (QStringList{text("one"), text("two")}));
}

void ZQLogWaitingTest::aForkedChildEndsWhateverTheLogIsAt()
{
    const auto run = test::runLogProgram({text("new"), text("busy-child=line"), text("finish")});
    QCOMPARE(run.exitCode, 0);
    auto lines = QStringList();
    for (auto number = 5; number >= 1; --number) {
        const auto file = generation(number, text("LogProgram"));
        lines += QFile::exists(file) ? body(file) : QStringList();
    }
    QVERIFY(lines.contains(text("line")));
    for (const auto &line : std::as_const(lines)) {
        QVERIFY2(!line.startsWith(text("BAD")), qPrintable(line));
    }
}

void ZQLogWaitingTest::aForkedChildEndsWhileTheLogIsStuck()
{
    const auto run = test::runLogProgram(
        stuck() + QStringList{text("append=second"), text("child=third"), text("release")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(body(programsFile()), QStringList(text("second")));
}

void ZQLogWaitingTest::anUncaughtExceptionIsLoggedAndPrinted_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("on the main thread") << text("throw");
    QTest::newRow("on another thread") << text("throw-on-thread");
}

void ZQLogWaitingTest::anUncaughtExceptionIsLoggedAndPrinted()
{
    QFETCH(QString, command);
    const auto run = test::runLogProgram(
        {text("new"), text("lines=50"), command + text("= reason with 100%% %@ ")});
    QVERIFY(run.crashed);
    QCOMPARE(run.output, QStringList(text("reason with 100% (null)")));
    // Interpreted once more for the log, where the single percent sign begins nothing known.
    QCOMPARE(body(programsFile()), lines(50) + QStringList(text("reason with 100% (null)")));
}

TEST_CLASS(ZQLogWaitingTest, QCoreApplication)
#include "ZQLogWaitingTest.moc"
