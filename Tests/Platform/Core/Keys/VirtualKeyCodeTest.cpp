// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/VirtualKeyCode.h"

#include "Tests/Support/TestProgram.h"
#include "Tests/Support/VirtualKeyCodes.h"

#include <QSet>
#include <QTest>

#include <linux/input-event-codes.h>

using platform::evdevCode;
using platform::virtualKeyCode;
using test::virtualKeyCodes;

class VirtualKeyCodeTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyKeyComesBackFromItsEvdevCode();
    void noTwoKeysShareAnEvdevCode();
    void everyEvdevCodeLeadsToAKeyOfTheTable();
    void theCodesArePlacesOfTheKeyboard_data();
    void theCodesArePlacesOfTheKeyboard();
    void theTableHasEveryKeyOfTheFormat();
    void keysOfOtherKeyboardsAreTheSameKeys();
    void printScreenHasThePlaceOfF13();
    void keysThatTheFormatLacksHaveNoCode();
    void theKeypadTheArrowsTheFunctionKeysAndTheModifiersAreToldApart();
};

void VirtualKeyCodeTest::everyKeyComesBackFromItsEvdevCode()
{
    for (const auto code : virtualKeyCodes()) {
        const auto evdev = evdevCode(code);
        QVERIFY(evdev.has_value());
        QCOMPARE(virtualKeyCode(*evdev), std::optional(code));
    }
}

void VirtualKeyCodeTest::noTwoKeysShareAnEvdevCode()
{
    QSet<quint32> evdevCodes;
    for (const auto code : virtualKeyCodes()) {
        evdevCodes << evdevCode(code).value_or(0);
    }
    QCOMPARE(evdevCodes.size(), virtualKeyCodes().size());
    QVERIFY(!evdevCodes.contains(0));
}

void VirtualKeyCodeTest::everyEvdevCodeLeadsToAKeyOfTheTable()
{
    const auto codes = virtualKeyCodes();
    int found = 0;
    for (quint32 evdev = 0; evdev <= KEY_MAX; ++evdev) {
        if (const auto code = virtualKeyCode(evdev)) {
            QVERIFY(codes.contains(*code));
            ++found;
        }
    }
    QCOMPARE(found, codes.size() + 5); // five keys have a second evdev code
}

void VirtualKeyCodeTest::theCodesArePlacesOfTheKeyboard_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("evdev");
    QTest::newRow("A") << 0x00 << KEY_A;
    QTest::newRow("S") << 0x01 << KEY_S;
    QTest::newRow("5 and 6 are not in order") << 0x17 << KEY_5;
    QTest::newRow("6") << 0x16 << KEY_6;
    QTest::newRow("beside left Shift") << 0x0A << KEY_102ND;
    QTest::newRow("left of 1") << 0x32 << KEY_GRAVE;
    QTest::newRow("Return") << 0x24 << KEY_ENTER;
    QTest::newRow("Space") << 0x31 << KEY_SPACE;
    QTest::newRow("F5") << 0x60 << KEY_F5;
    QTest::newRow("F20") << 0x5A << KEY_F20;
    QTest::newRow("Up") << 0x7E << KEY_UP;
    QTest::newRow("Down") << 0x7D << KEY_DOWN;
    QTest::newRow("Insert is where Help is") << 0x72 << KEY_INSERT;
    QTest::newRow("Num Lock is where Clear is") << 0x47 << KEY_NUMLOCK;
    QTest::newRow("Enter of the keypad") << 0x4C << KEY_KPENTER;
    QTest::newRow("equals of the keypad") << 0x51 << KEY_KPEQUAL;
    QTest::newRow("8 of the keypad follows F20") << 0x5B << KEY_KP8;
    QTest::newRow("Yen") << 0x5D << KEY_YEN;
    QTest::newRow("JIS underscore") << 0x5E << KEY_RO;
    QTest::newRow("left of a JIS space bar") << 0x66 << KEY_MUHENKAN;
    QTest::newRow("right of a JIS space bar") << 0x68 << KEY_HENKAN;
    QTest::newRow("louder") << 0x48 << KEY_VOLUMEUP;
    QTest::newRow("softer") << 0x49 << KEY_VOLUMEDOWN;
    QTest::newRow("mute") << 0x4A << KEY_MUTE;
    QTest::newRow("left Command") << 0x37 << KEY_LEFTMETA;
    QTest::newRow("right Command") << 0x36 << KEY_RIGHTMETA;
    QTest::newRow("left Option") << 0x3A << KEY_LEFTALT;
    QTest::newRow("right Option") << 0x3D << KEY_RIGHTALT;
}

void VirtualKeyCodeTest::theCodesArePlacesOfTheKeyboard()
{
    QFETCH(int, code);
    QFETCH(int, evdev);
    QCOMPARE(evdevCode(static_cast<quint16>(code)), std::optional(static_cast<quint32>(evdev)));
    QCOMPARE(virtualKeyCode(static_cast<quint32>(evdev)),
             std::optional(static_cast<quint16>(code)));
}

void VirtualKeyCodeTest::theTableHasEveryKeyOfTheFormat()
{
    // Below 0x80 these stand for no key of a keyboard.
    const QSet<int> none{0x34, 0x42, 0x44, 0x46, 0x4D, 0x6C, 0x70, 0x7F};
    for (int code = 0; code < 0x80; ++code) {
        QCOMPARE(evdevCode(static_cast<quint16>(code)).has_value(), !none.contains(code));
    }
    for (int code = 0x80; code <= 0xFFFF; ++code) {
        QVERIFY(!evdevCode(static_cast<quint16>(code)));
    }
    QCOMPARE(virtualKeyCodes().size(), 120);
}

void VirtualKeyCodeTest::keysOfOtherKeyboardsAreTheSameKeys()
{
    QCOMPARE(virtualKeyCode(KEY_HELP), virtualKeyCode(KEY_INSERT));
    QCOMPARE(virtualKeyCode(KEY_KPJPCOMMA), virtualKeyCode(KEY_KPCOMMA));
    QCOMPARE(virtualKeyCode(KEY_HANGEUL), virtualKeyCode(KEY_HENKAN));
    QCOMPARE(virtualKeyCode(KEY_HANJA), virtualKeyCode(KEY_MUHENKAN));
}

void VirtualKeyCodeTest::printScreenHasThePlaceOfF13()
{
    QCOMPARE(virtualKeyCode(KEY_SYSRQ), std::optional<quint16>(0x69));
    QCOMPARE(virtualKeyCode(KEY_SYSRQ), virtualKeyCode(KEY_F13));
}

void VirtualKeyCodeTest::keysThatTheFormatLacksHaveNoCode()
{
    for (const int evdev : {KEY_RESERVED, KEY_SCROLLLOCK, KEY_PAUSE, KEY_F21, KEY_PLAYPAUSE,
                            KEY_NEXTSONG, KEY_POWER, KEY_MAX + 1}) {
        QVERIFY(!virtualKeyCode(static_cast<quint32>(evdev)));
    }
    QVERIFY(!virtualKeyCode(0xFFFFFFFF));
}

void VirtualKeyCodeTest::theKeypadTheArrowsTheFunctionKeysAndTheModifiersAreToldApart()
{
    int keypad = 0;
    int arrows = 0;
    int functions = 0;
    int modifiers = 0;
    for (const auto code : virtualKeyCodes()) {
        keypad += platform::isKeypadKey(code) ? 1 : 0;
        arrows += platform::isArrowKey(code) ? 1 : 0;
        functions += platform::isFunctionKey(code) ? 1 : 0;
        modifiers += platform::isModifierKey(code) ? 1 : 0;
        QVERIFY(!(platform::isKeypadKey(code) && platform::isFunctionKey(code)));
        QVERIFY(!(platform::isModifierKey(code) && platform::isFunctionKey(code)));
    }
    QCOMPARE(keypad, 19); // ten digits, . * + - / = , Enter and Clear
    QCOMPARE(arrows, 4);
    QCOMPARE(functions, 31); // F1 to F20, the arrows, six above them, the menu key
    QCOMPARE(modifiers, 10); // four on either side, Caps Lock, Fn
}

TEST_CLASS(VirtualKeyCodeTest, QCoreApplication)
#include "VirtualKeyCodeTest.moc"
