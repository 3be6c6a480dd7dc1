// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Keys/HeldModifiers.h"
#include "Platform/Core/Keys/KeyPress.h"
#include "Platform/Core/Keys/KeyboardLayout.h"
#include "Platform/Core/Keys/VirtualKeyCode.h"
#include "Platform/Desktop/KeyCapture/ShortcutInhibition.h"
#include "Tests/Support/TestProgram.h"
#include "Tests/Support/VirtualKeyCodes.h"
#include "Tests/Support/VirtualKeyboard.h"

#include <QApplication>
#include <QFile>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QTest>
#include <QWidget>

#include <linux/input-event-codes.h>

#include <array>

using platform::KeyboardLayout;
using platform::KeyPress;
using platform::ShortcutInhibition;
namespace flags = platform::keyflags;

namespace {

class Recorder : public QWidget {
public:
    QVector<int> codes;
    QVector<quint32> words;
    QStringList characters;

protected:
    void keyPressEvent(QKeyEvent *event) override
    {
        const KeyPress press(*event);
        if (!press.isModifierKey() && !event->isAutoRepeat()) {
            codes << (press.keyCode() ? *press.keyCode() : -1);
            words << press.modifierFlags();
            characters << press.charactersIgnoringModifiers();
        }
    }
    bool focusNextPrevChild(bool) override { return false; }
};

struct ModifierKey {
    quint32 evdev;
    quint32 word;
};

constexpr std::array<ModifierKey, 8> modifierKeys{
    {{KEY_LEFTSHIFT, flags::Shift | flags::LeftShift},
     {KEY_RIGHTSHIFT, flags::Shift | flags::RightShift},
     {KEY_LEFTCTRL, flags::Control | flags::LeftControl},
     {KEY_RIGHTCTRL, flags::Control | flags::RightControl},
     {KEY_LEFTALT, flags::Option | flags::LeftOption},
     {KEY_RIGHTALT, flags::Option | flags::RightOption},
     {KEY_LEFTMETA, flags::Command | flags::LeftCommand},
     {KEY_RIGHTMETA, flags::Command | flags::RightCommand}}};

const auto shortcutFile = QStringLiteral("/tmp/shortcut-done");

QString text(quint16 code)
{
    const auto layout = KeyboardLayout::current();
    QString text;
    return layout && layout->translate(code, 0, 255, text) == platform::Status::NoError
               ? text
               : QStringLiteral("failed");
}

} // namespace

// A real compositor, with a keyboard that is a program.
class WaylandKeysTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void everyKeyOfTheTableArrivesWithItsCode();
    void everyModifierHasItsBits();
    void altGrIsRightOption();
    void theLayoutIsThatOfTheCompositor();
    void theGroupThatIsSwitchedOnCounts();
    void withoutAKeyboardTheEnvironmentsLayoutIsUsed();
    void withoutInhibitionTheCompositorTakesItsShortcuts();
    void whileInhibitionLivesShortcutsComeToTheWindow();
    void whenInhibitionEndsTheCompositorHasItsShortcutsAgain();
    void inhibitionMayOutliveItsWindow();

private:
    void start(const QByteArray &layouts);
    void shortcut();

    std::unique_ptr<test::VirtualKeyboard> m_keyboard;
    std::unique_ptr<Recorder> m_window;
};

void WaylandKeysTest::init()
{
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("wayland"));
    platform::HeldModifiers::shared();
    QFile::remove(shortcutFile);
}

void WaylandKeysTest::cleanup()
{
    m_window.reset();
    m_keyboard.reset();
}

void WaylandKeysTest::start(const QByteArray &layouts)
{
    m_keyboard = std::make_unique<test::VirtualKeyboard>(layouts);
    QVERIFY(m_keyboard->works());
    m_window = std::make_unique<Recorder>();
    m_window->resize(200, 100);
    m_window->show();
    QTRY_VERIFY(m_window->isActiveWindow());
}

void WaylandKeysTest::everyKeyOfTheTableArrivesWithItsCode()
{
    start("us");
    QVector<int> expected;
    for (const auto code : test::virtualKeyCodes()) {
        if (!platform::isModifierKey(code)) {
            m_keyboard->click(*platform::evdevCode(code));
            expected << code;
        }
    }
    QCOMPARE(expected.size(), 110);
    QTRY_VERIFY(m_window->codes.size() >= expected.size());
    QCOMPARE(m_window->codes, expected);
}

void WaylandKeysTest::everyModifierHasItsBits()
{
    start("us");
    for (const auto &modifier : modifierKeys) {
        m_window->codes.clear();
        m_window->words.clear();
        m_keyboard->press(modifier.evdev);
        m_keyboard->click(KEY_S);
        m_keyboard->click(KEY_F5);
        m_keyboard->release(modifier.evdev);
        QTRY_COMPARE(m_window->codes, (QVector<int>{0x01, 0x60}));
        QCOMPARE(m_window->words,
                 (QVector<quint32>{flags::Keyboard | modifier.word,
                                   flags::Keyboard | flags::Function | modifier.word}));
    }
}

void WaylandKeysTest::altGrIsRightOption()
{
    start("de");
    m_keyboard->press(KEY_RIGHTALT);
    m_keyboard->click(KEY_E);
    m_keyboard->release(KEY_RIGHTALT);
    QTRY_COMPARE(m_window->codes, QVector<int>{0x0E});
    QCOMPARE(m_window->words.front(), flags::Keyboard | flags::Option | flags::RightOption);
    QCOMPARE(m_window->characters.front(), QStringLiteral("e"));
}

void WaylandKeysTest::theLayoutIsThatOfTheCompositor()
{
    start("de");
    QCOMPARE(text(0x10), QStringLiteral("z"));
    cleanup();
    start("fr");
    QCOMPARE(text(0x00), QStringLiteral("q"));
    QCOMPARE(text(platform::virtualkey::LeftBracket), QString()); // dead
}

void WaylandKeysTest::theGroupThatIsSwitchedOnCounts()
{
    start("us,ru");
    m_keyboard->click(KEY_S); // the compositor follows the keyboard that was used last
    QTRY_COMPARE(m_window->codes.size(), 1);
    QCOMPARE(text(0x01), QStringLiteral("s"));
    m_keyboard->switchGroup(1);
    QTRY_COMPARE(text(0x01), QStringLiteral("ы"));
    m_keyboard->switchGroup(0);
    QTRY_COMPARE(text(0x01), QStringLiteral("s"));
}

void WaylandKeysTest::withoutAKeyboardTheEnvironmentsLayoutIsUsed()
{
    QCOMPARE(text(0x01), QStringLiteral("s"));
    qputenv("XKB_DEFAULT_LAYOUT", "ru");
    QCOMPARE(text(0x01), QStringLiteral("ы"));
    qunsetenv("XKB_DEFAULT_LAYOUT");
}

void WaylandKeysTest::shortcut()
{
    m_keyboard->press(KEY_LEFTMETA);
    m_keyboard->click(KEY_E);
    m_keyboard->release(KEY_LEFTMETA);
}

void WaylandKeysTest::withoutInhibitionTheCompositorTakesItsShortcuts()
{
    start("us");
    shortcut();
    QTRY_VERIFY(QFile::exists(shortcutFile));
    QVERIFY(m_window->codes.isEmpty());
}

void WaylandKeysTest::whileInhibitionLivesShortcutsComeToTheWindow()
{
    start("us");
    const ShortcutInhibition inhibition(m_window.get());
    QTRY_VERIFY(inhibition.isActive());
    shortcut();
    QTRY_COMPARE(m_window->codes, QVector<int>{0x0E});
    QCOMPARE(m_window->words.front(), flags::Keyboard | flags::Command | flags::LeftCommand);
    QTest::qWait(200);
    QVERIFY(!QFile::exists(shortcutFile));
}

void WaylandKeysTest::whenInhibitionEndsTheCompositorHasItsShortcutsAgain()
{
    start("us");
    {
        const ShortcutInhibition inhibition(m_window.get());
        QTRY_VERIFY(inhibition.isActive());
    }
    shortcut();
    QTRY_VERIFY(QFile::exists(shortcutFile));
    QVERIFY(m_window->codes.isEmpty());
}

void WaylandKeysTest::inhibitionMayOutliveItsWindow()
{
    start("us");
    m_window->hide();
    const ShortcutInhibition inhibition(m_window.get()); // before it is shown
    QVERIFY(!inhibition.isActive());
    m_window->show();
    QTRY_VERIFY(inhibition.isActive());
    m_window->hide();
    QTRY_VERIFY(!inhibition.isActive());
    m_window->show();
    QTRY_VERIFY(inhibition.isActive());
    m_window.reset();
    QVERIFY(!inhibition.isActive());
}

TEST_CLASS(WaylandKeysTest, QApplication)
#include "WaylandKeysTest.moc"
