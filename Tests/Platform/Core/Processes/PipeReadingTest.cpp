// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/PlatformException.h"
#include "Platform/Core/Files/ReadToEnd.h"
#include "Platform/Core/Processes/PipeReader.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <thread>

class PipeReadingTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void aPipeIsReadToItsEnd_data();
    void aPipeIsReadToItsEnd();
    void asMuchAsAllowedIsRead();
    void moreThanAllowedIsRefused();
    void whatCannotBeReadSaysWhy();

    void aReaderGivesPiecesAsTheyComeAndThenNothing();
    void aPieceIsAtMost64KiB();
    void closingEndsAWait();
    void closingMakesTheWriterFail();
    void aClosedReaderGivesNothing();
    void aReaderSaysWhyItCannotRead();

private:
    platform::Descriptor m_reading;
    platform::Descriptor m_writing;
};

namespace {

QByteArray pattern(int size)
{
    QByteArray bytes(size, '\0');
    for (int i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>(i % 251);
    }
    return bytes;
}

void writeAll(int file, const QByteArray &bytes)
{
    for (qint64 written = 0; written < bytes.size();) {
        const auto left = static_cast<std::size_t>(bytes.size() - written);
        const auto count = ::write(file, bytes.constData() + written, left);
        if (count < 0) {
            return;
        }
        written += count;
    }
}

template <typename Call>
QString reasonOf(Call call)
{
    try {
        call();
    } catch (const platform::Exception &exception) {
        return exception.reason();
    }
    return {};
}

} // namespace

void PipeReadingTest::initTestCase()
{
    ::signal(SIGPIPE, SIG_IGN);
}

void PipeReadingTest::init()
{
    std::array<int, 2> ends{};
    QCOMPARE(::pipe2(ends.data(), O_CLOEXEC), 0);
    m_reading = platform::Descriptor(ends[0]);
    m_writing = platform::Descriptor(ends[1]);
}

void PipeReadingTest::cleanup()
{
    m_reading.close();
    m_writing.close();
}

void PipeReadingTest::aPipeIsReadToItsEnd_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 65535, 65536, 65537, 131072, 131073, 5000000, 9000000}) {
        QTest::newRow(QByteArray::number(size).constData()) << size;
    }
}

void PipeReadingTest::aPipeIsReadToItsEnd()
{
    QFETCH(int, size);
    const auto bytes = pattern(size);
    std::thread writer([&] {
        writeAll(m_writing.fd(), bytes);
        m_writing.close();
    });
    const auto read = platform::readToEnd(m_reading.fd());
    writer.join();
    QVERIFY(!read.isNull());
    QVERIFY(read == bytes);
}

void PipeReadingTest::asMuchAsAllowedIsRead()
{
    for (const int size : {0, 1, 1000, 65536}) {
        cleanup();
        init();
        writeAll(m_writing.fd(), pattern(size));
        m_writing.close();
        QCOMPARE(platform::readToEnd(m_reading.fd(), size), pattern(size));
    }
}

void PipeReadingTest::moreThanAllowedIsRefused()
{
    for (const int size : {0, 1, 1000, 65535}) {
        cleanup();
        init();
        writeAll(m_writing.fd(), pattern(size + 1));
        m_writing.close();
        QCOMPARE(reasonOf([&] { platform::readToEnd(m_reading.fd(), size); }),
                 QStringLiteral("More than %1 bytes of output").arg(size));
    }
}

void PipeReadingTest::whatCannotBeReadSaysWhy()
{
    QCOMPARE(reasonOf([&] { platform::readToEnd(m_writing.fd()); }),
             QStringLiteral("Bad file descriptor"));
}

void PipeReadingTest::aReaderGivesPiecesAsTheyComeAndThenNothing()
{
    platform::PipeReader reader(std::move(m_reading));
    for (const auto *piece : {"one", "two", "three"}) {
        writeAll(m_writing.fd(), piece);
        QCOMPARE(reader.readAvailable(), QByteArray(piece));
    }
    m_writing.close();
    QCOMPARE(reader.readAvailable(), QByteArray(""));
    QCOMPARE(reader.readAvailable(), QByteArray(""));
}

void PipeReadingTest::aPieceIsAtMost64KiB()
{
    ::fcntl(m_writing.fd(), F_SETPIPE_SZ, 1 << 20); // NOLINT(*-vararg)
    const auto bytes = pattern(100000);
    writeAll(m_writing.fd(), bytes);
    m_writing.close();
    platform::PipeReader reader(std::move(m_reading));
    QCOMPARE(reader.readAvailable(), bytes.left(65536));
    QCOMPARE(reader.readAvailable(), bytes.mid(65536));
    QVERIFY(reader.readAvailable().isEmpty());
}

void PipeReadingTest::closingEndsAWait()
{
    for (int round = 0; round < 300; ++round) {
        cleanup();
        init();
        platform::PipeReader reader(std::move(m_reading));
        QByteArray read("not yet");
        std::thread waiting([&] { read = reader.readAvailable(); });
        if (round % 3 == 0) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        reader.close();
        waiting.join();
        QCOMPARE(read, QByteArray(""));
        QCOMPARE(::write(m_writing.fd(), "x", 1), ssize_t{-1});
    }
}

void PipeReadingTest::closingMakesTheWriterFail()
{
    platform::PipeReader reader(std::move(m_reading));
    reader.close();
    QCOMPARE(::write(m_writing.fd(), "x", 1), ssize_t{-1});
    QCOMPARE(errno, EPIPE);
}

void PipeReadingTest::aClosedReaderGivesNothing()
{
    writeAll(m_writing.fd(), "left behind");
    platform::PipeReader reader(std::move(m_reading));
    reader.close();
    reader.close();
    QCOMPARE(reader.readAvailable(), QByteArray(""));
}

void PipeReadingTest::aReaderSaysWhyItCannotRead()
{
    platform::PipeReader reader(platform::Descriptor(::open("/tmp", O_RDONLY | O_CLOEXEC)));
    QCOMPARE(reasonOf([&] { reader.readAvailable(); }), QStringLiteral("Is a directory"));
}

TEST_CLASS(PipeReadingTest, QCoreApplication)
#include "PipeReadingTest.moc"
