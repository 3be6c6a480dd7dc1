// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Support/Faults/Faults.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QComboBox>
#include <QTest>

#include <cerrno>

// The pane where the system has no thread to give.
class NoThreadsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void thePaneOpensAndHasLoaded();
    void aStartOrStopEndsAsOneThatIsRefused();
};

namespace {

const test::Fault noThreads{test::Thread, 1, test::Outcome::Fails, EAGAIN, true, true};

} // namespace

// The D-Bus library's thread, which that cannot do without, is there from now on.
void NoThreadsTest::initTestCase()
{
    PaneFixture fixture(std::chrono::seconds(0));
    fixture.open();
    fixture.waitUntilLoaded();
}

void NoThreadsTest::thePaneOpensAndHasLoaded()
{
    PaneFixture fixture;
    const test::Faults faults(noThreads);
    fixture.open();
    QVERIFY(test::Faults::haveStruck());
    QVERIFY(!fixture.pane().isLoading());
    QCOMPARE(fixture.control<QComboBox>("networkInterfacePopUp")->count(), 1);
    fixture.close();
}

void NoThreadsTest::aStartOrStopEndsAsOneThatIsRefused()
{
    for (const auto isInstalled : {false, true}) {
        PaneFixture fixture;
        if (isInstalled) {
            PaneFixture::installJob();
        }
        fixture.open();
        fixture.waitUntilLoaded();
        fixture.showStatusOnly(isInstalled ? QStringLiteral("Running")
                                           : QStringLiteral("Not loaded"));
        fixture.pane().updateEnabledStatus();
        fixture.waitUntilIdle();
        const auto before = fixture.masterSwitch().isOn();
        QCOMPARE(before, isInstalled);
        const test::Faults faults(noThreads);
        fixture.masterSwitch().setOn(!before, Animated::No);
        QVERIFY(test::Faults::haveStruck());
        QTRY_VERIFY(fixture.masterSwitch().enabled() && fixture.masterSwitch().isOn() == before);
        QVERIFY(!fixture.pane().isProcessing());
        fixture.close();
    }
}

TEST_CLASS(NoThreadsTest, QApplication)
#include "NoThreadsTest.moc"
