// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/PresetWatch.h"

#include "Ostrel/PresetFiles.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "Tests/Preference Pane/Presets/PageFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

// What others do to the user's presets shows at once.
class PresetWatchTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void anotherPanesChangeOfTheShownPresetShows();
    void aChangeInPlaceShows();
    void anotherPanesFirstChangeOfADefaultPresetShows();
    void aPresetThatOthersBringShowsAndTheSelectionStays();
    void aPresetThatOthersRemoveGoesWithTheSelection();
    void whereTheDefaultPresetIsLeftItShows();
    void changedIdentifiersAreTaken();
    void aFolderThatIsMadeLaterIsWatched();
    void aFolderThatWasReplacedIsWatched();
    void aPresetThatBecomesUnreadableAndReadableAgainSaysSo();
    void ourOwnChangesReloadNothing();
    void aChangeOfOursThatCouldNotBeWrittenStaysInSight();
};

namespace {

const QString a = QStringLiteral("A");
const QString b = QStringLiteral("B");

QVariantMap preset(const QString &shortcut)
{
    return {{QStringLiteral("bundleid"), QStringLiteral("org.player")},
            {QStringLiteral("keys"), QVariantMap{{QStringLiteral("play"), shortcut}}}};
}

// As another pane writes it.
void replace(const QString &title, const QVariantMap &preset)
{
    QVERIFY(platform::writeDictionaryToFile(preset, PresetFixture::userPath(title)));
}

} // namespace

void PresetWatchTest::anotherPanesChangeOfTheShownPresetShows()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(a, preset(QStringLiteral("old")));
    Page page(fixture);
    page.show();
    page.keys()->selectOnlyRow(1);
    replace(a, preset(QStringLiteral("new")));
    QTRY_COMPARE(page.shortcut(0), QStringLiteral("new"));
    QCOMPARE(page.keys()->selectedRow(), 1);
    replace(a, preset(QStringLiteral("newer")));
    QTRY_COMPARE(page.shortcut(0), QStringLiteral("newer"));
}

void PresetWatchTest::aChangeInPlaceShows()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(a, preset(QStringLiteral("old")));
    Page page(fixture);
    page.show();
    PresetFixture::writeUser(a, preset(QStringLiteral("new")));
    QTRY_COMPARE(page.shortcut(0), QStringLiteral("new"));
}

void PresetWatchTest::anotherPanesFirstChangeOfADefaultPresetShows()
{
    const PresetFixture fixture;
    fixture.writeDefault(a, preset(QStringLiteral("default")));
    QVERIFY(QDir().mkpath(presets::userFolder()));
    Page page(fixture);
    page.show();
    replace(a, preset(QStringLiteral("new")));
    QTRY_COMPARE(page.shortcut(0), QStringLiteral("new"));
    QCOMPARE(page.shownTitles(), QStringList({a, a}));
    QCOMPARE(page->editor()->currentFile(), PresetFixture::userPath(a));
}

void PresetWatchTest::aPresetThatOthersBringShowsAndTheSelectionStays()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(b, preset(QStringLiteral("b")));
    Page page(fixture);
    page.show();
    page.keys()->selectOnlyRow(1);
    replace(a, preset(QStringLiteral("a")));
    QTRY_COMPARE(page.shownTitles(), QStringList({a, b}));
    QCOMPARE(page->browser()->selectedTitle(), b);
    QCOMPARE(page.shortcut(0), QStringLiteral("b"));
    QCOMPARE(page.keys()->selectedRow(), 1);
}

void PresetWatchTest::aPresetThatOthersRemoveGoesWithTheSelection()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(a, preset(QStringLiteral("a")));
    PresetFixture::writeUser(b, preset(QStringLiteral("b")));
    Page page(fixture);
    page.show();
    QCOMPARE(page->browser()->selectedTitle(), a);
    QVERIFY(QFile::remove(PresetFixture::userPath(a)));
    QTRY_COMPARE(page.shownTitles(), QStringList{b});
    // A sheet that is open must not give the shortcut to another preset.
    QVERIFY(page->browser()->selectedTitle().isNull());
    QVERIFY(!page.keys()->isEnabled());
}

void PresetWatchTest::whereTheDefaultPresetIsLeftItShows()
{
    const PresetFixture fixture;
    fixture.writeDefault(a, preset(QStringLiteral("default")));
    PresetFixture::writeUser(a, preset(QStringLiteral("user")));
    Page page(fixture);
    page.show();
    QCOMPARE(page.shortcut(0), QStringLiteral("user"));
    QVERIFY(QFile::remove(PresetFixture::userPath(a)));
    QTRY_COMPARE(page.shortcut(0), QStringLiteral("default"));
    QCOMPARE(page.shownTitles(), QStringList{a});
    QCOMPARE(page->browser()->selectedTitle(), a);
}

void PresetWatchTest::changedIdentifiersAreTaken()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(a, preset(QStringLiteral("a")));
    Page page(fixture);
    page.show();
    QVariantMap changed = preset(QStringLiteral("a"));
    changed[QStringLiteral("bundleid")] = QStringLiteral("org.other");
    replace(a, changed);
    QTRY_COMPARE(page->browser()->dataArray().first().bundleIDs,
                 QStringList{QStringLiteral("org.other")});
}

void PresetWatchTest::aFolderThatIsMadeLaterIsWatched()
{
    const PresetFixture fixture;
    QVERIFY(!QFileInfo::exists(presets::userFolder()));
    Page page(fixture);
    page.show();
    QVERIFY(page.shownTitles().isEmpty());
    PresetFixture::writeUser(a, preset(QStringLiteral("a")));
    QTRY_COMPARE(page.shownTitles(), QStringList{a});
}

void PresetWatchTest::aFolderThatWasReplacedIsWatched()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(a, preset(QStringLiteral("a")));
    Page page(fixture);
    page.show();
    QVERIFY(QDir().rename(presets::userFolder(), presets::userFolder() + QStringLiteral(".old")));
    QTRY_VERIFY(page.shownTitles().isEmpty());
    PresetFixture::writeUser(b, preset(QStringLiteral("b")));
    QTRY_COMPARE(page.shownTitles(), QStringList{b});
    QVERIFY(QDir(presets::userFolder() + QStringLiteral(".old")).removeRecursively());
}

void PresetWatchTest::aPresetThatBecomesUnreadableAndReadableAgainSaysSo()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(a, preset(QStringLiteral("a")));
    Page page(fixture);
    page.show();
    const auto *hint = page.control<QLabel>("keyHint");
    const QString usual = hint->text();
    PresetFixture::writeUserBytes(QStringLiteral("A.okl"), "x");
    QTRY_VERIFY(hint->text().startsWith(QStringLiteral("This preset cannot be read.")));
    QCOMPARE(page.shortcut(0), QStringLiteral("a"));
    PresetFixture::writeUser(a, preset(QStringLiteral("a")));
    QTRY_COMPARE(hint->text(), usual);
}

void PresetWatchTest::ourOwnChangesReloadNothing()
{
    const PresetFixture fixture;
    fixture.writeDefault(a, preset(QStringLiteral("default")));
    PresetFixture::writeUser(b, preset(QStringLiteral("b")));
    Page page(fixture);
    page.show();
    const QSignalSpy lists(page.applications()->model(), &QAbstractItemModel::modelReset);
    const QSignalSpy keys(page.keys()->model(), &QAbstractItemModel::modelReset);
    const QSignalSpy loads(page->editor(), &ZQKeyboardLayoutEditController::presetLoaded);
    for (const QString &title : {a, b}) {
        page->browser()->showPreset(title);
        const auto keysBefore = keys.count();
        const auto loadsBefore = loads.count();
        page.keys()->selectOnlyRow(0);
        for (quint16 keyCode = 0; keyCode < 3; ++keyCode) {
            page->panel()->keyDown(keyCode, 0);
            page->browser()->followFiles();
        }
        QCOMPARE(keys.count(), keysBefore);
        QCOMPARE(loads.count(), loadsBefore);
    }
    QCOMPARE(lists.count(), 0);
    // They are told from those of others.
    replace(b, preset(QStringLiteral("new")));
    page->browser()->followFiles();
    QCOMPARE(page.shortcut(0), QStringLiteral("new"));
}

void PresetWatchTest::aChangeOfOursThatCouldNotBeWrittenStaysInSight()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(a, preset(QStringLiteral("a")));
    Page page(fixture);
    page.show();
    page.keys()->selectOnlyRow(0);
    QVERIFY(QFile::setPermissions(presets::userFolder(), QFile::ReadOwner | QFile::ExeOwner));
    page->panel()->keyDown(1, 0);
    QVERIFY(page->editor()->isUnsaved());
    QVERIFY(QFile::setPermissions(presets::userFolder(),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    replace(a, preset(QStringLiteral("other")));
    page->browser()->followFiles();
    QCOMPARE(page.shortcut(0), QStringLiteral("S"));
    page.keys()->selectOnlyRow(1);
    page->panel()->keyDown(1, 0);
    QVERIFY(!page->editor()->isUnsaved());
    replace(a, preset(QStringLiteral("other")));
    page->browser()->followFiles();
    QCOMPARE(page.shortcut(0), QStringLiteral("other"));
}

TEST_CLASS(PresetWatchTest, QApplication)
#include "PresetWatchTest.moc"
