// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"

#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Notifications/NotificationCenter.h"
#include "Tests/Preference Pane/Presets/PresetBusMonitor.h"
#include "Tests/Preference Pane/Presets/PresetFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QDir>
#include <QSignalSpy>
#include <QTest>

class ZQKeyboardLayoutEditControllerTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aRowWithAnEmptyNameShowsItsKey();
    void anyOtherColumnShowsTheShortcut();
    void bothFormsOfAnEntryAreReadAndOthersIgnored();
    void anExtraKeyOfAnEntryStaysInTheRowAndIsNotWritten();
    void aShortcutIsWrittenAnnouncedAndNotReloaded();
    void clearingTakesTheShortcutAndReloads();
    void clearingAKeyWithoutShortcutWritesAndAnnouncesAllTheSame();
    void withoutASelectedRowOrUserInformationNothingHappens();
    void aMissingKeyCodeOrModifierWordRaisesAndWritesNothing_data();
    void aMissingKeyCodeOrModifierWordRaisesAndWritesNothing();
    void aPlainTextBecomesADictionaryAtTheNextRewrite();
    void editingADefaultPresetMakesAUsersFileWithAllKeysAndTheOtherEntries();
    void theEditedFileIsNotSwitchedToTheUsersCopy();
    void aMissingFileKeepsTheRowsAndNothingIsWrittenUnderItsName();
    void anUnreadableSourceIsStillAnnounced();
    void missingKeyNamesGiveNoRowsAndAnEmptyDictionary();
    void rowsWithoutIdentifierCollapseIntoUnknown();
    void aKeyThatIsNotInTheListIsDropped();
    void anUnwritableFolderLosesNothing();
    void twoKeysWithOneShortcutWarnOfEachOther();
    void enterAndDoubleClickOpenTheSheet();
};

namespace {

using platform::NotificationCenter;

void postCapture(int keyCode, uint flags)
{
    NotificationCenter::defaultCenter().post(
        {QStringLiteral("ZQShortcutKeyChanged"),
         {},
         {{QStringLiteral("keycode"), keyCode}, {QStringLiteral("modifierFlags"), flags}}});
}

void postClear()
{
    NotificationCenter::defaultCenter().post({QStringLiteral("ZQShortcutKeyCleared"), {}, {}});
}

QVariantMap presetWithKeys(const QVariantMap &keys)
{
    return {{QStringLiteral("keys"), keys}};
}

QVariantMap keysOf(const QString &title)
{
    return PresetFixture::user(title).value(QStringLiteral("keys")).toMap();
}

const QString play = QStringLiteral("play");
const QString stop = QStringLiteral("stop");
const QString menu = QStringLiteral("menu");
const QString title = QStringLiteral("Player");
constexpr uint command = 0x100000;
constexpr uint control = 0x40000;

} // namespace

void ZQKeyboardLayoutEditControllerTest::aRowWithAnEmptyNameShowsItsKey()
{
    PresetFixture fixture;
    fixture.open();
    QCOMPARE(fixture.keyColumn(QStringLiteral("description")),
             QStringList({QStringLiteral("Play"), QStringLiteral("Stop"), QStringLiteral("menu")}));
}

void ZQKeyboardLayoutEditControllerTest::anyOtherColumnShowsTheShortcut()
{
    PresetFixture fixture;
    PresetFixture::writeUser(title,
                             presetWithKeys({{stop, shortcutEntry(QStringLiteral("S"), 1, 0)}}));
    fixture.open();
    const QStringList expected{QString(), QStringLiteral("S"), QString()};
    QCOMPARE(fixture.keyColumn(QStringLiteral("shortcut")), expected);
    QCOMPARE(fixture.keyColumn(QStringLiteral("whatever")), expected);
}

void ZQKeyboardLayoutEditControllerTest::bothFormsOfAnEntryAreReadAndOthersIgnored()
{
    PresetFixture fixture;
    PresetFixture::writeUser(title,
                             presetWithKeys({{play, QStringLiteral("Ctrl+P")},
                                             {stop, shortcutEntry(QStringLiteral("S"), 1, control)},
                                             {menu, QVariantList{QStringLiteral("M")}}}));
    fixture.open();
    const auto &rows = fixture.editor().keyArray();
    QCOMPARE(rows[0].value(QStringLiteral("val")).toString(), QStringLiteral("Ctrl+P"));
    QVERIFY(!rows[0].contains(QStringLiteral("keycode")));
    QCOMPARE(rows[1].value(QStringLiteral("keycode")).toInt(), 1);
    QCOMPARE(rows[1].value(QStringLiteral("modifiers")).toUInt(), control);
    QCOMPARE(rows[2].value(QStringLiteral("val")).toString(), QString(QLatin1String("")));
}

void ZQKeyboardLayoutEditControllerTest::anExtraKeyOfAnEntryStaysInTheRowAndIsNotWritten()
{
    PresetFixture fixture;
    QVariantMap entry = shortcutEntry(QStringLiteral("S"), 1, 0);
    entry[QStringLiteral("comment")] = QStringLiteral("mine");
    PresetFixture::writeUser(title, presetWithKeys({{stop, entry}}));
    fixture.open();
    QCOMPARE(fixture.editor().keyArray()[1].value(QStringLiteral("comment")).toString(),
             QStringLiteral("mine"));
    fixture.editor().updatePresetFile();
    QVERIFY(!keysOf(title)[stop].toMap().contains(QStringLiteral("comment")));
}

void ZQKeyboardLayoutEditControllerTest::aShortcutIsWrittenAnnouncedAndNotReloaded()
{
    PresetFixture fixture;
    PresetFixture::writeUser(title, presetWithKeys({}));
    fixture.open();
    PresetBusMonitor monitor;
    fixture.keyTable().selectOnlyRow(0);
    const QSignalSpy reloads(fixture.keyTable().model(), &QAbstractItemModel::modelReset);
    postCapture(1, control | command);
    QCOMPARE(fixture.editor().keyArray()[0].value(QStringLiteral("val")).toString(),
             QStringLiteral("Ctrl+Cmd+S"));
    QCOMPARE(keysOf(title),
             QVariantMap({{play, shortcutEntry(QStringLiteral("Ctrl+Cmd+S"), 1, control | command)},
                          {stop, blankEntry()},
                          {menu, blankEntry()}}));
    QTRY_COMPARE(monitor.notices(), 1);
    QCOMPARE(reloads.count(), 0);
}

void ZQKeyboardLayoutEditControllerTest::clearingTakesTheShortcutAndReloads()
{
    PresetFixture fixture;
    PresetFixture::writeUser(title,
                             presetWithKeys({{stop, shortcutEntry(QStringLiteral("S"), 1, 0)}}));
    fixture.open();
    PresetBusMonitor monitor;
    fixture.keyTable().selectOnlyRow(1);
    const QSignalSpy reloads(fixture.keyTable().model(), &QAbstractItemModel::modelReset);
    postClear();
    QCOMPARE(keysOf(title)[stop].toMap(), blankEntry());
    QTRY_COMPARE(monitor.notices(), 1);
    QCOMPARE(reloads.count(), 1);
    QCOMPARE(fixture.keyTable().selectedRow(), 1);
}

void ZQKeyboardLayoutEditControllerTest::clearingAKeyWithoutShortcutWritesAndAnnouncesAllTheSame()
{
    PresetFixture fixture;
    PresetFixture::writeUser(title, presetWithKeys({}));
    fixture.open();
    PresetBusMonitor monitor;
    fixture.keyTable().selectOnlyRow(2);
    postClear();
    QCOMPARE(keysOf(title).size(), 3);
    QTRY_COMPARE(monitor.notices(), 1);
}

void ZQKeyboardLayoutEditControllerTest::withoutASelectedRowOrUserInformationNothingHappens()
{
    PresetFixture fixture;
    PresetFixture::writeUser(title, presetWithKeys({}));
    fixture.open();
    const QByteArray before = PresetFixture::userBytes(title);
    PresetBusMonitor monitor;
    postCapture(1, 0);
    postClear();
    fixture.keyTable().selectOnlyRow(0);
    NotificationCenter::defaultCenter().post({QStringLiteral("ZQShortcutKeyChanged"), {}, {}});
    QTest::qWait(300);
    QCOMPARE(PresetFixture::userBytes(title), before);
    QCOMPARE(monitor.notices(), 0);
}

void ZQKeyboardLayoutEditControllerTest::aMissingKeyCodeOrModifierWordRaisesAndWritesNothing_data()
{
    QTest::addColumn<QVariantMap>("userInfo");
    QTest::addColumn<bool>("hasKeyCode");
    QTest::newRow("no modifiers") << QVariantMap{{QStringLiteral("keycode"), 1}} << true;
    QTest::newRow("no key code") << QVariantMap{{QStringLiteral("modifierFlags"), 0}} << false;
}

void ZQKeyboardLayoutEditControllerTest::aMissingKeyCodeOrModifierWordRaisesAndWritesNothing()
{
    QFETCH(const QVariantMap, userInfo);
    QFETCH(const bool, hasKeyCode);
    PresetFixture fixture;
    PresetFixture::writeUser(title, presetWithKeys({}));
    fixture.open();
    const QByteArray before = PresetFixture::userBytes(title);
    fixture.keyTable().selectOnlyRow(0);
    QString name;
    try {
        fixture.editor().keyChanged({{}, {}, userInfo});
    } catch (const platform::Exception &exception) {
        name = exception.name();
    }
    QCOMPARE(name, QStringLiteral("NSInvalidArgumentException"));
    const QVariantMap &row = fixture.editor().keyArray()[0];
    QVERIFY(!row.value(QStringLiteral("val")).toString().isEmpty());
    QCOMPARE(row.contains(QStringLiteral("keycode")), hasKeyCode);
    QVERIFY(!row.contains(QStringLiteral("modifiers")));
    QCOMPARE(PresetFixture::userBytes(title), before);
}

void ZQKeyboardLayoutEditControllerTest::aPlainTextBecomesADictionaryAtTheNextRewrite()
{
    PresetFixture fixture;
    PresetFixture::writeUser(title, presetWithKeys({{play, QStringLiteral("Cmd+P")}}));
    fixture.open();
    fixture.editor().updatePresetFile();
    QCOMPARE(keysOf(title)[play].toMap(),
             QVariantMap({{QStringLiteral("val"), QStringLiteral("Cmd+P")}}));
}

void ZQKeyboardLayoutEditControllerTest::
    editingADefaultPresetMakesAUsersFileWithAllKeysAndTheOtherEntries()
{
    PresetFixture fixture;
    QVariantMap preset = presetWithKeys({{stop, shortcutEntry(QStringLiteral("S"), 1, 0)}});
    preset[QStringLiteral("name")] = QStringLiteral("A name");
    preset[QStringLiteral("bundleids")] = QVariantList{QStringLiteral("a"), QStringLiteral("b")};
    preset[QStringLiteral("bundleid")] = QStringLiteral("a");
    preset[QStringLiteral("foreign")] =
        QVariantMap{{QStringLiteral("data"), QByteArray("\0\1", 2)},
                    {QStringLiteral("real"), 2.5},
                    {QStringLiteral("on"), true},
                    {QStringLiteral("date"), QDateTime(QDate(2020, 1, 2), QTime(3, 4), Qt::UTC)}};
    fixture.writeDefault(title, preset);
    fixture.open();
    const QByteArray before = [&] {
        QFile file(fixture.defaultPath(title));
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }();
    fixture.keyTable().selectOnlyRow(0);
    postCapture(1, 0);

    QVariantMap expected = preset;
    expected[QStringLiteral("keys")] = QVariantMap{{play, shortcutEntry(QStringLiteral("S"), 1, 0)},
                                                   {stop, shortcutEntry(QStringLiteral("S"), 1, 0)},
                                                   {menu, blankEntry()}};
    QCOMPARE(PresetFixture::user(title), expected);
    QFile file(fixture.defaultPath(title));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), before);
}

void ZQKeyboardLayoutEditControllerTest::theEditedFileIsNotSwitchedToTheUsersCopy()
{
    PresetFixture fixture;
    fixture.writeDefault(title, presetWithKeys({}));
    fixture.open();
    fixture.keyTable().selectOnlyRow(0);
    postCapture(1, 0);
    QCOMPARE(fixture.editor().currentFile(), fixture.defaultPath(title));
    fixture.keyTable().selectOnlyRow(1);
    postCapture(1, command);
    QCOMPARE(keysOf(title)[play].toMap(), shortcutEntry(QStringLiteral("S"), 1, 0));
    QCOMPARE(keysOf(title)[stop].toMap(), shortcutEntry(QStringLiteral("Cmd+S"), 1, command));
}

void ZQKeyboardLayoutEditControllerTest::aMissingFileKeepsTheRowsAndNothingIsWrittenUnderItsName()
{
    PresetFixture fixture;
    PresetFixture::writeUser(title,
                             presetWithKeys({{stop, shortcutEntry(QStringLiteral("S"), 1, 0)}}));
    fixture.open();
    const QString missing = PresetFixture::userPath(QStringLiteral("Missing"));
    fixture.editor().loadKeysForFile(missing);
    QCOMPARE(fixture.editor().currentFile(), missing);
    QCOMPARE(fixture.keyColumn(QStringLiteral("shortcut"))[1], QStringLiteral("S"));
    fixture.keyTable().selectOnlyRow(0);
    PresetBusMonitor monitor;
    postCapture(1, command);
    QTRY_COMPARE(monitor.notices(), 1);
    QVERIFY(!QFileInfo::exists(missing));
    QCOMPARE(keysOf(title).size(), 1); // the one loaded before
}

void ZQKeyboardLayoutEditControllerTest::anUnreadableSourceIsStillAnnounced()
{
    PresetFixture fixture;
    PresetFixture::writeUserBytes(title + QStringLiteral(".okl"), "no property list");
    fixture.open();
    PresetBusMonitor monitor;
    fixture.editor().updatePresetFile();
    QTRY_COMPARE(monitor.notices(), 1);
    QCOMPARE(PresetFixture::userBytes(title), QByteArray("no property list"));
}

void ZQKeyboardLayoutEditControllerTest::missingKeyNamesGiveNoRowsAndAnEmptyDictionary()
{
    PresetFixture fixture;
    fixture.writeKeyNames(QVariantMap());
    PresetFixture::writeUser(title,
                             presetWithKeys({{stop, shortcutEntry(QStringLiteral("S"), 1, 0)}}));
    fixture.open();
    QCOMPARE(fixture.editor().numberOfRowsInTableView(), 0);
    fixture.editor().updatePresetFile();
    QVERIFY(PresetFixture::user(title).contains(QStringLiteral("keys")));
    QVERIFY(keysOf(title).isEmpty());
}

void ZQKeyboardLayoutEditControllerTest::rowsWithoutIdentifierCollapseIntoUnknown()
{
    PresetFixture fixture;
    fixture.writeKeyNames(QVariantList{QVariantMap{{QStringLiteral("name"), QStringLiteral("One")}},
                                       QVariantMap{{QStringLiteral("name"), QStringLiteral("Two")}},
                                       QStringLiteral("no dictionary"),
                                       QVariantMap{{QStringLiteral("key"), play}}});
    PresetFixture::writeUser(title,
                             presetWithKeys({{QString(QLatin1String("")), QStringLiteral("x")}}));
    fixture.open();
    QCOMPARE(fixture.editor().numberOfRowsInTableView(), 3);
    QVERIFY(fixture.keyColumn(QStringLiteral("shortcut"))[0].isEmpty());
    fixture.keyTable().selectOnlyRow(1);
    postCapture(1, 0);
    QCOMPARE(keysOf(title),
             QVariantMap({{QStringLiteral("unknown"), shortcutEntry(QStringLiteral("S"), 1, 0)},
                          {play, blankEntry()}}));
}

void ZQKeyboardLayoutEditControllerTest::aKeyThatIsNotInTheListIsDropped()
{
    PresetFixture fixture;
    PresetFixture::writeUser(title,
                             presetWithKeys({{QStringLiteral("laser"), QStringLiteral("L")}}));
    fixture.open();
    QVERIFY(!fixture.keyColumn(QStringLiteral("shortcut")).contains(QStringLiteral("L")));
    fixture.editor().updatePresetFile();
    QVERIFY(!keysOf(title).contains(QStringLiteral("laser")));
}

void ZQKeyboardLayoutEditControllerTest::anUnwritableFolderLosesNothing()
{
    PresetFixture fixture;
    PresetFixture::writeUser(title,
                             presetWithKeys({{stop, shortcutEntry(QStringLiteral("S"), 1, 0)}}));
    fixture.open();
    const QByteArray before = PresetFixture::userBytes(title);
    const QString folder = QFileInfo(PresetFixture::userPath(title)).path();
    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
    fixture.keyTable().selectOnlyRow(0);
    PresetBusMonitor monitor;
    postCapture(1, 0);
    QTRY_COMPARE(monitor.notices(), 1);
    QCOMPARE(PresetFixture::userBytes(title), before);
    QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden).size(), 1);
    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

void ZQKeyboardLayoutEditControllerTest::twoKeysWithOneShortcutWarnOfEachOther()
{
    PresetFixture fixture;
    // The caps lock bit makes no other shortcut of it.
    PresetFixture::writeUser(
        title, presetWithKeys({{play, shortcutEntry(QStringLiteral("S"), 1, 0x10000)},
                               {stop, shortcutEntry(QStringLiteral("S"), 1, 0)},
                               {menu, shortcutEntry(QStringLiteral("Cmd+S"), 1, command)}}));
    fixture.open();
    QStringList warnings;
    for (int row = 0; row < 3; ++row) {
        platform::TableCell cell;
        fixture.editor().tableViewWillDisplayCell(cell, QStringLiteral("shortcut"), row);
        warnings.append(cell.toolTip);
        QCOMPARE(cell.image.isNull(), cell.toolTip.isEmpty());
    }
    QCOMPARE(warnings, QStringList({QStringLiteral("The same shortcut as Stop"),
                                    QStringLiteral("The same shortcut as Play"), QString()}));
}

void ZQKeyboardLayoutEditControllerTest::enterAndDoubleClickOpenTheSheet()
{
    PresetFixture fixture;
    PresetFixture::writeUser(title, presetWithKeys({}));
    fixture.open();
    fixture.keyTable().selectOnlyRow(0);
    fixture.keyTable().setFocus();
    QTest::keyClick(&fixture.keyTable(), Qt::Key_Return);
    QVERIFY(fixture.panel().isVisible());
    QVERIFY(fixture.panel().isModal());
    QCOMPARE(fixture.panel().parentWidget(), &fixture.window());
    fixture.panel().reject();
    const QPoint place =
        fixture.keyTable().visualRect(fixture.keyTable().model()->index(1, 0)).center();
    QTest::mouseClick(fixture.keyTable().viewport(), Qt::LeftButton, {}, place);
    QVERIFY(!fixture.panel().isVisible());
    QTest::mouseDClick(fixture.keyTable().viewport(), Qt::LeftButton, {}, place);
    QVERIFY(fixture.panel().isVisible());
    QCOMPARE(fixture.keyTable().selectedRow(), 1);
}

TEST_CLASS(ZQKeyboardLayoutEditControllerTest, QApplication)
#include "ZQKeyboardLayoutEditControllerTest.moc"
