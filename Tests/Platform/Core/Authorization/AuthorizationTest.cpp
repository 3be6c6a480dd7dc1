// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Authorization/Authorization.h"

#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <sys/socket.h>
#include <unistd.h>

#include <array>

// Where the helper is not installed. With polkit the tests called Authorization... look on from
// outside.
class AuthorizationTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void withoutTheHelperThereIsNoReferenceAndTheReasonIsSaid();
    void nothingIsHandedDownByTheEnvironmentAlone();
    void aSocketOfOurOwnIsNotBelieved();
};

void AuthorizationTest::withoutTheHelperThereIsNoReferenceAndTheReasonIsSaid()
{
    test::ConsoleCapture console;
    auto status = platform::AuthorizationStatus::Success;
    QVERIFY(platform::Authorization::create(&status) == nullptr);
    QVERIFY(status == platform::AuthorizationStatus::Internal);
    const auto lines = console.lines();
    QCOMPARE(lines.size(), 1);
    QVERIFY2(lines.first().contains(QStringLiteral(
                 "/ostrel/authorization-helper is not installed. Install it with: sudo cmake "
                 "--install BUILD_FOLDER --component system")),
             qPrintable(lines.first()));
}

void AuthorizationTest::nothingIsHandedDownByTheEnvironmentAlone()
{
    for (const auto *value : {"", "x", "-1", "0", "1", "2", "99", "3x", "99999999999999999999"}) {
        const test::EnvironmentVariable variable("CORVANE_AUTHORIZATION", value);
        QVERIFY2(platform::Authorization::handedDown() == nullptr, value);
    }
    const test::EnvironmentVariable variable("CORVANE_AUTHORIZATION", {});
    QVERIFY(platform::Authorization::handedDown() == nullptr);
}

void AuthorizationTest::aSocketOfOurOwnIsNotBelieved()
{
    for (const int kind : {SOCK_SEQPACKET, SOCK_STREAM}) {
        std::array<int, 2> ends{};
        QCOMPARE(::socketpair(AF_UNIX, kind, 0, ends.data()), 0);
        const platform::Descriptor first(ends[0]);
        const platform::Descriptor second(ends[1]);
        const test::EnvironmentVariable variable("CORVANE_AUTHORIZATION",
                                                 QByteArray::number(first.fd()));
        QVERIFY(platform::Authorization::handedDown() == nullptr);
        std::array<char, 16> buffer{};
        QVERIFY(::recv(second.fd(), buffer.data(), buffer.size(), MSG_DONTWAIT) < 0); // unasked
    }
}

TEST_CLASS(AuthorizationTest, QCoreApplication)
#include "AuthorizationTest.moc"
