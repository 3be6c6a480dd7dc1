// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/FileOperation.h"
#include "Shared/Files/ZQFileManager.h"
#include "Tests/Shared/Files/CopyDelegate.h"
#include "Tests/Shared/Files/FileManagerFixture.h"
#include "Tests/Support/Faults/Faults.h"
#include "Tests/Support/TestProgram.h"

#include <QCoreApplication>
#include <QTest>

#include <cerrno>
#include <optional>

using platform::FileOperation;
using test::FileManagerFixture;

// Copies in the background that cannot begin, or that the application's end meets: the test makes
// its application itself.
class ZQFileManagerCopyStartTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void withoutAMainRunLoopNothingIsScheduledAndTheOperationIsKept();
    void withoutAThreadNothingBegins();
    void anOperationIsScheduledOnceAndStartedOnce();
    void theEndOfTheApplicationCancelsWhatIsLeft();
};

void ZQFileManagerCopyStartTest::withoutAMainRunLoopNothingIsScheduledAndTheOperationIsKept()
{
    FileManagerFixture at;
    test::writeFile(at / "source");
    QVERIFY(!ZQFileManager::copyFileWithProgress(at.path("source"), at.path("copy"), nullptr, {}));
    QCOMPARE(at.console(),
             QStringList(QStringLiteral("Failed to schedule operation with run loop: 95")));
    QVERIFY(!test::exists(at / "copy"));
    QCOMPARE(FileOperation::liveCount(), 1); // for ever
}

void ZQFileManagerCopyStartTest::withoutAThreadNothingBegins()
{
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    FileManagerFixture at;
    test::writeFile(at / "source");
    test::CopyDelegate delegate;
    const auto before = FileOperation::liveCount();
    bool started = true;
    {
        const test::Faults faults({test::Thread, 1, test::Outcome::Fails, EAGAIN, true, false});
        started =
            ZQFileManager::copyFileWithProgress(at.path("source"), at.path("copy"), &delegate, {});
    }
    QVERIFY(!started);
    QCOMPARE(at.console(),
             QStringList(QStringLiteral("Failed to begin asynchronous object copy: 11")));
    QTest::qWait(50);
    QVERIFY(delegate.reports.isEmpty());
    QVERIFY(!test::exists(at / "copy"));
    QCOMPARE(FileOperation::liveCount(), before);
}

void ZQFileManagerCopyStartTest::anOperationIsScheduledOnceAndStartedOnce()
{
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    FileManagerFixture at;
    test::writeFile(at / "source");
    const auto operation = FileOperation::create();
    int ends = 0;
    const auto copy = [&] {
        return operation->copyItemAsync(
            at.path("source"), at.path("."), QStringLiteral("copy"),
            [&](FileOperation &, const QString &item, FileOperation::Stage stage, int error,
                const std::optional<QVariantMap> &, const QVariantMap &) {
                QCOMPARE(stage, FileOperation::Stage::Complete);
                QCOMPARE(error, 0);
                QCOMPARE(item, at.path("source"));
                ++ends;
            },
            std::chrono::seconds(1), {});
    };
    QCOMPARE(copy(), EINVAL);
    QCOMPARE(operation->unscheduleFromMainRunLoop(), EINVAL);
    QCOMPARE(operation->scheduleWithMainRunLoop(), 0);
    QCOMPARE(operation->scheduleWithMainRunLoop(), EALREADY);
    QCOMPARE(copy(), 0);
    QCOMPARE(copy(), EINVAL);
    QTRY_COMPARE(ends, 1);
    QCOMPARE(operation->unscheduleFromMainRunLoop(), 0);
    QCOMPARE(operation->unscheduleFromMainRunLoop(), EINVAL);
}

void ZQFileManagerCopyStartTest::theEndOfTheApplicationCancelsWhatIsLeft()
{
    FileManagerFixture at;
    test::makeFolder(at / "source");
    for (int i = 0; i < 20000; ++i) {
        test::writeFile(at / ("source/" + std::to_string(i)), "s");
    }
    test::makeFolder(at / "to");
    {
        int argc = 0;
        const QCoreApplication application(argc, nullptr);
        QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), at.path("to/copy"), nullptr,
                                                    {}));
        QTest::qWait(20);
    }
    if (test::exists(at / "to/copy")) {
        QCOMPARE(test::tree(at / "to/copy").size(), 20001);
    } else {
        QVERIFY(ZQFileManager::isFolderEmpty(at.path("to")));
    }
}

TEST_CLASS(ZQFileManagerCopyStartTest, test::NoApplication)
#include "ZQFileManagerCopyStartTest.moc"
