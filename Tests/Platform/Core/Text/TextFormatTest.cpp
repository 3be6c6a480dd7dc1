// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/TextFormat.h"

#include "Platform/Core/Text/LiteralFormat.h"
#include "Tests/Support/TestProgram.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <limits>
#include <vector>

using platform::format;

namespace {

template <typename T>
QString byTheCLibrary(const QByteArray &pattern, T value)
{
    std::array<char, 8192> buffer{};
    std::snprintf(buffer.data(), buffer.size(), pattern.constData(), value);
    return QString::fromUtf8(buffer.data());
}

// Every combination of flags, width and precision, without the conversion.
QList<QByteArray> patterns(const QByteArray &flags)
{
    QList<QByteArray> result;
    for (int set = 0; set < (1 << flags.size()); ++set) {
        QByteArray chosen;
        for (int flag = 0; flag < flags.size(); ++flag) {
            if ((set & (1 << flag)) != 0) {
                chosen += flags.at(flag);
            }
        }
        for (const char *width : {"", "1", "7", "25"}) {
            for (const char *precision : {"", ".", ".0", ".2", ".12"}) {
                result << "%" + chosen + width + precision;
            }
        }
    }
    return result;
}

template <typename T>
void compareWithTheCLibrary(const QByteArray &pattern, T value)
{
    const auto expected = byTheCLibrary(pattern, value);
    const auto actual = format(QString::fromLatin1(pattern), value);
    QVERIFY2(actual == expected,
             qPrintable(QStringLiteral("%1: \"%2\" is not \"%3\"")
                            .arg(QString::fromLatin1(pattern), actual, expected)));
}

} // namespace

class TextFormatTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void wholeNumbersAreFormattedAsTheCLibraryDoes();
    void longWholeNumbersAreFormattedAsTheCLibraryDoes();
    void realNumbersAreFormattedAsTheCLibraryDoes();
    void textIsFormattedAsTheCLibraryDoes();
    void requiredDirectives_data();
    void requiredDirectives();
    void aStarTakesWidthAndPrecisionFromTheArguments();
    void aNullTextPrintsNull();
    void aMissingArgumentPrintsNull();
    void surplusArgumentsAreIgnored();
    void anUnknownOrUnfinishedDirectiveStandsAsItIs_data();
    void anUnknownOrUnfinishedDirectiveStandsAsItIs();
    void anUnknownDirectiveTakesNoArgument();
    void anArgumentOfAnotherKindIsConverted();
    void anArgumentThatCannotBeConvertedIsShown();
    void aWholeNumberIsNotCutToTheDirectivesSize();
    void widthAndPrecisionAreLimited();
    void aTextLongerThanAnyBufferIsKeptWhole();
    void aPrecisionStandsForAMissingNul();
    void aPrecisionDoesNotCutACharacterInTwo();
    void brokenUtf8IsReplaced();
    void aPercentSignInAnArgumentIsNotInterpreted();
    void aLiteralFormatPrintsItsText();
    void everyByteIsOneCharacterWhateverItsSign();
    void anyFormatIsSurvived();
    void theUsersLocaleDoesNotChangeTheDecimalPoint();
};

void TextFormatTest::wholeNumbersAreFormattedAsTheCLibraryDoes()
{
    for (const auto &pattern : patterns("-+ 0")) {
        for (const int value : {0, 1, -1, 42, -12345, INT_MAX, INT_MIN}) {
            compareWithTheCLibrary(pattern + 'd', value);
            compareWithTheCLibrary(pattern + 'i', value);
        }
    }
    for (const auto &pattern : patterns("-0")) {
        for (const unsigned value : {0U, 1U, 42U, 0x80000000U, UINT_MAX}) {
            compareWithTheCLibrary(pattern + 'u', value);
        }
    }
    for (const auto &pattern : patterns("-0#")) {
        for (const unsigned value : {0U, 1U, 0xBEEFU, UINT_MAX}) {
            for (const char conversion : {'x', 'X', 'o'}) {
                compareWithTheCLibrary(pattern + conversion, value);
            }
        }
    }
}

void TextFormatTest::longWholeNumbersAreFormattedAsTheCLibraryDoes()
{
    for (const long value : {0L, -1L, LONG_MAX, LONG_MIN}) {
        for (const char *pattern : {"%ld", "%li", "%lu", "%lx", "%30ld", "%-30lu|", "%#lx"}) {
            compareWithTheCLibrary(pattern, value);
        }
    }
    for (const long long value : {0LL, -1LL, LLONG_MAX, LLONG_MIN}) {
        for (const char *pattern : {"%lld", "%lli", "%llu", "%llX", "%qd", "%jd"}) {
            compareWithTheCLibrary(pattern, value);
        }
    }
    compareWithTheCLibrary("%zu", std::numeric_limits<std::size_t>::max());
    compareWithTheCLibrary("%td", std::numeric_limits<std::ptrdiff_t>::min());
    for (const int value : {0, 127, 128, 255, 256, -1, -129, 65535, 65536, 40000}) {
        for (const char *pattern : {"%hhd", "%hhu", "%hhx", "%hd", "%hu", "%hX"}) {
            compareWithTheCLibrary(pattern, value);
        }
    }
}

void TextFormatTest::realNumbersAreFormattedAsTheCLibraryDoes()
{
    for (const auto &pattern : patterns("-+ 0#")) {
        for (const double value : {0.0, -0.0, 1.0, 0.5, 2.5, -123456.789, 1e-7, 1e22, DBL_MAX,
                                   DBL_MIN, HUGE_VAL, -HUGE_VAL}) {
            for (const char conversion : {'f', 'e', 'E', 'g', 'G', 'a'}) {
                compareWithTheCLibrary(pattern + conversion, value);
            }
        }
    }
    QCOMPARE(format(QStringLiteral("%f"), std::nan("")), QStringLiteral("nan"));
    QCOMPARE(format(QStringLiteral("%0.2f"), 1.25F), QStringLiteral("1.25"));
}

void TextFormatTest::textIsFormattedAsTheCLibraryDoes()
{
    for (const auto &pattern : patterns("-")) {
        for (const char *value : {"", "a", "Ostrel listener"}) {
            compareWithTheCLibrary(pattern + 's', value);
        }
    }
}

void TextFormatTest::requiredDirectives_data()
{
    QTest::addColumn<QString>("actual");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *pattern, const QString &actual, const char *expected) {
        QTest::newRow(pattern) << actual << QString::fromUtf8(expected);
    };
    row("%@ text", format(QStringLiteral("Status: %@"), QStringLiteral("Running")),
        "Status: Running");
    row("%@ number", format(QStringLiteral("[%@]"), 12), "[12]");
    row("%@ variant", format(QStringLiteral("%@"), QVariant(7.5)), "7.5");
    row("%@ width", format(QStringLiteral("[%6@]"), QStringLiteral("abc")), "[   abc]");
    row("%@ left", format(QStringLiteral("[%-6@]"), QStringLiteral("abc")), "[abc   ]");
    row("%@ cut", format(QStringLiteral("[%.2@]"), QStringLiteral("abc")), "[ab]");
    row("%s", format(QStringLiteral("%s"), "Grüße"), "Grüße");
    row("%s width", format(QStringLiteral("[%7s]"), "Grüße"), "[  Grüße]");
    row("%s text", format(QStringLiteral("%s"), QStringLiteral("Grüße")), "Grüße");
    row("%s data", format(QStringLiteral("%s"), QByteArray("bytes")), "bytes");
    row("%c", format(QStringLiteral("%c%c%c"), 'a', 98, QChar(u'ü')), "abü");
    row("%c wide", format(QStringLiteral("%c"), 0x1F600), "😀");
    row("%c width", format(QStringLiteral("[%3c]"), 'x'), "[  x]");
    row("%p", format(QStringLiteral("%p"), reinterpret_cast<const void *>(0xABCDUL)), "0xabcd");
    row("%p null", format(QStringLiteral("%p"), static_cast<const void *>(nullptr)), "0x0");
    row("%%", format(QStringLiteral("100%% of %d%%"), 5), "100% of 5%");
    row("no directive", format(QStringLiteral("plain")), "plain");
    row("empty", format(QString()), "");
    row("enum", format(QStringLiteral("%d"), Qt::AlignRight), "2");
    row("order", format(QStringLiteral("%@ - %s - %d."), QStringLiteral("a"), "b", 3),
        "a - b - 3.");
    row("memory",
        format(QStringLiteral("System: OS X %@, %li CPU(s), %0.2f GB RAM\n"), QStringLiteral("12"),
               2L, 3.14159),
        "System: OS X 12, 2 CPU(s), 3.14 GB RAM\n");
}

void TextFormatTest::requiredDirectives()
{
    QFETCH(QString, actual);
    QTEST(actual, "expected");
}

void TextFormatTest::aStarTakesWidthAndPrecisionFromTheArguments()
{
    QCOMPARE(format(QStringLiteral("[%*d]"), 5, 42), QStringLiteral("[   42]"));
    QCOMPARE(format(QStringLiteral("[%*d]"), -5, 42), QStringLiteral("[42   ]"));
    QCOMPARE(format(QStringLiteral("[%.*f]"), 1, 2.25), QStringLiteral("[2.2]"));
    QCOMPARE(format(QStringLiteral("[%.*s]"), -3, "text"), QStringLiteral("[text]"));
    QCOMPARE(format(QStringLiteral("[%*.*@]"), 4, 2, QStringLiteral("text")),
             QStringLiteral("[  te]"));
    QCOMPARE(format(QStringLiteral("[%*d]"), 5), QStringLiteral("[(null)]"));
    QCOMPARE(format(QStringLiteral("[%*d]"), QStringLiteral("wide"), 3), QStringLiteral("[3]"));
}

void TextFormatTest::aNullTextPrintsNull()
{
    QCOMPARE(format(QStringLiteral("%@"), QString()), QStringLiteral("(null)"));
    QCOMPARE(format(QStringLiteral("%s"), QString()), QStringLiteral("(null)"));
    QCOMPARE(format(QStringLiteral("%@"), QStringLiteral("")), QString());
    QCOMPARE(format(QStringLiteral("%s"), static_cast<const char *>(nullptr)),
             QStringLiteral("(null)"));
    QCOMPARE(format(QStringLiteral("%@"), nullptr), QStringLiteral("(null)"));
    QCOMPARE(format(QStringLiteral("%@"), QVariant()), QStringLiteral("(null)"));
    QCOMPARE(format(QStringLiteral("%@"), QByteArray()), QStringLiteral("(null)"));
    QCOMPARE(format(QStringLiteral("%d"), QVariant()), QStringLiteral("(null)"));
}

void TextFormatTest::aMissingArgumentPrintsNull()
{
    QCOMPARE(format(QStringLiteral("%@ and %d and %f")),
             QStringLiteral("(null) and (null) and (null)"));
    QCOMPARE(format(QStringLiteral("%d %d"), 1), QStringLiteral("1 (null)"));
    QCOMPARE(format(QStringLiteral("50%done")), QStringLiteral("50(null)one"));
}

void TextFormatTest::surplusArgumentsAreIgnored()
{
    QCOMPARE(format(QStringLiteral("%d"), 1, 2, QStringLiteral("x")), QStringLiteral("1"));
    QCOMPARE(format(QStringLiteral("none"), 1), QStringLiteral("none"));
}

void TextFormatTest::anUnknownOrUnfinishedDirectiveStandsAsItIs_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"%", "100%", "%y", "%n", "% !", "%5", "%-", "%.", "%.3", "%l", "%hh",
                             "%5.2lz", "%1$@", "%ß", "a % b", "%&%!", "%*", "%-+ #0'12.34lk"}) {
        QTest::newRow(text) << QString::fromUtf8(text);
    }
}

void TextFormatTest::anUnknownOrUnfinishedDirectiveStandsAsItIs()
{
    QFETCH(QString, text);
    QCOMPARE(format(text), text);
    QCOMPARE(format(text, 1, 2, 3), text);
}

void TextFormatTest::anUnknownDirectiveTakesNoArgument()
{
    QCOMPARE(format(QStringLiteral("%*y %d"), 1), QStringLiteral("%*y 1"));
    QCOMPARE(format(QStringLiteral("100% %@"), QStringLiteral("sure")),
             QStringLiteral("100% sure"));
    QCOMPARE(format(QStringLiteral("%5%%d"), 4), QStringLiteral("%5%d"));
}

void TextFormatTest::anArgumentOfAnotherKindIsConverted()
{
    QCOMPARE(format(QStringLiteral("%d"), 3.99), QStringLiteral("3"));
    QCOMPARE(format(QStringLiteral("%d"), -3.99), QStringLiteral("-3"));
    QCOMPARE(format(QStringLiteral("%d"), -0.5), QStringLiteral("0"));
    QCOMPARE(format(QStringLiteral("%04d"), QStringLiteral(" 12 ")), QStringLiteral("0012"));
    QCOMPARE(format(QStringLiteral("%u"), QStringLiteral("18446744073709551615")),
             QStringLiteral("18446744073709551615"));
    QCOMPARE(format(QStringLiteral("%x"), "255"), QStringLiteral("ff"));
    QCOMPARE(format(QStringLiteral("%d"), 'a'), QStringLiteral("97"));
    QCOMPARE(format(QStringLiteral("%d"), true), QStringLiteral("1"));
    QCOMPARE(format(QStringLiteral("%0.2f"), 2), QStringLiteral("2.00"));
    QCOMPARE(format(QStringLiteral("%0.2f"), 2U), QStringLiteral("2.00"));
    QCOMPARE(format(QStringLiteral("%0.1f"), QStringLiteral("1.25e1")), QStringLiteral("12.5"));
    QCOMPARE(format(QStringLiteral("%s"), 12), QStringLiteral("12"));
    QCOMPARE(format(QStringLiteral("%s"), 0.1), QStringLiteral("0.1"));
    QCOMPARE(format(QStringLiteral("%@"), 'a'), QStringLiteral("a"));
    QCOMPARE(format(QStringLiteral("%@"), "text"), QStringLiteral("text"));
    QCOMPARE(format(QStringLiteral("%@"), reinterpret_cast<const void *>(0x10UL)),
             QStringLiteral("0x10"));
    QCOMPARE(format(QStringLiteral("%x"), reinterpret_cast<const void *>(0x10UL)),
             QStringLiteral("10"));
    QCOMPARE(format(QStringLiteral("%d %u"), QVariant(-5), QVariant(5U)), QStringLiteral("-5 5"));
    QCOMPARE(format(QStringLiteral("%c"), QVariant(QChar(u'z'))), QStringLiteral("z"));
    QCOMPARE(format(QStringLiteral("%0.1f"), QVariant(1.5F)), QStringLiteral("1.5"));
}

void TextFormatTest::anArgumentThatCannotBeConvertedIsShown()
{
    QCOMPARE(format(QStringLiteral("%d"), QStringLiteral("twelve")), QStringLiteral("twelve"));
    QCOMPARE(format(QStringLiteral("%8.2f|"), QStringLiteral("much")), QStringLiteral("    much|"));
    QCOMPARE(format(QStringLiteral("%d"), std::nan("")), QStringLiteral("nan"));
    QCOMPARE(format(QStringLiteral("%d"), HUGE_VAL), QStringLiteral("inf"));
    QCOMPARE(format(QStringLiteral("%d"), 1e300), QStringLiteral("1e+300"));
    QCOMPARE(format(QStringLiteral("%c"), QStringLiteral("text")), QStringLiteral("text"));
    QCOMPARE(format(QStringLiteral("%c"), -1), QStringLiteral("-1"));
    QCOMPARE(format(QStringLiteral("%d"), QVariantList({1, 2})), QStringLiteral("(1, 2)"));
}

void TextFormatTest::aWholeNumberIsNotCutToTheDirectivesSize()
{
    QCOMPARE(format(QStringLiteral("%d"), 5000000000LL), QStringLiteral("5000000000"));
    QCOMPARE(format(QStringLiteral("%d"), UINT_MAX), QStringLiteral("4294967295"));
    QCOMPARE(format(QStringLiteral("%u"), -1), QStringLiteral("4294967295"));
    QCOMPARE(format(QStringLiteral("%u"), -5000000000LL), QString::number(0ULL - 5000000000ULL));
}

void TextFormatTest::widthAndPrecisionAreLimited()
{
    QCOMPARE(format(QStringLiteral("%999999999999d"), 1).size(), 4095);
    QCOMPARE(format(QStringLiteral("%.999999999999d"), 1).size(), 4095);
    QCOMPARE(format(QStringLiteral("%*d"), INT_MIN, 1).size(), 4095);
    QCOMPARE(format(QStringLiteral("%.*d"), LLONG_MAX, 1).size(), 4095);
    QCOMPARE(format(QStringLiteral("%-999999999s"), "x").size(), 4095);
    QCOMPARE(format(QStringLiteral("%.99999f"), -DBL_MAX).size(), 1 + 309 + 1 + 4095);
}

void TextFormatTest::aTextLongerThanAnyBufferIsKeptWhole()
{
    const QString text(100000, QChar(u'x'));
    QCOMPARE(format(QStringLiteral("<%@>"), text), u'<' + text + u'>');
    QCOMPARE(format(QStringLiteral("<%s>"), text.toLatin1().constData()), u'<' + text + u'>');
    QCOMPARE(format(text + QStringLiteral("%d"), 1), text + u'1');
}

void TextFormatTest::aPrecisionStandsForAMissingNul()
{
    const std::vector<char> bytes(4, 'a');
    QCOMPARE(format(QStringLiteral("%.4s"), bytes.data()), QStringLiteral("aaaa"));
}

void TextFormatTest::aPrecisionDoesNotCutACharacterInTwo()
{
    QCOMPARE(format(QStringLiteral("[%.3s]"), "aüö"), QStringLiteral("[aü]"));
    QCOMPARE(format(QStringLiteral("[%.2s]"), "aüö"), QStringLiteral("[a]"));
    QCOMPARE(format(QStringLiteral("[%.1@]"), QString::fromUtf8("😀")), QStringLiteral("[]"));
}

void TextFormatTest::brokenUtf8IsReplaced()
{
    QCOMPARE(format(QStringLiteral("[%s]"), "\xff"), QStringLiteral("[\uFFFD]"));
}

void TextFormatTest::aPercentSignInAnArgumentIsNotInterpreted()
{
    QCOMPARE(format(QStringLiteral("%@ %@"), QStringLiteral("%@%d"), QStringLiteral("100%")),
             QStringLiteral("%@%d 100%"));
}

void TextFormatTest::aLiteralFormatPrintsItsText()
{
    for (const auto *text : {"", "plain", "%", "%%", "100%", "/home/%@/%d%n", "%.*s %"}) {
        const auto whole = QString::fromLatin1(text);
        QCOMPARE(format(platform::literalFormat(whole)), whole);
    }
}

void TextFormatTest::everyByteIsOneCharacterWhateverItsSign()
{
    for (int code = 1; code <= 0xFF; ++code) {
        const QString letter(QChar(static_cast<char16_t>(code)));
        const auto byte = static_cast<char>(code);
        QCOMPARE(format(QStringLiteral("%c"), byte), letter);
        QCOMPARE(format(QStringLiteral("%@"), byte), letter);
        QCOMPARE(format(QStringLiteral("[%3c]"), byte), QStringLiteral("[  ") + letter + u']');
        QCOMPARE(format(QStringLiteral("%s"), letter.toUtf8()), letter);
        QCOMPARE(format(QStringLiteral("%s"), letter.toUtf8().constData()), letter);
        QCOMPARE(format(QStringLiteral("%.2s"), letter.toUtf8().constData()), letter);
        const auto plain = code == '%' ? QStringLiteral("%%") : letter;
        QCOMPARE(format(plain + QStringLiteral("%d") + plain, 1), letter + u'1' + letter);
    }
}

void TextFormatTest::anyFormatIsSurvived()
{
    const auto alphabet =
        QString::fromUtf8("%%%%%%@sdiuoxXfFeEgGaAcpnhlLqjzt-+ #0'*.123456789ß😀\n");
    QRandomGenerator random(20120615);
    const QVariantMap dictionary{{QStringLiteral("key"), QVariantList({1, QVariant()})}};
    for (int count = 0; count < 20000; ++count) {
        QString text;
        for (int length = random.bounded(24); length > 0; --length) {
            text += alphabet.at(random.bounded(static_cast<int>(alphabet.size())));
        }
        const auto directives = text.count(QChar(u'%'));
        const auto actual = format(text, LLONG_MIN, "utf-8 ü", -DBL_MAX, dictionary, QString());
        QVERIFY(actual.size() <= text.size() + directives * 4600);
        QVERIFY(directives > 0 || actual == text);
    }
}

void TextFormatTest::theUsersLocaleDoesNotChangeTheDecimalPoint()
{
    const auto localedef = QStandardPaths::findExecutable(QStringLiteral("localedef"));
    const QTemporaryDir folder;
    const auto name = folder.filePath(QStringLiteral("de_DE.UTF-8"));
    if (localedef.isEmpty() ||
        QProcess::execute(localedef, {QStringLiteral("-i"), QStringLiteral("de_DE"),
                                      QStringLiteral("-f"), QStringLiteral("UTF-8"), name}) > 1) {
        QSKIP("no German locale can be made here");
    }
    qputenv("LOCPATH", folder.path().toUtf8());
    QVERIFY(std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr);
    QCOMPARE(byTheCLibrary("%.1f", 1.5), QStringLiteral("1,5")); // the locale does what it should
    const auto actual = format(QStringLiteral("%.1f %g %@ %'d"), 1.5, 2.5, 3.5, 1234567);
    const auto after = byTheCLibrary("%.1f", 1.5);
    std::setlocale(LC_ALL, "C");
    QCOMPARE(actual, QStringLiteral("1.5 2.5 3.5 1234567"));
    QCOMPARE(after, QStringLiteral("1,5")); // and is in force again
}

TEST_CLASS(TextFormatTest, QCoreApplication)
#include "TextFormatTest.moc"
