// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Ostrel/PresetFiles.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Desktop/ApplicationPanel/ApplicationPanel.h"
#include "Preference Pane/Presets/PresetTableView.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Tests/Preference Pane/Presets/PageFixture.h"
#include "Tests/Preference Pane/Presets/PresetBusMonitor.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/TestProgram.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMimeData>
#include <QPushButton>
#include <QTest>
#include <QUrl>

// What the page has beyond its two controllers.
class KeyboardLayoutPageTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void presetsAreReadWhenThePageShowsFirst();
    void theFirstPresetIsSelected();
    void aFilterShowsTheRowsWithAllItsWords();
    void aShortcutChosenUnderAFilterGoesToTheRightKey();
    void theKeyboardAloneEditsAShortcut();
    void deleteInTheApplicationsAsksToRemove();
    void anUnreadablePresetSaysSo();
    void aFileThatIsNoPresetIsRefusedWithTheReason_data();
    void aFileThatIsNoPresetIsRefusedWithTheReason();
    void anImportedPresetIsTheSameFileAndIsAnnounced();
    void anImportMayReplaceKeepBothOrCancel_data();
    void anImportMayReplaceKeepBothOrCancel();
    void aDroppedFileIsImported();
    void anExportedPresetIsTheSameFile();
    void aRemovedPresetIsRestored();
    void aRestoredPresetReplacesNothing();
    void severalRemovedPresetsAreRestoredOneAfterTheOther();
    void aRemovalThatFailedOffersNoRestoring();
    void anApplicationAddedOverAPresetKeepsTheOldOneRestorable();
    void aReplacedPresetIsRestored();
    void withoutAChosenApplicationNoKeyCanBeChanged();
    void aChangeThatCannotBeWrittenIsShownAsUnsaved();
    void everyControlHasAnAccessibleName();
    void anotherApplicationUnderAKeyFilterShowsItsKeys();
};

namespace {

const QString player = QStringLiteral("Player");

QVariantMap preset(const QString &shortcut)
{
    return {{QStringLiteral("bundleid"), QStringLiteral("org.player")},
            {QStringLiteral("keys"), QVariantMap{{QStringLiteral("play"), shortcut}}}};
}

QString writeFile(const QTemporaryDir &folder, const QString &name, const QByteArray &bytes)
{
    const QString path = folder.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("cannot write a file");
    }
    return path;
}

// A folder in which nothing can be made or removed meanwhile.
class Unwritable {
public:
    explicit Unwritable(QString folder) : m_folder(std::move(folder))
    {
        QFile::setPermissions(m_folder, QFile::ReadOwner | QFile::ExeOwner);
    }
    ~Unwritable()
    {
        QFile::setPermissions(m_folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    Unwritable(const Unwritable &) = delete;
    Unwritable &operator=(const Unwritable &) = delete;

private:
    QString m_folder;
};

const QByteArray goodFile = "<plist version=\"1.0\"><dict><key>keys</key><dict><key>play</key>"
                            "<string>Imported</string></dict></dict></plist>";

} // namespace

void KeyboardLayoutPageTest::presetsAreReadWhenThePageShowsFirst()
{
    PresetFixture fixture;
    const Page page(fixture);
    QVERIFY(page->browser() == nullptr);
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    page->load();
    QCOMPARE(page.shownTitles(), QStringList{player});
    const auto *browser = page->browser();
    page->load();
    QCOMPARE(page->browser(), browser);
}

void KeyboardLayoutPageTest::theFirstPresetIsSelected()
{
    PresetFixture fixture;
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    Page page(fixture);
    page.show();
    QCOMPARE(page->browser()->selectedTitle(), player);
    QCOMPARE(page.shortcut(0), QStringLiteral("P"));
    QVERIFY(page.control<QPushButton>("removeApplicationButton")->isEnabled());
}

void KeyboardLayoutPageTest::aFilterShowsTheRowsWithAllItsWords()
{
    PresetFixture fixture;
    for (const auto *title : {"Music Player", "Video Player", "Viewer"}) {
        PresetFixture::writeUser(QString::fromLatin1(title), preset(QString::fromLatin1(title)));
    }
    Page page(fixture);
    page.show();
    auto *filter = page.control<QLineEdit>("applicationFilter");
    page.applications()->selectOnlyRow(1);
    QTest::keyClicks(filter, QStringLiteral("play VID"));
    QCOMPARE(page.shownTitles(), QStringList{QStringLiteral("Video Player")});
    QCOMPARE(page->browser()->selectedTitle(), QStringLiteral("Video Player"));
    filter->setText(QStringLiteral("music"));
    // What is hidden is not selected, and the keys stay as they were.
    QVERIFY(page->browser()->selectedTitle().isNull());
    QVERIFY(!page.control<QPushButton>("removeApplicationButton")->isEnabled());
    QCOMPARE(page.shortcut(0), QStringLiteral("Video Player"));
    filter->clear();
    QCOMPARE(page.shownTitles().size(), 3);

    auto *keyFilter = page.control<QLineEdit>("keyFilter");
    keyFilter->setText(QStringLiteral("sto"));
    QCOMPARE(page.keys()->model()->rowCount(), 1);
    keyFilter->setText(QStringLiteral("video player")); // the shortcut's text
    QCOMPARE(page.keys()->model()->rowCount(), 1);
}

void KeyboardLayoutPageTest::aShortcutChosenUnderAFilterGoesToTheRightKey()
{
    PresetFixture fixture;
    PresetFixture::writeUser(player, preset(QString()));
    Page page(fixture);
    page.show();
    page.control<QLineEdit>("keyFilter")->setText(QStringLiteral("stop"));
    page.keys()->selectRow(0);
    page->panel()->keyDown(1, 0);
    const QVariantMap keys = PresetFixture::user(player).value(QStringLiteral("keys")).toMap();
    QCOMPARE(keys.value(QStringLiteral("stop")).toMap(), shortcutEntry(QStringLiteral("S"), 1, 0));
    QCOMPARE(keys.value(QStringLiteral("play")).toMap(), blankEntry());
}

void KeyboardLayoutPageTest::theKeyboardAloneEditsAShortcut()
{
    PresetFixture fixture;
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    Page page(fixture);
    page.show();
    page.control<QLineEdit>("applicationFilter")->setFocus();
    for (int tab = 0; tab < 10 && !page.keys()->hasFocus(); ++tab) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    QVERIFY(page.keys()->hasFocus());
    QCOMPARE(page.keys()->selectedRow(), 0);
    QTest::keyClick(page.keys(), Qt::Key_Down);
    QCOMPARE(page.keys()->selectedRow(), 1);
    QTest::keyClick(page.keys(), Qt::Key_Return);
    QVERIFY(page->panel()->isVisible());
    QVERIFY(page->panel()->accessibleName().contains(QStringLiteral("“Stop”")));
    QTest::keyClick(page->panel(), Qt::Key_S, Qt::ControlModifier);
    QVERIFY(!page->panel()->isVisible());
    QCOMPARE(page.shortcut(1), QStringLiteral("Ctrl+S"));
    QTest::keyClick(page.keys(), Qt::Key_Delete);
    QCOMPARE(page.shortcut(1), QString(QLatin1String("")));
}

void KeyboardLayoutPageTest::deleteInTheApplicationsAsksToRemove()
{
    PresetFixture fixture;
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    Page page(fixture);
    page.show();
    const test::AlertWatcher answer(
        [](platform::AlertPanel &alert) { test::click(alert, "defaultButton"); });
    QTest::keyClick(page.applications(), Qt::Key_Delete);
    QCOMPARE(answer.count(), 1);
    QVERIFY(page.shownTitles().isEmpty());
}

void KeyboardLayoutPageTest::anUnreadablePresetSaysSo()
{
    PresetFixture fixture;
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    PresetFixture::writeUserBytes(QStringLiteral("Broken.okl"), "x");
    Page page(fixture);
    page.show();
    auto *hint = page.control<QLabel>("keyHint");
    page->browser()->showPreset(player);
    const QString usual = hint->text();
    page->browser()->showPreset(QStringLiteral("Broken"));
    QVERIFY(hint->text().startsWith(QStringLiteral("This preset cannot be read.")));
    page->browser()->showPreset(player);
    QCOMPARE(hint->text(), usual);
}

void KeyboardLayoutPageTest::aFileThatIsNoPresetIsRefusedWithTheReason_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    QTest::newRow("name") << QStringLiteral("A.plist") << goodFile << QStringLiteral(".okl");
    QTest::newRow("no list") << QStringLiteral("100 %@.okl") << QByteArray("x")
                             << QStringLiteral("property list");
    QTest::newRow("array") << QStringLiteral("A.okl") << QByteArray("<plist><array/></plist>")
                           << QStringLiteral("property list");
    QTest::newRow("no keys") << QStringLiteral("A.okl") << QByteArray("<plist><dict/></plist>")
                             << QStringLiteral("keys");
    QTest::newRow("wrong kind")
        << QStringLiteral("A.okl")
        << QByteArray(
               "<plist><dict><key>keys</key><dict/><key>bundleid</key><true/></dict></plist>")
        << QStringLiteral("bundleid");
}

void KeyboardLayoutPageTest::aFileThatIsNoPresetIsRefusedWithTheReason()
{
    QFETCH(const QString, name);
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, reason);
    PresetFixture fixture;
    Page page(fixture);
    page.show();
    const QTemporaryDir folder;
    platform::AlertDescription said;
    const test::AlertWatcher answer([&said](platform::AlertPanel &alert) {
        said = alert.description();
        test::click(alert, "defaultButton");
    });
    page->importPresets({writeFile(folder, name, bytes)});
    QCOMPARE(said.messageText, QStringLiteral("“%1” is not a preset").arg(name));
    QVERIFY2(said.informativeText.contains(reason), qPrintable(said.informativeText));
    QVERIFY(page.shownTitles().isEmpty());
}

void KeyboardLayoutPageTest::anImportedPresetIsTheSameFileAndIsAnnounced()
{
    PresetFixture fixture;
    Page page(fixture);
    page.show();
    const QTemporaryDir folder;
    PresetBusMonitor monitor;
    page->importPresets({writeFile(folder, QStringLiteral("New.okl"), goodFile)});
    QCOMPARE(PresetFixture::userBytes(QStringLiteral("New")), goodFile);
    QCOMPARE(page->browser()->selectedTitle(), QStringLiteral("New"));
    QCOMPARE(page.shortcut(0), QStringLiteral("Imported"));
    QTRY_COMPARE(monitor.notices(), 1);
}

void KeyboardLayoutPageTest::anImportMayReplaceKeepBothOrCancel_data()
{
    QTest::addColumn<QByteArray>("button");
    QTest::addColumn<QStringList>("titles");
    QTest::addColumn<QString>("shortcut");
    const QStringList both{player, player + QStringLiteral(" 2")};
    QTest::newRow("replace") << QByteArray("otherButton") << QStringList{player}
                             << QStringLiteral("Imported");
    QTest::newRow("keep both") << QByteArray("defaultButton") << both << QStringLiteral("P");
    QTest::newRow("cancel") << QByteArray("alternateButton") << QStringList{player}
                            << QStringLiteral("P");
}

void KeyboardLayoutPageTest::anImportMayReplaceKeepBothOrCancel()
{
    QFETCH(const QByteArray, button);
    QFETCH(const QStringList, titles);
    QFETCH(const QString, shortcut);
    PresetFixture fixture;
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    Page page(fixture);
    page.show();
    const QTemporaryDir folder;
    const test::AlertWatcher answer(
        [&button](platform::AlertPanel &alert) { test::click(alert, button.constData()); });
    page->importPresets({writeFile(folder, player + QStringLiteral(".okl"), goodFile)});
    QCOMPARE(answer.count(), 1);
    QCOMPARE(page.shownTitles(), titles);
    page->browser()->showPreset(player);
    QCOMPARE(page.shortcut(0), shortcut);
}

void KeyboardLayoutPageTest::aDroppedFileIsImported()
{
    PresetFixture fixture;
    Page page(fixture);
    page.show();
    const QTemporaryDir folder;
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(writeFile(folder, QStringLiteral("New.okl"), goodFile))});
    auto *viewport = page.applications()->viewport();
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(viewport, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(viewport, &drop);
    QVERIFY(drop.isAccepted());
    QTRY_COMPARE(page.shownTitles(), QStringList{QStringLiteral("New")});

    QMimeData text;
    text.setText(QStringLiteral("x"));
    QDragEnterEvent other({5, 5}, Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(viewport, &other);
    QVERIFY(!other.isAccepted());
}

void KeyboardLayoutPageTest::anExportedPresetIsTheSameFile()
{
    PresetFixture fixture;
    PresetFixture::writeUserBytes(QStringLiteral("Mine.okl"), goodFile);
    Page page(fixture);
    page.show();
    const QTemporaryDir folder;
    page.action("exportPresetAction")->trigger();
    QFileDialog *dialog = nullptr;
    QTRY_VERIFY((dialog = page->window()->findChild<QFileDialog *>()) != nullptr);
    QVERIFY(dialog->isVisible());
    dialog->setDirectory(folder.path());
    dialog->selectFile(QStringLiteral("Copy"));
    QMetaObject::invokeMethod(dialog, "accept");
    QTRY_VERIFY(QFileInfo::exists(folder.filePath(QStringLiteral("Copy.okl"))));
    QFile file(folder.filePath(QStringLiteral("Copy.okl")));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), goodFile);
}

void KeyboardLayoutPageTest::aRemovedPresetIsRestored()
{
    PresetFixture fixture;
    PresetFixture::writeUserBytes(QStringLiteral("Mine & more.okl"), goodFile);
    Page page(fixture);
    page.show();
    auto *restore = page.action("undoAction");
    QVERIFY(!restore->isEnabled());
    const test::AlertWatcher answer(
        [](platform::AlertPanel &alert) { test::click(alert, "defaultButton"); });
    page->browser()->removeApplication();
    QVERIFY(page.shownTitles().isEmpty());
    QVERIFY(restore->isEnabled());
    QCOMPARE(restore->text(), QStringLiteral("&Restore “Mine && more”"));
    PresetBusMonitor monitor;
    restore->trigger();
    QTRY_COMPARE(PresetFixture::userBytes(QStringLiteral("Mine & more")), goodFile);
    QTRY_COMPARE(page->browser()->selectedTitle(), QStringLiteral("Mine & more"));
    QVERIFY(!restore->isEnabled());
    QTRY_COMPARE(monitor.notices(), 1);
}

void KeyboardLayoutPageTest::aRestoredPresetReplacesNothing()
{
    PresetFixture fixture;
    PresetFixture::writeUserBytes(QStringLiteral("Mine.okl"), goodFile);
    Page page(fixture);
    page.show();
    const test::AlertWatcher answer(
        [](platform::AlertPanel &alert) { test::click(alert, "defaultButton"); });
    page->browser()->removeApplication();
    PresetFixture::writeUser(QStringLiteral("Mine"), preset(QStringLiteral("newer")));
    page.action("undoAction")->trigger();
    QTRY_COMPARE(page.shownTitles(),
                 QStringList({QStringLiteral("Mine"), QStringLiteral("Mine 2")}));
    QCOMPARE(PresetFixture::userBytes(QStringLiteral("Mine 2")), goodFile);
}

void KeyboardLayoutPageTest::severalRemovedPresetsAreRestoredOneAfterTheOther()
{
    const PresetFixture fixture;
    const QStringList titles{QStringLiteral("A"), QStringLiteral("B")};
    for (const QString &title : titles) {
        PresetFixture::writeUserBytes(title + QStringLiteral(".okl"), goodFile);
    }
    Page page(fixture);
    page.show();
    const test::AlertWatcher answer(
        [](platform::AlertPanel &alert) { test::click(alert, "defaultButton"); });
    page->browser()->removeApplication();
    page->browser()->removeApplication();
    QVERIFY(page.shownTitles().isEmpty());
    auto *restore = page.action("undoAction");
    QCOMPARE(restore->text(), QStringLiteral("&Restore “B”"));
    restore->trigger();
    QTRY_COMPARE(restore->text(), QStringLiteral("&Restore “A”"));
    restore->trigger();
    QTRY_COMPARE(page.shownTitles(), titles);
    QVERIFY(!restore->isEnabled());
}

void KeyboardLayoutPageTest::aRemovalThatFailedOffersNoRestoring()
{
    const PresetFixture fixture;
    PresetFixture::writeUserBytes(QStringLiteral("Mine.okl"), goodFile);
    Page page(fixture);
    page.show();
    const test::AlertWatcher answer(
        [](platform::AlertPanel &alert) { test::click(alert, "defaultButton"); });
    const Unwritable folder(presets::userFolder());
    page->browser()->removeApplication();
    QCOMPARE(answer.count(), 1);
    QCOMPARE(page.shownTitles(), QStringList{QStringLiteral("Mine")});
    QVERIFY(!page.action("undoAction")->isEnabled());
}

void KeyboardLayoutPageTest::anApplicationAddedOverAPresetKeepsTheOldOneRestorable()
{
    const PresetFixture fixture;
    PresetFixture::writeUserBytes(QStringLiteral("Player.okl"), goodFile);
    Page page(fixture);
    page.show();
    const QString application = QStringLiteral("/Applications/Player.app");
    QDir().mkpath(application + QStringLiteral("/Contents"));
    QVERIFY(platform::writeDictionaryToFile(
        {{QStringLiteral("CFBundleIdentifier"), QStringLiteral("org.player")}},
        application + QStringLiteral("/Contents/Info.plist")));
    {
        const Unwritable folder(presets::userFolder());
        const test::AlertWatcher answer(
            [](platform::AlertPanel &alert) { test::click(alert, "defaultButton"); });
        page->browser()->appBrowseDidEnd(nullptr, platform::PanelOKButton, application);
        QVERIFY(!page.action("undoAction")->isEnabled());
    }
    page->browser()->appBrowseDidEnd(nullptr, platform::PanelOKButton, application);
    QCOMPARE(PresetFixture::user(player).value(QStringLiteral("bundleid")).toString(),
             QStringLiteral("org.player"));
    QVERIFY(page.action("undoAction")->isEnabled());
    page.action("undoAction")->trigger();
    QTRY_COMPARE(PresetFixture::userBytes(player), goodFile);
    QCOMPARE(page.shownTitles(), QStringList{player});
}

void KeyboardLayoutPageTest::aReplacedPresetIsRestored()
{
    const PresetFixture fixture;
    PresetFixture::writeUserBytes(QStringLiteral("Mine.okl"), goodFile);
    Page page(fixture);
    page.show();
    const QTemporaryDir folder;
    const test::AlertWatcher answer(
        [](platform::AlertPanel &alert) { test::click(alert, "otherButton"); });
    page->importPresets({writeFile(folder, QStringLiteral("Mine.okl"), goodFile + ' ')});
    QCOMPARE(PresetFixture::userBytes(QStringLiteral("Mine")), goodFile + ' ');
    page.action("undoAction")->trigger();
    QTRY_COMPARE(PresetFixture::userBytes(QStringLiteral("Mine")), goodFile);
    QCOMPARE(page.shownTitles(), QStringList{QStringLiteral("Mine")});
}

void KeyboardLayoutPageTest::withoutAChosenApplicationNoKeyCanBeChanged()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    Page page(fixture);
    page.show();
    const auto *hint = page.control<QLabel>("keyHint");
    const QString usual = hint->text();
    QVERIFY(page.keys()->isEnabled());
    const test::AlertWatcher answer(
        [](platform::AlertPanel &alert) { test::click(alert, "defaultButton"); });
    page->browser()->removeApplication();
    QVERIFY(!page.keys()->isEnabled());
    QVERIFY(hint->text() != usual);
    QCOMPARE(page.shortcut(0), QStringLiteral("P")); // the rows stay
    page.action("undoAction")->trigger();
    QTRY_VERIFY(page.keys()->isEnabled());
    QCOMPARE(hint->text(), usual);
    page.control<QLineEdit>("applicationFilter")->setText(QStringLiteral("other"));
    QVERIFY(!page.keys()->isEnabled());

    PresetFixture empty;
    Page none(empty);
    none.show();
    QVERIFY(!none.keys()->isEnabled());
}

void KeyboardLayoutPageTest::aChangeThatCannotBeWrittenIsShownAsUnsaved()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    Page page(fixture);
    page.show();
    const auto *hint = page.control<QLabel>("keyHint");
    const QString usual = hint->text();
    PresetBusMonitor monitor;
    page.keys()->selectOnlyRow(0);
    {
        const Unwritable folder(presets::userFolder());
        page->panel()->keyDown(1, 0);
    }
    QVERIFY2(hint->text().contains(QStringLiteral("could not be saved: Permission denied")),
             qPrintable(hint->text()));
    QCOMPARE(page.shortcut(0), QStringLiteral("S"));
    QTRY_COMPARE(monitor.notices(), 1);
    // The next change writes all rows.
    page.keys()->selectOnlyRow(1);
    page->panel()->keyDown(1, 0);
    QCOMPARE(hint->text(), usual);
    QFile::remove(PresetFixture::userPath(player));
    page->panel()->keyDown(1, 0);
    QVERIFY(hint->text().contains(QStringLiteral("could not be saved")));
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    page->browser()->showPreset(player);
    QCOMPARE(hint->text(), usual);
}

void KeyboardLayoutPageTest::everyControlHasAnAccessibleName()
{
    PresetFixture fixture;
    Page page(fixture);
    page.show();
    for (const auto *name :
         {"applicationFilter", "applicationTable", "addApplicationButton",
          "removeApplicationButton", "presetMenuButton", "keyFilter", "keyTable"}) {
        QVERIFY2(!page.control<QWidget>(name)->accessibleName().isEmpty(), name);
    }
}

void KeyboardLayoutPageTest::anotherApplicationUnderAKeyFilterShowsItsKeys()
{
    PresetFixture fixture;
    PresetFixture::writeUser(player, preset(QStringLiteral("Ctrl+P")));
    PresetFixture::writeUser(QStringLiteral("Viewer"), preset(QStringLiteral("Ctrl+V")));
    Page page(fixture);
    page.show();
    page.keys()->selectOnlyRow(0);
    page.control<QLineEdit>("keyFilter")->setText(QStringLiteral("ctrl"));
    QCOMPARE(page.keys()->model()->rowCount(), 1);
    page.applications()->selectOnlyRow(1);
    QCOMPARE(page.keys()->model()->rowCount(), 1);
    QCOMPARE(page.shortcut(0), QStringLiteral("Ctrl+V"));
    QCOMPARE(page.keys()->selectedRow(), 0);
    // What the filter no longer finds goes.
    page.control<QLineEdit>("keyFilter")->setText(QStringLiteral("ctrl+v"));
    page.applications()->selectOnlyRow(0);
    QCOMPARE(page.keys()->model()->rowCount(), 0);
}

TEST_CLASS(KeyboardLayoutPageTest, QApplication)
#include "KeyboardLayoutPageTest.moc"
