// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Log/ZQLog.h"
#include "Tests/Shared/Log/LogFixture.h"
#include "Tests/Support/StandardOutputCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QHash>
#include <QTest>

#include <thread>

// Many threads at once.
class ZQLogThreadsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();

    void eightThreadsLoseAndMixNoLine();
    void newLogsBesideWritersLoseNoLineButWithTheOldestFile();
    void everyOperationMayRunBesideEveryOther();
};

namespace {

constexpr int threads = 8;

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

// Runs work(thread) on that many threads.
void onThreads(int count, const std::function<void(int)> &work)
{
    std::vector<std::thread> all;
    all.reserve(static_cast<std::size_t>(count));
    for (int thread = 0; thread < count; ++thread) {
        all.emplace_back(work, thread);
    }
    for (auto &thread : all) {
        thread.join();
    }
}

bool isLine(const QString &entry)
{
    return entry.startsWith(text("thread "));
}

// "thread 3 line 17 xxx..." with as many "x" as the line's number asks for.
QString line(int thread, int number)
{
    return text("thread %1 line %2 ").arg(thread).arg(number) +
           QString(1 + number % 150, QLatin1Char('x'));
}

// The lines of all generations, oldest first.
QStringList allLines()
{
    QStringList all;
    for (int number = 5; number >= 1; --number) {
        for (const auto &entry : test::entries(test::generation(number))) {
            if (isLine(entry) || entry.startsWith(text("BAD"))) {
                all << entry;
            }
        }
    }
    return all;
}

} // namespace

void ZQLogThreadsTest::init()
{
    ZQLog::finishWriting();
    test::clearLibraries();
    ZQLog::createNewLog();
}

void ZQLogThreadsTest::eightThreadsLoseAndMixNoLine()
{
    constexpr int lines = 1500; // three files
    onThreads(threads, [](int thread) {
        for (int number = 0; number < lines; ++number) {
            if (number % 10 == 0) {
                ZQLog::appendLog(text("%@"), line(thread, number));
            } else {
                ZQLog::fastAppendLog(text("%@"), line(thread, number));
            }
        }
    });
    ZQLog::finishWriting();
    QVERIFY(QFile::exists(test::generation(2)));
    const auto all = allLines();
    QCOMPARE(all.size(), threads * lines);
    QHash<int, int> next;
    for (const auto &entry : all) {
        const auto thread = entry.mid(7, 1).toInt();
        QCOMPARE(entry, line(thread, next[thread]++));
    }
    QCOMPARE(ZQLog::sharedController().bytesInQueue(), quint64(0));
}

void ZQLogThreadsTest::newLogsBesideWritersLoseNoLineButWithTheOldestFile()
{
    constexpr int lines = 1000; // fewer bytes than would begin a new file of themselves
    // Three new logs: the oldest file is still there at the end.
    onThreads(threads + 1, [](int thread) {
        if (thread == threads) {
            for (int number = 0; number < 3; ++number) {
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
                ZQLog::createNewLog();
            }
            return;
        }
        for (int number = 0; number < lines; ++number) {
            ZQLog::fastAppendLog(text("thread %i line %i x"), thread, number);
        }
    });
    ZQLog::finishWriting();
    const auto all = allLines();
    QHash<QString, int> times;
    for (const auto &entry : all) {
        ++times[entry];
    }
    QCOMPARE(all.size(), threads * lines);
    QCOMPARE(times.size(), threads * lines);
    QVERIFY(times.contains(text("thread 7 line 999 x")));
}

void ZQLogThreadsTest::everyOperationMayRunBesideEveryOther()
{
    // Several new logs at once are in each other's way; nothing may break, that is all.
    const auto printed = test::outputOf([] {
        onThreads(threads, [](int thread) {
            auto &log = ZQLog::sharedController();
            for (int number = 0; number < 200; ++number) {
                ZQLog::appendLog(text("text %i"), number);
                ZQLog::fastAppendLog(text("text %i"), number);
                ZQLog::finishWriting();
                if (number % 20 == thread) {
                    ZQLog::createNewLog(text("name"));
                    log.setAppName(thread % 2 == 0 ? text("Name") : QString());
                    ZQLog::availableLogs();
                }
                if (log.appName().isEmpty() || log.loggingDisabled()) {
                    qFatal("state of the log is broken");
                }
                static_cast<void>(log.bytesWritten() + log.bytesInQueue());
            }
        });
        ZQLog::finishWriting();
    });
    Q_UNUSED(printed)
    ZQLog::sharedController().setAppName(QString());
    ZQLog::createNewLog();
    ZQLog::appendLog(text("still there"));
    ZQLog::finishWriting();
    QCOMPARE(test::body(test::generation(1)), QStringList(text("still there")));
}

TEST_CLASS(ZQLogThreadsTest, QCoreApplication)
#include "ZQLogThreadsTest.moc"
