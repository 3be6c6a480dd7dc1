// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/system_profiler/NetworkManagerNames.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <sys/socket.h>
#include <sys/un.h>

using namespace std::chrono_literals;

namespace {

constexpr auto patience = 20s;

void endProcess(QProcess &process)
{
    process.kill();
    process.waitForFinished();
}

} // namespace

// A system bus of the sandbox's own, and on it a program that answers as NetworkManager does.
class NetworkManagerNamesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup();

    void theNamesAreThoseOfTheConnectionsThatAreUp();
    void manyConnectionsAreNamed();
    void withoutABusThereAreNoNames();
    void withoutNetworkManagerThereAreNoNames();
    void anErrorGivesNoNames();
    void anAnswerOfAnotherFormGivesNoNames();
    void oneThatNeverAnswersIsGivenUp();
    void aBusThatSaysNothingIsGivenUp();

private:
    void startBus();
    void startNetworkManager(const char *behaviour);
    static std::map<std::string, std::string> names() { return networkManagerNames(patience); }

    QProcess m_bus;
    QProcess m_networkManager;
};

void NetworkManagerNamesTest::cleanup()
{
    endProcess(m_networkManager);
    endProcess(m_bus);
    QFile::remove(QStringLiteral("/run/dbus/system_bus_socket"));
}

void NetworkManagerNamesTest::startBus()
{
    QVERIFY(QDir().mkpath(QStringLiteral("/run/dbus")));
    QFile configuration(QStringLiteral("/tmp/bus.conf"));
    QVERIFY(configuration.open(QIODevice::WriteOnly));
    configuration.write("<busconfig><type>system</type>"
                        "<listen>unix:path=/run/dbus/system_bus_socket</listen>"
                        "<policy context='default'><allow send_destination='*' eavesdrop='true'/>"
                        "<allow eavesdrop='true'/><allow own='*'/>"
                        "</policy></busconfig>");
    configuration.close();
    m_bus.start(QStringLiteral("/usr/bin/dbus-daemon"),
                {QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                 QStringLiteral("--nosyslog"), QStringLiteral("--print-address"),
                 QStringLiteral("--config-file=/tmp/bus.conf")});
    QVERIFY(m_bus.waitForReadyRead(20000));
}

void NetworkManagerNamesTest::startNetworkManager(const char *behaviour)
{
    m_networkManager.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_networkManager.start(QStringLiteral("/usr/bin/python3"),
                           {QStringLiteral("-B"), QStringLiteral(NETWORK_MANAGER_FOR_TEST),
                            QString::fromLatin1(behaviour)});
    QVERIFY(m_networkManager.waitForReadyRead(20000));
}

void NetworkManagerNamesTest::theNamesAreThoseOfTheConnectionsThatAreUp()
{
    startBus();
    startNetworkManager("answer");
    // "eth1" has no connection up, "br0" one that is gone, "eth2" one without a name.
    const std::map<std::string, std::string> expected{{"eth0", "Büro & <Labor>"},
                                                      {"wlan0", "Home"}};
    QVERIFY(names() == expected);
}

void NetworkManagerNamesTest::manyConnectionsAreNamed()
{
    startBus();
    startNetworkManager("many");
    const auto all = names();
    QCOMPARE(all.size(), std::size_t{500});
    QCOMPARE(all.at("eth499"), std::string("Wired connection 499"));
}

void NetworkManagerNamesTest::withoutABusThereAreNoNames()
{
    QVERIFY(names().empty());
}

void NetworkManagerNamesTest::withoutNetworkManagerThereAreNoNames()
{
    startBus();
    QVERIFY(names().empty());
}

void NetworkManagerNamesTest::anErrorGivesNoNames()
{
    startBus();
    startNetworkManager("refuse");
    QVERIFY(names().empty());
}

void NetworkManagerNamesTest::anAnswerOfAnotherFormGivesNoNames()
{
    startBus();
    startNetworkManager("babble");
    QVERIFY(names().empty());
}

void NetworkManagerNamesTest::oneThatNeverAnswersIsGivenUp()
{
    startBus();
    startNetworkManager("wait");
    QElapsedTimer time;
    time.start();
    QVERIFY(networkManagerNames(100ms).empty());
    QVERIFY(time.elapsed() >= 100);
    QVERIFY(time.elapsed() < 20000); // the library's own limit is 25 s
}

void NetworkManagerNamesTest::aBusThatSaysNothingIsGivenUp()
{
    QVERIFY(QDir().mkpath(QStringLiteral("/run/dbus")));
    const platform::Descriptor bus(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    qstrcpy(&address.sun_path[0], "/run/dbus/system_bus_socket");
    QCOMPARE(::bind(bus.fd(), reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    QCOMPARE(::listen(bus.fd(), 1), 0);
    QElapsedTimer time;
    time.start();
    QVERIFY(networkManagerNames(100ms).empty());
    QVERIFY(time.elapsed() >= 100);
    QVERIFY(time.elapsed() < 20000);
}

TEST_CLASS(NetworkManagerNamesTest, QCoreApplication)
#include "NetworkManagerNamesTest.moc"
