// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/CopyItem.h"
#include "Platform/Core/Trees/CopyProgress.h"
#include "Platform/Core/Trees/FolderSize.h"
#include "Platform/Core/Trees/RemoveItem.h"
#include "Platform/Core/Trees/TransferRate.h"
#include "Tests/Support/CopySource.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;
using platform::CopyProgress;
using test::text;

namespace {

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
    QVERIFY2(WEXITSTATUS(status) < 30,
             qPrintable(QStringLiteral("%1 kB").arg(WEXITSTATUS(status) * 100)));
    QVERIFY(test::exists(folder / "copy"));
}

TEST_CLASS(ParallelCopyTest, QCoreApplication)
#include "ParallelCopyTest.moc"
