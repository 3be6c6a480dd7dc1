// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Authorization/ToolRequest.h"

#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <random>
#include <thread>

namespace {

struct Sockets {
    platform::Descriptor first;
    platform::Descriptor second;
};

Sockets sockets()
{
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        qFatal("no sockets");
    }
    return {platform::Descriptor(ends[0]), platform::Descriptor(ends[1])};
}

std::string number(std::uint32_t value)
{
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

} // namespace

class ToolRequestTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void whatIsEncodedIsDecoded();
    void bytesThatEndEarlyOrGoOnAreNoRequest();
    void numbersThatPromiseTooMuchAreNoRequest();
    void aTextWithANulIsNoRequest();
    void aRequestWithoutAToolIsNone();
    void anyBytesAreTakenOrRefused();
    void descriptorsTravelWithTheirPacket();
    void aPacketThatIsTooLongIsToldFromAWholeOne();
    void theEndOfTheConnectionIsNoPacket();
    void sendingToNobodyFailsWithoutASignal();
    void aReplyThatDoesNotComeIsNotWaitedForLongerThanTheLimit();
    void aSignalInterruptsNeitherSendingNorReceiving();
};

void ToolRequestTest::whatIsEncodedIsDecoded()
{
    const std::vector<std::vector<std::string>> requests{
        {},
        {"/bin/true"},
        {"/bin/rm", "-Rdf", "/Library/a b"},
        {"/bin/x", "", "\xFF\xFE", "line\nbreak", std::string(100000, 'x')}};
    for (const auto &request : requests) {
        const auto decoded = platform::decodeToolRequest(platform::encodeToolRequest(request));
        QVERIFY(decoded.has_value());
        QCOMPARE(*decoded, request);
    }
}

void ToolRequestTest::bytesThatEndEarlyOrGoOnAreNoRequest()
{
    const auto whole = platform::encodeToolRequest({"/bin/echo", "text", ""});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        QVERIFY2(!platform::decodeToolRequest(whole.substr(0, size)), std::to_string(size).c_str());
    }
    QVERIFY(!platform::decodeToolRequest(whole + 'x'));
}

void ToolRequestTest::numbersThatPromiseTooMuchAreNoRequest()
{
    QVERIFY(!platform::decodeToolRequest(number(0xFFFFFFFF)));
    QVERIFY(!platform::decodeToolRequest(number(0x7FFFFFFF) + number(1) + "x"));
    for (const auto length : {0xFFFFFFFFU, 0x80000000U, 0x7FFFFFFFU, 2U}) {
        QVERIFY(!platform::decodeToolRequest(number(1) + number(length) + "x"));
    }
}

void ToolRequestTest::aTextWithANulIsNoRequest()
{
    QVERIFY(!platform::decodeToolRequest(
        platform::encodeToolRequest({"/bin/rm", std::string("/Library\0x", 10)})));
}

void ToolRequestTest::aRequestWithoutAToolIsNone()
{
    QVERIFY(!platform::decodeToolRequest(platform::encodeToolRequest({"", "argument"})));
}

void ToolRequestTest::anyBytesAreTakenOrRefused()
{
    std::mt19937 random(1); // NOLINT(*-msc51-cpp): the same bytes each time
    const auto whole = platform::encodeToolRequest({"/bin/echo", "some text", "more"});
    for (int i = 0; i < 20000; ++i) {
        auto bytes = whole;
        for (int changes = 0; changes < 3; ++changes) {
            bytes[random() % bytes.size()] = static_cast<char>(random());
        }
        const auto decoded = platform::decodeToolRequest(bytes);
        if (decoded) {
            QCOMPARE(platform::encodeToolRequest(*decoded), bytes);
        }
    }
}

void ToolRequestTest::descriptorsTravelWithTheirPacket()
{
    const auto ends = sockets();
    std::array<int, 2> pipe{};
    QCOMPARE(::pipe2(pipe.data(), O_CLOEXEC), 0);
    const platform::Descriptor reading(pipe[0]);
    platform::Descriptor writing(pipe[1]);
    QVERIFY(platform::sendPacket(ends.first.fd(), "with", {writing.fd()}));
    QVERIFY(platform::sendPacket(ends.first.fd(), "without"));
    writing.close();
    {
        const auto with = platform::receivePacket(ends.second.fd());
        QVERIFY(with && with->isWhole);
        QCOMPARE(with->bytes, std::string("with"));
        QCOMPARE(with->descriptors.size(), std::size_t(1));
        QCOMPARE(::fcntl(with->descriptors.front().fd(), F_GETFD), FD_CLOEXEC);
        QCOMPARE(::write(with->descriptors.front().fd(), "x", 1), ssize_t(1));
        const auto without = platform::receivePacket(ends.second.fd());
        QVERIFY(without && without->isWhole);
        QCOMPARE(without->bytes, std::string("without"));
        QVERIFY(without->descriptors.empty());
    }
    std::array<char, 2> buffer{};
    QCOMPARE(::read(reading.fd(), buffer.data(), buffer.size()), ssize_t(1));
    QCOMPARE(::read(reading.fd(), buffer.data(), buffer.size()), ssize_t(0)); // all closed
}

void ToolRequestTest::aPacketThatIsTooLongIsToldFromAWholeOne()
{
    const auto ends = sockets();
    QVERIFY(platform::sendPacket(ends.first.fd(), std::string(platform::maxToolRequest, 'x')));
    QVERIFY(platform::receivePacket(ends.second.fd())->isWhole);
    QVERIFY(platform::sendPacket(ends.first.fd(), std::string(platform::maxToolRequest + 1, 'x')));
    QVERIFY(!platform::receivePacket(ends.second.fd())->isWhole);
}

void ToolRequestTest::theEndOfTheConnectionIsNoPacket()
{
    auto ends = sockets();
    QVERIFY(platform::sendPacket(ends.first.fd(), "last"));
    ends.first.close();
    QVERIFY(platform::receivePacket(ends.second.fd()).has_value());
    QVERIFY(!platform::receivePacket(ends.second.fd()).has_value());
    QVERIFY(!platform::receivePacket(-1).has_value());
}

void ToolRequestTest::sendingToNobodyFailsWithoutASignal()
{
    auto ends = sockets();
    ends.second.close();
    QVERIFY(!platform::sendPacket(ends.first.fd(), "lost"));
    QVERIFY(!platform::sendPacket(-1, "lost"));
}

void ToolRequestTest::aReplyThatDoesNotComeIsNotWaitedForLongerThanTheLimit()
{
    std::array<int, 2> pipe{};
    QCOMPARE(::pipe2(pipe.data(), O_CLOEXEC), 0);
    const platform::Descriptor reading(pipe[0]);
    const platform::Descriptor writing(pipe[1]);
    QVERIFY(!platform::receiveToolReply(reading.fd(), std::chrono::milliseconds(10)));
    QCOMPARE(errno, ETIMEDOUT);
}

void ToolRequestTest::aSignalInterruptsNeitherSendingNorReceiving()
{
    struct sigaction action {};
    action.sa_handler = [](int) {}; // without SA_RESTART, so that system calls end with EINTR
    QCOMPARE(::sigaction(SIGUSR1, &action, nullptr), 0);
    const auto ends = sockets();
    constexpr int packets = 200;
    std::atomic<bool> received = false;
    std::atomic<int> count = 0;
    std::thread receiver([&] {
        while (count < packets) {
            const auto packet = platform::receivePacket(ends.second.fd());
            if (!packet || packet->bytes.size() != 60000) {
                break;
            }
            ++count;
        }
        received = true;
    });
    std::atomic<bool> allSent = true;
    std::thread sender([&] {
        for (int i = 0; i < packets; ++i) {
            allSent = allSent && platform::sendPacket(ends.first.fd(), std::string(60000, 'x'));
        }
    });
    while (!received) {
        ::pthread_kill(receiver.native_handle(), SIGUSR1);
        if (count < packets / 2) {
            ::pthread_kill(sender.native_handle(), SIGUSR1); // it is certainly still there
        }
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    receiver.join();
    sender.join();
    QVERIFY(allSent);
    QCOMPARE(count.load(), packets);
}

TEST_CLASS(ToolRequestTest, QCoreApplication)
#include "ToolRequestTest.moc"
