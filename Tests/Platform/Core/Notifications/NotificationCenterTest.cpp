// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Notifications/NotificationCenter.h"

#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <atomic>
#include <thread>
#include <vector>

using platform::NotificationCenter;

namespace {

QString name()
{
    return QStringLiteral("ZQShortcutKeyChanged");
}

} // namespace

class NotificationCenterTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aPostReachesTheObserversOfItsNameAtOnceAndInOrder();
    void aPostCarriesObjectAndUserInformation();
    void aRemovedObserverHearsNothing();
    void anObserverRemovedByAnotherDuringAPostHearsNothing();
    void anObserverMayRemoveItselfDuringAPost();
    void anObserverAddedDuringAPostHearsTheNextOne();
    void aHandlerMayPost();
    void removingAnUnknownObserverDoesNothing();
    void aHandlerIsReleasedWithItsObserver();
    void thereIsOneDefaultCenter();
    void severalThreadsMayPostAddAndRemove();
};

void NotificationCenterTest::aPostReachesTheObserversOfItsNameAtOnceAndInOrder()
{
    NotificationCenter center;
    QList<int> heard;
    for (int number = 0; number < 3; ++number) {
        center.addObserver(name(), [&heard, number](const auto &) { heard << number; });
    }
    center.addObserver(QStringLiteral("ZQShortcutKeyCleared"), [&](const auto &) { heard << 9; });
    center.post({name(), {}, {}});
    QCOMPARE(heard, (QList<int>{0, 1, 2}));
}

void NotificationCenterTest::aPostCarriesObjectAndUserInformation()
{
    NotificationCenter center;
    platform::Notification heard;
    center.addObserver(name(), [&](const auto &notification) { heard = notification; });
    auto *const sender = static_cast<QObject *>(this);
    center.post({name(), QVariant::fromValue(sender), {{QStringLiteral("key"), 4}}});
    QCOMPARE(heard.name, name());
    QCOMPARE(heard.object.value<QObject *>(), sender);
    QCOMPARE(heard.userInfo, (QVariantMap{{QStringLiteral("key"), 4}}));
}

void NotificationCenterTest::aRemovedObserverHearsNothing()
{
    NotificationCenter center;
    int heard = 0;
    const auto observer = center.addObserver(name(), [&](const auto &) { ++heard; });
    center.post({name(), {}, {}});
    center.removeObserver(observer);
    center.post({name(), {}, {}});
    QCOMPARE(heard, 1);
}

void NotificationCenterTest::anObserverRemovedByAnotherDuringAPostHearsNothing()
{
    NotificationCenter center;
    NotificationCenter::Observer second = 0;
    int heard = 0;
    center.addObserver(name(), [&](const auto &) { center.removeObserver(second); });
    second = center.addObserver(name(), [&](const auto &) { ++heard; });
    center.post({name(), {}, {}});
    QCOMPARE(heard, 0);
}

void NotificationCenterTest::anObserverMayRemoveItselfDuringAPost()
{
    NotificationCenter center;
    NotificationCenter::Observer observer = 0;
    const auto text = QStringLiteral("captured by the handler, read after its removal");
    QStringList heard;
    observer = center.addObserver(name(), [&center, &observer, &heard, text](const auto &) {
        center.removeObserver(observer);
        heard << text;
    });
    center.post({name(), {}, {}});
    center.post({name(), {}, {}});
    QCOMPARE(heard, QStringList(text));
}

void NotificationCenterTest::anObserverAddedDuringAPostHearsTheNextOne()
{
    NotificationCenter center;
    int heard = 0;
    bool added = false;
    center.addObserver(name(), [&](const auto &) {
        if (!added) {
            added = true;
            center.addObserver(name(), [&](const auto &) { ++heard; });
        }
    });
    center.post({name(), {}, {}});
    QCOMPARE(heard, 0);
    center.post({name(), {}, {}});
    QCOMPARE(heard, 1);
}

void NotificationCenterTest::aHandlerMayPost()
{
    NotificationCenter center;
    QStringList heard;
    const auto other = QStringLiteral("ZQShortcutKeyCleared");
    center.addObserver(name(), [&](const auto &) { center.post({other, {}, {}}); });
    center.addObserver(other, [&](const auto &notification) { heard << notification.name; });
    center.post({name(), {}, {}});
    QCOMPARE(heard, QStringList(other));
}

void NotificationCenterTest::removingAnUnknownObserverDoesNothing()
{
    NotificationCenter center;
    int heard = 0;
    const auto observer = center.addObserver(name(), [&](const auto &) { ++heard; });
    center.removeObserver(observer + 1);
    center.removeObserver(0);
    center.post({name(), {}, {}});
    QCOMPARE(heard, 1);
}

void NotificationCenterTest::aHandlerIsReleasedWithItsObserver()
{
    NotificationCenter center;
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    const auto observer = center.addObserver(name(), [held = std::move(held)](const auto &) {});
    QVERIFY(!watched.expired());
    center.removeObserver(observer);
    QVERIFY(watched.expired());
}

void NotificationCenterTest::thereIsOneDefaultCenter()
{
    QCOMPARE(&NotificationCenter::defaultCenter(), &NotificationCenter::defaultCenter());
}

void NotificationCenterTest::severalThreadsMayPostAddAndRemove()
{
    NotificationCenter center;
    std::atomic<int> heard = 0;
    center.addObserver(name(), [&](const auto &) { ++heard; });
    constexpr int threadCount = 4;
    constexpr int rounds = 500;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int number = 0; number < threadCount; ++number) {
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                const auto observer = center.addObserver(name(), [](const auto &) {});
                center.post({name(), {}, {}});
                center.removeObserver(observer);
            }
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    QCOMPARE(heard.load(), threadCount * rounds);
}

TEST_CLASS(NotificationCenterTest, QCoreApplication)
#include "NotificationCenterTest.moc"
