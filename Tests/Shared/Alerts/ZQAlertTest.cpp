// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Alerts/ZQAlert.h"

#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTest>

using platform::AlertPanel;
using Block = ZQAlert::Block;

namespace {

const auto headline = QStringLiteral("Headline");
const auto body = QStringLiteral("Body.");
const auto yes = QStringLiteral("Yes");
const auto cancel = QStringLiteral("Cancel");
const auto no = QStringLiteral("No");

// Shows the three buttons through the form of that name.
qint64 show(const QByteArray &form, QWidget *window)
{
    if (form == "block") {
        return ZQAlert::alertSheetWithMessageText(headline, yes, cancel, no, body, window,
                                                  Block::No);
    }
    if (form == "delegate") {
        return ZQAlert::alertSheetWithMessageText(headline, yes, cancel, no, body, window, nullptr,
                                                  {}, Block::Yes);
    }
    if (form == "object") {
        return ZQAlert::alertSheetWithMessageText(headline, yes, cancel, no, body, window, nullptr,
                                                  {}, Block::Yes, std::make_shared<ZQAlert>());
    }
    if (form == "full") {
        return ZQAlert::alertSheetWithMessageText(headline, yes, cancel, no, body, window, nullptr,
                                                  {}, Block::Yes, nullptr, {});
    }
    return ZQAlert::timedAlertSheetWithMessageText(headline, yes, cancel, no, body, window, 3600);
}

} // namespace

class ZQAlertTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup();

    void theShortFormShowsOneButtonAndReturnsOne();
    void everyFormReturnsTheCodeOfTheButton_data();
    void everyFormReturnsTheCodeOfTheButton();
    void everyFormMayBeCalledOnAWorker_data() { everyFormReturnsTheCodeOfTheButton_data(); }
    void everyFormMayBeCalledOnAWorker();
    void nilTextsShowAnEmptyHeadlineAndBody();
    void aPercentSignInTheBodyIsReadAsADirective();
    void aPercentSignInTheHeadlineIsNot();
    void aNonBlockingCallReturnsMinusOneAtOnceAlthoughASheetIsShowing();
    void aNonBlockingCallOnAWorkerReturnsMinusOneAtOnce();
    void theObjectOfANonBlockingCallIsNeverReleased();
    void aBlockingAlertIsOrderedOutAndForgotten();
    void anEndBeforeItsFirstUseEndsNoAlert();
    void theInterfaceStaysAliveWhileAnAlertBlocks();
    void blockingAlertsNest();
    void twoWorkersMayWaitForAnAlertEach();
    void theSheetStandsOnTheParentsWindow();
    void anAlertObjectIsReset();
    void anAlertObjectShowsOneSheetAtATime();
    void aDictionaryDescribesTheSheet();
    void anAlertThatGoesTakesItsSheetAlong();
    void thePropertiesAreThoseThatWereSet();
};

void ZQAlertTest::cleanup()
{
    if (auto *left = test::visibleAlert()) {
        left->orderOut();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void ZQAlertTest::theShortFormShowsOneButtonAndReturnsOne()
{
    QWidget window;
    int buttons = 0;
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        buttons = static_cast<int>(alert.findChildren<QPushButton *>().size());
        test::click(alert, "defaultButton");
    });
    QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, body, &window), 1);
    QCOMPARE(watcher.count(), 1);
    QCOMPARE(buttons, 1);
}

void ZQAlertTest::everyFormReturnsTheCodeOfTheButton_data()
{
    QTest::addColumn<QByteArray>("form");
    for (const auto *form : {"block", "delegate", "object", "full", "timed"}) {
        QTest::newRow(form) << QByteArray(form);
    }
}

void ZQAlertTest::everyFormReturnsTheCodeOfTheButton()
{
    QFETCH(const QByteArray, form);
    QWidget window;
    QByteArray button;
    const test::AlertWatcher watcher(
        [&](AlertPanel &alert) { test::click(alert, button.constData()); });
    for (const auto &[name, code] :
         {std::pair{"defaultButton", 1}, {"alternateButton", 0}, {"otherButton", -1}}) {
        button = name;
        QCOMPARE(show(form, &window), code);
    }
    QCOMPARE(watcher.count(), 3);
}

void ZQAlertTest::everyFormMayBeCalledOnAWorker()
{
    QFETCH(const QByteArray, form);
    QWidget window;
    QByteArray button;
    bool onMainThread = true;
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        onMainThread = onMainThread && alert.thread() == QCoreApplication::instance()->thread();
        test::click(alert, button.constData());
    });
    for (const auto &[name, code] :
         {std::pair{"defaultButton", 1}, {"alternateButton", 0}, {"otherButton", -1}}) {
        button = name;
        QCOMPARE(test::onWorker([&] { return show(form, &window); }), code);
    }
    QVERIFY(onMainThread);
    QCOMPARE(watcher.count(), 3);
}

void ZQAlertTest::nilTextsShowAnEmptyHeadlineAndBody()
{
    QString shown = QStringLiteral("unset");
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        shown = alert.description().messageText + alert.description().informativeText;
        test::click(alert, "defaultButton");
    });
    QCOMPARE(ZQAlert::alertSheetWithMessageText({}, {}, nullptr), 1);
    QCOMPARE(shown, QString());
}

void ZQAlertTest::aPercentSignInTheBodyIsReadAsADirective()
{
    QString shown;
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        shown = alert.description().informativeText;
        test::click(alert, "defaultButton");
    });
    ZQAlert::alertSheetWithMessageText(headline, QStringLiteral("100%% of %@."), nullptr);
    QCOMPARE(shown, QStringLiteral("100% of (null)."));
}

void ZQAlertTest::aPercentSignInTheHeadlineIsNot()
{
    QString shown;
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        shown = alert.description().messageText;
        test::click(alert, "defaultButton");
    });
    ZQAlert::alertSheetWithMessageText(QStringLiteral("100%% of %@."), {}, nullptr);
    QCOMPARE(shown, QStringLiteral("100%% of %@."));
}

void ZQAlertTest::aNonBlockingCallReturnsMinusOneAtOnceAlthoughASheetIsShowing()
{
    QWidget window;
    const auto object = std::make_shared<ZQAlert>();
    QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, yes, cancel, no, body, &window, nullptr,
                                                {}, Block::No, object),
             -1);
    QVERIFY(object->alert()->isVisible());
    QVERIFY(!object->alertEnded());
    test::click(*object->alert(), "defaultButton");
    QVERIFY(object->alertEnded());
    QCOMPARE(object->returnCode(), 1);
}

void ZQAlertTest::aNonBlockingCallOnAWorkerReturnsMinusOneAtOnce()
{
    QWidget window;
    const auto object = std::make_shared<ZQAlert>();
    const auto code = test::onWorker([&] {
        return ZQAlert::alertSheetWithMessageText(headline, yes, cancel, no, body, &window, nullptr,
                                                  {}, Block::No, object);
    });
    QCOMPARE(code, -1);
    QVERIFY(object->alert()->isVisible());
    test::click(*object->alert(), "alternateButton");
    QVERIFY(object->alertEnded());
    QCOMPARE(object->returnCode(), 0);
}

void ZQAlertTest::theObjectOfANonBlockingCallIsNeverReleased()
{
    auto object = std::make_shared<ZQAlert>();
    const std::weak_ptr<ZQAlert> watched = object;
    ZQAlert::alertSheetWithMessageText(headline, {}, {}, {}, body, nullptr, nullptr, {}, Block::No,
                                       object);
    object.reset();
    test::click(*test::visibleAlert(), "defaultButton");
    QVERIFY(!watched.expired());
    QVERIFY(watched.lock()->alert() != nullptr);
}

void ZQAlertTest::aBlockingAlertIsOrderedOutAndForgotten()
{
    const auto object = std::make_shared<ZQAlert>();
    QPointer<AlertPanel> panel;
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        panel = &alert;
        // Ends the wait in another way than by a button: the sheet is still up then.
        object->setReturnCode(7);
        object->setAlertEnded(true);
    });
    QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, {}, {}, {}, body, nullptr, nullptr, {},
                                                Block::Yes, object),
             7);
    QVERIFY(panel == nullptr || !panel->isVisible());
    QVERIFY(object->alert() == nullptr);
    QCOMPARE(object.use_count(), 1L);
}

void ZQAlertTest::anEndBeforeItsFirstUseEndsNoAlert()
{
    const auto object = std::make_shared<ZQAlert>();
    const test::AlertWatcher watcher(
        [](AlertPanel &alert) { test::click(alert, "alternateButton"); });
    const auto ask = [&] {
        return ZQAlert::alertSheetWithMessageText(headline, {}, body, {}, body, nullptr, nullptr,
                                                  {}, Block::Yes, object);
    };
    for (int count = 1; count <= 2; ++count) {
        object->setReturnCode(7);
        object->setAlertEnded(true);
        QCOMPARE(ask(), 0);
        QCOMPARE(watcher.count(), count);
    }
}

void ZQAlertTest::theInterfaceStaysAliveWhileAnAlertBlocks()
{
    int ticks = 0;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
        if (++ticks == 10) {
            test::click(*test::visibleAlert(), "defaultButton");
        }
    });
    timer.start(5);
    QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, body, nullptr), 1);
    QVERIFY(ticks >= 10);
}

void ZQAlertTest::blockingAlertsNest()
{
    QWidget window;
    qint64 inner = -2;
    int depth = 0;
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        if (++depth == 1) {
            QTimer::singleShot(0, this, [&] { inner = show("block", &window); });
            return;
        }
        test::click(alert, "otherButton");
        QTimer::singleShot(0, this, [] { test::click(*test::visibleAlert(), "alternateButton"); });
    });
    QCOMPARE(show("block", &window), 0);
    QCOMPARE(inner, -1);
    QCOMPARE(watcher.count(), 2);
}

void ZQAlertTest::twoWorkersMayWaitForAnAlertEach()
{
    QWidget window;
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        test::click(alert,
                    alert.description().messageText == headline ? "defaultButton" : "otherButton");
    });
    const auto sum = test::onWorker([&] {
        qint64 other = 0;
        std::thread second([&] {
            other = ZQAlert::alertSheetWithMessageText(QStringLiteral("Other"), yes, cancel, no,
                                                       body, &window, Block::Yes);
        });
        const auto own = show("block", &window);
        second.join();
        return 10 * own + other;
    });
    QCOMPARE(sum, 9);
}

void ZQAlertTest::theSheetStandsOnTheParentsWindow()
{
    QWidget window;
    QWidget *parent = nullptr;
    auto modality = Qt::NonModal;
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        parent = alert.parentWidget();
        modality = alert.windowModality();
        test::click(alert, "defaultButton");
    });
    show("full", &window);
    QCOMPARE(parent, &window);
    QCOMPARE(modality, Qt::WindowModal);
    QVERIFY(window.isVisible());
}

void ZQAlertTest::anAlertObjectIsReset()
{
    const auto object = std::make_shared<ZQAlert>();
    const test::AlertWatcher watcher(
        [&](AlertPanel &alert) { test::click(alert, "alternateButton"); });
    for (int i = 0; i < 2; ++i) {
        QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, yes, cancel, no, body, nullptr,
                                                    nullptr, {}, Block::Yes, object),
                 0);
    }
    QCOMPARE(watcher.count(), 2);
}

void ZQAlertTest::anAlertObjectShowsOneSheetAtATime()
{
    const auto object = std::make_shared<ZQAlert>();
    const auto begin = [&] {
        ZQAlert::alertSheetWithMessageText(headline, {}, {}, {}, body, nullptr, nullptr, {},
                                           Block::No, object);
        return QPointer<AlertPanel>(object->alert());
    };
    const auto first = begin();
    const auto second = begin();
    QVERIFY(first.isNull() || first->isHidden());
    QVERIFY(second->isVisible());
    QVERIFY(!object->alertEnded());
    test::click(*second, "defaultButton");
    QVERIFY(object->alertEnded());
}

void ZQAlertTest::aDictionaryDescribesTheSheet()
{
    ZQAlert object;
    object.setDelegate(&object);
    object.alertSheetWithDictionary({{QStringLiteral("messageText"), headline},
                                     {QStringLiteral("informativeText"), body},
                                     {QStringLiteral("defaultButtonTitle"), yes},
                                     {QStringLiteral("alternateButtonTitle"), cancel},
                                     {QStringLiteral("otherButtonTitle"), no},
                                     {QStringLiteral("didEndSelector"),
                                      QStringLiteral("alertDidEnd:returnCode:contextInfo:")}});
    const auto description = object.alert()->description();
    QCOMPARE(QStringList({description.messageText, description.informativeText,
                          description.defaultButton, description.alternateButton,
                          description.otherButton}),
             QStringList({headline, body, yes, cancel, no}));
    QVERIFY(object.alert()->findChild<QObject *>(QStringLiteral("suppressionButton")) == nullptr);
    test::click(*object.alert(), "otherButton");
    QVERIFY(object.alertEnded());
    QCOMPARE(object.returnCode(), -1);
}

void ZQAlertTest::anAlertThatGoesTakesItsSheetAlong()
{
    auto object = std::make_unique<ZQAlert>();
    object->alertSheetWithDictionary({});
    const QPointer<AlertPanel> panel = object->alert();
    QVERIFY(panel->isVisible());
    object.reset();
    QVERIFY(panel.isNull() || panel->isHidden());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    auto elsewhere = std::make_unique<ZQAlert>();
    elsewhere->alertSheetWithDictionary({});
    test::onWorker([&] {
        elsewhere.reset();
        return true;
    });
    QTRY_VERIFY(test::visibleAlert() == nullptr);
}

void ZQAlertTest::thePropertiesAreThoseThatWereSet()
{
    QWidget window;
    QObject delegate;
    ZQAlert object;
    QVERIFY(object.parentWindow() == nullptr);
    QVERIFY(object.delegate() == nullptr);
    QVERIFY(object.alert() == nullptr);
    QVERIFY(!object.alertEnded());
    object.setParentWindow(&window);
    object.setDelegate(&delegate);
    object.setAlertEnded(true);
    object.setReturnCode(std::numeric_limits<qint64>::min());
    QCOMPARE(object.parentWindow(), &window);
    QCOMPARE(object.delegate(), &delegate);
    QVERIFY(object.alertEnded());
    QCOMPARE(object.returnCode(), std::numeric_limits<qint64>::min());
    object.alertDidEnd(nullptr, -1, nullptr);
    QCOMPARE(object.returnCode(), -1);
}

TEST_CLASS(ZQAlertTest, QApplication)
#include "ZQAlertTest.moc"
