// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/FileName.h"

#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <random>

class FileNameTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void utf8IsText();
    void aByteThatDoesNotDecodeIsALoneSurrogate_data();
    void aByteThatDoesNotDecodeIsALoneSurrogate();
    void everyByteStringComesBack();
    void everyTextComesBack();
    void aLoneSurrogateThatStandsForNoByteIsReplaced();
};

void FileNameTest::utf8IsText()
{
    const auto name = QStringLiteral("r\u00e9sum\u00e9 \u65e5\u672c \U0001F600\n\"%s");
    QCOMPARE(platform::fileNameFromBytes(name.toUtf8()), name);
    QCOMPARE(platform::fileNameBytes(name), name.toUtf8());
    QVERIFY(platform::fileNameFromBytes({}).isEmpty());
}

void FileNameTest::aByteThatDoesNotDecodeIsALoneSurrogate_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("name");
    const auto escape = [](uint byte) { return QString(QChar(0xDC00U + byte)); };
    QTest::newRow("Latin-1") << QByteArray("caf\xE9") << QStringLiteral("caf") + escape(0xE9);
    QTest::newRow("in the middle")
        << QByteArray("a\xFF/b") << QLatin1Char('a') + escape(0xFF) + QStringLiteral("/b");
    QTest::newRow("cut short") << QByteArray("\xE2\x82") << escape(0xE2) + escape(0x82);
    QTest::newRow("overlong") << QByteArray("\xC0\xAF") << escape(0xC0) + escape(0xAF);
    QTest::newRow("surrogate") << QByteArray("\xED\xA0\x80")
                               << escape(0xED) + escape(0xA0) + escape(0x80);
}

void FileNameTest::aByteThatDoesNotDecodeIsALoneSurrogate()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, name);
    QCOMPARE(platform::fileNameFromBytes(bytes), name);
    QCOMPARE(platform::fileNameBytes(name), bytes);
}

void FileNameTest::everyByteStringComesBack()
{
    std::mt19937 random(1); // NOLINT(*-msc51-cpp): the same every time
    for (int run = 0; run < 20000; ++run) {
        QByteArray bytes;
        for (auto size = random() % 12U; size > 0; --size) {
            // Mostly leading and continuing bytes, which are what can go wrong.
            bytes += static_cast<char>(random() % 3U == 0 ? random() : 0x80U + random() % 0x80U);
        }
        QCOMPARE(platform::fileNameBytes(platform::fileNameFromBytes(bytes)), bytes);
    }
}

void FileNameTest::everyTextComesBack()
{
    for (uint code = 1; code <= 0x10FFFFU; ++code) {
        if (code >= 0xD800U && code <= 0xDFFFU) {
            continue;
        }
        const auto text = QString::fromUcs4(reinterpret_cast<const char32_t *>(&code), 1);
        if (platform::fileNameFromBytes(platform::fileNameBytes(text)) != text) {
            QFAIL(qPrintable(QString::number(code, 16)));
        }
    }
}

void FileNameTest::aLoneSurrogateThatStandsForNoByteIsReplaced()
{
    for (const auto character : {QChar(0xD800), QChar(0xDC10)}) {
        const auto bytes = platform::fileNameBytes(QString(character));
        QVERIFY2(bytes == "\xEF\xBF\xBD" || bytes == "?", bytes.constData()); // Qt 6, Qt 5
    }
}

TEST_CLASS(FileNameTest, QCoreApplication)
#include "FileNameTest.moc"
