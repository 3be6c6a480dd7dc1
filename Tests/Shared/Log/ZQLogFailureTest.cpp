// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Log/ZQLog.h"
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Support/StandardOutputCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// Logs that cannot be opened or written, and files that others change.
class ZQLogFailureTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();

    void withoutANewLogOrAFileEachEntryPrintsTwoLines();
    void anExistingFileIsContinuedWithoutAHeader();
    void aFileThatAppearsLaterIsUsed();
    void aPathThatIsNoFileOfItsOwnIsRefusedWithoutWaiting_data();
    void aPathThatIsNoFileOfItsOwnIsRefusedWithoutWaiting();
    void withoutALibraryEntriesAreLost();
    void aLostEntryLeavesTheQueue();

    void anEntryThatCannotBeWrittenIsPrintedAndTheLogGoesOn();
    void anEntryThatWasWrittenInPartIsTakenBack();

    void aFolderThatVanishesIsMadeAnewByTheNextLog();
    void aFileThatOthersEmptyIsContinuedAtItsEnd();
    void whatOthersAddIsNotOverwritten();
    void aFileThatOthersRotateKeepsItsLines();
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

QStringList lost(const QString &entry)
{
    return {text("Unable to log the following information: ") + entry,
            text("Unable to open log for output")};
}

} // namespace

void ZQLogFailureTest::init()
{
    ZQLog::finishWriting();
    test::clearLibraries();
}

void ZQLogFailureTest::withoutANewLogOrAFileEachEntryPrintsTwoLines()
{
    const auto run =
        test::runLogProgram({text("append= one %% "), text("fast=two\nlines"), text("finish")});
    QCOMPARE(run.output,
             lost(text("one %")) +
                 lost(text("two\nlines")).join(QLatin1Char('\n')).split(QLatin1Char('\n')));
    QVERIFY(!QFileInfo::exists(test::userLogFolder()));
}

void ZQLogFailureTest::anExistingFileIsContinuedWithoutAHeader()
{
    test::write(programsFile(), "2012-06-15 14:23:45 +0000 - old\n");
    const auto run = test::runLogProgram({text("append=new"), text("finish"), text("state")});
    QCOMPARE(test::entries(programsFile()), (QStringList{text("old"), text("new")}));
    QCOMPARE(run.output, QStringList(text("queue 0 written 32 disabled 0 name LogProgram")));
}

void ZQLogFailureTest::aFileThatAppearsLaterIsUsed()
{
    const auto run = test::runLogProgram(
        {text("append=one"), text("finish"), text("create-file"), text("append=two")});
    QCOMPARE(run.output, lost(text("one")));
    QCOMPARE(test::entries(programsFile()), QStringList(text("two")));
}

void ZQLogFailureTest::aPathThatIsNoFileOfItsOwnIsRefusedWithoutWaiting_data()
{
    QTest::addColumn<QString>("kind");
    for (const char *kind :
         {"folder", "pipe", "read pipe", "link", "dangling link", "read-only file"}) {
        QTest::newRow(kind) << text(kind);
    }
}

void ZQLogFailureTest::aPathThatIsNoFileOfItsOwnIsRefusedWithoutWaiting()
{
    QFETCH(QString, kind);
    const auto elsewhere = QDir::tempPath() + text("/elsewhere");
    test::write(elsewhere, "precious");
    QVERIFY(QDir().mkpath(test::userLogFolder()));
    const auto path = QFile::encodeName(programsFile());
    int reader = -1;
    if (kind == text("folder")) {
        QVERIFY(QDir().mkdir(programsFile()));
    } else if (kind.endsWith(text("pipe"))) {
        QCOMPARE(::mkfifo(path.constData(), 0600), 0);
        reader = kind == text("read pipe") ? ::open(path.constData(), O_RDONLY | O_NONBLOCK) : -1;
    } else if (kind.endsWith(text("link"))) {
        QVERIFY(QFile::link(kind == text("link") ? elsewhere : text("/nowhere"), programsFile()));
    } else {
        test::write(programsFile(), "kept");
        QVERIFY(QFile::setPermissions(programsFile(), QFile::ReadOwner));
    }
    const auto run = test::runLogProgram({text("append=text"), text("finish")});
    ::close(reader);
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.output, lost(text("text")));
    QCOMPARE(test::contents(elsewhere), QByteArray("precious"));
    QVERIFY(!QFileInfo::exists(text("/nowhere")));
}

void ZQLogFailureTest::withoutALibraryEntriesAreLost()
{
    // An account that the system does not know has no home.
    const QStringList homeless{text("--dev-bind"),     text("/"),     text("/"),
                               text("--unshare-user"), text("--uid"), text("4242"),
                               text("--unsetenv"),     text("HOME"),  test::logProgram()};
    const auto run = test::runLogProgram(
        homeless + QStringList{text("new"), text("append=text"), text("finish")}, text("bwrap"));
    QCOMPARE(run.output, QStringList(text("Unable to create folder (null).")) + lost(text("text")));
    QCOMPARE(run.exitCode, 0);
}

void ZQLogFailureTest::aLostEntryLeavesTheQueue()
{
    const auto run = test::runLogProgram({text("lines=200"), text("finish"), text("state")});
    QCOMPARE(run.output.size(), 401);
    QCOMPARE(run.output.last(), text("queue 0 written 0 disabled 0 name LogProgram"));
}

void ZQLogFailureTest::anEntryThatCannotBeWrittenIsPrintedAndTheLogGoesOn()
{
    test::write(programsFile(), "");
    // A disk that is full after three lines: entries of 1 character make lines of 30 bytes.
    const auto run =
        test::runLogProgram({text("limit=90"), text("fast=a"), text("fast=b"), text("fast=c"),
                             text("fast=d"), text("fast=e"), text("finish"), text("state"),
                             text("limit=0"), text("append=f"), text("finish"), text("state")});
    const auto failed = text("Exception writing to log: File too large");
    // The lost texts still count in the queue.
    QCOMPARE(run.output,
             (QStringList{failed, failed, text("queue 2 written 90 disabled 0 name LogProgram"),
                          text("queue 2 written 120 disabled 0 name LogProgram")}));
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(test::entries(programsFile()),
             (QStringList{text("a"), text("b"), text("c"), text("f")}));
}

void ZQLogFailureTest::anEntryThatWasWrittenInPartIsTakenBack()
{
    test::write(programsFile(), "");
    const auto run =
        test::runLogProgram({text("limit=70"), text("fast=a"), text("fast=b"),
                             text("fast=cccccccccccccccc"), text("fast=d"), text("finish"),
                             text("limit=0"), text("append=e"), text("finish"), text("state")});
    const auto failed = text("Exception writing to log: File too large");
    QCOMPARE(run.output,
             (QStringList{failed, failed, text("queue 17 written 90 disabled 0 name LogProgram")}));
    QCOMPARE(test::entries(programsFile()), (QStringList{text("a"), text("b"), text("e")}));
}

void ZQLogFailureTest::aFolderThatVanishesIsMadeAnewByTheNextLog()
{
    ZQLog::createNewLog();
    ZQLog::finishWriting();
    test::clearLibraries();
    const auto printed = test::outputOf([] {
        ZQLog::appendLog(text("nowhere"));
        ZQLog::finishWriting();
    });
    QCOMPARE(printed, QString());
    QVERIFY(!QFileInfo::exists(test::userLogFolder()));
    ZQLog::createNewLog();
    ZQLog::appendLog(text("here"));
    ZQLog::finishWriting();
    QCOMPARE(body(generation(1)), QStringList(text("here")));
}

void ZQLogFailureTest::aFileThatOthersEmptyIsContinuedAtItsEnd()
{
    ZQLog::createNewLog();
    ZQLog::finishWriting();
    QVERIFY(QFile::resize(generation(1), 0));
    ZQLog::appendLog(text("again"));
    ZQLog::finishWriting();
    QCOMPARE(test::entries(generation(1)), QStringList(text("again")));
}

void ZQLogFailureTest::whatOthersAddIsNotOverwritten()
{
    ZQLog::createNewLog();
    ZQLog::appendLog(text("one"));
    ZQLog::finishWriting();
    QFile file(generation(1));
    QVERIFY(file.open(QIODevice::Append));
    file.write("2012-06-15 14:23:45 +0000 - another program's\n");
    file.close();
    ZQLog::appendLog(text("two"));
    ZQLog::finishWriting();
    QCOMPARE(body(generation(1)),
             (QStringList{text("one"), text("another program's"), text("two")}));
}

void ZQLogFailureTest::aFileThatOthersRotateKeepsItsLines()
{
    ZQLog::createNewLog();
    ZQLog::appendLog(text("one"));
    ZQLog::finishWriting();
    QVERIFY(QFile::rename(generation(1), generation(2)));
    test::write(generation(1), "");
    ZQLog::appendLog(text("two"));
    ZQLog::finishWriting();
    QCOMPARE(body(generation(2)), (QStringList{text("one"), text("two")}));
    QCOMPARE(test::contents(generation(1)), QByteArray());
}

TEST_CLASS(ZQLogFailureTest, QCoreApplication)
#include "ZQLogFailureTest.moc"
