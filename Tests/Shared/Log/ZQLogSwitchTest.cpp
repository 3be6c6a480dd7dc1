// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

// The switch in the global preferences file.
class ZQLogSwitchTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();

    void aValueThatDisablesCreatesNoFile_data();
    void aValueThatDisablesCreatesNoFile();
    void anyOtherValueLeavesLoggingOn_data();
    void anyOtherValueLeavesLoggingOn();
    void aMissingFileLeavesLoggingOn();
    void anUnreadableFileLeavesLoggingOn();
    void theSwitchIsReadWithEachNewLogOnly();
    void disabledLoggingIsNeverReset();
    void bytesInQueueOnlyGrowsWhileLoggingIsDisabled();
    void disabledLoggingPrintsNothingMore();
    void appendLogAndPrintStillPrints();
};

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QString preferences()
{
    return QDir::homePath() + text("/Library/Preferences/com.corvane.global.plist");
}

QString logFile()
{
    return test::generation(1, text("LogProgram"));
}

QByteArray propertyList(const QByteArray &value)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n<dict>\n"
           "<key>SUCheckAtStartup</key><true/>\n" +
           value + "</dict>\n</plist>\n";
}

QByteArray disableLogging(const QByteArray &value)
{
    return propertyList("<key>disable-logging</key>" + value);
}

const auto isDisabled = QStringLiteral("Logging is disabled");

} // namespace

void ZQLogSwitchTest::init()
{
    test::clearLibraries();
}

void ZQLogSwitchTest::aValueThatDisablesCreatesNoFile_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("the text 1") << QByteArray("<string>1</string>");
    QTest::newRow("true") << QByteArray("<true/>");
    QTest::newRow("the number 1") << QByteArray("<integer>1</integer>");
    QTest::newRow("the real number 1") << QByteArray("<real>1.0</real>");
}

void ZQLogSwitchTest::aValueThatDisablesCreatesNoFile()
{
    QFETCH(QByteArray, value);
    test::write(preferences(), disableLogging(value));
    const auto run =
        test::runLogProgram({text("new"), text("append=text"), text("finish"), text("state")});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.output,
             (QStringList{isDisabled, text("queue 4 written 0 disabled 1 name LogProgram")}));
    QVERIFY(!QFileInfo::exists(test::userLogFolder()));
}

void ZQLogSwitchTest::anyOtherValueLeavesLoggingOn_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("the text YES") << disableLogging("<string>YES</string>");
    QTest::newRow("the text 1 with a space") << disableLogging("<string>1 </string>");
    QTest::newRow("the text 1.0") << disableLogging("<string>1.0</string>");
    QTest::newRow("an empty text") << disableLogging("<string></string>");
    QTest::newRow("the number 0") << disableLogging("<integer>0</integer>");
    QTest::newRow("the number 2") << disableLogging("<integer>2</integer>");
    QTest::newRow("the number -1") << disableLogging("<integer>-1</integer>");
    QTest::newRow("the number 1.5") << disableLogging("<real>1.5</real>");
    QTest::newRow("false") << disableLogging("<false/>");
    QTest::newRow("data that reads 1") << disableLogging("<data>MQ==</data>");
    QTest::newRow("a dictionary") << disableLogging(
        "<dict><key>disable-logging</key><true/></dict>");
    QTest::newRow("a list") << disableLogging("<array><true/></array>");
    QTest::newRow("no such key") << propertyList("");
    QTest::newRow("a list instead of a dictionary") << QByteArray(
        "<plist version=\"1.0\"><array><string>disable-logging</string></array></plist>");
    QTest::newRow("a broken file") << disableLogging("<true/>").left(90);
    QTest::newRow("an empty file") << QByteArray();
    QTest::newRow("no property list") << QByteArray("\0\1\2disable-logging", 18);
}

void ZQLogSwitchTest::anyOtherValueLeavesLoggingOn()
{
    QFETCH(QByteArray, file);
    test::write(preferences(), file);
    const auto run = test::runLogProgram({text("new"), text("append=text")});
    QCOMPARE(run.output, QStringList());
    QCOMPARE(test::body(logFile()), QStringList(text("text")));
}

void ZQLogSwitchTest::aMissingFileLeavesLoggingOn()
{
    const auto run = test::runLogProgram({text("new"), text("append=text")});
    QCOMPARE(run.output, QStringList());
    QCOMPARE(test::body(logFile()), QStringList(text("text")));
}

void ZQLogSwitchTest::anUnreadableFileLeavesLoggingOn()
{
    test::write(preferences(), disableLogging("<true/>"));
    QVERIFY(QFile::setPermissions(preferences(), QFile::WriteOwner));
    const auto run = test::runLogProgram({text("new"), text("append=text")});
    QCOMPARE(run.output, QStringList());
    QCOMPARE(test::body(logFile()), QStringList(text("text")));
}

void ZQLogSwitchTest::theSwitchIsReadWithEachNewLogOnly()
{
    test::write(preferences(), disableLogging("<true/>"));
    test::write(logFile(), "");
    const auto run = test::runLogProgram(
        {text("append=before"), text("finish"), text("new"), text("append=after")});
    QCOMPARE(run.output, QStringList(isDisabled));
    QCOMPARE(test::entries(logFile()), QStringList(text("before")));
}

void ZQLogSwitchTest::disabledLoggingIsNeverReset()
{
    // The first new log is refused by one process, the file then replaced by another.
    test::write(preferences(), disableLogging("<true/>"));
    const auto run = test::runLogProgram(
        {text("new"), text("remove-preferences"), text("new"), text("append=text"), text("state")});
    QCOMPARE(run.output.size(), 2);
    QVERIFY(run.output[1].contains(text(" disabled 1 ")));
    // The new file is there, but nothing is written to it.
    QCOMPARE(test::contents(logFile()), QByteArray());
    QVERIFY(QFileInfo::exists(logFile()));
}

void ZQLogSwitchTest::bytesInQueueOnlyGrowsWhileLoggingIsDisabled()
{
    test::write(preferences(), disableLogging("<true/>"));
    const auto run =
        test::runLogProgram({text("new"), text("append=12345"), text("finish"), text("state"),
                             text("fast= 1234567 "), text("finish"), text("state")});
    QCOMPARE(run.output,
             (QStringList{isDisabled, text("queue 5 written 0 disabled 1 name LogProgram"),
                          text("queue 12 written 0 disabled 1 name LogProgram")}));
}

void ZQLogSwitchTest::disabledLoggingPrintsNothingMore()
{
    test::write(preferences(), disableLogging("<true/>"));
    const auto run =
        test::runLogProgram({text("new"), text("append=text"), text("lines=100"), text("finish")});
    QCOMPARE(run.output, QStringList(isDisabled));
}

void ZQLogSwitchTest::appendLogAndPrintStillPrints()
{
    test::write(preferences(), disableLogging("<true/>"));
    const auto run = test::runLogProgram({text("new"), text("print=text")});
    QCOMPARE(run.output, (QStringList{isDisabled, text("text")}));
}

TEST_CLASS(ZQLogSwitchTest, QCoreApplication)
#include "ZQLogSwitchTest.moc"
