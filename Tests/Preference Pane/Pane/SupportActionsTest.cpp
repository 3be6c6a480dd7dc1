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
#include <QDBusConnection>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QUrl>

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

QString gatheredNotice()
{
    return QStringLiteral("The logs are gathered in “Ostrel Logs.zip”.");
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

// The desktop's file manager, as far as others ask it to show a file.
class FileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")
public:
    FileManager()
        : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                              QStringLiteral("file manager")))
    {
        m_isThere = m_bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), this,
                                         QDBusConnection::ExportAllSlots) &&
                    m_bus.registerService(QStringLiteral("org.freedesktop.FileManager1"));
    }
    ~FileManager() override
    {
        m_bus.unregisterService(QStringLiteral("org.freedesktop.FileManager1"));
        QDBusConnection::disconnectFromBus(m_bus.name());
    }
    FileManager(const FileManager &) = delete;
    FileManager &operator=(const FileManager &) = delete;

    bool isThere() const { return m_isThere; }
    QStringList shown() const { return m_shown; }

public Q_SLOTS:
    void ShowItems(const QStringList &items, const QString & /*startupId*/) // NOLINT(*-naming)
    {
        m_shown << items;
    }

private:
    QDBusConnection m_bus;
    bool m_isThere = false;
    QStringList m_shown;
};

// Stands for the desktop's way to open a folder.
class FolderOpener : public QObject {
    Q_OBJECT
public:
    FolderOpener() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~FolderOpener() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }
    FolderOpener(const FolderOpener &) = delete;
    FolderOpener &operator=(const FolderOpener &) = delete;

    QList<QUrl> opened() const { return m_opened; }

public Q_SLOTS:
    void open(const QUrl &url) { m_opened << url; }

private:
    QList<QUrl> m_opened;
};

// The buttons for gathering logs and for checking for updates.
class SupportActionsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void gatherLogsPutsAnArchiveOnTheDesktop();
    void theArchiveIsShownInItsFolder();
    void withoutAFileManagerThatShowsItTheFolderIsOpened();
    void theNoticeSaysWhyPackingFailed();
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

    void withoutAnUpdaterButtonAndCheckBoxSayWhy();
    void thePaneLooksForTheUpdaterAgainWhenItIsShown();
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
    QCOMPARE(fixture.notice(), gatheredNotice());
}

void SupportActionsTest::theArchiveIsShownInItsFolder()
{
    const GatheringFixture gathering;
    PaneFixture fixture(60s);
    test::write(userLog(), "log");
    FileManager manager;
    QVERIFY(manager.isThere());
    fixture.open();
    fixture.pane().gatherLogs();
    auto *const button = fixture.control<QPushButton>("noticeActionButton");
    QVERIFY(button->isVisible());
    QCOMPARE(button->text(), QStringLiteral("Show in Folder"));
    button->click();
    QTRY_COMPARE(manager.shown(),
                 QStringList(QUrl::fromLocalFile(
                                 GatheringFixture::desktop(QStringLiteral("Ostrel Logs.zip")))
                                 .toString(QUrl::FullyEncoded)));
}

void SupportActionsTest::withoutAFileManagerThatShowsItTheFolderIsOpened()
{
    const GatheringFixture gathering;
    PaneFixture fixture(60s);
    test::write(userLog(), "log");
    FolderOpener opener;
    fixture.open();
    fixture.pane().gatherLogs();
    fixture.control<QPushButton>("noticeActionButton")->click();
    QTRY_COMPARE(opener.opened(), QList<QUrl>{QUrl::fromLocalFile(GatheringFixture::desktop())});
}

void SupportActionsTest::theNoticeSaysWhyPackingFailed()
{
    GatheringFixture gathering;
    PaneFixture fixture(60s);
    test::write(userLog(), "log");
    // A file in its place stops root, too.
    QVERIFY(QDir().rmdir(GatheringFixture::desktop()));
    test::write(GatheringFixture::desktop(), "no folder");
    fixture.open();
    fixture.pane().gatherLogs();
    QFile::remove(GatheringFixture::desktop());
    QCOMPARE(gathering.alerts(),
             QStringList(test::modalAlert(QStringLiteral("Logs could not be gathered"),
                                          QStringLiteral("Please check your file permissions."))));
    QVERIFY2(fixture.notice().startsWith(QStringLiteral("The logs could not be gathered: ")) &&
                 fixture.notice().endsWith(QStringLiteral("Not a directory")),
             qPrintable(fixture.notice()));
    QVERIFY(!fixture.control<QPushButton>("noticeActionButton")->isVisible());
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
    QCOMPARE(fixture.notice(), gatheredNotice());
    QCOMPARE(gathering.alerts(), QStringList(success()));
}

void SupportActionsTest::withoutAnUpdaterButtonAndCheckBoxSayWhy()
{
    GatheringFixture gathering;
    PaneFixture fixture(60s);
    fixture.open();
    auto *const hint = fixture.control<QLabel>("autoUpdateHint");
    QVERIFY(hint->isVisible());
    QVERIFY(hint->text().contains(QStringLiteral("is not installed")));
    auto *const button = fixture.control<QPushButton>("updateCheckButton");
    for (const auto *control :
         {static_cast<QWidget *>(button), fixture.control<QWidget>("autoUpdateCheck")}) {
        QCOMPARE(control->toolTip(), hint->text());
        QCOMPARE(control->accessibleDescription(), hint->text());
        QVERIFY(control->isEnabled());
    }
    QVERIFY(fixture.notice().isNull());
    button->click();
    QCOMPARE(fixture.notice(), hint->text());
    QCOMPARE(gathering.alerts(), QStringList()); // the check itself reports nothing
    QVERIFY(button->isEnabled());
}

void SupportActionsTest::thePaneLooksForTheUpdaterAgainWhenItIsShown()
{
    PaneFixture fixture(60s);
    fixture.open();
    auto *const hint = fixture.control<QLabel>("autoUpdateHint");
    auto *const button = fixture.control<QPushButton>("updateCheckButton");
    fixture.window().hide();
    updater::make(updater::installedPath(), 8);
    fixture.window().show();
    QVERIFY(hint->isHidden());
    QVERIFY(button->toolTip().isEmpty());
    QVERIFY(button->accessibleDescription().isEmpty());
    fixture.window().hide();
    updater::remove(updater::installedPath());
    fixture.window().show();
    QVERIFY(hint->isVisible());
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
