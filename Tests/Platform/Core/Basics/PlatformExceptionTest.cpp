// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/PlatformException.h"

#include "Tests/Support/TestProgram.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <cstdio>
#include <functional>
#include <map>
#include <stdexcept>
#include <thread>

using platform::Exception;

namespace {

void printException(const Exception &exception)
{
    std::printf("%s: %s\n", qPrintable(exception.name()), qPrintable(exception.reason()));
    std::fflush(stdout);
}

[[noreturn]] void throwPlatformException()
{
    throw Exception(QStringLiteral("NSPortTimeoutException"), QStringLiteral("the port is gone"));
}

// What this program does when it is started with one of these names.
const std::map<std::string, std::function<void()>> &scenarios()
{
    static const std::map<std::string, std::function<void()>> all{
        {"platform", throwPlatformException},
        {"standard", [] { throw std::out_of_range("too far"); }},
        {"number", [] { throw 5; }},
        {"thread", [] { std::thread(throwPlatformException).join(); }},
        {"event",
         [] {
             int count = 0;
             QCoreApplication application(count, nullptr);
             QTimer::singleShot(0, throwPlatformException);
             QCoreApplication::exec();
         }},
        {"none", [] { std::terminate(); }},
        {"removed",
         [] {
             platform::setUncaughtExceptionHandler(nullptr);
             throwPlatformException();
         }},
        {"throwing handler",
         [] {
             platform::setUncaughtExceptionHandler([](const Exception &exception) {
                 printException(exception);
                 throw std::runtime_error("again");
             });
             throwPlatformException();
         }},
        {"second thread",
         [] {
             // The handler waits for a thread that dies of an exception of its own.
             platform::setUncaughtExceptionHandler([](const Exception &exception) {
                 printException(exception);
                 std::thread([] { throw std::runtime_error("second"); }).join();
             });
             throwPlatformException();
         }},
    };
    return all;
}

struct Outcome {
    QByteArray output;
    bool aborted = false;
};

Outcome run(const char *scenario)
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("PlatformExceptionTest"), QString::fromLatin1(scenario)});
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return {process.readAllStandardOutput(),
            process.exitStatus() == QProcess::CrashExit && process.exitCode() == SIGABRT};
}

} // namespace

class PlatformExceptionTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void anExceptionHasANameAndAReason();
    void anUncaughtExceptionIsHandedOverBeforeTheEnd_data();
    void anUncaughtExceptionIsHandedOverBeforeTheEnd();
};

void PlatformExceptionTest::anExceptionHasANameAndAReason()
{
    try {
        throw Exception(QStringLiteral("Name"), QStringLiteral("Größe"));
    } catch (const std::exception &exception) {
        QCOMPARE(QString::fromUtf8(exception.what()), QStringLiteral("Größe"));
        const auto *known = dynamic_cast<const Exception *>(&exception);
        QVERIFY(known != nullptr);
        QCOMPARE(known->name(), QStringLiteral("Name"));
        QCOMPARE(known->reason(), QStringLiteral("Größe"));
    }
}

void PlatformExceptionTest::anUncaughtExceptionIsHandedOverBeforeTheEnd_data()
{
    QTest::addColumn<QByteArray>("output");
    const QByteArray own("NSPortTimeoutException: the port is gone\n");
    QTest::newRow("platform") << own;
    QTest::newRow("standard") << QByteArray("std::out_of_range: too far\n");
    QTest::newRow("number") << QByteArray("Unknown: Unknown exception\n");
    QTest::newRow("thread") << own;
    QTest::newRow("event") << own;
    QTest::newRow("none") << QByteArray();
    QTest::newRow("removed") << QByteArray();
    QTest::newRow("throwing handler") << own;
    QTest::newRow("second thread") << own;
}

void PlatformExceptionTest::anUncaughtExceptionIsHandedOverBeforeTheEnd()
{
    const auto outcome = run(QTest::currentDataTag());
    QVERIFY(outcome.aborted);
    QTEST(outcome.output, "output");
}

static int run(int argc, char **argv)
{
    const auto scenario = argc == 2 ? scenarios().find(argv[1]) : scenarios().end();
    if (scenario != scenarios().end()) {
        platform::setUncaughtExceptionHandler(printException);
        scenario->second();
        return 0;
    }
    QCoreApplication application(argc, argv);
    PlatformExceptionTest test;
    return QTest::qExec(&test, argc, argv);
}

TEST_FUNCTION(PlatformExceptionTest, run)
#include "PlatformExceptionTest.moc"
