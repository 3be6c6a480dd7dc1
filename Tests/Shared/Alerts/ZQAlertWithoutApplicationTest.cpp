// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Alerts/ModalAlert.h"
#include "Shared/Alerts/ZQAlert.h"
#include "Tests/Support/TestProgram.h"

#include <QCoreApplication>
#include <QTest>

#include <future>

using Block = ZQAlert::Block;

// A program without windows, such as a tool that uses the library, gets no alert but an answer, on
// any thread, and without anybody who serves the main thread.
class ZQAlertWithoutApplicationTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyFormAnswersLikeEsc_data();
    void everyFormAnswersLikeEsc();
    void aNonBlockingFormReturnsMinusOne_data() { threads(); }
    void aNonBlockingFormReturnsMinusOne();
    void aModalAlertAnswersLikeEsc_data() { threads(); }
    void aModalAlertAnswersLikeEsc();
    void anObjectOfAWorkerMayGo();

private:
    static void threads();
};

namespace {

const auto headline = QStringLiteral("Headline");
const auto body = QStringLiteral("Body.");
const auto yes = QStringLiteral("Yes");
const auto cancel = QStringLiteral("Cancel");

// On a thread of its own, for which the main thread does nothing but wait, or on this one.
template <typename Call>
auto result(bool onWorker, Call call)
{
    return std::async(onWorker ? std::launch::async : std::launch::deferred, call).get();
}

} // namespace

void ZQAlertWithoutApplicationTest::threads()
{
    QTest::addColumn<bool>("worker");
    QTest::newRow("main thread") << false;
    QTest::newRow("worker") << true;
}

void ZQAlertWithoutApplicationTest::everyFormAnswersLikeEsc_data()
{
    QTest::addColumn<QByteArray>("form");
    QTest::addColumn<bool>("worker");
    QTest::addColumn<qint64>("answer");
    for (const bool worker : {false, true}) {
        const auto row = [worker](const char *form, qint64 answer) {
            QTest::addRow("%s, %s", form, worker ? "worker" : "main thread")
                << QByteArray(form) << worker << answer;
        };
        row("short", platform::AlertDefaultReturn);
        row("titles", platform::AlertAlternateReturn);
        row("object", platform::AlertAlternateReturn);
        row("timed", platform::AlertAlternateReturn);
    }
}

void ZQAlertWithoutApplicationTest::everyFormAnswersLikeEsc()
{
    QFETCH(const QByteArray, form);
    QFETCH(const bool, worker);
    QVERIFY(QCoreApplication::instance() == nullptr);
    const auto call = [&form] {
        if (form == "short") {
            return ZQAlert::alertSheetWithMessageText(headline, body, nullptr);
        }
        if (form == "titles") {
            return ZQAlert::alertSheetWithMessageText(headline, yes, cancel, {}, body, nullptr,
                                                      Block::Yes);
        }
        if (form == "object") {
            return ZQAlert::alertSheetWithMessageText(headline, yes, cancel, {}, body, nullptr,
                                                      nullptr, {}, Block::Yes,
                                                      std::make_shared<ZQAlert>());
        }
        return ZQAlert::timedAlertSheetWithMessageText(headline, yes, cancel, {}, body, nullptr,
                                                       3600);
    };
    QTEST(result(worker, call), "answer");
}

void ZQAlertWithoutApplicationTest::aNonBlockingFormReturnsMinusOne()
{
    QFETCH(const bool, worker);
    const auto call = [] {
        return ZQAlert::alertSheetWithMessageText(headline, yes, cancel, {}, body, nullptr, nullptr,
                                                  {}, Block::No, nullptr);
    };
    QCOMPARE(result(worker, call), qint64{-1});
}

void ZQAlertWithoutApplicationTest::aModalAlertAnswersLikeEsc()
{
    QFETCH(const bool, worker);
    const auto call = [] { return platform::runModalAlert({headline, body, yes, cancel, {}}); };
    QCOMPARE(result(worker, call), qint64{platform::AlertAlternateReturn});
}

void ZQAlertWithoutApplicationTest::anObjectOfAWorkerMayGo()
{
    const auto call = [] {
        ZQAlert alert;
        alert.setParentWindow(nullptr);
        return alert.alertEnded();
    };
    QVERIFY(!result(true, call));
}

TEST_CLASS(ZQAlertWithoutApplicationTest, test::NoApplication)
#include "ZQAlertWithoutApplicationTest.moc"
