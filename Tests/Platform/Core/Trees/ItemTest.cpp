// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FileStatus.h"
#include "Platform/Core/Files/FolderEntries.h"
#include "Platform/Core/Folders/Trash.h"
#include "Platform/Core/Trees/CopyItem.h"
#include "Platform/Core/Trees/CreateFolder.h"
#include "Platform/Core/Trees/FolderSize.h"
#include "Platform/Core/Trees/MoveItem.h"
#include "Platform/Core/Trees/RemoveItem.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>

using test::text;

// Items of the file system that are copied, moved, removed, made and looked at.
class ItemTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyNameGoesThroughEveryOperation_data();
    void everyNameGoesThroughEveryOperation();
    void pathsThatLeadNowhereAreErrors_data();
    void pathsThatLeadNowhereAreErrors();

    void removingNeverFollowsALink();
    void removingALinkToAFolderWithASlashBehindItRemovesTheLink();
    void ownFoldersThatForbidItAreRemoved_data();
    void ownFoldersThatForbidItAreRemoved();
    void aFolderThatItselfMayNotBeRemovedKeepsItsContents();
    void treesDeeperThanThereAreDescriptorsAreCopiedMeasuredAndRemoved();

    void aCopyIsTheSameInEverything();
    void aCopyReplacesNothing();
    void hardLinksStayLinksInCopiesMovesAndTheTrash();
    void aCopyInheritsNoAccessList();
    void aFolderIsNotCopiedIntoItself();
    void holesStayHoles();
    void aFileThatTellsNoSizeIsCopiedWhole();
    void theOwnersOfACopyAreTheOriginalsForRootOnly();
    void aMoveReplacesNothing();
    void aFolderIsNotMovedIntoItself();
    void anItemIsMovedToAnotherFileSystem();
    void whatCannotBeRemovedIsNotMovedToAnotherFileSystem();

    void aFolderIsMadeWithThoseAboveItForEverybodyTheMaskLets();
    void aFolderBelowAFileIsNotMade();
    void theNamesInAFolderAreSorted();
    void theSizeOfAFolderIsThatOfAllFilesBelow();
    void theSizeOfALinkIsItsOwn();
    void aLinksDestinationIsAsItIsWritten();
    void whatIsNotLockedIsUnlockedSilently();
    void aFileIsLockedByWhoMay();
};

namespace {

bool isRoot()
{
    return ::geteuid() == 0;
}

struct stat statusOf(const std::string &path)
{
    struct stat status {};
    ::lstat(path.c_str(), &status);
    return status;
}

} // namespace

void ItemTest::everyNameGoesThroughEveryOperation_data()
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < test::oddNames().size(); ++i) {
        QTest::newRow(test::oddNames()[i].why) << static_cast<int>(i);
    }
}

void ItemTest::everyNameGoesThroughEveryOperation()
{
    QFETCH(int, index);
    const auto name = test::oddNames()[static_cast<std::size_t>(index)].name;
    const test::Folder folder;
    const test::Folder other("/var/tmp");
    const auto path = folder / name;
    QVERIFY(!platform::createFolder(text(path + '/' + name)));
    test::writeFile(path + '/' + name + '/' + name);
    test::makeLink(name, path + "/link");
    QCOMPARE(platform::namesInFolder(text(folder.path())), QStringList(text(name)));
    QVERIFY(platform::fileExists(text(path)));
    QVERIFY(platform::isFolder(text(path)));
    QCOMPARE(platform::symbolicLinkDestination(text(path + "/link")), text(name));
    QCOMPARE(platform::sizeOfItem(text(path)), quint64(8 + name.size()));
    QVERIFY(!platform::isImmutable(text(path)));
    QVERIFY(!platform::setImmutable(text(path), false));

    const auto whole = test::tree(path);
    QVERIFY(!platform::copyItem(text(path), text(other / name)));
    QCOMPARE(test::tree(other / name), whole);
    QVERIFY(!platform::removeItem(text(path)));
    QVERIFY(!test::exists(path));
    QVERIFY(!platform::moveItem(text(other / name), text(path)));
    QCOMPARE(test::tree(path), whole);
    QVERIFY(!platform::moveItem(text(path), text(folder / "a")));
    QVERIFY(!platform::moveItem(text(folder / "a"), text(path)));
    QCOMPARE(test::tree(path), whole);
    QCOMPARE(folder.names().size(), 1);
    QCOMPARE(other.names().size(), 0);
}

void ItemTest::pathsThatLeadNowhereAreErrors_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("error");
    QTest::newRow("null") << QString() << ENOENT;
    QTest::newRow("empty") << QStringLiteral("") << ENOENT;
    QTest::newRow("missing") << QStringLiteral("/tmp/missing") << ENOENT;
    QTest::newRow("in a missing folder") << QStringLiteral("/tmp/missing/a") << ENOENT;
    QTest::newRow("below a file") << QStringLiteral("/etc/passwd/a") << ENOTDIR;
    QTest::newRow("root") << QStringLiteral("/") << EINVAL;
    QTest::newRow("this folder") << QStringLiteral(".") << EINVAL;
    QTest::newRow("the folder above") << QStringLiteral("/tmp/..") << EINVAL;
    QTest::newRow("NUL") << QStringLiteral("/tmp/a") + QChar(0) + u'b' << EINVAL;
    QTest::newRow("name too long") << QStringLiteral("/tmp/") + QString(256, u'x') << ENAMETOOLONG;
}

void ItemTest::pathsThatLeadNowhereAreErrors()
{
    QFETCH(QString, path);
    QFETCH(int, error);
    test::writeFile("/tmp/a", "what is before the NUL");
    QCOMPARE(platform::removeItem(path).code(), error);
    QCOMPARE(platform::copyItem(path, QStringLiteral("/tmp/copy")).code(), error);
    QCOMPARE(platform::moveItem(path, QStringLiteral("/tmp/copy")).code(), error);
    QVERIFY(!platform::removeItem(path).localizedDescription().isEmpty());
    QVERIFY(!test::exists("/tmp/copy"));
    QCOMPARE(test::readFile("/tmp/a"), std::string("what is before the NUL"));
    ::unlink("/tmp/a");
}

void ItemTest::removingNeverFollowsALink()
{
    const test::Folder folder;
    test::makeTree(folder / "kept");
    const auto kept = test::tree(folder / "kept");
    test::makeFolder(folder / "removed/below");
    test::makeLink("../kept", folder / "removed/link");
    test::makeLink("../../kept/folder", folder / "removed/below/link");
    test::makeLink(folder / "kept/file", folder / "removed/below/file");
    QVERIFY(!platform::removeItem(text(folder / "removed")));
    test::makeLink("kept", folder / "link");
    QVERIFY(!platform::removeItem(text(folder / "link")));
    QCOMPARE(folder.names(), QStringList(QStringLiteral("kept")));
    QCOMPARE(test::tree(folder / "kept"), kept);
}

void ItemTest::removingALinkToAFolderWithASlashBehindItRemovesTheLink()
{
    const test::Folder folder;
    test::makeFolder(folder / "kept");
    test::makeLink("kept", folder / "link");
    QVERIFY(!platform::removeItem(text(folder / "link//")));
    QCOMPARE(folder.names(), QStringList(QStringLiteral("kept")));
}

void ItemTest::ownFoldersThatForbidItAreRemoved_data()
{
    QTest::addColumn<int>("mode");
    for (const auto mode : {0600, 0500, 0400, 0300, 0200, 0100, 0}) {
        QTest::addRow("mode %03o", static_cast<unsigned>(mode)) << mode;
    }
}

void ItemTest::ownFoldersThatForbidItAreRemoved()
{
    QFETCH(int, mode);
    const test::Folder folder;
    const auto top = folder / "top";
    test::makeFolder(top + "/closed/closed");
    test::writeFile(top + "/closed/closed/file");
    test::writeFile(top + "/closed/file");
    for (const auto *closed : {"/closed/closed", "/closed", ""}) {
        QCOMPARE(::chmod((top + closed).c_str(), static_cast<mode_t>(mode)), 0);
    }
    const auto error = platform::removeItem(text(top));
    QVERIFY2(!error, qUtf8Printable(error.localizedDescription()));
    QVERIFY(folder.names().isEmpty());
}

void ItemTest::aFolderThatItselfMayNotBeRemovedKeepsItsContents()
{
    if (isRoot()) {
        QSKIP("root may");
    }
    const test::Folder folder;
    test::makeFolder(folder / "closed/tree");
    test::writeFile(folder / "closed/tree/file");
    ::chmod((folder / "closed").c_str(), 0500);
    QCOMPARE(platform::removeItem(text(folder / "closed/tree")).code(), EACCES);
    QVERIFY(test::exists(folder / "closed/tree/file"));
}

void ItemTest::treesDeeperThanThereAreDescriptorsAreCopiedMeasuredAndRemoved()
{
    constexpr int depth = 3000; // also more than a path can have
    const std::string name(10, 'd');
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    const auto before = limit.rlim_cur;
    limit.rlim_cur = 64;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    const test::Folder folder;
    auto current = ::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY);
    ::mkdirat(current, "top", 0700);
    auto below = ::openat(current, "top", O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < depth; ++i) {
        ::close(current);
        current = below;
        QCOMPARE(::mkdirat(current, name.c_str(), 0700), 0);
        below = ::openat(current, name.c_str(), O_RDONLY | O_DIRECTORY);
    }
    ::close(current);
    const auto file = ::openat(below, "file", O_CREAT | O_WRONLY, 0600);
    QCOMPARE(::write(file, "bottom", 6), ssize_t(6));
    ::close(file);
    ::close(below);

    QCOMPARE(platform::sizeOfItem(text(folder / "top")), quint64(6));
    const auto copied = platform::copyItem(text(folder / "top"), text(folder / "copy"));
    const auto size = platform::sizeOfItem(text(folder / "copy"));
    const auto removed = platform::removeItem(text(folder / "top"));
    const auto copyRemoved = platform::removeItem(text(folder / "copy"));
    limit.rlim_cur = before;
    ::setrlimit(RLIMIT_NOFILE, &limit);
    QVERIFY2(!copied, qUtf8Printable(copied.reason()));
    QCOMPARE(size, quint64(6));
    QVERIFY2(!removed, qUtf8Printable(removed.reason()));
    QVERIFY2(!copyRemoved, qUtf8Printable(copyRemoved.reason()));
    QVERIFY(folder.names().isEmpty());
}

void ItemTest::aCopyIsTheSameInEverything()
{
    const test::Folder folder;
    const test::Folder other("/var/tmp");
    const auto original = folder / "tree";
    test::makeTree(original);
    QCOMPARE(::setxattr((original + "/large").c_str(), "user.colour", "red", 3, 0), 0);
    QCOMPARE(::setxattr((original + "/folder").c_str(), "user.empty", "", 0, 0), 0);
    for (const auto &copy : {folder / "copy", other / "copy"}) {
        QVERIFY(!platform::copyItem(text(original), text(copy)));
        QCOMPARE(test::tree(copy), test::tree(original));
        std::array<char, 8> value{};
        QCOMPARE(::getxattr((copy + "/large").c_str(), "user.colour", value.data(), value.size()),
                 ssize_t(3));
        QCOMPARE(::getxattr((copy + "/folder").c_str(), "user.empty", nullptr, 0), ssize_t(0));
        for (const auto *item : {"", "/folder", "/folder/script", "/link"}) {
            QCOMPARE(statusOf(copy + item).st_mtim.tv_sec,
                     statusOf(original + item).st_mtim.tv_sec);
            QCOMPARE(statusOf(copy + item).st_mtim.tv_nsec,
                     statusOf(original + item).st_mtim.tv_nsec);
        }
    }
    QCOMPARE(folder.names().size(), 2);
    QCOMPARE(other.names().size(), 1);
}

void ItemTest::aCopyReplacesNothing()
{
    const test::Folder folder;
    test::writeFile(folder / "a", "a");
    test::writeFile(folder / "b", "b");
    test::makeFolder(folder / "folder");
    test::makeLink("nowhere", folder / "link");
    for (const auto *target : {"b", "folder", "link", "a"}) {
        QCOMPARE(platform::copyItem(text(folder / "a"), text(folder / target)).code(), EEXIST);
        QCOMPARE(platform::copyItem(text(folder / "folder"), text(folder / target)).code(), EEXIST);
    }
    QCOMPARE(test::readFile(folder / "b"), std::string("b"));
    QCOMPARE(folder.names().size(), 4);
    QCOMPARE(test::tree(folder / "folder").size(), 1);
}

void ItemTest::hardLinksStayLinksInCopiesMovesAndTheTrash()
{
    const test::Folder folder;
    const test::Folder other("/var/tmp");
    test::makeFolder(folder / "tree/below");
    test::writeFile(folder / "tree/file");
    QCOMPARE(::link((folder / "tree/file").c_str(), (folder / "tree/below/file").c_str()), 0);
    const auto areLinked = [](const std::string &tree) {
        return statusOf(tree + "/file").st_ino == statusOf(tree + "/below/file").st_ino &&
               statusOf(tree + "/file").st_nlink == 2;
    };
    QVERIFY(!platform::copyItem(text(folder / "tree"), text(folder / "copy")));
    QVERIFY(areLinked(folder / "copy"));
    QVERIFY(!platform::moveItem(text(folder / "tree"), text(other / "tree")));
    QVERIFY(areLinked(other / "tree"));
    QVERIFY(!platform::recycleItem(text(other / "tree"), text(folder / "trash")));
    QVERIFY(areLinked(folder / "trash/tree"));
}

void ItemTest::aCopyInheritsNoAccessList()
{
    const test::Folder folder;
    test::makeFolder(folder / "tree/below");
    test::writeFile(folder / "tree/below/file");
    test::makeFolder(folder / "to");
    const std::string everybody("\x02\0\0\0\x01\0\x07\0\xff\xff\xff\xff\x04\0\x07\0\xff\xff\xff\xff"
                                "\x20\0\x07\0\xff\xff\xff\xff",
                                28);
    const auto *handedDown = "system.posix_acl_default";
    QCOMPARE(::setxattr((folder / "to").c_str(), handedDown, everybody.data(), everybody.size(), 0),
             0);
    QVERIFY(!platform::copyItem(text(folder / "tree"), text(folder / "to/tree")));
    QVERIFY(!platform::copyItem(text(folder / "tree/below/file"), text(folder / "to/file")));
    QCOMPARE(::getxattr((folder / "to/tree").c_str(), handedDown, nullptr, 0), ssize_t(-1));
    QCOMPARE(::getxattr((folder / "to/tree/below").c_str(), handedDown, nullptr, 0), ssize_t(-1));
    for (const auto *path : {"to/file", "to/tree", "to/tree/below/file"}) {
        QCOMPARE(::getxattr((folder / path).c_str(), "system.posix_acl_access", nullptr, 0),
                 ssize_t(-1));
        QCOMPARE(errno, ENODATA);
    }
    // Nor is one lost that the original has.
    QCOMPARE(::setxattr((folder / "tree/below").c_str(), handedDown, everybody.data(),
                        everybody.size(), 0),
             0);
    QVERIFY(!platform::copyItem(text(folder / "tree"), text(folder / "copy")));
    QCOMPARE(::getxattr((folder / "copy/below").c_str(), handedDown, nullptr, 0), ssize_t(28));
}

void ItemTest::aFolderIsNotCopiedIntoItself()
{
    const test::Folder folder;
    test::makeFolder(folder / "a/b");
    QCOMPARE(platform::copyItem(text(folder / "a"), text(folder / "a/copy")).code(), EINVAL);
    QCOMPARE(platform::copyItem(text(folder / "a"), text(folder / "a/b/copy")).code(), EINVAL);
    QCOMPARE(test::tree(folder / "a").size(), 2);
}

void ItemTest::holesStayHoles()
{
    const test::Folder folder;
    const auto path = folder / "sparse";
    test::writeFile(path, "start");
    QCOMPARE(::truncate(path.c_str(), 50000000), 0);
    const auto file = ::open(path.c_str(), O_WRONLY);
    QCOMPARE(::pwrite(file, "middle", 6, 20000000), ssize_t(6));
    ::close(file);
    const test::Folder other("/var/tmp");
    for (const auto &copy : {folder / "copy", other / "copy"}) {
        QVERIFY(!platform::copyItem(text(path), text(copy)));
        QCOMPARE(test::tree(copy), test::tree(path));
        QVERIFY(statusOf(copy).st_blocks <= statusOf(path).st_blocks);
    }
}

void ItemTest::aFileThatTellsNoSizeIsCopiedWhole()
{
    const test::Folder folder;
    QVERIFY(!platform::copyItem(QStringLiteral("/proc/self/cmdline"), text(folder / "copy")));
    QCOMPARE(test::readFile(folder / "copy").substr(0, 1), std::string("/"));
}

void ItemTest::theOwnersOfACopyAreTheOriginalsForRootOnly()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    ::chmod((folder / "file").c_str(), 04755);
    QVERIFY(!platform::copyItem(text(folder / "file"), text(folder / "copy")));
    QCOMPARE(statusOf(folder / "copy").st_mode & 07777U, 04755U);
    // Somebody else's rights are not handed on.
    const auto other = std::string("/usr/bin/passwd");
    QVERIFY((statusOf(other).st_mode & S_ISUID) != 0);
    QVERIFY(!platform::copyItem(text(other), text(folder / "passwd")));
    const auto copy = statusOf(folder / "passwd");
    QVERIFY(copy.st_uid == statusOf(other).st_uid || (copy.st_mode & S_ISUID) == 0);
    if (!isRoot()) {
        QCOMPARE(copy.st_uid, ::geteuid());
    }
}

void ItemTest::aMoveReplacesNothing()
{
    const test::Folder folder;
    test::writeFile(folder / "a", "a");
    test::writeFile(folder / "b", "b");
    test::makeFolder(folder / "folder");
    for (const auto *target : {"b", "folder", "a"}) {
        QCOMPARE(platform::moveItem(text(folder / "a"), text(folder / target)).code(), EEXIST);
    }
    QCOMPARE(test::readFile(folder / "a"), std::string("a"));
    QCOMPARE(test::readFile(folder / "b"), std::string("b"));
    const test::Folder other("/var/tmp");
    test::writeFile(other / "a", "other");
    QCOMPARE(platform::moveItem(text(folder / "a"), text(other / "a")).code(), EEXIST);
    QCOMPARE(test::readFile(other / "a"), std::string("other"));
}

void ItemTest::aFolderIsNotMovedIntoItself()
{
    const test::Folder folder;
    test::makeFolder(folder / "a/b");
    QCOMPARE(platform::moveItem(text(folder / "a"), text(folder / "a/b/c")).code(), EINVAL);
    QVERIFY(test::exists(folder / "a/b"));
}

void ItemTest::anItemIsMovedToAnotherFileSystem()
{
    const test::Folder folder;
    const test::Folder other("/var/tmp");
    QVERIFY(statusOf(folder.path()).st_dev != statusOf(other.path()).st_dev);
    test::makeTree(folder / "tree");
    ::chmod((folder / "tree/closed").c_str(), 0700);
    const auto before = test::tree(folder / "tree");
    QVERIFY(!platform::moveItem(text(folder / "tree"), text(other / "tree")));
    QCOMPARE(test::tree(other / "tree"), before);
    QVERIFY(folder.names().isEmpty());
}

void ItemTest::whatCannotBeRemovedIsNotMovedToAnotherFileSystem()
{
    if (isRoot()) {
        QSKIP("root can");
    }
    const test::Folder folder;
    const test::Folder other("/var/tmp");
    test::makeTree(folder / "closed/tree");
    ::chmod((folder / "closed").c_str(), 0500);
    const auto before = test::tree(folder / "closed");
    const auto error = platform::moveItem(text(folder / "closed/tree"), text(other / "tree"));
    QCOMPARE(error.code(), EACCES);
    QCOMPARE(test::tree(folder / "closed"), before);
    QVERIFY(other.names().isEmpty());
}

void ItemTest::aFolderIsMadeWithThoseAboveItForEverybodyTheMaskLets()
{
    const test::Folder folder;
    const auto mask = ::umask(027);
    const auto error = platform::createFolder(text(folder / "a//b/c/"));
    ::umask(mask);
    QVERIFY(!error);
    for (const auto *name : {"a", "a/b", "a/b/c"}) {
        QCOMPARE(statusOf(folder / name).st_mode, mode_t(S_IFDIR | 0750U));
    }
    QVERIFY(!platform::createFolder(text(folder / "a")));
    test::makeLink("a", folder / "link");
    QVERIFY(!platform::createFolder(text(folder / "link/b/d")));
    QVERIFY(test::exists(folder / "a/b/d"));
    QVERIFY(!platform::createFolder(QStringLiteral("/")));
}

void ItemTest::aFolderBelowAFileIsNotMade()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    const auto error = platform::createFolder(text(folder / "file/a/b"));
    QVERIFY(error);
    QCOMPARE(platform::createFolder(text(folder / "file")).code(), EEXIST);
    QCOMPARE(platform::createFolder(QString()).code(), ENOENT);
    QCOMPARE(platform::createFolder(text(folder / "a") + QChar(0)).code(), EINVAL);
    QCOMPARE(folder.names().size(), 1);
}

void ItemTest::theNamesInAFolderAreSorted()
{
    const test::Folder folder;
    for (const auto *name : {"b", "B", ".a", "\xFF", "10", "9", "\xC3\xA4"}) {
        test::writeFile(folder / name);
    }
    QStringList expected;
    for (const auto *name : {".a", "10", "9", "B", "b", "\xC3\xA4", "\xFF"}) {
        expected << text(name);
    }
    QCOMPARE(platform::namesInFolder(text(folder.path())), expected);
    test::makeLink(folder.path(), "/tmp/link");
    QCOMPARE(platform::namesInFolder(QStringLiteral("/tmp/link")), expected);
    ::unlink("/tmp/link");
    QVERIFY(platform::namesInFolder(text(folder / "b")).isEmpty());
    QVERIFY(platform::namesInFolder(QString()).isEmpty());
    QVERIFY(platform::namesInFolder(QStringLiteral("/tmp") + QChar(0)).isEmpty());
}

void ItemTest::theSizeOfAFolderIsThatOfAllFilesBelow()
{
    const test::Folder folder;
    quint64 expected = 0;
    for (int i = 0; i < 40; ++i) {
        const auto below = folder / ("folder" + std::to_string(i % 8)) + "/a/b" + std::to_string(i);
        test::makeFolder(below);
        for (int size = 0; size < 50; ++size) {
            test::writeFile(below + '/' + std::to_string(size),
                            std::string(static_cast<std::size_t>(size) * 10U, 's'));
            expected += static_cast<quint64>(size) * 10U;
        }
    }
    QCOMPARE(platform::sizeOfItem(text(folder.path())), expected);
    ::truncate((folder / "folder0/a/b0/1").c_str(), 1LL << 40U);
    QCOMPARE(platform::sizeOfItem(text(folder.path())), expected - 10 + (1ULL << 40U));
    test::makeFolder(folder / "unreadable");
    test::writeFile(folder / "unreadable/file", "12345");
    ::chmod((folder / "unreadable").c_str(), 0);
    QCOMPARE(platform::sizeOfItem(text(folder / "unreadable")), quint64(isRoot() ? 5 : 0));
    QCOMPARE(platform::sizeOfItem(text(folder / "missing")), quint64(0));
    QCOMPARE(platform::sizeOfItem(QString()), quint64(0));
}

void ItemTest::theSizeOfALinkIsItsOwn()
{
    const test::Folder folder;
    test::makeFolder(folder / "folder");
    test::writeFile(folder / "folder/file", "0123456789");
    test::makeLink("folder/file", folder / "to file");
    test::makeLink("folder", folder / "to folder");
    test::makeLink("..", folder / "folder/up"); // would go round for ever
    QCOMPARE(platform::sizeOfItem(text(folder / "to file")), quint64(11));
    QCOMPARE(platform::sizeOfItem(text(folder / "folder")), quint64(12));
    QCOMPARE(platform::sizeOfItem(text(folder / "to folder")), quint64(12));
    QCOMPARE(platform::sizeOfItem(text(folder.path())), quint64(12 + 11 + 6));
}

void ItemTest::aLinksDestinationIsAsItIsWritten()
{
    const test::Folder folder;
    test::makeLink("../\xFF//a", folder / "link");
    QCOMPARE(platform::symbolicLinkDestination(text(folder / "link")), text("../\xFF//a"));
    test::writeFile(folder / "file");
    QVERIFY(platform::symbolicLinkDestination(text(folder / "file")).isNull());
    QVERIFY(platform::symbolicLinkDestination(QString()).isNull());
    QVERIFY(platform::itemExists(text(folder / "link")));
    QVERIFY(!platform::fileExists(text(folder / "link")));
}

void ItemTest::whatIsNotLockedIsUnlockedSilently()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    test::makeLink("nowhere", folder / "link");
    ::mkfifo((folder / "pipe").c_str(), 0600); // opening it would wait for ever
    for (const auto *name : {"file", "link", "pipe"}) {
        QVERIFY(!platform::setImmutable(text(folder / name), false));
        QVERIFY(!platform::isImmutable(text(folder / name)));
    }
    QVERIFY(!platform::setImmutable(QStringLiteral("/proc/version"), false)); // knows no flags
    QCOMPARE(platform::setImmutable(text(folder / "missing"), false).code(), ENOENT);
}

void ItemTest::aFileIsLockedByWhoMay()
{
    const test::Folder folder;
    const auto path = folder / "file";
    test::writeFile(path, "old");
    if (platform::setImmutable(text(path), true)) {
        // In a sandbox not even root may.
        QVERIFY(!platform::isImmutable(text(path)));
        return;
    }
    QVERIFY(platform::isImmutable(text(path)));
    QVERIFY(platform::removeItem(text(path)));
    QVERIFY(!platform::setImmutable(text(path), false));
    QVERIFY(!platform::isImmutable(text(path)));
    QVERIFY(!platform::removeItem(text(path)));
}

TEST_CLASS(ItemTest, QCoreApplication)
#include "ItemTest.moc"
