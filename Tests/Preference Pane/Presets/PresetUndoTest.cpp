// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "Tests/Preference Pane/Presets/PageFixture.h"
#include "Tests/Preference Pane/Presets/PresetBusMonitor.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QTest>

// What was changed on the page can be undone, step by step.
class PresetUndoTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void deletedAndReplacedShortcutsComeBackOneAfterTheOther();
    void anUndoneShortcutIsWrittenAndAnnounced();
    void theMenuSaysWhatWillBeUndone();
    void anUndoGoesToThePresetThatWasChanged();
    void anUndoKeepsWhatAnotherPaneHasChangedSince();
    void ofAPresetThatIsGoneNoShortcutComesBack();
    void aReplacedPresetComesBackUnderItsNameAfterItsChangesWereUndone();
    void aReplacementThatSomebodyHasChangedIsKept();
    void theChangesBeforeARemovalCanStillBeUndone();
    void whatChangesNothingIsNoStep();
    void inAFilterUndoIsThatOfTheField();
};

namespace {

const QString mine = QStringLiteral("Mine");
const QString other = QStringLiteral("Other");

QVariantMap preset()
{
    return {{QStringLiteral("keys"),
             QVariantMap{{QStringLiteral("play"), shortcutEntry(QStringLiteral("P"), 35, 0)},
                         {QStringLiteral("stop"), QStringLiteral("old form")}}}};
}

QVariantMap entry(const QString &title, const char *key)
{
    const QVariantMap keys = PresetFixture::user(title).value(QStringLiteral("keys")).toMap();
    return keys.value(QString::fromLatin1(key)).toMap();
}

void choose(Page &page, int row, quint16 keyCode)
{
    page.keys()->selectOnlyRow(row);
    page->panel()->keyDown(keyCode, 0);
}

void clear(Page &page, int row)
{
    page.keys()->selectOnlyRow(row);
    QTest::keyClick(page.keys(), Qt::Key_Delete);
}

void import(Page &page, const QVariantMap &contents)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(mine + QStringLiteral(".okl"));
    QVERIFY(platform::writeDictionaryToFile(contents, path));
    const test::AlertWatcher answer(
        [](platform::AlertPanel &alert) { test::click(alert, "otherButton"); });
    page->importPresets({path});
}

} // namespace

void PresetUndoTest::deletedAndReplacedShortcutsComeBackOneAfterTheOther()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(mine, preset());
    Page page(fixture);
    page.show();
    auto *undo = page.action("undoAction");
    QVERIFY(!undo->isEnabled());
    choose(page, 0, 1);
    clear(page, 0);
    clear(page, 1);
    QCOMPARE(page.shortcut(0) + page.shortcut(1), QString());
    QTest::keyClick(page.keys(), Qt::Key_Z, Qt::ControlModifier);
    QTRY_COMPARE(page.shortcut(1), QStringLiteral("old form"));
    QCOMPARE(page.keys()->selectedRow(), 1);
    QTest::keyClick(page.keys(), Qt::Key_Z, Qt::ControlModifier);
    QTRY_COMPARE(page.shortcut(0), QStringLiteral("S"));
    QCOMPARE(page.keys()->selectedRow(), 0);
    undo->trigger();
    QTRY_COMPARE(page.shortcut(0), QStringLiteral("P"));
    QCOMPARE(entry(mine, "play"), shortcutEntry(QStringLiteral("P"), 35, 0));
    QVERIFY(!undo->isEnabled());
}

void PresetUndoTest::anUndoneShortcutIsWrittenAndAnnounced()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(mine, preset());
    Page page(fixture);
    page.show();
    clear(page, 0);
    QCOMPARE(entry(mine, "play"), blankEntry());
    PresetBusMonitor monitor;
    page->undo();
    QCOMPARE(entry(mine, "play"), shortcutEntry(QStringLiteral("P"), 35, 0));
    QTRY_COMPARE(monitor.notices(), 1);
}

void PresetUndoTest::theMenuSaysWhatWillBeUndone()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(QStringLiteral("You & me"), preset());
    Page page(fixture);
    page.show();
    QCOMPARE(page.action("undoAction")->text(), QStringLiteral("&Undo"));
    clear(page, 1);
    QCOMPARE(page.action("undoAction")->text(),
             QStringLiteral("&Undo Change of “Stop” in “You && me”"));
}

void PresetUndoTest::anUndoGoesToThePresetThatWasChanged()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(mine, preset());
    PresetFixture::writeUser(other, preset());
    Page page(fixture);
    page.show();
    clear(page, 0);
    page->browser()->showPreset(other);
    page.control<QLineEdit>("applicationFilter")->setText(other);
    page.control<QLineEdit>("keyFilter")->setText(QStringLiteral("stop"));
    page->undo();
    QCOMPARE(page->browser()->selectedTitle(), mine);
    QCOMPARE(entry(mine, "play"), shortcutEntry(QStringLiteral("P"), 35, 0));
    QCOMPARE(page.keys()->selectedRow(), 0);
}

void PresetUndoTest::anUndoKeepsWhatAnotherPaneHasChangedSince()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(mine, preset());
    Page page(fixture);
    page.show();
    clear(page, 0);
    QVariantMap changed = PresetFixture::user(mine);
    QVariantMap keys = changed.value(QStringLiteral("keys")).toMap();
    keys[QStringLiteral("stop")] = shortcutEntry(QStringLiteral("X"), 7, 0);
    changed[QStringLiteral("keys")] = keys;
    QVERIFY(platform::writeDictionaryToFile(changed, PresetFixture::userPath(mine)));
    page->undo();
    QCOMPARE(entry(mine, "play"), shortcutEntry(QStringLiteral("P"), 35, 0));
    QCOMPARE(entry(mine, "stop"), shortcutEntry(QStringLiteral("X"), 7, 0));
}

void PresetUndoTest::ofAPresetThatIsGoneNoShortcutComesBack()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(mine, preset());
    PresetFixture::writeUser(other, preset());
    Page page(fixture);
    page.show();
    page->browser()->showPreset(other);
    clear(page, 1);
    page->browser()->showPreset(mine);
    clear(page, 0);
    QVERIFY(QFile::remove(PresetFixture::userPath(mine)));
    QTRY_COMPARE(page.shownTitles(), QStringList{other});
    QVERIFY(page.action("undoAction")->text().contains(other));
    page->undo();
    QCOMPARE(entry(other, "stop").value(QStringLiteral("val")).toString(),
             QStringLiteral("old form"));
    QVERIFY(!QFile::exists(PresetFixture::userPath(mine)));
}

void PresetUndoTest::aReplacedPresetComesBackUnderItsNameAfterItsChangesWereUndone()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(mine, preset());
    const QByteArray old = PresetFixture::userBytes(mine);
    Page page(fixture);
    page.show();
    clear(page, 0);
    const QByteArray cleared = PresetFixture::userBytes(mine);
    import(page,
           {{ QStringLiteral("keys"),
              QVariantMap {
                  { QStringLiteral("menu"),
                    QStringLiteral("text") }
              } }});
    choose(page, 1, 1);
    page->undo(); // the choice
    QCOMPARE(entry(mine, "stop"), blankEntry());
    page->undo(); // the import
    QCOMPARE(PresetFixture::userBytes(mine), cleared);
    QCOMPARE(page.shownTitles(), QStringList{mine});
    page->undo(); // the clearing
    QCOMPARE(entry(mine, "play"), shortcutEntry(QStringLiteral("P"), 35, 0));
    QVERIFY(!page.action("undoAction")->isEnabled());
}

void PresetUndoTest::aReplacementThatSomebodyHasChangedIsKept()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(mine, preset());
    const QByteArray old = PresetFixture::userBytes(mine);
    Page page(fixture);
    page.show();
    import(page, {{ QStringLiteral("keys"), QVariantMap() }});
    const QVariantMap changed{{QStringLiteral("keys"), QVariantMap()},
                              {QStringLiteral("foreign"), 1}};
    PresetFixture::writeUser(mine, changed);
    page->undo();
    QCOMPARE(PresetFixture::user(mine), changed);
    QCOMPARE(PresetFixture::userBytes(QStringLiteral("Mine 2")), old);
}

void PresetUndoTest::theChangesBeforeARemovalCanStillBeUndone()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(mine, preset());
    Page page(fixture);
    page.show();
    clear(page, 0);
    const test::AlertWatcher answer(
        [](platform::AlertPanel &alert) { test::click(alert, "defaultButton"); });
    page->browser()->removeApplication();
    PresetFixture::writeUser(mine, {{QStringLiteral("keys"), QVariantMap()}});
    page->undo();
    const QString restored = QStringLiteral("Mine 2"); // somebody has taken the name
    QCOMPARE(page->browser()->selectedTitle(), restored);
    page->undo();
    QCOMPARE(entry(restored, "play"), shortcutEntry(QStringLiteral("P"), 35, 0));
    QCOMPARE(PresetFixture::user(mine).value(QStringLiteral("keys")).toMap(), QVariantMap());
}

void PresetUndoTest::whatChangesNothingIsNoStep()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(mine, preset());
    Page page(fixture);
    page.show();
    clear(page, 2);
    choose(page, 0, 35);
    QVERIFY(!page.action("undoAction")->isEnabled());
}

void PresetUndoTest::inAFilterUndoIsThatOfTheField()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(mine, preset());
    Page page(fixture);
    page.show();
    clear(page, 0);
    auto *filter = page.control<QLineEdit>("keyFilter");
    filter->setFocus();
    QTest::keyClicks(filter, QStringLiteral("st"));
    QTest::keyClick(filter, Qt::Key_Z, Qt::ControlModifier);
    QVERIFY(filter->text().isEmpty());
    QCoreApplication::processEvents();
    QCOMPARE(page.shortcut(0), QString(QLatin1String("")));
}

TEST_CLASS(PresetUndoTest, QApplication)
#include "PresetUndoTest.moc"
