// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/CopyItem.h"
#include "Platform/CopyProgress.h"
#include "Platform/FolderSize.h"
#include "Platform/RemoveItem.h"
#include "Platform/TransferRate.h"
#include "Tests/Support/CopySource.h"
#include "Tests/Support/FileTree.h"

#include <QTest>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
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

// Copies whose progress is followed, of folders on several threads.
class ParallelCopyTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aTreeOf20000FilesIsTheSameByDiffAndByAttributes();
    void aTreeOfEveryKindOfItemIsTheSame();
    void aFolderOf20000FilesIsTheSame();
    void namesInEveryScriptAreKept();
    void hardLinksAreKeptAsSuch();
    void holesStayHolesAndCountAsCopied();
    void treesDeeperThanThereAreDescriptorsAreCopied();
    void closedFoldersAreCopiedAndStayClosed();

    void progressAddsUpToWhatWasCounted();
    void countingEndsEarlyWhenTold();
    void theCurrentItemIsAPathInTheSource();
    void theRateFollowsWhatIsDoneAndTellsWhatIsLeft();

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
    void memoryDoesNotDependOnTheSize_data();
    void memoryDoesNotDependOnTheSize();
};

void ParallelCopyTest::aTreeOf20000FilesIsTheSameByDiffAndByAttributes()
{
    const test::Folder folder;
    test::makeManyFiles(folder / "source", 20000);
    const auto before = test::attributes(folder / "source");
    QCOMPARE(before.size(), 20000 + 400 + 1);
    QCOMPARE(copy(folder / "source", folder / "copy"), 0);
    QVERIFY(test::attributes(folder / "copy") == before);
    QVERIFY(test::isSameByDiff(folder / "source", folder / "copy"));
    QCOMPARE(folder.names().size(), 2);
}

void ParallelCopyTest::aTreeOfEveryKindOfItemIsTheSame()
{
    const test::Folder folder;
    test::makeTree(folder / "source");
    const auto before = test::tree(folder / "source");
    const auto attributes = test::attributes(folder / "source");
    QCOMPARE(copy(folder / "source", folder / "copy"), 0);
    QCOMPARE(test::tree(folder / "copy"), before);
    QCOMPARE(test::attributes(folder / "copy"), attributes);
    QCOMPARE(test::tree(folder / "source"), before);
    // To another file system as well.
    const test::Folder other("/var/tmp");
    QCOMPARE(copy(folder / "source", other / "copy"), 0);
    QCOMPARE(test::tree(other / "copy"), before);
    for (const auto *name :
         {"file", "large", "link", "folder/dangling", "folder/pipe", "nothing"}) {
        QCOMPARE(copy(folder / "source/" + name, folder / "one"), 0);
        QCOMPARE(test::tree(folder / "one"), test::tree(folder / "source/" + name));
        fs::remove(folder / "one");
    }
}

void ParallelCopyTest::aFolderOf20000FilesIsTheSame()
{
    const test::Folder folder;
    test::makeFolder(folder / "source");
    for (int i = 0; i < 20000; ++i) {
        const auto path = folder / "source/file with a longer name " + std::to_string(i);
        if (i % 1000 == 0) {
            test::makeFolder(path);
        }
        test::writeFile(i % 1000 == 0 ? path + "/below" : path, std::to_string(i));
    }
    const auto before = test::tree(folder / "source");
    QCOMPARE(copy(folder / "source", folder / "copy"), 0);
    QVERIFY(test::tree(folder / "copy") == before);
}

void ParallelCopyTest::namesInEveryScriptAreKept()
{
    const test::Folder folder;
    auto names = test::namesInEveryScript();
    for (const auto &odd : test::oddNames()) {
        names.push_back(odd.name);
    }
    for (const auto &name : names) {
        for (const auto &other : names) {
            test::makeFolder(folder / "source/" + name);
            test::writeFile((folder / "source/" + name).append("/").append(other), other);
        }
    }
    const auto before = test::tree(folder / "source");
    QCOMPARE(copy(folder / "source", folder / "copy"), 0);
    QVERIFY(test::tree(folder / "copy") == before);
    for (const auto &name : names) {
        test::makeFolder(folder / "to");
        QCOMPARE(copy(folder / "source/" + name, folder / "to/" + name), 0);
        QVERIFY(test::tree(folder / "to/" + name) == test::tree(folder / "source/" + name));
    }
}

void ParallelCopyTest::hardLinksAreKeptAsSuch()
{
    const test::Folder folder;
    for (int i = 0; i < 300; ++i) {
        const auto below = folder / "source/" + std::to_string(i);
        test::makeFolder(below);
        test::writeFile(below + "/first", std::to_string(i));
        fs::create_hard_link(below + "/first", below + "/second");
        if (i > 0) {
            fs::create_hard_link(folder / "source/0/first", below + "/far");
        }
    }
    test::writeFile(folder / "outside", "outside");
    fs::create_hard_link(folder / "outside", folder / "source/inside");
    test::makeLink("first", folder / "source/0/soft");
    fs::create_hard_link(folder / "source/0/soft", folder / "source/1/soft");
    QCOMPARE(copy(folder / "source", folder / "copy"), 0);
    QVERIFY(test::tree(folder / "copy") == test::tree(folder / "source"));
    const auto far = statusOf(folder / "copy/0/first");
    QCOMPARE(far.st_nlink, nlink_t(301));
    for (int i = 1; i < 300; ++i) {
        const auto below = folder / "copy/" + std::to_string(i);
        QCOMPARE(statusOf(below + "/far").st_ino, far.st_ino);
        QCOMPARE(statusOf(below + "/first").st_ino, statusOf(below + "/second").st_ino);
        QCOMPARE(statusOf(below + "/first").st_nlink, nlink_t(2));
    }
    QCOMPARE(statusOf(folder / "copy/inside").st_nlink, nlink_t(1));
    QCOMPARE(statusOf(folder / "copy/0/soft").st_ino, statusOf(folder / "copy/1/soft").st_ino);
}

void ParallelCopyTest::holesStayHolesAndCountAsCopied()
{
    const test::Folder folder;
    test::makeFolder(folder / "source");
    const auto path = folder / "source/sparse";
    test::writeFile(path, "start");
    constexpr off_t size = off_t(1) << 36U;
    QCOMPARE(::truncate(path.c_str(), size), 0);
    const auto file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    QCOMPARE(::pwrite(file, "middle", 6, size / 2), ssize_t(6));
    ::close(file);
    CopyProgress progress;
    QVERIFY(!platform::copyItem(text(folder / "source"), text(folder / "copy"), &progress));
    QCOMPARE(progress.bytes(), std::uint64_t(size));
    const auto status = statusOf(folder / "copy/sparse");
    QCOMPARE(status.st_size, size);
    QVERIFY(status.st_blocks <= statusOf(path).st_blocks);
    std::array<char, 6> middle{};
    const auto copied = ::open((folder / "copy/sparse").c_str(), O_RDONLY | O_CLOEXEC);
    QCOMPARE(::pread(copied, middle.data(), 6, size / 2), ssize_t(6));
    ::close(copied);
    QCOMPARE(std::string(middle.data(), 6), std::string("middle"));
}

void ParallelCopyTest::treesDeeperThanThereAreDescriptorsAreCopied()
{
    constexpr int depth = 3000; // also more than a path can have
    const std::string name(10, 'd');
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    const auto before = limit.rlim_cur;
    limit.rlim_cur = 64;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    const test::Folder folder;
    test::makeFolder(folder / "top");
    auto current = ::open((folder / "top").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const auto makeFile = [&] {
        const auto file = ::openat(current, "file", O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        ::linkat(current, "file", current, "link", 0);
        QCOMPARE(::write(file, "deep", 4), ssize_t(4));
        ::close(file);
    };
    for (int i = 0; i < depth; ++i) {
        makeFile();
        QCOMPARE(::mkdirat(current, name.c_str(), 0700), 0);
        const auto below = ::openat(current, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(current);
        current = below;
    }
    makeFile();
    ::close(current);
    CopyProgress progress;
    const auto error =
        platform::copyItem(text(folder / "top"), text(folder / "copy"), &progress).code();
    limit.rlim_cur = before;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    QCOMPARE(error, 0);
    QCOMPARE(progress.items(), std::uint64_t(3 * (depth + 1)));
    const auto count = platform::countItem(text(folder / "copy"), [] { return false; });
    QCOMPARE(count.items, quint64(3 * (depth + 1)));
    QCOMPARE(count.bytes, quint64(8 * (depth + 1)));
    // Cancelled at its depth, too.
    CopyProgress cancelled;
    QVERIFY(cancelled.cancel());
    QCOMPARE(platform::copyItem(text(folder / "top"), text(folder / "other"), &cancelled).code(),
             ECANCELED);
    QCOMPARE(folder.names().size(), 2);
    QVERIFY(!platform::removeItem(text(folder / "top"))); // nothing else can
    QVERIFY(!platform::removeItem(text(folder / "copy")));
}

void ParallelCopyTest::closedFoldersAreCopiedAndStayClosed()
{
    const test::Folder folder;
    test::makeFolder(folder / "source/a/b");
    test::writeFile(folder / "source/a/b/file");
    for (const auto *path : {"source/a/b", "source/a", "source"}) {
        ::chmod((folder / path).c_str(), 0500);
    }
    QCOMPARE(copy(folder / "source", folder / "copy"), 0);
    QCOMPARE(test::tree(folder / "copy"), test::tree(folder / "source"));
    QCOMPARE(statusOf(folder / "copy").st_mode & 0777U, mode_t(0500));
}

void ParallelCopyTest::progressAddsUpToWhatWasCounted()
{
    const test::Folder folder;
    test::makeTree(folder / "source");
    test::makeManyFiles(folder / "source/many", 500);
    fs::create_hard_link(folder / "source/large", folder / "source/linked");
    const auto count = platform::countItem(text(folder / "source"), [] { return false; });
    QCOMPARE(count.bytes, platform::sizeOfItem(text(folder / "source")));
    CopyProgress progress;
    QVERIFY(!platform::copyItem(text(folder / "source"), text(folder / "copy"), &progress));
    QCOMPARE(progress.bytes(), std::uint64_t(count.bytes));
    QCOMPARE(progress.items(), std::uint64_t(count.items));
    CopyProgress one;
    QVERIFY(!platform::copyItem(text(folder / "source/large"), text(folder / "one"), &one));
    QCOMPARE(one.bytes(), std::uint64_t(300000));
    QCOMPARE(one.items(), std::uint64_t(1));
}

void ParallelCopyTest::countingEndsEarlyWhenTold()
{
    const test::Folder folder;
    test::makeManyFiles(folder / "source", 500);
    const auto count = platform::countItem(text(folder / "source"), [] { return true; });
    QVERIFY(count.items < 500);
    QCOMPARE(platform::countItem(text(folder / "missing"), [] { return false; }).items, quint64(0));
}

void ParallelCopyTest::theCurrentItemIsAPathInTheSource()
{
    const test::Folder folder;
    test::makeFolder(folder / "source/a");
    test::writeFile(folder / "source/a/file");
    CopyProgress progress;
    QVERIFY(progress.currentItem().isEmpty());
    QVERIFY(!platform::copyItem(text(folder / "source"), text(folder / "copy"), &progress));
    QCOMPARE(progress.currentItem(), QByteArray("a/file"));
}

void ParallelCopyTest::theRateFollowsWhatIsDoneAndTellsWhatIsLeft()
{
    using namespace std::chrono_literals;
    const auto start = platform::TransferRate::Clock::now();
    platform::TransferRate rate(start);
    QCOMPARE(rate.bytesPerSecond(), 0.0);
    QVERIFY(!rate.secondsFor({1000, 1}).has_value());
    rate.note({0, 0}, start + 1s);
    QVERIFY(!rate.secondsFor({1000, 1}).has_value()); // nothing done: nobody knows
    rate.note({0, 0}, start + 1s);                    // no time has passed
    platform::TransferRate steady(start);
    for (int second = 1; second <= 5; ++second) {
        steady.note({std::uint64_t(second) * 1000000, 0}, start + std::chrono::seconds(second));
        QCOMPARE(steady.bytesPerSecond(), 1000000.0);
    }
    QCOMPARE(*steady.secondsFor({7000000, 0}), 7.0);
    // Many small files take their time although they have hardly any bytes.
    QVERIFY(*steady.secondsFor({0, 1000}) > 1);
    // Ten times as fast from now on: it follows, but not at once.
    for (int second = 6; second <= 30; ++second) {
        steady.note({5000000 + std::uint64_t(second - 5) * 10000000, 0},
                    start + std::chrono::seconds(second));
        QVERIFY(steady.bytesPerSecond() > 1000000 && steady.bytesPerSecond() < 10000001);
    }
    QVERIFY(steady.bytesPerSecond() > 9900000);
}

void ParallelCopyTest::nothingIsReplaced()
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

void ParallelCopyTest::aFolderIsNotCopiedIntoItself()
{
    const test::Folder folder;
    test::makeFolder(folder / "source/below");
    QCOMPARE(copy(folder / "source", folder / "source/below/copy"), EINVAL);
    QCOMPARE(copy(folder / "source", folder / "source/copy"), EINVAL);
    QCOMPARE(test::tree(folder / "source").size(), 2);
}

void ParallelCopyTest::whatCannotBeReadLeavesNothingBehind()
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

void ParallelCopyTest::aFullDiskLeavesNothingBehind_data()
{
    QTest::addColumn<bool>("isFolder");
    QTest::newRow("file") << false;
    QTest::newRow("folder") << true;
}

void ParallelCopyTest::aFullDiskLeavesNothingBehind()
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

void ParallelCopyTest::aSourceThatChangesIsCopiedOrNot()
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

void ParallelCopyTest::aSourceThatIsRemovedMeanwhileIsNotTakenForWhole()
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

void ParallelCopyTest::aFileThatGrowsForEverIsCopiedAsLongAsItWas()
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

void ParallelCopyTest::aDestinationThatVanishesEndsTheCopy()
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

void ParallelCopyTest::aCancelledCopyLeavesNothingBehind_data()
{
    QTest::addColumn<bool>("isFolder");
    QTest::newRow("file") << false;
    QTest::newRow("folder") << true;
}

void ParallelCopyTest::aCancelledCopyLeavesNothingBehind()
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

void ParallelCopyTest::cancellingIsTooLateWhenTheCopyIsBeingPublished()
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

void ParallelCopyTest::memoryDoesNotDependOnTheSize_data()
{
    QTest::addColumn<int>("files");
    QTest::addColumn<int>("megabytes");
    QTest::newRow("one file of 300 MB") << 0 << 300;
    QTest::newRow("20,000 files") << 20000 << 0;
    QTest::newRow("one folder of 40,000 files") << -40000 << 0;
}

void ParallelCopyTest::memoryDoesNotDependOnTheSize()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("a sanitizer has its own memory");
#endif
    QFETCH(int, files);
    QFETCH(int, megabytes);
    const test::Folder folder;
    if (files > 0) {
        test::makeManyFiles(folder / "source", files);
    } else if (files < 0) {
        test::makeFolder(folder / "source");
        for (int i = 0; i < -files; ++i) {
            test::writeFile(folder / "source/file " + std::to_string(i), "s");
        }
    } else {
        const std::string megabyte(1000000, 'm');
        std::ofstream file(folder / "source");
        for (int i = 0; i < megabytes; ++i) {
            file << megabyte;
        }
    }
    // In a process of its own, whose high mark is that of the copy.
    const auto process = ::fork();
    if (process == 0) {
        rusage before{};
        ::getrusage(RUSAGE_SELF, &before);
        const auto error = copy(folder / "source", folder / "copy");
        rusage after{};
        ::getrusage(RUSAGE_SELF, &after);
        const auto kilobytes = after.ru_maxrss - before.ru_maxrss;
        ::_exit(error != 0 ? 255 : static_cast<int>(std::min(kilobytes / 100, 254L)));
    }
    int status = 0;
    QCOMPARE(::waitpid(process, &status, 0), process);
    QVERIFY(WIFEXITED(status));
    QVERIFY2(WEXITSTATUS(status) < 20,
             qPrintable(QStringLiteral("%1 kB").arg(WEXITSTATUS(status) * 100)));
    QVERIFY(test::exists(folder / "copy"));
}

QTEST_GUILESS_MAIN(ParallelCopyTest)
#include "ParallelCopyTest.moc"
