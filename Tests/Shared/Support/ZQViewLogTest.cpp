// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/FileName.h"
#include "Shared/Support/ZQTroubleshootingUtils.h"
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Shared/Support/GatheringFixture.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QDesktopServices>
#include <QTest>
#include <QUrl>

using test::GatheringFixture;

namespace {

QString logPath(const QString &name)
{
    return GatheringFixture::home(QStringLiteral("Library/Logs/Corvane/") + name);
}

} // namespace

// Logs that are opened for viewing.
class ZQViewLogTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void theCurrentLogIsOpened();
    void theTaskLogIsOpened();
    void aLogOfTheComputerDoesNotCount();
    void aMissingLogIsToldInAModalAlert();
    void aMissingTaskLogIsToldInAModalAlert();
    void oddNamesAreOpened_data();
    void oddNamesAreOpened();
    void aWorkerMayOpenALog();
    void withoutAnApplicationForItTheResultIsFalse();

public Q_SLOTS:
    void keepUrl(const QUrl &url) { m_opened << url; }

private:
    QList<QUrl> m_opened;
};

void ZQViewLogTest::init()
{
    m_opened.clear();
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "keepUrl");
}

void ZQViewLogTest::cleanup()
{
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
}

void ZQViewLogTest::theCurrentLogIsOpened()
{
    GatheringFixture fixture;
    test::write(logPath(QStringLiteral("Ostrel.1.log")), "log");
    test::write(logPath(QStringLiteral("Ostrel.2.log")), "older");
    QVERIFY(ZQTroubleshootingUtils::viewLogForApp(QStringLiteral("Ostrel")));
    QCOMPARE(m_opened, QList<QUrl>{QUrl::fromLocalFile(logPath(QStringLiteral("Ostrel.1.log")))});
    QCOMPARE(fixture.alerts(), QStringList());
}

void ZQViewLogTest::theTaskLogIsOpened()
{
    GatheringFixture fixture;
    test::write(logPath(QStringLiteral("Ostrel.1.task.log")), "log");
    QVERIFY(ZQTroubleshootingUtils::viewTaskLogForApp(QStringLiteral("Ostrel")));
    QCOMPARE(m_opened,
             QList<QUrl>{QUrl::fromLocalFile(logPath(QStringLiteral("Ostrel.1.task.log")))});
    QCOMPARE(fixture.alerts(), QStringList());
}

void ZQViewLogTest::aLogOfTheComputerDoesNotCount()
{
    GatheringFixture fixture;
    test::write(QStringLiteral("/Library/Logs/Corvane/Ostrel.1.log"), "log");
    QVERIFY(!ZQTroubleshootingUtils::viewLogForApp(QStringLiteral("Ostrel")));
    QCOMPARE(fixture.alerts().size(), 1);
    QVERIFY(m_opened.isEmpty());
}

void ZQViewLogTest::aMissingLogIsToldInAModalAlert()
{
    GatheringFixture fixture;
    QVERIFY(!ZQTroubleshootingUtils::viewLogForApp(QStringLiteral("Ostrel")));
    QCOMPARE(fixture.alerts(),
             QStringList(test::modalAlert(
                 QStringLiteral("No log found"),
                 QStringLiteral("You must perform a task before viewing the log."))));
}

void ZQViewLogTest::aMissingTaskLogIsToldInAModalAlert()
{
    GatheringFixture fixture;
    test::write(logPath(QStringLiteral("Ostrel.1.log")), "log");
    QVERIFY(!ZQTroubleshootingUtils::viewTaskLogForApp(QStringLiteral("Ostrel")));
    QCOMPARE(fixture.alerts(),
             QStringList(test::modalAlert(
                 QStringLiteral("No log found"),
                 QStringLiteral("You must run the application as a task (e.g. through Runvale) "
                                "before viewing a log."))));
    QVERIFY(m_opened.isEmpty());
}

void ZQViewLogTest::oddNamesAreOpened_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const auto &odd : test::oddNames()) {
        const auto length = std::min<std::size_t>(odd.name.size(), 249);
        QTest::newRow(odd.why) << QByteArray::fromStdString(odd.name.substr(0, length));
    }
}

void ZQViewLogTest::oddNamesAreOpened()
{
    QFETCH(QByteArray, name);
    const GatheringFixture fixture;
    test::write(logPath(QStringLiteral("keep")), "keep");
    const auto path = logPath(QString()).toStdString() + name.toStdString() + ".1.log";
    test::writeFile(path);
    QVERIFY(ZQTroubleshootingUtils::viewLogForApp(platform::fileNameFromBytes(name)));
    QCOMPARE(m_opened.size(), 1);
    QCOMPARE(QByteArray::fromPercentEncoding(m_opened.first().toEncoded()),
             QByteArray("file://") + QByteArray::fromStdString(path));
}

void ZQViewLogTest::aWorkerMayOpenALog()
{
    const GatheringFixture fixture;
    test::write(logPath(QStringLiteral("Ostrel.1.log")), "log");
    QVERIFY(test::onWorker(
        [] { return ZQTroubleshootingUtils::viewLogForApp(QStringLiteral("Ostrel")); }));
    QCOMPARE(m_opened.size(), 1);
}

void ZQViewLogTest::withoutAnApplicationForItTheResultIsFalse()
{
    const GatheringFixture fixture;
    test::write(logPath(QStringLiteral("Ostrel.1.log")), "log");
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
    QVERIFY(!ZQTroubleshootingUtils::viewLogForApp(QStringLiteral("Ostrel")));
}

TEST_CLASS(ZQViewLogTest, QApplication)
#include "ZQViewLogTest.moc"
