// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Alerts/ModalAlert.h"

#include "Platform/Desktop/Alerts/MainWindow.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QDialog>
#include <QMainWindow>
#include <QTest>

using platform::runModalAlert;

namespace {

platform::AlertDescription oneButton()
{
    return {QStringLiteral("Headline"), QStringLiteral("100% plain <b>text</b>"), {}, {}, {}};
}

platform::AlertDescription twoButtons()
{
    auto description = oneButton();
    description.alternateButton = QStringLiteral("Cancel");
    return description;
}

} // namespace

class ModalAlertTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theAlertBlocksAllWindowsUntilItsButtonIsPressed();
    void theAnswerIsTheButtons();
    void escAnswersToo();
    void aWorkerMayAsk();
    void aWindowThatGoesEndsTheWait();
    void anApplicationThatQuitsEndsTheWait();
    void aDialogThatBelongsToNoWindowIsTheMainWindow();
};

void ModalAlertTest::theAlertBlocksAllWindowsUntilItsButtonIsPressed()
{
    QMainWindow window;
    window.show();
    QWidget other;
    other.show();
    test::AlertWatcher user([&](platform::AlertPanel &alert) {
        QCOMPARE(alert.windowModality(), Qt::ApplicationModal);
        QCOMPARE(alert.parentWidget(), &window);
        QCOMPARE(QApplication::activeModalWidget(), &alert);
        QCOMPARE(alert.description().informativeText, oneButton().informativeText);
        test::click(alert, "defaultButton");
    });
    QCOMPARE(runModalAlert(oneButton()), qint64{platform::AlertDefaultReturn});
    QCOMPARE(user.count(), 1);
    QVERIFY(test::visibleAlert() == nullptr);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void ModalAlertTest::theAnswerIsTheButtons()
{
    test::AlertWatcher user(
        [](platform::AlertPanel &alert) { test::click(alert, "alternateButton"); });
    QCOMPARE(runModalAlert(twoButtons()), qint64{platform::AlertAlternateReturn});
}

void ModalAlertTest::escAnswersToo()
{
    test::AlertWatcher user(
        [](platform::AlertPanel &alert) { QTest::keyClick(&alert, Qt::Key_Escape); });
    QCOMPARE(runModalAlert(oneButton()), qint64{platform::AlertDefaultReturn});
    QCOMPARE(runModalAlert(twoButtons()), qint64{platform::AlertAlternateReturn});
    QCOMPARE(user.count(), 2);
}

void ModalAlertTest::aWorkerMayAsk()
{
    test::AlertWatcher user(
        [](platform::AlertPanel &alert) { test::click(alert, "defaultButton"); });
    QCOMPARE(test::onWorker([] { return runModalAlert(twoButtons()); }),
             qint64{platform::AlertDefaultReturn});
}

void ModalAlertTest::aWindowThatGoesEndsTheWait()
{
    auto window = std::make_unique<QMainWindow>();
    window->show();
    test::AlertWatcher user([&](platform::AlertPanel & /*alert*/) { window.reset(); });
    QCOMPARE(runModalAlert(twoButtons()), qint64{platform::AlertAlternateReturn});
}

void ModalAlertTest::anApplicationThatQuitsEndsTheWait()
{
    test::AlertWatcher user([](platform::AlertPanel & /*alert*/) { QCoreApplication::quit(); });
    QCOMPARE(runModalAlert(twoButtons()), qint64{platform::AlertAlternateReturn});
    QVERIFY(test::visibleAlert() == nullptr);
}

void ModalAlertTest::aDialogThatBelongsToNoWindowIsTheMainWindow()
{
    // An alert is none.
    platform::AlertPanel alert(oneButton());
    alert.show();
    QVERIFY(platform::mainWindow() == nullptr);
    QDialog host;
    host.show();
    QCOMPARE(platform::mainWindow(), &host);
    QDialog child(&host);
    child.show();
    child.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&child));
    QCOMPARE(platform::mainWindow(), &host);
    // Any window counts more, whichever is active.
    QWidget window;
    window.show();
    host.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&host));
    QCOMPARE(platform::mainWindow(), &window);
    QMainWindow main;
    main.show();
    QCOMPARE(platform::mainWindow(), &main);
}

TEST_CLASS(ModalAlertTest, QApplication)
#include "ModalAlertTest.moc"
