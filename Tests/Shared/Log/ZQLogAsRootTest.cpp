// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Log/ZQLog.h"
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Support/ConsoleSeat.h"
#include "Tests/Support/StandardOutputCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

// For root the current file lies in the machine's library, all else in the user's.
class ZQLogAsRootTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();

    void theCurrentFileIsTheMachines();
    void theFolderThatIsCreatedIsTheUsers();
    void theMachinesCurrentFileHasTheUsersGenerationsRotated();
    void withoutAMachinesCurrentFileNothingIsRotated();
    void availableLogsAreThoseOfTheUser();
    void theUserIsTheOneAtTheConsole();
};

namespace {

using test::generation;

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QString machinesFile()
{
    return generation(1, {}, test::localLogFolder());
}

} // namespace

void ZQLogAsRootTest::init()
{
    ZQLog::finishWriting();
    test::clearLibraries();
}

void ZQLogAsRootTest::theCurrentFileIsTheMachines()
{
    QVERIFY(QDir().mkpath(test::localLogFolder()));
    ZQLog::createNewLog();
    ZQLog::appendLog(text("text"));
    ZQLog::finishWriting();
    QCOMPARE(test::body(machinesFile()), QStringList(text("text")));
    QVERIFY(!QFile::exists(generation(1)));
}

void ZQLogAsRootTest::theFolderThatIsCreatedIsTheUsers()
{
    const auto printed = test::linesOf([] {
        ZQLog::createNewLog();
        ZQLog::appendLog(text("text"));
        ZQLog::finishWriting();
    });
    QVERIFY(QFileInfo(test::userLogFolder()).isDir());
    QVERIFY(!QFileInfo::exists(test::localLogFolder()));
    QCOMPARE(
        printed,
        (QStringList{
            text("Unable to create log file %1 - No such file or directory").arg(machinesFile()),
            text("Unable to log the following information: text"),
            text("Unable to open log for output")}));
}

void ZQLogAsRootTest::theMachinesCurrentFileHasTheUsersGenerationsRotated()
{
    test::write(machinesFile(), "machine's 1");
    test::write(generation(2, {}, test::localLogFolder()), "machine's 2");
    for (const int number : {1, 2, 5}) {
        test::write(generation(number), QByteArray::number(number));
    }
    ZQLog::createNewLog();
    ZQLog::finishWriting();
    QCOMPARE(ZQLog::availableLogs(), (QStringList{generation(2), generation(3)}));
    QCOMPARE(test::contents(generation(2)), QByteArray("1"));
    QCOMPARE(test::contents(generation(3)), QByteArray("2"));
    // The machine's file is emptied, its neighbours stay.
    QCOMPARE(test::headerSize(test::entries(machinesFile())), 4);
    QCOMPARE(test::entries(machinesFile()).size(), 4);
    QCOMPARE(test::contents(generation(2, {}, test::localLogFolder())), QByteArray("machine's 2"));
}

void ZQLogAsRootTest::withoutAMachinesCurrentFileNothingIsRotated()
{
    QVERIFY(QDir().mkpath(test::localLogFolder()));
    test::write(generation(1), "1");
    ZQLog::createNewLog();
    QCOMPARE(ZQLog::availableLogs(), QStringList(generation(1)));
    QCOMPARE(test::contents(generation(1)), QByteArray("1"));
}

void ZQLogAsRootTest::availableLogsAreThoseOfTheUser()
{
    test::write(machinesFile(), "");
    test::write(generation(2, {}, test::localLogFolder()), "");
    test::write(generation(4), "");
    QCOMPARE(ZQLog::availableLogs(), QStringList(generation(4)));
}

void ZQLogAsRootTest::theUserIsTheOneAtTheConsole()
{
    test::ConsoleSeat seat;
    seat.activate(text("bob"), 1001);
    const auto bobs = text("/home/bob/Library/Logs/Corvane");
    QVERIFY(QDir().mkpath(test::localLogFolder()));
    ZQLog::createNewLog();
    QVERIFY(QFileInfo(bobs).isDir());
    QVERIFY(!QFileInfo::exists(test::userLogFolder()));
    test::write(generation(3, {}, bobs), "");
    QCOMPARE(ZQLog::availableLogs(), QStringList(generation(3, {}, bobs)));
}

TEST_CLASS(ZQLogAsRootTest, QCoreApplication)
#include "ZQLogAsRootTest.moc"
