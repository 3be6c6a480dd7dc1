// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Ostrel/PresetFiles.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Desktop/ApplicationPanel/ApplicationPanel.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Preference Pane/Presets/PageFixture.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/TestProgram.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>

// Each alert of the pane and of the page of presets waits for its answer in the host's event loop,
// where the host may close them. To be run with AddressSanitizer, too.
class AlertLifetimeTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup();
    void thePaneMayGoWhileItsAlertWaits_data();
    void thePaneMayGoWhileItsAlertWaits();
    void aPortThatCannotBeSavedAtClosingIsToldWithoutWaiting_data();
    void aPortThatCannotBeSavedAtClosingIsToldWithoutWaiting();
    void thePageMayGoWhileOneOfItsAlertsWaits_data();
    void thePageMayGoWhileOneOfItsAlertsWaits();
    void aPageThatGoesTakesItsSheetAlong();
    void whatWasConfirmedIsDoneThoughThePageIsGone();
};

namespace {

const QString mine = QStringLiteral("Mine");

void writable(const QString &folder, bool yes)
{
    const auto read = QFile::ReadOwner | QFile::ExeOwner;
    QVERIFY(QFile::setPermissions(folder, yes ? read | QFile::WriteOwner : read));
}

QString makeApplication(const QString &identifier)
{
    const QString path = QStringLiteral("/Applications/Player.app");
    QDir().mkpath(path + QStringLiteral("/Contents"));
    platform::writeDictionaryToFile({{QStringLiteral("CFBundleIdentifier"), identifier}},
                                    path + QStringLiteral("/Contents/Info.plist"));
    return path;
}

QString fileNamed(const QTemporaryDir &folder, const QString &name, const QByteArray &bytes)
{
    QFile file(folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("cannot write a file");
    }
    return file.fileName();
}

const QByteArray preset = "<plist><dict><key>keys</key><dict/></dict></plist>";

void remove(Page &page, const QTemporaryDir &)
{
    page->browser()->removeApplication();
}

using Act = void (*)(Page &, const QTemporaryDir &);

void removeByKey(Page &page, const QTemporaryDir &)
{
    QTest::keyClick(page.applications(), Qt::Key_Delete);
}

void removeByButton(Page &page, const QTemporaryDir &)
{
    QTest::mouseClick(page.control<QPushButton>("removeApplicationButton"), Qt::LeftButton);
}

void addNoApplication(Page &page, const QTemporaryDir &)
{
    page->browser()->appBrowseDidEnd(nullptr, platform::PanelOKButton, QStringLiteral("/none"));
}

void addServed(Page &page, const QTemporaryDir &)
{
    page->browser()->appBrowseDidEnd(nullptr, platform::PanelOKButton,
                                     makeApplication(QStringLiteral("org.mine")));
}

void addByPanel(Page &page, const QTemporaryDir &)
{
    makeApplication(QStringLiteral("org.mine"));
    page->browser()->addApplication();
    auto *panel = page->window()->findChild<platform::ApplicationPanel *>();
    QVERIFY(panel != nullptr);
    auto *search = panel->findChild<QLineEdit *>(QStringLiteral("applicationSearch"));
    auto *add = panel->findChild<QPushButton *>(QStringLiteral("addButton"));
    search->setText(QStringLiteral("Player"));
    QTRY_VERIFY(add->isEnabled());
    QTest::keyClick(search, Qt::Key_Return);
}

void addUnwritable(Page &page, const QTemporaryDir &)
{
    writable(presets::userFolder(), false);
    page->browser()->appBrowseDidEnd(nullptr, platform::PanelOKButton,
                                     makeApplication(QStringLiteral("org.other")));
}

void importNone(Page &page, const QTemporaryDir &folder)
{
    page->importPresets({fileNamed(folder, QStringLiteral("A.okl"), "x"),
                         fileNamed(folder, QStringLiteral("B.okl"), preset)});
}

void importAgain(Page &page, const QTemporaryDir &folder)
{
    page->importPresets({fileNamed(folder, QStringLiteral("Mine.okl"), preset),
                         fileNamed(folder, QStringLiteral("B.okl"), preset)});
}

void importByDialog(Page &page, const QTemporaryDir &folder)
{
    page.action("importPresetAction")->trigger();
    auto *dialog = page->window()->findChild<QFileDialog *>();
    QVERIFY(dialog != nullptr);
    dialog->selectFile(fileNamed(folder, QStringLiteral("A.okl"), "x"));
    QMetaObject::invokeMethod(dialog, "accept");
}

void exportUnwritable(Page &page, const QTemporaryDir &folder)
{
    page.action("exportPresetAction")->trigger();
    auto *dialog = page->window()->findChild<QFileDialog *>();
    QVERIFY(dialog != nullptr);
    dialog->setDirectory(folder.path());
    dialog->selectFile(QStringLiteral("Copy"));
    writable(folder.path(), false);
    QMetaObject::invokeMethod(dialog, "accept");
}

void restoreUnwritable(Page &page, const QTemporaryDir &)
{
    writable(presets::userFolder(), false);
    auto *menu = page.control<QToolButton>("presetMenuButton")->menu();
    menu->popup(page->mapToGlobal(QPoint()));
    menu->setActiveAction(page.action("undoAction"));
    QTest::keyClick(menu, Qt::Key_Return);
}

void removeAndConfirm(Page &page)
{
    const test::AlertWatcher answer(
        [](platform::AlertPanel &alert) { test::click(alert, "defaultButton"); });
    page->browser()->removeApplication();
}

void writeMine()
{
    PresetFixture::writeUser(mine, {{QStringLiteral("bundleid"), QStringLiteral("org.mine")},
                                    {QStringLiteral("keys"), QVariantMap()}});
}

} // namespace

Q_DECLARE_METATYPE(Act)

void AlertLifetimeTest::cleanup()
{
    writable(PaneFixture::preferencesFolder(), true);
    QDir().mkpath(presets::userFolder());
    writable(presets::userFolder(), true);
    for (auto *alert : test::visibleAlerts()) {
        alert->orderOut();
    }
}

void AlertLifetimeTest::thePaneMayGoWhileItsAlertWaits_data()
{
    QTest::addColumn<QString>("way");
    for (const auto *way : {"save", "network", "box", "toggle", "menu", "return", "pause"}) {
        QTest::newRow(way) << QString::fromLatin1(way);
    }
}

void AlertLifetimeTest::thePaneMayGoWhileItsAlertWaits()
{
    QFETCH(const QString, way);
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferences({{QStringLiteral("customPortSet"), 1}});
    fixture.open();
    fixture.pane().showPage(QStringLiteral("network"));
    auto *field = fixture.control<QLineEdit>("networkCustomPortText");
    auto *box = fixture.control<QCheckBox>("networkDisableBonjour");
    auto *menu = fixture.control<QComboBox>("networkInterfacePopUp");
    {
        const QSignalBlocker blocked(menu);
        menu->addItem(QStringLiteral("eth0"), QStringLiteral("0a"));
    }
    writable(PaneFixture::preferencesFolder(), false);
    const test::AlertWatcher host(
        [&fixture](platform::AlertPanel & /*alert*/) { fixture.close(); });
    if (way == QLatin1String("save")) {
        fixture.pane().savePrefs();
    } else if (way == QLatin1String("network")) {
        fixture.pane().updateNetworkSettings();
    } else if (way == QLatin1String("box")) {
        QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, {5, box->height() / 2});
    } else if (way == QLatin1String("toggle")) {
        box->toggle();
    } else if (way == QLatin1String("menu")) {
        QTest::keyClick(menu, Qt::Key_End);
        QTest::keyClick(menu->view(), Qt::Key_Return);
    } else {
        QTest::keyClicks(field, QStringLiteral("1"));
        if (way == QLatin1String("return")) {
            QTest::keyClick(field, Qt::Key_Return);
        }
    }
    QTRY_COMPARE(host.count(), 1);
}

void AlertLifetimeTest::aPortThatCannotBeSavedAtClosingIsToldWithoutWaiting_data()
{
    QTest::addColumn<bool>("isFinished");
    QTest::newRow("while it is typed") << false;
    QTest::newRow("right after the field was left") << true;
}

void AlertLifetimeTest::aPortThatCannotBeSavedAtClosingIsToldWithoutWaiting()
{
    QFETCH(bool, isFinished);
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferences({{QStringLiteral("customPortSet"), 1}});
    fixture.open();
    fixture.pane().showPage(QStringLiteral("network"));
    auto *port = fixture.control<QLineEdit>("networkCustomPortText");
    QTest::keyClicks(port, QStringLiteral("1"));
    writable(PaneFixture::preferencesFolder(), false);
    if (isFinished) {
        Q_EMIT port->editingFinished(); // as a window does that closes
    }
    fixture.closePane();
    auto *alert = test::visibleAlert();
    QVERIFY(alert != nullptr);
    QCOMPARE(alert->description().messageText, QStringLiteral("Unable to write preferences"));
    QVERIFY(alert->description().informativeText.contains(PaneFixture::preferencesFolder()));
    QCOMPARE(alert->parentWidget(), &fixture.window());
    test::click(*alert, "defaultButton");
    QVERIFY(!alert->isVisible());
}

void AlertLifetimeTest::thePageMayGoWhileOneOfItsAlertsWaits_data()
{
    QTest::addColumn<Act>("act");
    QTest::addColumn<bool>("window");
    const auto rows = [](const char *name, Act act) {
        QTest::addRow("%s, page", name) << act << false;
        QTest::addRow("%s, window", name) << act << true;
    };
    rows("remove", remove);
    rows("remove by key", removeByKey);
    rows("remove by button", removeByButton);
    rows("add what is none", addNoApplication);
    rows("add what has one", addServed);
    rows("add by the panel", addByPanel);
    rows("add, unwritable", addUnwritable);
    rows("import what is none", importNone);
    rows("import by the dialog", importByDialog);
    rows("import again", importAgain);
    rows("export", exportUnwritable);
    rows("restore", restoreUnwritable);
}

void AlertLifetimeTest::thePageMayGoWhileOneOfItsAlertsWaits()
{
    QFETCH(const Act, act);
    QFETCH(const bool, window);
    const PresetFixture fixture;
    writeMine();
    const QTemporaryDir folder;
    Page page(fixture);
    page.show();
    if (act == restoreUnwritable) {
        removeAndConfirm(page);
    }
    const test::AlertWatcher host([&](platform::AlertPanel &alert) {
        if (window) {
            page.destroyWindow();
        } else {
            page.destroyPage();
            test::click(alert, "defaultButton");
        }
    });
    act(page, folder);
    QTRY_COMPARE(host.count(), 1);
    writable(folder.path(), true);
}

void AlertLifetimeTest::aPageThatGoesTakesItsSheetAlong()
{
    const PresetFixture fixture;
    writeMine();
    Page page(fixture);
    page.show();
    page.keys()->selectOnlyRow(0);
    page->editor()->changeKeyboardShortcut();
    const QPointer<QWidget> sheet(page->panel());
    QVERIFY(sheet->isVisible());
    page.destroyPage();
    QVERIFY(sheet.isNull());
}

void AlertLifetimeTest::whatWasConfirmedIsDoneThoughThePageIsGone()
{
    const PresetFixture fixture;
    writeMine();
    Page page(fixture);
    page.show();
    const test::AlertWatcher host([&](platform::AlertPanel &alert) {
        page.destroyPage();
        test::click(alert, "defaultButton");
    });
    page->browser()->removeApplication();
    QVERIFY(!QFile::exists(PresetFixture::userPath(mine)));
}

TEST_CLASS(AlertLifetimeTest, QApplication)
#include "AlertLifetimeTest.moc"
