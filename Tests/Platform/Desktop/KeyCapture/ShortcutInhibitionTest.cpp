// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/KeyCapture/ShortcutInhibition.h"

#include "Tests/Support/Command.h"
#include "Tests/Support/KeyboardSettings.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTest>

using platform::ShortcutInhibition;

namespace {

class Recorder : public QDialog {
public:
    using QDialog::QDialog;
    QVector<int> keys;

protected:
    void keyPressEvent(QKeyEvent *event) override { keys << event->key(); }
};

const auto shortcutFile = QStringLiteral("/tmp/shortcut-done");

} // namespace

// A real window manager with a shortcut of its own, in a real X server.
class ShortcutInhibitionTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void withoutItTheWindowManagerTakesItsShortcuts();
    void whileItLivesShortcutsComeToTheWindow();
    void whenItEndsTheWindowManagerHasItsShortcutsAgain();
    void itMayBeginBeforeTheWindowIsShown();
    void itWorksForAModalDialog();
    void whatIsTypedInAnotherProgramStaysThere();
    void itBeginsAgainWhenTheWindowHasTheKeyboardAgain();
    void itWaitsForAnotherProgramsGrabToEnd();
    void itMayOutliveItsWindow();
    void withoutAWindowItDoesNothing();

private:
    bool pressShortcut();
    bool focus(const QString &name);

    std::unique_ptr<test::Command> m_windowManager;
    std::unique_ptr<Recorder> m_window;
};

void ShortcutInhibitionTest::initTestCase()
{
    const auto folder = QDir::homePath() + QStringLiteral("/.config/openbox");
    QVERIFY(QDir().mkpath(folder));
    QFile file(folder + QStringLiteral("/rc.xml"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"(<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew></focus>
  <keyboard>
    <keybind key="W-e"><action name="Execute"><command>touch /tmp/shortcut-done</command></action></keybind>
  </keyboard>
</openbox_config>
)");
    file.close();
    m_windowManager = std::make_unique<test::Command>(QStringLiteral("openbox"), QStringList());
    QTRY_VERIFY_WITH_TIMEOUT(test::xdotool({QStringLiteral("get_desktop")}), 20000);
}

void ShortcutInhibitionTest::init()
{
    QFile::remove(shortcutFile);
    m_window = std::make_unique<Recorder>();
    m_window->setWindowTitle(QStringLiteral("recorder"));
    m_window->resize(200, 100);
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void ShortcutInhibitionTest::cleanup()
{
    m_window.reset();
}

bool ShortcutInhibitionTest::pressShortcut()
{
    return test::xdotool({QStringLiteral("key"), QStringLiteral("super+e")});
}

bool ShortcutInhibitionTest::focus(const QString &name)
{
    return test::xdotool({QStringLiteral("search"), QStringLiteral("--name"), name,
                          QStringLiteral("windowactivate"), QStringLiteral("--sync")});
}

void ShortcutInhibitionTest::withoutItTheWindowManagerTakesItsShortcuts()
{
    QVERIFY(pressShortcut());
    QTRY_VERIFY(QFile::exists(shortcutFile));
    QVERIFY(!m_window->keys.contains(Qt::Key_E));
}

void ShortcutInhibitionTest::whileItLivesShortcutsComeToTheWindow()
{
    const ShortcutInhibition inhibition(m_window.get());
    QTRY_VERIFY(inhibition.isActive());
    QVERIFY(pressShortcut());
    QTRY_VERIFY(m_window->keys.contains(Qt::Key_E));
    QVERIFY(m_window->isActiveWindow());
    QTest::qWait(200);
    QVERIFY(!QFile::exists(shortcutFile));
}

void ShortcutInhibitionTest::whenItEndsTheWindowManagerHasItsShortcutsAgain()
{
    {
        const ShortcutInhibition inhibition(m_window->windowHandle());
        QTRY_VERIFY(inhibition.isActive());
    }
    QVERIFY(pressShortcut());
    QTRY_VERIFY(QFile::exists(shortcutFile));
    QVERIFY(!m_window->keys.contains(Qt::Key_E));
}

void ShortcutInhibitionTest::itMayBeginBeforeTheWindowIsShown()
{
    Recorder later;
    const ShortcutInhibition inhibition(&later);
    QVERIFY(!inhibition.isActive());
    later.show();
    QTRY_VERIFY(inhibition.isActive());
    QVERIFY(pressShortcut());
    QTRY_VERIFY(later.keys.contains(Qt::Key_E));
    QVERIFY(!QFile::exists(shortcutFile));
}

void ShortcutInhibitionTest::itWorksForAModalDialog()
{
    Recorder sheet(m_window.get());
    sheet.setWindowModality(Qt::WindowModal);
    const ShortcutInhibition inhibition(&sheet);
    sheet.open();
    QTRY_VERIFY(inhibition.isActive());
    QVERIFY(pressShortcut());
    QTRY_VERIFY(sheet.keys.contains(Qt::Key_E));
    sheet.close();
    QTRY_VERIFY(!inhibition.isActive());
}

void ShortcutInhibitionTest::whatIsTypedInAnotherProgramStaysThere()
{
    const ShortcutInhibition inhibition(m_window.get());
    QTRY_VERIFY(inhibition.isActive());
    test::Command other(QStringLiteral("xev"),
                        {QStringLiteral("-event"), QStringLiteral("keyboard")});
    QTRY_VERIFY(focus(QStringLiteral("Event Tester")));
    QTRY_VERIFY(!inhibition.isActive());
    m_window->keys.clear();
    QVERIFY(test::xdotool({QStringLiteral("key"), QStringLiteral("q")}));
    QVERIFY(other.waitForOutput(QStringLiteral("keysym 0x71, q")));
    QVERIFY(m_window->keys.isEmpty());
    QVERIFY(pressShortcut());
    QTRY_VERIFY(QFile::exists(shortcutFile));
}

void ShortcutInhibitionTest::itBeginsAgainWhenTheWindowHasTheKeyboardAgain()
{
    const ShortcutInhibition inhibition(m_window.get());
    QTRY_VERIFY(inhibition.isActive());
    test::Command other(QStringLiteral("xev"), {});
    QTRY_VERIFY(focus(QStringLiteral("Event Tester")));
    QTRY_VERIFY(!inhibition.isActive());
    QVERIFY(focus(QStringLiteral("recorder")));
    QTRY_VERIFY(inhibition.isActive());
    QVERIFY(pressShortcut());
    QTRY_VERIFY(m_window->keys.contains(Qt::Key_E));
    QVERIFY(!QFile::exists(shortcutFile));
}

void ShortcutInhibitionTest::itWaitsForAnotherProgramsGrabToEnd()
{
    auto grab = std::make_unique<test::KeyboardGrabOfAnother>();
    QVERIFY(grab->isHeld());
    const ShortcutInhibition inhibition(m_window.get());
    QTest::qWait(300);
    QVERIFY(!inhibition.isActive());
    grab.reset();
    QTRY_VERIFY(inhibition.isActive());
    QVERIFY(pressShortcut());
    QTRY_VERIFY(m_window->keys.contains(Qt::Key_E));
}

void ShortcutInhibitionTest::itMayOutliveItsWindow()
{
    const ShortcutInhibition inhibition(m_window.get());
    QTRY_VERIFY(inhibition.isActive());
    m_window.reset();
    QVERIFY(!inhibition.isActive());
    QVERIFY(pressShortcut());
    QTRY_VERIFY(QFile::exists(shortcutFile));
}

void ShortcutInhibitionTest::withoutAWindowItDoesNothing()
{
    const ShortcutInhibition one(static_cast<QWindow *>(nullptr));
    const ShortcutInhibition other(static_cast<QWidget *>(nullptr));
    QVERIFY(!one.isActive());
    QVERIFY(!other.isActive());
}

TEST_CLASS(ShortcutInhibitionTest, QApplication)
#include "ShortcutInhibitionTest.moc"
