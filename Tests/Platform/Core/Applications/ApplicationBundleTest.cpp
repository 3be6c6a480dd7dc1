// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Applications/ApplicationBundle.h"

#include "Platform/Core/Applications/DesktopEntry.h"
#include "Tests/Platform/Core/Applications/ApplicationFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using platform::ApplicationBundle;

namespace {

ApplicationBundle at(const std::string &path)
{
    return ApplicationBundle::withPath(test::text(path));
}

QString latin(const char *text)
{
    return QString::fromLatin1(text);
}

const std::string names("<key>CFBundleDisplayName</key><string>Shown</string>"
                        "<key>CFBundleName</key><string>Short</string>"
                        "<key>CFBundleExecutable</key><string>run</string>"
                        "<key>CFBundleIconFile</key><string>picture</string>");

} // namespace

class ApplicationBundleTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void anAppFolderSaysWhatItIs();
    void slashesAtTheEndAndCapitalsInTheEndingDoNotCount();
    void withoutNamesAFolderIsCalledAsItsFile();
    void aFolderWithoutIdentifierHasNone();
    void whatIsNoTextIsNoIdentifier();
    void aDesktopEntrySaysWhatItIs();
    void theIdIsThePathBelowTheDataFolderWithDashes();
    void theIdIsTheFileNameOutsideTheDataFolders();
    void theIdIsFoundThroughALinkToTheDataFolder();
    void anEntryWithoutNameIsCalledAsItsFile();
    void aLocalisedNameIsShown();
    void whatIsNoApplicationIsNotOpened_data();
    void whatIsNoApplicationIsNotOpened();
    void aPipeDoesNotBlock();
    void hiddenOnesAreOpenedAndNotListed();
};

void ApplicationBundleTest::anAppFolderSaysWhatItIs()
{
    const test::Folder folder;
    test::makeApp(folder / "Player.app", "com.example.player", names);
    const auto found = at(folder / "Player.app");
    QVERIFY(!found.isNull() && found.isFolder() && found.isListed());
    QCOMPARE(found.path(), test::text(folder / "Player.app"));
    QCOMPARE(found.bundleIdentifier(), latin("com.example.player"));
    QCOMPARE(found.displayName(), latin("Shown"));
    QCOMPARE(found.program(), latin("run"));
    QCOMPARE(found.icon(), latin("picture"));
}

void ApplicationBundleTest::slashesAtTheEndAndCapitalsInTheEndingDoNotCount()
{
    const test::Folder folder;
    test::makeApp(folder / "Player.APP", "a.b");
    QCOMPARE(at(folder / "Player.APP//").path(), test::text(folder / "Player.APP"));
}

void ApplicationBundleTest::withoutNamesAFolderIsCalledAsItsFile()
{
    const test::Folder folder;
    test::makeApp(folder / "My Player.app", "a.b");
    QCOMPARE(at(folder / "My Player.app").displayName(), latin("My Player"));
    test::makeApp(folder / "b.app", "a.b", "<key>CFBundleName</key><string>Short</string>");
    QCOMPARE(at(folder / "b.app").displayName(), latin("Short"));
}

void ApplicationBundleTest::aFolderWithoutIdentifierHasNone()
{
    const test::Folder folder;
    test::makeApp(folder / "a.app", "");
    QVERIFY(!at(folder / "a.app").isNull());
    QVERIFY(at(folder / "a.app").bundleIdentifier().isNull());
}

void ApplicationBundleTest::whatIsNoTextIsNoIdentifier()
{
    const test::Folder folder;
    test::makeApp(folder / "a.app", "");
    test::writeFile(folder / "a.app/Contents/Info.plist",
                    "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><integer>5</integer>"
                    "<key>CFBundleName</key><array/></dict></plist>");
    QVERIFY(at(folder / "a.app").bundleIdentifier().isNull());
    QCOMPARE(at(folder / "a.app").displayName(), latin("a"));
}

void ApplicationBundleTest::aDesktopEntrySaysWhatItIs()
{
    const test::DataFolders data;
    const auto path = data.first / "applications/org.example.Player.desktop";
    test::writeFile(path, test::entry("Player", "Icon=player\nGenericName=Media\nComment=Plays\n"));
    const auto found = at(path);
    QVERIFY(!found.isNull() && !found.isFolder() && found.isListed());
    QCOMPARE(found.path(), test::text(path));
    QCOMPARE(found.bundleIdentifier(), latin("org.example.Player.desktop"));
    QCOMPARE(found.displayName(), latin("Player"));
    QCOMPARE(found.program(), latin("true"));
    QCOMPARE(found.icon(), latin("player"));
    QCOMPARE(found.entry().genericName, latin("Media"));
    QCOMPARE(found.entry().comment, latin("Plays"));
}

void ApplicationBundleTest::theIdIsThePathBelowTheDataFolderWithDashes()
{
    const test::DataFolders data;
    test::makeFolder(data.second / "applications/kde");
    test::makeFolder(data.second / "applications/kde/old");
    const auto path = data.second / "applications/kde/old/player.desktop";
    test::writeFile(path, test::entry("Player"));
    QCOMPARE(at(path).bundleIdentifier(), latin("kde-old-player.desktop"));
}

void ApplicationBundleTest::theIdIsTheFileNameOutsideTheDataFolders()
{
    const test::DataFolders data;
    const test::Folder folder;
    test::writeFile(folder / "player.desktop", test::entry("Player"));
    QCOMPARE(at(folder / "player.desktop").bundleIdentifier(), latin("player.desktop"));
    // A data folder is not its "applications" folder, nor one with a longer name.
    test::makeFolder(data.first / "applications2");
    test::writeFile(data.first / "applications2/player.desktop", test::entry("Player"));
    QCOMPARE(at(data.first / "applications2/player.desktop").bundleIdentifier(),
             latin("player.desktop"));
}

void ApplicationBundleTest::theIdIsFoundThroughALinkToTheDataFolder()
{
    const test::DataFolders data;
    const test::Folder folder;
    test::makeFolder(data.first / "applications/sub");
    test::writeFile(data.first / "applications/sub/player.desktop", test::entry("Player"));
    test::makeLink(data.first / "applications", folder / "link");
    QCOMPARE(at(folder / "link/sub/player.desktop").bundleIdentifier(),
             latin("sub-player.desktop"));
}

void ApplicationBundleTest::anEntryWithoutNameIsCalledAsItsFile()
{
    const test::Folder folder;
    test::writeFile(folder / "org.example.Player.desktop",
                    "[Desktop Entry]\nType=Application\nName=\n");
    QCOMPARE(at(folder / "org.example.Player.desktop").displayName(), latin("org.example.Player"));
}

void ApplicationBundleTest::aLocalisedNameIsShown()
{
    const test::EnvironmentVariable locale("LC_ALL", "de_DE.UTF-8");
    const test::Folder folder;
    test::writeFile(folder / "p.desktop", test::entry("Player", "Name[de]=Spieler\n"));
    QCOMPARE(at(folder / "p.desktop").displayName(), latin("Spieler"));
}

void ApplicationBundleTest::whatIsNoApplicationIsNotOpened_data()
{
    QTest::addColumn<QString>("path");
    for (const auto *name :
         {"missing.app", "missing.desktop", "no-information.app", "broken.app", "array.app",
          "file.app", "folder.desktop", "plain-folder", "link.desktop", "nogroup.desktop",
          "dangling.desktop", "huge.desktop", "application.txt", "pane.prefPane", ""}) {
        QTest::newRow(*name == '\0' ? "the folder of them all" : name) << latin(name);
    }
}

void ApplicationBundleTest::whatIsNoApplicationIsNotOpened()
{
    QFETCH(const QString, path);
    const test::Folder folder;
    test::makeFolder(folder / "no-information.app");
    test::makeApp(folder / "broken.app", "a.b");
    test::writeFile(folder / "broken.app/Contents/Info.plist", "<plist><dict><key>CFBu");
    test::makeApp(folder / "array.app", "a.b");
    test::writeFile(folder / "array.app/Contents/Info.plist",
                    "<plist version=\"1.0\"><array/></plist>");
    test::writeFile(folder / "file.app", "no folder");
    test::makeFolder(folder / "folder.desktop");
    test::makeApp(folder / "plain-folder", "a.b");
    test::makeApp(folder / "pane.prefPane", "a.b");
    test::writeFile(folder / "link.desktop", "[Desktop Entry]\nType=Link\nURL=http://a/\n");
    test::writeFile(folder / "nogroup.desktop", "Type=Application\n");
    test::makeLink(folder / "nowhere", folder / "dangling.desktop");
    test::writeFile(folder / "huge.desktop",
                    test::entry("A", std::string(platform::maxDesktopEntrySize, '#')));
    test::writeFile(folder / "application.txt", test::entry("A"));

    const auto found = at(folder / path.toStdString());
    QVERIFY(found.isNull());
    QVERIFY(found.path().isNull() && found.bundleIdentifier().isNull() && !found.isListed());
    QVERIFY(ApplicationBundle::withPath(QString()).isNull());
    QVERIFY(ApplicationBundle::withPath(latin("/tmp/a") + QChar(0) + latin(".desktop")).isNull());
}

void ApplicationBundleTest::aPipeDoesNotBlock()
{
    const test::Folder folder;
    QCOMPARE(::mkfifo((folder / "pipe.desktop").c_str(), 0600), 0);
    QVERIFY(at(folder / "pipe.desktop").isNull());
    test::makeApp(folder / "a.app", "a.b");
    ::unlink((folder / "a.app/Contents/Info.plist").c_str());
    QCOMPARE(::mkfifo((folder / "a.app/Contents/Info.plist").c_str(), 0600), 0);
    QVERIFY(at(folder / "a.app").isNull());
}

void ApplicationBundleTest::hiddenOnesAreOpenedAndNotListed()
{
    const test::EnvironmentVariable desktop("XDG_CURRENT_DESKTOP", "KDE");
    const test::Folder folder;
    for (const auto *line : {"NoDisplay=true\n", "Hidden=true\n", "OnlyShowIn=GNOME;\n",
                             "NotShowIn=KDE;\n", "TryExec=/nothing\n"}) {
        test::writeFile(folder / "a.desktop", test::entry("A", line));
        QVERIFY2(!at(folder / "a.desktop").isNull(), line);
        QVERIFY2(!at(folder / "a.desktop").isListed(), line);
    }
}

TEST_CLASS(ApplicationBundleTest, QCoreApplication)
#include "ApplicationBundleTest.moc"
