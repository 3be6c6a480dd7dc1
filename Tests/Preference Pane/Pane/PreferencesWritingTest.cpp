// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Alerts/AlertPanel.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimeZone>
#include <QTimer>

#include <unistd.h>

namespace {
const QString selectedMACAddress = QStringLiteral("selectedMACAddress");
const QString customPort = QStringLiteral("customPort");
} // namespace

// What a change of a control leaves in the listener preferences file.
class PreferencesWritingTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aHomeWithoutAPreferencesFolderGetsOne();
    void theFirstSaveCreatesTheFileWithAllKeysButTheAddress();
    void everyBoxWritesItsStateAsAnInteger_data();
    void everyBoxWritesItsStateAsAnInteger();
    void aChosenInterfaceIsWrittenAndAnyRemovesTheKey();
    void unknownKeysAndTheLastRunVersionSurvive();
    void anEmptyPortFieldStoresZero();
    void aPortIsStoredAsItComes_data();
    void aPortIsStoredAsItComes();
    void typingAPortSavesOnceTypingPauses();
    void aPortTypedJustBeforeClosingIsSaved();
    void loadingThePaneDoesNotSave();
    void savingEnablesThePortFieldAndLeavesSwitchAndLine();
    void theFileIsAnXmlPropertyListReplacedAtomically();
    void aDamagedFileIsReplacedAndKeptBeside();
    void aReadOnlyFileInAWritableFolderIsReplaced();
    void inAnUnwritableFolderOneRequestIsMadeAndTheAlertNamesTheFolder();
    void aFailedSaveKeepsTheControlsAndDoesNotRefresh();
};

void PreferencesWritingTest::aHomeWithoutAPreferencesFolderGetsOne()
{
    PaneFixture fixture(std::chrono::seconds(60));
    QVERIFY(QDir(ZQLocalPaths::libraryDirectory(Domain::User)).removeRecursively());
    fixture.open();
    fixture.control<QCheckBox>("securityConfirmConnections")->click();
    QCOMPARE(PaneFixture::preferences().value(QStringLiteral("confirmConnections")).toInt(), 1);
    QCOMPARE(QFileInfo(PaneFixture::preferencesFolder()).permissions() & QFile::ReadOther,
             QFile::Permissions());
}

void PreferencesWritingTest::theFirstSaveCreatesTheFileWithAllKeysButTheAddress()
{
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    fixture.pane().savePrefs();
    const QVariantMap expected{
        {QStringLiteral("autoUpdateCheck"), 1},     {QStringLiteral("volChangeFeedback"), 1},
        {QStringLiteral("customPortSet"), 0},       {customPort, 24780},
        {QStringLiteral("disableBonjour"), 0},      {QStringLiteral("confirmConnections"), 0},
        {QStringLiteral("limitToOneConnection"), 0}};
    const QVariantMap written = PaneFixture::preferences();
    QCOMPARE(written.keys(), expected.keys());
    for (const auto &key : written.keys()) {
        QCOMPARE(written.value(key).userType(), static_cast<int>(QMetaType::LongLong));
        QCOMPARE(written.value(key).toLongLong(), expected.value(key).toLongLong());
    }
}

void PreferencesWritingTest::everyBoxWritesItsStateAsAnInteger_data()
{
    QTest::addColumn<QString>("control");
    QTest::addColumn<QString>("key");
    const auto row = [](const char *control, const char *key) {
        QTest::newRow(key) << QString::fromLatin1(control) << QString::fromLatin1(key);
    };
    row("autoUpdateCheck", "autoUpdateCheck");
    row("volFeedbackCheck", "volChangeFeedback");
    row("networkCustomPortCheck", "customPortSet");
    row("networkDisableBonjour", "disableBonjour");
    row("securityConfirmConnections", "confirmConnections");
    row("securityAllowOneConnection", "limitToOneConnection");
}

void PreferencesWritingTest::everyBoxWritesItsStateAsAnInteger()
{
    QFETCH(QString, control);
    QFETCH(QString, key);
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    auto *box = fixture.control<QCheckBox>(qPrintable(control));
    for (int click = 0; click < 2; ++click) {
        box->click();
        QCOMPARE(PaneFixture::preferences().value(key), QVariant(box->isChecked() ? 1LL : 0LL));
    }
}

void PreferencesWritingTest::aChosenInterfaceIsWrittenAndAnyRemovesTheKey()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferences({{QStringLiteral("mine"), 5}});
    fixture.open();
    auto *menu = fixture.control<QComboBox>("networkInterfacePopUp");
    menu->addItem(QStringLiteral("Ethernet - eth0"), QStringLiteral("0a:1B:2c:3D:4e:5F"));
    menu->setCurrentIndex(1);
    fixture.pane().savePrefs();
    QCOMPARE(PaneFixture::preferences().value(selectedMACAddress).toString(),
             QStringLiteral("0a:1B:2c:3D:4e:5F"));
    menu->setCurrentIndex(0);
    fixture.pane().savePrefs();
    QVERIFY(!PaneFixture::preferences().contains(selectedMACAddress));
    QCOMPARE(PaneFixture::preferences().value(QStringLiteral("mine")).toInt(), 5);
}

void PreferencesWritingTest::unknownKeysAndTheLastRunVersionSurvive()
{
    const QVariantMap foreign{
        {QStringLiteral("lastRunVersion"), QStringLiteral("6")},
        {QStringLiteral("a text"), QStringLiteral("<&>\"' \u00e9\U0001F600")},
        {QStringLiteral("data"), QByteArray("\0\1\xff", 3)},
        {QStringLiteral("date"), QDateTime::fromSecsSinceEpoch(1234567890, QTimeZone::utc())},
        {QStringLiteral("real"), 0.1},
        {QStringLiteral("negative"), -7LL},
        {QStringLiteral("truth"), true},
        {QStringLiteral("nested"),
         QVariantMap{{QStringLiteral("list"), QVariantList{1LL, false}}}}};
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferences(foreign);
    fixture.open();
    for (int save = 0; save < 3; ++save) {
        fixture.pane().savePrefs();
    }
    const QVariantMap written = PaneFixture::preferences();
    for (auto it = foreign.cbegin(); it != foreign.cend(); ++it) {
        QCOMPARE(written.value(it.key()), it.value());
    }
}

void PreferencesWritingTest::anEmptyPortFieldStoresZero()
{
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    fixture.control<QLineEdit>("networkCustomPortText")->clear();
    fixture.pane().savePrefs();
    QCOMPARE(PaneFixture::preferences().value(customPort), QVariant(0LL));
}

void PreferencesWritingTest::aPortIsStoredAsItComes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qlonglong>("stored");
    QTest::newRow("digits and letters") << QStringLiteral("80ab") << 80LL;
    QTest::newRow("zero") << QStringLiteral("0") << 0LL;
    QTest::newRow("negative") << QStringLiteral("-12") << -12LL;
    QTest::newRow("above 65535") << QStringLiteral("65536") << 65536LL;
}

void PreferencesWritingTest::aPortIsStoredAsItComes()
{
    QFETCH(QString, text);
    QFETCH(qlonglong, stored);
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    fixture.control<QLineEdit>("networkCustomPortText")->setText(text);
    fixture.pane().savePrefs();
    QCOMPARE(PaneFixture::preferences().value(customPort), QVariant(stored));
}

void PreferencesWritingTest::typingAPortSavesOnceTypingPauses()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferences({{QStringLiteral("customPortSet"), 1}});
    fixture.open();
    fixture.pane().showPage(QStringLiteral("network"));
    auto *field = fixture.control<QLineEdit>("networkCustomPortText");
    QVERIFY(field->isEnabled());
    field->selectAll();
    QTest::keyClicks(field, QStringLiteral("9001"));
    QVERIFY(!PaneFixture::preferences().contains(customPort));
    QTRY_COMPARE(PaneFixture::preferences().value(customPort), QVariant(9001LL));
    QTest::keyClicks(field, QStringLiteral("2"));
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(PaneFixture::preferences().value(customPort), QVariant(90012LL));
}

void PreferencesWritingTest::aPortTypedJustBeforeClosingIsSaved()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferences({{QStringLiteral("customPortSet"), 1}});
    fixture.open();
    auto *field = fixture.control<QLineEdit>("networkCustomPortText");
    fixture.pane().showPage(QStringLiteral("network"));
    field->selectAll();
    QTest::keyClicks(field, QStringLiteral("9002"));
    fixture.close();
    QCOMPARE(PaneFixture::preferences().value(customPort), QVariant(9002LL));
}

void PreferencesWritingTest::loadingThePaneDoesNotSave()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferences(
        {{QStringLiteral("autoUpdateCheck"), 0}, {QStringLiteral("customPort"), 99}});
    fixture.open();
    fixture.pane().showPage(QStringLiteral("network"));
    QTest::qWait(50);
    fixture.close();
    QCOMPARE(PaneFixture::preferences().size(), 2);
}

void PreferencesWritingTest::savingEnablesThePortFieldAndLeavesSwitchAndLine()
{
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    fixture.masterSwitch().setOn(true, Animated::No);
    fixture.showStatusOnly(QStringLiteral("Anything"));
    fixture.control<QCheckBox>("networkCustomPortCheck")->click();
    QVERIFY(fixture.control<QLineEdit>("networkCustomPortText")->isEnabled());
    QVERIFY(fixture.masterSwitch().isOn());
    QCOMPARE(fixture.status(), QStringLiteral("Status: Anything"));
    fixture.control<QCheckBox>("networkCustomPortCheck")->click();
    QVERIFY(!fixture.control<QLineEdit>("networkCustomPortText")->isEnabled());
}

void PreferencesWritingTest::theFileIsAnXmlPropertyListReplacedAtomically()
{
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    fixture.pane().savePrefs();
    // An open descriptor goes on reading the old file whole: the new one took its name.
    QFile old(PaneFixture::preferencesPath());
    QVERIFY(old.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
    const QByteArray before = old.readAll();
    QVERIFY(before.startsWith("<?xml"));
    fixture.control<QCheckBox>("autoUpdateCheck")->click();
    old.seek(0);
    QCOMPARE(old.readAll(), before);
    QFile fresh(PaneFixture::preferencesPath());
    QVERIFY(fresh.open(QIODevice::ReadOnly));
    QVERIFY(fresh.readAll() != before);
    QCOMPARE(QDir(PaneFixture::preferencesFolder()).entryList(QDir::Files | QDir::Hidden).size(),
             1);
}

void PreferencesWritingTest::aDamagedFileIsReplacedAndKeptBeside()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferencesBytes("damaged");
    fixture.open();
    fixture.pane().savePrefs();
    QCOMPARE(PaneFixture::preferences().size(), 7);
    QFile kept(PaneFixture::preferencesPath() + QStringLiteral(".damaged"));
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray("damaged"));
}

void PreferencesWritingTest::aReadOnlyFileInAWritableFolderIsReplaced()
{
    PaneFixture fixture(std::chrono::seconds(60));
    PaneFixture::writePreferences({{QStringLiteral("mine"), 5}});
    QVERIFY(QFile::setPermissions(PaneFixture::preferencesPath(), QFile::Permissions(0x4444)));
    fixture.open();
    for (int click = 0; click < 2; ++click) {
        auto *box = fixture.control<QCheckBox>("securityConfirmConnections");
        box->click();
        QCOMPARE(PaneFixture::preferences().value(QStringLiteral("confirmConnections")),
                 QVariant(box->isChecked() ? 1LL : 0LL));
    }
    QCOMPARE(PaneFixture::preferences().value(QStringLiteral("mine")).toInt(), 5);
    QCOMPARE(QDir(PaneFixture::preferencesFolder()).entryList(QDir::Files | QDir::Hidden).size(),
             1);
}

void PreferencesWritingTest::inAnUnwritableFolderOneRequestIsMadeAndTheAlertNamesTheFolder()
{
    if (::getuid() == 0) {
        QSKIP("root may write everywhere");
    }
    const test::EnvironmentVariable home("HOME", "/tmp/100%@ %d"); // told as it is
    test::ConsoleCapture console;
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    QFile::setPermissions(PaneFixture::preferencesFolder(), QFile::ReadOwner | QFile::ExeOwner);
    QString message;
    QString informative;
    int alerts = 0;
    QTimer answer;
    connect(&answer, &QTimer::timeout, &answer, [&] {
        if (auto *alert = qobject_cast<platform::AlertPanel *>(QApplication::activeModalWidget())) {
            ++alerts;
            message = alert->description().messageText;
            informative = alert->description().informativeText;
            alert->accept();
        }
    });
    answer.start(20);
    fixture.control<QCheckBox>("securityConfirmConnections")->click();
    QTRY_COMPARE(alerts, 1);
    QFile::setPermissions(PaneFixture::preferencesFolder(),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QCOMPARE(message, QStringLiteral("Unable to write preferences"));
    QCOMPARE(informative, QStringLiteral("Please check the permissions for the directory %1.")
                              .arg(PaneFixture::preferencesFolder()));
    QVERIFY(informative.endsWith(QLatin1Char('.')));
    QCOMPARE(console.lines()
                 .filter(QStringLiteral("Unable to ask for the administrator's authorisation"))
                 .size(),
             1);
    QVERIFY(fixture.control<QCheckBox>("securityConfirmConnections")->isChecked());
    QVERIFY(!QFile::exists(PaneFixture::preferencesPath()));
    QVERIFY(!QFile::exists(ZQLocalPaths::tempDirectory() +
                           QStringLiteral("/com.corvane.OstrelListener.plist")));
}

void PreferencesWritingTest::aFailedSaveKeepsTheControlsAndDoesNotRefresh()
{
    if (::getuid() == 0) {
        QSKIP("root may write everywhere");
    }
    PaneFixture fixture(std::chrono::seconds(60));
    fixture.open();
    QFile::setPermissions(PaneFixture::preferencesFolder(), QFile::ReadOwner | QFile::ExeOwner);
    int alerts = 0;
    QTimer answer;
    connect(&answer, &QTimer::timeout, &answer, [&alerts] {
        if (auto *alert = qobject_cast<platform::AlertPanel *>(QApplication::activeModalWidget())) {
            ++alerts;
            alert->accept();
        }
    });
    answer.start(20);
    fixture.control<QCheckBox>("networkCustomPortCheck")->click();
    QTRY_COMPARE(alerts, 1);
    QFile::setPermissions(PaneFixture::preferencesFolder(),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QVERIFY(fixture.control<QCheckBox>("networkCustomPortCheck")->isChecked());
    QVERIFY(!fixture.control<QLineEdit>("networkCustomPortText")->isEnabled());
}

TEST_CLASS(PreferencesWritingTest, QApplication)
#include "PreferencesWritingTest.moc"
