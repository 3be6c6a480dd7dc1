// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Desktop/ApplicationPanel/ApplicationPanel.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "Tests/Preference Pane/Presets/PageFixture.h"
#include "Tests/Preference Pane/Presets/PresetBusMonitor.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QTest>

// What people see of the preset that they work on.
class ShownPresetTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aNewcomerUnderAFilterIsShownAndSelected_data();
    void aNewcomerUnderAFilterIsShownAndSelected();
    void theHeadingNamesTheApplication();
    void aLongHeadingIsCutAndToldInTheToolTip();
    void theUsersOwnPresetsAreMarked();
    void twoRowsOfOneNameAreToldApart();
    void theFirstChangeOfADefaultPresetMarksItsRow();
    void aMarkStandsAtTheEndOfTheLine_data();
    void aMarkStandsAtTheEndOfTheLine();
    void aTitleThatIsAFilesNameShowsWithTheDesktopsName();
    void aDuplicateIsAPresetOfItsOwn();
    void addKnowsWhatHasAPreset();
    void afterARefusedApplicationItsPresetIsShown();
};

using Bring = void (*)(Page &);
Q_DECLARE_METATYPE(Bring)

namespace {

const QString player = QStringLiteral("Player");

QVariantMap preset(const QString &shortcut)
{
    return {{QStringLiteral("bundleid"), QStringLiteral("org.player")},
            {QStringLiteral("keys"), QVariantMap{{QStringLiteral("play"), shortcut}}}};
}

// An application bundle in "/Applications", whose identifier it is.
QString makeApplication(const QString &name, const QString &identifier)
{
    const QString path = QStringLiteral("/Applications/") + name + QStringLiteral(".app");
    QDir().mkpath(path + QStringLiteral("/Contents"));
    if (!platform::writeDictionaryToFile({{QStringLiteral("CFBundleIdentifier"), identifier}},
                                         path + QStringLiteral("/Contents/Info.plist"))) {
        qFatal("cannot make an application");
    }
    return path;
}

QString note(const Page &page, int row)
{
    auto *model = page.applications()->model();
    return model->index(row, 0).data(platform::TableModel::NoteRole).toString();
}

// What a screen reader says beside the title; also the tool tip.
QString description(const Page &page, int row)
{
    auto *model = page.applications()->model();
    return model->index(row, 0).data(Qt::AccessibleDescriptionRole).toString();
}

void addPlayer(Page &page, const QString &identifier)
{
    page->browser()->appBrowseDidEnd(nullptr, platform::PanelOKButton,
                                     makeApplication(player, identifier));
}

void add(Page &page)
{
    addPlayer(page, QStringLiteral("org.newcomer"));
}

void import(Page &page)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(player + QStringLiteral(".okl"));
    QVERIFY(platform::writeDictionaryToFile(preset(QStringLiteral("P")), path));
    page->importPresets({path});
}

// The user drops a preset that is his own already.
void importOwn(Page &page)
{
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    page->browser()->populateApplications();
    page->importPresets({PresetFixture::userPath(player)});
}

void restore(Page &page)
{
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    page->browser()->populateApplications();
    page.control<QLineEdit>("applicationFilter")->clear();
    page->browser()->showPreset(player);
    const test::AlertWatcher answer(
        [](platform::AlertPanel &alert) { test::click(alert, "defaultButton"); });
    page->browser()->removeApplication();
    page.control<QLineEdit>("applicationFilter")->setText(QStringLiteral("other"));
    page->undo();
}

} // namespace

void ShownPresetTest::aNewcomerUnderAFilterIsShownAndSelected_data()
{
    QTest::addColumn<Bring>("bring");
    QTest::newRow("added") << Bring(&add);
    QTest::newRow("imported") << Bring(&import);
    QTest::newRow("imported, the user's own") << Bring(&importOwn);
    QTest::newRow("restored") << Bring(&restore);
}

void ShownPresetTest::aNewcomerUnderAFilterIsShownAndSelected()
{
    QFETCH(const Bring, bring);
    const PresetFixture fixture;
    PresetFixture::writeUser(QStringLiteral("Other"), preset(QStringLiteral("O")));
    Page page(fixture);
    page.show();
    auto *filter = page.control<QLineEdit>("applicationFilter");
    filter->setText(QStringLiteral("other"));
    bring(page);
    QCOMPARE(page.shownTitles(), QStringList({QStringLiteral("Other"), player}));
    QCOMPARE(page->browser()->selectedTitle(), player);
    QVERIFY(filter->text().isEmpty());
    QVERIFY(page.keys()->isEnabled());
    // The next shortcut goes into what is seen.
    page.keys()->selectOnlyRow(1);
    page->panel()->keyDown(1, 0);
    const QVariantMap keys = PresetFixture::user(player).value(QStringLiteral("keys")).toMap();
    QCOMPARE(keys.value(QStringLiteral("stop")).toMap(), shortcutEntry(QStringLiteral("S"), 1, 0));
}

void ShownPresetTest::theHeadingNamesTheApplication()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(QStringLiteral("Other"), preset(QStringLiteral("O")));
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    Page page(fixture);
    page.show();
    const auto *heading = page.control<QLabel>("keysHeading");
    QTRY_COMPARE(heading->text(), QStringLiteral("Shortcuts of “Other”"));
    page.applications()->selectOnlyRow(1);
    QCOMPARE(heading->text(), QStringLiteral("Shortcuts of “Player”"));
    page.control<QLineEdit>("applicationFilter")->setText(QStringLiteral("other"));
    QCOMPARE(heading->text(), QStringLiteral("Shortcuts"));
}

void ShownPresetTest::aLongHeadingIsCutAndToldInTheToolTip()
{
    const PresetFixture fixture;
    const QString title = QString(200, QLatin1Char('m'));
    PresetFixture::writeUser(title, preset(QStringLiteral("P")));
    Page page(fixture);
    page.show();
    const int width = page.window().width();
    const auto *heading = page.control<QLabel>("keysHeading");
    QTRY_VERIFY(heading->text().endsWith(QChar(0x2026)));
    QVERIFY(heading->fontMetrics().horizontalAdvance(heading->text()) <= heading->width());
    QVERIFY(heading->toolTip().contains(title));
    QCOMPARE(page.window().width(), width);
}

void ShownPresetTest::theUsersOwnPresetsAreMarked()
{
    const PresetFixture fixture;
    fixture.writeDefault(QStringLiteral("Default"), preset(QStringLiteral("D")));
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    Page page(fixture);
    page.show();
    QCOMPARE(note(page, 0), QString());
    QCOMPARE(description(page, 0), QStringLiteral("Came with Ostrel"));
    QCOMPARE(note(page, 1), QStringLiteral("yours"));
    QCOMPARE(description(page, 1), QStringLiteral("Your own preset"));
}

void ShownPresetTest::twoRowsOfOneNameAreToldApart()
{
    const PresetFixture fixture;
    fixture.writeDefault(player, preset(QStringLiteral("D")));
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    Page page(fixture);
    page.show();
    QCOMPARE(page.shownTitles(), QStringList({player, player}));
    QCOMPARE(note(page, 0), QStringLiteral("yours"));
    QCOMPARE(note(page, 1), QStringLiteral("original"));
    QVERIFY(description(page, 1).contains(QStringLiteral("used in its place")));
}

void ShownPresetTest::theFirstChangeOfADefaultPresetMarksItsRow()
{
    const PresetFixture fixture;
    fixture.writeDefault(player, preset(QStringLiteral("D")));
    Page page(fixture);
    page.show();
    page.keys()->selectOnlyRow(0);
    QCOMPARE(note(page, 0), QString());
    page->panel()->keyDown(1, 0);
    QCOMPARE(note(page, 0), QStringLiteral("yours"));
    QCOMPARE(page.shownTitles(), QStringList{player});
}

void ShownPresetTest::aMarkStandsAtTheEndOfTheLine_data()
{
    QTest::addColumn<Qt::LayoutDirection>("direction");
    QTest::newRow("left to right") << Qt::LeftToRight;
    QTest::newRow("right to left") << Qt::RightToLeft;
}

void ShownPresetTest::aMarkStandsAtTheEndOfTheLine()
{
    QFETCH(const Qt::LayoutDirection, direction);
    const PresetFixture fixture;
    fixture.writeDefault(QStringLiteral("A"), preset(QStringLiteral("D")));
    PresetFixture::writeUser(QStringLiteral("B"), preset(QStringLiteral("P")));
    Page page(fixture);
    page.window().setLayoutDirection(direction);
    page.show();
    page.applications()->clearSelection();
    page.applications()->setAlternatingRowColors(false);
    const QImage picture = page.applications()->viewport()->grab().toImage();
    // How many points of the row differ from its ground, in the half of the line where it ends.
    const auto inked = [&](int row) {
        QRect end = page.applications()->visualRect(page.applications()->model()->index(row, 0));
        end.setWidth(end.width() / 2);
        if (direction == Qt::LeftToRight) {
            end.moveRight(picture.width() - 2);
        }
        int points = 0;
        for (int y = end.top() + 1; y < end.bottom(); ++y) {
            for (int x = end.left() + 1; x < end.right(); ++x) {
                points += picture.pixel(x, y) != picture.pixel(end.center()) ? 1 : 0;
            }
        }
        return points;
    };
    QCOMPARE(inked(0), 0);
    QVERIFY(inked(1) > 10);
}

void ShownPresetTest::aTitleThatIsAFilesNameShowsWithTheDesktopsName()
{
    const QString folder = QDir::homePath() + QStringLiteral("/.local/share/applications");
    QVERIFY(QDir().mkpath(folder));
    QFile entry(folder + QStringLiteral("/org.great.Player.desktop"));
    QVERIFY(entry.open(QIODevice::WriteOnly));
    entry.write("[Desktop Entry]\nType=Application\nName=Great Player\nExec=/usr/bin/true\n");
    entry.close();
    const QString title = QStringLiteral("org.great.Player");
    const PresetFixture fixture;
    Page page(fixture);
    page.show();
    page->browser()->appBrowseDidEnd(nullptr, platform::PanelOKButton, entry.fileName());
    QCOMPARE(page.shownTitles(), QStringList{title});
    QCOMPARE(note(page, 0), QStringLiteral("Great Player, yours"));
    QVERIFY(description(page, 0).startsWith(QStringLiteral("Great Player\n")));
    QTRY_COMPARE(page.control<QLabel>("keysHeading")->text(),
                 QStringLiteral("Shortcuts of “Great Player”"));
    QVERIFY(entry.remove());
}

void ShownPresetTest::aDuplicateIsAPresetOfItsOwn()
{
    const PresetFixture fixture;
    fixture.writeDefault(player, preset(QStringLiteral("D")));
    Page page(fixture);
    page.show();
    PresetBusMonitor monitor;
    auto *duplicate = page.action("duplicatePresetAction");
    duplicate->trigger();
    const QString copy = QStringLiteral("Player 2");
    QCOMPARE(page.shownTitles(), QStringList({player, copy}));
    QCOMPARE(page->browser()->selectedTitle(), copy);
    QCOMPARE(PresetFixture::user(copy), preset(QStringLiteral("D")));
    QVERIFY(!QFileInfo::exists(PresetFixture::userPath(player)));
    QTRY_COMPARE(monitor.notices(), 1);
    page->browser()->showPreset(player);
    duplicate->trigger();
    QCOMPARE(page->browser()->selectedTitle(), QStringLiteral("Player 3"));
    page.control<QLineEdit>("applicationFilter")->setText(QStringLiteral("none"));
    QVERIFY(!duplicate->isEnabled());
}

void ShownPresetTest::addKnowsWhatHasAPreset()
{
    makeApplication(QStringLiteral("Alpha"), QStringLiteral("org.alpha"));
    makeApplication(QStringLiteral("Beta"), QStringLiteral("org.beta"));
    makeApplication(QStringLiteral("Gamma"), QStringLiteral("org.gamma"));
    const QString ids = QStringLiteral("bundleids");
    const PresetFixture fixture;
    fixture.writeDefault(
        player, {{ids, QStringList{QStringLiteral("org.alpha"), QStringLiteral("org.beta")}}});
    PresetFixture::writeUser(QStringLiteral("Mine"),
                             {{ids, QStringList{QStringLiteral("org.beta")}}});
    Page page(fixture);
    page.show();
    page->browser()->addApplication();
    auto *panel = QApplication::activeModalWidget();
    QVERIFY(panel != nullptr);
    const auto *list = panel->findChild<QAbstractItemView *>(QStringLiteral("applicationList"));
    const auto said = [list](const QString &name) {
        const auto rows = list->model()->match(list->model()->index(0, 0), Qt::DisplayRole, name);
        return rows.isEmpty() ? QStringLiteral("not there")
                              : rows.first().data(Qt::AccessibleDescriptionRole).toString();
    };
    QTRY_COMPARE(said(QStringLiteral("Alpha")),
                 QStringLiteral("Ostrel has a preset for it: “Player”"));
    QCOMPARE(said(QStringLiteral("Beta")), QStringLiteral("You have a preset for it: “Mine”"));
    QCOMPARE(said(QStringLiteral("Gamma")), QString());
}

void ShownPresetTest::afterARefusedApplicationItsPresetIsShown()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(QStringLiteral("Other"), preset(QStringLiteral("O")));
    PresetFixture::writeUser(QStringLiteral("A"), {});
    Page page(fixture);
    page.show();
    page.control<QLineEdit>("applicationFilter")->setText(QStringLiteral("a"));
    const test::AlertWatcher answer(
        [](platform::AlertPanel &alert) { test::click(alert, "defaultButton"); });
    addPlayer(page, QStringLiteral("org.player")); // Other's
    QCOMPARE(answer.count(), 1);
    QCOMPARE(page->browser()->selectedTitle(), QStringLiteral("Other"));
}

TEST_CLASS(ShownPresetTest, QApplication)
#include "ShownPresetTest.moc"
