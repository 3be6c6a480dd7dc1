// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/CopyItem.h"
#include "Platform/Core/Trees/CopyProgress.h"
#include "Platform/Core/Trees/FolderSize.h"
#include "Tests/Support/CopySource.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <thread>

namespace fs = std::filesystem;
using platform::CopyProgress;
using test::text;

namespace {

bool isRoot()
{
    return ::geteuid() == 0;
}

int copy(const std::string &source, const std::string &destination)
{
    CopyProgress progress;
    return platform::copyItem(text(source), text(destination), &progress).code();
}

struct stat statusOf(const std::string &path)
{
    struct stat status {};
    ::lstat(path.c_str(), &status);
    return status;
}

// A volume of 16 MiB in the sandbox.
const auto smallVolume = std::string("/small");

} // namespace

// Copies whose progress is followed and that cannot go as they should, or are cancelled.
class InterruptedCopyTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void nothingIsReplaced();
    void aFolderIsNotCopiedIntoItself();
    void whatCannotBeReadLeavesNothingBehind();
    void aFullDiskLeavesNothingBehind_data();
    void aFullDiskLeavesNothingBehind();
    void aSourceThatChangesIsCopiedOrNot();
    void aSourceThatIsRemovedMeanwhileIsNotTakenForWhole();
    void aFileThatGrowsForEverIsCopiedAsLongAsItWas();
    void aDestinationThatVanishesEndsTheCopy();

    void aCancelledCopyLeavesNothingBehind_data();
    void aCancelledCopyLeavesNothingBehind();
    void cancellingIsTooLateWhenTheCopyIsBeingPublished();
};

void InterruptedCopyTest::nothingIsReplaced()
{
    const test::Folder folder;
    test::makeTree(folder / "source");
    test::writeFile(folder / "copy", "old");
    test::makeLink("nowhere", folder / "link");
    for (const auto *name : {"copy", "link"}) {
        QCOMPARE(copy(folder / "source", folder / name), EEXIST);
        QCOMPARE(copy(folder / "source/file", folder / name), EEXIST);
    }
    QCOMPARE(test::readFile(folder / "copy"), std::string("old"));
    QCOMPARE(folder.names().size(), 3);
}

void InterruptedCopyTest::aFolderIsNotCopiedIntoItself()
{
    const test::Folder folder;
    test::makeFolder(folder / "source/below");
    QCOMPARE(copy(folder / "source", folder / "source/below/copy"), EINVAL);
    QCOMPARE(copy(folder / "source", folder / "source/copy"), EINVAL);
    QCOMPARE(test::tree(folder / "source").size(), 2);
}

void InterruptedCopyTest::whatCannotBeReadLeavesNothingBehind()
{
    if (isRoot()) {
        QSKIP("root reads everything");
    }
    const test::Folder folder;
    test::makeManyFiles(folder / "source", 2000);
    ::chmod((folder / "source/folder 20/file 1001").c_str(), 0);
    CopyProgress progress;
    const auto error =
        platform::copyItem(text(folder / "source"), text(folder / "copy"), &progress);
    QCOMPARE(error.code(), EACCES);
    QCOMPARE(error.path(), text(folder / "source/folder 20/file 1001"));
    QCOMPARE(folder.names(), QStringList(QStringLiteral("source")));
    ::chmod((folder / "source/folder 20/file 1001").c_str(), 0600);
    ::chmod((folder / "source/folder 30").c_str(), 0);
    QCOMPARE(copy(folder / "source", folder / "copy"), EACCES);
    ::chmod((folder / "source/folder 30").c_str(), 0700);
    QCOMPARE(folder.names(), QStringList(QStringLiteral("source")));
}

void InterruptedCopyTest::aFullDiskLeavesNothingBehind_data()
{
    QTest::addColumn<bool>("isFolder");
    QTest::newRow("file") << false;
    QTest::newRow("folder") << true;
}

void InterruptedCopyTest::aFullDiskLeavesNothingBehind()
{
    QFETCH(bool, isFolder);
    const test::Folder folder;
    if (isFolder) {
        for (int i = 0; i < 300; ++i) {
            const auto below = folder / "source/" + std::to_string(i % 10);
            test::makeFolder(below);
            test::writeFile(below + '/' + std::to_string(i), std::string(100000, 'f'));
        }
    } else {
        test::writeFile(folder / "source", std::string(30000000, 'f'));
    }
    const test::Folder volume(smallVolume);
    QCOMPARE(copy(folder / "source", volume / "copy"), ENOSPC);
    QVERIFY(volume.names().isEmpty());
    // All of it is free again.
    test::writeFile(volume / "file", std::string(12000000, 'f'));
    QCOMPARE(test::readFile(volume / "file").size(), std::size_t(12000000));
}

void InterruptedCopyTest::aSourceThatChangesIsCopiedOrNot()
{
    const test::Folder folder;
    test::makeManyFiles(folder / "source", 3000);
    std::atomic<bool> ended = false;
    std::thread changes([&] {
        for (int i = 0; !ended; i = (i + 1) % 3000) {
            const auto below = folder / "source/folder " + std::to_string(i / 50);
            const auto path = below + "/file " + std::to_string(i);
            ::chmod(path.c_str(), 0600);
            std::ofstream(path, std::ios::app) << "more";
            ::truncate(path.c_str(), i % 11);
            std::ofstream(below + "/new " + std::to_string(i % 100)) << "new";
            ::rename(path.c_str(), (below + "/renamed").c_str());
            ::rename((below + "/renamed").c_str(), path.c_str());
        }
    });
    QStringList complaints;
    for (int round = 0; round < 20; ++round) {
        const auto name = "copy " + std::to_string(round);
        const auto error = copy(folder / "source", folder / name);
        if ((error == 0) != test::exists(folder / name)) {
            complaints << QStringLiteral("the result %1 is wrong").arg(error);
        }
        if (error != 0 && error != ENOENT && error != EACCES) {
            complaints << QStringLiteral("error %1").arg(error);
        }
        if (error == 0) {
            const auto count = platform::countItem(text(folder / name), [] { return false; });
            if (count.items < 3000) {
                complaints << QStringLiteral("only %1 items").arg(count.items);
            }
            fs::remove_all(folder / name);
        }
    }
    ended = true;
    changes.join();
    QCOMPARE(complaints, QStringList());
    QCOMPARE(folder.names(), QStringList(QStringLiteral("source")));
}

void InterruptedCopyTest::aSourceThatIsRemovedMeanwhileIsNotTakenForWhole()
{
    for (int round = 0; round < 5; ++round) {
        const test::Folder folder;
        test::makeManyFiles(folder / "source", 3000);
        std::thread removal([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(5 * round));
            fs::remove_all(folder / "source");
        });
        const auto error = copy(folder / "source", folder / "copy");
        removal.join();
        QCOMPARE(test::exists(folder / "copy"), error == 0);
        if (error == 0) {
            const auto count = platform::countItem(text(folder / "copy"), [] { return false; });
            QCOMPARE(count.items, quint64(3000 + 60 + 1));
        }
        QVERIFY(folder.names().size() <= 1);
    }
}

void InterruptedCopyTest::aFileThatGrowsForEverIsCopiedAsLongAsItWas()
{
    const test::Folder folder;
    test::writeFile(folder / "source", std::string(20000000, 's'));
    std::atomic<bool> ended = false;
    std::thread growth([&] {
        std::ofstream file(folder / "source", std::ios::app);
        for (std::size_t size = 0; !ended && size < 400000000; size += 100000) {
            file << std::string(100000, 'g') << std::flush;
        }
    });
    const auto error = copy(folder / "source", folder / "copy");
    const auto after = statusOf(folder / "source").st_size;
    ended = true;
    growth.join();
    QCOMPARE(error, 0);
    const auto size = statusOf(folder / "copy").st_size;
    QVERIFY(size >= 20000000 && size <= after);
    // What it was at some moment: nothing is missing in between.
    const auto source = test::readFile(folder / "source").substr(0, std::size_t(size));
    QVERIFY(test::readFile(folder / "copy") == source);
}

void InterruptedCopyTest::aDestinationThatVanishesEndsTheCopy()
{
    const test::Folder folder;
    test::makeManyFiles(folder / "source", 3000);
    test::writeFile(folder / "large", std::string(50000000, 'l'));
    for (const auto *name : {"source", "large"}) {
        for (int round = 0; round < 5; ++round) {
            test::makeFolder(folder / "destination");
            std::thread removal([&] {
                std::this_thread::sleep_for(std::chrono::milliseconds(4 * round));
                std::error_code ignored;
                while (test::exists(folder / "destination")) {
                    fs::remove_all(folder / "destination", ignored);
                }
            });
            const auto error = copy(folder / name, folder / "destination/copy");
            removal.join();
            // Where the copy was quicker it is gone with the rest.
            QVERIFY2(error == 0 || error == ENOENT, qPrintable(QString::number(error)));
            QVERIFY(!test::exists(folder / "destination"));
        }
    }
    QCOMPARE(folder.names().size(), 2);
}

void InterruptedCopyTest::aCancelledCopyLeavesNothingBehind_data()
{
    QTest::addColumn<bool>("isFolder");
    QTest::newRow("file") << false;
    QTest::newRow("folder") << true;
}

void InterruptedCopyTest::aCancelledCopyLeavesNothingBehind()
{
    QFETCH(bool, isFolder);
    const test::Folder folder;
    if (isFolder) {
        test::makeManyFiles(folder / "source", 3000);
    } else {
        test::writeFile(folder / "source", std::string(100000000, 's'));
    }
    const auto before = test::tree(folder / "source");
    int cancelled = 0;
    for (int round = 0; round < 15; ++round) {
        CopyProgress progress;
        bool inTime = false;
        std::thread canceller([&] {
            std::this_thread::sleep_for(std::chrono::microseconds(2500 * round));
            inTime = progress.cancel();
        });
        const auto error =
            platform::copyItem(text(folder / "source"), text(folder / "copy"), &progress).code();
        canceller.join();
        cancelled += inTime ? 1 : 0;
        QCOMPARE(error, inTime ? ECANCELED : 0);
        QCOMPARE(test::exists(folder / "copy"), !inTime);
        if (!inTime) {
            QVERIFY(test::tree(folder / "copy") == before);
            fs::remove_all(folder / "copy");
        }
        QCOMPARE(folder.names(), QStringList(QStringLiteral("source")));
    }
    QVERIFY(cancelled > 0);
}

void InterruptedCopyTest::cancellingIsTooLateWhenTheCopyIsBeingPublished()
{
    CopyProgress published;
    QVERIFY(published.beginPublishing());
    QVERIFY(!published.cancel());
    QVERIFY(!published.isCancelled());
    CopyProgress cancelled;
    QVERIFY(cancelled.cancel());
    QVERIFY(cancelled.cancel());
    QVERIFY(cancelled.isCancelled());
    QVERIFY(!cancelled.beginPublishing());
}

TEST_CLASS(InterruptedCopyTest, QCoreApplication)
#include "InterruptedCopyTest.moc"
