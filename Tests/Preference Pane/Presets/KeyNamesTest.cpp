// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/VirtualKeyCode.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Shared/Log/ZQLog.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTest>

using Controller = ZQKeyboardLayoutEditController;
namespace key = platform::virtualkey;

constexpr quint32 functionFlag = 0x800000;

// With the layouts of the environment: no desktop gives one here.
class KeyNamesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();

    void keyCode1WithCommandAndControlIsCtrlCmdS();
    void optionWithALetterGivesThePlainLetter();
    void thePrefixesStandInTheOrderCtrlShiftAltCmd();
    void aSingleCharacterIsShownInUpperCase_data();
    void aSingleCharacterIsShownInUpperCase();
    void shiftDoesNotReachTheLayout();
    void f5IsNamedByItsKeyCode();
    void f1ToF12AreNamedByTheirKeyCodes();
    void f13AndLaterHaveNames();
    void upArrowWithTheFunctionBitIsNamedByItsControlCharacter();
    void upArrowWithoutTheFunctionBitHasNoName();
    void theValueF700IsUpArrowWithAndWithoutTheFunctionBit();
    void theTenthNamedCharacterIsNeverFound();
    void arrowsAndNavigationKeysHaveTheirNames();
    void aCharacterThatIsAnFKeysCodeTakesItsName();
    void aKeyCodeThatIsAnFKeysCodeTakesItsName();
    void keyCodeZeroWithTheFunctionBitIsNullWhereNoRowBeforeMatches();
    void keypadEnterIsReturnAndReturnIsEnter();
    void theNamedCharactersHaveTheirNames();
    void backtabIsNamedWhereTheLayoutGivesIt();
    void textOfTwoCharactersIsNotUpperCased();
    void twoUnitsOfOneCharacterAreNotUpperCased();
    void keysWithoutARowAreCalledWhatTheLayoutCallsThem();
    void aDeadKeyIsNull();
    void aMissingLayoutIsNull();
    void aStatusThatIsNoSuccessIsNull();
    void theKeyCodeIsReadAs16BitsAndTheModifiersAsAWord();
    void aRealNumberLosesItsFraction();
    void theResultIsNeverMissing();
    void theConsoleTellsEveryStep();
    void whatWasPressedDoesNotGetIntoTheLogsThatSupportReads();

private:
    static QString contentsOf(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }
    static QString nameOf(int code, quint32 modifiers = 0)
    {
        return Controller::nameForKeyCode(code, modifiers);
    }
    static QString stringOf(int code, quint32 modifiers = 0)
    {
        return Controller::stringForKeyCode(static_cast<quint16>(code), modifiers);
    }
};

void KeyNamesTest::initTestCase()
{
    // A layout of the user's own with what no usual layout has.
    const auto folder = QDir::homePath() + QStringLiteral("/.config/xkb/symbols");
    QVERIFY(QDir().mkpath(folder));
    QFile file(folder + QStringLiteral("/odd"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"(default xkb_symbols "basic" {
    include "us"
    key <AC02> { [ { l, j } ] };
    key <AD01> { [ U10428 ] };
    key <AE01> { [ 0x100F700 ] };
    key <AE02> { [ 0x100F701 ] };
    key <AE03> { [ 0x1000019 ] };
    key <AE04> { [ ISO_Left_Tab ] };
    key <AE05> { [ Delete ] };
};
)");
}

void KeyNamesTest::keyCode1WithCommandAndControlIsCtrlCmdS()
{
    QCOMPARE(nameOf(1, 0x140000), QStringLiteral("Ctrl+Cmd+S"));
}

void KeyNamesTest::optionWithALetterGivesThePlainLetter()
{
    QCOMPARE(nameOf(0x0E, 0x80000), QStringLiteral("Alt+E"));
    const test::EnvironmentVariable layout("XKB_DEFAULT_LAYOUT", "de"); // AltGr+E is the euro sign
    QCOMPARE(nameOf(0x0E, 0x80140), QStringLiteral("Alt+E"));
}

void KeyNamesTest::thePrefixesStandInTheOrderCtrlShiftAltCmd()
{
    QCOMPARE(nameOf(0, 0x1E0000), QStringLiteral("Ctrl+Shift+Alt+Cmd+A"));
    QCOMPARE(nameOf(0, 0x40000), QStringLiteral("Ctrl+A"));
    QCOMPARE(nameOf(0, 0x20000), QStringLiteral("Shift+A"));
    QCOMPARE(nameOf(0, 0x100000), QStringLiteral("Cmd+A"));
    QCOMPARE(nameOf(0, 0xA0000), QStringLiteral("Shift+Alt+A"));
    QCOMPARE(nameOf(0, 0x1215F), QStringLiteral("A")); // the bits of single keys and of Caps Lock
}

void KeyNamesTest::aSingleCharacterIsShownInUpperCase_data()
{
    QTest::addColumn<QByteArray>("layout");
    QTest::addColumn<QByteArray>("variant");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("name");
    QTest::newRow("us") << QByteArray("us") << QByteArray() << 1 << QStringLiteral("S");
    QTest::newRow("digit") << QByteArray("us") << QByteArray() << 0x12 << QStringLiteral("1");
    QTest::newRow("de") << QByteArray("de") << QByteArray() << 0x29 << QStringLiteral("Ö");
    QTest::newRow("fr") << QByteArray("fr") << QByteArray() << 0x0C << QStringLiteral("A");
    QTest::newRow("ru") << QByteArray("ru") << QByteArray() << 1 << QStringLiteral("Ы");
    QTest::newRow("dvorak") << QByteArray("us") << QByteArray("dvorak") << 1 << QStringLiteral("O");
    QTest::newRow("intl") << QByteArray("us") << QByteArray("intl") << 1 << QStringLiteral("S");
}

void KeyNamesTest::aSingleCharacterIsShownInUpperCase()
{
    QFETCH(QByteArray, layout);
    QFETCH(QByteArray, variant);
    QFETCH(int, code);
    QFETCH(QString, name);
    const test::EnvironmentVariable layoutVariable("XKB_DEFAULT_LAYOUT", layout);
    const test::EnvironmentVariable variantVariable("XKB_DEFAULT_VARIANT", variant);
    QCOMPARE(nameOf(code), name);
    QCOMPARE(stringOf(code), name.toLower());
}

void KeyNamesTest::shiftDoesNotReachTheLayout()
{
    QCOMPARE(stringOf(0x12, 0x20000), QStringLiteral("1"));
    QCOMPARE(nameOf(0x12, 0x20000), QStringLiteral("Shift+1"));
}

void KeyNamesTest::f5IsNamedByItsKeyCode()
{
    QCOMPARE(nameOf(0x60, functionFlag), QStringLiteral("F5"));
    QCOMPARE(nameOf(0x60, functionFlag | 0x100000), QStringLiteral("Cmd+F5"));
}

void KeyNamesTest::f1ToF12AreNamedByTheirKeyCodes()
{
    QStringList names;
    for (const int code :
         {0x7A, 0x78, 0x63, 0x76, 0x60, 0x61, 0x62, 0x64, 0x65, 0x6D, 0x67, 0x6F}) {
        names << nameOf(code, functionFlag);
    }
    QCOMPARE(names.join(QLatin1Char(' ')),
             QStringLiteral("F1 F2 F3 F4 F5 F6 F7 F8 F9 F10 F11 F12"));
}

void KeyNamesTest::f13AndLaterHaveNames()
{
    QStringList names;
    for (const auto code :
         {key::F13, key::F14, key::F15, key::F16, key::F17, key::F18, key::F19, key::F20}) {
        names << nameOf(code, functionFlag);
    }
    QCOMPARE(names.join(QLatin1Char(' ')), QStringLiteral("F13 F14 F15 F16 F17 F18 F19 F20"));
}

void KeyNamesTest::upArrowWithTheFunctionBitIsNamedByItsControlCharacter()
{
    QCOMPARE(nameOf(0x7E, functionFlag), QStringLiteral("Up Arrow"));
}

void KeyNamesTest::upArrowWithoutTheFunctionBitHasNoName()
{
    QCOMPARE(nameOf(0x7E), QStringLiteral("\x1E"));
}

void KeyNamesTest::theValueF700IsUpArrowWithAndWithoutTheFunctionBit()
{
    const test::EnvironmentVariable layout("XKB_DEFAULT_LAYOUT", "odd");
    QCOMPARE(nameOf(0x12), QStringLiteral("Up Arrow"));
    QCOMPARE(nameOf(0x12, functionFlag), QStringLiteral("Up Arrow"));
}

void KeyNamesTest::theTenthNamedCharacterIsNeverFound()
{
    const test::EnvironmentVariable layout("XKB_DEFAULT_LAYOUT", "odd");
    QCOMPARE(nameOf(0x13), QString(QChar(0xF701)));
    QCOMPARE(nameOf(0x13, functionFlag), QStringLiteral("Down Arrow"));
}

void KeyNamesTest::arrowsAndNavigationKeysHaveTheirNames()
{
    QStringList names;
    for (const auto code : {key::UpArrow, key::DownArrow, key::LeftArrow, key::RightArrow,
                            key::Home, key::End, key::PageUp, key::PageDown}) {
        names << nameOf(code, functionFlag | 0x40000);
    }
    QCOMPARE(names.join(QLatin1Char('/')),
             QStringLiteral("Ctrl+Up Arrow/Ctrl+Down Arrow/Ctrl+Left Arrow/Ctrl+Right Arrow/"
                            "Ctrl+Home/Ctrl+End/Ctrl+Page Up/Ctrl+Page Down"));
}

void KeyNamesTest::aCharacterThatIsAnFKeysCodeTakesItsName()
{
    QCOMPARE(nameOf(0, functionFlag), QStringLiteral("F6"));   // "a" is 0x61
    QCOMPARE(nameOf(8, functionFlag), QStringLiteral("F3"));   // "c" is 0x63
    QCOMPARE(nameOf(0x2D, functionFlag), QStringLiteral("N")); // "n" is in no row
    QCOMPARE(nameOf(5, functionFlag), QStringLiteral("F11"));  // "g" is 0x67
}

void KeyNamesTest::aKeyCodeThatIsAnFKeysCodeTakesItsName()
{
    // Key codes equal to a control character's row: 1 is that of Home, 4 of End.
    QCOMPARE(nameOf(1, functionFlag), QStringLiteral("Home"));
    QCOMPARE(nameOf(4, functionFlag), QStringLiteral("End"));
    QCOMPARE(nameOf(0x1E, functionFlag), QStringLiteral("Up Arrow"));
}

void KeyNamesTest::keyCodeZeroWithTheFunctionBitIsNullWhereNoRowBeforeMatches()
{
    const test::EnvironmentVariable layout("XKB_DEFAULT_LAYOUT", "fr"); // "q", 0x71
    QCOMPARE(nameOf(0, functionFlag), QStringLiteral("(null)"));
    QCOMPARE(nameOf(0, functionFlag | 0x20000), QStringLiteral("Shift+(null)"));
    QCOMPARE(stringOf(0, functionFlag), QStringLiteral("(null)"));
}

void KeyNamesTest::keypadEnterIsReturnAndReturnIsEnter()
{
    QCOMPARE(nameOf(0x4C), QStringLiteral("Return"));
    QCOMPARE(nameOf(0x24), QStringLiteral("Enter"));
}

void KeyNamesTest::theNamedCharactersHaveTheirNames()
{
    QCOMPARE(nameOf(key::Tab), QStringLiteral("Tab"));
    QCOMPARE(nameOf(key::Backspace), QStringLiteral("Backspace"));
    QCOMPARE(nameOf(key::ForwardDelete), QStringLiteral("Delete"));
    QCOMPARE(nameOf(key::Escape), QStringLiteral("Escape"));
    QCOMPARE(nameOf(key::Space), QStringLiteral("Space"));
}

void KeyNamesTest::backtabIsNamedWhereTheLayoutGivesIt()
{
    const test::EnvironmentVariable layout("XKB_DEFAULT_LAYOUT", "odd");
    QCOMPARE(nameOf(0x14), QStringLiteral("Backtab"));
    QCOMPARE(nameOf(0x17), QStringLiteral("Delete"));
}

void KeyNamesTest::textOfTwoCharactersIsNotUpperCased()
{
    const test::EnvironmentVariable layout("XKB_DEFAULT_LAYOUT", "odd");
    QCOMPARE(nameOf(1, 0x40000), QStringLiteral("Ctrl+lj"));
}

void KeyNamesTest::twoUnitsOfOneCharacterAreNotUpperCased()
{
    const test::EnvironmentVariable layout("XKB_DEFAULT_LAYOUT", "odd");
    const char32_t longI = 0x10428; // a small letter with a capital
    QCOMPARE(nameOf(0x0C), QString::fromUcs4(&longI, 1));
}

void KeyNamesTest::keysWithoutARowAreCalledWhatTheLayoutCallsThem()
{
    QCOMPARE(nameOf(key::ForwardDelete, functionFlag), QStringLiteral("Delete"));
    QCOMPARE(nameOf(key::Help, functionFlag), QStringLiteral("Insert"));
    QCOMPARE(nameOf(key::ContextMenu, functionFlag | 0x20000), QStringLiteral("Shift+Menu"));
    QCOMPARE(nameOf(key::VolumeUp), QStringLiteral("Volume Up"));
}

void KeyNamesTest::aDeadKeyIsNull()
{
    const test::EnvironmentVariable layout("XKB_DEFAULT_LAYOUT", "us");
    const test::EnvironmentVariable variant("XKB_DEFAULT_VARIANT", "intl");
    test::ConsoleCapture console;
    QCOMPARE(nameOf(key::Quote, 0x100000), QStringLiteral("Cmd+(null)"));
    QCOMPARE(console.lines(),
             (QStringList{QStringLiteral("keycode: 39"),
                          QStringLiteral("Couldn't find a translation for the '39' key code")}));
}

void KeyNamesTest::aMissingLayoutIsNull()
{
    const test::EnvironmentVariable layout("XKB_DEFAULT_LAYOUT", "no-such-layout");
    test::ConsoleCapture console;
    QVERIFY(stringOf(1).isNull());
    QCOMPARE(nameOf(1, 0x40000), QStringLiteral("Ctrl+(null)"));
    QCOMPARE(
        console.lines().mid(2),
        (QStringList{
            QStringLiteral("keycode: 1"),
            QStringLiteral("Couldn't find a suitable keyboard layout from which to translate")}));
}

void KeyNamesTest::aStatusThatIsNoSuccessIsNull()
{
    test::ConsoleCapture console;
    QVERIFY(stringOf(0x80).isNull());
    QCOMPARE(console.lines(),
             (QStringList{QStringLiteral("keycode: 128"),
                          QStringLiteral(
                              "There was an paramErr error translating from the '-50' key code to "
                              "a human readable string: a parameter is out of its range")}));
}

void KeyNamesTest::theKeyCodeIsReadAs16BitsAndTheModifiersAsAWord()
{
    QCOMPARE(Controller::nameForKeyCode(0x10001, 0x40000), QStringLiteral("Ctrl+S"));
    QCOMPARE(Controller::nameForKeyCode(-65535, -1 & ~0x9E0000), QStringLiteral("S"));
    QCOMPARE(Controller::nameForKeyCode(quint16{1}, quint64{0x100040000}),
             QStringLiteral("Ctrl+S"));
    QCOMPARE(Controller::nameForKeyCode(1U, 0x40000U), QStringLiteral("Ctrl+S"));
}

void KeyNamesTest::aRealNumberLosesItsFraction()
{
    QCOMPARE(Controller::nameForKeyCode(1.0, 262144.0), QStringLiteral("Ctrl+S"));
    QCOMPARE(Controller::nameForKeyCode(1.9, 262144.9), QStringLiteral("Ctrl+S"));
    QCOMPARE(Controller::nameForKeyCode(0.99999999999, 0), QStringLiteral("A"));
    QCOMPARE(Controller::nameForKeyCode(-0.9, -0.9), QStringLiteral("A"));
    QCOMPARE(Controller::nameForKeyCode(qQNaN(), qQNaN()), QStringLiteral("A"));
}

void KeyNamesTest::theResultIsNeverMissing()
{
    QCOMPARE(Controller::nameForKeyCode({}, {}), QStringLiteral("A"));
    for (int code = 0; code <= 0x200; ++code) {
        QVERIFY(!nameOf(code).isEmpty());
        QVERIFY(!nameOf(code, functionFlag).isEmpty());
    }
    QCOMPARE(nameOf(0xFFFF, 0x1E0000), QStringLiteral("Ctrl+Shift+Alt+Cmd+(null)"));
}

void KeyNamesTest::theConsoleTellsEveryStep()
{
    test::ConsoleCapture console;
    nameOf(1, 0x40000);
    nameOf(key::Space);
    nameOf(0x60, functionFlag);
    nameOf(key::F14, functionFlag);
    QCOMPARE(
        console.lines(),
        (QStringList{QStringLiteral("keycode: 1"), QStringLiteral("no modifier set"),
                     QStringLiteral("not found in glyph map"), QStringLiteral("keycode: 49"),
                     QStringLiteral("no modifier set"), QStringLiteral("keycode: 96"),
                     QStringLiteral("modifier set"), QStringLiteral("keycode: 107"),
                     QStringLiteral("modifier set"), QStringLiteral("not found in glyph map")}));
}

void KeyNamesTest::whatWasPressedDoesNotGetIntoTheLogsThatSupportReads()
{
    ZQLog::createNewLog();
    ZQLog::appendLog(QStringLiteral("before"));
    nameOf(1, 0x40000);
    nameOf(0x60, functionFlag);
    stringOf(0x80);
    ZQLog::appendLog(QStringLiteral("after"));
    const auto path =
        QDir::homePath() + QStringLiteral("/Library/Logs/Corvane/PanePresetsTests.1.log");
    QString text;
    QTRY_VERIFY((text = contentsOf(path)).contains(QStringLiteral("after")));
    QVERIFY(text.contains(QStringLiteral("before")));
    for (const auto &word : {QStringLiteral("keycode"), QStringLiteral("key code"),
                             QStringLiteral("modifier"), QStringLiteral("glyph")}) {
        QVERIFY(!text.contains(word));
    }
}

TEST_CLASS(KeyNamesTest, QApplication)
#include "KeyNamesTest.moc"
