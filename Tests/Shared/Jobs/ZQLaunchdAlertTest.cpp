// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Jobs/ZQLaunchd.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMainWindow>
#include <QTest>

class ZQLaunchdAlertTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aPercentSignInAPathIsToldAsItIs();
};

void ZQLaunchdAlertTest::aPercentSignInAPathIsToldAsItIs()
{
    const test::EnvironmentVariable home("HOME", "/tmp/100%@ %d");
    const auto library = ZQLocalPaths::libraryDirectory(Domain::User);
    QVERIFY(library.contains(QStringLiteral("100%@ %d")));
    QVERIFY(QDir().mkpath(library));
    const auto folder = library + QStringLiteral("/LaunchAgents");
    QFile inItsPlace(folder);
    QVERIFY(inItsPlace.open(QIODevice::WriteOnly));
    QMainWindow window;
    window.show();
    QString told;
    const test::AlertWatcher watcher([&told](platform::AlertPanel &alert) {
        told = alert.description().informativeText;
        test::click(alert, "defaultButton");
    });
    const auto started = test::onWorker([] {
        const QVariantMap settings{{QStringLiteral("Label"), QStringLiteral("com.corvane.Test")},
                                   {QStringLiteral("Program"), QStringLiteral("/bin/true")}};
        return ZQLaunchd::startJob(QStringLiteral("com.corvane.Test"), settings, Domain::User,
                                   JobKind::Agent, ShouldAuth::No);
    });
    QVERIFY(!started);
    QCOMPARE(told, QStringLiteral("Please check you have correct permissions for the directory ") +
                       folder + QLatin1Char('.'));
}

TEST_CLASS(ZQLaunchdAlertTest, QApplication)
#include "ZQLaunchdAlertTest.moc"
