// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "Tests/Preference Pane/Presets/PageFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QPointer>
#include <QTest>
#include <QVBoxLayout>

// The page with the sheet that captures a shortcut.
class PageSheetTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theSheetTellsTheSelectedKeyAndItsShortcut();
    void theSheetGoesWithItsPage();
    void theSheetFindsItsWindowInADialogHost();
};

namespace {

const QString player = QStringLiteral("Player");

QVariantMap preset(const QString &shortcut)
{
    return {{QStringLiteral("bundleid"), QStringLiteral("org.player")},
            {QStringLiteral("keys"), QVariantMap{{QStringLiteral("play"), shortcut}}}};
}

} // namespace

void PageSheetTest::theSheetTellsTheSelectedKeyAndItsShortcut()
{
    PresetFixture fixture;
    PresetFixture::writeUser(player, preset(QStringLiteral("Ctrl+P")));
    Page page(fixture);
    page.show();
    auto *panel = page->panel();
    const auto *current = panel->findChild<QLabel *>(QStringLiteral("panelEditCurrent"));
    page.keys()->selectOnlyRow(0);
    page->editor()->changeKeyboardShortcut();
    QVERIFY(panel->accessibleName().contains(QStringLiteral("“Play”")));
    QVERIFY(current->text().contains(QStringLiteral("Ctrl+P")));
    QTest::keyClick(panel, Qt::Key_S, Qt::ControlModifier);
    page->editor()->changeKeyboardShortcut();
    QVERIFY(current->text().contains(QStringLiteral("Ctrl+S")));
    panel->reject();
    page.keys()->selectOnlyRow(1);
    page->editor()->changeKeyboardShortcut();
    QVERIFY(panel->accessibleName().contains(QStringLiteral("“Stop”")));
    QVERIFY(!current->text().contains(QStringLiteral("Ctrl")));
    panel->reject();
}

void PageSheetTest::theSheetGoesWithItsPage()
{
    PresetFixture fixture;
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    Page page(fixture);
    page.show();
    page.keys()->selectOnlyRow(0);
    page->editor()->changeKeyboardShortcut();
    const QPointer<ZQKeyboardEditPanel> panel = page->panel();
    QVERIFY(panel->isVisible());
    page->hide();
    QVERIFY(!panel->isVisible());
    page->show();
    page->editor()->changeKeyboardShortcut();
    QVERIFY(panel->isVisible());
    page.destroyPage();
    QVERIFY(panel == nullptr);
}

void PageSheetTest::theSheetFindsItsWindowInADialogHost()
{
    PresetFixture fixture;
    PresetFixture::writeUser(player, preset(QStringLiteral("P")));
    QDialog host;
    auto *layout = new QVBoxLayout(&host);
    auto *page = new KeyboardLayoutPage(&host);
    page->setBundle(fixture.bundle());
    layout->addWidget(page);
    host.show();
    QVERIFY(QTest::qWaitForWindowExposed(&host));
    page->editor()->changeKeyboardShortcut();
    QVERIFY(page->panel()->isVisible());
    QCOMPARE(page->panel()->parentWidget(), &host);
    QCOMPARE(page->panel()->windowModality(), Qt::WindowModal);
    page->panel()->reject();
}

TEST_CLASS(PageSheetTest, QApplication)
#include "PageSheetTest.moc"
