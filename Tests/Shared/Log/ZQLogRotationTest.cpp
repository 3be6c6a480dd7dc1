// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Log/ZQLog.h"
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Support/StandardOutputCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

#include <sys/stat.h>

// New files, their names and their headers.
class ZQLogRotationTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void aNewLogBeginsWithItsHeader();
    void theHeaderNamesTheVersionOfABundle();
    void aNewLogIsForItsOwnerOnly();
    void theFirstGenerationBecomesTheSecondAndTheFifthGoes();
    void withFiles1And2And4TheResultIs2And3And5AndANew1();
    void withoutACurrentFileNothingIsRotated();
    void aLinkOrFolderInTheCurrentFilesPlaceIsRotatedLikeAFile();
    void aGenerationThatCannotBeMovedStopsTheRotation();
    void aFolderThatCannotBeCreatedIsPrinted();
    void aFileThatCannotBeCreatedIsPrinted();

    void theFilesAreNamedAfterTheExecutableNotTheGivenName();
    void theGivenNameIsTakenOverWhereThereIsNoExecutable();
    void theExecutablesLastExtensionIsNoPartOfTheName();
    void theNameMayBeSetAndCleared();

    void aFileOf499999BytesIsNotFull();
    void theEntryThatReaches500000BytesEndsTheOldFile();
    void theEntryBehindTheOneThatReaches500000BytesBeginsTheNewFile();
    void multiByteTextCountsInBytes();
    void aBurstIsWrittenAsIfOneByOne();
    void theTruncationNoticeIsWrittenFromInsideTheQueue();
};

namespace {

using test::body;
using test::entries;
using test::generation;

constexpr quint64 maxFileSize = 500000;
constexpr quint64 lineOverhead = 29; // date, dash and line break

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QString notice()
{
    return text("Log truncated at 500KB");
}

// One entry after which the current file has so many bytes.
QString fillTo(quint64 bytes)
{
    ZQLog::finishWriting();
    const auto size = bytes - ZQLog::sharedController().bytesWritten() - lineOverhead;
    auto filling = QString(static_cast<int>(size / 3), QChar(0x20AC));
    filling += QString(static_cast<int>(size % 3), QLatin1Char('x'));
    ZQLog::fastAppendLog(text("%@"), filling);
    ZQLog::finishWriting();
    return filling;
}

mode_t permissions(const QString &path)
{
    struct stat status {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777U : 0;
}

} // namespace

void ZQLogRotationTest::init()
{
    ZQLog::finishWriting();
    test::clearLibraries();
}

void ZQLogRotationTest::cleanup()
{
    QFile::setPermissions(test::userLogFolder(),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    ZQLog::sharedController().setAppName(QString());
}

void ZQLogRotationTest::aNewLogBeginsWithItsHeader()
{
    ZQLog::createNewLog();
    ZQLog::finishWriting();
    const auto lines = entries(generation(1));
    QCOMPARE(lines.size(), 4);
    QCOMPARE(test::headerSize(lines), 4);
    QCOMPARE(lines[1], text("Path: ") + QCoreApplication::applicationFilePath());
}

void ZQLogRotationTest::theHeaderNamesTheVersionOfABundle()
{
    const auto contents = QDir::tempPath() + text("/Some.app/Contents");
    test::write(contents + text("/Info.plist"),
                "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                "<key>CFBundleVersion</key><string>12.3</string>"
                "<key>CFBundleExecutable</key><string>Some</string></dict></plist>");
    QVERIFY(QDir().mkpath(contents + text("/MacOS")));
    const auto program = contents + text("/MacOS/Some");
    QVERIFY(QFile::copy(test::logProgram(), program));
    test::runLogProgram({text("new")}, program);
    const auto lines = entries(generation(1, text("Some")));
    QCOMPARE(lines.size(), 5);
    QVERIFY(lines[0].startsWith(text("Log started: ")));
    QCOMPARE(lines[1], text("Version: 12.3"));
    QCOMPARE(lines[2], text("Path: ") + program);
    QVERIFY(lines[3].startsWith(text("System: OS X ")));
    QVERIFY(lines[4].startsWith(text("Running in ")));
}

void ZQLogRotationTest::aNewLogIsForItsOwnerOnly()
{
    ZQLog::createNewLog();
    QCOMPARE(permissions(generation(1)), mode_t(0600));
    QCOMPARE(permissions(test::userLogFolder()), mode_t(0700));
    QCOMPARE(QDir(test::userLogFolder()).entryList(QDir::Files | QDir::Hidden),
             QStringList(QFileInfo(generation(1)).fileName()));
}

void ZQLogRotationTest::theFirstGenerationBecomesTheSecondAndTheFifthGoes()
{
    for (int number = 1; number <= 5; ++number) {
        test::write(generation(number), QByteArray::number(number));
    }
    ZQLog::createNewLog();
    ZQLog::finishWriting();
    for (int number = 1; number <= 4; ++number) {
        QCOMPARE(test::contents(generation(number + 1)), QByteArray::number(number));
    }
    QCOMPARE(test::headerSize(entries(generation(1))), 4);
    QVERIFY(!QFile::exists(generation(6)));
}

void ZQLogRotationTest::withFiles1And2And4TheResultIs2And3And5AndANew1()
{
    for (const int number : {1, 2, 4}) {
        test::write(generation(number), QByteArray::number(number));
    }
    ZQLog::createNewLog();
    QCOMPARE(ZQLog::availableLogs(),
             (QStringList{generation(1), generation(2), generation(3), generation(5)}));
    QCOMPARE(test::contents(generation(2)), QByteArray("1"));
    QCOMPARE(test::contents(generation(3)), QByteArray("2"));
    QCOMPARE(test::contents(generation(5)), QByteArray("4"));
}

void ZQLogRotationTest::withoutACurrentFileNothingIsRotated()
{
    test::write(generation(2), "2");
    test::write(generation(5), "5");
    ZQLog::createNewLog();
    QCOMPARE(test::contents(generation(2)), QByteArray("2"));
    QCOMPARE(test::contents(generation(5)), QByteArray("5"));
    QVERIFY(QFile::exists(generation(1)));
}

void ZQLogRotationTest::aLinkOrFolderInTheCurrentFilesPlaceIsRotatedLikeAFile()
{
    const auto elsewhere = QDir::tempPath() + text("/elsewhere");
    test::write(elsewhere, "precious");
    QVERIFY(QDir().mkpath(generation(1)));
    ZQLog::createNewLog();
    ZQLog::finishWriting(); // or what waits goes to the next new log
    QVERIFY(QFileInfo(generation(2)).isDir());
    QVERIFY(QFile::remove(generation(1)));
    QVERIFY(QFile::link(elsewhere, generation(1)));
    ZQLog::createNewLog();
    ZQLog::finishWriting();
    QVERIFY(QFileInfo(generation(2)).isSymLink());
    QVERIFY(!QFileInfo(generation(1)).isSymLink());
    QCOMPARE(test::headerSize(entries(generation(1))), 4);
    QCOMPARE(test::contents(elsewhere), QByteArray("precious"));
}

void ZQLogRotationTest::aGenerationThatCannotBeMovedStopsTheRotation()
{
    for (const int number : {1, 3, 5}) {
        test::write(generation(number), QByteArray::number(number) + '\n');
    }
    QFile::setPermissions(test::userLogFolder(), QFile::ReadOwner | QFile::ExeOwner);
    const auto printed = test::linesOf([] { ZQLog::createNewLog(); });
    QCOMPARE(printed,
             QStringList(text("Unable to move file %1 to %2.").arg(generation(3), generation(4))));
    for (const int number : {1, 3, 5}) {
        QCOMPARE(test::contents(generation(number)), QByteArray::number(number) + '\n');
    }
    // The log goes on in the file that is there.
    ZQLog::appendLog(text("afterwards"));
    ZQLog::finishWriting();
    const auto lines = test::contents(generation(1)).split('\n');
    QCOMPARE(lines.size(), 3);
    QVERIFY(lines[1].endsWith(" - afterwards"));
}

void ZQLogRotationTest::aFolderThatCannotBeCreatedIsPrinted()
{
    test::write(QDir::homePath() + text("/Library/Logs"), "in the way");
    const auto printed = test::linesOf([] { ZQLog::createNewLog(); });
    QCOMPARE(printed, QStringList(text("Unable to create folder %1.").arg(test::userLogFolder())));
}

void ZQLogRotationTest::aFileThatCannotBeCreatedIsPrinted()
{
    QVERIFY(QDir().mkpath(test::userLogFolder()));
    QFile::setPermissions(test::userLogFolder(), QFile::ReadOwner | QFile::ExeOwner);
    const auto printed = test::linesOf([] { ZQLog::createNewLog(); });
    QCOMPARE(
        printed,
        QStringList(text("Unable to create log file %1 - Permission denied").arg(generation(1))));
}

void ZQLogRotationTest::theFilesAreNamedAfterTheExecutableNotTheGivenName()
{
    ZQLog::createNewLog(text("Other"));
    QVERIFY(QFile::exists(generation(1)));
    QVERIFY(!QFile::exists(generation(1, text("Other"))));
    QCOMPARE(ZQLog::sharedController().appName(), text("SharedLogTests"));
}

void ZQLogRotationTest::theGivenNameIsTakenOverWhereThereIsNoExecutable()
{
    // A process that cannot see its own entry in "/proc" does not know its executable.
    const QStringList blind{text("--dev-bind"), text("/"),     text("/"),
                            text("--tmpfs"),    text("/proc"), test::logProgram()};
    const auto run =
        test::runLogProgram(blind + QStringList{text("state"), text("new=Given"), text("new=Later"),
                                                text("state"), text("leave")},
                            text("bwrap"));
    QCOMPARE(run.exitCode, 0);
    QVERIFY(run.output.first().endsWith(text(" name (null)")));
    QVERIFY(run.output.last().endsWith(text(" name Given")));
    QVERIFY(QFile::exists(generation(1, text("Given"))));
    QVERIFY(QFile::exists(generation(2, text("Given"))));
}

void ZQLogRotationTest::theExecutablesLastExtensionIsNoPartOfTheName()
{
    const auto program = QDir::tempPath() + text("/Some program.1.bin");
    QVERIFY(QFile::copy(test::logProgram(), program));
    const auto run = test::runLogProgram({text("new"), text("state")}, program);
    QVERIFY(run.output.last().endsWith(text(" name Some program.1")));
    QVERIFY(QFile::exists(generation(1, text("Some program.1"))));
}

void ZQLogRotationTest::theNameMayBeSetAndCleared()
{
    auto &log = ZQLog::sharedController();
    log.setAppName(text("Ostrel"));
    QCOMPARE(log.appName(), text("Ostrel"));
    ZQLog::createNewLog(text("Other"));
    QCOMPARE(ZQLog::availableLogs(), QStringList(generation(1, text("Ostrel"))));
    log.setAppName(QString());
    QCOMPARE(log.appName(), text("SharedLogTests"));
    QCOMPARE(ZQLog::availableLogs(), QStringList());
}

void ZQLogRotationTest::aFileOf499999BytesIsNotFull()
{
    ZQLog::createNewLog();
    fillTo(maxFileSize - 1);
    QCOMPARE(ZQLog::sharedController().bytesWritten(), maxFileSize - 1);
    QCOMPARE(test::contents(generation(1)).size(), int(maxFileSize - 1));
    QVERIFY(!QFile::exists(generation(2)));
}

void ZQLogRotationTest::theEntryThatReaches500000BytesEndsTheOldFile()
{
    ZQLog::createNewLog();
    const auto filling = fillTo(maxFileSize);
    QCOMPARE(test::contents(generation(2)).size(), int(maxFileSize));
    QCOMPARE(body(generation(2)), QStringList(filling));
    const auto lines = entries(generation(1));
    QCOMPARE(test::headerSize(lines), 4);
    QCOMPARE(lines.mid(4), QStringList(notice()));
    QCOMPARE(ZQLog::sharedController().bytesWritten(),
             quint64(test::contents(generation(1)).size()));
    QCOMPARE(ZQLog::sharedController().bytesInQueue(), quint64(0));
}

void ZQLogRotationTest::theEntryBehindTheOneThatReaches500000BytesBeginsTheNewFile()
{
    // Queued at once, so that they are written together; the tenth line is the last byte.
    ZQLog::createNewLog();
    fillTo(maxFileSize - 10 * (lineOverhead + 1));
    for (int line = 0; line < 15; ++line) {
        ZQLog::fastAppendLog(text("%x"), line);
    }
    ZQLog::finishWriting();
    QCOMPARE(test::contents(generation(2)).size(), int(maxFileSize));
    QCOMPARE(body(generation(2)).last(), text("9"));
    QCOMPARE(body(generation(1)),
             (QStringList{notice(), text("a"), text("b"), text("c"), text("d"), text("e")}));
}

void ZQLogRotationTest::multiByteTextCountsInBytes()
{
    ZQLog::createNewLog();
    // 3 bytes each: full long before it has 500000 characters.
    for (int line = 0; line < 10; ++line) {
        ZQLog::appendLog(text("%@"), QString(17000, QChar(0x20AC)));
    }
    ZQLog::finishWriting();
    QCOMPARE(body(generation(2)).size(), 10);
    QCOMPARE(body(generation(1)), QStringList(notice()));
}

void ZQLogRotationTest::aBurstIsWrittenAsIfOneByOne()
{
    constexpr int lines = 18000; // four files
    ZQLog::createNewLog();
    for (int line = 0; line < lines; ++line) {
        ZQLog::fastAppendLog(text("%@ %i"), QString(50 + line % 50, QLatin1Char('x')), line);
    }
    ZQLog::finishWriting();
    int line = 0;
    const auto logs = ZQLog::availableLogs();
    QVERIFY(logs.size() >= 3);
    for (int number = static_cast<int>(logs.size()); number >= 1; --number) {
        const auto path = generation(number);
        const auto all = entries(path);
        QCOMPARE(test::headerSize(all), 4);
        const bool isFirst = number == static_cast<int>(logs.size());
        QCOMPARE(all[4] == notice(), !isFirst);
        for (const auto &entry : all.mid(isFirst ? 4 : 5)) {
            QVERIFY(entry.startsWith(QLatin1Char('x')));
            QCOMPARE(entry.mid(entry.indexOf(QLatin1Char(' ')) + 1).toInt(), line++);
        }
        if (number > 1) {
            const auto size = static_cast<quint64>(QFileInfo(path).size());
            const auto last = lineOverhead + static_cast<quint64>(all.last().size());
            QVERIFY(size >= maxFileSize);
            QVERIFY(size - last < maxFileSize);
        }
    }
    QCOMPARE(line, lines);
}

void ZQLogRotationTest::theTruncationNoticeIsWrittenFromInsideTheQueue()
{
    // Short, with nothing else waiting: the notice would wait for the queue that it is on.
    ZQLog::createNewLog();
    fillTo(maxFileSize - lineOverhead);
    ZQLog::fastAppendLog(text("x"));
    ZQLog::finishWriting();
    QCOMPARE(body(generation(2)).last(), text("x"));
    QCOMPARE(body(generation(1)), QStringList(notice()));
}

TEST_CLASS(ZQLogRotationTest, QCoreApplication)
#include "ZQLogRotationTest.moc"
