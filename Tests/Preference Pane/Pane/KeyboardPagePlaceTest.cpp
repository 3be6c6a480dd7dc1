// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Preference Pane/Presets/PresetFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>

// The keyboard page among the pane's other controls.
class KeyboardPagePlaceTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void tabGoesThroughThePageAsTheEyeDoes();
    void thePaneHasItsSizeFromTheStart();
};

void KeyboardPagePlaceTest::tabGoesThroughThePageAsTheEyeDoes()
{
    const PresetFixture presets;
    PresetFixture::writeUser(QStringLiteral("A"), {{QStringLiteral("keys"), QVariantMap()}});
    PaneFixture fixture;
    fixture.open();
    fixture.window().activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&fixture.window()));
    QVERIFY(fixture.pane().showPage(QStringLiteral("keyboard")));
    fixture.control<QTabWidget>("pages")->tabBar()->setFocus();
    const QStringList wanted{QStringLiteral("applicationFilter"),
                             QStringLiteral("applicationTable"),
                             QStringLiteral("addApplicationButton"),
                             QStringLiteral("removeApplicationButton"),
                             QStringLiteral("presetMenuButton"),
                             QStringLiteral("keyFilter"),
                             QStringLiteral("keyTable")};
    QStringList order;
    for (int tab = 0; tab < wanted.size(); ++tab) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        order.append(QApplication::focusWidget()->objectName());
    }
    QCOMPARE(order, wanted);
    // Then come the buttons below the page.
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget()->parentWidget(), fixture.window().centralWidget());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab, Qt::ShiftModifier);
    QCOMPARE(QApplication::focusWidget()->objectName(), wanted.last());
}

void KeyboardPagePlaceTest::thePaneHasItsSizeFromTheStart()
{
    const PresetFixture presets;
    PresetFixture::writeUser(QStringLiteral("A"), {{QStringLiteral("keys"), QVariantMap()}});
    PaneFixture fixture;
    fixture.open();
    const QWidget *view = fixture.window().centralWidget();
    const QSize minimum = view->minimumSizeHint();
    const QSize wanted = view->sizeHint();
    const QSize size = fixture.window().size();
    QVERIFY(fixture.pane().showPage(QStringLiteral("keyboard")));
    QTest::qWait(1);
    QCOMPARE(view->minimumSizeHint(), minimum);
    QCOMPARE(view->sizeHint(), wanted);
    QCOMPARE(fixture.window().size(), size);
}

TEST_CLASS(KeyboardPagePlaceTest, QApplication)
#include "KeyboardPagePlaceTest.moc"
