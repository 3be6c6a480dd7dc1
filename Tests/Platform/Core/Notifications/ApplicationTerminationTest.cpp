// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Notifications/NotificationCenter.h"
#include "Tests/Support/TestProgram.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <vector>

// Who tells that the application ends.
class ApplicationTerminationTest : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    static std::vector<QThread *> posts;

private Q_SLOTS:
    void theEndOfTheEventLoopIsToldOnceOnTheMainThread();
};

std::vector<QThread *> ApplicationTerminationTest::posts;

void ApplicationTerminationTest::theEndOfTheEventLoopIsToldOnceOnTheMainThread()
{
    QVERIFY(posts.empty());
    QTimer::singleShot(0, QCoreApplication::instance(), &QCoreApplication::quit);
    QCoreApplication::exec();
    QCOMPARE(posts, std::vector<QThread *>{QCoreApplication::instance()->thread()});
}

static int run(int argc, char **argv)
{
    const auto observe = [] {
        platform::NotificationCenter::defaultCenter().addObserver(
            platform::applicationWillTerminateNotification, [](const platform::Notification &) {
                ApplicationTerminationTest::posts.push_back(QThread::currentThread());
            });
    };
    int failures = 0;
    {
        observe(); // before there is an application
        QCoreApplication application(argc, argv);
        ApplicationTerminationTest test;
        failures += QTest::qExec(&test, argc, argv);
    }
    ApplicationTerminationTest::posts.clear();
    QCoreApplication second(argc, argv); // with an application, and another one
    ApplicationTerminationTest test;
    return failures + QTest::qExec(&test, argc, argv);
}

TEST_FUNCTION(ApplicationTerminationTest, run)
#include "ApplicationTerminationTest.moc"
