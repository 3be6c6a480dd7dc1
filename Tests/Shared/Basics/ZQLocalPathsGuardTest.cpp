// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Basics/ZQLocalPaths.h"
#include "Tests/Support/ConsoleSeat.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <unistd.h>

namespace {

bool isRoot()
{
    return ::getuid() == 0;
}

// Protected at all, and protected as an exact match.
struct Protection {
    bool any = false;
    bool exact = false;
    bool operator==(const Protection &other) const = default;
};

constexpr Protection none{false, false};
constexpr Protection asPartOfASystemFolder{true, false};
constexpr Protection itself{true, true};

Protection protectionOf(const QString &path)
{
    return {ZQLocalPaths::isPathSystemDirectory(path, ExactMatch::No),
            ZQLocalPaths::isPathSystemDirectory(path, ExactMatch::Yes)};
}

} // namespace

Q_DECLARE_METATYPE(Protection)

class ZQLocalPathsGuardTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void thePlainFormIsNotExact();
    void machinePaths_data();
    void machinePaths();
    void foldersOfTheUser_data();
    void foldersOfTheUser();
    void theGuardFollowsTheConsoleUserForRootOnly();
    void theGuardAsksForTheHomeAtEveryCall();
    void withoutAHomeInTheEnvironmentTheAccountsFoldersAreProtected();
    void renamedFoldersAreProtectedUnderBothNames();
    void aNullPathIsNotProtected();
};

void ZQLocalPathsGuardTest::thePlainFormIsNotExact()
{
    QVERIFY(ZQLocalPaths::isPathSystemDirectory(QStringLiteral("/usr/local/bin")));
    QVERIFY(ZQLocalPaths::isPathSystemDirectory(QStringLiteral("/")));
    QVERIFY(!ZQLocalPaths::isPathSystemDirectory(QStringLiteral("/Volumes/Backup")));
}

void ZQLocalPathsGuardTest::machinePaths_data()
{
    QTest::addColumn<Protection>("expected");
    const auto rows = [](const Protection &expected, std::initializer_list<const char *> paths) {
        for (const char *path : paths) {
            QTest::newRow(path) << expected;
        }
    };
    // The root folder and the list.
    rows(itself, {"/", "/Applications", "/Applications/Utilities", "/Library",
                  "/Library/Preferences", "/Library/Caches", "/Library/Application Support",
                  "/System/Library", "/Library/Documentation", "/Users/Shared", "/Volumes"});
    // Shorter than three characters.
    rows(none, {"", "a", "//", "/a"});
    // A trailing slash takes the character before it along.
    rows(none, {"/Applications/", "/Users/Shared/", "/Library/", "/Volumes/", "/Library/Caches/"});
    rows(asPartOfASystemFolder,
         {"/System/", "/System/Library/", "/usr/", "/var/", "/private/var/"});
    rows(itself, {"/LibraryX/", "/Volumes//", "/Users/Shared//"});
    rows(none, {"/a/", "///", "/ab", "/Volumes///"});
    // Plain prefixes, with all below them.
    rows(asPartOfASystemFolder, {"/usr", "/usr/local/bin", "/usrdata", "/var", "/var/tmp/x",
                                 "/various", "/private/var", "/private/var/db", "/private/various",
                                 "/System", "/System/Library/Fonts", "/Systematic"});
    // All other paths, however important.
    rows(none,
         {"/Users", "/Volumes/Data", "/Volumes/Backup", "/Applications/Utilities/Foo",
          "/Applications/Foo.app", "/Library/Caches/x", "/Library/Logs", "/private", "/private/tmp",
          "/tmp", "/bin", "/sbin", "/etc", "/home", "/Documents", "/Desktop"});
    // Compared as they stand: case, relative and roundabout paths.
    rows(none, {"/applications", "/USR/bin", "usr/bin", " /usr", "/./usr", "//usr", "/Library/.",
                "/tmp/../Library", "~/Library", "Library"});
}

void ZQLocalPathsGuardTest::machinePaths()
{
    QFETCH(Protection, expected);
    const auto path = QString::fromLatin1(QTest::currentDataTag());
    const auto actual = protectionOf(path);
    QCOMPARE(actual.any, expected.any);
    QCOMPARE(actual.exact, expected.exact);
}

void ZQLocalPathsGuardTest::foldersOfTheUser_data()
{
    QTest::addColumn<Protection>("expected");
    for (const char *folder :
         {"", "/Applications", "/Applications/Utilities", "/Documents", "/Library",
          "/Library/Preferences", "/Library/Caches", "/Library/Application Support", "/Desktop"}) {
        QTest::newRow(folder) << itself;
        QTest::newRow(qPrintable(QString::fromLatin1(folder) + u'/')) << none;
        QTest::newRow(qPrintable(QString::fromLatin1(folder) + QStringLiteral("/x"))) << none;
    }
    for (const char *folder : {"/Music", "/Downloads", "/Pictures", "/Movies", "/Library/Logs",
                               "/Library/Documentation", "/.Trash"}) {
        QTest::newRow(folder) << none;
    }
}

void ZQLocalPathsGuardTest::foldersOfTheUser()
{
    QFETCH(Protection, expected);
    test::ConsoleSeat seat;
    seat.activate(QStringLiteral("bob"), 1001);
    const auto home = isRoot() ? QStringLiteral("/home/bob") : QStringLiteral("/home/tester");
    const auto actual = protectionOf(home + QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(actual.any, expected.any);
    QCOMPARE(actual.exact, expected.exact);
}

void ZQLocalPathsGuardTest::theGuardFollowsTheConsoleUserForRootOnly()
{
    const auto bobs = QStringLiteral("/home/bob/Desktop");
    QVERIFY(protectionOf(bobs) == none);
    {
        test::ConsoleSeat seat;
        seat.activate(QStringLiteral("bob"), 1001);
        QVERIFY(protectionOf(bobs) == (isRoot() ? itself : none));
        QVERIFY(protectionOf(QStringLiteral("/root")) == none);
        seat.activate(QStringLiteral("tester"), 1000);
        QVERIFY(protectionOf(bobs) == none);
        QVERIFY(protectionOf(QStringLiteral("/home/tester")) == itself);
    }
    QVERIFY(protectionOf(QStringLiteral("/root")) == (isRoot() ? itself : none));
}

void ZQLocalPathsGuardTest::theGuardAsksForTheHomeAtEveryCall()
{
    const test::EnvironmentVariable home("HOME", "/tmp/first");
    QVERIFY(protectionOf(QStringLiteral("/tmp/first")) == itself);
    QVERIFY(protectionOf(QStringLiteral("/tmp/second/Library")) == none);
    qputenv("HOME", "/tmp/second");
    QVERIFY(protectionOf(QStringLiteral("/tmp/first")) == none);
    QVERIFY(protectionOf(QStringLiteral("/tmp/second/Library")) == itself);
}

void ZQLocalPathsGuardTest::withoutAHomeInTheEnvironmentTheAccountsFoldersAreProtected()
{
    const auto account = isRoot() ? QStringLiteral("/root") : QStringLiteral("/home/tester");
    for (const auto &value : {QByteArray(), QByteArray("relative/home")}) {
        const test::EnvironmentVariable home("HOME", value);
        for (const auto *folder : {"", "/Desktop", "/Documents", "/Library"}) {
            QVERIFY2(protectionOf(account + QString::fromLatin1(folder)) == itself, folder);
        }
        QVERIFY(protectionOf(QStringLiteral("/Desktop")) == none);
    }
}

void ZQLocalPathsGuardTest::renamedFoldersAreProtectedUnderBothNames()
{
    const auto account = isRoot() ? QStringLiteral("/home/bob") : QStringLiteral("/home/tester");
    const auto settings = account + QStringLiteral("/.config");
    QVERIFY(QDir().mkpath(settings));
    QFile file(settings + QStringLiteral("/user-dirs.dirs"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
               "XDG_DOCUMENTS_DIR=\"/srv/Dokumente\"\n"
               "XDG_VIDEOS_DIR=\"$HOME/Videos\"\n");
    file.close();
    test::ConsoleSeat seat;
    seat.activate(QStringLiteral("bob"), 1001);
    const auto isProtected = [](const QString &path) { return protectionOf(path) == itself; };
    const auto desktop = isProtected(account + QStringLiteral("/Desktop"));
    const auto documents = isProtected(account + QStringLiteral("/Documents"));
    const auto namedDesktop = isProtected(account + QStringLiteral("/Schreibtisch"));
    const auto namedDocuments = isProtected(QStringLiteral("/srv/Dokumente"));
    const auto videos = isProtected(account + QStringLiteral("/Videos"));
    const auto answer = ZQLocalPaths::desktopDirectory();
    QVERIFY(file.remove());
    QVERIFY(desktop && documents);
    QVERIFY(namedDesktop && namedDocuments);
    QVERIFY(!videos);
    QVERIFY(!isProtected(account + QStringLiteral("/Schreibtisch")));
    QCOMPARE(answer,
             account + (isRoot() ? QStringLiteral("/Desktop") : QStringLiteral("/Schreibtisch")));
}

void ZQLocalPathsGuardTest::aNullPathIsNotProtected()
{
    QVERIFY(protectionOf(QString()) == none);
}

TEST_CLASS(ZQLocalPathsGuardTest, QCoreApplication)
#include "ZQLocalPathsGuardTest.moc"
