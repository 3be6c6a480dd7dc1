// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Folders/StandardFolders.h"

#include "Platform/Core/Folders/DesktopFolders.h"
#include "Tests/Support/ConsoleSeat.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using platform::SearchPathDirectory;
using platform::searchPathForDirectories;

Q_DECLARE_METATYPE(SearchPathDirectory)

namespace {

bool isRoot()
{
    return ::getuid() == 0;
}

void writeUserDirs(const QString &settings, const QByteArray &lines)
{
    QVERIFY(QDir().mkpath(settings));
    QFile file(settings + QStringLiteral("/user-dirs.dirs"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(lines);
}

} // namespace

class StandardFoldersTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void foldersOfTheDomains_data();
    void foldersOfTheDomains();
    void theUserDomainComesFirst();
    void theDesktopIsTheOneOfTheDesktopEnvironment();
    void aFolderThatTheDesktopNamesIsReadAsTheShellReadsIt_data();
    void aFolderThatTheDesktopNamesIsReadAsTheShellReadsIt();
    void theNamesOfAnotherHomeAreReadThere();
    void theHomeIsTheEnvironmentsWhereThatIsAnAbsolutePath();
    void withoutAHomeInTheEnvironmentEveryFolderIsInTheAccounts();
    void theHomeOfAnAccountIsTheAccounts();
    void theUserNameIsTheAccounts();
    void rootIsToldFromOthers();
    void nobodyIsAtAConsoleWithoutASession();
    void theConsoleUserIsTheOwnerOfTheActiveSession();
    void theLoginScreenIsNotAUser();
    void anUnknownConsoleUserIsNobody();
    void theTemporaryFolderIsTheUsersAlone();
    void theTemporaryFolderIsMadeAnew();
    void aTemporaryFolderThatOthersPreparedIsNotUsed();
    void uniqueTextsDiffer();
    void theCacheFolderEndsInASlash();
};

void StandardFoldersTest::foldersOfTheDomains_data()
{
    QTest::addColumn<SearchPathDirectory>("directory");
    QTest::addColumn<QString>("inUserDomain");
    QTest::addColumn<QString>("inLocalDomain");
    QTest::addColumn<QString>("inSystemDomain");
    using Directory = SearchPathDirectory;
    const auto row = [](const char *name, Directory directory, const QString &user,
                        const QString &local, const QString &system) {
        QTest::newRow(name) << directory << user << local << system;
    };
    row("applications", Directory::Application, QStringLiteral("/Applications"),
        QStringLiteral("/Applications"), QStringLiteral("/System/Applications"));
    row("utilities", Directory::AdminApplication, QStringLiteral("/Applications/Utilities"),
        QStringLiteral("/Applications/Utilities"),
        QStringLiteral("/System/Applications/Utilities"));
    row("library", Directory::Library, QStringLiteral("/Library"), QStringLiteral("/Library"),
        QStringLiteral("/System/Library"));
    row("documentation", Directory::Documentation, QStringLiteral("/Library/Documentation"),
        QStringLiteral("/Library/Documentation"), QStringLiteral("/System/Library/Documentation"));
    row("documents", Directory::Document, QStringLiteral("/Documents"), {}, {});
    row("desktop", Directory::Desktop, QStringLiteral("/Desktop"), {}, {});
    row("caches", Directory::Caches, QStringLiteral("/Library/Caches"),
        QStringLiteral("/Library/Caches"), QStringLiteral("/System/Library/Caches"));
    row("support", Directory::ApplicationSupport, QStringLiteral("/Library/Application Support"),
        QStringLiteral("/Library/Application Support"), {});
    row("movies", Directory::Movies, QStringLiteral("/Movies"), {}, {});
}

void StandardFoldersTest::foldersOfTheDomains()
{
    QFETCH(SearchPathDirectory, directory);
    QFETCH(QString, inUserDomain);
    QFETCH(QString, inLocalDomain);
    QFETCH(QString, inSystemDomain);
    const auto only = [](const QString &path) {
        return path.isNull() ? QStringList() : QStringList(path);
    };
    const auto base = isRoot() ? QStringLiteral("/var/root") : QStringLiteral("/home/tester");
    QCOMPARE(searchPathForDirectories(directory, platform::UserDomain), only(base + inUserDomain));
    QCOMPARE(searchPathForDirectories(directory, platform::LocalDomain), only(inLocalDomain));
    QCOMPARE(searchPathForDirectories(directory, platform::SystemDomain), only(inSystemDomain));
}

void StandardFoldersTest::theUserDomainComesFirst()
{
    const auto base = isRoot() ? QStringLiteral("/var/root") : QStringLiteral("/home/tester");
    QCOMPARE(searchPathForDirectories(SearchPathDirectory::Library, platform::SystemDomain |
                                                                        platform::LocalDomain |
                                                                        platform::UserDomain),
             QStringList({base + QStringLiteral("/Library"), QStringLiteral("/Library"),
                          QStringLiteral("/System/Library")}));
    QCOMPARE(searchPathForDirectories(SearchPathDirectory::Document,
                                      platform::LocalDomain | platform::UserDomain),
             QStringList(base + QStringLiteral("/Documents")));
    QCOMPARE(searchPathForDirectories(SearchPathDirectory::Library, 0), QStringList());
}

void StandardFoldersTest::theDesktopIsTheOneOfTheDesktopEnvironment()
{
    const auto folder = QDir::homePath() + QStringLiteral("/.config");
    QVERIFY(QDir().mkpath(folder));
    QFile file(folder + QStringLiteral("/user-dirs.dirs"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
               "XDG_DOCUMENTS_DIR=\"/home/tester/Dokumente/\"\n"
               "XDG_VIDEOS_DIR=\"$HOME/Videos\"\n");
    file.close();
    const auto desktop =
        searchPathForDirectories(SearchPathDirectory::Desktop, platform::UserDomain);
    const auto documents =
        searchPathForDirectories(SearchPathDirectory::Document, platform::UserDomain);
    const auto movies = searchPathForDirectories(SearchPathDirectory::Movies, platform::UserDomain);
    QVERIFY(file.remove());
    if (isRoot()) {
        QCOMPARE(desktop, QStringList(QStringLiteral("/var/root/Desktop")));
        QCOMPARE(documents, QStringList(QStringLiteral("/var/root/Documents")));
        QCOMPARE(movies, QStringList(QStringLiteral("/var/root/Movies")));
        return;
    }
    QCOMPARE(desktop, QStringList(QStringLiteral("/home/tester/Schreibtisch")));
    QCOMPARE(documents, QStringList(QStringLiteral("/home/tester/Dokumente")));
    QCOMPARE(movies, QStringList(QStringLiteral("/home/tester/Movies")));
    QCOMPARE(searchPathForDirectories(SearchPathDirectory::Desktop, platform::UserDomain),
             QStringList(QStringLiteral("/home/tester/Desktop")));
}

void StandardFoldersTest::aFolderThatTheDesktopNamesIsReadAsTheShellReadsIt_data()
{
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<QString>("folder");
    const auto row = [](const char *name, const char *lines, const char *folder) {
        QTest::newRow(name) << QByteArray(lines) << QString::fromUtf8(folder);
    };
    row("in the home", "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n", "/tmp/there/Schreibtisch");
    row("elsewhere", "XDG_DESKTOP_DIR=\"/srv/d\"", "/srv/d");
    row("the home itself", "XDG_DESKTOP_DIR=\"$HOME/\"\n", "/tmp/there");
    row("a slash too many", "XDG_DESKTOP_DIR=\"$HOME//a/\"\n", "/tmp/there/a");
    row("with spaces", "  XDG_DESKTOP_DIR=\"$HOME/Mein Tisch\"  \r\n", "/tmp/there/Mein Tisch");
    row("letters of a language", "XDG_DESKTOP_DIR=\"$HOME/Bür\xC3\xB3\"\n", "/tmp/there/Büró");
    row("escaped", "XDG_DESKTOP_DIR=\"$HOME/a\\\"b\\$c\\\\d\"\n", "/tmp/there/a\"b$c\\d");
    row("without quotes", "XDG_DESKTOP_DIR=$HOME/a\n", "/tmp/there/a");
    row("the last one", "XDG_DESKTOP_DIR=\"/a\"\nXDG_DESKTOP_DIR=\"/b\"\n", "/b");
    row("a comment", "# XDG_DESKTOP_DIR=\"/a\"\n", nullptr);
    row("another folder", "XDG_DOCUMENTS_DIR=\"/a\"\nXDG_DESKTOP_DIRS=\"/b\"\n", nullptr);
    row("relative", "XDG_DESKTOP_DIR=\"a\"\n", nullptr);
    row("another variable", "XDG_DESKTOP_DIR=\"$HOMES/a\"\n", nullptr);
    row("nothing", "XDG_DESKTOP_DIR=\"\"\nXDG_DESKTOP_DIR=\n", nullptr);
    row("an open quote", "XDG_DESKTOP_DIR=\"$HOME/a\\", "/tmp/there/a\\");
    row("no file's contents", "", nullptr);
}

void StandardFoldersTest::aFolderThatTheDesktopNamesIsReadAsTheShellReadsIt()
{
    QFETCH(const QByteArray, lines);
    QFETCH(const QString, folder);
    const test::EnvironmentVariable home("HOME", "/tmp/there");
    const test::EnvironmentVariable settings("XDG_CONFIG_HOME", "/tmp/settings");
    writeUserDirs(QStringLiteral("/tmp/settings"), lines);
    const auto named =
        platform::folderNamedByDesktop(SearchPathDirectory::Desktop, QStringLiteral("/tmp/there"));
    QCOMPARE(named, folder);
    QCOMPARE(named.isNull(), folder.isNull());
}

void StandardFoldersTest::theNamesOfAnotherHomeAreReadThere()
{
    const test::EnvironmentVariable settings("XDG_CONFIG_HOME", "/tmp/settings");
    writeUserDirs(QStringLiteral("/tmp/settings"), "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n");
    const auto other = QStringLiteral("/tmp/other");
    const auto named = [&](SearchPathDirectory directory) {
        return platform::folderNamedByDesktop(directory, other);
    };
    QVERIFY(named(SearchPathDirectory::Document).isNull());
    writeUserDirs(other + QStringLiteral("/.config"), "XDG_DOCUMENTS_DIR=\"$HOME/Asiakirjat\"\n");
    QCOMPARE(named(SearchPathDirectory::Document), QStringLiteral("/tmp/other/Asiakirjat"));
    QVERIFY(named(SearchPathDirectory::Movies).isNull());
    QVERIFY(platform::folderNamedByDesktop(SearchPathDirectory::Document, {}).isNull());
}

void StandardFoldersTest::theHomeIsTheEnvironmentsWhereThatIsAnAbsolutePath()
{
    const auto accounts = isRoot() ? QStringLiteral("/root") : QStringLiteral("/home/tester");
    {
        const test::EnvironmentVariable home("HOME", "/tmp/elsewhere/");
        QCOMPARE(platform::homeDirectory(), QStringLiteral("/tmp/elsewhere"));
        QCOMPARE(platform::homeDirectoryForUser({}), QStringLiteral("/tmp/elsewhere"));
    }
    {
        const test::EnvironmentVariable home("HOME", "/");
        QCOMPARE(searchPathForDirectories(SearchPathDirectory::Library, platform::UserDomain),
                 QStringList(isRoot() ? QStringLiteral("/var/root/Library")
                                      : QStringLiteral("/Library")));
    }
    for (const auto &value : {QByteArray(), QByteArray(""), QByteArray("relative/home")}) {
        const test::EnvironmentVariable home("HOME", value);
        QCOMPARE(platform::homeDirectory(), accounts);
    }
}

void StandardFoldersTest::withoutAHomeInTheEnvironmentEveryFolderIsInTheAccounts()
{
    const auto account = isRoot() ? QStringLiteral("/root") : QStringLiteral("/home/tester");
    const auto base = isRoot() ? QStringLiteral("/var/root") : account;
    const auto settings = account + QStringLiteral("/.config");
    const test::EnvironmentVariable cache("XDG_CACHE_HOME", "relative/cache");
    for (const auto &value : {QByteArray(), QByteArray(""), QByteArray("relative/home")}) {
        const test::EnvironmentVariable home("HOME", value);
        const auto folders = [](SearchPathDirectory directory) {
            return searchPathForDirectories(directory, platform::UserDomain);
        };
        QCOMPARE(folders(SearchPathDirectory::Desktop),
                 QStringList(base + QStringLiteral("/Desktop")));
        QCOMPARE(folders(SearchPathDirectory::Document),
                 QStringList(base + QStringLiteral("/Documents")));
        QCOMPARE(folders(SearchPathDirectory::Movies),
                 QStringList(base + QStringLiteral("/Movies")));
        QCOMPARE(platform::userCacheDirectory(), account + QStringLiteral("/.cache/"));
        writeUserDirs(settings, "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n");
        const auto renamed = folders(SearchPathDirectory::Desktop);
        QVERIFY(QFile::remove(settings + QStringLiteral("/user-dirs.dirs")));
        QCOMPARE(renamed, QStringList(base + (isRoot() ? QStringLiteral("/Desktop")
                                                       : QStringLiteral("/Schreibtisch"))));
    }
}

void StandardFoldersTest::theHomeOfAnAccountIsTheAccounts()
{
    QCOMPARE(platform::homeDirectoryForUser(QStringLiteral("bob")), QStringLiteral("/home/bob"));
    QCOMPARE(platform::homeDirectoryForUser(QStringLiteral("root")), QStringLiteral("/root"));
    QVERIFY(platform::homeDirectoryForUser(QStringLiteral("nobody-of-that-name")).isNull());
    QVERIFY(platform::homeDirectoryForUser(QStringLiteral("")).isNull());
}

void StandardFoldersTest::theUserNameIsTheAccounts()
{
    const test::EnvironmentVariable user("USER", "somebody");
    QCOMPARE(platform::userName(), isRoot() ? QStringLiteral("root") : QStringLiteral("tester"));
}

void StandardFoldersTest::rootIsToldFromOthers()
{
    QCOMPARE(platform::isRunningAsRoot(), isRoot());
}

void StandardFoldersTest::nobodyIsAtAConsoleWithoutASession()
{
    QVERIFY(platform::consoleUser().isNull());
    const test::ConsoleSeat seat;
    QVERIFY(platform::consoleUser().isNull());
}

void StandardFoldersTest::theConsoleUserIsTheOwnerOfTheActiveSession()
{
    test::ConsoleSeat seat;
    seat.activate(QStringLiteral("bob"), 1001);
    QCOMPARE(platform::consoleUser(), QStringLiteral("bob"));
    seat.activate(QStringLiteral("root"), 0);
    QCOMPARE(platform::consoleUser(), QStringLiteral("root"));
}

void StandardFoldersTest::theLoginScreenIsNotAUser()
{
    test::ConsoleSeat seat;
    seat.activate(QStringLiteral("messagebus"), 100, "greeter");
    QCOMPARE(platform::consoleUser(), QStringLiteral("loginwindow"));
    seat.activate(QStringLiteral("bob"), 1001, "lock-screen");
    QCOMPARE(platform::consoleUser(), QStringLiteral("bob"));
}

void StandardFoldersTest::anUnknownConsoleUserIsNobody()
{
    test::ConsoleSeat seat;
    seat.activate(QStringLiteral("gone"), 4711);
    QVERIFY(platform::consoleUser().isNull());
}

void StandardFoldersTest::theTemporaryFolderIsTheUsersAlone()
{
    const auto path = platform::temporaryDirectory();
    QCOMPARE(path, QStringLiteral("/tmp/com.corvane.%1").arg(::getuid()));
    struct stat status {};
    QCOMPARE(::lstat(QFile::encodeName(path).constData(), &status), 0);
    QVERIFY(S_ISDIR(status.st_mode));
    QCOMPARE(status.st_mode & 07777U, 0700U);
    QCOMPARE(status.st_uid, ::getuid());
    QVERIFY(QDir().mkpath(QStringLiteral("/tmp/other")));
    const test::EnvironmentVariable variable("TMPDIR", "/tmp/other/");
    QCOMPARE(platform::temporaryDirectory(),
             QStringLiteral("/tmp/other/com.corvane.%1").arg(::getuid()));
}

void StandardFoldersTest::theTemporaryFolderIsMadeAnew()
{
    const auto path = platform::temporaryDirectory();
    QVERIFY(QDir(path).removeRecursively());
    QCOMPARE(platform::temporaryDirectory(), path);
    QVERIFY(QFileInfo(path).isDir());
}

void StandardFoldersTest::aTemporaryFolderThatOthersPreparedIsNotUsed()
{
    const auto path = platform::temporaryDirectory();
    const auto instead = QDir::homePath() + QStringLiteral("/.cache/com.corvane.temporary");
    // Open to others.
    QCOMPARE(::chmod(QFile::encodeName(path).constData(), 0777), 0);
    QCOMPARE(platform::temporaryDirectory(), instead);
    QVERIFY(QFileInfo(instead).isDir());
    QVERIFY(QDir(path).removeRecursively());
    // A link to a folder of this user.
    QVERIFY(QFile::link(instead, path));
    QCOMPARE(platform::temporaryDirectory(), instead);
    QVERIFY(QFile::remove(path));
    QCOMPARE(platform::temporaryDirectory(), path);
}

void StandardFoldersTest::uniqueTextsDiffer()
{
    QSet<QString> texts;
    for (int count = 0; count < 1000; ++count) {
        const auto text = platform::globallyUniqueString();
        QVERIFY(!text.isEmpty() && !text.contains(QChar(u'/')));
        texts.insert(text);
    }
    QCOMPARE(texts.size(), 1000);
}

void StandardFoldersTest::theCacheFolderEndsInASlash()
{
    const test::EnvironmentVariable variable("XDG_CACHE_HOME", "/tmp/cäche");
    QCOMPARE(platform::userCacheDirectory(), QStringLiteral("/tmp/cäche/"));
}

TEST_CLASS(StandardFoldersTest, QCoreApplication)
#include "StandardFoldersTest.moc"
