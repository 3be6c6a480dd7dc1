// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/FileName.h"
#include "Shared/Authorization/ZQAuthorization.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Tests/Support/ConsoleSeat.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

// For root the tools are run directly. Bob sits at the console.
namespace {

constexpr int patience = 30000; // milliseconds

QString text(const char *characters)
{
    return QString::fromUtf8(characters);
}

ZQAuthorization &authorization()
{
    return ZQAuthorization::sharedController();
}

bool exists(const QString &path)
{
    struct stat status {};
    return ::lstat(platform::fileNameBytes(path).constData(), &status) == 0;
}

void makeFile(const QString &path)
{
    QDir().mkpath(path.left(path.lastIndexOf(u'/')));
    const auto bytes = platform::fileNameBytes(path);
    std::unique_ptr<FILE, int (*)(FILE *)> file(std::fopen(bytes.constData(), "we"), &std::fclose);
    QVERIFY(file != nullptr);
    QVERIFY(std::fputs("text", file.get()) >= 0);
}

QStringList entries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

const QStringList &oddNames()
{
    static const QStringList names{text("-rf"),
                                   text("--help"),
                                   text("it's \"quoted\""),
                                   text("two\nlines"),
                                   text("100% %s %n %@"),
                                   text("*"),
                                   text("$(id)"),
                                   text(" "),
                                   text("größe"),
                                   platform::fileNameFromBytes("not \xFF\xFE UTF-8")};
    return names;
}

} // namespace

class ZQAuthorizationAsRootTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void rootIsAuthorizedAndNeverHasAReference();
    void aTaskIsWaitedForOrNot();
    void theExitStatusIsNotLookedAt();
    void aFileIsRemovedWithAllThatIsInIt();
    void aFileIsMovedAndCopied();
    void foldersAreCreatedWithThoseAboveThem();
    void theTrashIsTheConsoleUsers();
    void theDesktopsTrashGetsARecordToRestoreFrom();
    void aNameTakenInTheTrashGetsTheTime_data();
    void aNameTakenInTheTrashGetsTheTime();
    void aLinkThatLeadsNowhereTakesANameInTheTrash();
    void deletingOnTheRootAccountRemovesTheNameInTheTrashAndLeavesTheFile();
    void contentsAreTrashedHiddenOnesToo();
    void contentsAreDeletedOnTheRootAccount();
    void contentsAreMovedAndAllAreTried();
    void contentsMovedNowhereAreNotMoved();
    void oddNamesAreNamesInEveryOperation();
    void aRelativePathWithADashIsNoOption();

private:
    test::ConsoleSeat m_seat;
    QString m_trash = text("/home/bob/.Trash");
};

void ZQAuthorizationAsRootTest::initTestCase()
{
    m_seat.activate(text("bob"), 1001);
    QCOMPARE(ZQLocalPaths::trashDirectory(), m_trash);
}

void ZQAuthorizationAsRootTest::init()
{
    std::filesystem::remove_all("/Library/t"); // takes names of any bytes
    std::filesystem::remove_all("/home/bob/.Trash");
    std::filesystem::remove_all("/home/bob/.local");
    QVERIFY(QDir().mkpath(text("/Library/t")));
}

void ZQAuthorizationAsRootTest::rootIsAuthorizedAndNeverHasAReference()
{
    QVERIFY(authorization().isAuthorized());
    QVERIFY(authorization().authStart());
    QVERIFY(authorization().authStartWithUser(text("x"), text("y")));
    QVERIFY(authorization().authRef() == nullptr);
    authorization().authEnd();
    QVERIFY(authorization().isAuthorized());
}

void ZQAuthorizationAsRootTest::aTaskIsWaitedForOrNot()
{
    QElapsedTimer time;
    time.start();
    QCOMPARE(authorization().authExecTask(text("/bin/sleep"), {text("1")}, Async::No), 0);
    QVERIFY(time.elapsed() >= 1000);
    QCOMPARE(authorization().authExecTask(text("/bin/sleep"), {text("infinity")}), 0);
}

void ZQAuthorizationAsRootTest::theExitStatusIsNotLookedAt()
{
    QCOMPARE(authorization().authExecTask(text("/bin/false"), {}, Async::No), 0);
}

void ZQAuthorizationAsRootTest::aFileIsRemovedWithAllThatIsInIt()
{
    makeFile(text("/Library/t/a/b/c"));
    QVERIFY(authorization().authRemoveFile(text("/Library/t/a")));
    QTRY_VERIFY_WITH_TIMEOUT(!exists(text("/Library/t/a")), patience);
    QVERIFY(authorization().authRemoveFile(text("/Library/t/missing"))); // was started
}

void ZQAuthorizationAsRootTest::aFileIsMovedAndCopied()
{
    makeFile(text("/Library/t/a"));
    QVERIFY(authorization().authCopyFile(text("/Library/t/a"), text("/Library/t/b")));
    QTRY_VERIFY_WITH_TIMEOUT(exists(text("/Library/t/b")), patience);
    QVERIFY(authorization().authMoveFile(text("/Library/t/b"), text("/Library/t/c")));
    QTRY_COMPARE_WITH_TIMEOUT(entries(text("/Library/t")), QStringList({text("a"), text("c")}),
                              patience);
}

void ZQAuthorizationAsRootTest::foldersAreCreatedWithThoseAboveThem()
{
    QVERIFY(authorization().authCreateDir(text("/Library/t/x/y/z")));
    QTRY_VERIFY_WITH_TIMEOUT(exists(text("/Library/t/x/y/z")), patience);
}

void ZQAuthorizationAsRootTest::theTrashIsTheConsoleUsers()
{
    makeFile(text("/Library/t/notes.txt"));
    QVERIFY(authorization().authTrashFile(text("/Library/t/notes.txt")));
    QTRY_COMPARE_WITH_TIMEOUT(entries(m_trash), QStringList{text("notes.txt")}, patience);
    QVERIFY(!exists(text("/Library/t/notes.txt")));
}

void ZQAuthorizationAsRootTest::theDesktopsTrashGetsARecordToRestoreFrom()
{
    makeFile(text("/Library/t/my notes.txt"));
    QVERIFY(authorization().authTrashFile(text("/Library/t/my notes.txt")));
    const auto trash = text("/home/bob/.local/share/Trash/");
    QTRY_VERIFY_WITH_TIMEOUT(exists(trash + text("files/my notes.txt")), patience);
    QFile record(trash + text("info/my notes.txt.trashinfo"));
    QVERIFY(record.open(QIODevice::ReadOnly));
    QVERIFY(record.readAll().startsWith("[Trash Info]\nPath=/Library/t/my%20notes.txt\n"));
}

void ZQAuthorizationAsRootTest::aNameTakenInTheTrashGetsTheTime_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("pattern");
    QTest::newRow("extension") << text("notes.txt") << text("^notes_\\d{14}\\.txt$");
    QTest::newRow("none") << text("report") << text("^report_\\d{14}\\.$");
    QTest::newRow("two") << text("a.tar.gz") << text("^a\\.tar_\\d{14}\\.gz$");
    QTest::newRow("hidden") << text(".profile") << text("^\\.profile_\\d{14}\\.$");
}

void ZQAuthorizationAsRootTest::aNameTakenInTheTrashGetsTheTime()
{
    QFETCH(const QString, name);
    QFETCH(const QString, pattern);
    makeFile(m_trash + u'/' + name);
    makeFile(text("/Library/t/") + name);
    const auto before = QDateTime::currentDateTime().toString(text("yyyyMMddHHmmss"));
    QVERIFY(authorization().authTrashFile(text("/Library/t/") + name));
    const auto after = QDateTime::currentDateTime().toString(text("yyyyMMddHHmmss"));
    QTRY_COMPARE_WITH_TIMEOUT(entries(m_trash).size(), 2, patience);
    QTRY_VERIFY_WITH_TIMEOUT(!exists(text("/Library/t/") + name), patience);
    auto names = entries(m_trash);
    QVERIFY(names.removeOne(name));
    QVERIFY2(QRegularExpression(pattern).match(names.first()).hasMatch(),
             qPrintable(names.first()));
    const auto time = QRegularExpression(text("_(\\d{14})\\.")).match(names.first()).captured(1);
    QVERIFY(before <= time && time <= after);
}

void ZQAuthorizationAsRootTest::aLinkThatLeadsNowhereTakesANameInTheTrash()
{
    QVERIFY(QDir().mkpath(m_trash));
    QCOMPARE(::symlink("/nowhere", "/home/bob/.Trash/notes.txt"), 0);
    makeFile(text("/Library/t/notes.txt"));
    QVERIFY(authorization().authTrashFile(text("/Library/t/notes.txt")));
    QTRY_VERIFY_WITH_TIMEOUT(!exists(text("/Library/t/notes.txt")), patience);
    QVERIFY(QFileInfo(m_trash + text("/notes.txt")).isSymLink());
}

void ZQAuthorizationAsRootTest::deletingOnTheRootAccountRemovesTheNameInTheTrashAndLeavesTheFile()
{
    makeFile(text("/Library/t/notes.txt"));
    QVERIFY(authorization().authTrashFile(text("/Library/t/notes.txt"), DeleteOnRootAccount::Yes));
    QTest::qWait(300);
    QVERIFY(exists(text("/Library/t/notes.txt")));
    QCOMPARE(entries(m_trash), QStringList());
    // Where the name is taken, it is the one with the time that is removed, and that is not there.
    makeFile(m_trash + text("/notes.txt"));
    QVERIFY(authorization().authTrashFile(text("/Library/t/notes.txt"), DeleteOnRootAccount::Yes));
    QTest::qWait(300);
    QVERIFY(exists(text("/Library/t/notes.txt")));
    QCOMPARE(entries(m_trash), QStringList{text("notes.txt")});
}

void ZQAuthorizationAsRootTest::contentsAreTrashedHiddenOnesToo()
{
    for (const auto *name : {"a", ".hidden", "folder/inside"}) {
        makeFile(text("/Library/t/") + text(name));
    }
    QVERIFY(authorization().authTrashFolderContents(text("/Library/t")));
    QTRY_COMPARE_WITH_TIMEOUT(entries(m_trash),
                              QStringList({text(".hidden"), text("a"), text("folder")}), patience);
    QTRY_COMPARE_WITH_TIMEOUT(entries(text("/Library/t")), QStringList(), patience);
    QVERIFY(exists(m_trash + text("/folder/inside")));
}

void ZQAuthorizationAsRootTest::contentsAreDeletedOnTheRootAccount()
{
    for (const auto *name : {"a", ".hidden", "folder/inside"}) {
        makeFile(text("/Library/t/") + text(name));
    }
    QVERIFY(authorization().authTrashFolderContents(text("/Library/t"), DeleteOnRootAccount::Yes));
    QTRY_COMPARE_WITH_TIMEOUT(entries(text("/Library/t")), QStringList(), patience);
    QCOMPARE(entries(m_trash), QStringList());
}

void ZQAuthorizationAsRootTest::contentsAreMovedAndAllAreTried()
{
    for (const auto *name : {"from/a", "from/.hidden", "from/c", "to/x"}) {
        makeFile(text("/Library/t/") + text(name));
    }
    QCOMPARE(::symlink("/nowhere", "/Library/t/from/b"), 0); // counts as missing, so it fails
    QVERIFY(
        !authorization().authMoveFolderContents(text("/Library/t/from"), text("/Library/t/to")));
    QTRY_COMPARE_WITH_TIMEOUT(entries(text("/Library/t/to")),
                              QStringList({text(".hidden"), text("a"), text("c"), text("x")}),
                              patience);
    QCOMPARE(::unlink("/Library/t/from/b"), 0);
    QVERIFY(authorization().authMoveFolderContents(text("/Library/t/to"), text("/Library/t/from")));
    QTRY_COMPARE_WITH_TIMEOUT(entries(text("/Library/t/from")).size(), 4, patience);
}

void ZQAuthorizationAsRootTest::contentsMovedNowhereAreNotMoved()
{
    makeFile(text("/Library/t/a"));
    QVERIFY(!authorization().authMoveFolderContents(text("/Library/t"), QString()));
    QVERIFY(exists(text("/Library/t/a")));
    QVERIFY(!exists(text("/a")));
}

void ZQAuthorizationAsRootTest::oddNamesAreNamesInEveryOperation()
{
    auto &it = authorization();
    for (const auto &name : oddNames()) {
        const auto source = text("/Library/t/") + name;
        const auto other = text("/Library/t/other ") + name;
        QVERIFY(it.authCreateDir(source));
        QTRY_VERIFY_WITH_TIMEOUT(exists(source), patience);
        QVERIFY(it.authCopyFile(source, other));
        QTRY_VERIFY_WITH_TIMEOUT(exists(other), patience);
        makeFile(other + u'/' + name);
        QVERIFY(it.authMoveFolderContents(other, source));
        QTRY_VERIFY_WITH_TIMEOUT(exists(source + u'/' + name), patience);
        QVERIFY(it.authTrashFolderContents(source));
        QTRY_VERIFY_WITH_TIMEOUT(exists(m_trash + u'/' + name), patience);
        QTRY_VERIFY_WITH_TIMEOUT(!exists(source + u'/' + name), patience);
        QVERIFY(it.authTrashFile(source)); // the name is taken now
        QTRY_VERIFY_WITH_TIMEOUT(!exists(source), patience);
        QVERIFY(exists(m_trash + u'/' + name));
        QVERIFY(it.authRemoveFile(other));
        QTRY_VERIFY_WITH_TIMEOUT(!exists(other), patience);
    }
}

void ZQAuthorizationAsRootTest::aRelativePathWithADashIsNoOption()
{
    QCOMPARE(::chdir("/Library/t"), 0);
    makeFile(text("/Library/t/-rf"));
    makeFile(text("/Library/t/plain"));
    makeFile(text("/Library/t/kept"));
    QVERIFY(authorization().authMoveFile(text("-rf"), text("-v")));
    QTRY_VERIFY_WITH_TIMEOUT(exists(text("/Library/t/-v")), patience);
    QVERIFY(authorization().authCopyFile(text("-v"), text("-i")));
    QTRY_VERIFY_WITH_TIMEOUT(exists(text("/Library/t/-i")), patience);
    QVERIFY(authorization().authRemoveFile(text("-v")));
    QVERIFY(authorization().authRemoveFile(text("-i")));
    QVERIFY(authorization().authRemoveFile(text("plain")));
    QTRY_COMPARE_WITH_TIMEOUT(entries(text("/Library/t")), QStringList{text("kept")}, patience);
    QCOMPARE(::chdir("/tmp"), 0);
}

TEST_CLASS(ZQAuthorizationAsRootTest, QCoreApplication)
#include "ZQAuthorizationAsRootTest.moc"
