// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Pane/EmbossedLabel.h"
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Support/TestProgram.h"
#include "Tests/Support/UpdaterForTest.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QUrl>

using namespace std::chrono_literals;

// What the pane does when a host opens it, and its simple actions.
class StartUpTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aRunningListenerWithAJobFileIsShownAtOnce();
    void aRunningListenerWithoutAJobFileLeavesTheSwitchOff();
    void aJobFileWithoutAProcessLeavesTheSwitchOff();
    void aProcessWhoseNameOnlyBeginsWithTheListenersDoesNotCount();
    void noProcessHasAnEmptyName();
    void theVersionIsReadFromTheFileItself();
    void withoutAVersionTheLabelIsEmpty();
    void theLabelsBesideTheSwitchAreRaised();
    void loadingEndsASecondAfterOpening();
    void theVersionCheckStoresTheBundleVersion();
    void theUpdateCheckStartsUnlessItsSettingEqualsZero_data();
    void theUpdateCheckStartsUnlessItsSettingEqualsZero();
    void closingWithinTheFirstSecondEndsItAndChecksNothing();
    void everyControlHasAnAccessibleName();
    void theFeedbackButtonOpensTheFeedbackPage();
    void theManualButtonOpensTheManual();
    void withoutAManualTheButtonSaysSo();
    void thePagesCanBeShownByName();

public Q_SLOTS:
    void keepUrl(const QUrl &url) { m_opened = url; }

private:
    QUrl m_opened;
};

void StartUpTest::aRunningListenerWithAJobFileIsShownAtOnce()
{
    PaneFixture fixture(60s);
    PaneFixture::installJob();
    fixture.runProcess(QStringLiteral("OstrelListener"));
    fixture.open();
    QCOMPARE(fixture.status(), QStringLiteral("Status: Running"));
    QVERIFY(fixture.masterSwitch().isOn());
}

void StartUpTest::aRunningListenerWithoutAJobFileLeavesTheSwitchOff()
{
    PaneFixture fixture(60s);
    fixture.runProcess(QStringLiteral("OstrelListener"));
    fixture.open();
    QCOMPARE(fixture.status(), QStringLiteral("Status: Not loaded"));
    QVERIFY(!fixture.masterSwitch().isOn());
}

void StartUpTest::aJobFileWithoutAProcessLeavesTheSwitchOff()
{
    PaneFixture fixture(60s);
    PaneFixture::installJob();
    fixture.open();
    QCOMPARE(fixture.status(), QStringLiteral("Status: Not loaded"));
    QVERIFY(!fixture.masterSwitch().isOn());
}

void StartUpTest::aProcessWhoseNameOnlyBeginsWithTheListenersDoesNotCount()
{
    PaneFixture fixture(60s);
    fixture.runProcess(QStringLiteral("OstrelListenerX"));
    fixture.runProcess(QStringLiteral("XOstrelListener"));
    QVERIFY(!Ostrel_Preference_Pane::isProcessRunning(QStringLiteral("OstrelListener")));
    QVERIFY(Ostrel_Preference_Pane::isProcessRunning(QStringLiteral("OstrelListenerX")));
    fixture.runProcess(QStringLiteral("OstrelListener"));
    QVERIFY(Ostrel_Preference_Pane::isProcessRunning(QStringLiteral("OstrelListener")));
}

void StartUpTest::noProcessHasAnEmptyName()
{
    QVERIFY(!Ostrel_Preference_Pane::isProcessRunning(QStringLiteral("")));
    QVERIFY(!Ostrel_Preference_Pane::isProcessRunning(QString()));
}

void StartUpTest::theVersionIsReadFromTheFileItself()
{
    PaneFixture fixture(60s);
    fixture.open();
    QCOMPARE(fixture.control<QLabel>("versionLabel")->text(), QStringLiteral("3.1"));
    fixture.close();
    fixture.setInfo({{QStringLiteral("CFBundleShortVersionString"), 4}});
    fixture.open();
    QCOMPARE(fixture.control<QLabel>("versionLabel")->text(), QStringLiteral("4"));
}

void StartUpTest::withoutAVersionTheLabelIsEmpty()
{
    PaneFixture fixture(60s);
    fixture.setInfo({});
    fixture.open();
    QCOMPARE(fixture.control<QLabel>("versionLabel")->text(), QString());
}

void StartUpTest::theLabelsBesideTheSwitchAreRaised()
{
    PaneFixture fixture(60s);
    fixture.open();
    for (const char *name : {"masterOffLabel", "masterOnLabel"}) {
        QCOMPARE(static_cast<int>(fixture.control<EmbossedLabel>(name)->backgroundStyle()), 2);
    }
}

void StartUpTest::loadingEndsASecondAfterOpening()
{
    PaneFixture fixture(1s);
    QElapsedTimer time;
    time.start();
    fixture.open();
    QVERIFY(fixture.pane().isLoading());
    fixture.waitUntilLoaded();
    QVERIFY(time.elapsed() >= 950);
}

void StartUpTest::theVersionCheckStoresTheBundleVersion()
{
    PaneFixture fixture(50ms);
    PaneFixture::writePreferences({{QStringLiteral("mine"), 1}});
    fixture.open();
    fixture.waitUntilLoaded();
    QCOMPARE(PaneFixture::preferences().value(QStringLiteral("lastRunVersion")).toString(),
             QStringLiteral("7"));
    QCOMPARE(PaneFixture::preferences().value(QStringLiteral("mine")).toInt(), 1);
    QCOMPARE(PaneFixture::preferences().size(), 2);
}

void StartUpTest::theUpdateCheckStartsUnlessItsSettingEqualsZero_data()
{
    QTest::addColumn<QVariant>("setting");
    QTest::addColumn<bool>("started");
    QTest::newRow("missing") << QVariant() << true;
    QTest::newRow("0") << QVariant(0) << false;
    QTest::newRow("false") << QVariant(false) << false;
    QTest::newRow("1") << QVariant(1) << true;
    QTest::newRow("2") << QVariant(2) << true;
    QTest::newRow("text 0") << QVariant(QStringLiteral("0")) << true;
}

void StartUpTest::theUpdateCheckStartsUnlessItsSettingEqualsZero()
{
    QFETCH(QVariant, setting);
    QFETCH(bool, started);
    test::updater::make(test::updater::installedPath(), 8);
    test::updater::forget();
    PaneFixture fixture(100ms);
    PaneFixture::writePreferences(setting.isValid()
                                      ? QVariantMap{{QStringLiteral("autoUpdateCheck"), setting}}
                                      : QVariantMap());
    fixture.open();
    fixture.waitUntilLoaded();
    fixture.close(); // waits for the workers
    if (!started) {
        QTest::qWait(300); // for a run that would be wrong
    }
    QCOMPARE(test::updater::waitForRuns(started ? 1 : 0).size(), started ? 1 : 0);
    test::updater::remove(test::updater::installedPath());
}

void StartUpTest::closingWithinTheFirstSecondEndsItAndChecksNothing()
{
    PaneFixture fixture(24h); // longer than any test may take
    PaneFixture::installJob();
    const QVariantMap preferences{{QStringLiteral("lastRunVersion"), QStringLiteral("6")}};
    PaneFixture::writePreferences(preferences);
    fixture.open();
    fixture.close();
    QCOMPARE(PaneFixture::preferences(), preferences);
}

void StartUpTest::everyControlHasAnAccessibleName()
{
    PaneFixture fixture(60s);
    fixture.open();
    for (auto *widget : fixture.window().findChildren<QWidget *>()) {
        // Parts that Qt makes inside a control speak through it.
        if (widget->focusPolicy() == Qt::NoFocus || widget->objectName().isEmpty() ||
            widget->objectName().startsWith(QLatin1String("qt_"))) {
            continue;
        }
        auto *accessible = QAccessible::queryAccessibleInterface(widget);
        QVERIFY(accessible != nullptr);
        QVERIFY2(
            !accessible->text(QAccessible::Name).isEmpty(),
            qPrintable(widget->objectName() + QLatin1String(widget->metaObject()->className())));
    }
}

void StartUpTest::theFeedbackButtonOpensTheFeedbackPage()
{
    PaneFixture fixture(60s);
    fixture.open();
    QDesktopServices::setUrlHandler(QStringLiteral("http"), this, "keepUrl");
    fixture.control<QPushButton>("feedbackButton")->click();
    QDesktopServices::unsetUrlHandler(QStringLiteral("http"));
    QCOMPARE(m_opened.scheme(), QStringLiteral("http"));
    QCOMPARE(m_opened.path(), QStringLiteral("/ostrel/feedback/"));
    QCOMPARE(m_opened.query(), QStringLiteral("app=ostrel_pref_pane"));
}

void StartUpTest::theManualButtonOpensTheManual()
{
    PaneFixture fixture(60s);
    fixture.open();
    const QString resources =
        fixture.pane().bundle().path() + QStringLiteral("/Contents/Resources");
    fixture.close();
    QDir().mkpath(resources);
    QFile manual(resources + QStringLiteral("/Ostrel User Manual.pdf"));
    QVERIFY(manual.open(QIODevice::WriteOnly));
    manual.close();
    fixture.open();
    QVERIFY(fixture.control<QPushButton>("userManualButton")->isEnabled());
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "keepUrl");
    fixture.control<QPushButton>("userManualButton")->click();
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QCOMPARE(m_opened.toLocalFile(), manual.fileName());
}

void StartUpTest::withoutAManualTheButtonSaysSo()
{
    PaneFixture fixture(60s);
    fixture.open();
    QVERIFY(!fixture.control<QPushButton>("userManualButton")->isEnabled());
    QVERIFY(!fixture.control<QPushButton>("userManualButton")->toolTip().isEmpty());
    fixture.pane().userManual(); // reports nothing
}

void StartUpTest::thePagesCanBeShownByName()
{
    PaneFixture fixture(60s);
    fixture.open();
    for (const auto &page : fixture.pane().pages()) {
        QVERIFY(fixture.pane().showPage(page));
        QVERIFY(fixture.control<QWidget>(qPrintable(page))->isVisible());
    }
    QVERIFY(!fixture.pane().showPage(QStringLiteral("nonsense")));
    QVERIFY(!fixture.pane().showPage(QString()));
}

TEST_CLASS(StartUpTest, QApplication)
#include "StartUpTest.moc"
