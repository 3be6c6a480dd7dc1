// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Tests/Preference Pane/Pane/PaneFixture.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/CommandRecorder.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QTabWidget>
#include <QTest>
#include <QTextDocument>
#include <QWheelEvent>

#include <unistd.h>

using namespace std::chrono_literals;
using platform::DistributedObserver;
using test::CommandRecorder;

namespace {

const QString answer = QStringLiteral("/tmp/profile");
const QString any = QStringLiteral("Any (recommended)");
const QString noData = QStringLiteral("Unable to get system profile data");
const QString errorOne = QStringLiteral("Error 1 - Invalid system profile data");
const QString errorThree = QStringLiteral("Error 3 - Invalid system profile data");
const QString wrongFormat = QStringLiteral("Invalid system profile data format");

QVariantMap item(const QString &name, const QString &interface, const QString &address)
{
    return {{QStringLiteral("_name"), name},
            {QStringLiteral("interface"), interface},
            {QStringLiteral("Ethernet"), QVariantMap{{QStringLiteral("MAC Address"), address}}}};
}

QVariantMap without(QVariantMap map, const QString &key)
{
    map.remove(key);
    return map;
}

QVariantMap with(QVariantMap map, const QString &key, const QVariant &value)
{
    map[key] = value;
    return map;
}

QVariantMap document(const QVariant &items)
{
    return {{QStringLiteral("_dataType"), QStringLiteral("SPNetworkDataType")},
            {QStringLiteral("_items"), items}};
}

QByteArray profile(const QVariantList &items)
{
    return platform::propertyListToXml(QVariantList{document(items)});
}

QVariantMap wired()
{
    return item(QStringLiteral("Wired"), QStringLiteral("eth0"),
                QStringLiteral("0A:1b:2c:3d:4e:5f"));
}

QVariantMap radio()
{
    return item(QStringLiteral("Home"), QStringLiteral("wlan0"),
                QStringLiteral("0a:1b:2c:3d:4e:60"));
}

QVariantMap entry(const QString &name, const QString &address)
{
    return {{QStringLiteral("name"), name}, {QStringLiteral("macAddress"), address}};
}

QVariantList wiredEntry()
{
    return {entry(QStringLiteral("Wired - eth0"), QStringLiteral("0A:1b:2c:3d:4e:5f"))};
}

QStringList titles(const QComboBox &menu)
{
    QStringList titles;
    for (int i = 0; i < menu.count(); ++i) {
        titles << menu.itemText(i);
    }
    return titles;
}

void save(const QVariant &address)
{
    PaneFixture::writePreferences({{QStringLiteral("selectedMACAddress"), address}});
}

QVariant savedAddress()
{
    return PaneFixture::preferences().value(QStringLiteral("selectedMACAddress"));
}

} // namespace

class NetworkInterfacesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();

    void theProfilerIsRunOnceForEachOpening();
    void theFirstItemIsAnyWithoutAnAddress();
    void eachInterfaceIsAnItemInTheProfilersOrder();
    void whatIsNoInterfaceWithAnAddressIsLeftOut_data();
    void whatIsNoInterfaceWithAnAddressIsLeftOut();
    void aServiceWithoutAnInterfaceIsListedUnderItsNameAlone();
    void theSavedInterfaceIsSelected();
    void theAddressIsComparedExactly();
    void ofTwoServicesOnOneAddressTheLaterIsSelected();
    void aSavedAddressThatIsNotListedLeavesAnyAndTheNextSaveForgetsIt();
    void aSavedAddressThatIsNoTextSelectsAny();
    void refillingTakesTheAddressFromTheFileAgain();
    void aWrongProfileYieldsNothingAndSaysSo_data();
    void aWrongProfileYieldsNothingAndSaysSo();
    void choosingAnInterfaceSavesFirstAndThenTellsTheListener();
    void aFailedSaveStillTellsTheListener();
    void theWheelChangesNothing();
    void whoLooksThroughTheListWithTheArrowKeysChoosesOnce();
    void aListThatIsLeftChoosesNothing();
    void aLetterOpensTheListAtItsItem();
    void theToolTipsTellTheAddresses();
    void aToolTipIsNoRichTextOfTheNames();
    void aSavedInterfaceThatIsMissingGetsAHint();
    void choosingTakesTheHintAway();
    void theHintStaysSmallWhateverTheFileHolds();
    void megabytesAreRead();
    void aLongNameDoesNotWidenTheWindow();

private:
    // What the profiler answers from now on.
    void give(const QByteArray &text)
    {
        QFile file(answer);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.close();
        setProfiler(QStringLiteral("exec /opt/bin/cat ") + answer);
    }
    void setProfiler(const QString &shell)
    {
        m_profiler = nullptr; // first, as its end removes the file
        m_profiler =
            std::make_unique<CommandRecorder>(QStringLiteral("/usr/sbin/system_profiler"), shell);
    }
    static QComboBox &menu(const PaneFixture &fixture)
    {
        return *fixture.control<QComboBox>("networkInterfacePopUp");
    }

    // Keys of a user who has come to the menu, which go to its list while that is open.
    static void press(const PaneFixture &fixture, const QList<Qt::Key> &keys)
    {
        fixture.control<QTabWidget>("pages")->setCurrentWidget(fixture.control<QWidget>("network"));
        menu(fixture).setFocus();
        for (const auto key : keys) {
            const auto isOpen = menu(fixture).view()->isVisible();
            QTest::keyClick(isOpen ? static_cast<QWidget *>(menu(fixture).view()) : &menu(fixture),
                            key);
        }
    }
    // Null where there is none.
    static QString hint(const PaneFixture &fixture)
    {
        const auto *label = fixture.control<QLabel>("networkInterfaceHint");
        return label->isHidden() ? QString() : label->text();
    }

    std::unique_ptr<CommandRecorder> m_profiler;
};

void NetworkInterfacesTest::init()
{
    CommandRecorder::forget();
    give(profile({wired(), radio()}));
}

void NetworkInterfacesTest::cleanup()
{
    m_profiler.reset();
}

void NetworkInterfacesTest::theProfilerIsRunOnceForEachOpening()
{
    PaneFixture fixture(60s);
    fixture.open();
    const auto run = QStringLiteral("system_profiler [SPNetworkDataType] [-xml]");
    QCOMPARE(CommandRecorder::runs(), QStringList{run});
    menu(fixture).showPopup();
    menu(fixture).hidePopup();
    QCOMPARE(CommandRecorder::runs(), QStringList{run});
    fixture.close();
    fixture.open();
    QCOMPARE(CommandRecorder::runs(), (QStringList{run, run}));
}

void NetworkInterfacesTest::theFirstItemIsAnyWithoutAnAddress()
{
    PaneFixture fixture(60s);
    fixture.open();
    QCOMPARE(menu(fixture).itemText(0), any);
    QVERIFY(!menu(fixture).itemData(0).isValid());
    QCOMPARE(menu(fixture).currentIndex(), 0);
    QVERIFY(menu(fixture).toolTip().isEmpty());
}

void NetworkInterfacesTest::eachInterfaceIsAnItemInTheProfilersOrder()
{
    give(profile({radio(), wired()}));
    PaneFixture fixture(60s);
    fixture.open();
    QCOMPARE(titles(menu(fixture)),
             (QStringList{any, QStringLiteral("Home - wlan0"), QStringLiteral("Wired - eth0")}));
    QCOMPARE(menu(fixture).itemData(1).toString(), QStringLiteral("0a:1b:2c:3d:4e:60"));
    QCOMPARE(menu(fixture).itemData(2).toString(), QStringLiteral("0A:1b:2c:3d:4e:5f"));
}

void NetworkInterfacesTest::whatIsNoInterfaceWithAnAddressIsLeftOut_data()
{
    const auto ethernet = QStringLiteral("Ethernet");
    QTest::addColumn<QVariant>("other");
    QTest::newRow("no Ethernet") << QVariant(without(radio(), ethernet));
    QTest::newRow("Ethernet is no dictionary") << QVariant(with(radio(), ethernet, 1));
    QTest::newRow("no address") << QVariant(with(radio(), ethernet, QVariantMap()));
    QTest::newRow("the address is no text")
        << QVariant(with(radio(), ethernet, QVariantMap{{QStringLiteral("MAC Address"), 5}}));
    QTest::newRow("no name") << QVariant(without(radio(), QStringLiteral("_name")));
    QTest::newRow("text") << QVariant(QStringLiteral("Ethernet"));
    QTest::newRow("array") << QVariant(QVariantList{radio()});
}

void NetworkInterfacesTest::whatIsNoInterfaceWithAnAddressIsLeftOut()
{
    QFETCH(QVariant, other);
    test::ConsoleCapture console;
    give(profile({other, wired(), other}));
    QCOMPARE(Ostrel_Preference_Pane::networkInterfaces(), std::optional(wiredEntry()));
    QCOMPARE(console.lines(), QStringList());
}

void NetworkInterfacesTest::aServiceWithoutAnInterfaceIsListedUnderItsNameAlone()
{
    give(profile({without(wired(), QStringLiteral("interface"))}));
    const QVariantList expected{
        entry(QStringLiteral("Wired"), QStringLiteral("0A:1b:2c:3d:4e:5f"))};
    QCOMPARE(Ostrel_Preference_Pane::networkInterfaces(), std::optional(expected));
}

void NetworkInterfacesTest::theSavedInterfaceIsSelected()
{
    PaneFixture fixture(60s);
    save(QStringLiteral("0a:1b:2c:3d:4e:60"));
    fixture.open();
    QCOMPARE(menu(fixture).currentText(), QStringLiteral("Home - wlan0"));
    fixture.pane().savePrefs();
    QCOMPARE(savedAddress().toString(), QStringLiteral("0a:1b:2c:3d:4e:60"));
}

void NetworkInterfacesTest::theAddressIsComparedExactly()
{
    PaneFixture fixture(60s);
    save(QStringLiteral("0a:1b:2c:3d:4e:5f")); // the profiler writes a capital
    fixture.open();
    QCOMPARE(menu(fixture).currentText(), any);
}

void NetworkInterfacesTest::ofTwoServicesOnOneAddressTheLaterIsSelected()
{
    auto second = wired();
    second[QStringLiteral("_name")] = QStringLiteral("Office");
    give(profile({wired(), second, radio()}));
    PaneFixture fixture(60s);
    save(QStringLiteral("0A:1b:2c:3d:4e:5f"));
    fixture.open();
    QCOMPARE(titles(menu(fixture)),
             (QStringList{any, QStringLiteral("Wired - eth0"), QStringLiteral("Office - eth0"),
                          QStringLiteral("Home - wlan0")}));
    QCOMPARE(menu(fixture).currentIndex(), 2);
}

void NetworkInterfacesTest::aSavedAddressThatIsNotListedLeavesAnyAndTheNextSaveForgetsIt()
{
    PaneFixture fixture(60s);
    save(QStringLiteral("00:00:5e:00:53:01"));
    fixture.open();
    QCOMPARE(menu(fixture).currentText(), any);
    QCOMPARE(savedAddress().toString(), QStringLiteral("00:00:5e:00:53:01"));
    fixture.pane().savePrefs();
    QVERIFY(!savedAddress().isValid());
}

void NetworkInterfacesTest::aSavedAddressThatIsNoTextSelectsAny()
{
    PaneFixture fixture(60s);
    give(profile({item(QStringLiteral("Odd"), QStringLiteral("eth0"), QStringLiteral("5"))}));
    save(5);
    fixture.open();
    QCOMPARE(menu(fixture).count(), 2);
    QCOMPARE(menu(fixture).currentIndex(), 0);
}

void NetworkInterfacesTest::refillingTakesTheAddressFromTheFileAgain()
{
    PaneFixture fixture(60s);
    fixture.open();
    save(QStringLiteral("0a:1b:2c:3d:4e:60"));
    give(profile({radio()}));
    fixture.pane().populateNetworkInterfaces();
    QCOMPARE(titles(menu(fixture)), (QStringList{any, QStringLiteral("Home - wlan0")}));
    QCOMPARE(menu(fixture).currentIndex(), 1);
}

void NetworkInterfacesTest::aWrongProfileYieldsNothingAndSaysSo_data()
{
    using platform::propertyListToXml;
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("line");
    QTest::newRow("nothing") << QByteArray() << noData;
    QTest::newRow("no ASCII") << profile({item(QStringLiteral("é"), QString(), QString())})
                              << noData;
    QTest::newRow("no property list") << QByteArray("Unknown data type\n") << errorOne;
    QTest::newRow("half a property list") << profile({wired()}).left(300) << errorOne;
    QTest::newRow("a dictionary") << propertyListToXml(document(QVariantList{wired()})) << errorOne;
    QTest::newRow("text") << propertyListToXml(QStringLiteral("x")) << errorOne;
    QTest::newRow("deep") << QByteArray("<plist>") + QByteArray("<array>").repeated(100000)
                          << errorOne;
    QTest::newRow("an empty array") << propertyListToXml(QVariantList()) << errorThree;
    QTest::newRow("an array of text")
        << propertyListToXml(QVariantList{QStringLiteral("x"), document(QVariantList())})
        << errorThree;
    QTest::newRow("another data type")
        << propertyListToXml(
               QVariantList{with(document(QVariantList{wired()}), QStringLiteral("_dataType"),
                                 QStringLiteral("SPUSBDataType"))})
        << wrongFormat;
    QTest::newRow("no data type") << propertyListToXml(
                                         QVariantList{without(document(QVariantList{wired()}),
                                                              QStringLiteral("_dataType"))})
                                  << wrongFormat;
    QTest::newRow("the data type is no text")
        << propertyListToXml(
               QVariantList{with(document(QVariantList()), QStringLiteral("_dataType"), 1)})
        << wrongFormat;
    QTest::newRow("no items") << propertyListToXml(
                                     QVariantList{without(document(1), QStringLiteral("_items"))})
                              << wrongFormat;
    QTest::newRow("the items are no array")
        << propertyListToXml(QVariantList{document(wired())}) << wrongFormat;
}

void NetworkInterfacesTest::aWrongProfileYieldsNothingAndSaysSo()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, line);
    give(text);
    PaneFixture fixture(60s);
    test::ConsoleCapture console;
    QVERIFY(!Ostrel_Preference_Pane::networkInterfaces());
    QCOMPARE(console.lines(), QStringList{line});
    save(QStringLiteral("0A:1b:2c:3d:4e:5f"));
    fixture.open();
    QCOMPARE(titles(menu(fixture)), QStringList{any});
}

void NetworkInterfacesTest::choosingAnInterfaceSavesFirstAndThenTellsTheListener()
{
    PaneFixture fixture(60s);
    fixture.open();
    QStringList addresses; // in the file when the notice came
    const DistributedObserver observer(QStringLiteral("ZQOstrelClientRelaunch"),
                                       [&](const platform::Notification &notice) {
                                           QVERIFY(!notice.object.isValid());
                                           QVERIFY(notice.userInfo.isEmpty());
                                           addresses << savedAddress().toString();
                                       });
    QTest::qWait(50);
    press(fixture, {Qt::Key_Down, Qt::Key_Return});
    QTRY_COMPARE(addresses, QStringList{QStringLiteral("0A:1b:2c:3d:4e:5f")});
    press(fixture, {Qt::Key_Up, Qt::Key_Return});
    QTRY_COMPARE(addresses.size(), 2);
    QVERIFY(!savedAddress().isValid());
}

void NetworkInterfacesTest::aFailedSaveStillTellsTheListener()
{
    PaneFixture fixture(60s);
    fixture.open();
    int told = 0;
    const DistributedObserver observer(QStringLiteral("ZQOstrelClientRelaunch"),
                                       [&](const platform::Notification & /*notice*/) { ++told; });
    QTest::qWait(50);
    int alerts = 0;
    const test::AlertWatcher watcher([&](platform::AlertPanel &alert) {
        ++alerts;
        test::click(alert, "defaultButton");
    });
    // A folder in the file's place, into which only root, who may do anything, moves the file.
    QVERIFY(QDir().mkpath(PaneFixture::preferencesPath() + QStringLiteral("/in the way")));
    fixture.pane().updateNetworkSettings();
    QTRY_COMPARE(told, 1);
    QCOMPARE(alerts, ::geteuid() == 0 ? 0 : 1);
    QVERIFY(QFileInfo(PaneFixture::preferencesPath()).isDir());
}

void NetworkInterfacesTest::aLongNameDoesNotWidenTheWindow()
{
    give(profile({item(QString(500, QLatin1Char('W')), QStringLiteral("eth0"),
                       QStringLiteral("0a:1b:2c:3d:4e:5f"))}));
    PaneFixture fixture(60s);
    fixture.open();
    QVERIFY2(menu(fixture).width() <= 420, qPrintable(QString::number(menu(fixture).width())));
    QVERIFY(
        menu(fixture).itemData(1, Qt::ToolTipRole).toString().contains(menu(fixture).itemText(1)));
}

void NetworkInterfacesTest::theWheelChangesNothing()
{
    PaneFixture fixture(60s);
    save(QStringLiteral("0A:1b:2c:3d:4e:5f"));
    fixture.open();
    fixture.pane().showPage(QStringLiteral("network"));
    fixture.control<QWidget>("networkDisableBonjour")->setFocus();
    for (const auto isFocused : {false, true}) {
        if (isFocused) {
            menu(fixture).setFocus();
        }
        for (const auto turn : {-120, 120}) {
            QWheelEvent wheel(QPointF(5, 5), menu(fixture).mapToGlobal(QPoint(5, 5)), {},
                              QPoint(0, turn), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                              false);
            QApplication::sendEvent(&menu(fixture), &wheel);
            QCOMPARE(menu(fixture).currentIndex(), 1);
            QVERIFY(!wheel.isAccepted()); // the page may scroll
        }
        QCOMPARE(menu(fixture).hasFocus(), isFocused);
    }
}

void NetworkInterfacesTest::whoLooksThroughTheListWithTheArrowKeysChoosesOnce()
{
    PaneFixture fixture(60s);
    fixture.open();
    QStringList addresses;
    const DistributedObserver observer(
        QStringLiteral("ZQOstrelClientRelaunch"),
        [&](const platform::Notification & /*notice*/) { addresses << savedAddress().toString(); });
    QTest::qWait(50);
    press(fixture, {Qt::Key_Down, Qt::Key_Down, Qt::Key_Up, Qt::Key_Down});
    QVERIFY(menu(fixture).view()->isVisible());
    QCOMPARE(menu(fixture).currentIndex(), 0);
    QVERIFY(!PaneFixture::preferences().contains(QStringLiteral("disableBonjour"))); // not saved
    press(fixture, {Qt::Key_Return});
    QTRY_COMPARE(addresses, QStringList{QStringLiteral("0a:1b:2c:3d:4e:60")});
    // Word of another would have come before that of the next.
    press(fixture, {Qt::Key_Home, Qt::Key_Return});
    QTRY_VERIFY(addresses.size() >= 2);
    QCOMPARE(addresses, (QStringList{QStringLiteral("0a:1b:2c:3d:4e:60"), QString()}));
}

void NetworkInterfacesTest::aListThatIsLeftChoosesNothing()
{
    PaneFixture fixture(60s);
    save(QStringLiteral("0A:1b:2c:3d:4e:5f"));
    fixture.open();
    press(fixture, {Qt::Key_Down, Qt::Key_Escape});
    QVERIFY(!menu(fixture).view()->isVisible());
    QCOMPARE(menu(fixture).currentIndex(), 1);
    QCOMPARE(PaneFixture::preferences().size(), 1);
}

void NetworkInterfacesTest::aLetterOpensTheListAtItsItem()
{
    PaneFixture fixture(60s);
    fixture.open();
    press(fixture, {Qt::Key_H});
    QVERIFY(menu(fixture).view()->isVisible());
    QCOMPARE(menu(fixture).currentIndex(), 0);
    press(fixture, {Qt::Key_Return});
    QCOMPARE(menu(fixture).currentText(), QStringLiteral("Home - wlan0"));
}

void NetworkInterfacesTest::theToolTipsTellTheAddresses()
{
    PaneFixture fixture(60s);
    save(QStringLiteral("0a:1b:2c:3d:4e:60"));
    fixture.open();
    const auto tip = [&](int index) {
        return menu(fixture).itemData(index, Qt::ToolTipRole).toString();
    };
    QVERIFY(tip(0).isEmpty());
    QVERIFY(tip(1).contains(QStringLiteral("0A:1b:2c:3d:4e:5f")));
    QVERIFY(tip(2).contains(QStringLiteral("0a:1b:2c:3d:4e:60")));
    QCOMPARE(menu(fixture).toolTip(), tip(2));
    press(fixture, {Qt::Key_Up, Qt::Key_Return});
    QCOMPARE(menu(fixture).toolTip(), tip(1));
}

void NetworkInterfacesTest::aToolTipIsNoRichTextOfTheNames()
{
    give(profile({item(QStringLiteral("<b>A & B</b>"), QStringLiteral("eth0"),
                       QStringLiteral("0a:1b:2c:3d:4e:5f"))}));
    PaneFixture fixture(60s);
    fixture.open();
    QTextDocument shown;
    shown.setHtml(menu(fixture).itemData(1, Qt::ToolTipRole).toString());
    QCOMPARE(shown.toPlainText(), QStringLiteral("<b>A & B</b> - eth0\n0a:1b:2c:3d:4e:5f"));
}

void NetworkInterfacesTest::aSavedInterfaceThatIsMissingGetsAHint()
{
    PaneFixture fixture(60s);
    fixture.open();
    QVERIFY(hint(fixture).isNull());
    fixture.close();
    save(QStringLiteral("00:00:5e:00:53:01"));
    fixture.open();
    QVERIFY2(hint(fixture).contains(QStringLiteral("00:00:5e:00:53:01")),
             qPrintable(hint(fixture)));
    QCOMPARE(menu(fixture).accessibleDescription(), hint(fixture));
    fixture.pane().showPage(QStringLiteral("network"));
    QTRY_VERIFY(fixture.control<QLabel>("networkInterfaceHint")->isVisible());
    fixture.pane().savePrefs(); // which forgets it
    QVERIFY(hint(fixture).isNull());
}

void NetworkInterfacesTest::choosingTakesTheHintAway()
{
    PaneFixture fixture(60s);
    save(QStringLiteral("00:00:5e:00:53:01"));
    fixture.open();
    press(fixture, {Qt::Key_Down, Qt::Key_Return});
    QVERIFY(hint(fixture).isNull());
    QCOMPARE(menu(fixture).currentIndex(), 1);
    QCOMPARE(menu(fixture).accessibleDescription(), menu(fixture).itemData(1).toString());
}

void NetworkInterfacesTest::theHintStaysSmallWhateverTheFileHolds()
{
    PaneFixture fixture(60s);
    fixture.open();
    fixture.pane().showPage(QStringLiteral("network"));
    const auto width = fixture.window().minimumSizeHint().width();
    fixture.close();
    save(QString(100000, QLatin1Char('W')));
    fixture.open();
    fixture.pane().showPage(QStringLiteral("network"));
    QVERIFY(!hint(fixture).isNull());
    QCOMPARE(fixture.window().minimumSizeHint().width(), width);
}

void NetworkInterfacesTest::megabytesAreRead()
{
    constexpr auto count = 20000;
    QVariantList items;
    for (auto i = 0; i < count; ++i) {
        items << item(QStringLiteral("Wired connection %1").arg(i), QStringLiteral("eth%1").arg(i),
                      QStringLiteral("0a:%1").arg(i));
    }
    const auto text = profile(items);
    QVERIFY(text.size() > 3000000);
    give(text);
    const auto entries = Ostrel_Preference_Pane::networkInterfaces().value_or(QVariantList());
    QCOMPARE(entries.size(), count);
    QCOMPARE(entries.last().toMap(), entry(QStringLiteral("Wired connection 19999 - eth19999"),
                                           QStringLiteral("0a:19999")));
    give(QByteArray(5000000, 'x'));
    QVERIFY(!Ostrel_Preference_Pane::networkInterfaces());
}

TEST_CLASS(NetworkInterfacesTest, QApplication)
#include "NetworkInterfacesTest.moc"
