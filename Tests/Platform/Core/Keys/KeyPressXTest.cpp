// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/HeldModifiers.h"
#include "Platform/Core/Keys/KeyPress.h"
#include "Platform/Core/Keys/VirtualKeyCode.h"
#include "Tests/Support/Command.h"
#include "Tests/Support/KeyboardSettings.h"
#include "Tests/Support/TestProgram.h"
#include "Tests/Support/VirtualKeyCodes.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTest>
#include <QWidget>

#include <linux/input-event-codes.h>

#include <array>

using platform::KeyPress;
namespace flags = platform::keyflags;
namespace key = platform::virtualkey;

namespace {

struct Press {
    int code; // -1: none
    quint32 word;
    QString characters;
    bool operator==(const Press &other) const
    {
        return code == other.code && word == other.word && characters == other.characters;
    }
};

// A window that writes down what it receives.
class Recorder : public QWidget {
public:
    QVector<Press> presses;
    QVector<Press> modifierPresses;
    int releases = 0;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        const KeyPress press(*event);
        auto &list = press.isModifierKey() ? modifierPresses : presses;
        list << Press{press.keyCode() ? *press.keyCode() : -1, press.modifierFlags(),
                      press.charactersIgnoringModifiers()};
    }
    void keyReleaseEvent(QKeyEvent *) override { ++releases; }
    bool focusNextPrevChild(bool) override { return false; }
};

struct ModifierKey {
    const char *name;
    quint32 evdev;
    quint32 word;
};

constexpr std::array<ModifierKey, 8> modifierKeys{
    {{"left Shift", KEY_LEFTSHIFT, flags::Shift | flags::LeftShift},
     {"right Shift", KEY_RIGHTSHIFT, flags::Shift | flags::RightShift},
     {"left Control", KEY_LEFTCTRL, flags::Control | flags::LeftControl},
     {"right Control", KEY_RIGHTCTRL, flags::Control | flags::RightControl},
     {"left Option", KEY_LEFTALT, flags::Option | flags::LeftOption},
     {"right Option", KEY_RIGHTALT, flags::Option | flags::RightOption},
     {"left Command", KEY_LEFTMETA, flags::Command | flags::LeftCommand},
     {"right Command", KEY_RIGHTMETA, flags::Command | flags::RightCommand}}};

// The keys of the table that can go through an X server, whose key codes end at 255, and that are
// no modifiers.
QVector<quint16> pressableKeys()
{
    QVector<quint16> keys;
    for (const auto code : test::virtualKeyCodes()) {
        if (!platform::isModifierKey(code) && platform::evdevCode(code).value_or(256) + 8 <= 255) {
            keys << code;
        }
    }
    return keys;
}

quint32 ownBits(quint16 code)
{
    return flags::Keyboard | (platform::isFunctionKey(code) ? flags::Function : 0) |
           (platform::isKeypadKey(code) || platform::isArrowKey(code) ? flags::NumericPad : 0);
}

} // namespace

// Key presses that xdotool sends through a real X server.
class KeyPressXTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void everyKeyOfTheTableArrivesWithItsCode();
    void everyKeyArrivesWithEveryModifier_data();
    void everyKeyArrivesWithEveryModifier();
    void allModifiersTogetherHaveAllBits();
    void modifiersOnTheirOwnAreToldApart();
    void capsLockIsInTheWordWhileItIsOn();
    void altGrIsRightOption();
    void theCharactersAreTheLayoutsWhateverIsHeld();
    void aModifierThatWentDownBeforeTheWindowIsTheLeftOne();
    void aModifierThatWentUpElsewhereIsForgotten();
    void aKeyThatTheFormatLacksHasNoCode();

private:
    bool send(const QStringList &arguments, int presses);

    std::unique_ptr<Recorder> m_window;
};

void KeyPressXTest::init()
{
    QVERIFY(test::setXLayout(QStringLiteral("us")));
    platform::HeldModifiers::shared();
    m_window = std::make_unique<Recorder>();
    m_window->resize(200, 100);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void KeyPressXTest::cleanup()
{
    m_window.reset();
}

// Waits until the window has received so many presses of keys that are no modifiers.
bool KeyPressXTest::send(const QStringList &arguments, int presses)
{
    m_window->presses.clear();
    m_window->modifierPresses.clear();
    return test::xdotool(arguments) &&
           QTest::qWaitFor([&] { return m_window->presses.size() >= presses; }, 20000);
}

void KeyPressXTest::everyKeyOfTheTableArrivesWithItsCode()
{
    const auto keys = pressableKeys();
    QCOMPARE(keys.size(), 110); // all but ten modifiers
    QStringList arguments{QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("1")};
    for (const auto code : keys) {
        arguments << test::xdotoolKey(*platform::evdevCode(code));
    }
    arguments << test::xdotoolKey(KEY_NUMLOCK);
    QVERIFY(send(arguments, keys.size() + 1));
    for (int index = 0; index < keys.size(); ++index) {
        QCOMPARE(m_window->presses[index].code, int(keys[index]));
        QCOMPARE(m_window->presses[index].word, ownBits(keys[index]));
    }
}

void KeyPressXTest::everyKeyArrivesWithEveryModifier_data()
{
    QTest::addColumn<quint32>("evdev");
    QTest::addColumn<quint32>("word");
    for (const auto &modifier : modifierKeys) {
        QTest::newRow(modifier.name) << modifier.evdev << modifier.word;
    }
}

void KeyPressXTest::everyKeyArrivesWithEveryModifier()
{
    QFETCH(quint32, evdev);
    QFETCH(quint32, word);
    const auto keys = pressableKeys();
    QStringList arguments{QStringLiteral("keydown"), test::xdotoolKey(evdev), QStringLiteral("key"),
                          QStringLiteral("--delay"), QStringLiteral("1")};
    for (const auto code : keys) {
        arguments << test::xdotoolKey(*platform::evdevCode(code));
    }
    // With Shift, Num Lock has the keypad move the pointer until it is pressed once more.
    arguments.insert(arguments.indexOf(test::xdotoolKey(KEY_NUMLOCK)),
                     test::xdotoolKey(KEY_NUMLOCK));
    arguments << QStringLiteral("keyup") << test::xdotoolKey(evdev);
    QVERIFY(send(arguments, keys.size() + 1));
    auto expected = keys;
    expected.insert(keys.indexOf(key::KeypadClear), key::KeypadClear);
    for (int index = 0; index < expected.size(); ++index) {
        QCOMPARE(m_window->presses[index].code, int(expected[index]));
        QCOMPARE(m_window->presses[index].word, ownBits(expected[index]) | word);
    }
}

void KeyPressXTest::allModifiersTogetherHaveAllBits()
{
    QStringList arguments{QStringLiteral("keydown")};
    quint32 word = flags::Keyboard;
    for (const auto &modifier : modifierKeys) {
        arguments << test::xdotoolKey(modifier.evdev);
        word |= modifier.word;
    }
    arguments << QStringLiteral("key") << test::xdotoolKey(KEY_S) << QStringLiteral("keyup");
    for (const auto &modifier : modifierKeys) {
        arguments << test::xdotoolKey(modifier.evdev);
    }
    QVERIFY(send(arguments, 1));
    QCOMPARE(m_window->presses.front().code, 1);
    QCOMPARE(m_window->presses.front().word, word);
    QVERIFY(send({QStringLiteral("key"), test::xdotoolKey(KEY_S)}, 1));
    QCOMPARE(m_window->presses.front().word, flags::Keyboard);
}

void KeyPressXTest::modifiersOnTheirOwnAreToldApart()
{
    for (const auto &modifier : modifierKeys) {
        QVERIFY(send({QStringLiteral("key"), test::xdotoolKey(modifier.evdev)}, 0));
        QTRY_COMPARE(m_window->modifierPresses.size(), 1);
        QCOMPARE(m_window->modifierPresses.front().code,
                 int(*platform::virtualKeyCode(modifier.evdev)));
        QCOMPARE(m_window->modifierPresses.front().word, flags::Keyboard | modifier.word);
        QVERIFY(m_window->presses.isEmpty());
    }
}

void KeyPressXTest::capsLockIsInTheWordWhileItIsOn()
{
    const auto capsLock = test::xdotoolKey(KEY_CAPSLOCK);
    QVERIFY(send({QStringLiteral("key"), capsLock, test::xdotoolKey(KEY_S), capsLock}, 1));
    QCOMPARE(m_window->presses.front(),
             (Press{1, flags::Keyboard | flags::CapsLock, QStringLiteral("s")}));
    QVERIFY(send({QStringLiteral("key"), test::xdotoolKey(KEY_S)}, 1));
    QCOMPARE(m_window->presses.front(), (Press{1, flags::Keyboard, QStringLiteral("s")}));
}

void KeyPressXTest::altGrIsRightOption()
{
    QVERIFY(test::setXLayout(QStringLiteral("de")));
    QVERIFY(send({QStringLiteral("keydown"), test::xdotoolKey(KEY_RIGHTALT), QStringLiteral("key"),
                  test::xdotoolKey(KEY_E), QStringLiteral("keyup"), test::xdotoolKey(KEY_RIGHTALT)},
                 1));
    QCOMPARE(
        m_window->presses.front(),
        (Press{0x0E, flags::Keyboard | flags::Option | flags::RightOption, QStringLiteral("e")}));
}

void KeyPressXTest::theCharactersAreTheLayoutsWhateverIsHeld()
{
    QVERIFY(test::setXLayout(QStringLiteral("ru")));
    const auto control = test::xdotoolKey(KEY_LEFTCTRL);
    const auto shift = test::xdotoolKey(KEY_LEFTSHIFT);
    QVERIFY(
        send({QStringLiteral("keydown"), control, QStringLiteral("key"), test::xdotoolKey(KEY_S),
              QStringLiteral("keydown"), shift, QStringLiteral("key"), test::xdotoolKey(KEY_S),
              test::xdotoolKey(KEY_TAB), QStringLiteral("keyup"), shift, control},
             3));
    QCOMPARE(m_window->presses[0].characters, QStringLiteral("ы"));
    QCOMPARE(m_window->presses[1].characters, QStringLiteral("Ы"));
    QCOMPARE(m_window->presses[2].characters, QStringLiteral("\x19"));
    QCOMPARE(m_window->presses[2].code, int(key::Tab));
}

void KeyPressXTest::aModifierThatWentDownBeforeTheWindowIsTheLeftOne()
{
    m_window.reset();
    QVERIFY(test::xdotool({QStringLiteral("keydown"), test::xdotoolKey(KEY_RIGHTSHIFT)}));
    m_window = std::make_unique<Recorder>();
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    QVERIFY(send({QStringLiteral("key"), test::xdotoolKey(KEY_S), QStringLiteral("keyup"),
                  test::xdotoolKey(KEY_RIGHTSHIFT)},
                 1));
    QCOMPARE(m_window->presses.front().word, flags::Keyboard | flags::Shift | flags::LeftShift);
}

void KeyPressXTest::aModifierThatWentUpElsewhereIsForgotten()
{
    test::Command other(QStringLiteral("xev"), {});
    QVERIFY(other.waitForOutput(QStringLiteral("MapNotify")));
    QVERIFY(send({QStringLiteral("keydown"), test::xdotoolKey(KEY_RIGHTCTRL)}, 0));
    QTRY_COMPARE(m_window->modifierPresses.size(), 1);
    QVERIFY(test::xdotool({QStringLiteral("search"), QStringLiteral("--name"),
                           QStringLiteral("Event Tester"), QStringLiteral("windowfocus"),
                           QStringLiteral("--sync")}));
    QTRY_VERIFY(!m_window->isActiveWindow());
    QVERIFY(test::xdotool({QStringLiteral("keyup"), test::xdotoolKey(KEY_RIGHTCTRL)}));
    QVERIFY(test::xdotool({QStringLiteral("windowfocus"), QString::number(m_window->winId())}));
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    QVERIFY(send({QStringLiteral("keydown"), test::xdotoolKey(KEY_LEFTCTRL), QStringLiteral("key"),
                  test::xdotoolKey(KEY_S), QStringLiteral("keyup"), test::xdotoolKey(KEY_LEFTCTRL)},
                 1));
    QCOMPARE(m_window->presses.front().word, flags::Keyboard | flags::Control | flags::LeftControl);
}

void KeyPressXTest::aKeyThatTheFormatLacksHasNoCode()
{
    QVERIFY(send({QStringLiteral("key"), test::xdotoolKey(KEY_PLAYPAUSE)}, 1));
    QCOMPARE(m_window->presses.front(), (Press{-1, flags::Keyboard, QString()}));
}

TEST_CLASS(KeyPressXTest, QApplication)
#include "KeyPressXTest.moc"
