// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Bundles/UserDefaults.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Shared/Alerts/ZQAlert.h"
#include "Shared/Log/ZQLog.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QTest>

using platform::AlertPanel;
using Block = ZQAlert::Block;

namespace {

qint64 ask(const QString &binding)
{
    return ZQAlert::alertSheetWithMessageText(QStringLiteral("Headline"), {}, {}, {}, {}, nullptr,
                                              nullptr, {}, Block::Yes, nullptr, binding);
}

QCheckBox *box(const AlertPanel &alert)
{
    return alert.findChild<QCheckBox *>(QStringLiteral("suppressionButton"));
}

void toggle(AlertPanel &alert)
{
    QTest::keyClick(box(alert), Qt::Key_Space);
}

QString preferencesFile()
{
    return QDir::homePath() + QStringLiteral("/Library/Preferences/SharedAlertsTests.plist");
}

QVariantMap preferences()
{
    return platform::dictionaryFromFile(preferencesFile()).value_or(QVariantMap());
}

} // namespace

class ZQAlertSuppressionTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void withoutBindingThereIsNoBox();
    void tickingWritesTrueAtOnce();
    void untickingWritesFalseAtOnce();
    void theBoxShowsTheStoredValue_data();
    void theBoxShowsTheStoredValue();
    void anAlertWithoutATickWritesNothing();
    void theBindingIsAKeyPath();
    void otherPreferencesAreKept();
    void aWorkersAlertIsBoundToo();
    void anEmptyKeyPathIsSurvived();
    void aPreferenceThatCannotBeWrittenIsLogged();
};

void ZQAlertSuppressionTest::init()
{
    QDir().mkpath(QFileInfo(preferencesFile()).path());
}

void ZQAlertSuppressionTest::cleanup()
{
    QFile::remove(preferencesFile());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void ZQAlertSuppressionTest::withoutBindingThereIsNoBox()
{
    bool hasBox = true;
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        hasBox = box(alert) != nullptr;
        test::click(alert, "defaultButton");
    });
    QCOMPARE(ask({}), 1);
    QVERIFY(!hasBox);
}

void ZQAlertSuppressionTest::tickingWritesTrueAtOnce()
{
    QVariant before;
    QVariant after;
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        before = preferences().value(QStringLiteral("suppress"));
        toggle(alert);
        after = preferences().value(QStringLiteral("suppress"));
        test::click(alert, "defaultButton");
    });
    QCOMPARE(ask(QStringLiteral("suppress")), 1);
    QVERIFY(!before.isValid());
    QCOMPARE(after, QVariant(true));
    QCOMPARE(platform::UserDefaults::standardUserDefaults().filePath(), preferencesFile());
}

void ZQAlertSuppressionTest::untickingWritesFalseAtOnce()
{
    QVariant after;
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        toggle(alert);
        toggle(alert);
        after = preferences().value(QStringLiteral("suppress"));
        test::click(alert, "defaultButton");
    });
    ask(QStringLiteral("suppress"));
    QCOMPARE(after, QVariant(false));
}

void ZQAlertSuppressionTest::theBoxShowsTheStoredValue_data()
{
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<bool>("ticked");
    QTest::newRow("true") << QVariant(true) << true;
    QTest::newRow("false") << QVariant(false) << false;
    QTest::newRow("one") << QVariant(1LL) << true;
    QTest::newRow("zero") << QVariant(0LL) << false;
    QTest::newRow("dictionary") << QVariant(QVariantMap()) << false;
    QTest::newRow("nothing") << QVariant() << false;
}

void ZQAlertSuppressionTest::theBoxShowsTheStoredValue()
{
    QFETCH(const QVariant, stored);
    QFETCH(const bool, ticked);
    if (stored.isValid()) {
        QVERIFY(platform::writeDictionaryToFile({{QStringLiteral("suppress"), stored}},
                                                preferencesFile()));
    }
    bool shown = !ticked;
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        shown = box(alert)->isChecked();
        test::click(alert, "defaultButton");
    });
    ask(QStringLiteral("suppress"));
    QCOMPARE(shown, ticked);
}

void ZQAlertSuppressionTest::anAlertWithoutATickWritesNothing()
{
    const test::AlertWatcher watcher(
        [](AlertPanel &alert) { test::click(alert, "defaultButton"); });
    ask(QStringLiteral("suppress"));
    QVERIFY(!QFile::exists(preferencesFile()));
}

void ZQAlertSuppressionTest::theBindingIsAKeyPath()
{
    const test::AlertWatcher watcher([](AlertPanel &alert) {
        toggle(alert);
        test::click(alert, "defaultButton");
    });
    ask(QStringLiteral("alerts.suppress"));
    QCOMPARE(preferences().value(QStringLiteral("alerts")).toMap(),
             QVariantMap({{QStringLiteral("suppress"), true}}));
}

void ZQAlertSuppressionTest::otherPreferencesAreKept()
{
    QVERIFY(platform::writeDictionaryToFile({{QStringLiteral("other"), QStringLiteral("kept")}},
                                            preferencesFile()));
    const test::AlertWatcher watcher([](AlertPanel &alert) {
        toggle(alert);
        test::click(alert, "defaultButton");
    });
    ask(QStringLiteral("suppress"));
    QCOMPARE(preferences(), QVariantMap({{QStringLiteral("other"), QStringLiteral("kept")},
                                         {QStringLiteral("suppress"), true}}));
}

void ZQAlertSuppressionTest::aWorkersAlertIsBoundToo()
{
    const test::AlertWatcher watcher([](AlertPanel &alert) {
        toggle(alert);
        test::click(alert, "defaultButton");
    });
    QCOMPARE(test::onWorker([] { return ask(QStringLiteral("suppress")); }), 1);
    QCOMPARE(preferences().value(QStringLiteral("suppress")), QVariant(true));
}

void ZQAlertSuppressionTest::anEmptyKeyPathIsSurvived()
{
    const test::AlertWatcher watcher([](AlertPanel &alert) {
        toggle(alert);
        test::click(alert, "defaultButton");
    });
    QCOMPARE(ask(QStringLiteral("")), 1);
    QCOMPARE(ask(QStringLiteral("...")), 1);
    QCOMPARE(watcher.count(), 2);
}

void ZQAlertSuppressionTest::aPreferenceThatCannotBeWrittenIsLogged()
{
    ZQLog::createNewLog();
    // "alerts" is no dictionary, so nothing can be set inside it.
    const QVariantMap values{{QStringLiteral("alerts"), QStringLiteral("text")}};
    QVERIFY(platform::writeDictionaryToFile(values, preferencesFile()));
    const test::AlertWatcher watcher([](AlertPanel &alert) {
        toggle(alert);
        test::click(alert, "defaultButton");
    });
    QCOMPARE(ask(QStringLiteral("alerts.suppress")), 1);
    QCOMPARE(preferences(), values);
    ZQLog::finishWriting();
    QFile log(ZQLog::availableLogs().value(0));
    QVERIFY(log.open(QIODevice::ReadOnly));
    QVERIFY(log.readAll().contains("Alert error: unable to set \"alerts.suppress\" in " +
                                   preferencesFile().toUtf8() + '\n'));
}

TEST_CLASS(ZQAlertSuppressionTest, QApplication)
#include "ZQAlertSuppressionTest.moc"
