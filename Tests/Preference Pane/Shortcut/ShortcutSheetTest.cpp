// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Notifications/NotificationCenter.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <linux/input-event-codes.h>

#include <memory>

// What the sheet that captures a shortcut shows, and how one gets out of it. Its seconds are made
// by hand.
class ShortcutSheetTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void itShowsTheShortcutAsItWas();
    void itShowsTheModifiersThatWouldBeCaptured();
    void itShowsNoModifiersWhileAnotherWindowHasTheKeyboard();
    void itClosesAfterThirtySecondsWithoutAShortcut();
    void itsCountdownIsVisibleAndBeginsAnewEachTime();
    void eachPressOfAModifierBeginsTheCountdownAnew();
    void noOtherKeyBeginsTheCountdownAnew();
    void aRefusedInhibitionIsSaid();
    void itReadsFromLeftToRightInAMirroredWindow();

private:
    QString text(const char *label) const
    {
        return m_panel->findChild<QLabel *>(QLatin1String(label))->text();
    }
    void seconds(int count) const;
    void send(QEvent::Type type, int qtKey, quint32 evdev, quint32 keysym,
              Qt::KeyboardModifiers modifiers = {}, quint32 nativeModifiers = 0) const;

    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<ZQKeyboardEditPanel> m_panel;
    QString m_waiting;
    int m_changes = 0;
    platform::NotificationCenter::Observer m_observer{};
};

void ShortcutSheetTest::init()
{
    m_changes = 0;
    m_observer = platform::NotificationCenter::defaultCenter().addObserver(
        QStringLiteral("ZQShortcutKeyChanged"),
        [this](const platform::Notification &) { ++m_changes; });
    m_window = std::make_unique<QWidget>();
    m_window->show();
    m_panel = std::make_unique<ZQKeyboardEditPanel>();
    m_waiting = text("panelEditShortcut");
    m_panel->beginSheet(m_window.get());
    m_panel->activateWindow();
    QTRY_VERIFY(m_panel->isActiveWindow());
}

void ShortcutSheetTest::cleanup()
{
    m_panel.reset();
    m_window.reset();
    platform::NotificationCenter::defaultCenter().removeObserver(m_observer);
}

void ShortcutSheetTest::seconds(int count) const
{
    auto *timer = m_panel->findChild<QTimer *>();
    for (int second = 0; second < count; ++second) {
        QTimerEvent tick(timer->timerId());
        QCoreApplication::sendEvent(timer, &tick);
    }
}

// As an X server has it: with the modifiers before the event.
void ShortcutSheetTest::send(QEvent::Type type, int qtKey, quint32 evdev, quint32 keysym,
                             Qt::KeyboardModifiers modifiers, quint32 nativeModifiers) const
{
    QKeyEvent event(type, qtKey, modifiers, evdev + 8, keysym, nativeModifiers);
    QCoreApplication::sendEvent(m_panel.get(), &event);
}

void ShortcutSheetTest::itShowsTheShortcutAsItWas()
{
    m_panel->setCurrentShortcut(QStringLiteral("Ctrl+<b>F7</b>"));
    QVERIFY(text("panelEditCurrent").contains(QStringLiteral("Ctrl+<b>F7</b>")));
    QVERIFY(m_panel->accessibleDescription().contains(QStringLiteral("Ctrl+<b>F7</b>")));
    const QString with = text("panelEditCurrent");
    m_panel->setCurrentShortcut(QString());
    QVERIFY(text("panelEditCurrent") != with);
    QVERIFY(!text("panelEditCurrent").isEmpty());
}

void ShortcutSheetTest::itShowsTheModifiersThatWouldBeCaptured()
{
    using Modifiers = Qt::KeyboardModifiers;
    const Modifiers both = Qt::ShiftModifier | Qt::AltModifier;
    // With Shift, layouts call the Alt key Meta.
    send(QEvent::KeyPress, Qt::Key_Shift, KEY_LEFTSHIFT, 0xFFE1);
    QCOMPARE(text("panelEditShortcut"), QStringLiteral("Shift+…"));
    send(QEvent::KeyPress, Qt::Key_Meta, KEY_LEFTALT, 0xFFE7, Qt::ShiftModifier);
    QCOMPARE(text("panelEditShortcut"), QStringLiteral("Shift+Alt+…"));
    send(QEvent::KeyRelease, Qt::Key_Shift, KEY_LEFTSHIFT, 0xFFE1, both);
    QCOMPARE(text("panelEditShortcut"), QStringLiteral("Alt+…"));
    send(QEvent::KeyRelease, Qt::Key_Alt, KEY_LEFTALT, 0xFFE9, Qt::AltModifier);
    QCOMPARE(text("panelEditShortcut"), m_waiting);
    // AltGr, which is in the native modifiers only, and stays when another one follows.
    send(QEvent::KeyPress, Qt::Key_AltGr, KEY_RIGHTALT, 0xFE03);
    QCOMPARE(text("panelEditShortcut"), QStringLiteral("Alt+…"));
    send(QEvent::KeyPress, Qt::Key_Control, KEY_LEFTCTRL, 0xFFE3, {}, 0x80);
    QCOMPARE(text("panelEditShortcut"), QStringLiteral("Ctrl+Alt+…"));
    send(QEvent::KeyRelease, Qt::Key_AltGr, KEY_RIGHTALT, 0xFE03, Qt::ControlModifier, 0x80);
    QCOMPARE(text("panelEditShortcut"), QStringLiteral("Ctrl+…"));
    // A key that is refused shows what was held with it.
    send(QEvent::KeyPress, Qt::Key_MediaPlay, KEY_PLAYPAUSE, 0, Qt::MetaModifier);
    QCOMPARE(text("panelEditShortcut"), QStringLiteral("Cmd+…"));
    QCOMPARE(m_changes, 0);
}

void ShortcutSheetTest::itShowsNoModifiersWhileAnotherWindowHasTheKeyboard()
{
    send(QEvent::KeyPress, Qt::Key_Alt, KEY_LEFTALT, 0xFFE9);
    QCOMPARE(text("panelEditShortcut"), QStringLiteral("Alt+…"));
    QWidget other;
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QCOMPARE(text("panelEditShortcut"), m_waiting);
}

void ShortcutSheetTest::itClosesAfterThirtySecondsWithoutAShortcut()
{
    const QSignalSpy rejections(m_panel.get(), &QDialog::rejected);
    seconds(29);
    QVERIFY(m_panel->isVisible());
    seconds(1);
    QVERIFY(!m_panel->isVisible());
    QCOMPARE(rejections.count(), 1);
    QCOMPARE(m_changes, 0);
    QVERIFY(!m_panel->findChild<QTimer *>()->isActive());
}

void ShortcutSheetTest::itsCountdownIsVisibleAndBeginsAnewEachTime()
{
    const auto *countdown = m_panel->findChild<QLabel *>(QStringLiteral("panelEditCountdown"));
    QVERIFY(countdown->isVisible());
    QCOMPARE(countdown->text(), QStringLiteral("Closes in 30 s"));
    QCOMPARE(m_panel->findChild<QTimer *>()->interval(), 1000);
    seconds(11);
    QCOMPARE(countdown->text(), QStringLiteral("Closes in 19 s"));
    m_panel->reject();
    m_panel->beginSheet(m_window.get());
    QCOMPARE(countdown->text(), QStringLiteral("Closes in 30 s"));
    QVERIFY(m_panel->findChild<QTimer *>()->isActive());
}

void ShortcutSheetTest::eachPressOfAModifierBeginsTheCountdownAnew()
{
    for (const auto key :
         {Qt::Key_Shift, Qt::Key_Control, Qt::Key_Alt, Qt::Key_Meta, Qt::Key_AltGr}) {
        seconds(29);
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(m_panel.get(), &press);
        QCOMPARE(text("panelEditCountdown"), QStringLiteral("Closes in 30 s"));
    }
    seconds(29);
    QVERIFY(m_panel->isVisible());
    seconds(1);
    QVERIFY(!m_panel->isVisible());
}

void ShortcutSheetTest::noOtherKeyBeginsTheCountdownAnew()
{
    seconds(10);
    for (const auto key : {Qt::Key_MediaPlay, Qt::Key_NumLock}) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(m_panel.get(), &press);
    }
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Control, Qt::NoModifier, QString(), true);
    QCoreApplication::sendEvent(m_panel.get(), &repeated);
    QCOMPARE(text("panelEditCountdown"), QStringLiteral("Closes in 20 s"));
}

void ShortcutSheetTest::aRefusedInhibitionIsSaid()
{
    // There is no desktop here that could agree.
    const auto *refusal = m_panel->findChild<QLabel *>(QStringLiteral("panelEditRefusal"));
    QVERIFY(!refusal->isVisible());
    const int height = m_panel->height();
    seconds(1);
    QVERIFY(refusal->isVisible());
    QVERIFY(m_panel->height() > height);
    QVERIFY(m_panel->accessibleDescription().contains(refusal->text()));
    m_panel->reject();
    m_panel->beginSheet(m_window.get());
    QVERIFY(!refusal->isVisible());
}

void ShortcutSheetTest::itReadsFromLeftToRightInAMirroredWindow()
{
    const auto *shortcut = m_panel->findChild<QLabel *>(QStringLiteral("panelEditShortcut"));
    m_panel->setLayoutDirection(Qt::RightToLeft);
    m_panel->setCurrentShortcut(QStringLiteral("Ctrl+,"));
    QVERIFY(text("panelEditCurrent").contains(QStringLiteral("\u2066Ctrl+,\u2069")));
    QTest::keyPress(m_panel.get(), Qt::Key_Control);
    QCOMPARE(shortcut->layoutDirection(), Qt::LeftToRight);
    QTest::keyRelease(m_panel.get(), Qt::Key_Control);
    QCOMPARE(shortcut->layoutDirection(), Qt::RightToLeft);
}

TEST_CLASS(ShortcutSheetTest, QApplication)
#include "ShortcutSheetTest.moc"
