// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Shared/Tasks/TaskFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QCoreApplication>
#include <QTest>

using test::text;

class ZQTaskExExitTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theProcessEndsAtOnceAndInGoodOrder_data();
    void theProcessEndsAtOnceAndInGoodOrder();
};

void ZQTaskExExitTest::theProcessEndsAtOnceAndInGoodOrder_data()
{
    QTest::addColumn<int>("rounds");
    QTest::newRow("sleeping timers") << 3;
    QTest::newRow("due timers") << 10;
    QTest::newRow("readers") << 5;
    QTest::newRow("commands") << 3;
}

void ZQTaskExExitTest::theProcessEndsAtOnceAndInGoodOrder()
{
    QFETCH(int, rounds);
    const auto program = QCoreApplication::applicationDirPath() + text("/TaskProgram");
    for (int round = 0; round < rounds; ++round) {
        QCOMPARE(ZQTaskEx::terminationCodeFromTask(program, {text(QTest::currentDataTag())}), 0);
    }
}

TEST_CLASS(ZQTaskExExitTest, QCoreApplication)
#include "ZQTaskExExitTest.moc"
