// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "Tests/Support/Command.h"
#include "Tests/Support/KeyboardSettings.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QLabel>
#include <QTest>
#include <QTimer>

#include <linux/input-event-codes.h>

#include <memory>

// The sheet with a real keyboard of a real X server.
class ShortcutSheetXTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void modifiersShowAsTheyAreHeld();
    void aModifierThatIsHeldAlreadyShows_data();
    void aModifierThatIsHeldAlreadyShows();
    void modifiersShowNoMoreWhenAnotherProgramHasTheKeyboard();
    void theCountdownsEndGivesTheKeyboardBack();
    void aRefusalIsSaidAsLongAsItLasts();

private:
    QString shown() const
    {
        return m_panel->findChild<QLabel *>(QStringLiteral("panelEditShortcut"))->text();
    }
    void begin();
    void seconds(int count) const;
    bool down(quint32 key) { return send("keydown", key); }
    bool up(quint32 key) { return send("keyup", key); }
    bool send(const char *what, quint32 key)
    {
        return test::xdotool({QLatin1String(what), test::xdotoolKey(key)});
    }

    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<ZQKeyboardEditPanel> m_panel;
};

void ShortcutSheetXTest::init()
{
    QVERIFY(test::setXLayout(QStringLiteral("us")));
    m_window = std::make_unique<QWidget>();
    m_window->show();
    m_panel = std::make_unique<ZQKeyboardEditPanel>();
}

void ShortcutSheetXTest::cleanup()
{
    m_panel.reset();
    m_window.reset();
}

void ShortcutSheetXTest::begin()
{
    m_panel->beginSheet(m_window.get());
    m_panel->activateWindow();
    QTRY_VERIFY(m_panel->isActiveWindow());
}

void ShortcutSheetXTest::seconds(int count) const
{
    auto *timer = m_panel->findChild<QTimer *>();
    for (int second = 0; second < count; ++second) {
        QTimerEvent tick(timer->timerId());
        QCoreApplication::sendEvent(timer, &tick);
    }
}

void ShortcutSheetXTest::modifiersShowAsTheyAreHeld()
{
    begin();
    const QString waiting = shown();
    QVERIFY(down(KEY_LEFTSHIFT));
    QTRY_COMPARE(shown(), QStringLiteral("Shift+…"));
    QVERIFY(down(KEY_LEFTALT));
    QTRY_COMPARE(shown(), QStringLiteral("Shift+Alt+…"));
    QVERIFY(up(KEY_LEFTSHIFT));
    QTRY_COMPARE(shown(), QStringLiteral("Alt+…"));
    QVERIFY(up(KEY_LEFTALT));
    QTRY_COMPARE(shown(), waiting);
    QVERIFY(test::setXLayout(QStringLiteral("de"))); // with AltGr
    QVERIFY(down(KEY_RIGHTALT));
    QTRY_COMPARE(shown(), QStringLiteral("Alt+…"));
    QVERIFY(down(KEY_LEFTCTRL));
    QTRY_COMPARE(shown(), QStringLiteral("Ctrl+Alt+…"));
    QVERIFY(up(KEY_RIGHTALT));
    QTRY_COMPARE(shown(), QStringLiteral("Ctrl+…"));
    QVERIFY(up(KEY_LEFTCTRL));
    QTRY_COMPARE(shown(), waiting);
}

void ShortcutSheetXTest::aModifierThatIsHeldAlreadyShows_data()
{
    QTest::addColumn<quint32>("key");
    QTest::addColumn<QString>("text");
    QTest::newRow("Ctrl") << quint32{KEY_RIGHTCTRL} << QStringLiteral("Ctrl+…");
    QTest::newRow("Meta") << quint32{KEY_LEFTMETA} << QStringLiteral("Cmd+…");
    QTest::newRow("AltGr") << quint32{KEY_RIGHTALT} << QStringLiteral("Alt+…");
}

void ShortcutSheetXTest::aModifierThatIsHeldAlreadyShows()
{
    QFETCH(quint32, key);
    QFETCH(QString, text);
    QVERIFY(test::setXLayout(QStringLiteral("de")));
    const QString waiting = shown();
    QVERIFY(down(key)); // no window of ours has the keyboard
    begin();
    QTRY_COMPARE(shown(), text);
    QVERIFY(up(key));
    QTRY_COMPARE(shown(), waiting);
}

void ShortcutSheetXTest::modifiersShowNoMoreWhenAnotherProgramHasTheKeyboard()
{
    test::Command other(QStringLiteral("xev"), {});
    QVERIFY(other.waitForOutput(QStringLiteral("MapNotify")));
    begin();
    const QString waiting = shown();
    QVERIFY(down(KEY_LEFTALT));
    QTRY_COMPARE(shown(), QStringLiteral("Alt+…"));
    QVERIFY(test::xdotool({QStringLiteral("search"), QStringLiteral("--name"),
                           QStringLiteral("Event Tester"), QStringLiteral("windowfocus"),
                           QStringLiteral("--sync")}));
    QTRY_COMPARE(shown(), waiting);
    QVERIFY(up(KEY_LEFTALT));
}

void ShortcutSheetXTest::theCountdownsEndGivesTheKeyboardBack()
{
    const auto othersMayHaveIt = [] { return test::KeyboardGrabOfAnother().isHeld(); };
    begin();
    QTRY_VERIFY(!othersMayHaveIt());
    seconds(30);
    QVERIFY(!m_panel->isVisible());
    QVERIFY(othersMayHaveIt());
}

void ShortcutSheetXTest::aRefusalIsSaidAsLongAsItLasts()
{
    const auto *refusal = m_panel->findChild<QLabel *>(QStringLiteral("panelEditRefusal"));
    auto grab = std::make_unique<test::KeyboardGrabOfAnother>();
    QVERIFY(grab->isHeld());
    begin();
    seconds(1);
    QVERIFY(refusal->isVisible());
    grab.reset();
    QTRY_VERIFY(!test::KeyboardGrabOfAnother().isHeld());
    seconds(1);
    QVERIFY(!refusal->isVisible());
}

TEST_CLASS(ShortcutSheetXTest, QApplication)
#include "ShortcutSheetXTest.moc"
