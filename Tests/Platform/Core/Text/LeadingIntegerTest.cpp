// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/LeadingInteger.h"

#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <limits>

class LeadingIntegerTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theLeadingIntegerOfATextIsItsValue_data();
    void theLeadingIntegerOfATextIsItsValue();
    void theLeadingIntegerOfANumberIsCut_data();
    void theLeadingIntegerOfANumberIsCut();
};

void LeadingIntegerTest::theLeadingIntegerOfATextIsItsValue_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qlonglong>("value");
    QTest::newRow("digits") << QStringLiteral("8080") << 8080LL;
    QTest::newRow("digits, then letters") << QStringLiteral("80ab") << 80LL;
    QTest::newRow("white space first") << QStringLiteral(" \t\u00a0 81") << 81LL;
    QTest::newRow("no number") << QStringLiteral("ab80") << 0LL;
    QTest::newRow("empty") << QString() << 0LL;
    QTest::newRow("negative") << QStringLiteral("-5") << -5LL;
    QTest::newRow("above the ports") << QStringLiteral("70000") << 70000LL;
    QTest::newRow("a real") << QStringLiteral("80.9") << 80LL;
    QTest::newRow("hexadecimal") << QStringLiteral("0x50") << 0LL;
    QTest::newRow("beyond 64 bits")
        << QStringLiteral("99999999999999999999") << std::numeric_limits<qlonglong>::max();
}

void LeadingIntegerTest::theLeadingIntegerOfATextIsItsValue()
{
    QFETCH(QString, text);
    QTEST(platform::leadingInteger(text), "value");
}

void LeadingIntegerTest::theLeadingIntegerOfANumberIsCut_data()
{
    constexpr auto most = std::numeric_limits<qlonglong>::max();
    QTest::addColumn<QVariant>("number");
    QTest::addColumn<qlonglong>("value");
    QTest::newRow("integer") << QVariant(-7) << -7LL;
    QTest::newRow("the largest") << QVariant(most) << most;
    QTest::newRow("beyond 64 bits") << QVariant(std::numeric_limits<qulonglong>::max()) << most;
    QTest::newRow("real") << QVariant(7.999999999) << 7LL;
    QTest::newRow("negative real") << QVariant(-7.9) << -7LL;
    QTest::newRow("large real") << QVariant(1e300) << most;
    QTest::newRow("not a number") << QVariant(std::numeric_limits<double>::quiet_NaN()) << 0LL;
    QTest::newRow("truth") << QVariant(true) << 1LL;
    QTest::newRow("text") << QVariant(QStringLiteral("12.5")) << 12LL;
    QTest::newRow("nothing") << QVariant() << 0LL;
    QTest::newRow("data") << QVariant(QByteArray("12")) << 0LL;
    QTest::newRow("array") << QVariant(QVariantList{12}) << 0LL;
}

void LeadingIntegerTest::theLeadingIntegerOfANumberIsCut()
{
    QFETCH(QVariant, number);
    QTEST(platform::leadingInteger(number), "value");
}

TEST_CLASS(LeadingIntegerTest, test::NoApplication)
#include "LeadingIntegerTest.moc"
