// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Trees/UnfinishedItem.h"

#include "Platform/Core/Basics/Descriptor.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

using platform::Descriptor;
using platform::UnfinishedItem;

namespace {

struct stat statusOf(const std::string &path)
{
    struct stat status {};
    ::lstat(path.c_str(), &status);
    return status;
}

Descriptor open(const test::Folder &folder)
{
    return Descriptor(::open(folder.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

// Another process that makes an item and is in the midst of it when this is constructed.
class Maker {
public:
    explicit Maker(const test::Folder &folder)
    {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            return;
        }
        m_process = ::fork();
        if (m_process == 0) {
            const auto around = open(folder);
            UnfinishedItem item;
            if (item.create(around.fd()) != 0 ||
                ::mkdirat(item.folder(), UnfinishedItem::name, 0500) != 0 ||
                ::write(ends[1], "!", 1) != 1) {
                ::_exit(1);
            }
            for (;;) {
                ::pause();
            }
        }
        ::close(ends[1]);
        char word = 0;
        m_isMaking = ::read(ends[0], &word, 1) == 1;
        ::close(ends[0]);
    }
    ~Maker() { kill(); }
    Maker(const Maker &) = delete;
    Maker &operator=(const Maker &) = delete;

    bool isMaking() const { return m_isMaking; }

    void kill()
    {
        if (m_process > 0) {
            ::kill(m_process, SIGKILL);
            ::waitpid(m_process, nullptr, 0);
            m_process = 0;
        }
    }

private:
    pid_t m_process = 0;
    bool m_isMaking = false;
};

} // namespace

// Where items are made before they are whole.
class UnfinishedItemTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theItemGetsItsNameWhenItIsWhole();
    void aClosedFolderKeepsItsModeWhenItGetsItsName();
    void nothingIsReplacedAndNothingIsLeft();
    void nobodyElseGetsIn();
    void whatAKilledMakerHasLeftIsClearedByTheNext();
    void whatALivingMakerMakesStays();
    void whatOnlyHasSuchANameStays();
};

void UnfinishedItemTest::theItemGetsItsNameWhenItIsWhole()
{
    const test::Folder folder;
    const auto around = open(folder);
    UnfinishedItem item;
    QCOMPARE(item.create(around.fd()), 0);
    QCOMPARE(::symlinkat("target", item.folder(), UnfinishedItem::name), 0);
    QCOMPARE(folder.names().size(), 1);
    QVERIFY(folder.names().first().startsWith(QStringLiteral(".unfinished-")));
    QCOMPARE(item.publish("whole"), 0);
    QCOMPARE(folder.names(), QStringList(QStringLiteral("whole")));
    QVERIFY(S_ISLNK(statusOf(folder / "whole").st_mode));
}

void UnfinishedItemTest::aClosedFolderKeepsItsModeWhenItGetsItsName()
{
    const test::Folder folder;
    const auto around = open(folder);
    UnfinishedItem item;
    QCOMPARE(item.create(around.fd()), 0);
    QCOMPARE(::mkdirat(item.folder(), UnfinishedItem::name, 0500), 0);
    QCOMPARE(item.publish("closed"), 0);
    QCOMPARE(statusOf(folder / "closed").st_mode & 07777U, 0500U);
}

void UnfinishedItemTest::nothingIsReplacedAndNothingIsLeft()
{
    const test::Folder folder;
    test::writeFile(folder / "taken", "old");
    const auto around = open(folder);
    {
        UnfinishedItem item;
        QCOMPARE(item.create(around.fd()), 0);
        QCOMPARE(::mkdirat(item.folder(), UnfinishedItem::name, 0), 0);
        QCOMPARE(item.publish("taken"), EEXIST);
    }
    QCOMPARE(folder.names(), QStringList(QStringLiteral("taken")));
    QCOMPARE(test::readFile(folder / "taken"), std::string("old"));
}

void UnfinishedItemTest::nobodyElseGetsIn()
{
    const test::Folder folder;
    // Everybody may write here, and what is made here is said to be for everybody.
    ::chmod(folder.path().c_str(), 0777);
    const std::string everybody("\x02\0\0\0\x01\0\x07\0\xff\xff\xff\xff\x04\0\x07\0\xff\xff\xff\xff"
                                "\x20\0\x07\0\xff\xff\xff\xff",
                                28);
    QCOMPARE(::setxattr(folder.path().c_str(), "system.posix_acl_default", everybody.data(),
                        everybody.size(), 0),
             0);
    const auto around = open(folder);
    UnfinishedItem item;
    QCOMPARE(item.create(around.fd()), 0);
    struct stat status {};
    QCOMPARE(::fstat(item.folder(), &status), 0);
    QCOMPARE(status.st_mode & 0777U, 0700U);
    QCOMPARE(status.st_uid, ::geteuid());
    QCOMPARE(::fgetxattr(item.folder(), "system.posix_acl_default", nullptr, 0), ssize_t(-1));
    QCOMPARE(errno, ENODATA);
}

void UnfinishedItemTest::whatAKilledMakerHasLeftIsClearedByTheNext()
{
    const test::Folder folder;
    for (int i = 0; i < 3; ++i) {
        Maker maker(folder);
        QVERIFY(maker.isMaking());
        maker.kill();
        QCOMPARE(folder.names().size(), 1);
    }
    const auto around = open(folder);
    {
        UnfinishedItem item;
        QCOMPARE(item.create(around.fd()), 0);
        QCOMPARE(folder.names().size(), 1);
    }
    QVERIFY(folder.names().isEmpty());
}

void UnfinishedItemTest::whatALivingMakerMakesStays()
{
    const test::Folder folder;
    Maker maker(folder);
    QVERIFY(maker.isMaking());
    const auto names = folder.names();
    const auto around = open(folder);
    platform::clearUnfinishedItems(around.fd());
    QCOMPARE(folder.names(), names);
    QVERIFY(test::exists(folder / names.first().toStdString() + "/item"));
    maker.kill();
    platform::clearUnfinishedItems(around.fd());
    QVERIFY(folder.names().isEmpty());
}

// Planted by others, or made by somebody who likes such names.
void UnfinishedItemTest::whatOnlyHasSuchANameStays()
{
    const test::Folder elsewhere;
    test::writeFile(elsewhere / "file", "kept");
    ::chmod(elsewhere.path().c_str(), 01700);
    const test::Folder folder;
    test::makeLink(elsewhere.path(), folder / ".unfinished-link");
    test::makeFolder(folder / ".unfinished-folder/below");
    ::chmod((folder / ".unfinished-folder").c_str(), 0700);
    test::writeFile(folder / ".unfinished-file", "kept");
    ::chmod((folder / ".unfinished-file").c_str(), 01700);
    const auto around = open(folder);
    platform::clearUnfinishedItems(around.fd());
    QCOMPARE(folder.names().size(), 3);
    QVERIFY(test::exists(folder / ".unfinished-folder/below"));
    QCOMPARE(test::readFile(folder / ".unfinished-file"), std::string("kept"));
    QCOMPARE(test::readFile(elsewhere / "file"), std::string("kept"));
}

TEST_CLASS(UnfinishedItemTest, QCoreApplication)
#include "UnfinishedItemTest.moc"
