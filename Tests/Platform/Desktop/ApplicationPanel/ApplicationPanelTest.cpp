// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/ApplicationPanel/ApplicationPanel.h"

#include "Platform/Desktop/ApplicationPanel/ApplicationListModel.h"
#include "Tests/Platform/Desktop/ApplicationPanel/ApplicationPanelFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QTest>

#include <algorithm>

using platform::ApplicationListModel;
using platform::ApplicationPanel;
using test::texts;
using Opened = test::OpenedPanel;

namespace {

void install(const test::DataFolders &data)
{
    const auto folder = data.first / "applications/";
    test::writeFile(folder + "elisa.desktop",
                    test::entry("Elisa", "GenericName=Music Collection\nComment=Plays music\n"));
    test::writeFile(folder + "firefox.desktop", test::entry("Firefox", "Keywords=web;browser;\n"));
    test::writeFile(folder + "musica.desktop",
                    "[Desktop Entry]\nType=Application\nName=Más Música\n"
                    "Exec=/usr/bin/mm-player %U\n");
    test::writeFile(folder + "vlc.desktop", test::entry("VLC 10"));
    test::writeFile(folder + "vlc2.desktop", test::entry("vlc 9"));
    test::writeFile(folder + "hidden.desktop", test::entry("Hidden", "Hidden=true\n"));
    test::writeFile(folder + "helper.desktop", test::entry("Helper", "NoDisplay=true\n"));
    test::writeFile(folder + "broken.desktop", "rubbish");
}

const auto installed = texts({"Elisa", "Firefox", "Más Música", "vlc 9", "VLC 10"});

} // namespace

class ApplicationPanelTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void installedApplicationsAreListedByName();
    void appFoldersOfTheStartingFolderComeFirst();
    void aMissingStartingFolderIsNone();
    void anEntryOfTheUserStandsForThatOfTheSystem();
    void aSearchLooksAtEachText_data();
    void aSearchLooksAtEachText();
    void theBestMatchComesFirstAndIsSelected();
    void withoutAMatchTheListSaysSoAndNothingCanBeAdded();
    void anEmptyMachineSaysSo();
    void enterInTheSearchAddsTheSelectedOne();
    void enterWithoutASelectionDoesNothing();
    void addAnswersOneWithThePath();
    void aDoubleClickAnswersOnce();
    void escAndCancelAndTheCloseButtonAnswerZero_data();
    void escAndCancelAndTheCloseButtonAnswerZero();
    void arrowsMoveFromTheSearchIntoTheListAndBack();
    void typingInTheListSearches();
    void itIsASheetOfTheParentsWindow();
    void theEndMayDeleteThePanel();
    void aPanelMayBeginAgain();
    void aPanelThatIsDestroyedWhileItReadsEndsQuietly();
    void controlsHaveNamesForAScreenReader();
    void fiveThousandAreFilteredWithinAFrame();
    void oddNamesStayOneLine();
};

void ApplicationPanelTest::init()
{
    qunsetenv("XDG_CURRENT_DESKTOP");
}

void ApplicationPanelTest::installedApplicationsAreListedByName()
{
    const test::DataFolders data;
    install(data);
    const Opened opened;
    QTRY_COMPARE(opened.names(), installed);
    const auto elisa = opened.list()->model()->index(0, 0);
    QCOMPARE(elisa.data(ApplicationListModel::DescriptionRole).toString(),
             QStringLiteral("Plays music"));
    QVERIFY(opened.current().isNull());
    QVERIFY(!opened.button("addButton")->isEnabled());
}

void ApplicationPanelTest::appFoldersOfTheStartingFolderComeFirst()
{
    const test::DataFolders data;
    install(data);
    const test::Folder folder;
    test::makeApp(folder / "Zebra.app", "z");
    test::makeFolder(folder / "Sub");
    test::makeApp(folder / "Sub/Yak.app", "y");
    test::makeFolder(folder / "Broken.app");
    const Opened opened(test::text(folder.path()));
    QTRY_COMPARE(opened.names(), texts({"Yak", "Zebra"}) + installed);
}

void ApplicationPanelTest::aMissingStartingFolderIsNone()
{
    const test::DataFolders data;
    install(data);
    const Opened opened(QStringLiteral("/no such folder"));
    QTRY_COMPARE(opened.names(), installed);
    opened.button("browseButton")->click();
    QCOMPARE(opened.files()->directory().absolutePath(), test::text(data.second / "applications"));
}

void ApplicationPanelTest::anEntryOfTheUserStandsForThatOfTheSystem()
{
    const test::DataFolders data;
    install(data);
    test::writeFile(data.user / "applications/elisa.desktop", test::entry("My Elisa"));
    test::writeFile(data.user / "applications/firefox.desktop", test::entry("F", "Hidden=true\n"));
    test::writeFile(data.user / "applications/vlc.desktop", "rubbish");
    const Opened opened;
    QTRY_COMPARE(opened.names(), texts({"Más Música", "My Elisa", "vlc 9", "VLC 10"}));
}

void ApplicationPanelTest::aSearchLooksAtEachText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("found");
    QTest::newRow("name, any case") << QStringLiteral("FIRE") << texts({"Firefox"});
    QTest::newRow("generic name") << QStringLiteral("collection mus") << texts({"Elisa"});
    QTest::newRow("keyword") << QStringLiteral("browser") << texts({"Firefox"});
    QTest::newRow("program") << QStringLiteral("mm-pl") << texts({"Más Música"});
    QTest::newRow("without accents") << QStringLiteral("musica") << texts({"Más Música"});
    QTest::newRow("with accents") << QString::fromUtf8("músic") << texts({"Más Música", "Elisa"});
    QTest::newRow("spaces") << QStringLiteral("  vlc   10 ") << texts({"VLC 10"});
    QTest::newRow("only spaces") << QStringLiteral("   ") << installed;
    QTest::newRow("pattern") << QStringLiteral("v.*") << QStringList();
}

void ApplicationPanelTest::aSearchLooksAtEachText()
{
    QFETCH(const QString, text);
    const test::DataFolders data;
    install(data);
    const Opened opened;
    QTRY_COMPARE(opened.names(), installed);
    opened.search()->setText(text);
    QTEST(opened.names(), "found");
    opened.search()->clear();
    QCOMPARE(opened.names(), installed);
}

void ApplicationPanelTest::theBestMatchComesFirstAndIsSelected()
{
    const test::DataFolders data;
    const auto folder = data.first / "applications/";
    test::writeFile(folder + "a.desktop", test::entry("A", "Keywords=zoo;\n"));
    test::writeFile(folder + "b.desktop", test::entry("B Zoo"));
    test::writeFile(folder + "z.desktop", test::entry("Zoo"));
    const Opened opened;
    QTRY_COMPARE(opened.names(), texts({"A", "B Zoo", "Zoo"}));
    QTest::keyClicks(opened.search(), QStringLiteral("zo"));
    QCOMPARE(opened.names(), texts({"Zoo", "B Zoo", "A"}));
    QCOMPARE(opened.current(), QStringLiteral("Zoo"));
}

void ApplicationPanelTest::withoutAMatchTheListSaysSoAndNothingCanBeAdded()
{
    const test::DataFolders data;
    install(data);
    Opened opened;
    QTRY_COMPARE(opened.names(), installed);
    QTest::keyClicks(opened.search(), QStringLiteral("vlc"));
    QVERIFY(opened.button("addButton")->isEnabled());
    QTest::keyClicks(opened.search(), QStringLiteral("xyz"));
    QCOMPARE(opened.list()->accessibleDescription(),
             QStringLiteral("No application has that name"));
    QVERIFY(!opened.button("addButton")->isEnabled());
    QTest::keyClick(opened.search(), Qt::Key_Return);
    QVERIFY(opened.codes.isEmpty());
}

void ApplicationPanelTest::anEmptyMachineSaysSo()
{
    const test::DataFolders data;
    const Opened opened;
    QTRY_COMPARE(opened.list()->accessibleDescription(),
                 QStringLiteral("No applications are installed"));
}

void ApplicationPanelTest::enterInTheSearchAddsTheSelectedOne()
{
    const test::DataFolders data;
    install(data);
    const Opened opened;
    QTRY_COMPARE(opened.names(), installed);
    QTest::keyClicks(opened.search(), QStringLiteral("firef"));
    QTest::keyClick(opened.search(), Qt::Key_Return);
    QCOMPARE(opened.codes, QList<int>{1});
    QCOMPARE(opened.paths, QStringList{test::text(data.first / "applications/firefox.desktop")});
    QVERIFY(opened.wasHidden);
}

void ApplicationPanelTest::enterWithoutASelectionDoesNothing()
{
    const test::DataFolders data;
    install(data);
    Opened opened;
    QTRY_COMPARE(opened.names(), installed);
    QTest::keyClick(opened.search(), Qt::Key_Return);
    opened.panel.accept();
    QVERIFY(opened.codes.isEmpty() && opened.panel.isVisible());
}

void ApplicationPanelTest::addAnswersOneWithThePath()
{
    const test::DataFolders data;
    install(data);
    const Opened opened;
    QTRY_COMPARE(opened.names(), installed);
    const auto row = opened.list()->visualRect(opened.list()->model()->index(0, 0));
    QTest::mouseClick(opened.list()->viewport(), Qt::LeftButton, {}, row.center());
    QVERIFY(opened.codes.isEmpty());
    QTest::mouseClick(opened.button("addButton"), Qt::LeftButton);
    QCOMPARE(opened.codes, QList<int>{1});
    QCOMPARE(opened.paths, QStringList{test::text(data.first / "applications/elisa.desktop")});
}

void ApplicationPanelTest::aDoubleClickAnswersOnce()
{
    const test::DataFolders data;
    install(data);
    Opened opened;
    QTRY_COMPARE(opened.names(), installed);
    const auto row = opened.list()->visualRect(opened.list()->model()->index(1, 0));
    QTest::mouseClick(opened.list()->viewport(), Qt::LeftButton, {}, row.center());
    QTest::mouseDClick(opened.list()->viewport(), Qt::LeftButton, {}, row.center());
    opened.panel.accept();
    opened.panel.reject();
    QCOMPARE(opened.codes, QList<int>{1});
    QCOMPARE(opened.paths, QStringList{test::text(data.first / "applications/firefox.desktop")});
}

void ApplicationPanelTest::escAndCancelAndTheCloseButtonAnswerZero_data()
{
    QTest::addColumn<QString>("how");
    for (const auto *how : {"esc", "cancel", "close", "esc in the list"}) {
        QTest::newRow(how) << QString::fromLatin1(how);
    }
}

void ApplicationPanelTest::escAndCancelAndTheCloseButtonAnswerZero()
{
    QFETCH(const QString, how);
    const test::DataFolders data;
    install(data);
    Opened opened;
    QTRY_COMPARE(opened.names(), installed);
    if (how == QLatin1String("esc")) {
        QTest::keyClick(opened.search(), Qt::Key_Escape);
    } else if (how == QLatin1String("cancel")) {
        QTest::mouseClick(opened.button("cancelButton"), Qt::LeftButton);
    } else if (how == QLatin1String("close")) {
        opened.panel.close();
    } else {
        opened.list()->setCurrentIndex(opened.list()->model()->index(0, 0));
        QTest::keyClick(opened.list(), Qt::Key_Escape);
    }
    QCOMPARE(opened.codes, QList<int>{0});
    QCOMPARE(opened.paths, QStringList{QString()});
    QVERIFY(opened.panel.isHidden());
}

void ApplicationPanelTest::arrowsMoveFromTheSearchIntoTheListAndBack()
{
    const test::DataFolders data;
    install(data);
    const Opened opened;
    QTRY_COMPARE(opened.names(), installed);
    QCOMPARE(opened.panel.focusWidget(), opened.search());
    QTest::keyClick(opened.search(), Qt::Key_Down);
    QCOMPARE(opened.panel.focusWidget(), opened.list());
    QCOMPARE(opened.current(), QStringLiteral("Elisa"));
    QTest::keyClick(opened.list(), Qt::Key_Down);
    QCOMPARE(opened.current(), QStringLiteral("Firefox"));
    QTest::keyClick(opened.list(), Qt::Key_Up);
    QTest::keyClick(opened.list(), Qt::Key_Up);
    QCOMPARE(opened.panel.focusWidget(), opened.search());
    QTest::keyClick(opened.search(), Qt::Key_Down);
    QCOMPARE(opened.current(), QStringLiteral("Firefox"));
    QTest::keyClick(opened.list(), Qt::Key_Return);
    QCOMPARE(opened.codes, QList<int>{1});
}

void ApplicationPanelTest::typingInTheListSearches()
{
    const test::DataFolders data;
    install(data);
    const Opened opened;
    QTRY_COMPARE(opened.names(), installed);
    QTest::keyClick(opened.search(), Qt::Key_Down);
    QTest::keyClick(opened.list(), Qt::Key_V);
    QCOMPARE(opened.search()->text(), QStringLiteral("v"));
    QCOMPARE(opened.panel.focusWidget(), opened.search());
    QTest::keyClick(opened.search(), Qt::Key_Down);
    QTest::keyClick(opened.list(), Qt::Key_Backspace);
    QCOMPARE(opened.search()->text(), QString());
}

void ApplicationPanelTest::itIsASheetOfTheParentsWindow()
{
    const test::DataFolders data;
    Opened opened;
    QCOMPARE(opened.panel.windowModality(), Qt::WindowModal);
    QCOMPARE(opened.panel.parentWidget(), &opened.window);
    QCOMPARE(QApplication::activeModalWidget(), &opened.panel);
    opened.panel.reject();
    opened.panel.setParent(nullptr);

    QWidget window;
    auto *inside = new QWidget(&window);
    ApplicationPanel nested(inside);
    nested.begin(inside, {});
    QCOMPARE(nested.parentWidget(), &window);
    nested.begin(nullptr, {});
    QVERIFY(nested.isWindow() && !nested.isModal() && nested.parentWidget() == nullptr);
}

void ApplicationPanelTest::theEndMayDeleteThePanel()
{
    const test::DataFolders data;
    install(data);
    QWidget window;
    const QPointer<ApplicationPanel> panel = new ApplicationPanel(&window);
    panel->begin(&window, [panel](int /*code*/, const QString & /*path*/) { delete panel.data(); });
    panel->findChild<QPushButton *>(QStringLiteral("cancelButton"))->click();
    QVERIFY(panel.isNull());
}

void ApplicationPanelTest::aPanelMayBeginAgain()
{
    const test::DataFolders data;
    install(data);
    Opened opened;
    QTRY_COMPARE(opened.names(), installed);
    opened.search()->setText(QStringLiteral("vlc"));
    opened.panel.reject();
    test::writeFile(data.first / "applications/new.desktop", test::entry("A New One"));
    opened.begin();
    QVERIFY(opened.search()->text().isEmpty());
    QTRY_COMPARE(opened.names(), texts({"A New One"}) + installed);
    opened.panel.reject();
    QCOMPARE(opened.codes, QList<int>({0, 0}));
}

void ApplicationPanelTest::aPanelThatIsDestroyedWhileItReadsEndsQuietly()
{
    const test::DataFolders data;
    for (int i = 0; i < 300; ++i) {
        test::writeFile(data.first / ("applications/" + std::to_string(i) + ".desktop"),
                        test::entry("A"));
    }
    auto ends = 0;
    for (int i = 0; i < 20; ++i) {
        ApplicationPanel panel;
        panel.begin(nullptr, [&](int /*code*/, const QString & /*path*/) { ++ends; });
        QTest::qWait(i / 2);
    }
    QTest::qWait(20);
    QCOMPARE(ends, 0);
}

void ApplicationPanelTest::controlsHaveNamesForAScreenReader()
{
    const test::DataFolders data;
    install(data);
    const Opened opened;
    QTRY_COMPARE(opened.names(), installed);
    const auto nameOf = [](QWidget *widget) {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
    };
    QCOMPARE(nameOf(opened.search()), QStringLiteral("Search applications"));
    QCOMPARE(nameOf(opened.list()), QStringLiteral("Applications"));
    QCOMPARE(nameOf(opened.button("addButton")), QStringLiteral("Add"));
    QCOMPARE(nameOf(opened.button("browseButton")), QStringLiteral("Browse Files..."));
    auto *row = QAccessible::queryAccessibleInterface(opened.list())->child(0);
    QCOMPARE(row->text(QAccessible::Name), QStringLiteral("Elisa"));
    QCOMPARE(row->text(QAccessible::Description), QStringLiteral("Plays music"));
}

void ApplicationPanelTest::fiveThousandAreFilteredWithinAFrame()
{
    const test::DataFolders data;
    for (int i = 0; i < 5000; ++i) {
        test::writeFile(data.first / ("applications/" + std::to_string(i) + ".desktop"),
                        test::entry("Application " + std::to_string(i),
                                    "GenericName=Something or other\nKeywords=one;two;three;\n"));
    }
    const Opened opened;
    QElapsedTimer loading;
    loading.start();
    QTRY_COMPARE(opened.list()->model()->rowCount(), 5000);
    std::vector<qint64> times;
    for (const auto *text :
         {"a", "ap", "app", "app 4", "app 49", "app 499", "app 49", "", "three"}) {
        QElapsedTimer time;
        time.start();
        opened.search()->setText(QLatin1String(text));
        opened.list()->repaint();
        times.push_back(time.nsecsElapsed() / 1000);
    }
    std::sort(times.begin(), times.end());
    qInfo("5000 listed after %lld ms; a search takes %lld us, at most %lld us", loading.elapsed(),
          times.at(times.size() / 2), times.back());
    // A frame, and much of another for a machine that is busy with other things.
    QVERIFY(times.at(times.size() / 2) < 30'000);
}

void ApplicationPanelTest::oddNamesStayOneLine()
{
    const test::DataFolders data;
    test::writeFile(data.first / "applications/a.desktop",
                    test::entry("two\\nlines\\t<b>" + std::string(100000, 'x'),
                                "Comment=\\n\\n" + std::string(100000, 'y') + "\n"));
    const Opened opened;
    QTRY_COMPARE(opened.list()->model()->rowCount(), 1);
    const auto name = opened.names().constFirst();
    QVERIFY(name.startsWith(QStringLiteral("two lines <b>x")));
    QVERIFY(name.size() <= 200 && !name.contains(QLatin1Char('\n')));
    opened.list()->grab();
}

TEST_CLASS(ApplicationPanelTest, QApplication)
#include "ApplicationPanelTest.moc"
