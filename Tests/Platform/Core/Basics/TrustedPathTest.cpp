// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Basics/TrustedPath.h"

#include "Platform/Core/Text/LogText.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <filesystem>
#include <fstream>
#include <string>

// What an account of its own shows. With several accounts and groups the test called
// TrustedPathSession looks.
class TrustedPathTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void aFileOfOursIsTrusted();
    void aFileOfOursIsNotRoots();
    void whatEverybodyCanChangeIsNot();
    void theStickyBitDoesNotHelp();
    void linksAndDotsAreFollowed();
    void linksWithoutEndAreRefused();
    void theFolderOfALinkIsJudged();
    void whatIsMissingOrNoFileIsSaid();
    void theDescriptorIsOfTheFileThatWasJudged();
    void anObjectionIsOneLine();
};

namespace {

const std::string folder = "/Library/trusted";

platform::TrustedFile judged(const std::string &path)
{
    return platform::openTrusted(path, ::getuid());
}

void makeFile(const std::string &path)
{
    std::ofstream(path) << "text";
    QCOMPARE(::chmod(path.c_str(), 0755), 0);
}

void link(const std::string &target, const std::string &path)
{
    QCOMPARE(::symlink(target.c_str(), path.c_str()), 0);
}

void compareRefused(const std::string &path, int error, const std::string &objection)
{
    const auto result = judged(path);
    QVERIFY(!result.file.isOpen());
    QCOMPARE(result.objection, objection);
    QCOMPARE(result.error, error);
}

} // namespace

void TrustedPathTest::init()
{
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder + "/inner");
    makeFile(folder + "/inner/tool");
}

void TrustedPathTest::aFileOfOursIsTrusted()
{
    const auto result = judged(folder + "/inner/tool");
    QVERIFY2(result.file.isOpen(), result.objection.c_str());
    QCOMPARE(result.path, folder + "/inner/tool");
    QCOMPARE(result.error, 0);
    QVERIFY(judged("/bin/true").file.isOpen()); // by way of links of the system's
}

void TrustedPathTest::aFileOfOursIsNotRoots()
{
    const auto result = platform::openTrusted(folder + "/inner/tool");
    QCOMPARE(result.file.isOpen(), ::getuid() == 0);
    if (::getuid() != 0) {
        QVERIFY2(result.objection.ends_with(" belongs to user 1000"), result.objection.c_str());
        QCOMPARE(result.error, EPERM);
    }
}

void TrustedPathTest::whatEverybodyCanChangeIsNot()
{
    for (const auto *part : {"", "/inner", "/inner/tool"}) {
        const auto path = folder + part;
        QCOMPARE(::chmod(path.c_str(), 0757), 0);
        compareRefused(folder + "/inner/tool", EPERM, path + " can be changed by everybody");
        QCOMPARE(::chmod(path.c_str(), 0755), 0);
    }
}

void TrustedPathTest::theStickyBitDoesNotHelp()
{
    QCOMPARE(::chmod(folder.c_str(), 01757), 0);
    compareRefused(folder + "/inner/tool", EPERM, folder + " can be changed by everybody");
}

void TrustedPathTest::linksAndDotsAreFollowed()
{
    link("inner", folder + "/relative");
    link(folder + "//relative/.", folder + "/absolute");
    link("../trusted/absolute/tool", folder + "/up");
    link("/", folder + "/inner/root");
    for (const auto *path : {"/relative/tool", "/absolute/tool", "/up", "//inner/./../inner//tool",
                             "/inner/root/Library/trusted/up", "/../../../../Library/trusted/up",
                             "/relative/../inner/tool"}) {
        const auto result = judged(folder + path);
        QVERIFY2(result.file.isOpen(), result.objection.c_str());
        QCOMPARE(result.path, folder + "/inner/tool");
    }
}

void TrustedPathTest::linksWithoutEndAreRefused()
{
    link("loop", folder + "/loop");
    compareRefused(folder + "/loop", ELOOP, folder + "/loop is a link that cannot be followed");
    link("inner/tool", folder + "/0");
    for (int number = 1; number <= 40; ++number) {
        link(std::to_string(number - 1), folder + '/' + std::to_string(number));
    }
    QVERIFY(judged(folder + "/39").file.isOpen());
    compareRefused(folder + "/40", ELOOP, folder + "/0 is a link that cannot be followed");
}

void TrustedPathTest::theFolderOfALinkIsJudged()
{
    std::filesystem::create_directory(folder + "/open");
    QCOMPARE(::chmod((folder + "/open").c_str(), 0777), 0);
    link(folder + "/inner", folder + "/open/in");
    link("open/in/tool", folder + "/link");
    for (const auto *path : {"/open/in/tool", "/link", "/open/../inner/tool"}) {
        compareRefused(folder + path, EPERM, folder + "/open can be changed by everybody");
    }
}

void TrustedPathTest::whatIsMissingOrNoFileIsSaid()
{
    compareRefused(folder + "/a/b", ENOENT,
                   folder + "/a cannot be reached: No such file or directory");
    compareRefused(folder, EACCES, folder + " is not a regular file");
    compareRefused("/", EACCES, "/ is not a regular file");
    compareRefused(folder + "/inner/tool/x", ENOTDIR, folder + "/inner/tool is not a folder");
    compareRefused(folder + "/inner/tool/", ENOTDIR, folder + "/inner/tool is not a folder");
    compareRefused("", ENOENT, " is not a full path");
    compareRefused("bin/true", ENOENT, "bin/true is not a full path");
    compareRefused(std::string("/bin/true\0x", 11), ENOENT, "/bin/true%00x is not a full path");
    compareRefused('/' + std::string(NAME_MAX + 1, 'x'), ENAMETOOLONG,
                   '/' + std::string(NAME_MAX + 1, 'x') + " cannot be reached: File name too long");
    link("missing", folder + "/link");
    compareRefused(folder + "/link", ENOENT,
                   folder + "/missing cannot be reached: No such file or directory");
    QCOMPARE(::mkfifo((folder + "/fifo").c_str(), 0600), 0);
    compareRefused(folder + "/fifo", EACCES, folder + "/fifo is not a regular file");
    if (::getuid() != 0) {
        QCOMPARE(::chmod((folder + "/inner").c_str(), 0), 0);
        compareRefused(folder + "/inner/tool", EACCES,
                       folder + "/inner/tool cannot be reached: Permission denied");
        QCOMPARE(::chmod((folder + "/inner").c_str(), 0755), 0);
    }
}

void TrustedPathTest::theDescriptorIsOfTheFileThatWasJudged()
{
    link("inner/tool", folder + "/link");
    makeFile(folder + "/other");
    const auto result = judged(folder + "/link");
    QCOMPARE(::unlink((folder + "/link").c_str()), 0);
    link("other", folder + "/link");
    struct stat pinned {};
    struct stat named {};
    QCOMPARE(::fstat(result.file.fd(), &pinned), 0);
    QCOMPARE(::stat((folder + "/inner/tool").c_str(), &named), 0);
    QVERIFY(pinned.st_ino == named.st_ino && pinned.st_dev == named.st_dev);
    QVERIFY((::fcntl(result.file.fd(), F_GETFL) & O_PATH) != 0);
    QVERIFY((::fcntl(result.file.fd(), F_GETFD) & FD_CLOEXEC) != 0);
}

void TrustedPathTest::anObjectionIsOneLine()
{
    const auto path = folder + "/two\nlines\x1b[31m100%";
    compareRefused(path, ENOENT,
                   folder +
                       "/two%0Alines%1B[31m100%25 cannot be reached: No such file or directory");
    QCOMPARE(platform::logText("\x01 ~\x7f\xc3\xbc"), std::string("%01 ~%7F%C3%BC"));
}

TEST_CLASS(TrustedPathTest, QCoreApplication)
#include "TrustedPathTest.moc"
