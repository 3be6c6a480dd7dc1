// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Notifications/NotificationCenter.h"
#include "Preference Pane/Presets/ZQKeyTextCell.h"
#include "Preference Pane/Presets/ZQShortcutKeyTableview.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "Preference Pane/Shortcut/ZQShortcutKeyFieldEditor.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

#include <memory>

// The views that catch key presses, and what they post.
class ShortcutCaptureTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void theSKeyInTheSheetIsKeyCodeOneWithoutModifiers();
    void theSheetTellsEveryModifier();
    void aPressEndsAndHidesTheSheet();
    void noKeyCancelsTheSheet_data();
    void noKeyCancelsTheSheet();
    void modifiersAloneAndRepeatedKeysAreNoShortcut();
    void theMouseLeavesTheSheetWithoutAShortcut();
    void theSheetShowsWhatItWaitsFor();
    void theSKeyInTheFieldEditorWithoutModifiersCountsAsShiftAndCommand();
    void theFieldEditorTellsEachModifierByItself();
    void theFieldEditorTypesNothing();
    void anInputMethodTypesNothingIntoTheFieldEditor();
    void noKeyEndsEditingInTheFieldEditor_data();
    void noKeyEndsEditingInTheFieldEditor();
    void keysThatChangeHowTheKeyboardTypesAreNoShortcuts();
    void anExceptionOfAnObserverEndsInTheFieldEditor();
    void theCellGivesItsOwnEditorWhateverIsOffered();
    void theCellsEditorOutlivesTheEditing();
    void aCellMayGoWhileItsEditorIsOpen();
    void aCellMayGoInItsEditorsKeyPress();
    void backspaceAndDeleteInTheTableClear_data();
    void backspaceAndDeleteInTheTableClear();
    void enterInTheTableIsTheBaseTables();
    void aKeyWithoutCharactersIsNoDeleteKey();

private:
    std::vector<platform::NotificationCenter::Observer> m_observers;
    QList<QVariantMap> m_changes;
    int m_clears = 0;
};

void ShortcutCaptureTest::init()
{
    m_changes.clear();
    m_clears = 0;
    auto &center = platform::NotificationCenter::defaultCenter();
    m_observers = {center.addObserver(QStringLiteral("ZQShortcutKeyChanged"),
                                      [this](const platform::Notification &notification) {
                                          QVERIFY(!notification.object.isValid());
                                          m_changes.append(notification.userInfo);
                                      }),
                   center.addObserver(QStringLiteral("ZQShortcutKeyCleared"),
                                      [this](const platform::Notification &notification) {
                                          QVERIFY(!notification.object.isValid());
                                          QVERIFY(notification.userInfo.isEmpty());
                                          ++m_clears;
                                      })};
}

void ShortcutCaptureTest::cleanup()
{
    for (const auto observer : m_observers) {
        platform::NotificationCenter::defaultCenter().removeObserver(observer);
    }
}

namespace {

QVariantMap modifiers(bool shift, bool ctrl, bool opt, bool cmd)
{
    return {{QStringLiteral("shift"), shift},
            {QStringLiteral("ctrl"), ctrl},
            {QStringLiteral("opt"), opt},
            {QStringLiteral("cmd"), cmd}};
}

QVariantMap withoutNumbers(QVariantMap payload)
{
    payload.remove(QStringLiteral("keycode"));
    payload.remove(QStringLiteral("modifierFlags"));
    return payload;
}

constexpr uint anyModifier = 0x1E0000;

} // namespace

void ShortcutCaptureTest::theSKeyInTheSheetIsKeyCodeOneWithoutModifiers()
{
    QWidget window;
    ZQKeyboardEditPanel panel;
    panel.beginSheet(&window);
    QTest::keyClick(&panel, Qt::Key_S);
    QCOMPARE(m_changes.size(), 1);
    QCOMPARE(m_changes[0].value(QStringLiteral("keycode")).toUInt(), 1U);
    QVERIFY(m_changes[0].contains(QStringLiteral("modifierFlags")));
    QCOMPARE(m_changes[0].value(QStringLiteral("modifierFlags")).toUInt() & anyModifier, 0U);
    QCOMPARE(withoutNumbers(m_changes[0]), modifiers(false, false, false, false));
}

void ShortcutCaptureTest::theSheetTellsEveryModifier()
{
    ZQKeyboardEditPanel panel;
    const auto press = [&panel](uint flags) { panel.keyDown(3, flags); };
    press(0x20000 | 0x800000);
    press(0x40000);
    press(0x80000);
    press(0x100000);
    QCOMPARE(m_changes.size(), 4);
    QCOMPARE(m_changes[0].value(QStringLiteral("modifierFlags")).toUInt(), 0x820000U);
    QCOMPARE(withoutNumbers(m_changes[0]), modifiers(true, false, false, false));
    QCOMPARE(withoutNumbers(m_changes[1]), modifiers(false, true, false, false));
    QCOMPARE(withoutNumbers(m_changes[2]), modifiers(false, false, true, false));
    QCOMPARE(withoutNumbers(m_changes[3]), modifiers(false, false, false, true));
}

void ShortcutCaptureTest::aPressEndsAndHidesTheSheet()
{
    QWidget window;
    ZQKeyboardEditPanel panel;
    const QSignalSpy ends(&panel, &QDialog::finished);
    panel.beginSheet(&window);
    QVERIFY(panel.isVisible());
    QCOMPARE(panel.windowModality(), Qt::WindowModal);
    QTest::keyClick(&panel, Qt::Key_F5);
    QVERIFY(!panel.isVisible());
    QCOMPARE(ends.count(), 1);
}

void ShortcutCaptureTest::noKeyCancelsTheSheet_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Esc") << static_cast<int>(Qt::Key_Escape);
    QTest::newRow("Enter") << static_cast<int>(Qt::Key_Return);
    QTest::newRow("Tab") << static_cast<int>(Qt::Key_Tab);
    QTest::newRow("Space") << static_cast<int>(Qt::Key_Space);
    QTest::newRow("Delete") << static_cast<int>(Qt::Key_Delete);
}

void ShortcutCaptureTest::noKeyCancelsTheSheet()
{
    QFETCH(const int, key);
    QWidget window;
    ZQKeyboardEditPanel panel;
    panel.beginSheet(&window);
    QTest::keyClick(&panel, static_cast<Qt::Key>(key));
    QCOMPARE(m_changes.size(), 1);
    QCOMPARE(panel.result(), static_cast<int>(QDialog::Accepted));
}

void ShortcutCaptureTest::modifiersAloneAndRepeatedKeysAreNoShortcut()
{
    QWidget window;
    ZQKeyboardEditPanel panel;
    panel.beginSheet(&window);
    for (const auto key : {Qt::Key_Control, Qt::Key_Shift, Qt::Key_Alt, Qt::Key_Meta, Qt::Key_AltGr,
                           Qt::Key_CapsLock}) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&panel, &press);
    }
    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"),
                       true);
    QCoreApplication::sendEvent(&panel, &repeated);
    QVERIFY(m_changes.isEmpty());
    QVERIFY(panel.isVisible());
}

void ShortcutCaptureTest::theMouseLeavesTheSheetWithoutAShortcut()
{
    QWidget window;
    ZQKeyboardEditPanel panel;
    panel.beginSheet(&window);
    auto *cancel = panel.findChild<QPushButton *>(QStringLiteral("panelEditCancel"));
    QVERIFY(cancel != nullptr);
    QTest::mouseClick(cancel, Qt::LeftButton);
    QVERIFY(!panel.isVisible());
    QVERIFY(m_changes.isEmpty());
}

void ShortcutCaptureTest::theSheetShowsWhatItWaitsFor()
{
    QWidget window;
    ZQKeyboardEditPanel panel;
    panel.setKeyDescription(QStringLiteral("Play & <b>Stop</b>"));
    panel.beginSheet(&window);
    const auto *question = panel.findChild<QLabel *>(QStringLiteral("panelEditQuestion"));
    QVERIFY(question->text().contains(QStringLiteral("“Play & <b>Stop</b>”")));
    QCOMPARE(panel.accessibleName(), question->text());
    const auto *shortcut = panel.findChild<QLabel *>(QStringLiteral("panelEditShortcut"));
    const QString waiting = shortcut->text();
    QTest::keyPress(&panel, Qt::Key_Control);
    QTest::keyPress(&panel, Qt::Key_Shift, Qt::ControlModifier);
    QCOMPARE(shortcut->text(), QStringLiteral("Ctrl+Shift+…"));
    // As X11 has it, a modifier is still held when the event of its release is made.
    QKeyEvent shiftUp(QEvent::KeyRelease, Qt::Key_Shift, Qt::ControlModifier | Qt::ShiftModifier);
    QCoreApplication::sendEvent(&panel, &shiftUp);
    QCOMPARE(shortcut->text(), QStringLiteral("Ctrl+…"));
    QKeyEvent controlUp(QEvent::KeyRelease, Qt::Key_Control, Qt::ControlModifier);
    QCoreApplication::sendEvent(&panel, &controlUp);
    QCOMPARE(shortcut->text(), waiting);
}

void ShortcutCaptureTest::theSKeyInTheFieldEditorWithoutModifiersCountsAsShiftAndCommand()
{
    ZQShortcutKeyFieldEditor editor;
    QTest::keyClick(&editor, Qt::Key_S);
    QCOMPARE(m_changes.size(), 1);
    QCOMPARE(m_changes[0].value(QStringLiteral("keycode")).toInt(), 1);
    QVERIFY(!m_changes[0].contains(QStringLiteral("modifierFlags")));
    QCOMPARE(withoutNumbers(m_changes[0]), modifiers(true, false, false, true));
}

void ShortcutCaptureTest::theFieldEditorTellsEachModifierByItself()
{
    ZQShortcutKeyFieldEditor::keyDown(3, 0x40000);
    ZQShortcutKeyFieldEditor::keyDown(3, 0x20000 | 0x80000);
    ZQShortcutKeyFieldEditor::keyDown(3, 0x800000 | 0x10000);
    QCOMPARE(withoutNumbers(m_changes[0]), modifiers(false, true, false, false));
    QCOMPARE(withoutNumbers(m_changes[1]), modifiers(true, false, true, false));
    QCOMPARE(withoutNumbers(m_changes[2]), modifiers(true, false, false, true));
}

void ShortcutCaptureTest::theFieldEditorTypesNothing()
{
    ZQShortcutKeyFieldEditor editor;
    QVERIFY(editor.isFieldEditor());
    QVERIFY(editor.toPlainText().isEmpty());
    for (const auto key : {Qt::Key_A, Qt::Key_Return, Qt::Key_Escape, Qt::Key_Tab}) {
        QTest::keyClick(&editor, key);
    }
    QVERIFY(editor.toPlainText().isEmpty());
    QCOMPARE(m_changes.size(), 4);
}

void ShortcutCaptureTest::anInputMethodTypesNothingIntoTheFieldEditor()
{
    ZQShortcutKeyFieldEditor editor;
    QInputMethodQueryEvent query(Qt::ImEnabled);
    QCoreApplication::sendEvent(&editor, &query);
    QVERIFY(!query.value(Qt::ImEnabled).toBool());
    // An on-screen keyboard does not ask.
    QInputMethodEvent composing(QStringLiteral("n"), {});
    QCoreApplication::sendEvent(&editor, &composing);
    QInputMethodEvent committed;
    committed.setCommitString(QStringLiteral("日本"));
    QCoreApplication::sendEvent(&editor, &committed);
    QGuiApplication::clipboard()->setText(QStringLiteral("pasted"));
    editor.paste();
    QVERIFY(editor.toPlainText().isEmpty());
    QVERIFY(m_changes.isEmpty());
}

void ShortcutCaptureTest::noKeyEndsEditingInTheFieldEditor_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("keyCode");
    QTest::newRow("Esc") << static_cast<int>(Qt::Key_Escape) << 0x35;
    QTest::newRow("Return") << static_cast<int>(Qt::Key_Return) << 0x24;
    QTest::newRow("Enter") << static_cast<int>(Qt::Key_Enter) << 0x4C;
    QTest::newRow("Tab") << static_cast<int>(Qt::Key_Tab) << 0x30;
    QTest::newRow("Backtab") << static_cast<int>(Qt::Key_Backtab) << 0x30;
    QTest::newRow("Up") << static_cast<int>(Qt::Key_Up) << 0x7E;
}

void ShortcutCaptureTest::noKeyEndsEditingInTheFieldEditor()
{
    QFETCH(const int, key);
    QFETCH(const int, keyCode);
    QStandardItemModel model(2, 1);
    ZQKeyTextCell cell;
    QTableView view;
    view.setModel(&model);
    view.setItemDelegate(&cell);
    view.show();
    view.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&view));
    view.edit(model.index(0, 0));
    for (int press = 1; press <= 2; ++press) {
        QTest::keyClick(cell.zqFieldEditor(), static_cast<Qt::Key>(key));
        QCoreApplication::processEvents();
        QCOMPARE(m_changes.size(), press);
        QCOMPARE(m_changes.last().value(QStringLiteral("keycode")).toInt(), keyCode);
        QCOMPARE(cell.zqFieldEditor()->parentWidget(), view.viewport());
        QVERIFY(cell.zqFieldEditor()->hasFocus());
    }
}

void ShortcutCaptureTest::keysThatChangeHowTheKeyboardTypesAreNoShortcuts()
{
    QWidget window;
    ZQKeyboardEditPanel panel;
    panel.beginSheet(&window);
    const auto *hint = panel.findChild<QLabel *>(QStringLiteral("panelEditHint"));
    ZQShortcutKeyFieldEditor editor;
    for (const auto key : {Qt::Key_NumLock, Qt::Key_Henkan, Qt::Key_Muhenkan}) {
        panel.beginSheet(&window);
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QCoreApplication::sendEvent(&panel, &press);
        QVERIFY(hint->text().startsWith(QStringLiteral("Shortcuts cannot have this key.")));
        QCoreApplication::sendEvent(&editor, &press);
    }
    QVERIFY(m_changes.isEmpty());
    QVERIFY(panel.isVisible());
    QTest::keyClick(&panel, Qt::Key_Print);
    QCOMPARE(m_changes.size(), 1);
    QCOMPARE(m_changes[0].value(QStringLiteral("keycode")).toUInt(), 0x69U);
}

void ShortcutCaptureTest::anExceptionOfAnObserverEndsInTheFieldEditor()
{
    m_observers.push_back(platform::NotificationCenter::defaultCenter().addObserver(
        QStringLiteral("ZQShortcutKeyChanged"), [](const platform::Notification &) {
            throw platform::Exception(QStringLiteral("NSInvalidArgumentException"),
                                      QStringLiteral("No value"));
        }));
    ZQShortcutKeyFieldEditor editor;
    QTest::keyClick(&editor, Qt::Key_S);
    QCOMPARE(m_changes.size(), 1);
}

void ShortcutCaptureTest::theCellGivesItsOwnEditorWhateverIsOffered()
{
    const ZQKeyTextCell cell;
    const ZQKeyTextCell other(QStringLiteral("text"));
    QWidget offered;
    QVERIFY(cell.zqFieldEditor() != nullptr);
    QVERIFY(cell.zqFieldEditor() != other.zqFieldEditor());
    QCOMPARE(cell.setUpFieldEditorAttributes(&offered), cell.zqFieldEditor());
    QCOMPARE(cell.setUpFieldEditorAttributes(nullptr), cell.zqFieldEditor());
    QCOMPARE(other.stringValue(), QStringLiteral("text"));
}

void ShortcutCaptureTest::theCellsEditorOutlivesTheEditing()
{
    ZQKeyTextCell cell;
    {
        QStandardItemModel model(1, 1);
        QTableView view;
        view.setModel(&model);
        view.setItemDelegate(&cell);
        view.show();
        view.edit(model.index(0, 0));
        QCOMPARE(cell.zqFieldEditor()->parentWidget(), view.viewport());
        QTest::keyClick(cell.zqFieldEditor(), Qt::Key_S);
        QCOMPARE(m_changes.size(), 1);
        view.closePersistentEditor(model.index(0, 0));
        view.setCurrentIndex({});
        QTest::qWait(10);
        view.edit(model.index(0, 0));
    }
    // The view that was destroyed while editing has taken it with it.
    QStandardItemModel model(1, 1);
    QTableView view;
    view.setModel(&model);
    view.setItemDelegate(&cell);
    view.edit(model.index(0, 0));
}

void ShortcutCaptureTest::aCellMayGoWhileItsEditorIsOpen()
{
    QStandardItemModel model(2, 1);
    QTableView view;
    view.setModel(&model);
    auto cell = std::make_unique<ZQKeyTextCell>();
    view.setItemDelegate(cell.get());
    view.show();
    view.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&view));
    view.edit(model.index(0, 0));
    QVERIFY(cell->zqFieldEditor()->hasFocus());
    cell.reset();
    QVERIFY(view.findChild<ZQShortcutKeyFieldEditor *>() == nullptr);
    // The view edits again, with another cell.
    ZQKeyTextCell other;
    view.setItemDelegate(&other);
    view.edit(model.index(1, 0));
    QCOMPARE(other.zqFieldEditor()->parentWidget(), view.viewport());
}

void ShortcutCaptureTest::aCellMayGoInItsEditorsKeyPress()
{
    QStandardItemModel model(1, 1);
    QTableView view;
    view.setModel(&model);
    auto cell = std::make_unique<ZQKeyTextCell>();
    view.setItemDelegate(cell.get());
    view.show();
    view.edit(model.index(0, 0));
    m_observers.push_back(platform::NotificationCenter::defaultCenter().addObserver(
        QStringLiteral("ZQShortcutKeyChanged"),
        [&cell](const platform::Notification &) { cell.reset(); }));
    QTest::keyClick(cell->zqFieldEditor(), Qt::Key_S);
    QVERIFY(cell == nullptr);
    QCOMPARE(m_changes.size(), 1);
}

void ShortcutCaptureTest::backspaceAndDeleteInTheTableClear_data()
{
    QTest::addColumn<int>("key");
    QTest::newRow("Backspace") << static_cast<int>(Qt::Key_Backspace);
    QTest::newRow("Delete") << static_cast<int>(Qt::Key_Delete);
}

void ShortcutCaptureTest::backspaceAndDeleteInTheTableClear()
{
    QFETCH(const int, key);
    ZQShortcutKeyTableview table;
    QTest::keyClick(&table, static_cast<Qt::Key>(key));
    QCOMPARE(m_clears, 1);
    QVERIFY(m_changes.isEmpty());
}

void ShortcutCaptureTest::enterInTheTableIsTheBaseTables()
{
    ZQShortcutKeyTableview table;
    QVERIFY(!ZQShortcutKeyTableview::keyDown(QStringLiteral("\r")));
    QTest::keyClick(&table, Qt::Key_Return);
    QTest::keyClick(&table, Qt::Key_A);
    QCOMPARE(m_clears, 0);
}

void ShortcutCaptureTest::aKeyWithoutCharactersIsNoDeleteKey()
{
    QVERIFY(!ZQShortcutKeyTableview::keyDown(QString()));
    for (const char16_t character : {u'\x08', u'\x7F', u'\xF728', u'\xF73E'}) {
        QVERIFY(ZQShortcutKeyTableview::keyDown(QString(QChar(character)) + QLatin1Char('x')));
    }
    QCOMPARE(m_clears, 4);
}

TEST_CLASS(ShortcutCaptureTest, QApplication)
#include "ShortcutCaptureTest.moc"
