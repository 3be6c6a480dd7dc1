// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Authorization/ZQAuthorization.h"
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QTest>

#include <array>

using platform::Authorization;

// When a pane ends the process's authorisation. In SessionLeftInSystemSettings it is a real one;
// the sandbox has no polkit, so here a stand-in takes its place, at which nobody may look: an owner
// is all that it has.
class PaneAuthorizationTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void thePaneThatIsLeftEndsIt();
    void ofTwoPanesTheLastOneEndsIt();
    void aPaneThatIsHiddenHasBeenLeft();
    void whatIsGivenToAHiddenPaneEndsWithIt();
    void aStartOrStopUnderWayKeepsIt();
    void aPaneThatWasNeverShownEndsItToo();
};

namespace {

std::weak_ptr<void> hold()
{
    alignas(Authorization) static std::array<std::byte, sizeof(Authorization)> standIn{};
    const auto owner = std::make_shared<int>();
    ZQAuthorization::sharedController().setAuthRef(
        {owner, reinterpret_cast<Authorization *>(standIn.data())});
    return owner;
}

} // namespace

void PaneAuthorizationTest::thePaneThatIsLeftEndsIt()
{
    PaneFixture fixture;
    for (int i = 0; i < 2; ++i) {
        fixture.open();
        fixture.waitUntilLoaded();
        const auto authorization = hold();
        QVERIFY(!authorization.expired());
        fixture.close();
        QVERIFY(authorization.expired());
    }
}

void PaneAuthorizationTest::ofTwoPanesTheLastOneEndsIt()
{
    PaneFixture first;
    PaneFixture second;
    first.open();
    second.open();
    const auto authorization = hold();
    first.close();
    QVERIFY(!authorization.expired());
    first.open();
    second.close();
    QVERIFY(!authorization.expired());
    first.close();
    QVERIFY(authorization.expired());
}

void PaneAuthorizationTest::aPaneThatIsHiddenHasBeenLeft()
{
    PaneFixture fixture;
    fixture.open();
    fixture.window().show();
    auto *view = fixture.window().centralWidget();
    QVERIFY(view->isVisible());
    const auto first = hold();
    view->hide();
    QVERIFY(first.expired());
    view->show();
    const auto second = hold();
    fixture.close();
    QVERIFY(second.expired());
}

void PaneAuthorizationTest::whatIsGivenToAHiddenPaneEndsWithIt()
{
    PaneFixture fixture;
    fixture.open();
    fixture.window().show();
    fixture.window().centralWidget()->hide();
    const auto late = hold(); // by a question that was open when the page was left
    QVERIFY(!late.expired());
    fixture.close();
    QVERIFY(late.expired());
}

void PaneAuthorizationTest::aStartOrStopUnderWayKeepsIt()
{
    const auto authorization = hold();
    auto operation = std::make_optional<AuthorizationUse>();
    {
        PaneFixture fixture;
        fixture.open();
        fixture.close();
    }
    QVERIFY(!authorization.expired());
    operation.reset();
    QVERIFY(authorization.expired());
}

void PaneAuthorizationTest::aPaneThatWasNeverShownEndsItToo()
{
    const auto authorization = hold();
    {
        const Ostrel_Preference_Pane pane{platform::Bundle(QString())};
        QVERIFY(!authorization.expired());
    }
    QVERIFY(authorization.expired());
}

TEST_CLASS(PaneAuthorizationTest, QApplication)
#include "PaneAuthorizationTest.moc"
