// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/KeyboardLayout.h"

#include "Platform/Core/Keys/VirtualKeyCode.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/KeyboardSettings.h"
#include "Tests/Support/TestProgram.h"
#include "Tests/Support/VirtualKeyCodes.h"

#include <QApplication>
#include <QGuiApplication>
#include <QTest>

#include <linux/input-event-codes.h>

using platform::KeyboardLayout;
using platform::Status;

constexpr int room = 255;
constexpr quint32 functionFlag = 0x800000;
constexpr quint32 shiftFlag = 0x20000;

// Layouts of a real X server.
class KeyboardLayoutTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void theCharactersAreThoseOfTheServersLayout_data();
    void theCharactersAreThoseOfTheServersLayout();
    void theUsLayoutHasItsCharactersAtTheirPlaces();
    void deadKeysHaveNoCharacters();
    void theGroupThatIsSwitchedOnCounts();
    void keysThatMoveOrEditHaveTheSameControlCharactersInEveryLayout();
    void theFunctionBitChangesTheKeysWithWordsOnly();
    void shiftGivesTheShiftedCharacter();
    void theKeypadHasItsDigitsWithAndWithoutNumLock();
    void theDecimalKeyOfTheKeypadIsTheLayouts();
    void modifiersAndUnusedCodesHaveNoCharacters();
    void aCodeOutOfRangeIsAnError();
    void textLongerThanTheRoomIsAnError();
    void everyStatusHasANameAndAComment();
    void aRemappedKeyIsSeenAtOnce();
    void theEnvironmentsLayoutIsUsedWithoutADesktop();
    void anUnknownLayoutInTheEnvironmentIsNone();

private:
    static QString text(quint16 code, quint32 modifiers = 0);
};

QString KeyboardLayoutTest::text(quint16 code, quint32 modifiers)
{
    const auto layout = KeyboardLayout::current();
    QString text = QStringLiteral("before");
    if (!layout || layout->translate(code, modifiers, room, text) != Status::NoError) {
        return QStringLiteral("failed");
    }
    return text;
}

void KeyboardLayoutTest::init()
{
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
    QVERIFY(test::setXLayout(QStringLiteral("us")));
}

void KeyboardLayoutTest::theCharactersAreThoseOfTheServersLayout_data()
{
    QTest::addColumn<QString>("layout");
    QTest::addColumn<QString>("variant");
    // Of the keys A, Q, Z, Y, 1, M, semicolon and S of a US keyboard.
    QTest::addColumn<QString>("characters");
    const QString none;
    QTest::newRow("us") << QStringLiteral("us") << none << QStringLiteral("aqzy1m;s");
    QTest::newRow("de") << QStringLiteral("de") << none << QStringLiteral("aqyz1mös");
    QTest::newRow("fr") << QStringLiteral("fr") << none << QStringLiteral("qawy&,ms");
    QTest::newRow("ru") << QStringLiteral("ru") << none << QStringLiteral("фйян1ьжы");
    QTest::newRow("dvorak") << QStringLiteral("us") << QStringLiteral("dvorak")
                            << QStringLiteral("a';f1mso");
    QTest::newRow("intl") << QStringLiteral("us") << QStringLiteral("intl")
                          << QStringLiteral("aqzy1m;s");
}

void KeyboardLayoutTest::theCharactersAreThoseOfTheServersLayout()
{
    QFETCH(QString, layout);
    QFETCH(QString, variant);
    QFETCH(QString, characters);
    QVERIFY(test::setXLayout(layout, variant));
    QString got;
    for (const int code : {0x00, 0x0C, 0x06, 0x10, 0x12, 0x2E, 0x29, 0x01}) {
        got += text(static_cast<quint16>(code));
    }
    QCOMPARE(got, characters);
}

void KeyboardLayoutTest::theUsLayoutHasItsCharactersAtTheirPlaces()
{
    QString characters;
    for (quint16 code = 0; code <= 0x32; ++code) {
        if (code != platform::virtualkey::Section && code != platform::virtualkey::Return &&
            code != platform::virtualkey::Tab) {
            characters += text(code);
        }
    }
    QCOMPARE(characters, QStringLiteral("asdfhgzxcvbqweryt123465=97-80]ou[iplj'k;\\,/nm. `"));
}

void KeyboardLayoutTest::deadKeysHaveNoCharacters()
{
    QVERIFY(test::setXLayout(QStringLiteral("us"), QStringLiteral("intl")));
    QCOMPARE(text(platform::virtualkey::Quote), QString());
    QCOMPARE(text(platform::virtualkey::Grave), QString());
    QVERIFY(test::setXLayout(QStringLiteral("de")));
    QCOMPARE(text(platform::virtualkey::Grave), QString());
    QCOMPARE(text(platform::virtualkey::Section), QStringLiteral("<"));
    QVERIFY(test::setXLayout(QStringLiteral("fr")));
    QCOMPARE(text(platform::virtualkey::LeftBracket), QString());
}

void KeyboardLayoutTest::theGroupThatIsSwitchedOnCounts()
{
    QVERIFY(test::setXLayout(QStringLiteral("us,ru"), QStringLiteral(",")));
    QCOMPARE(text(0x01), QStringLiteral("s"));
    QVERIFY(test::switchXGroup(1));
    QCOMPARE(text(0x01), QStringLiteral("ы"));
    QVERIFY(test::switchXGroup(0));
    QCOMPARE(text(0x01), QStringLiteral("s"));
}

void KeyboardLayoutTest::keysThatMoveOrEditHaveTheSameControlCharactersInEveryLayout()
{
    using namespace platform::virtualkey;
    for (const auto &layout : {QStringLiteral("us"), QStringLiteral("ru"), QStringLiteral("fr")}) {
        QVERIFY(test::setXLayout(layout, {}, QStringLiteral("caps:swapescape")));
        QCOMPARE(text(UpArrow), QStringLiteral("\x1E"));
        QCOMPARE(text(DownArrow), QStringLiteral("\x1F"));
        QCOMPARE(text(LeftArrow), QStringLiteral("\x1C"));
        QCOMPARE(text(RightArrow), QStringLiteral("\x1D"));
        QCOMPARE(text(Home), QStringLiteral("\x01"));
        QCOMPARE(text(End), QStringLiteral("\x04"));
        QCOMPARE(text(PageUp), QStringLiteral("\x0B"));
        QCOMPARE(text(PageDown), QStringLiteral("\x0C"));
        QCOMPARE(text(KeypadEnter), QStringLiteral("\x03"));
        QCOMPARE(text(Return), QStringLiteral("\x0D"));
        QCOMPARE(text(Tab), QStringLiteral("\x09"));
        QCOMPARE(text(Backspace), QStringLiteral("\x08"));
        QCOMPARE(text(ForwardDelete), QStringLiteral("\x7F"));
        QCOMPARE(text(Escape), QStringLiteral("\x1B"));
        QCOMPARE(text(KeypadClear), QStringLiteral("\x1B"));
        QCOMPARE(text(Help), QStringLiteral("\x05"));
        QCOMPARE(text(platform::virtualkey::Space), QStringLiteral(" "));
        for (const auto key : {F1,  F2,  F3,  F4,  F5,  F6,  F7,  F8,  F9,  F10,        F11,
                               F12, F13, F14, F15, F16, F17, F18, F19, F20, ContextMenu}) {
            QCOMPARE(text(key), QStringLiteral("\x10"));
        }
    }
}

void KeyboardLayoutTest::theFunctionBitChangesTheKeysWithWordsOnly()
{
    for (const auto code : test::virtualKeyCodes()) {
        using namespace platform::virtualkey;
        static const QList<quint16> withWords{F13, F14, F15,           F16,  F17,        F18,
                                              F19, F20, ForwardDelete, Help, ContextMenu};
        QCOMPARE(text(code, functionFlag) == text(code), !withWords.contains(code));
    }
}

void KeyboardLayoutTest::shiftGivesTheShiftedCharacter()
{
    QCOMPARE(text(0x01, shiftFlag), QStringLiteral("S"));
    QCOMPARE(text(0x12, shiftFlag), QStringLiteral("!"));
    QCOMPARE(text(0x01, 0x1D0000), QStringLiteral("s")); // every other modifier
}

void KeyboardLayoutTest::theKeypadHasItsDigitsWithAndWithoutNumLock()
{
    using namespace platform::virtualkey;
    for (int round = 0; round < 2; ++round) {
        QString digits;
        for (const auto key : {Keypad0, Keypad1, Keypad2, Keypad3, Keypad4, Keypad5, Keypad6,
                               Keypad7, Keypad8, Keypad9, KeypadDecimal, KeypadMultiply, KeypadPlus,
                               KeypadDivide, KeypadMinus, KeypadEquals, KeypadComma}) {
            digits += text(key) + text(key, shiftFlag);
        }
        QCOMPARE(digits, QStringLiteral("00112233445566778899..**++//--==,,"));
        QVERIFY(test::xdotool({QStringLiteral("key"), test::xdotoolKey(KEY_NUMLOCK)}));
    }
}

void KeyboardLayoutTest::theDecimalKeyOfTheKeypadIsTheLayouts()
{
    QVERIFY(test::setXLayout(QStringLiteral("de")));
    QCOMPARE(text(platform::virtualkey::KeypadDecimal), QStringLiteral(","));
}

void KeyboardLayoutTest::modifiersAndUnusedCodesHaveNoCharacters()
{
    using namespace platform::virtualkey;
    for (const quint16 code : {quint16{Shift}, quint16{RightCommand}, quint16{CapsLock},
                               quint16{Function}, quint16{0x34}, quint16{0x42}, quint16{0x7F}}) {
        QCOMPARE(text(code), QString());
    }
}

void KeyboardLayoutTest::aCodeOutOfRangeIsAnError()
{
    const auto layout = KeyboardLayout::current();
    QVERIFY(layout.has_value());
    for (const int code : {0x80, 0xFFFF}) {
        QString text = QStringLiteral("before");
        QCOMPARE(layout->translate(static_cast<quint16>(code), 0, room, text), Status::Parameter);
        QCOMPARE(text, QString());
    }
}

void KeyboardLayoutTest::textLongerThanTheRoomIsAnError()
{
    const auto layout = KeyboardLayout::current();
    QVERIFY(layout.has_value());
    QString text;
    QCOMPARE(layout->translate(0, 0, 0, text), Status::OutputBufferTooSmall);
    QCOMPARE(layout->translate(0, 0, 1, text), Status::NoError);
}

void KeyboardLayoutTest::everyStatusHasANameAndAComment()
{
    for (const auto status : {Status::NoError, Status::Parameter, Status::OutputBufferTooSmall}) {
        QVERIFY(*platform::statusName(status) != '\0');
        QVERIFY(*platform::statusComment(status) != '\0');
    }
    QCOMPARE(platform::statusName(static_cast<Status>(1)), "");
    QCOMPARE(platform::statusComment(static_cast<Status>(1)), "");
}

void KeyboardLayoutTest::aRemappedKeyIsSeenAtOnce()
{
    QCOMPARE(text(0x01), QStringLiteral("s"));
    for (int round = 0; round < 20; ++round) {
        QVERIFY(test::setXLayout(QStringLiteral("us"), QStringLiteral("dvorak")));
        QCOMPARE(text(0x01), QStringLiteral("o"));
        QVERIFY(test::setXLayout(QStringLiteral("us")));
        QCOMPARE(text(0x01), QStringLiteral("s"));
    }
}

void KeyboardLayoutTest::theEnvironmentsLayoutIsUsedWithoutADesktop()
{
    const test::EnvironmentVariable layout("XKB_DEFAULT_LAYOUT", "fr");
    const auto french = KeyboardLayout::ofEnvironment();
    QVERIFY(french.has_value());
    QString text;
    QCOMPARE(french->translate(0x00, 0, room, text), Status::NoError);
    QCOMPARE(text, QStringLiteral("q"));
}

void KeyboardLayoutTest::anUnknownLayoutInTheEnvironmentIsNone()
{
    const test::EnvironmentVariable layout("XKB_DEFAULT_LAYOUT", "no-such-layout");
    QVERIFY(!KeyboardLayout::ofEnvironment());
}

TEST_CLASS(KeyboardLayoutTest, QApplication)
#include "KeyboardLayoutTest.moc"
