// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Log/ZQLog.h"

#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Support/StandardOutputCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QDateTime>
#include <QDir>
#include <QProcess>
#include <QTest>

#include <array>
#include <type_traits>

// How texts become lines of the file.
class ZQLogTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();

    void anEntryIsOneLineOfDateAndText();
    void theDateIsInUtcWhateverTheTimeZone();
    void theThreeAppendOperationsFormatTheirArguments();
    void aNullFormatDoesNothing();
    void anEntryIsTrimmedAtItsEndsOnly();
    void anEntryOfWhiteSpaceProducesNothingAndLeavesBytesInQueueUnchanged();
    void aLineBreakInsideAnEntryStays();
    void aNulInsideAnEntryStays();
    void aSurrogateWithoutItsOtherHalfBecomesAQuestionMark();
    void anEntryOfTenMillionCharactersIsWrittenWhole();
    void textIsWrittenInUtf8();

    void appendLogAndPrintPrintsTheTrimmedText();
    void aTextWithAPercentSignGivenToAppendLogAndPrintIsFormattedTwice();
    void anEmptyTextGivenToAppendLogAndPrintPrintsAnEmptyLineOnly();

    void bytesWrittenCountsTheBytesSinceTheNewLog();
    void bytesInQueueReturnsToZero();
    void theInstanceIsAStrictSingleton();
    void availableLogsAreTheExistingGenerationsInOrder();
};

namespace {

using test::body;
using test::generation;

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

// What stands behind the header.
QByteArray rawBody()
{
    ZQLog::finishWriting();
    auto bytes = test::contents(generation(1));
    for (int line = 0; line < 4; ++line) {
        bytes.remove(0, bytes.indexOf('\n') + 1);
    }
    return bytes;
}

// The date at the start of a line.
QDateTime dateOf(const QByteArray &line)
{
    return QDateTime::fromString(QString::fromLatin1(line.left(10) + 'T' + line.mid(11, 8) + 'Z'),
                                 Qt::ISODate);
}

constexpr int dateLength = 28; // "2012-06-15 14:23:45 +0000 - "

} // namespace

void ZQLogTest::init()
{
    ZQLog::finishWriting();
    test::clearLibraries();
    ZQLog::createNewLog();
    ZQLog::finishWriting();
}

void ZQLogTest::anEntryIsOneLineOfDateAndText()
{
    const auto before = QDateTime::currentDateTimeUtc();
    ZQLog::appendLog(text("an entry"));
    const auto line = rawBody();
    const auto after = QDateTime::currentDateTimeUtc();
    QCOMPARE(line.mid(19), QByteArray(" +0000 - an entry\n"));
    const auto date = dateOf(line);
    QVERIFY(date.isValid());
    QVERIFY(before.addSecs(-1) <= date && date <= after);
}

void ZQLogTest::theDateIsInUtcWhateverTheTimeZone()
{
    QProcess process;
    process.setProcessEnvironment([] {
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(text("TZ"), text("XYZ-11:30"));
        return environment;
    }());
    const auto before = QDateTime::currentDateTimeUtc().addSecs(-1);
    process.start(test::logProgram(), {text("new")});
    QVERIFY(process.waitForFinished());
    const auto date = dateOf(test::contents(generation(1, text("LogProgram"))));
    QVERIFY(before <= date && date <= QDateTime::currentDateTimeUtc());
}

void ZQLogTest::theThreeAppendOperationsFormatTheirArguments()
{
    ZQLog::appendLog(text("%@ %i"), text("one"), 1);
    ZQLog::fastAppendLog(text("%s %0.2f"), "two", 2.0);
    const auto output = test::outputOf(
        [] { ZQLog::appendLogAndPrint(text("%@ %li"), QVariant(text("three")), 3L); });
    QCOMPARE(output, text("three 3\n"));
    ZQLog::finishWriting();
    QCOMPARE(body(generation(1)), (QStringList{text("one 1"), text("two 2.00"), text("three 3")}));
}

void ZQLogTest::aNullFormatDoesNothing()
{
    const auto output = test::outputOf([] {
        ZQLog::appendLog(QString());
        ZQLog::fastAppendLog(QString());
        ZQLog::appendLogAndPrint(QString());
        ZQLog::finishWriting();
    });
    QCOMPARE(output, QString());
    QCOMPARE(rawBody(), QByteArray());
}

void ZQLogTest::anEntryIsTrimmedAtItsEndsOnly()
{
    ZQLog::appendLog(text(" \t\r\n\u00a0\u2028 a  b\t c \u0085\n"));
    QCOMPARE(rawBody().mid(dateLength), QByteArray("a  b\t c\n"));
}

void ZQLogTest::anEntryOfWhiteSpaceProducesNothingAndLeavesBytesInQueueUnchanged()
{
    const auto written = ZQLog::sharedController().bytesWritten();
    for (const char *space : {"", " ", "\n", " \t\r\n \u00a0 \u2028\n"}) {
        ZQLog::fastAppendLog(text("%@"), text(space));
        QCOMPARE(ZQLog::sharedController().bytesInQueue(), quint64(0));
    }
    QCOMPARE(rawBody(), QByteArray());
    QCOMPARE(ZQLog::sharedController().bytesWritten(), written);
}

void ZQLogTest::aLineBreakInsideAnEntryStays()
{
    ZQLog::appendLog(text("\none\r\ntwo\n\nthree\n"));
    QCOMPARE(rawBody().mid(dateLength), QByteArray("one\r\ntwo\n\nthree\n"));
}

void ZQLogTest::aNulInsideAnEntryStays()
{
    ZQLog::appendLog(QString::fromLatin1("a\0b", 3));
    QCOMPARE(rawBody().mid(dateLength), QByteArray("a\0b\n", 4));
}

void ZQLogTest::aSurrogateWithoutItsOtherHalfBecomesAQuestionMark()
{
    const std::array<QString, 3> texts{QString(QChar(0xD83D)), QString(QChar(0xDE00)),
                                       text("a") + QChar(0xDE00) + QChar(0xD83D) + text("b")};
    for (const auto &broken : texts) {
        ZQLog::appendLog(broken);
    }
    ZQLog::finishWriting();
    QCOMPARE(body(generation(1)), (QStringList{text("?"), text("?"), text("a??b")}));
    QCOMPARE(ZQLog::sharedController().bytesInQueue(), quint64(0));
}

void ZQLogTest::anEntryOfTenMillionCharactersIsWrittenWhole()
{
    constexpr int size = 10'000'000;
    ZQLog::appendLog(text("%@"), QString(size, QLatin1Char('x')));
    ZQLog::appendLog(text("behind"));
    ZQLog::finishWriting();
    // It ends its file.
    const auto lines = body(generation(2));
    QCOMPARE(lines.size(), 1);
    QCOMPARE(lines[0].size(), size);
    QCOMPARE(lines[0].count(QLatin1Char('x')), size);
    QCOMPARE(body(generation(1)), (QStringList{text("Log truncated at 500KB"), text("behind")}));
}

void ZQLogTest::textIsWrittenInUtf8()
{
    ZQLog::appendLog(text("Ünïcödé \u20ac \U0001F600 and many more characters of ASCII behind"));
    QCOMPARE(rawBody().mid(dateLength),
             QByteArray("Ünïcödé \u20ac \U0001F600 and many more characters of ASCII behind\n"));
}

void ZQLogTest::appendLogAndPrintPrintsTheTrimmedText()
{
    const auto output =
        test::outputOf([] { ZQLog::appendLogAndPrint(text("  %@\n\n"), text("a text")); });
    QCOMPARE(output, text("a text\n"));
    ZQLog::finishWriting();
    QCOMPARE(body(generation(1)), QStringList(text("a text")));
}

void ZQLogTest::aTextWithAPercentSignGivenToAppendLogAndPrintIsFormattedTwice()
{
    const auto output = test::outputOf(
        [] { ZQLog::appendLogAndPrint(text("%@ and %@"), text("100%% %i"), text("%@")); });
    QCOMPARE(output, text("100%% %i and %@\n"));
    ZQLog::finishWriting();
    QCOMPARE(body(generation(1)), QStringList(text("100% (null) and (null)")));
}

void ZQLogTest::anEmptyTextGivenToAppendLogAndPrintPrintsAnEmptyLineOnly()
{
    const auto output = test::outputOf([] { ZQLog::appendLogAndPrint(text(" \n")); });
    QCOMPARE(output, text("\n"));
    QCOMPARE(rawBody(), QByteArray());
}

void ZQLogTest::bytesWrittenCountsTheBytesSinceTheNewLog()
{
    auto &log = ZQLog::sharedController();
    QCOMPARE(log.bytesWritten(), quint64(test::contents(generation(1)).size()));
    ZQLog::appendLog(text("\u20ac\u20ac"));
    ZQLog::finishWriting();
    QCOMPARE(log.bytesWritten(), quint64(test::contents(generation(1)).size()));
    // What others add to the file does not count.
    QFile file(generation(1));
    QVERIFY(file.open(QIODevice::Append));
    file.write("not ours\n");
    file.close();
    ZQLog::appendLog(text("again"));
    ZQLog::finishWriting();
    QCOMPARE(log.bytesWritten() + 9, quint64(test::contents(generation(1)).size()));
}

void ZQLogTest::bytesInQueueReturnsToZero()
{
    for (int line = 0; line < 1000; ++line) {
        ZQLog::fastAppendLog(text("\u20ac line %i"), line);
    }
    ZQLog::finishWriting();
    QCOMPARE(ZQLog::sharedController().bytesInQueue(), quint64(0));
}

void ZQLogTest::theInstanceIsAStrictSingleton()
{
    QCOMPARE(&ZQLog::sharedController(), &ZQLog::sharedController());
    QVERIFY(!std::is_default_constructible_v<ZQLog>);
    QVERIFY(!std::is_copy_constructible_v<ZQLog>);
    QVERIFY(!std::is_move_constructible_v<ZQLog>);
    QVERIFY(!std::is_copy_assignable_v<ZQLog>);
    QVERIFY(!std::is_destructible_v<ZQLog>);
}

void ZQLogTest::availableLogsAreTheExistingGenerationsInOrder()
{
    QCOMPARE(ZQLog::availableLogs(), QStringList(generation(1)));
    test::write(generation(3), {});
    QCOMPARE(ZQLog::availableLogs(), (QStringList{generation(1), generation(3)}));
    for (const int number : {0, 2, 4, 5, 6}) {
        test::write(generation(number), {});
    }
    QCOMPARE(ZQLog::availableLogs(), (QStringList{generation(1), generation(2), generation(3),
                                                  generation(4), generation(5)}));
    test::clearLibraries();
    QCOMPARE(ZQLog::availableLogs(), QStringList());
}

TEST_CLASS(ZQLogTest, QCoreApplication)
#include "ZQLogTest.moc"
