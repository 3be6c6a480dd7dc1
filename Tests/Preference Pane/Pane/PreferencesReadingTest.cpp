// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Ostrel/ListenerPreferences.h"
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QLineEdit>
#include <QTest>

#include <array>
#include <limits>

namespace {

struct Box {
    const char *key;
    const char *control;
    bool onByDefault;
};

constexpr std::array boxes{
    Box{"autoUpdateCheck", "autoUpdateCheck", true},
    Box{"volChangeFeedback", "volFeedbackCheck", true},
    Box{"customPortSet", "networkCustomPortCheck", false},
    Box{"disableBonjour", "networkDisableBonjour", false},
    Box{"confirmConnections", "securityConfirmConnections", false},
    Box{"limitToOneConnection", "securityAllowOneConnection", false},
};

} // namespace

// What the controls show for what the listener preferences file holds.
class PreferencesReadingTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aBoxShowsWhatTheFileHolds_data();
    void aBoxShowsWhatTheFileHolds();
    void withoutAFileEveryControlShowsItsDefault();
    void aFileThatIsNoDictionaryShowsTheDefaults_data();
    void aFileThatIsNoDictionaryShowsTheDefaults();
    void aStoredPortShowsOnlyAboveZero_data();
    void aStoredPortShowsOnlyAboveZero();
    void aFifoInPlaceOfTheFileDoesNotBlock();
};

void PreferencesReadingTest::aBoxShowsWhatTheFileHolds_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("control");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("shown");
    struct Case {
        const char *name;
        QVariant value;
        bool onWhereDefaultIsOn;
        bool onWhereDefaultIsOff;
    };
    const std::array cases{
        Case{"missing", {}, true, false},
        Case{"0", 0, false, false},
        Case{"1", 1, true, true},
        Case{"2", 2, true, false},
        Case{"-1", -1, true, false},
        Case{"true", true, true, true},
        Case{"false", false, false, false},
        Case{"1.0", 1.0, true, true},
        Case{"0.0", 0.0, false, false},
        Case{"beyond 63 bits", std::numeric_limits<qulonglong>::max(), true, false},
        Case{"text 0", QStringLiteral("0"), true, false},
        Case{"text 1", QStringLiteral("1"), true, false},
        Case{"array", QVariantList{0, 1}, true, false},
        Case{"dictionary", QVariantMap{{QStringLiteral("a"), 0}}, true, false},
        Case{"data", QByteArray("\0", 1), true, false},
        Case{"date", QDateTime::fromSecsSinceEpoch(1000000000), true, false},
    };
    for (const auto &box : boxes) {
        for (const auto &one : cases) {
            QTest::newRow(qPrintable(
                QStringLiteral("%1 = %2").arg(QLatin1String(box.key), QLatin1String(one.name))))
                << QString::fromLatin1(box.key) << QString::fromLatin1(box.control) << one.value
                << (box.onByDefault ? one.onWhereDefaultIsOn : one.onWhereDefaultIsOff);
        }
    }
}

void PreferencesReadingTest::aBoxShowsWhatTheFileHolds()
{
    QFETCH(QString, key);
    QFETCH(QString, control);
    QFETCH(QVariant, value);
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferences(value.isValid() ? QVariantMap{{key, value}} : QVariantMap());
    fixture.open();
    QTEST(fixture.control<QCheckBox>(qPrintable(control))->isChecked(), "shown");
}

void PreferencesReadingTest::withoutAFileEveryControlShowsItsDefault()
{
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    for (const auto &box : boxes) {
        QCOMPARE(fixture.control<QCheckBox>(box.control)->isChecked(), box.onByDefault);
    }
    QCOMPARE(fixture.control<QLineEdit>("networkCustomPortText")->text(), QStringLiteral("24780"));
    QCOMPARE(fixture.control<QComboBox>("networkInterfacePopUp")->currentText(),
             QStringLiteral("Any (recommended)"));
}

void PreferencesReadingTest::aFileThatIsNoDictionaryShowsTheDefaults_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("autoUpdateCheck = 0\n");
    QTest::newRow("cut off") << QByteArray(
        "<plist version=\"1.0\"><dict><key>autoUpdateCheck</key><integer>0</inte");
    QTest::newRow("an array") << QByteArray(
        "<plist version=\"1.0\"><array><integer>0</integer></array></plist>");
    QTest::newRow("binary rubbish") << QByteArray("bplist00\xff\xff\xff\xff\xff\xff\xff\xff", 16);
}

void PreferencesReadingTest::aFileThatIsNoDictionaryShowsTheDefaults()
{
    QFETCH(QByteArray, bytes);
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferencesBytes(bytes);
    fixture.open();
    for (const auto &box : boxes) {
        QCOMPARE(fixture.control<QCheckBox>(box.control)->isChecked(), box.onByDefault);
    }
}

void PreferencesReadingTest::aStoredPortShowsOnlyAboveZero_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("8080") << QVariant(8080) << QStringLiteral("8080");
    QTest::newRow("1") << QVariant(1) << QStringLiteral("1");
    QTest::newRow("70000") << QVariant(70000) << QStringLiteral("70000");
    QTest::newRow("0") << QVariant(0) << QStringLiteral("24780");
    QTest::newRow("-5") << QVariant(-5) << QStringLiteral("24780");
    QTest::newRow("text") << QVariant(QStringLiteral("80")) << QStringLiteral("24780");
    QTest::newRow("array") << QVariant(QVariantList{80}) << QStringLiteral("24780");
}

void PreferencesReadingTest::aStoredPortShowsOnlyAboveZero()
{
    QFETCH(QVariant, value);
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferences({{QStringLiteral("customPort"), value}});
    fixture.open();
    QTEST(fixture.control<QLineEdit>("networkCustomPortText")->text(), "text");
}

void PreferencesReadingTest::aFifoInPlaceOfTheFileDoesNotBlock()
{
    PaneFixture fixture(std::chrono::seconds(60));
    QCOMPARE(QProcess::execute(QStringLiteral("mkfifo"), {PaneFixture::preferencesPath()}), 0);
    fixture.open();
    QVERIFY(fixture.control<QCheckBox>("autoUpdateCheck")->isChecked());
}

TEST_CLASS(PreferencesReadingTest, QApplication)
#include "PreferencesReadingTest.moc"
