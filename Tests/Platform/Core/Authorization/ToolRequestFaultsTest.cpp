// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Authorization/ToolRequest.h"
#include "Platform/Core/Processes/SpawnProgram.h"
#include "Tests/Support/Children.h"
#include "Tests/Support/FaultMatrix.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <cstring>

using platform::Descriptor;
using test::text;

// What the authorisation's client says to its helper, and how it starts that, while system calls
// fail. The helper here is a fake: this test holds its end of the socket.
class ToolRequestFaultsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aRequestArrivesWholeOrIsNotSent();
    void interruptionsLoseNoPacket();
    void aReplyThatComesInPiecesIsWhole();
    void aReplyThatCannotBeReadOrEndsEarlyIsNone();
    void whereNoDescriptorIsFreeAPacketIsNotWhole();
    void descriptorsOfAnEmptyPacketAreClosed();
    void aProgramIsStartedOrTheReasonIsTold_data();
    void aProgramIsStartedOrTheReasonIsTold();
};

namespace {

struct Ends {
    Descriptor ours;
    Descriptor theirs;
};

Ends sockets()
{
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        qFatal("no sockets");
    }
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

Ends newPipe()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        qFatal("no pipe");
    }
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

QByteArray reply(std::int32_t number)
{
    QByteArray bytes(static_cast<int>(sizeof number), '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

bool writeAll(const Descriptor &pipe, const QByteArray &bytes)
{
    return ::write(pipe.fd(), bytes.constData(), static_cast<std::size_t>(bytes.size())) ==
           bytes.size();
}

constexpr std::array interruption{test::FaultKind{"EINTR", test::Outcome::Fails, EINTR}};
constexpr std::array delays{interruption[0],
                            test::FaultKind{"short count", test::Outcome::FallsShort, 0}};

// No descriptor can be had while it exists.
class NoFreeDescriptor {
public:
    NoFreeDescriptor()
    {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const Descriptor firstFree(::open("/", O_RDONLY | O_CLOEXEC));
        const rlimit none{static_cast<rlim_t>(firstFree.fd()), m_before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoFreeDescriptor() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    NoFreeDescriptor(const NoFreeDescriptor &) = delete;
    NoFreeDescriptor &operator=(const NoFreeDescriptor &) = delete;

private:
    rlimit m_before{};
};

} // namespace

void ToolRequestFaultsTest::aRequestArrivesWholeOrIsNotSent()
{
    const auto request = platform::encodeToolRequest({"/bin/echo", std::string(60000, 'x')});
    Ends channel;
    test::underEveryFault(
        test::Message, [&] { channel = sockets(); },
        [&] {
            const auto pipe = newPipe();
            return platform::sendPacket(channel.ours.fd(), request, {pipe.theirs.fd()});
        },
        [&](bool sent) {
            channel.ours.close();
            const auto packet = platform::receivePacket(channel.theirs.fd());
            if (!sent) {
                return packet ? text("something was sent") : QString();
            }
            return packet && packet->isWhole && packet->bytes == request &&
                           packet->descriptors.size() == 1
                       ? QString()
                       : text("not all has arrived");
        });
}

void ToolRequestFaultsTest::interruptionsLoseNoPacket()
{
    Ends channel;
    test::underFaults(
        interruption, test::Threads::Own, test::Message, [&] { channel = sockets(); },
        [&] {
            const auto sent =
                platform::sendPacket(channel.ours.fd(), "request", {channel.ours.fd()});
            const auto packet = platform::receivePacket(channel.theirs.fd());
            return sent && packet && packet->bytes == "request" && packet->descriptors.size() == 1;
        },
        [](bool arrived) { return arrived ? QString() : text("lost"); });
}

void ToolRequestFaultsTest::aReplyThatComesInPiecesIsWhole()
{
    Ends pipe;
    test::underFaults(
        delays, test::Threads::Own, test::Read,
        [&] {
            pipe = newPipe();
            QVERIFY(writeAll(pipe.theirs, reply(ENOENT) + reply(1)));
        },
        [&] {
            return platform::receiveToolReply(pipe.ours.fd(), platform::toolStartTimeout) ==
                       ENOENT &&
                   platform::receiveToolReply(pipe.ours.fd(), platform::toolStartTimeout) == 1;
        },
        [](bool isRight) { return isRight ? QString() : text("another reply"); });
}

void ToolRequestFaultsTest::aReplyThatCannotBeReadOrEndsEarlyIsNone()
{
    Ends pipe;
    std::optional<std::int32_t> received;
    test::underEveryFault(
        test::Read,
        [&] {
            pipe = newPipe();
            QVERIFY(writeAll(pipe.theirs, reply(ENOENT)));
        },
        [&] {
            received = platform::receiveToolReply(pipe.ours.fd(), platform::toolStartTimeout);
            return received.has_value();
        },
        [&](bool isThere) {
            return isThere && *received != ENOENT ? text("another reply") : QString();
        });
    for (int size = 0; size < 4; ++size) {
        pipe = newPipe();
        QVERIFY(writeAll(pipe.theirs, reply(0).left(size)));
        pipe.theirs.close();
        QVERIFY(
            !platform::receiveToolReply(pipe.ours.fd(), platform::toolStartTimeout).has_value());
    }
}

void ToolRequestFaultsTest::whereNoDescriptorIsFreeAPacketIsNotWhole()
{
    const auto channel = sockets();
    QVERIFY(platform::sendPacket(channel.theirs.fd(), platform::toolGreeting, {channel.ours.fd()}));
    const auto before = test::openDescriptors();
    std::optional<platform::Packet> packet;
    {
        const NoFreeDescriptor none;
        packet = platform::receivePacket(channel.ours.fd());
    }
    QVERIFY(packet.has_value());
    QCOMPARE(packet->bytes, std::string(platform::toolGreeting));
    QVERIFY(!packet->isWhole);
    QVERIFY(packet->descriptors.empty());
    QCOMPARE(test::openDescriptors(), before);
}

void ToolRequestFaultsTest::descriptorsOfAnEmptyPacketAreClosed()
{
    const auto channel = sockets();
    const auto before = test::openDescriptors();
    QVERIFY(
        platform::sendPacket(channel.theirs.fd(), {}, {channel.ours.fd(), channel.theirs.fd()}));
    QVERIFY(!platform::receivePacket(channel.ours.fd()).has_value());
    QCOMPARE(test::openDescriptors(), before);
}

void ToolRequestFaultsTest::aProgramIsStartedOrTheReasonIsTold_data()
{
    QTest::addColumn<bool>("isGiven");
    QTest::newRow("null devices") << false;
    QTest::newRow("descriptors") << true;
}

void ToolRequestFaultsTest::aProgramIsStartedOrTheReasonIsTold()
{
    QFETCH(bool, isGiven);
    const Descriptor given(isGiven ? ::open("/dev/zero", O_RDWR | O_CLOEXEC) : -1);
    for (const auto &kind : test::faultKinds) {
        if (kind.error == 0) {
            continue;
        }
        pid_t process = -1;
        int error = 0;
        test::underFaults(
            std::array{kind}, test::Threads::Own, test::Open | test::Spawn | test::Duplicate, [] {},
            [&] {
                process = -1;
                error = platform::spawnProgram({"/bin/true",
                                                {"/bin/true"},
                                                platform::cleanEnvironment(),
                                                {given.fd(), given.fd(), given.fd()}},
                                               &process);
                return process > 0;
            },
            [&](bool started) {
                if (started) {
                    int status = -1;
                    const auto ended = ::waitpid(process, &status, 0);
                    return error == 0 && ended == process && status == 0 ? QString()
                                                                         : text("it is wrong");
                }
                return error == kind.error && process == -1 && test::hasNoChildren()
                           ? QString()
                           : text("the reason is wrong: ") + qt_error_string(error);
            });
    }
}

TEST_CLASS(ToolRequestFaultsTest, QCoreApplication)
#include "ToolRequestFaultsTest.moc"
