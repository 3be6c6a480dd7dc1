// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"

#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Tests/Preference Pane/Presets/PresetBusMonitor.h"
#include "Tests/Preference Pane/Presets/PresetFixture.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDir>
#include <QPushButton>
#include <QTest>

class ZQKeyboardLayoutAppBrowserTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();

    void theListIsSortedByCharacterCode();
    void theFirstPresetIsShownAtTheStart();
    void aTitleInBothFoldersShowsTwiceAndBothRowsShowTheUsersFile();
    void removingTheUsersFileLeavesTheDefaultRowWhichShowsTheDefault();
    void removingADefaultRowMovesNothingAndIsAnnounced();
    void removingAsksAndCancelChangesNothing();
    void removingWithoutASelectedRowAsksNothing();
    void theIconIsThatOfTheFirstApplicationThatIsThere();
    void anApplicationGetsABlankPreset();
    void anApplicationServedByAUsersPresetIsRefused_data();
    void anApplicationServedByAUsersPresetIsRefused();
    void anApplicationServedByADefaultPresetAloneIsAccepted();
    void whatIsNoApplicationIsRefused_data();
    void whatIsNoApplicationIsRefused();
    void aPresetThatCannotBeWrittenIsToldWithItsFolder();
    void cancellingThePanelChangesNothing();
    void thePanelIsASheetThatStartsInTheApplicationsFolder();
    void withoutASelectedRowTheEditorKeepsWhatItShows();
};

namespace {

const QString a = QStringLiteral("A");
const QString bundleIds = QStringLiteral("bundleids");
const QString bundleId = QStringLiteral("bundleid");

QVariantMap shortcuts(const QString &text)
{
    return {{QStringLiteral("keys"), QVariantMap{{QStringLiteral("play"), text}}}};
}

// An application bundle in "/Applications".
QString makeApplication(const QString &name, const QVariantMap &info)
{
    const QString path = QStringLiteral("/Applications/") + name;
    QDir().mkpath(path + QStringLiteral("/Contents"));
    platform::writeDictionaryToFile(info, path + QStringLiteral("/Contents/Info.plist"));
    return path;
}

QString trashedPath(const QString &title)
{
    return ZQLocalPaths::trashDirectory() + QLatin1Char('/') + title + QStringLiteral(".okl");
}

// Answers the next alert, and keeps what it said.
class Answer {
public:
    explicit Answer(const char *button)
        : m_watcher([this, button](platform::AlertPanel &alert) {
              m_description = alert.description();
              test::click(alert, button);
          })
    {
    }
    int count() const { return m_watcher.count(); }
    const platform::AlertDescription &description() const { return m_description; }

private:
    platform::AlertDescription m_description;
    test::AlertWatcher m_watcher;
};

} // namespace

void ZQKeyboardLayoutAppBrowserTest::initTestCase()
{
    QDir().mkpath(QStringLiteral("/Applications"));
}

void ZQKeyboardLayoutAppBrowserTest::theListIsSortedByCharacterCode()
{
    PresetFixture fixture;
    for (const auto *title : {"b", "a", "Z", "é", "A"}) {
        PresetFixture::writeUser(QString::fromUtf8(title), {});
    }
    fixture.writeDefault(QStringLiteral("B"), {});
    fixture.open();
    QCOMPARE(fixture.titles(),
             QStringList({a, QStringLiteral("B"), QStringLiteral("Z"), QStringLiteral("a"),
                          QStringLiteral("b"), QStringLiteral("é")}));
}

void ZQKeyboardLayoutAppBrowserTest::theFirstPresetIsShownAtTheStart()
{
    PresetFixture fixture;
    PresetFixture::writeUser(QStringLiteral("B"), shortcuts(QStringLiteral("b")));
    PresetFixture::writeUser(a, shortcuts(QStringLiteral("a")));
    fixture.open();
    QCOMPARE(fixture.editor().currentFile(), PresetFixture::userPath(a));
    QCOMPARE(fixture.keyColumn(QStringLiteral("shortcut")).first(), QStringLiteral("a"));
}

void ZQKeyboardLayoutAppBrowserTest::aTitleInBothFoldersShowsTwiceAndBothRowsShowTheUsersFile()
{
    PresetFixture fixture;
    PresetFixture::writeUser(a, shortcuts(QStringLiteral("user")));
    fixture.writeDefault(a, shortcuts(QStringLiteral("default")));
    fixture.open();
    QCOMPARE(fixture.titles(), QStringList({a, a}));
    for (int row = 0; row < 2; ++row) {
        fixture.applicationTable().selectOnlyRow(row);
        QCOMPARE(fixture.editor().currentFile(), PresetFixture::userPath(a));
        QCOMPARE(fixture.keyColumn(QStringLiteral("shortcut")).first(), QStringLiteral("user"));
    }
}

void ZQKeyboardLayoutAppBrowserTest::removingTheUsersFileLeavesTheDefaultRowWhichShowsTheDefault()
{
    PresetFixture fixture;
    PresetFixture::writeUser(a, shortcuts(QStringLiteral("user")));
    fixture.writeDefault(a, shortcuts(QStringLiteral("default")));
    fixture.open();
    fixture.applicationTable().selectOnlyRow(0);
    PresetBusMonitor monitor;
    const Answer answer("defaultButton");
    fixture.browser().removeApplication();
    QCOMPARE(answer.count(), 1);
    QCOMPARE(fixture.titles(), QStringList{a});
    QVERIFY(!QFileInfo::exists(PresetFixture::userPath(a)));
    QVERIFY(QFileInfo::exists(trashedPath(a)));
    QCOMPARE(fixture.editor().currentFile(), fixture.defaultPath(a));
    QCOMPARE(fixture.keyColumn(QStringLiteral("shortcut")).first(), QStringLiteral("default"));
    QTRY_COMPARE(monitor.notices(), 1);
}

void ZQKeyboardLayoutAppBrowserTest::removingADefaultRowMovesNothingAndIsAnnounced()
{
    PresetFixture fixture;
    fixture.writeDefault(a, {});
    fixture.open();
    fixture.applicationTable().selectOnlyRow(0);
    PresetBusMonitor monitor;
    const Answer answer("defaultButton");
    fixture.browser().removeApplication();
    QCOMPARE(fixture.titles(), QStringList{a});
    QVERIFY(QFileInfo::exists(fixture.defaultPath(a)));
    QVERIFY(!QFileInfo::exists(trashedPath(a)));
    QTRY_COMPARE(monitor.notices(), 1);
}

void ZQKeyboardLayoutAppBrowserTest::removingAsksAndCancelChangesNothing()
{
    PresetFixture fixture;
    PresetFixture::writeUser(a, {});
    fixture.open();
    fixture.applicationTable().selectOnlyRow(0);
    PresetBusMonitor monitor;
    const Answer answer("alternateButton");
    fixture.browser().removeApplication();
    QCOMPARE(answer.description().messageText,
             QStringLiteral("Are you sure you wish to remove 'A'?"));
    QCOMPARE(answer.description().informativeText,
             QStringLiteral("If this application is supported by default in Ostrel, the layout "
                            "will be reset to the defaults instead of being removed."));
    QCOMPARE(answer.description().defaultButton, QStringLiteral("Remove"));
    QCOMPARE(answer.description().alternateButton, QStringLiteral("Cancel"));
    QVERIFY(answer.description().otherButton.isNull());
    QVERIFY(QFileInfo::exists(PresetFixture::userPath(a)));
    QTest::qWait(200);
    QCOMPARE(monitor.notices(), 0);
}

void ZQKeyboardLayoutAppBrowserTest::removingWithoutASelectedRowAsksNothing()
{
    PresetFixture fixture;
    PresetFixture::writeUser(a, {});
    fixture.open();
    const Answer answer("defaultButton");
    fixture.browser().removeApplication();
    QTest::qWait(100);
    QCOMPARE(answer.count(), 0);
}

void ZQKeyboardLayoutAppBrowserTest::theIconIsThatOfTheFirstApplicationThatIsThere()
{
    const QString path =
        makeApplication(QStringLiteral("Second.app"),
                        {{QStringLiteral("CFBundleIdentifier"), QStringLiteral("x.second")},
                         {QStringLiteral("CFBundleIconFile"), QStringLiteral("icon.png")}});
    QDir().mkpath(path + QStringLiteral("/Contents/Resources"));
    QPixmap picture(16, 16);
    picture.fill(Qt::red);
    QVERIFY(picture.save(path + QStringLiteral("/Contents/Resources/icon.png")));
    PresetFixture fixture;
    PresetFixture::writeUser(
        a, {{bundleIds, QStringList{QStringLiteral("x.none"), QStringLiteral("x.second")}}});
    PresetFixture::writeUser(QStringLiteral("B"),
                             {{bundleIds, QStringList{QStringLiteral("x.none")}}});
    PresetFixture::writeUser(QStringLiteral("C"), {});
    fixture.open();
    const auto icon = [&fixture](int row) {
        platform::TableCell cell;
        fixture.browser().tableViewWillDisplayCell(cell, QStringLiteral("title"), row);
        return cell.image;
    };
    QCOMPARE(icon(0).pixmap(16, 16).toImage().pixelColor(8, 8), QColor(Qt::red));
    QVERIFY(icon(1).isNull());
    QVERIFY(icon(2).isNull());
    QDir(path).removeRecursively();
}

void ZQKeyboardLayoutAppBrowserTest::anApplicationGetsABlankPreset()
{
    const QString path =
        makeApplication(QStringLiteral("My Player.app"),
                        {{QStringLiteral("CFBundleIdentifier"), QStringLiteral("org.player")}});
    PresetFixture fixture;
    PresetFixture::writeUser(QStringLiteral("Z"), {});
    fixture.open();
    PresetBusMonitor monitor;
    fixture.browser().appBrowseDidEnd(nullptr, 1, path);
    const QString name = QStringLiteral("My Player");
    QCOMPARE(PresetFixture::user(name),
             QVariantMap({{QStringLiteral("name"), name},
                          {bundleId, QStringLiteral("org.player")},
                          {bundleIds, QVariantList{QStringLiteral("org.player")}},
                          {QStringLiteral("keys"), QVariantMap()}}));
    QCOMPARE(fixture.browser().selectedTitle(), name);
    QCOMPARE(fixture.editor().currentFile(), PresetFixture::userPath(name));
    QTest::qWait(200);
    QCOMPARE(monitor.notices(), 0);
}

void ZQKeyboardLayoutAppBrowserTest::anApplicationServedByAUsersPresetIsRefused_data()
{
    QTest::addColumn<QVariantMap>("preset");
    QTest::newRow("bundleids") << QVariantMap{
        {bundleIds, QStringList{QStringLiteral("other"), QStringLiteral("org.player")}}};
    QTest::newRow("bundleid") << QVariantMap{{bundleId, QStringLiteral("org.player")}};
}

void ZQKeyboardLayoutAppBrowserTest::anApplicationServedByAUsersPresetIsRefused()
{
    QFETCH(const QVariantMap, preset);
    const QString path =
        makeApplication(QStringLiteral("My Player.app"),
                        {{QStringLiteral("CFBundleIdentifier"), QStringLiteral("org.player")}});
    PresetFixture fixture;
    PresetFixture::writeUser(QStringLiteral("Other title"), preset);
    fixture.open();
    const Answer answer("defaultButton");
    fixture.browser().appBrowseDidEnd(nullptr, 1, path);
    QCOMPARE(answer.description().messageText,
             QStringLiteral("A layout preset already exists for this application"));
    QCOMPARE(answer.description().informativeText,
             QStringLiteral("Please edit the existing preset."));
    QCOMPARE(fixture.titles(), QStringList{QStringLiteral("Other title")});
    QVERIFY(!QFileInfo::exists(PresetFixture::userPath(QStringLiteral("My Player"))));
}

void ZQKeyboardLayoutAppBrowserTest::anApplicationServedByADefaultPresetAloneIsAccepted()
{
    const QString path =
        makeApplication(QStringLiteral("My Player.app"),
                        {{QStringLiteral("CFBundleIdentifier"), QStringLiteral("org.player")}});
    PresetFixture fixture;
    QVariantMap preset = shortcuts(QStringLiteral("default"));
    preset[bundleId] = QStringLiteral("org.player");
    fixture.writeDefault(QStringLiteral("My Player"), preset);
    fixture.open();
    fixture.browser().appBrowseDidEnd(nullptr, 1, path);
    // The blank one now shadows the default one.
    QCOMPARE(fixture.titles(),
             QStringList({QStringLiteral("My Player"), QStringLiteral("My Player")}));
    QCOMPARE(fixture.editor().currentFile(), PresetFixture::userPath(QStringLiteral("My Player")));
    QVERIFY(fixture.keyColumn(QStringLiteral("shortcut")).first().isEmpty());
}

void ZQKeyboardLayoutAppBrowserTest::whatIsNoApplicationIsRefused_data()
{
    QTest::addColumn<QString>("path");
    QDir().mkpath(QStringLiteral("/Applications/Empty.app"));
    QTest::newRow("a folder without Info.plist") << QStringLiteral("/Applications/Empty.app");
    QTest::newRow("nothing there") << QStringLiteral("/Applications/None.app");
    QTest::newRow("no identifier") << makeApplication(QStringLiteral("Anonymous.app"), {});
}

void ZQKeyboardLayoutAppBrowserTest::whatIsNoApplicationIsRefused()
{
    QFETCH(const QString, path);
    PresetFixture fixture;
    fixture.open();
    const Answer answer("defaultButton");
    fixture.browser().appBrowseDidEnd(nullptr, 1, path);
    QCOMPARE(answer.description().messageText,
             QStringLiteral("Unable to load application information"));
    QCOMPARE(answer.description().informativeText,
             QStringLiteral("Please make sure you selected a valid application."));
    QVERIFY(fixture.titles().isEmpty());
}

void ZQKeyboardLayoutAppBrowserTest::aPresetThatCannotBeWrittenIsToldWithItsFolder()
{
    const QString path =
        makeApplication(QStringLiteral("My Player.app"),
                        {{QStringLiteral("CFBundleIdentifier"), QStringLiteral("org.player")}});
    const test::EnvironmentVariable home("HOME", "/tmp/100%@ %d"); // told as it is
    PresetFixture fixture;
    PresetFixture::writeUser(a, {});
    const QString folder = QFileInfo(PresetFixture::userPath(a)).path();
    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
    fixture.open();
    const Answer answer("defaultButton");
    fixture.browser().appBrowseDidEnd(nullptr, 1, path);
    QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    QCOMPARE(answer.description().messageText, QStringLiteral("Unable to create preset"));
    QCOMPARE(answer.description().informativeText,
             QStringLiteral("Please make sure you have read and write permissions for the "
                            "directory ") +
                 folder + QLatin1Char('.'));
    QCOMPARE(fixture.titles(), QStringList{a});
}

void ZQKeyboardLayoutAppBrowserTest::cancellingThePanelChangesNothing()
{
    PresetFixture fixture;
    PresetFixture::writeUser(a, {});
    fixture.open();
    const Answer answer("defaultButton");
    fixture.browser().appBrowseDidEnd(nullptr, 0, QStringLiteral("/Applications/None.app"));
    QTest::qWait(100);
    QCOMPARE(answer.count(), 0);
    QCOMPARE(fixture.titles(), QStringList{a});
}

void ZQKeyboardLayoutAppBrowserTest::thePanelIsASheetThatStartsInTheApplicationsFolder()
{
    QDir(QStringLiteral("/Applications/Anonymous.app")).removeRecursively();
    QDir(QStringLiteral("/Applications/Empty.app")).removeRecursively();
    makeApplication(QStringLiteral("My Player.app"),
                    {{QStringLiteral("CFBundleIdentifier"), QStringLiteral("org.player")}});
    PresetFixture fixture;
    fixture.open();
    fixture.browser().addApplication();
    auto *panel = qobject_cast<QDialog *>(QApplication::activeModalWidget());
    QVERIFY(panel != nullptr);
    QCOMPARE(panel->windowTitle(), QStringLiteral("Browse for the application to add"));
    QCOMPARE(panel->windowModality(), Qt::WindowModal);
    QCOMPARE(panel->parentWidget(), &fixture.window());
    auto *list = panel->findChild<QAbstractItemView *>();
    QTRY_COMPARE(list->model()->index(0, 0).data().toString(), QStringLiteral("My Player"));
    list->setCurrentIndex(list->model()->index(0, 0));
    panel->accept();
    QTRY_COMPARE(fixture.titles(), QStringList{QStringLiteral("My Player")});
    QVERIFY(!panel->isVisible());
}

void ZQKeyboardLayoutAppBrowserTest::withoutASelectedRowTheEditorKeepsWhatItShows()
{
    PresetFixture fixture;
    PresetFixture::writeUser(a, shortcuts(QStringLiteral("a")));
    PresetFixture::writeUser(QStringLiteral("B"), shortcuts(QStringLiteral("b")));
    fixture.open();
    fixture.applicationTable().selectOnlyRow(1);
    QCOMPARE(fixture.keyColumn(QStringLiteral("shortcut")).first(), QStringLiteral("b"));
    fixture.applicationTable().clearSelection();
    QCOMPARE(fixture.keyColumn(QStringLiteral("shortcut")).first(), QStringLiteral("b"));
    QCOMPARE(fixture.editor().currentFile(), PresetFixture::userPath(QStringLiteral("B")));
}

TEST_CLASS(ZQKeyboardLayoutAppBrowserTest, QApplication)
#include "ZQKeyboardLayoutAppBrowserTest.moc"
