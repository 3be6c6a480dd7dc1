// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/KeyPress.h"

#include "Platform/Core/Keys/HeldModifiers.h"
#include "Platform/Core/Keys/VirtualKeyCode.h"
#include "Tests/Support/TestProgram.h"
#include "Tests/Support/VirtualKeyCodes.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTest>
#include <QWidget>

#include <linux/input-event-codes.h>

using platform::KeyPress;
namespace flags = platform::keyflags;
namespace key = platform::virtualkey;

namespace {

// Keeps the last press of a key that is no modifier.
class Field : public QWidget {
public:
    std::optional<KeyPress> press;
    QString characters;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        const KeyPress one(*event);
        if (!one.isModifierKey()) {
            characters = one.charactersIgnoringModifiers();
            press = one;
        }
    }
    bool focusNextPrevChild(bool) override { return false; }
};

// As an X server or a Wayland compositor sends it: with a scan code.
QKeyEvent native(int qtKey, quint32 evdev, Qt::KeyboardModifiers modifiers = {},
                 quint32 nativeModifiers = 0, quint32 keysym = 0, const QString &text = {})
{
    return {QEvent::KeyPress, qtKey, modifiers, evdev + 8, keysym, nativeModifiers, text};
}

} // namespace

// Events without an X server.
class KeyPressTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();

    void aKeyWithoutAScanCodeIsThatOfAUsKeyboard_data();
    void aKeyWithoutAScanCodeIsThatOfAUsKeyboard();
    void theKeypadModifierMakesAKeyOneOfTheKeypad_data();
    void theKeypadModifierMakesAKeyOneOfTheKeypad();
    void anUnknownKeyHasNoCode();
    void theScanCodeCountsWhateverTheLayoutMakesOfTheKey();
    void anUnknownScanCodeLeavesQtsKey();
    void everyKeyOfTheTableIsKnownByItsScanCode();

    void aSingleLetterHasNoModifierBits();
    void everyModifierHasItsBit_data();
    void everyModifierHasItsBit();
    void anUnknownModifierKeyIsAssumedToBeTheLeftOne();
    void aRightModifierThatIsHeldHasItsBit();
    void bothModifiersThatAreHeldHaveTheirBits();
    void aModifierWhoseReleaseWasLostIsForgotten();
    void shiftThatTurnsRightAltIntoMetaLeavesItRightOption();
    void aModifiersOwnEventTellsWhatIsHeldAfterIt();
    void modifiersAndKeysThatChangeHowTheKeyboardTypesAreNoShortcuts();
    void altGrIsRightOption();
    void theGroupSwitchModifierIsRightOption();
    void capsLockHasItsBit();
    void arrowsHaveTheFunctionAndTheKeypadBit();
    void functionAndNavigationKeysHaveTheFunctionBit();
    void keypadKeysHaveTheKeypadBitOnly();
    void modifierKeysAreToldApart();
    void aModifierKeyThatIsRemappedIsWhatItWasMade();

    void charactersOfSpecialKeys_data();
    void charactersOfSpecialKeys();
    void charactersIgnoreEveryModifierButShift();
    void aBacktabIsTheTabKeyWithShift();
    void aDeadKeyHasNoCharacters();

private:
    KeyPress press(int qtKey, Qt::KeyboardModifiers modifiers = {});

    std::unique_ptr<Field> m_field;
};

void KeyPressTest::init()
{
    platform::HeldModifiers::shared();
    m_field = std::make_unique<Field>();
    m_field->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_field.get()));
}

KeyPress KeyPressTest::press(int qtKey, Qt::KeyboardModifiers modifiers)
{
    m_field->press.reset();
    QTest::keyClick(m_field.get(), static_cast<Qt::Key>(qtKey), modifiers);
    return m_field->press ? *m_field->press : KeyPress(native(Qt::Key_unknown, 0));
}

void KeyPressTest::aKeyWithoutAScanCodeIsThatOfAUsKeyboard_data()
{
    QTest::addColumn<int>("qtKey");
    QTest::addColumn<quint16>("code");
    const auto row = [](const char *name, int qtKey, int code) {
        QTest::newRow(name) << qtKey << static_cast<quint16>(code);
    };
    row("A", Qt::Key_A, 0x00);
    row("S", Qt::Key_S, 0x01);
    row("Z", Qt::Key_Z, 0x06);
    row("M", Qt::Key_M, 0x2E);
    row("5", Qt::Key_5, 0x17);
    row("!", Qt::Key_Exclam, 0x12);
    row("quote", Qt::Key_QuoteDbl, 0x27);
    row("<", Qt::Key_Less, 0x2B);
    row("`", Qt::Key_QuoteLeft, 0x32);
    row("~", Qt::Key_AsciiTilde, 0x32);
    row("{", Qt::Key_BraceLeft, 0x21);
    row("Return", Qt::Key_Return, 0x24);
    row("Enter", Qt::Key_Enter, 0x4C);
    row("Tab", Qt::Key_Tab, 0x30);
    row("Backtab", Qt::Key_Backtab, 0x30);
    row("Space", Qt::Key_Space, 0x31);
    row("Backspace", Qt::Key_Backspace, 0x33);
    row("Delete", Qt::Key_Delete, 0x75);
    row("Escape", Qt::Key_Escape, 0x35);
    row("Insert", Qt::Key_Insert, 0x72);
    row("Help", Qt::Key_Help, 0x72);
    row("Up", Qt::Key_Up, 0x7E);
    row("Home", Qt::Key_Home, 0x73);
    row("F1", Qt::Key_F1, 0x7A);
    row("F5", Qt::Key_F5, 0x60);
    row("F20", Qt::Key_F20, 0x5A);
    row("louder", Qt::Key_VolumeUp, 0x48);
    row("Menu", Qt::Key_Menu, 0x6E);
    row("Print is where F13 is", Qt::Key_Print, 0x69);
    row("Print with Alt", Qt::Key_SysReq, 0x69);
}

void KeyPressTest::aKeyWithoutAScanCodeIsThatOfAUsKeyboard()
{
    QFETCH(int, qtKey);
    QFETCH(quint16, code);
    QCOMPARE(press(qtKey).keyCode(), std::optional(code));
}

void KeyPressTest::theKeypadModifierMakesAKeyOneOfTheKeypad_data()
{
    QTest::addColumn<int>("qtKey");
    QTest::addColumn<quint16>("code");
    const auto row = [](const char *name, int qtKey, int code) {
        QTest::newRow(name) << qtKey << static_cast<quint16>(code);
    };
    row("0", Qt::Key_0, 0x52);
    row("7", Qt::Key_7, 0x59);
    row("8", Qt::Key_8, 0x5B);
    row("7 without Num Lock", Qt::Key_Home, 0x59);
    row("8 without Num Lock", Qt::Key_Up, 0x5B);
    row("0 without Num Lock", Qt::Key_Insert, 0x52);
    row("decimal without Num Lock", Qt::Key_Delete, 0x41);
    row("plus", Qt::Key_Plus, 0x45);
    row("equals", Qt::Key_Equal, 0x51);
    row("Enter", Qt::Key_Enter, 0x4C);
    row("Clear", Qt::Key_NumLock, 0x47);
}

void KeyPressTest::theKeypadModifierMakesAKeyOneOfTheKeypad()
{
    QFETCH(int, qtKey);
    QFETCH(quint16, code);
    const auto one = press(qtKey, Qt::KeypadModifier);
    QCOMPARE(one.keyCode(), std::optional(code));
    QCOMPARE(one.modifierFlags(), flags::Keyboard | flags::NumericPad);
}

void KeyPressTest::anUnknownKeyHasNoCode()
{
    for (const int qtKey : {int(Qt::Key_MediaPlay), int(Qt::Key_ScrollLock), int(Qt::Key_F21),
                            int(Qt::Key_unknown), 0, 0x44B}) {
        const KeyPress one{QKeyEvent(QEvent::KeyPress, qtKey, Qt::NoModifier)};
        QVERIFY(!one.keyCode());
        QVERIFY(!one.isModifierKey());
        QCOMPARE(one.modifierFlags(), flags::Keyboard);
    }
}

void KeyPressTest::theScanCodeCountsWhateverTheLayoutMakesOfTheKey()
{
    // A French keyboard: A is where Q is.
    QCOMPARE(KeyPress(native(Qt::Key_A, KEY_Q)).keyCode(), std::optional<quint16>(0x0C));
    QCOMPARE(KeyPress(native(Qt::Key_Home, KEY_KP7, Qt::KeypadModifier)).keyCode(),
             std::optional<quint16>(key::Keypad7));
    QCOMPARE(KeyPress(native(Qt::Key_Enter, KEY_KPENTER, Qt::KeypadModifier)).keyCode(),
             std::optional<quint16>(key::KeypadEnter));
    QCOMPARE(KeyPress(native(Qt::Key_Return, KEY_ENTER)).keyCode(),
             std::optional<quint16>(key::Return));
}

void KeyPressTest::anUnknownScanCodeLeavesQtsKey()
{
    QCOMPARE(KeyPress(native(Qt::Key_Menu, KEY_MENU)).keyCode(),
             std::optional<quint16>(key::ContextMenu));
    QVERIFY(!KeyPress(native(Qt::Key_MediaPlay, KEY_PLAYPAUSE)).keyCode());
    QVERIFY(
        !KeyPress(QKeyEvent(QEvent::KeyPress, Qt::Key_unknown, {}, 0xFFFFFFFF, 0, 0)).keyCode());
    QVERIFY(!KeyPress(QKeyEvent(QEvent::KeyPress, Qt::Key_unknown, {}, 3, 0, 0)).keyCode());
}

void KeyPressTest::everyKeyOfTheTableIsKnownByItsScanCode()
{
    for (const auto code : test::virtualKeyCodes()) {
        const auto evdev = platform::evdevCode(code).value_or(0);
        QCOMPARE(KeyPress(native(Qt::Key_unknown, evdev)).keyCode(), std::optional(code));
    }
}

void KeyPressTest::aSingleLetterHasNoModifierBits()
{
    const auto one = press(Qt::Key_S);
    QCOMPARE(one.keyCode(), std::optional<quint16>(1));
    QCOMPARE(one.modifierFlags(), flags::Keyboard);
    QCOMPARE(m_field->characters, QStringLiteral("s"));
}

void KeyPressTest::everyModifierHasItsBit_data()
{
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<quint32>("word");
    using Modifiers = Qt::KeyboardModifiers;
    QTest::newRow("Shift") << Modifiers(Qt::ShiftModifier) << quint32{0x20102};
    QTest::newRow("Control") << Modifiers(Qt::ControlModifier) << quint32{0x40101};
    QTest::newRow("Option") << Modifiers(Qt::AltModifier) << quint32{0x80120};
    QTest::newRow("Command") << Modifiers(Qt::MetaModifier) << quint32{0x100108};
    QTest::newRow("all") << Modifiers(Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier |
                                      Qt::MetaModifier)
                         << quint32{0x1E012B};
}

void KeyPressTest::everyModifierHasItsBit()
{
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(quint32, word);
    QCOMPARE(press(Qt::Key_S, modifiers).modifierFlags(), word);
}

void KeyPressTest::anUnknownModifierKeyIsAssumedToBeTheLeftOne()
{
    // Held since before the window was there: no press of it was seen.
    const auto event = native(Qt::Key_S, KEY_S, Qt::ControlModifier | Qt::MetaModifier);
    QCOMPARE(KeyPress(event).modifierFlags(), flags::Keyboard | flags::Control |
                                                  flags::LeftControl | flags::Command |
                                                  flags::LeftCommand);
}

void KeyPressTest::aRightModifierThatIsHeldHasItsBit()
{
    auto down = native(Qt::Key_Control, KEY_RIGHTCTRL, {}, 0, 0xFFE4);
    QCoreApplication::sendEvent(m_field.get(), &down);
    auto letter = native(Qt::Key_S, KEY_S, Qt::ControlModifier);
    QCoreApplication::sendEvent(m_field.get(), &letter);
    QCOMPARE(m_field->press->modifierFlags(),
             flags::Keyboard | flags::Control | flags::RightControl);
    QKeyEvent up(QEvent::KeyRelease, Qt::Key_Control, Qt::ControlModifier, KEY_RIGHTCTRL + 8,
                 0xFFE4, 0);
    QCoreApplication::sendEvent(m_field.get(), &up);
    QCOMPARE(KeyPress(letter).modifierFlags(),
             flags::Keyboard | flags::Control | flags::LeftControl);
}

void KeyPressTest::bothModifiersThatAreHeldHaveTheirBits()
{
    auto left = native(Qt::Key_Shift, KEY_LEFTSHIFT, {}, 0, 0xFFE1);
    auto right = native(Qt::Key_Shift, KEY_RIGHTSHIFT, Qt::ShiftModifier, 0, 0xFFE2);
    auto letter = native(Qt::Key_S, KEY_S, Qt::ShiftModifier);
    for (auto *event : {&left, &right, &letter}) {
        QCoreApplication::sendEvent(m_field.get(), event);
    }
    QCOMPARE(m_field->press->modifierFlags(),
             flags::Keyboard | flags::Shift | flags::LeftShift | flags::RightShift);
}

void KeyPressTest::aModifierWhoseReleaseWasLostIsForgotten()
{
    auto right = native(Qt::Key_Meta, KEY_RIGHTMETA, {}, 0, 0xFFEC);
    auto plain = native(Qt::Key_S, KEY_S);
    auto letter = native(Qt::Key_S, KEY_S, Qt::MetaModifier);
    for (auto *event : {&right, &plain, &letter}) {
        QCoreApplication::sendEvent(m_field.get(), event);
    }
    QCOMPARE(m_field->press->modifierFlags(),
             flags::Keyboard | flags::Command | flags::LeftCommand);
}

void KeyPressTest::shiftThatTurnsRightAltIntoMetaLeavesItRightOption()
{
    auto shift = native(Qt::Key_Shift, KEY_RIGHTSHIFT, {}, 0, 0xFFE2);
    auto alt = native(Qt::Key_Meta, KEY_RIGHTALT, Qt::ShiftModifier, 0, 0xFFE8); // Meta_R
    auto letter = native(Qt::Key_S, KEY_S, Qt::ShiftModifier | Qt::AltModifier);
    for (auto *event : {&shift, &alt, &letter}) {
        QCoreApplication::sendEvent(m_field.get(), event);
    }
    QCOMPARE(m_field->press->modifierFlags(), flags::Keyboard | flags::Shift | flags::RightShift |
                                                  flags::Option | flags::RightOption);
}

void KeyPressTest::aModifiersOwnEventTellsWhatIsHeldAfterIt()
{
    press(Qt::Key_S); // what other tests left held is forgotten
    const auto wordAfter = [](QKeyEvent event) {
        Field field;
        QCoreApplication::sendEvent(&field, &event);
        return KeyPress(event).modifierFlags() & flags::ShortcutModifiers;
    };
    const auto release = [](int qtKey, quint32 evdev, Qt::KeyboardModifiers modifiers,
                            quint32 keysym, quint32 nativeModifiers = 0) {
        return QKeyEvent(QEvent::KeyRelease, qtKey, modifiers, evdev + 8, keysym, nativeModifiers);
    };
    // As X has it: with the state before. Shift makes the Alt key Meta.
    const Qt::KeyboardModifiers both = Qt::ShiftModifier | Qt::AltModifier;
    QCOMPARE(wordAfter(native(Qt::Key_Shift, KEY_LEFTSHIFT, {}, 0, 0xFFE1)), flags::Shift);
    QCOMPARE(wordAfter(native(Qt::Key_Meta, KEY_LEFTALT, Qt::ShiftModifier, 0, 0xFFE7)),
             flags::Shift | flags::Option);
    QCOMPARE(wordAfter(release(Qt::Key_Meta, KEY_LEFTALT, both, 0xFFE7)), flags::Shift);
    QCOMPARE(wordAfter(release(Qt::Key_Shift, KEY_LEFTSHIFT, Qt::ShiftModifier, 0xFFE1)), 0U);

    QCOMPARE(wordAfter(native(Qt::Key_AltGr, KEY_RIGHTALT, {}, 0, 0xFE03)), flags::Option);
    QCOMPARE(wordAfter(native(Qt::Key_Control, KEY_LEFTCTRL, {}, 0x80, 0xFFE3)),
             flags::Option | flags::Control);
    QCOMPARE(wordAfter(release(Qt::Key_AltGr, KEY_RIGHTALT, Qt::ControlModifier, 0xFE03, 0x80)),
             flags::Control);
    // The other key of the same modifier stays down.
    QCOMPARE(wordAfter(native(Qt::Key_Control, KEY_RIGHTCTRL, Qt::ControlModifier, 0, 0xFFE4)),
             flags::Control);
    QCOMPARE(wordAfter(release(Qt::Key_Control, KEY_LEFTCTRL, Qt::ControlModifier, 0xFFE3)),
             flags::Control);
    QCOMPARE(wordAfter(release(Qt::Key_Control, KEY_RIGHTCTRL, Qt::ControlModifier, 0xFFE4)), 0U);
    // A Meta key that is one.
    QCOMPARE(wordAfter(native(Qt::Key_Meta, KEY_LEFTMETA, Qt::ShiftModifier, 0, 0xFFE7)),
             flags::Shift | flags::Command);
    QCOMPARE(wordAfter(release(Qt::Key_Meta, KEY_LEFTMETA, Qt::MetaModifier, 0xFFE7)), 0U);
}

void KeyPressTest::modifiersAndKeysThatChangeHowTheKeyboardTypesAreNoShortcuts()
{
    for (const int evdev : {KEY_NUMLOCK, KEY_HENKAN, KEY_MUHENKAN, KEY_HANGEUL, KEY_HANJA,
                            KEY_LEFTSHIFT, KEY_RIGHTALT, KEY_CAPSLOCK, KEY_PLAYPAUSE}) {
        const KeyPress one(native(Qt::Key_unknown, static_cast<quint32>(evdev)));
        QVERIFY(!one.shortcutKeyCode());
    }
    for (const int evdev : {KEY_ESC, KEY_SYSRQ, KEY_KP5, KEY_RO, KEY_YEN, KEY_MUTE}) {
        const KeyPress one(native(Qt::Key_unknown, static_cast<quint32>(evdev)));
        QVERIFY(one.shortcutKeyCode());
        QCOMPARE(one.shortcutKeyCode(), one.keyCode());
    }
}

void KeyPressTest::altGrIsRightOption()
{
    auto altGr = native(Qt::Key_AltGr, KEY_RIGHTALT, {}, 0, 0xFE03);
    auto letter = native(Qt::Key_E, KEY_E, {}, 0x80, 0, QStringLiteral("€"));
    QCoreApplication::sendEvent(m_field.get(), &altGr);
    QCoreApplication::sendEvent(m_field.get(), &letter);
    QCOMPARE(m_field->press->modifierFlags(), flags::Keyboard | flags::Option | flags::RightOption);
    QCOMPARE(m_field->characters, QStringLiteral("e"));
}

void KeyPressTest::theGroupSwitchModifierIsRightOption()
{
    const QKeyEvent event(QEvent::KeyPress, Qt::Key_E, Qt::GroupSwitchModifier);
    QCOMPARE(KeyPress(event).modifierFlags(), flags::Keyboard | flags::Option | flags::RightOption);
}

void KeyPressTest::capsLockHasItsBit()
{
    QCOMPARE(KeyPress(native(Qt::Key_S, KEY_S, {}, 0x2)).modifierFlags(),
             flags::Keyboard | flags::CapsLock);
}

void KeyPressTest::arrowsHaveTheFunctionAndTheKeypadBit()
{
    for (const auto qtKey : {Qt::Key_Left, Qt::Key_Up, Qt::Key_Right, Qt::Key_Down}) {
        QCOMPARE(press(qtKey).modifierFlags(),
                 flags::Keyboard | flags::Function | flags::NumericPad);
    }
}

void KeyPressTest::functionAndNavigationKeysHaveTheFunctionBit()
{
    for (const auto qtKey : {Qt::Key_F1, Qt::Key_F13, Qt::Key_F20, Qt::Key_Home, Qt::Key_End,
                             Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Delete, Qt::Key_Insert}) {
        QCOMPARE(press(qtKey).modifierFlags(), flags::Keyboard | flags::Function);
    }
    for (const auto qtKey : {Qt::Key_Backspace, Qt::Key_Return, Qt::Key_Tab, Qt::Key_Escape,
                             Qt::Key_Space, Qt::Key_VolumeUp}) {
        QCOMPARE(press(qtKey).modifierFlags(), flags::Keyboard);
    }
}

void KeyPressTest::keypadKeysHaveTheKeypadBitOnly()
{
    QCOMPARE(press(Qt::Key_Enter).modifierFlags(), flags::Keyboard | flags::NumericPad);
    QCOMPARE(KeyPress(native(Qt::Key_Up, KEY_KP8, Qt::KeypadModifier)).modifierFlags(),
             flags::Keyboard | flags::NumericPad);
}

void KeyPressTest::modifierKeysAreToldApart()
{
    for (const auto qtKey : {Qt::Key_Shift, Qt::Key_Control, Qt::Key_Alt, Qt::Key_Meta,
                             Qt::Key_AltGr, Qt::Key_CapsLock, Qt::Key_Super_R}) {
        QVERIFY(KeyPress(QKeyEvent(QEvent::KeyPress, qtKey, Qt::NoModifier)).isModifierKey());
    }
    QVERIFY(!KeyPress(QKeyEvent(QEvent::KeyPress, Qt::Key_NumLock, {})).isModifierKey());
}

void KeyPressTest::aModifierKeyThatIsRemappedIsWhatItWasMade()
{
    const KeyPress escape(native(Qt::Key_Escape, KEY_CAPSLOCK));
    QCOMPARE(escape.keyCode(), std::optional<quint16>(key::Escape));
    QVERIFY(!escape.isModifierKey());
    QVERIFY(KeyPress(native(Qt::Key_CapsLock, KEY_ESC)).isModifierKey());
    QVERIFY(KeyPress(native(Qt::Key_Control, KEY_CAPSLOCK)).isModifierKey());
    QVERIFY(KeyPress(native(Qt::Key_Multi_key, KEY_RIGHTALT)).isModifierKey());
}

void KeyPressTest::charactersOfSpecialKeys_data()
{
    QTest::addColumn<int>("qtKey");
    QTest::addColumn<int>("character");
    const auto row = [](const char *name, int qtKey, int character) {
        QTest::newRow(name) << qtKey << character;
    };
    row("Backspace", Qt::Key_Backspace, 127);
    row("Delete", Qt::Key_Delete, 0xF728);
    row("Up", Qt::Key_Up, 0xF700);
    row("Down", Qt::Key_Down, 0xF701);
    row("Left", Qt::Key_Left, 0xF702);
    row("Right", Qt::Key_Right, 0xF703);
    row("F1", Qt::Key_F1, 0xF704);
    row("F12", Qt::Key_F12, 0xF70F);
    row("F13", Qt::Key_F13, 0xF710);
    row("F20", Qt::Key_F20, 0xF717);
    row("Home", Qt::Key_Home, 0xF729);
    row("End", Qt::Key_End, 0xF72B);
    row("Page Up", Qt::Key_PageUp, 0xF72C);
    row("Page Down", Qt::Key_PageDown, 0xF72D);
    row("Insert", Qt::Key_Insert, 0xF746);
    row("Return", Qt::Key_Return, 0x0D);
    row("Enter", Qt::Key_Enter, 0x03);
    row("Tab", Qt::Key_Tab, 0x09);
    row("Escape", Qt::Key_Escape, 0x1B);
    row("Space", Qt::Key_Space, 0x20);
}

void KeyPressTest::charactersOfSpecialKeys()
{
    QFETCH(int, qtKey);
    QFETCH(int, character);
    press(qtKey);
    QCOMPARE(m_field->characters, QString(QChar(character)));
}

void KeyPressTest::charactersIgnoreEveryModifierButShift()
{
    press(Qt::Key_S, Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    QCOMPARE(m_field->characters, QStringLiteral("s"));
    press(Qt::Key_S, Qt::ShiftModifier);
    QCOMPARE(m_field->characters, QStringLiteral("S"));
    press(Qt::Key_Backspace, Qt::ControlModifier);
    QCOMPARE(m_field->characters, QString(QChar(127)));
    // From a keyboard: the layout tells, here the US one.
    QCOMPARE(KeyPress(native(Qt::Key_1, KEY_1, Qt::ControlModifier)).charactersIgnoringModifiers(),
             QStringLiteral("1"));
    QCOMPARE(KeyPress(native(Qt::Key_Exclam, KEY_1, Qt::ShiftModifier | Qt::ControlModifier))
                 .charactersIgnoringModifiers(),
             QStringLiteral("!"));
}

void KeyPressTest::aBacktabIsTheTabKeyWithShift()
{
    const auto one = press(Qt::Key_Backtab, Qt::ShiftModifier);
    QCOMPARE(one.keyCode(), std::optional<quint16>(key::Tab));
    QCOMPARE(one.modifierFlags(), flags::Keyboard | flags::Shift | flags::LeftShift);
    QCOMPARE(m_field->characters, QStringLiteral("\x19"));
}

void KeyPressTest::aDeadKeyHasNoCharacters()
{
    const KeyPress one{QKeyEvent(QEvent::KeyPress, Qt::Key_Dead_Acute, Qt::NoModifier)};
    QCOMPARE(one.charactersIgnoringModifiers(), QString());
}

TEST_CLASS(KeyPressTest, QApplication)
#include "KeyPressTest.moc"
