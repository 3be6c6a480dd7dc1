// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Notifications/DistributedNotificationCenter.h"

#include "Platform/Core/Threads/MainThread.h"
#include "Tests/Support/Command.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDir>
#include <QPoint>
#include <QTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <thread>
#include <vector>

using platform::DistributedObserver;
using platform::Notification;
using platform::postDistributedNotification;

namespace {

constexpr int patience = 60000; // milliseconds, for a loaded machine

QString statusName()
{
    return QStringLiteral("ZQOstrelClientStatusUpdate");
}

QString objectPath()
{
    return QStringLiteral("/com/corvane/DistributedNotifications");
}

QString signalName()
{
    return QStringLiteral("com.corvane.DistributedNotifications.Posted");
}

// Sends the signal by a program that knows nothing of us.
void emitSignal(const QStringList &arguments, const QString &signal = signalName(),
                const QString &path = objectPath())
{
    test::Command gdbus(
        QStringLiteral("gdbus"),
        QStringList({QStringLiteral("emit"), QStringLiteral("--session"),
                     QStringLiteral("--object-path"), path, QStringLiteral("--signal"), signal}) +
            arguments);
    QVERIFY(QTest::qWaitFor([&] { return gdbus.state() == QProcess::NotRunning; }, patience));
    QCOMPARE(gdbus.exitCode(), 0);
}

void emitStatus(const QString &userInfo)
{
    emitSignal({statusName(), QString(), userInfo});
}

QVariantMap status(const QString &word)
{
    return {{QStringLiteral("status"), word}};
}

// Keeps what it hears.
class Listener {
public:
    explicit Listener(const QString &name = statusName())
        : m_observer(name, [this](const Notification &heard) { all.push_back(heard); })
    {
    }

    std::vector<Notification> all;

private:
    DistributedObserver m_observer;
};

// Emits user information, in GVariant text, and returns what an observer gets of it.
QVariantMap received(const QString &userInfo)
{
    Listener listener;
    emitStatus(userInfo);
    if (!QTest::qWaitFor([&] { return !listener.all.empty(); }, patience)) {
        return {{QStringLiteral("nothing"), QStringLiteral("received")}};
    }
    return listener.all.front().userInfo;
}

// A program that prints the signals of this process.
std::unique_ptr<test::Command> monitor()
{
    auto command = std::make_unique<test::Command>(
        QStringLiteral("gdbus"),
        QStringList({QStringLiteral("monitor"), QStringLiteral("--session"),
                     QStringLiteral("--dest"), QDBusConnection::sessionBus().baseService()}));
    return command->waitForOutput(QStringLiteral("is owned by")) ? std::move(command) : nullptr;
}

} // namespace

class DistributedNotificationCenterTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void aPostIsSeenByOtherPrograms();
    void aPostOfAnotherProgramIsHeard();
    void theObjectIsTextOrNothing();
    void thisProcessHearsItsOwnPosts();
    void onlyTheNameDecides();
    void aSignalOfAnotherSignatureIsIgnored();
    void aSignalOfAnotherInterfaceOrPathIsIgnored();
    void userInformationIsMadeOfPlainValues_data();
    void userInformationIsMadeOfPlainValues();
    void hugeUserInformationIsSurvived();
    void userInformationThatTheBusCannotCarryIsLeftOut();
    void tooMuchUserInformationIsLostWithAConsoleLine();
    void severalThreadsMayPost();
    void everyObserverHearsOnTheMainThread();
    void anObserverMayBeDestroyedByItsHandler();
    void aDestroyedObserverHearsNothing();
    void aProgramMayEndRightAfterAPost();
    void theSystemBusIsLeftAlone();

private:
    int m_systemBus = -1;
};

void DistributedNotificationCenterTest::initTestCase()
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(&address.sun_path[0], "/tmp/system_bus", sizeof address.sun_path - 1);
    m_systemBus = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    QCOMPARE(::bind(m_systemBus, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    QCOMPARE(::listen(m_systemBus, 5), 0);
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/tmp/system_bus");
}

void DistributedNotificationCenterTest::aPostIsSeenByOtherPrograms()
{
    const auto gdbus = monitor();
    QVERIFY(gdbus);
    postDistributedNotification({QStringLiteral("ZQOstrelClientCurrentStatus"), {}, {}});
    postDistributedNotification(
        {statusName(), QStringLiteral("from"), status(QStringLiteral("Grüße"))});
    const auto head = objectPath() + QStringLiteral(": ") + signalName();
    QVERIFY(gdbus->waitForOutput(
        head + QStringLiteral(" ('ZQOstrelClientStatusUpdate', 'from', {'status': <'Grüße'>})\n")));
    QVERIFY(gdbus->output().contains(
        head + QStringLiteral(" ('ZQOstrelClientCurrentStatus', '', @a{sv} {})\n")));
}

void DistributedNotificationCenterTest::aPostOfAnotherProgramIsHeard()
{
    Listener listener;
    emitStatus(QStringLiteral("{'status': <'Disconnected'>}"));
    QTRY_COMPARE_WITH_TIMEOUT(listener.all.size(), 1U, patience);
    QCOMPARE(listener.all.front().name, statusName());
    QCOMPARE(listener.all.front().userInfo, status(QStringLiteral("Disconnected")));
}

void DistributedNotificationCenterTest::theObjectIsTextOrNothing()
{
    Listener listener;
    emitSignal({statusName(), QString(), QStringLiteral("@a{sv} {}")});
    emitSignal({statusName(), QStringLiteral("'an object'"), QStringLiteral("@a{sv} {}")});
    QTRY_COMPARE_WITH_TIMEOUT(listener.all.size(), 2U, patience);
    QVERIFY(!listener.all.at(0).object.isValid());
    QVERIFY(listener.all.at(0).userInfo.isEmpty());
    QCOMPARE(listener.all.at(1).object, QVariant(QStringLiteral("an object")));
}

void DistributedNotificationCenterTest::thisProcessHearsItsOwnPosts()
{
    Listener listener;
    postDistributedNotification({statusName(), {}, status(QStringLiteral("Running"))});
    QTRY_COMPARE_WITH_TIMEOUT(listener.all.size(), 1U, patience);
    QCOMPARE(listener.all.front().userInfo, status(QStringLiteral("Running")));
}

void DistributedNotificationCenterTest::onlyTheNameDecides()
{
    Listener listener;
    Listener other(QStringLiteral("ZQOstrelClientRelaunch"));
    for (const char *name : {"ZQOstrelClientStatus", "ZQOstrelClientStatusUpdate2",
                             "zqostrelclientstatusupdate", "ZQOstrelClientRelaunch"}) {
        emitSignal({QString::fromLatin1(name), QString(), QStringLiteral("@a{sv} {}")});
    }
    emitStatus(QStringLiteral("{'status': <'last'>}"));
    QTRY_VERIFY_WITH_TIMEOUT(!listener.all.empty(), patience);
    QCOMPARE(listener.all.size(), 1U);
    QCOMPARE(listener.all.front().userInfo, status(QStringLiteral("last")));
    QTRY_COMPARE_WITH_TIMEOUT(other.all.size(), 1U, patience);
}

void DistributedNotificationCenterTest::aSignalOfAnotherSignatureIsIgnored()
{
    Listener listener;
    emitSignal({statusName()});
    emitSignal({statusName(), QString()});
    emitSignal({statusName(), QString(), QStringLiteral("'text'")});
    emitSignal({statusName(), QString(), QStringLiteral("{'status': 'not in a variant'}")});
    emitSignal({statusName(), QStringLiteral("5"), QStringLiteral("@a{sv} {}")});
    emitSignal({statusName(), QString(), QStringLiteral("@a{sv} {}"), QStringLiteral("1")});
    emitSignal({QStringLiteral("5"), QString(), QStringLiteral("@a{sv} {}")});
    emitStatus(QStringLiteral("{'status': <'last'>}"));
    QTRY_VERIFY_WITH_TIMEOUT(!listener.all.empty(), patience);
    QCOMPARE(listener.all.size(), 1U);
    QCOMPARE(listener.all.front().userInfo, status(QStringLiteral("last")));
}

void DistributedNotificationCenterTest::aSignalOfAnotherInterfaceOrPathIsIgnored()
{
    Listener listener;
    const QStringList arguments{statusName(), QString(), QStringLiteral("@a{sv} {}")};
    emitSignal(arguments, QStringLiteral("com.corvane.Other.Posted"));
    emitSignal(arguments, QStringLiteral("com.corvane.DistributedNotifications.Other"));
    emitSignal(arguments, signalName(), QStringLiteral("/com/corvane/Other"));
    emitStatus(QStringLiteral("{'status': <'last'>}"));
    QTRY_VERIFY_WITH_TIMEOUT(!listener.all.empty(), patience);
    QCOMPARE(listener.all.size(), 1U);
    QCOMPARE(listener.all.front().userInfo, status(QStringLiteral("last")));
}

void DistributedNotificationCenterTest::userInformationIsMadeOfPlainValues_data()
{
    QTest::addColumn<QString>("sent");
    QTest::addColumn<QVariant>("expected");
    const auto row = [](const char *sent, const QVariant &expected) {
        QTest::newRow(sent) << QString::fromUtf8(sent) << expected;
    };
    const auto text = [](const char *utf8) { return QString::fromUtf8(utf8); };
    row("'Running'", text("Running"));
    row("''", text(""));
    row("true", true);
    row("byte 0x07", QVariant::fromValue<uchar>(7));
    row("int16 -7", QVariant::fromValue<short>(-7));
    row("uint32 7", 7U);
    row("int64 -7", -7LL);
    row("uint64 7", 7ULL);
    row("0.5", 0.5);
    row("<'one variant more'>", text("one variant more"));
    row("<<<5>>>", 5);
    row("objectpath '/a/b'", text("/a/b"));
    row("signature 'a{sv}'", text("a{sv}"));
    row("b'bytes'", QByteArray("bytes\0", 6));
    row("['a', 'b']", QStringList({text("a"), text("b")}));
    row("@as []", QStringList());
    row("[1, 2]", QVariantList({1, 2}));
    row("@ai []", QVariantList());
    row("[<1>, <'a'>, <[<true>]>]", QVariantList({1, text("a"), QVariantList({true})}));
    row("[[1], [2, 3]]", QVariantList({QVariantList({1}), QVariantList({2, 3})}));
    row("(1, 'two', [3.0])", QVariantList({1, text("two"), QVariantList({3.0})}));
    row("{'a': 1}", QVariantMap({{text("a"), 1}}));
    row("{'a': <{'b': <objectpath '/c'>}>}",
        QVariantMap({{text("a"), QVariantMap({{text("b"), text("/c")}})}}));
    row("{5: 'five'}", QVariantMap({{text("5"), text("five")}}));
    row("{objectpath '/o': <(true,)>}", QVariantMap({{text("/o"), QVariantList({true})}}));
}

void DistributedNotificationCenterTest::userInformationIsMadeOfPlainValues()
{
    QFETCH(QString, sent);
    QFETCH(QVariant, expected);
    const auto all = received(QStringLiteral("{'status': <%1>}").arg(sent));
    const auto actual = all.value(QStringLiteral("status"));
    QCOMPARE(actual.userType(), expected.userType());
    QCOMPARE(actual, expected);
}

void DistributedNotificationCenterTest::hugeUserInformationIsSurvived()
{
    const QString huge(100000, QChar(u'x'));
    QCOMPARE(received(QStringLiteral("{'status': <'%1'>}").arg(huge)), status(huge));

    // Of very many values the first ones are kept.
    QString many;
    for (int count = 0; count < 30000; ++count) {
        many += QStringLiteral("%1,").arg(count % 10);
    }
    many.chop(1);
    const auto values = received(QStringLiteral("{'a': <[%1]>, 'b': <'lost'>}").arg(many));
    const auto list = values.value(QStringLiteral("a")).toList();
    QVERIFY(list.size() > 9000 && list.size() <= 10000);
    QCOMPARE(list.last().toInt(), (list.size() - 1) % 10);

    const auto deep = QString(30, QChar(u'[')) + u'1' + QString(30, QChar(u']'));
    QVariant innermost =
        received(QStringLiteral("{'status': <%1>}").arg(deep)).value(QStringLiteral("status"));
    while (!innermost.toList().isEmpty()) {
        innermost = innermost.toList().first();
    }
    QCOMPARE(innermost, QVariant(1));
}

void DistributedNotificationCenterTest::userInformationThatTheBusCannotCarryIsLeftOut()
{
    Listener listener;
    postDistributedNotification({statusName(),
                                 {},
                                 {{QStringLiteral("point"), QPoint(1, 2)},
                                  {QStringLiteral("nothing"), QVariant()},
                                  {QStringLiteral("status"), QStringLiteral("kept")}}});
    QTRY_COMPARE_WITH_TIMEOUT(listener.all.size(), 1U, patience);
    QCOMPARE(listener.all.front().userInfo, status(QStringLiteral("kept")));
}

void DistributedNotificationCenterTest::tooMuchUserInformationIsLostWithAConsoleLine()
{
    test::ConsoleCapture console;
    Listener listener;
    postDistributedNotification({statusName(), {}, status(QString(50000000, QChar(u'x')))});
    postDistributedNotification({statusName(), {}, status(QStringLiteral("next"))});
    QTRY_COMPARE_WITH_TIMEOUT(listener.all.size(), 1U, patience);
    QCOMPARE(listener.all.front().userInfo, status(QStringLiteral("next")));
    QCOMPARE(console.lines(), QStringList(QStringLiteral(
                                  "Distributed notification ZQOstrelClientStatusUpdate is lost: "
                                  "too much user information")));
}

void DistributedNotificationCenterTest::severalThreadsMayPost()
{
    constexpr std::size_t threadCount = 4;
    constexpr std::size_t postCount = 50;
    Listener listener;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (unsigned number = 0; number < threadCount; ++number) {
        threads.emplace_back([number] {
            for (unsigned count = 0; count < postCount; ++count) {
                postDistributedNotification(
                    {statusName(),
                     {},
                     {{QStringLiteral("thread"), number}, {QStringLiteral("count"), count}}});
            }
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }
    QTRY_COMPARE_WITH_TIMEOUT(listener.all.size(), threadCount * postCount, patience);
    // The posts of one thread keep their order.
    std::vector<unsigned> next(threadCount, 0);
    for (const auto &heard : listener.all) {
        auto &expected = next.at(heard.userInfo.value(QStringLiteral("thread")).toUInt());
        QCOMPARE(heard.userInfo.value(QStringLiteral("count")).toUInt(), expected++);
    }
}

void DistributedNotificationCenterTest::everyObserverHearsOnTheMainThread()
{
    int heard = 0;
    const auto count = [&](const Notification & /*notification*/) {
        QVERIFY(platform::isMainThread());
        ++heard;
    };
    const DistributedObserver first(statusName(), count);
    const DistributedObserver second(statusName(), count);
    std::thread([] { postDistributedNotification({statusName(), {}, {}}); }).join();
    QTRY_COMPARE_WITH_TIMEOUT(heard, 2, patience);
}

void DistributedNotificationCenterTest::anObserverMayBeDestroyedByItsHandler()
{
    std::unique_ptr<DistributedObserver> observer;
    const auto text = QStringLiteral("captured by the handler, read after its end");
    QStringList heard;
    observer = std::make_unique<DistributedObserver>(
        statusName(), [&observer, &heard, text](const Notification & /*notification*/) {
            observer.reset();
            heard << text;
        });
    Listener listener;
    postDistributedNotification({statusName(), {}, {}});
    postDistributedNotification({statusName(), {}, {}});
    QTRY_COMPARE_WITH_TIMEOUT(listener.all.size(), 2U, patience);
    QCOMPARE(heard, QStringList(text));
}

void DistributedNotificationCenterTest::aDestroyedObserverHearsNothing()
{
    auto listener = std::make_unique<Listener>();
    Listener other;
    postDistributedNotification({statusName(), {}, {}});
    QTRY_COMPARE_WITH_TIMEOUT(other.all.size(), 1U, patience);
    QTRY_COMPARE_WITH_TIMEOUT(listener->all.size(), 1U, patience);
    postDistributedNotification({statusName(), {}, {}});
    listener.reset(); // the memory sanitizer watches what is still under way
    QTRY_COMPARE_WITH_TIMEOUT(other.all.size(), 2U, patience);
}

void DistributedNotificationCenterTest::aProgramMayEndRightAfterAPost()
{
    Listener listener;
    for (unsigned count = 1; count <= 20; ++count) {
        test::Command program(
            QCoreApplication::applicationFilePath(),
            {QStringLiteral("DistributedNotificationCenterTest"), QStringLiteral("post")});
        QTRY_COMPARE_WITH_TIMEOUT(listener.all.size(), count, patience);
        QTRY_COMPARE_WITH_TIMEOUT(program.state(), QProcess::NotRunning, patience);
        QCOMPARE(program.exitCode(), 0);
    }
}

void DistributedNotificationCenterTest::theSystemBusIsLeftAlone()
{
    QCOMPARE(::accept(m_systemBus, nullptr, nullptr), -1);
    QCOMPARE(errno, EAGAIN);
    ::close(m_systemBus);
    m_systemBus = -1;
}

static int run(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc == 2 && std::strcmp(argv[1], "post") == 0) {
        postDistributedNotification({statusName(), {}, status(QStringLiteral("short"))});
        return 0;
    }
    DistributedNotificationCenterTest test;
    return QTest::qExec(&test, argc, argv);
}

TEST_FUNCTION(DistributedNotificationCenterTest, run)
#include "DistributedNotificationCenterTest.moc"
