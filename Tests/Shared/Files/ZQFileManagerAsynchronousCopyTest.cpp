// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Threads/MainThread.h"
#include "Shared/Files/ZQFileManager.h"
#include "Tests/Shared/Files/CopyDelegate.h"
#include "Tests/Shared/Files/FileManagerFixture.h"
#include "Tests/Support/CopySource.h"
#include "Tests/Support/OnWorker.h"
#include "Tests/Support/TestProgram.h"

#include <QElapsedTimer>
#include <QPointer>
#include <QTest>
#include <QTimer>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

using platform::FileOperation;
using test::CopyDelegate;
using test::FileManagerFixture;
using test::text;

namespace {

constexpr qint64 running = 2;
constexpr qint64 complete = 3;

} // namespace

// Copies in the background, seen by their delegates.
class ZQFileManagerAsynchronousCopyTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { m_fixture = std::make_unique<FileManagerFixture>(); }
    void cleanup();

    void aMissingSourceReturnsFalseWithALineAndMakesNoFolder();
    void aFolderThatDoesNotExistYetIsMadeAndTheCopyStarts();
    void aFolderThatCannotBeMadeReturnsFalseWithALine();
    void aDelegateWithOnlyTheShortFinishedFormGetsOneCall();
    void theFormWithTheOperationIsPreferred();
    void aDelegateWithoutFormsIsNotCalled();
    void withoutADelegateTheCopyIsMadeAllTheSame();
    void theObjectsAreInTheReportWhereTheyWereGiven();
    void anExistingItemStaysAndTheEndIsReported_data();
    void anExistingItemStaysAndTheEndIsReported();
    void aFailedCopyIsReportedAsFinishedLikeAnyOther();

    void theCallReturnsBeforeAnythingIsReported();
    void reportsComeAboutOnceASecondAndTellHowFarItIs();
    void reportsComeOnTheMainThreadForAWorker();
    void aRelativePathIsThatOfTheCall();
    void everyNameIsCopied();
    void manyCopiesAtATimeAreAllReported();

    void cancellingEndsWithin100MillisecondsAndLeavesNothing_data();
    void cancellingEndsWithin100MillisecondsAndLeavesNothing();
    void cancellingWhatIsNoRunningOperationDoesNothing();
    void anOperationGoesAfterItsEndUnlessItIsHeld();
    void aDelegateThatIsDestroyedMeanwhileIsNotCalled();
    void aDelegateMayStartTheNextCopy();
    void otherStagesDeliverNothing();
    void anOperationThatIsNotScheduledGivesALineAtItsEnd();

private:
    void makeSource(bool isFolder);

    std::unique_ptr<FileManagerFixture> m_fixture;
};

void ZQFileManagerAsynchronousCopyTest::cleanup()
{
    QTRY_COMPARE_WITH_TIMEOUT(FileOperation::liveCount(), 0, 30000);
    m_fixture.reset();
}

// Something whose copy can be met in the middle.
void ZQFileManagerAsynchronousCopyTest::makeSource(bool isFolder)
{
    auto &at = *m_fixture;
    if (isFolder) {
        test::makeManyFiles(at / "source", 20000);
        return;
    }
    const auto file = ::open((at / "source").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    QCOMPARE(::posix_fallocate(file, 0, off_t(1) << 30U), 0);
    ::close(file);
}

void ZQFileManagerAsynchronousCopyTest::aMissingSourceReturnsFalseWithALineAndMakesNoFolder()
{
    auto &at = *m_fixture;
    CopyDelegate delegate;
    QVERIFY(!ZQFileManager::copyFileWithProgress(at.path("missing"), at.path("a/b/copy"), &delegate,
                                                 {}));
    QVERIFY(!ZQFileManager::copyFileWithProgress(QString(), at.path("a/b/copy"), &delegate, {}));
    QCOMPARE(at.console(),
             (QStringList{QStringLiteral("Error: File %1 doesn't exist. Aborting copy process...")
                              .arg(at.path("missing")),
                          QStringLiteral("Error: File (null) doesn't exist. Aborting copy "
                                         "process...")}));
    QVERIFY(at.folder().names().isEmpty());
    QTest::qWait(50);
    QVERIFY(delegate.reports.isEmpty());
}

void ZQFileManagerAsynchronousCopyTest::aFolderThatDoesNotExistYetIsMadeAndTheCopyStarts()
{
    auto &at = *m_fixture;
    test::makeTree(at / "source");
    CopyDelegate delegate;
    QVERIFY(
        ZQFileManager::copyFileWithProgress(at.path("source"), at.path("a/b/copy"), &delegate, {}));
    QVERIFY(test::exists(at / "a/b"));
    QVERIFY(delegate.waitForEnd());
    QCOMPARE(test::tree(at / "a/b/copy"), test::tree(at / "source"));
    QVERIFY(at.console().isEmpty());
}

void ZQFileManagerAsynchronousCopyTest::aFolderThatCannotBeMadeReturnsFalseWithALine()
{
    auto &at = *m_fixture;
    test::writeFile(at / "source");
    const auto gone = QStringLiteral("/Volumes/Gone/folder");
    QVERIFY(!ZQFileManager::copyFileWithProgress(at.path("source"), gone + QStringLiteral("/copy"),
                                                 nullptr, {}));
    QVERIFY(!ZQFileManager::copyFileWithProgress(at.path("source"), QString(), nullptr, {}));
    const auto line = QStringLiteral("Unable to copy file %1 - destination directory %2 doesn't "
                                     "exist. Aborting copy process...");
    auto lines = at.console();
    QCOMPARE(lines.takeLast(), line.arg(at.path("source"), QString()));
    QCOMPARE(lines.takeLast(), line.arg(at.path("source"), gone));
    QVERIFY(FileManagerFixture::logged().isEmpty()); // nothing was tried with privileges
}

void ZQFileManagerAsynchronousCopyTest::aDelegateWithOnlyTheShortFinishedFormGetsOneCall()
{
    auto &at = *m_fixture;
    test::writeFile(at / "source");
    test::ShortFinishedDelegate delegate;
    QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), at.path("copy"), &delegate, {}));
    QVERIFY(delegate.waitForEnd());
    QTest::qWait(1500);
    QCOMPARE(delegate.reports.size(), 1);
    const auto report = delegate.reports[0].report;
    QCOMPARE(report.keys(), (QStringList{QStringLiteral("delegate"), QStringLiteral("destination"),
                                         QStringLiteral("operationtype"), QStringLiteral("source"),
                                         QStringLiteral("stage")}));
    QCOMPARE(report[QStringLiteral("stage")].toLongLong(), complete);
    QCOMPARE(report[QStringLiteral("operationtype")].toString(), QStringLiteral("copy"));
    QCOMPARE(report[QStringLiteral("source")].toString(), at.path("source"));
    QCOMPARE(report[QStringLiteral("destination")].toString(), at.path("copy"));
    QCOMPARE(report[QStringLiteral("delegate")].value<QObject *>(), &delegate);
}

void ZQFileManagerAsynchronousCopyTest::theFormWithTheOperationIsPreferred()
{
    auto &at = *m_fixture;
    makeSource(false);
    test::BothFormsDelegate delegate;
    QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), at.path("copy"), &delegate, {}));
    QVERIFY(delegate.waitForEnd());
    for (const auto &report : delegate.reports) {
        QVERIFY(report.hadOperation);
    }
    QCOMPARE(delegate.finished(), 1);
    // Progress by hand, since this copy may be too quick for one.
    const auto operation = FileOperation::create();
    const QVariantMap context{
        {QStringLiteral("delegate"), QVariant::fromValue(QPointer<QObject>(&delegate))}};
    delegate.reports.clear();
    statusCallback(*operation, {}, FileOperation::Stage::Running, 0, QVariantMap(), context);
    QVERIFY(delegate.reports.isEmpty()); // queued
    QTRY_COMPARE(delegate.reports.size(), 1);
    QVERIFY(delegate.reports[0].hadOperation);
    QCOMPARE(delegate.reports[0].stage(), running);
}

void ZQFileManagerAsynchronousCopyTest::aDelegateWithoutFormsIsNotCalled()
{
    auto &at = *m_fixture;
    test::writeFile(at / "source");
    test::OtherFormsDelegate delegate;
    QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), at.path("copy"), &delegate, {}));
    QTRY_COMPARE(FileOperation::liveCount(), 0);
    QVERIFY(delegate.reports.isEmpty());
    QVERIFY(test::exists(at / "copy"));
}

void ZQFileManagerAsynchronousCopyTest::withoutADelegateTheCopyIsMadeAllTheSame()
{
    auto &at = *m_fixture;
    test::makeTree(at / "source");
    QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), at.path("copy"), nullptr, {}));
    QTRY_COMPARE(FileOperation::liveCount(), 0);
    QCOMPARE(test::tree(at / "copy"), test::tree(at / "source"));
}

void ZQFileManagerAsynchronousCopyTest::theObjectsAreInTheReportWhereTheyWereGiven()
{
    auto &at = *m_fixture;
    test::writeFile(at / "source");
    CopyDelegate delegate;
    QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), at.path("one"), &delegate,
                                                QStringLiteral("first")));
    QVERIFY(delegate.waitForEnd());
    auto report = delegate.reports.last().report;
    QCOMPARE(report[QStringLiteral("object")].toString(), QStringLiteral("first"));
    QVERIFY(!report.contains(QStringLiteral("object2")));
    delegate.reports.clear();
    QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), at.path("two"), &delegate, {},
                                                QVariantMap{{QStringLiteral("a"), 1}}));
    QVERIFY(delegate.waitForEnd());
    report = delegate.reports.last().report;
    QVERIFY(!report.contains(QStringLiteral("object")));
    QCOMPARE(report[QStringLiteral("object2")].toMap()[QStringLiteral("a")].toInt(), 1);
}

void ZQFileManagerAsynchronousCopyTest::anExistingItemStaysAndTheEndIsReported_data()
{
    QTest::addColumn<bool>("isFolder");
    QTest::newRow("file") << false;
    QTest::newRow("folder") << true;
}

void ZQFileManagerAsynchronousCopyTest::anExistingItemStaysAndTheEndIsReported()
{
    QFETCH(bool, isFolder);
    auto &at = *m_fixture;
    if (isFolder) {
        test::makeTree(at / "source");
        test::makeFolder(at / "copy/old");
    } else {
        test::writeFile(at / "source", "new");
        test::writeFile(at / "copy", "old");
    }
    const auto before = test::tree(at / "copy");
    CopyDelegate delegate;
    QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), at.path("copy"), &delegate, {}));
    QVERIFY(delegate.waitForEnd());
    QCOMPARE(delegate.finished(), 1);
    QCOMPARE(test::tree(at / "copy"), before);
    QCOMPARE(at.folder().names().size(), 2);
}

void ZQFileManagerAsynchronousCopyTest::aFailedCopyIsReportedAsFinishedLikeAnyOther()
{
    auto &at = *m_fixture;
    test::makeFolder(at / "source");
    CopyDelegate delegate;
    for (const auto &destination : {at.path("source/below"), QStringLiteral("/")}) {
        delegate.reports.clear();
        QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), destination, &delegate, {}));
        QVERIFY(delegate.waitForEnd());
        QCOMPARE(delegate.reports.size(), 1);
        QCOMPARE(delegate.reports[0].stage(), complete);
        QVERIFY(!delegate.reports[0].report.contains(QStringLiteral("error")));
    }
    QVERIFY(at.console().isEmpty());
    QCOMPARE(test::tree(at / "source").size(), 1);
}

void ZQFileManagerAsynchronousCopyTest::theCallReturnsBeforeAnythingIsReported()
{
    auto &at = *m_fixture;
    test::writeFile(at / "source");
    CopyDelegate delegate;
    QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), at.path("copy"), &delegate, {}));
    while (!test::exists(at / "copy")) {
        ::usleep(1000);
    }
    ::usleep(50000);
    QVERIFY(delegate.reports.isEmpty()); // the main loop has not turned
    QVERIFY(delegate.waitForEnd());
}

void ZQFileManagerAsynchronousCopyTest::reportsComeAboutOnceASecondAndTellHowFarItIs()
{
    auto &at = *m_fixture;
    // Onto another file system, where nothing can be shared; as much as takes a few seconds.
    const test::Folder other("/var/tmp");
    test::makeFolder(at / "source");
    test::makeManyFiles(at / "source/many", 2000);
    const auto file = ::open((at / "source/large").c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    QCOMPARE(::posix_fallocate(file, 0, off_t(3) << 30U), 0);
    ::close(file);
    const auto bytes = ZQFileManager::fileSize(at.path("source"));
    CopyDelegate delegate;
    QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), text(other / "copy"), &delegate,
                                                {}));
    QVERIFY(delegate.waitForEnd(120));
    QCOMPARE(delegate.finished(), 1);
    if (delegate.progress() == 0) {
        QSKIP("this machine copies 3 GiB in less than a second");
    }
    quint64 before = 0;
    qint64 last = 0;
    for (const auto &report : delegate.reports) {
        if (report.stage() != running) {
            break;
        }
        const auto value = [&](const QString &key) { return report.report.value(key); };
        const auto done = value(FileOperation::bytesComplete).toULongLong();
        QVERIFY(done >= before && done <= bytes);
        before = done;
        QVERIFY(value(FileOperation::itemsComplete).toULongLong() <= 2000 + 40 + 3);
        QVERIFY(value(FileOperation::throughput).toDouble() > 0);
        if (report.report.contains(FileOperation::bytesTotal)) {
            QCOMPARE(value(FileOperation::bytesTotal).toULongLong(), bytes);
            QCOMPARE(value(FileOperation::itemsTotal).toULongLong(), 2000ULL + 40 + 3);
            QVERIFY(value(FileOperation::secondsRemaining).toDouble() >= 0);
        }
        // Late on a busy machine, but never more often.
        QVERIFY2(report.milliseconds - last > 500,
                 qPrintable(QString::number(report.milliseconds)));
        last = report.milliseconds;
    }
    QVERIFY(before > 0);
}

void ZQFileManagerAsynchronousCopyTest::reportsComeOnTheMainThreadForAWorker()
{
    auto &at = *m_fixture;
    test::writeFile(at / "source");
    CopyDelegate delegate;
    QVERIFY(test::onWorker([&] {
        return ZQFileManager::copyFileWithProgress(at.path("source"), at.path("copy"), &delegate,
                                                   {});
    }));
    QVERIFY(delegate.waitForEnd());
    QVERIFY(delegate.reports[0].onMainThread);
}

void ZQFileManagerAsynchronousCopyTest::aRelativePathIsThatOfTheCall()
{
    auto &at = *m_fixture;
    test::writeFile(at / "-source");
    test::makeFolder(at / "elsewhere");
    QCOMPARE(::chdir(at.folder().path().c_str()), 0);
    CopyDelegate delegate;
    QVERIFY(ZQFileManager::copyFileWithProgress(QStringLiteral("-source"), QStringLiteral("copy"),
                                                &delegate, {}));
    QCOMPARE(::chdir((at / "elsewhere").c_str()), 0);
    QVERIFY(delegate.waitForEnd());
    QCOMPARE(::chdir("/tmp"), 0);
    QVERIFY(test::exists(at / "copy"));
    const auto report = delegate.reports[0].report;
    QCOMPARE(report[QStringLiteral("source")].toString(), QStringLiteral("-source"));
    QCOMPARE(report[QStringLiteral("destination")].toString(), at.path("copy"));
}

void ZQFileManagerAsynchronousCopyTest::everyNameIsCopied()
{
    auto &at = *m_fixture;
    auto names = test::namesInEveryScript();
    for (const auto &odd : test::oddNames()) {
        names.push_back(odd.name);
    }
    test::makeFolder(at / "to");
    for (const auto &name : names) {
        test::makeFolder(at / ("from/" + name));
        test::writeFile((at / ("from/" + name)).append("/").append(name), name);
        CopyDelegate delegate;
        QVERIFY(ZQFileManager::copyFileWithProgress(at.path("from/" + name), at.path("to/" + name),
                                                    &delegate, {}));
        QVERIFY(delegate.waitForEnd());
        QCOMPARE(delegate.reports.last().report[QStringLiteral("destination")].toString(),
                 at.path("to/" + name));
    }
    QVERIFY(test::tree(at / "to") == test::tree(at / "from"));
}

void ZQFileManagerAsynchronousCopyTest::manyCopiesAtATimeAreAllReported()
{
    auto &at = *m_fixture;
    test::makeTree(at / "source");
    CopyDelegate delegate;
    for (int i = 0; i < 40; ++i) {
        QVERIFY(ZQFileManager::copyFileWithProgress(
            at.path("source"), at.path("copy " + std::to_string(i)), &delegate, i));
    }
    QTRY_COMPARE_WITH_TIMEOUT(delegate.finished(), 40, 60000);
    for (int i = 0; i < 40; ++i) {
        QCOMPARE(test::tree(at / ("copy " + std::to_string(i))), test::tree(at / "source"));
    }
    // One destination for all: one copy, and every end is told.
    delegate.reports.clear();
    for (int i = 0; i < 10; ++i) {
        QVERIFY(
            ZQFileManager::copyFileWithProgress(at.path("source"), at.path("same"), &delegate, i));
    }
    QTRY_COMPARE_WITH_TIMEOUT(delegate.finished(), 10, 60000);
    QCOMPARE(test::tree(at / "same"), test::tree(at / "source"));
    QCOMPARE(at.folder().names().size(), 42);
}

void ZQFileManagerAsynchronousCopyTest::cancellingEndsWithin100MillisecondsAndLeavesNothing_data()
{
    QTest::addColumn<bool>("isFolder");
    QTest::addColumn<int>("milliseconds");
    for (const auto milliseconds : {0, 30, 150}) {
        QTest::addRow("file, %d ms", milliseconds) << false << milliseconds;
        QTest::addRow("folder, %d ms", milliseconds) << true << milliseconds;
    }
}

void ZQFileManagerAsynchronousCopyTest::cancellingEndsWithin100MillisecondsAndLeavesNothing()
{
    QFETCH(bool, isFolder);
    QFETCH(int, milliseconds);
    auto &at = *m_fixture;
    makeSource(isFolder);
    CopyDelegate delegate;
    const auto operation = FileOperation::create();
    QCOMPARE(operation->scheduleWithMainRunLoop(), 0);
    const QVariantMap context{
        {QStringLiteral("delegate"), QVariant::fromValue(QPointer<QObject>(&delegate))}};
    QCOMPARE(operation->copyItemAsync(at.path("source"), at.path("."), QStringLiteral("copy"),
                                      statusCallback, std::chrono::seconds(1), context),
             0);
    QTest::qWait(milliseconds);
    const auto wasThere = test::exists(at / "copy");
    // A machine that is busy with other things is late with every timer: that is not counted.
    constexpr qint64 reference = 20;
    qint64 lateness = 0;
    QElapsedTimer timer;
    timer.start();
    QTimer::singleShot(reference, Qt::PreciseTimer, &delegate,
                       [&] { lateness = timer.elapsed() - reference; });
    ZQFileManager::cancelFileOperation(operation.get());
    QVERIFY(delegate.waitForEnd());
    const auto took = timer.elapsed() - lateness;
    QVERIFY2(took < 100, qPrintable(QStringLiteral("%1 and %2 late").arg(took).arg(lateness)));
    QCOMPARE(delegate.finished(), 1);
    QCOMPARE(delegate.reports.last().stage(), complete);
    QTRY_VERIFY_WITH_TIMEOUT(at.folder().names().size() == (test::exists(at / "copy") ? 2 : 1),
                             30000);
    if (test::exists(at / "copy")) {
        // It was whole already, or just being given its name.
        QVERIFY(wasThere || milliseconds > 0);
        QCOMPARE(ZQFileManager::fileSize(at.path("copy")),
                 ZQFileManager::fileSize(at.path("source")));
    }
    QTest::qWait(200);
    QCOMPARE(delegate.finished(), 1); // no second end
}

void ZQFileManagerAsynchronousCopyTest::cancellingWhatIsNoRunningOperationDoesNothing()
{
    ZQFileManager::cancelFileOperation(nullptr);
    ZQFileManager::cancelFileOperation(this);
    const auto operation = FileOperation::create();
    ZQFileManager::cancelFileOperation(operation.get());
    auto &at = *m_fixture;
    test::writeFile(at / "source");
    QCOMPARE(operation->scheduleWithMainRunLoop(), 0);
    CopyDelegate delegate;
    const QVariantMap context{
        {QStringLiteral("delegate"), QVariant::fromValue(QPointer<QObject>(&delegate))}};
    QCOMPARE(operation->copyItemAsync(at.path("source"), at.path("."), QStringLiteral("copy"),
                                      statusCallback, std::chrono::seconds(1), context),
             0);
    QVERIFY(delegate.waitForEnd());
    ZQFileManager::cancelFileOperation(operation.get());
    QTest::qWait(100);
    QVERIFY(test::exists(at / "copy"));
    QCOMPARE(delegate.reports.size(), 1);
}

void ZQFileManagerAsynchronousCopyTest::anOperationGoesAfterItsEndUnlessItIsHeld()
{
    auto &at = *m_fixture;
    test::writeFile(at / "source");
    CopyDelegate delegate;
    delegate.holdsOperation = true;
    QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), at.path("copy"), &delegate, {}));
    QVERIFY(delegate.waitForEnd());
    QTest::qWait(50);
    QCOMPARE(FileOperation::liveCount(), 1);
    const QPointer<FileOperation> operation(delegate.held.get());
    // The last holder lets go on another thread.
    test::onWorker([&] {
        delegate.held.reset();
        return true;
    });
    QTRY_VERIFY(operation == nullptr);
    QCOMPARE(FileOperation::liveCount(), 0);
}

void ZQFileManagerAsynchronousCopyTest::aDelegateThatIsDestroyedMeanwhileIsNotCalled()
{
    auto &at = *m_fixture;
    test::writeFile(at / "source");
    auto delegate = std::make_unique<CopyDelegate>();
    QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), at.path("copy"), delegate.get(),
                                                {}));
    delegate.reset();
    QTRY_COMPARE(FileOperation::liveCount(), 0);
    QVERIFY(test::exists(at / "copy"));
}

void ZQFileManagerAsynchronousCopyTest::aDelegateMayStartTheNextCopy()
{
    auto &at = *m_fixture;
    test::writeFile(at / "source");
    CopyDelegate delegate;
    delegate.then = [&] {
        if (delegate.finished() < 5) {
            const auto name = "copy " + std::to_string(delegate.finished());
            QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), at.path(name), &delegate,
                                                        {}));
        }
    };
    QVERIFY(ZQFileManager::copyFileWithProgress(at.path("source"), at.path("copy"), &delegate, {}));
    QTRY_COMPARE(delegate.finished(), 5);
    QCOMPARE(at.folder().names().size(), 6);
}

void ZQFileManagerAsynchronousCopyTest::otherStagesDeliverNothing()
{
    CopyDelegate delegate;
    const QVariantMap context{
        {QStringLiteral("delegate"), QVariant::fromValue(QPointer<QObject>(&delegate))}};
    const auto operation = FileOperation::create();
    for (const auto stage : {FileOperation::Stage::Undefined, FileOperation::Stage::Preflighting}) {
        statusCallback(*operation, {}, stage, 0, QVariantMap(), context);
    }
    // Nor does progress without a status.
    statusCallback(*operation, {}, FileOperation::Stage::Running, 0, std::nullopt, context);
    QTest::qWait(50);
    QVERIFY(delegate.reports.isEmpty());
    QVERIFY(m_fixture->console().isEmpty());
}

void ZQFileManagerAsynchronousCopyTest::anOperationThatIsNotScheduledGivesALineAtItsEnd()
{
    CopyDelegate delegate;
    const QVariantMap context{
        {QStringLiteral("delegate"), QVariant::fromValue(QPointer<QObject>(&delegate))}};
    const auto operation = FileOperation::create();
    statusCallback(*operation, {}, FileOperation::Stage::Complete, 0, std::nullopt, context);
    QCOMPARE(m_fixture->console(),
             QStringList(QStringLiteral("Failed to unschedule operation from run loop: 22")));
    QVERIFY(delegate.waitForEnd());
    // Without a context there is nobody to tell.
    statusCallback(*operation, {}, FileOperation::Stage::Complete, 0, std::nullopt, {});
    QTest::qWait(50);
    QCOMPARE(delegate.reports.size(), 1);
    delegate.reports.clear();
}

TEST_CLASS(ZQFileManagerAsynchronousCopyTest, QCoreApplication)
#include "ZQFileManagerAsynchronousCopyTest.moc"
