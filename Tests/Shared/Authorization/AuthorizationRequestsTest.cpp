// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Authorization/AuthorizationRequests.h"

#include "Platform/Core/Threads/MainThread.h"
#include "Platform/Core/Threads/WorkerThreads.h"
#include "Tests/Support/Faults/Faults.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>
#include <QTimer>

#include <atomic>
#include <cerrno>
#include <thread>

using namespace std::chrono_literals;
using IsGivenUp = AuthorizationRequests::IsGivenUp;

namespace {

// What stands in for the user: asks until told to answer, and counts how often it was asked.
// Refuses after half a minute, so that who is held up fails instead of hanging.
class User {
public:
    AuthorizationRequests::Ask asked()
    {
        return [this](const IsGivenUp &isGivenUp) {
            ++m_count;
            const auto end = std::chrono::steady_clock::now() + 30s;
            while (m_answer == unanswered && std::chrono::steady_clock::now() < end) {
                if (isGivenUp()) {
                    m_wasGivenUp = true;
                    return false;
                }
                std::this_thread::sleep_for(1ms);
            }
            return m_answer == yes;
        };
    }

    void answer(bool granted) { m_answer = granted ? yes : no; }
    int count() const { return m_count; }
    bool wasGivenUp() const { return m_wasGivenUp; }

private:
    static constexpr int unanswered = -1;
    static constexpr int no = 0;
    static constexpr int yes = 1;

    std::atomic<int> m_answer = unanswered;
    std::atomic<int> m_count = 0;
    std::atomic<bool> m_wasGivenUp = false;
};

} // namespace

class AuthorizationRequestsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theMainThreadDispatchesEventsWhileItWaits();
    void theMainThreadDispatchesEventsWhileAWorkersRequestIsOpen();
    void whoComesMeanwhileGetsTheSameAnswer_data();
    void whoComesMeanwhileGetsTheSameAnswer();
    void whoComesAfterwardsAsksAnew();
    void aRequestThatIsMadeIsNotJoined();
    void aWorkerThatIsToEndLeavesItToTheOthers();
    void whatNobodyWaitsForIsGivenUp();
    void aGivenUpRequestIsRefusedAndNotJoined();
    void quittingGivesItUp();
    void withoutAThreadItIsAnsweredToo();
};

void AuthorizationRequestsTest::theMainThreadDispatchesEventsWhileItWaits()
{
    AuthorizationRequests requests;
    for (const auto granted : {true, false}) {
        User user;
        QTimer::singleShot(0, this, [&user, granted] { user.answer(granted); });
        QCOMPARE(requests.join(user.asked()), granted);
        QTimer::singleShot(0, this, [&user, granted] { user.answer(granted); });
        QCOMPARE(requests.make(user.asked()), granted);
    }
}

void AuthorizationRequestsTest::theMainThreadDispatchesEventsWhileAWorkersRequestIsOpen()
{
    AuthorizationRequests requests;
    User user;
    std::atomic<int> granted = 0;
    std::thread worker([&] { granted += requests.join(user.asked()) ? 1 : 0; });
    QTRY_COMPARE(user.count(), 1);
    QTimer::singleShot(0, this, [&user] { user.answer(true); });
    granted += requests.join(user.asked()) ? 1 : 0;
    worker.join();
    QCOMPARE(granted, 2);
    QCOMPARE(user.count(), 1);
}

void AuthorizationRequestsTest::whoComesMeanwhileGetsTheSameAnswer_data()
{
    QTest::addColumn<bool>("isGranted");
    QTest::newRow("granted") << true;
    QTest::newRow("refused") << false;
}

void AuthorizationRequestsTest::whoComesMeanwhileGetsTheSameAnswer()
{
    QFETCH(const bool, isGranted);
    AuthorizationRequests requests;
    User user;
    std::atomic<int> joined = 0;
    std::atomic<int> same = 0;
    const auto join = [&] {
        ++joined;
        same += requests.join(user.asked()) == isGranted ? 1 : 0;
    };
    std::vector<std::thread> workers;
    QTimer::singleShot(0, this, [&] {
        for (int i = 0; i < 8; ++i) {
            workers.emplace_back(join);
        }
        QTimer answer;
        answer.callOnTimeout([&] {
            if (joined == 10) { // and a moment more, for the last of them to be there
                QTimer::singleShot(3000, this, [&] { user.answer(isGranted); });
            }
        });
        answer.start(1);
        join(); // inside the wait of the first
    });
    join();
    for (auto &worker : workers) {
        worker.join();
    }
    QCOMPARE(same, 10);
    QCOMPARE(user.count(), 1);
}

void AuthorizationRequestsTest::whoComesAfterwardsAsksAnew()
{
    AuthorizationRequests requests;
    User user;
    user.answer(false);
    QVERIFY(!requests.join(user.asked()));
    user.answer(true);
    QVERIFY(requests.join(user.asked()));
    QCOMPARE(user.count(), 2);
}

void AuthorizationRequestsTest::aRequestThatIsMadeIsNotJoined()
{
    AuthorizationRequests requests;
    User first;
    User second;
    second.answer(true);
    std::atomic<bool> isGranted = true;
    std::thread worker([&] { isGranted = requests.make(first.asked()); });
    QTRY_COMPARE(first.count(), 1);
    QTimer::singleShot(0, this, [&first] { first.answer(false); });
    QVERIFY(requests.join(second.asked()));
    worker.join();
    QVERIFY(!isGranted);
    QCOMPARE(second.count(), 1);
}

void AuthorizationRequestsTest::aWorkerThatIsToEndLeavesItToTheOthers()
{
    AuthorizationRequests requests;
    User user;
    bool ofWorker = true;
    auto workers = std::make_unique<platform::WorkerThreads>();
    workers->start([&] { ofWorker = requests.join(user.asked()); });
    QTRY_COMPARE(user.count(), 1);
    QTimer::singleShot(0, this, [&] {
        workers.reset(); // as the pane does that is closed
        user.answer(true);
    });
    QVERIFY(requests.join(user.asked()));
    QVERIFY(!ofWorker);
    QVERIFY(!user.wasGivenUp());
    QCOMPARE(user.count(), 1);
}

void AuthorizationRequestsTest::whatNobodyWaitsForIsGivenUp()
{
    AuthorizationRequests requests;
    User user;
    bool isGranted = true;
    {
        platform::WorkerThreads workers;
        workers.start([&] { isGranted = requests.join(user.asked()); });
        QTRY_COMPARE(user.count(), 1);
    }
    QVERIFY(!isGranted);
    QVERIFY(user.wasGivenUp());
}

void AuthorizationRequestsTest::aGivenUpRequestIsRefusedAndNotJoined()
{
    AuthorizationRequests requests;
    User user;
    User next;
    next.answer(true);
    bool isNextGranted = false;
    QTimer::singleShot(0, this, [&] {
        requests.giveUp();
        isNextGranted = requests.join(next.asked());
    });
    QVERIFY(!requests.join(user.asked()));
    QVERIFY(user.wasGivenUp());
    QVERIFY(isNextGranted);
}

void AuthorizationRequestsTest::quittingGivesItUp()
{
    AuthorizationRequests requests;
    User user;
    bool isGranted = true;
    QTimer::singleShot(0, this, [&] {
        QTimer::singleShot(0, this, [] { QCoreApplication::quit(); });
        isGranted = requests.join(user.asked());
    });
    QCoreApplication::exec();
    QVERIFY(!isGranted);
    QVERIFY(user.wasGivenUp());
}

void AuthorizationRequestsTest::withoutAThreadItIsAnsweredToo()
{
    AuthorizationRequests requests;
    User user;
    user.answer(true);
    const test::Faults faults({test::Thread, 1, test::Outcome::Fails, EAGAIN, true, false});
    QVERIFY(requests.join(user.asked()));
    QVERIFY(requests.make(user.asked()));
    QCOMPARE(user.count(), 2);
}

TEST_CLASS(AuthorizationRequestsTest, QCoreApplication)
#include "AuthorizationRequestsTest.moc"
