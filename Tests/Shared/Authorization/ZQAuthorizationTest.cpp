// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Authorization/ZQAuthorization.h"

#include "Platform/Core/Text/FileName.h"
#include "Shared/Basics/ZQLocalPaths.h"
#include "Tests/Support/ConsoleCapture.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

// What needs no polkit: everything for root, and for a user all that is refused. The tests called
// Authorization... have a polkit.
namespace {

bool isRoot()
{
    return ::getuid() == 0;
}

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

} // namespace

class ZQAuthorizationTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void thereIsOneInstanceWhateverTheFlag();
    void onlyRootIsAuthorizedAtFirst();
    void theUsersFolderIsRecordedUnlessForRoot();
    void canAuthorizeWithGUIOrAsRoot();
    void withoutGUIAuthStartSaysUnableToAuthorize();
    void aNullUserOrPasswordIsRefusedWithoutAskingThePlatform();
    void whereNothingIsInstalledAPasswordGivesTheErrorOfCreating();
    void authEndWithoutAnAuthorisationDoesNothing();
    void aMissingToolGivesMinusTwoWithoutAsking();
    void withoutAuthorisationATaskGivesMinusOne();
    void aNullPathOfAMoveIsReported();
    void aNullPathOfACopyIsReported();
    void aMissingSourceIsNeitherMovedNorCopiedAndNotReported();
    void systemDirectoriesAreRefused_data();
    void systemDirectoriesAreRefused();
    void aFileInASystemDirectoryIsNotRefused();
    void aSystemDirectoryIsNeverRefusedAsTheSourceOfACopy();
    void anEmptyFolderHasAllItsContentsTrashedAndMoved();
    void whatIsNotTrashedHasNoRecordInTheDesktopsTrash();
    void aNulInAPathIsRefused();
};

void ZQAuthorizationTest::initTestCase()
{
    QVERIFY(&ZQAuthorization::sharedController(WithGUI::No) == &authorization());
    QVERIFY(!authorization().hasGUI());
    authorization().setHasGUI(true);
}

void ZQAuthorizationTest::thereIsOneInstanceWhateverTheFlag()
{
    auto *one = &authorization();
    QVERIFY(one == &ZQAuthorization::sharedController(WithGUI::No));
    QVERIFY(one == &ZQAuthorization::sharedController(WithGUI::Yes));
    QVERIFY(one->hasGUI());
}

void ZQAuthorizationTest::onlyRootIsAuthorizedAtFirst()
{
    QCOMPARE(authorization().isAuthorized(), isRoot());
    QVERIFY(authorization().authRef() == nullptr);
}

void ZQAuthorizationTest::theUsersFolderIsRecordedUnlessForRoot()
{
    QCOMPARE(authorization().userDirectory(), isRoot() ? QString() : text("/home/tester"));
    QCOMPARE(authorization().userDirectory().isNull(), isRoot());
}

void ZQAuthorizationTest::canAuthorizeWithGUIOrAsRoot()
{
    QVERIFY(authorization().canAuthorize());
    authorization().setHasGUI(false);
    QCOMPARE(authorization().canAuthorize(), isRoot());
    authorization().setHasGUI(true);
}

void ZQAuthorizationTest::withoutGUIAuthStartSaysUnableToAuthorize()
{
    test::ConsoleCapture console;
    authorization().setHasGUI(false);
    QCOMPARE(authorization().authStart(), isRoot());
    authorization().setHasGUI(true);
    QCOMPARE(console.lines(), isRoot() ? QStringList() : QStringList{text("Unable to authorize")});
}

void ZQAuthorizationTest::aNullUserOrPasswordIsRefusedWithoutAskingThePlatform()
{
    test::ConsoleCapture console;
    QCOMPARE(authorization().authStartWithUser(text("admin"), QString()), isRoot());
    QCOMPARE(authorization().authStartWithUser(QString(), text("secret")), isRoot());
    QCOMPARE(console.lines(), QStringList());
}

void ZQAuthorizationTest::whereNothingIsInstalledAPasswordGivesTheErrorOfCreating()
{
    test::ConsoleCapture console;
    QCOMPARE(authorization().authStartWithUser(text("admin"), text("")), isRoot());
    if (!isRoot()) {
        const auto lines = console.lines();
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines.first().contains(text("is not installed")));
        QCOMPARE(lines.last(), text("Unable to create authRef - error -60008"));
    }
    QVERIFY(authorization().authRef() == nullptr);
}

void ZQAuthorizationTest::authEndWithoutAnAuthorisationDoesNothing()
{
    authorization().authEnd();
    QCOMPARE(authorization().isAuthorized(), isRoot());
}

void ZQAuthorizationTest::aMissingToolGivesMinusTwoWithoutAsking()
{
    test::ConsoleCapture console;
    const auto tool = text("/bin/nobody-has-this");
    QCOMPARE(authorization().authExecTask(tool, {}), -2);
    QCOMPARE(authorization().authExecTask(tool, {}, Async::No), -2);
    const auto line = text("Unable to execute task: path /bin/nobody-has-this doesn't exist");
    QCOMPARE(console.lines(), QStringList({line, line}));
}

void ZQAuthorizationTest::withoutAuthorisationATaskGivesMinusOne()
{
    authorization().setHasGUI(false);
    QCOMPARE(authorization().authExecTask(text("/bin/true"), {}), isRoot() ? 0 : -1);
    QCOMPARE(authorization().authExecTask(text("/bin/false"), {}, Async::No), isRoot() ? 0 : -1);
    authorization().setHasGUI(true);
}

void ZQAuthorizationTest::aNullPathOfAMoveIsReported()
{
    test::ConsoleCapture console;
    QVERIFY(!authorization().authMoveFile(QString(), text("/tmp/x")));
    QVERIFY(!authorization().authMoveFile(text("/etc/passwd"), QString()));
    QVERIFY(!authorization().authMoveFile(QString(), QString()));
    const auto old = text("Error in authMoveFile: old path is null");
    QCOMPARE(console.lines(),
             QStringList({old, text("Error in authMoveFile: new path is null"), old}));
}

void ZQAuthorizationTest::aNullPathOfACopyIsReported()
{
    test::ConsoleCapture console;
    QVERIFY(!authorization().authCopyFile(QString(), text("/tmp/x")));
    QVERIFY(!authorization().authCopyFile(text("/etc/passwd"), QString()));
    QCOMPARE(console.lines(), QStringList({text("Error in authCopyFile: old path is null"),
                                           text("Error in authCopyFile: new path is null")}));
}

void ZQAuthorizationTest::aMissingSourceIsNeitherMovedNorCopiedAndNotReported()
{
    test::ConsoleCapture console;
    QVERIFY(!authorization().authMoveFile(text("/tmp/missing"), text("/tmp/x")));
    QVERIFY(!authorization().authCopyFile(text("/tmp/missing"), text("/tmp/x")));
    QCOMPARE(console.lines(), QStringList());
}

void ZQAuthorizationTest::systemDirectoriesAreRefused_data()
{
    QTest::addColumn<QString>("path");
    for (const auto *path : {"/", "/Library", "/Applications", "/Volumes", "/Users/Shared",
                             "/Library/Caches", "/Library/Preferences"}) {
        QTest::newRow(path) << text(path);
    }
    QTest::newRow("home") << ZQLocalPaths::userDirectory();
    QTest::newRow("desktop") << ZQLocalPaths::desktopDirectory();
}

void ZQAuthorizationTest::systemDirectoriesAreRefused()
{
    QFETCH(const QString, path);
    test::ConsoleCapture console;
    auto &it = authorization();
    QVERIFY(!it.authRemoveFile(path));
    QVERIFY(!it.authTrashFile(path));
    QVERIFY(!it.authTrashFile(path, DeleteOnRootAccount::Yes));
    QVERIFY(!it.authTrashFolderContents(path));
    QVERIFY(!it.authTrashFolderContents(path, DeleteOnRootAccount::Yes));
    QVERIFY(!it.authMoveFile(path, text("/tmp/x")));
    QVERIFY(!it.authMoveFolderContents(path, text("/tmp")));
    QStringList expected;
    for (const auto *what :
         {"delete path", "trash path", "trash path", "trash folder contents of path",
          "trash folder contents of path", "move path", "move contents of path"}) {
        expected << QStringLiteral("Unable to %1 %2 because it is a system directory.")
                        .arg(text(what), path);
    }
    QCOMPARE(console.lines(), expected);
}

void ZQAuthorizationTest::aFileInASystemDirectoryIsNotRefused()
{
    test::ConsoleCapture console;
    authorization().setHasGUI(false);
    authorization().authRemoveFile(text("/Library/Caches/stale"));
    authorization().setHasGUI(true);
    // For a user only the missing authorisation stands in the way.
    QCOMPARE(console.lines(), isRoot() ? QStringList() : QStringList{text("Unable to authorize")});
}

void ZQAuthorizationTest::aSystemDirectoryIsNeverRefusedAsTheSourceOfACopy()
{
    test::ConsoleCapture console;
    authorization().setHasGUI(false);
    QCOMPARE(authorization().authCopyFile(text("/Volumes"), text("/tmp/copy")), isRoot());
    authorization().setHasGUI(true);
    QCOMPARE(console.lines(), isRoot() ? QStringList() : QStringList{text("Unable to authorize")});
    if (isRoot()) {
        QTRY_VERIFY_WITH_TIMEOUT(exists(text("/tmp/copy")), 30000);
    }
}

void ZQAuthorizationTest::anEmptyFolderHasAllItsContentsTrashedAndMoved()
{
    QCOMPARE(::mkdir("/tmp/empty", 0755), 0);
    for (const auto *folder : {"/tmp/empty", "/tmp/missing"}) {
        QVERIFY(authorization().authTrashFolderContents(text(folder)));
        QVERIFY(authorization().authMoveFolderContents(text(folder), text("/tmp")));
    }
}

void ZQAuthorizationTest::whatIsNotTrashedHasNoRecordInTheDesktopsTrash()
{
    if (isRoot()) {
        QSKIP("root is never refused");
    }
    authorization().setHasGUI(false);
    QVERIFY(!authorization().authTrashFile(text("/etc/passwd")));
    authorization().setHasGUI(true);
    QVERIFY(exists(text("/home/tester/.Trash")));
    QVERIFY(exists(text("/home/tester/.local/share/Trash/info")));
    QVERIFY(!exists(text("/home/tester/.local/share/Trash/info/passwd.trashinfo")));
}

void ZQAuthorizationTest::aNulInAPathIsRefused()
{
    QCOMPARE(::mkdir("/tmp/kept", 0755), 0);
    auto path = text("/tmp/kept");
    path += QChar(0);
    path += u'x';
    auto &it = authorization();
    QVERIFY(!it.authRemoveFile(path));
    QVERIFY(!it.authMoveFile(path, text("/tmp/x")));
    QVERIFY(!it.authMoveFile(text("/tmp/kept"), path));
    QVERIFY(!it.authCopyFile(text("/tmp/kept"), path));
    QVERIFY(!it.authCreateDir(path));
    QVERIFY(!it.authTrashFile(path));
    QCOMPARE(it.authExecTask(text("/bin/true") + QChar(0) + u'x', {}), -2);
    QVERIFY(exists(text("/tmp/kept")));
}

TEST_CLASS(ZQAuthorizationTest, QCoreApplication)
#include "ZQAuthorizationTest.moc"
