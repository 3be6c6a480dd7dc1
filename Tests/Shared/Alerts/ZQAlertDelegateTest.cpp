// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Alerts/ZQAlert.h"
#include "Shared/Log/ZQLog.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QFile>
#include <QTest>

using platform::AlertPanel;
using Block = ZQAlert::Block;

namespace {

const auto headline = QStringLiteral("Headline");
const auto answered = QStringLiteral("alertAnswered:code:context:");

// Notes the completion messages that it gets.
class Delegate : public QObject {
    Q_OBJECT
public:
    struct Message {
        QString method;
        QObject *alert;
        qint64 code;
        void *context;
    };
    QList<Message> messages;
    std::function<void()> then = [] {};

    Q_INVOKABLE void alertDidEnd(QObject *alert, qint64 code, void *context)
    {
        note(QStringLiteral("alertDidEnd"), alert, code, context);
    }
    Q_INVOKABLE void alertAnswered(QObject *alert, long long code, void *context)
    {
        note(QStringLiteral("alertAnswered"), alert, code, context);
    }
    // Of these two only the name fits.
    Q_INVOKABLE void alertAnswered(int code) { note(QStringLiteral("wrong"), nullptr, code, {}); }
    Q_INVOKABLE void wrongTypes(QObject *alert, const QString &code, void *context)
    {
        note(code, alert, 0, context);
    }
    Q_INVOKABLE void tooFew(QObject *alert, qint64 code)
    {
        note(QStringLiteral("tooFew"), alert, code, nullptr);
    }
    void notInvokable(QObject *alert, qint64 code, void *context)
    {
        note(QStringLiteral("notInvokable"), alert, code, context);
    }

private:
    void note(const QString &method, QObject *alert, qint64 code, void *context)
    {
        messages.append({method, alert, code, context});
        const auto act = then; // it may replace itself
        act();
    }
};

QString logText()
{
    ZQLog::finishWriting();
    QString text;
    for (const auto &path : ZQLog::availableLogs()) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly)) {
            text += QString::fromUtf8(file.readAll());
        }
    }
    return text;
}

} // namespace

class ZQAlertDelegateTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void theDelegateIsSentTheAlertTheCodeAndNoContext();
    void withoutSelectorTheDelegateIsSentAlertDidEnd();
    void theFullFormServesADelegateToo();
    void aDelegateIsCalledOnTheMainThreadForAWorker();
    void aDelegateGivenToTheNineArgumentFormIsNeverCalled();
    void aDelegateThatDoesNotRespondIsLoggedAndNothingIsShown_data();
    void aDelegateThatDoesNotRespondIsLoggedAndNothingIsShown();
    void anAlertThatIsItsOwnDelegateMustRespondToo();
    void aBlockingCallWithADelegateReturnsTheCodeAfterTheMessage();
    void theDelegateMayAnswerWithACodeOfItsOwn();
    void theDelegateMayShowAnotherSheetWithTheSameObject();
    void theDelegateMayShowABlockingAlert();
    void aDelegateThatIsDestroyedMeanwhileIsNotCalled();
    void aDelegateMayDestroyItselfAndTheWindow();
    void aParentThatIsDestroyedSendsNoMessage();
    void theDelegateIsNotRetained();
};

void ZQAlertDelegateTest::initTestCase()
{
    ZQLog::createNewLog();
}

void ZQAlertDelegateTest::cleanup()
{
    if (auto *left = test::visibleAlert()) {
        left->orderOut();
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void ZQAlertDelegateTest::theDelegateIsSentTheAlertTheCodeAndNoContext()
{
    Delegate delegate;
    QWidget window;
    QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, {}, {}, QStringLiteral("No"), {}, &window,
                                                &delegate, answered, Block::No, nullptr),
             -1);
    auto *alert = test::visibleAlert();
    QVERIFY(delegate.messages.isEmpty());
    test::click(*alert, "otherButton");
    QCOMPARE(delegate.messages.size(), 1);
    QCOMPARE(delegate.messages[0].method, QStringLiteral("alertAnswered"));
    QCOMPARE(delegate.messages[0].alert, alert);
    QCOMPARE(delegate.messages[0].code, -1);
    QVERIFY(delegate.messages[0].context == nullptr);
}

void ZQAlertDelegateTest::withoutSelectorTheDelegateIsSentAlertDidEnd()
{
    Delegate delegate;
    ZQAlert::alertSheetWithMessageText(headline, {}, {}, {}, {}, nullptr, &delegate, {}, Block::No,
                                       nullptr);
    test::click(*test::visibleAlert(), "defaultButton");
    QCOMPARE(delegate.messages.size(), 1);
    QCOMPARE(delegate.messages[0].method, QStringLiteral("alertDidEnd"));
    QCOMPARE(delegate.messages[0].code, 1);
}

void ZQAlertDelegateTest::theFullFormServesADelegateToo()
{
    Delegate delegate;
    ZQAlert::alertSheetWithMessageText(headline, {}, QStringLiteral("Cancel"), {}, {}, nullptr,
                                       &delegate, answered, Block::No, nullptr, {});
    test::click(*test::visibleAlert(), "alternateButton");
    QCOMPARE(delegate.messages.size(), 1);
    QCOMPARE(delegate.messages[0].code, 0);
}

void ZQAlertDelegateTest::aDelegateIsCalledOnTheMainThreadForAWorker()
{
    Delegate delegate;
    bool onMainThread = false;
    delegate.then = [&] { onMainThread = platform::isMainThread(); };
    const auto code = test::onWorker([&] {
        return ZQAlert::alertSheetWithMessageText(headline, {}, {}, {}, {}, nullptr, &delegate,
                                                  answered, Block::No, nullptr);
    });
    QCOMPARE(code, -1);
    test::click(*test::visibleAlert(), "defaultButton");
    QCOMPARE(delegate.messages.size(), 1);
    QVERIFY(onMainThread);
}

void ZQAlertDelegateTest::aDelegateGivenToTheNineArgumentFormIsNeverCalled()
{
    Delegate delegate;
    const test::AlertWatcher watcher(
        [](AlertPanel &alert) { test::click(alert, "alternateButton"); });
    for (const auto &selector : {QString(), answered, QStringLiteral("noSuchMethod:")}) {
        // It waits and answers although it was told not to.
        QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, {}, QStringLiteral("Cancel"), {}, {},
                                                    nullptr, &delegate, selector, Block::No),
                 0);
    }
    QCOMPARE(watcher.count(), 3);
    QVERIFY(delegate.messages.isEmpty());
    QVERIFY(!logText().contains(QStringLiteral("noSuchMethod:")));
}

void ZQAlertDelegateTest::aDelegateThatDoesNotRespondIsLoggedAndNothingIsShown_data()
{
    QTest::addColumn<QString>("selector");
    QTest::newRow("no such method") << QStringLiteral("missing:returnCode:contextInfo:");
    QTest::newRow("other types") << QStringLiteral("wrongTypes:returnCode:contextInfo:");
    QTest::newRow("too few parameters") << QStringLiteral("tooFew:returnCode:contextInfo:");
    QTest::newRow("too few keywords") << QStringLiteral("alertAnswered:code:");
    QTest::newRow("not invokable") << QStringLiteral("notInvokable:returnCode:contextInfo:");
    QTest::newRow("dangerous method") << QStringLiteral("deleteLater");
    QTest::newRow("signature") << QStringLiteral("alertDidEnd(QObject*,qlonglong,void*)");
    QTest::newRow("no last colon") << QStringLiteral("alertAnswered:code:context:x");
    QTest::newRow("only colons") << QStringLiteral(":::");
    QTest::newRow("format") << QStringLiteral("%n%s%@:%@:%@:");
    QTest::newRow("long") << QString(5000, QLatin1Char('x'));
    QTest::newRow("other letters") << QString::fromUtf8("\u00e4\u6f22:\u5b57:x:");
}

void ZQAlertDelegateTest::aDelegateThatDoesNotRespondIsLoggedAndNothingIsShown()
{
    QFETCH(const QString, selector);
    Delegate delegate;
    for (const auto block : {Block::No, Block::Yes}) {
        QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, {}, {}, {}, {}, nullptr, &delegate,
                                                    selector, block, nullptr),
                 -1);
        QVERIFY(test::visibleAlert() == nullptr);
    }
    const auto line =
        QStringLiteral("Alert error: delegate does not respond to selector ") + selector;
    QCOMPARE(logText().count(QStringLiteral(" - ") + line + QLatin1Char('\n')), 2);
    QVERIFY(delegate.messages.isEmpty());
}

void ZQAlertDelegateTest::anAlertThatIsItsOwnDelegateMustRespondToo()
{
    QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, {}, {}, {}, {}, nullptr, nullptr,
                                                QStringLiteral("own:code:context:"), Block::Yes,
                                                nullptr),
             -1);
    QVERIFY(logText().contains(
        QStringLiteral("Alert error: delegate does not respond to selector own:code:context:")));
    const test::AlertWatcher watcher(
        [](AlertPanel &alert) { test::click(alert, "defaultButton"); });
    QCOMPARE(ZQAlert::alertSheetWithMessageText(
                 headline, {}, {}, {}, {}, nullptr, nullptr,
                 QStringLiteral("alertDidEnd:returnCode:contextInfo:"), Block::Yes, nullptr),
             1);
}

void ZQAlertDelegateTest::aBlockingCallWithADelegateReturnsTheCodeAfterTheMessage()
{
    Delegate delegate;
    const test::AlertWatcher watcher(
        [](AlertPanel &alert) { test::click(alert, "alternateButton"); });
    const auto show = [&] {
        const auto code =
            ZQAlert::alertSheetWithMessageText(headline, {}, QStringLiteral("Cancel"), {}, {},
                                               nullptr, &delegate, answered, Block::Yes, nullptr);
        return std::pair(code, delegate.messages.size());
    };
    QCOMPARE(show(), std::pair(qint64(0), decltype(delegate.messages.size())(1)));
    QCOMPARE(test::onWorker(show), std::pair(qint64(0), decltype(delegate.messages.size())(2)));
}

void ZQAlertDelegateTest::theDelegateMayAnswerWithACodeOfItsOwn()
{
    Delegate delegate;
    const auto object = std::make_shared<ZQAlert>();
    delegate.then = [&] { object->setReturnCode(42); };
    const test::AlertWatcher watcher(
        [](AlertPanel &alert) { test::click(alert, "defaultButton"); });
    QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, {}, {}, {}, {}, nullptr, &delegate,
                                                answered, Block::Yes, object),
             42);
}

void ZQAlertDelegateTest::theDelegateMayShowAnotherSheetWithTheSameObject()
{
    Delegate delegate;
    const auto object = std::make_shared<ZQAlert>();
    const auto begin = [&] {
        ZQAlert::alertSheetWithMessageText(headline, {}, {}, {}, {}, nullptr, &delegate, answered,
                                           Block::No, object);
    };
    delegate.then = begin;
    begin();
    test::click(*object->alert(), "defaultButton");
    QVERIFY(!object->alertEnded());
    delegate.then = [] {};
    test::click(*object->alert(), "defaultButton");
    QVERIFY(object->alertEnded());
    QCOMPARE(delegate.messages.size(), 2);
}

void ZQAlertDelegateTest::theDelegateMayShowABlockingAlert()
{
    Delegate delegate;
    qint64 second = -2;
    delegate.then = [&] {
        delegate.then = [] {};
        second = ZQAlert::alertSheetWithMessageText(headline, {}, nullptr);
    };
    const test::AlertWatcher watcher(
        [](AlertPanel &alert) { test::click(alert, "defaultButton"); });
    QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, {}, {}, {}, {}, nullptr, &delegate,
                                                answered, Block::Yes, nullptr),
             1);
    QCOMPARE(second, 1);
}

void ZQAlertDelegateTest::aDelegateThatIsDestroyedMeanwhileIsNotCalled()
{
    auto delegate = std::make_unique<Delegate>();
    const auto object = std::make_shared<ZQAlert>();
    const test::AlertWatcher watcher([&](AlertPanel &alert) {
        delegate.reset();
        QVERIFY(object->delegate() == nullptr);
        test::click(alert, "alternateButton");
    });
    QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, {}, QStringLiteral("Cancel"), {}, {},
                                                nullptr, delegate.get(), answered, Block::Yes,
                                                object),
             0);
}

void ZQAlertDelegateTest::aDelegateMayDestroyItselfAndTheWindow()
{
    auto *delegate = new Delegate;
    auto *window = new QWidget;
    delegate->then = [delegate, window] {
        delete window;
        delete delegate;
    };
    const test::AlertWatcher watcher(
        [](AlertPanel &alert) { test::click(alert, "defaultButton"); });
    QCOMPARE(ZQAlert::alertSheetWithMessageText(headline, {}, QStringLiteral("Cancel"), {}, {},
                                                window, delegate, answered, Block::Yes, nullptr),
             1);
}

void ZQAlertDelegateTest::aParentThatIsDestroyedSendsNoMessage()
{
    Delegate delegate;
    auto window = std::make_unique<QWidget>();
    const auto object = std::make_shared<ZQAlert>();
    ZQAlert::alertSheetWithMessageText(headline, {}, {}, {}, {}, window.get(), &delegate, answered,
                                       Block::No, object);
    window.reset();
    QVERIFY(delegate.messages.isEmpty());
    QVERIFY(object->alertEnded());
    QVERIFY(object->alert() == nullptr);
    QVERIFY(object->parentWindow() == nullptr);
}

void ZQAlertDelegateTest::theDelegateIsNotRetained()
{
    QPointer<Delegate> delegate = new Delegate;
    ZQAlert::alertSheetWithMessageText(headline, {}, {}, {}, {}, nullptr, delegate, answered,
                                       Block::No, nullptr);
    delete delegate.data();
    QVERIFY(delegate.isNull());
    test::click(*test::visibleAlert(), "defaultButton");
}

TEST_CLASS(ZQAlertDelegateTest, QApplication)
#include "ZQAlertDelegateTest.moc"
