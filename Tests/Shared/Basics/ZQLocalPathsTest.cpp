// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Shared/Basics/ZQLocalPaths.h"

#include "Tests/Support/ConsoleSeat.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>

using platform::SearchPathDirectory;

static_assert(static_cast<int>(SearchPathDirectory::Application) == 1);
static_assert(static_cast<int>(SearchPathDirectory::AdminApplication) == 4);
static_assert(static_cast<int>(SearchPathDirectory::Library) == 5);
static_assert(static_cast<int>(SearchPathDirectory::Documentation) == 8);
static_assert(static_cast<int>(SearchPathDirectory::Document) == 9);
static_assert(static_cast<int>(SearchPathDirectory::Desktop) == 12);
static_assert(static_cast<int>(SearchPathDirectory::Caches) == 13);
static_assert(static_cast<int>(SearchPathDirectory::ApplicationSupport) == 14);
static_assert(static_cast<int>(SearchPathDirectory::Movies) == 17);
static_assert(platform::UserDomain == 1 && platform::LocalDomain == 2 &&
              platform::SystemDomain == 8);

namespace {

bool isRoot()
{
    return ::getuid() == 0;
}

// The text that the generator gives for these clock readings.
QString randomText(int length, std::clock_t clock, std::time_t time)
{
    const QByteArray alphabet("abcdefghijklmnopqrstuvwxyz0123456789");
    const std::uint64_t product =
        static_cast<std::uint64_t>(clock) * static_cast<std::uint64_t>(time);
    std::srand(static_cast<std::uint32_t>(product & 0xFFFFFFFFU));
    QByteArray text;
    for (int count = 0; count < length; ++count) {
        text += alphabet.at(std::rand() % 36);
    }
    return QString::fromLatin1(text);
}

void compareUserFolders(const QString &home)
{
    using Paths = ZQLocalPaths;
    const auto in = [&home](const char *folder) { return home + QString::fromLatin1(folder); };
    QCOMPARE(Paths::userDirectory(), home);
    QCOMPARE(Paths::applicationDirectory(Domain::User), in("/Applications"));
    QCOMPARE(Paths::adminApplicationDirectory(Domain::User), in("/Applications/Utilities"));
    QCOMPARE(Paths::documentDirectory(Domain::User), in("/Documents"));
    QCOMPARE(Paths::libraryDirectory(Domain::User), in("/Library"));
    QCOMPARE(Paths::prefsDirectory(Domain::User), in("/Library/Preferences"));
    QCOMPARE(Paths::cacheDirectory(Domain::User), in("/Library/Caches"));
    QCOMPARE(Paths::appSupportDirectory(Domain::User), in("/Library/Application Support"));
    QCOMPARE(Paths::logDirectory(Domain::User), in("/Library/Logs"));
    QCOMPARE(Paths::movieDirectory(), in("/Movies"));
    QCOMPARE(Paths::desktopDirectory(), in("/Desktop"));
    QCOMPARE(Paths::trashDirectory(), in("/.Trash"));
}

} // namespace

class ZQLocalPathsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void foldersOfTheUserLieInTheHome();
    void foldersOfTheMachineLieAtTheRoot();
    void noFolderOfThatKindIsNull();
    void theFirstOfSeveralDomainsIsNotMovedToTheConsoleUser();
    void theUserIsTheConsoleUserForRootOnly();
    void theLoginScreenIsNobody();
    void anAnswerIsNeverKept();
    void rootsFolderBecomesTheSameFolderInTheConsoleUsersHome();
    void ofThePrivatePrefixTheLastCharacterStays();
    void aPathWithNeitherPrefixIsAppendedWhole();
    void theSystemsCacheFolderEndsWithASlash();
    void aSystemCacheFolderLongerThanTheBufferIsNull();
    void theDesktopOfTheDesktopEnvironmentIsUsed();
    void aUniqueTextIsNewAtEveryCall();
    void aRandomStringOfNoLengthIsEmpty();
    void aRandomStringHasItsLengthAndAlphabet();
    void twoRandomStringsAtTheSameClockReadingsAreTheSame();
    void aTemporaryFileDoesNotExist();
    void backupsAreToldByVolumeAndFolder_data();
    void backupsAreToldByVolumeAndFolder();
};

void ZQLocalPathsTest::foldersOfTheUserLieInTheHome()
{
    compareUserFolders(isRoot() ? QStringLiteral("/root") : QStringLiteral("/home/tester"));
    test::ConsoleSeat seat;
    seat.activate(QStringLiteral("bob"), 1001);
    compareUserFolders(isRoot() ? QStringLiteral("/home/bob") : QStringLiteral("/home/tester"));
}

void ZQLocalPathsTest::foldersOfTheMachineLieAtTheRoot()
{
    test::ConsoleSeat seat;
    seat.activate(QStringLiteral("bob"), 1001);
    using Paths = ZQLocalPaths;
    QCOMPARE(Paths::applicationDirectory(Domain::Local), QStringLiteral("/Applications"));
    QCOMPARE(Paths::adminApplicationDirectory(Domain::Local),
             QStringLiteral("/Applications/Utilities"));
    QCOMPARE(Paths::libraryDirectory(Domain::Local), QStringLiteral("/Library"));
    QCOMPARE(Paths::prefsDirectory(Domain::Local), QStringLiteral("/Library/Preferences"));
    QCOMPARE(Paths::cacheDirectory(Domain::Local), QStringLiteral("/Library/Caches"));
    QCOMPARE(Paths::appSupportDirectory(Domain::Local),
             QStringLiteral("/Library/Application Support"));
    QCOMPARE(Paths::logDirectory(Domain::Local), QStringLiteral("/Library/Logs"));
    QCOMPARE(Paths::systemLibraryDirectory(), QStringLiteral("/System/Library"));
    QCOMPARE(Paths::localDocumentationDirectory(), QStringLiteral("/Library/Documentation"));
}

void ZQLocalPathsTest::noFolderOfThatKindIsNull()
{
    QVERIFY(ZQLocalPaths::documentDirectory(Domain::Local).isNull());
    QVERIFY(ZQLocalPaths::pathForDirectory(SearchPathDirectory::Movies, platform::SystemDomain)
                .isNull());
    QVERIFY(ZQLocalPaths::pathForDirectory(SearchPathDirectory::Library, 0).isNull());
}

void ZQLocalPathsTest::theFirstOfSeveralDomainsIsNotMovedToTheConsoleUser()
{
    test::ConsoleSeat seat;
    seat.activate(QStringLiteral("bob"), 1001);
    const auto both = platform::UserDomain | platform::LocalDomain;
    QCOMPARE(ZQLocalPaths::pathForDirectory(SearchPathDirectory::Library, both),
             isRoot() ? QStringLiteral("/var/root/Library")
                      : QStringLiteral("/home/tester/Library"));
}

void ZQLocalPathsTest::theUserIsTheConsoleUserForRootOnly()
{
    QVERIFY(ZQLocalPaths::currentConsoleUser().isNull());
    QCOMPARE(ZQLocalPaths::username(), isRoot() ? QString() : QStringLiteral("tester"));
    test::ConsoleSeat seat;
    seat.activate(QStringLiteral("bob"), 1001);
    QCOMPARE(ZQLocalPaths::currentConsoleUser(), QStringLiteral("bob"));
    QCOMPARE(ZQLocalPaths::username(), isRoot() ? QStringLiteral("bob") : QStringLiteral("tester"));
}

void ZQLocalPathsTest::theLoginScreenIsNobody()
{
    test::ConsoleSeat seat;
    seat.activate(QStringLiteral("messagebus"), 100, "greeter");
    QVERIFY(ZQLocalPaths::currentConsoleUser().isNull());
    QCOMPARE(ZQLocalPaths::username(), isRoot() ? QString() : QStringLiteral("tester"));
    compareUserFolders(isRoot() ? QStringLiteral("/root") : QStringLiteral("/home/tester"));
}

void ZQLocalPathsTest::anAnswerIsNeverKept()
{
    const test::EnvironmentVariable home("HOME", "/tmp/first");
    compareUserFolders(QStringLiteral("/tmp/first"));
    qputenv("HOME", "/tmp/second");
    compareUserFolders(QStringLiteral("/tmp/second"));
}

void ZQLocalPathsTest::rootsFolderBecomesTheSameFolderInTheConsoleUsersHome()
{
    const auto home = ZQLocalPaths::userDirectory();
    QCOMPARE(ZQLocalPaths::pathInUserDirectory(QStringLiteral("/var/root/Library/Caches")),
             home + QStringLiteral("/Library/Caches"));
    QCOMPARE(ZQLocalPaths::pathInUserDirectory(QStringLiteral("/var/root")), home);
    QCOMPARE(ZQLocalPaths::pathInUserDirectory(QStringLiteral("/var/rootless")),
             home + QStringLiteral("/less"));
}

void ZQLocalPathsTest::ofThePrivatePrefixTheLastCharacterStays()
{
    const auto home = ZQLocalPaths::userDirectory();
    QCOMPARE(ZQLocalPaths::pathInUserDirectory(QStringLiteral("/private/var/root/Library")),
             home + QStringLiteral("/t/Library"));
    QCOMPARE(ZQLocalPaths::pathInUserDirectory(QStringLiteral("/private/var/root")),
             home + QStringLiteral("/t"));
    // What is left after the first prefix is looked at for the second.
    QCOMPARE(
        ZQLocalPaths::pathInUserDirectory(QStringLiteral("/var/root/private/var/root/Library")),
        home + QStringLiteral("/t/Library"));
}

void ZQLocalPathsTest::aPathWithNeitherPrefixIsAppendedWhole()
{
    QCOMPARE(ZQLocalPaths::pathInUserDirectory(QStringLiteral("/opt/root/Library")),
             ZQLocalPaths::userDirectory() + QStringLiteral("/opt/root/Library"));
}

void ZQLocalPathsTest::theSystemsCacheFolderEndsWithASlash()
{
    const test::EnvironmentVariable cache("XDG_CACHE_HOME", "/tmp/cäche");
    QCOMPARE(ZQLocalPaths::darwinCacheDirectory(), QStringLiteral("/tmp/cäche/"));
}

void ZQLocalPathsTest::aSystemCacheFolderLongerThanTheBufferIsNull()
{
    // With slash and NUL one byte more than fits, then what just fits.
    const test::EnvironmentVariable cache("XDG_CACHE_HOME",
                                          QByteArray("/").leftJustified(1023, 'x'));
    QVERIFY(ZQLocalPaths::darwinCacheDirectory().isNull());
    qputenv("XDG_CACHE_HOME", QByteArray("/").leftJustified(1022, 'x'));
    QCOMPARE(ZQLocalPaths::darwinCacheDirectory().size(), 1023);
}

void ZQLocalPathsTest::theDesktopOfTheDesktopEnvironmentIsUsed()
{
    const test::EnvironmentVariable home("HOME", "/tmp/german");
    QVERIFY(QDir().mkpath(QStringLiteral("/tmp/german/.config")));
    QFile file(QStringLiteral("/tmp/german/.config/user-dirs.dirs"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
               "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n"
               "XDG_VIDEOS_DIR=\"$HOME/Videos\"\n");
    file.close();
    QCOMPARE(ZQLocalPaths::desktopDirectory(), isRoot()
                                                   ? QStringLiteral("/tmp/german/Desktop")
                                                   : QStringLiteral("/tmp/german/Schreibtisch"));
    QCOMPARE(ZQLocalPaths::documentDirectory(Domain::User),
             isRoot() ? QStringLiteral("/tmp/german/Documents")
                      : QStringLiteral("/tmp/german/Dokumente"));
    QCOMPARE(ZQLocalPaths::movieDirectory(), QStringLiteral("/tmp/german/Movies"));
}

void ZQLocalPathsTest::aUniqueTextIsNewAtEveryCall()
{
    QVERIFY(!ZQLocalPaths::uuid().isEmpty());
    QVERIFY(ZQLocalPaths::uuid() != ZQLocalPaths::uuid());
}

void ZQLocalPathsTest::aRandomStringOfNoLengthIsEmpty()
{
    QVERIFY(ZQLocalPaths::randomString(0).isEmpty());
    QVERIFY(!ZQLocalPaths::randomString(0).isNull());
}

void ZQLocalPathsTest::aRandomStringHasItsLengthAndAlphabet()
{
    const auto text = ZQLocalPaths::randomString(5000);
    QVERIFY(QRegularExpression(QStringLiteral("^[a-z0-9]{5000}$")).match(text).hasMatch());
    // Every character of the alphabet is used.
    for (const QChar character : QStringLiteral("abcdefghijklmnopqrstuvwxyz0123456789")) {
        QVERIFY(text.contains(character));
    }
}

void ZQLocalPathsTest::twoRandomStringsAtTheSameClockReadingsAreTheSame()
{
    const auto firstTime = std::time(nullptr);
    const auto firstClock = std::clock();
    const auto text = ZQLocalPaths::randomString(20);
    const auto lastClock = std::clock();
    const auto lastTime = std::time(nullptr);
    bool found = false;
    for (auto time = firstTime; time <= lastTime; ++time) {
        for (auto clock = firstClock; clock <= lastClock && !found; ++clock) {
            found = randomText(20, clock, time) == text;
        }
    }
    QVERIFY(found);
}

void ZQLocalPathsTest::aTemporaryFileDoesNotExist()
{
    const auto path = ZQLocalPaths::tempFile();
    QCOMPARE(QFileInfo(path).path(), ZQLocalPaths::tempDirectory());
    const QRegularExpression name(
        QStringLiteral("^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}[a-z0-9]{8}$"));
    QVERIFY2(name.match(QFileInfo(path).fileName()).hasMatch(), qPrintable(path));
    QVERIFY(!QFileInfo::exists(path));
    QVERIFY(QFileInfo(ZQLocalPaths::tempDirectory()).isWritable());
    QVERIFY(ZQLocalPaths::tempFile() != path);
}

void ZQLocalPathsTest::backupsAreToldByVolumeAndFolder_data()
{
    QTest::addColumn<bool>("expected");
    QTest::newRow("/Volumes/TM/Backups.backupdb/Mac/2012") << true;
    QTest::newRow("/Volumes/TM/Backups.backupdb") << true;
    QTest::newRow("/Volumes/Backups.backupdb") << true;
    QTest::newRow("/Backups.backupdb/x") << false;
    QTest::newRow("/Volumes/TM/Backups.backupdbX") << false;
    QTest::newRow("/Volumes/TM/backups.backupdb") << false;
    QTest::newRow("/VolumesX/Backups.backupdb") << false;
    QTest::newRow("/Volumes/TM/Mac") << false;
    QTest::newRow("") << false;
}

void ZQLocalPathsTest::backupsAreToldByVolumeAndFolder()
{
    QFETCH(bool, expected);
    const auto path = QString::fromLatin1(QTest::currentDataTag());
    QCOMPARE(ZQLocalPaths::isPathOnTimeMachineVolume(path), expected);
}

TEST_CLASS(ZQLocalPathsTest, QCoreApplication)
#include "ZQLocalPathsTest.moc"
