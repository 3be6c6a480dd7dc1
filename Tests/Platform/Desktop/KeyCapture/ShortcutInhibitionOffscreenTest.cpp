// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/KeyCapture/ShortcutInhibition.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QTest>
#include <QWidget>

class ShortcutInhibitionOffscreenTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void whereThereIsNoDesktopItIsHarmless()
    {
        QWidget window;
        QWidget child(&window);
        const platform::ShortcutInhibition inhibition(&child);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(!inhibition.isActive());
        QTest::keyClick(&window, Qt::Key_S);
    }
};

TEST_CLASS(ShortcutInhibitionOffscreenTest, QApplication)
#include "ShortcutInhibitionOffscreenTest.moc"
