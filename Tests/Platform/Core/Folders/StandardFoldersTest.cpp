// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Folders/StandardFolders.h"

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

} // namespace

class StandardFoldersTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void foldersOfTheDomains_data();
    void foldersOfTheDomains();
    void theUserDomainComesFirst();
    void theDesktopIsTheOneOfTheDesktopEnvironment();
    void theHomeIsTheEnvironmentsWhereThatIsAnAbsolutePath();
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
