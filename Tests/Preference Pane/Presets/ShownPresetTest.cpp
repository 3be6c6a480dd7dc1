// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Desktop/ApplicationPanel/ApplicationPanel.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "Tests/Preference Pane/Presets/PageFixture.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QTest>

// What people see of the preset that they work on.
class ShownPresetTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aNewcomerUnderAFilterIsShownAndSelected_data();
    void aNewcomerUnderAFilterIsShownAndSelected();
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

void add(Page &page)
{
    page->browser()->appBrowseDidEnd(nullptr, platform::PanelOKButton,
                                     makeApplication(player, QStringLiteral("org.player")));
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
    page->restorePreset();
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

TEST_CLASS(ShownPresetTest, QApplication)
#include "ShownPresetTest.moc"
