// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Pane/ProgressSpinner.h"
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Shared/Support/GatheringFixture.h"
#include "Tests/Support/StandardOutputCapture.h"
#include "Tests/Support/TestProgram.h"
#include "Tests/Support/UpdaterForTest.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;
using test::GatheringFixture;
namespace updater = test::updater;

namespace {

QString userLog()
{
    return GatheringFixture::home(QStringLiteral("Library/Logs/Corvane/OstrelListener.1.log"));
}

QString success()
{
    return test::modalAlert(QStringLiteral("Logs gathered successfully"),
                            QStringLiteral("The gathered logs were placed on your desktop."));
}

bool isSpinning(const PaneFixture &fixture)
{
    return fixture.control<ProgressSpinner>("statusSpinner")->isAnimating();
}

// What only its own class may do.
class BusyPane : public Ostrel_Preference_Pane {
public:
    using Ostrel_Preference_Pane::Ostrel_Preference_Pane;
    using Ostrel_Preference_Pane::runClientOperation;
    using Ostrel_Preference_Pane::setProcessing;
};

} // namespace

// The buttons for gathering logs and for checking for updates.
class SupportActionsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void gatherLogsPutsAnArchiveOnTheDesktop();
    void theSpinnerTurnsAndTheButtonIsDisabledMeanwhile();
    void aSecondPressMeanwhileDoesNothing();
    void theKeyboardFocusComesBack();
    void theFocusThatTheUserMovedStays();
    void theSpinnerGoesOnWhileAStartOfTheListenerRuns();
    void theEndOfAStartStopsTheSpinnerAlsoWhileLogsAreGathered();
    void closingThePaneMeanwhileStillGathers();
    void closingThePaneBehindTheAlertIsHarmless();
    void aLogThatCannotBeReadIsNamedInThePane();
    void aFolderThatCannotBeReadIsNamedInThePane();
    void theNextSuccessTakesTheNoticeAway();

    void withoutAnUpdaterTheButtonSaysSo();
    void aManualCheckLaunchesTheInstalledUpdater();
    void twoManualChecksLaunchTwice();
    void theStartUpCheckPassesTheBundlesPath();
    void theStartUpCheckWithoutAnUpdaterIsLoggedOnly();
    void anUpdaterThatRunsOnDoesNotHoldThePane();
};

void SupportActionsTest::init()
{
    updater::remove(updater::installedPath());
    updater::forget();
}

void SupportActionsTest::cleanup()
{
    init();
}

void SupportActionsTest::gatherLogsPutsAnArchiveOnTheDesktop()
{
    GatheringFixture gathering;
    PaneFixture fixture(60s);
    test::write(userLog(), "log");
    fixture.open();
    QVERIFY(fixture.control<QPushButton>("gatherLogsButton")->isEnabled());
    fixture.control<QPushButton>("gatherLogsButton")->click();
    QCOMPARE(gathering.alerts(), QStringList(success()));
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog()}), QString());
    QVERIFY(!isSpinning(fixture));
    QVERIFY(fixture.notice().isNull());
}

void SupportActionsTest::theSpinnerTurnsAndTheButtonIsDisabledMeanwhile()
{
    const GatheringFixture gathering;
    PaneFixture fixture(60s);
    test::write(userLog(), QByteArray(20'000'000, 'l'));
    fixture.open();
    auto *const button = fixture.control<QPushButton>("gatherLogsButton");
    auto looked = false;
    QTimer::singleShot(0, this, [&] {
        looked = true;
        QVERIFY(isSpinning(fixture));
        QVERIFY(!button->isEnabled());
    });
    button->click();
    QVERIFY(looked);
    QVERIFY(button->isEnabled());
    QVERIFY(!isSpinning(fixture));
}

void SupportActionsTest::aSecondPressMeanwhileDoesNothing()
{
    GatheringFixture gathering;
    PaneFixture fixture(60s);
    test::write(userLog(), QByteArray(5'000'000, 'l'));
    fixture.open();
    QTimer::singleShot(0, this, [&] { fixture.pane().gatherLogs(); });
    fixture.pane().gatherLogs();
    QCOMPARE(gathering.alerts().size(), 1);
    QCOMPARE(GatheringFixture::desktopNames().size(), 1);
}

void SupportActionsTest::theKeyboardFocusComesBack()
{
    const GatheringFixture gathering;
    PaneFixture fixture(60s);
    test::write(userLog(), "log");
    fixture.open();
    auto *const button = fixture.control<QPushButton>("gatherLogsButton");
    button->setFocus();
    fixture.pane().gatherLogs();
    QCOMPARE(fixture.window().focusWidget(), button);
}

void SupportActionsTest::theFocusThatTheUserMovedStays()
{
    const GatheringFixture gathering;
    PaneFixture fixture(60s);
    test::write(userLog(), QByteArray(5'000'000, 'l'));
    fixture.open();
    fixture.control<QPushButton>("gatherLogsButton")->setFocus();
    auto *const other = fixture.control<QWidget>("autoUpdateCheck");
    QTimer::singleShot(0, this, [&] { other->setFocus(); });
    fixture.pane().gatherLogs();
    QCOMPARE(fixture.window().focusWidget(), other);
}

void SupportActionsTest::theSpinnerGoesOnWhileAStartOfTheListenerRuns()
{
    const GatheringFixture gathering;
    const PaneFixture fixture(60s);
    test::write(userLog(), "log");
    QWidget window;
    BusyPane pane{platform::Bundle(fixture.bundlePath())};
    pane.loadMainView(&window);
    window.show();
    auto *const spinner = window.findChild<ProgressSpinner *>(QStringLiteral("statusSpinner"));
    pane.setProcessing(true);
    spinner->startAnimation();
    pane.gatherLogs();
    QVERIFY(spinner->isAnimating());
    pane.setProcessing(false);
    pane.gatherLogs();
    QVERIFY(!spinner->isAnimating());
}

void SupportActionsTest::theEndOfAStartStopsTheSpinnerAlsoWhileLogsAreGathered()
{
    const GatheringFixture gathering;
    const PaneFixture fixture(60s);
    test::write(userLog(), QByteArray(5'000'000, 'l'));
    QWidget window;
    BusyPane pane{platform::Bundle(fixture.bundlePath())};
    pane.loadMainView(&window);
    window.show();
    auto *const spinner = window.findChild<ProgressSpinner *>(QStringLiteral("statusSpinner"));
    auto *const button = window.findChild<QPushButton *>(QStringLiteral("gatherLogsButton"));
    auto looked = false;
    QTimer::singleShot(0, this, [&] {
        looked = true;
        QVERIFY(spinner->isAnimating());
        pane.runClientOperation("-[Ostrel_Preference_Pane setupClient]", [] {});
        QVERIFY(!spinner->isAnimating());
        QVERIFY(!button->isEnabled());
    });
    button->click();
    QVERIFY(looked);
}

void SupportActionsTest::closingThePaneMeanwhileStillGathers()
{
    GatheringFixture gathering;
    PaneFixture fixture(60s);
    test::write(userLog(), QByteArray(20'000'000, 'l'));
    fixture.open();
    auto closed = false;
    QTimer::singleShot(0, this, [&] {
        fixture.close();
        closed = GatheringFixture::desktopNames().isEmpty();
    });
    fixture.control<QPushButton>("gatherLogsButton")->click();
    QVERIFY(closed);
    QCOMPARE(gathering.alerts(), QStringList(success()));
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog()}), QString());
}

void SupportActionsTest::closingThePaneBehindTheAlertIsHarmless()
{
    GatheringFixture gathering;
    PaneFixture fixture(60s);
    test::write(userLog(), "log");
    fixture.open();
    QTimer closer;
    connect(&closer, &QTimer::timeout, &closer, [&] {
        if (test::visibleAlert() != nullptr) {
            closer.stop();
            fixture.close(); // and its window with the alert in front of it
        }
    });
    closer.start(1);
    fixture.control<QPushButton>("gatherLogsButton")->click();
    QVERIFY(test::visibleAlert() == nullptr);
    QCOMPARE(GatheringFixture::complaintAboutArchive({userLog()}), QString());
}

void SupportActionsTest::aLogThatCannotBeReadIsNamedInThePane()
{
    if (::geteuid() == 0) {
        QSKIP("root may read everything");
    }
    GatheringFixture gathering;
    PaneFixture fixture(60s);
    test::write(userLog(), "log");
    ::chmod(userLog().toStdString().c_str(), 0);
    fixture.open();
    fixture.control<QPushButton>("gatherLogsButton")->click();
    QCOMPARE(gathering.alerts(), QStringList());
    QCOMPARE(fixture.notice(), QStringLiteral("The logs could not be gathered: ") + userLog() +
                                   QStringLiteral(": Permission denied"));
}

void SupportActionsTest::aFolderThatCannotBeReadIsNamedInThePane()
{
    if (::geteuid() == 0) {
        QSKIP("root may read everything");
    }
    GatheringFixture gathering;
    PaneFixture fixture(60s);
    test::write(userLog(), "log");
    const auto closed = QStringLiteral("/Library/Logs/Corvane");
    QDir().mkpath(closed);
    ::chmod(closed.toStdString().c_str(), 0);
    fixture.open();
    fixture.control<QPushButton>("gatherLogsButton")->click();
    ::chmod(closed.toStdString().c_str(), 0755);
    QCOMPARE(gathering.alerts(), QStringList(success()));
    QCOMPARE(fixture.notice(), QStringLiteral("Not gathered, because it cannot be read: ") +
                                   closed + QStringLiteral(": Permission denied"));
}

void SupportActionsTest::theNextSuccessTakesTheNoticeAway()
{
    GatheringFixture gathering;
    PaneFixture fixture(60s);
    test::write(userLog(), "log");
    // A file that root cannot read either.
    QFile::remove(userLog());
    QFile::link(QStringLiteral("/proc/self/mem"), userLog());
    fixture.open();
    fixture.pane().gatherLogs();
    QVERIFY(fixture.notice().startsWith(QStringLiteral("The logs could not be gathered: ")));
    QFile::remove(userLog());
    test::write(userLog(), "log");
    fixture.pane().gatherLogs();
    QVERIFY(fixture.notice().isNull());
    QCOMPARE(gathering.alerts(), QStringList(success()));
}

void SupportActionsTest::withoutAnUpdaterTheButtonSaysSo()
{
    PaneFixture fixture(60s);
    fixture.open();
    auto *const button = fixture.control<QPushButton>("updateCheckButton");
    QVERIFY(!button->isEnabled());
    QVERIFY(button->toolTip().contains(QStringLiteral("is not installed")));
    QCOMPARE(button->accessibleDescription(), button->toolTip());
    fixture.pane().manualUpdateCheck(); // reports nothing
    QVERIFY(!button->isEnabled());
}

void SupportActionsTest::aManualCheckLaunchesTheInstalledUpdater()
{
    updater::make(updater::installedPath(), QStringLiteral("8"));
    PaneFixture fixture(60s);
    PaneFixture::writePreferences({{QStringLiteral("autoUpdateCheck"), false}});
    fixture.open();
    auto *const button = fixture.control<QPushButton>("updateCheckButton");
    QVERIFY(button->isEnabled());
    button->click();
    QCOMPARE(updater::waitForRuns(1),
             QStringList(updater::installedPath() + QStringLiteral("/Contents/MacOS/updater")));
    QVERIFY(button->isEnabled());
    QVERIFY(!isSpinning(fixture));
}

void SupportActionsTest::twoManualChecksLaunchTwice()
{
    updater::make(updater::installedPath(), 8);
    PaneFixture fixture(60s);
    PaneFixture::writePreferences({{QStringLiteral("autoUpdateCheck"), false}});
    fixture.open();
    fixture.pane().manualUpdateCheck();
    fixture.pane().manualUpdateCheck();
    QCOMPARE(updater::waitForRuns(2).size(), 2);
}

void SupportActionsTest::theStartUpCheckPassesTheBundlesPath()
{
    updater::make(updater::installedPath(), 8);
    PaneFixture fixture(60s);
    fixture.open();
    const auto own = platform::Bundle::main().path(); // the class is in this program here
    QCOMPARE(updater::waitForRuns(1),
             QStringList(QStringLiteral("%1/Contents/MacOS/updater [-checkpath] [%2]")
                             .arg(updater::installedPath(), own)));
}

void SupportActionsTest::theStartUpCheckWithoutAnUpdaterIsLoggedOnly()
{
    const GatheringFixture gathering;
    const auto lines = test::linesOf([] {
        PaneFixture fixture(50ms);
        fixture.open();
        fixture.waitUntilLoaded();
        fixture.close(); // waits for the workers
    });
    QCOMPARE(
        lines.count(QStringLiteral("Unable to launch Software Update - updater bundle not found.")),
        1);
    QCOMPARE(gathering.alerts(), QStringList());
    QCOMPARE(updater::runs(), QStringList());
}

void SupportActionsTest::anUpdaterThatRunsOnDoesNotHoldThePane()
{
    updater::make(updater::installedPath(), 8);
    QFile script(updater::installedPath() + QStringLiteral("/Contents/MacOS/updater"));
    QVERIFY(script.open(QIODevice::Append));
    script.write("exec sleep infinity\n");
    script.close();
    PaneFixture fixture(50ms);
    fixture.open();
    fixture.pane().manualUpdateCheck();
    QCOMPARE(updater::waitForRuns(2).size(), 2);
    fixture.waitUntilLoaded();
    fixture.close();
    QVERIFY(Ostrel_Preference_Pane::isProcessRunning(QStringLiteral("sleep")));
}

TEST_CLASS(SupportActionsTest, QApplication)
#include "SupportActionsTest.moc"
