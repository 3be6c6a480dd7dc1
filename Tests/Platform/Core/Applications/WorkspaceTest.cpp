// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Applications/Workspace.h"

#include "Tests/Platform/Core/Applications/ApplicationFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using platform::absolutePathForAppBundleWithIdentifier;
using platform::iconForFile;

namespace {

QString pathFor(const char *identifier)
{
    return absolutePathForAppBundleWithIdentifier(QString::fromUtf8(identifier));
}

QIcon iconFor(const std::string &path)
{
    return iconForFile(test::text(path));
}

void writePicture(const std::string &path, int side, const QColor &colour)
{
    QImage image(side, side, QImage::Format_ARGB32);
    image.fill(colour);
    QVERIFY(image.save(test::text(path), "PNG"));
}

// The colour and the width in pixels of what is painted for 16 points.
std::pair<QColor, int> painted(const QIcon &icon, double scale)
{
    QImage screen(QSize(64, 64), QImage::Format_ARGB32);
    screen.setDevicePixelRatio(scale);
    screen.fill(Qt::white);
    QPainter painter(&screen);
    icon.paint(&painter, QRect(0, 0, 16, 16));
    painter.end();
    const auto colour = screen.pixelColor(1, 1);
    auto width = 0;
    while (width < 64 && screen.pixelColor(width, 4) == colour) {
        ++width;
    }
    return {colour, width};
}

// A theme "hicolor" with squares, a colour for each size.
void makeTheme(const std::string &folder)
{
    test::makeFolder(folder + "/hicolor");
    test::writeFile(folder + "/hicolor/index.theme",
                    "[Icon Theme]\nName=Hicolor\nDirectories=16,24,32\n"
                    "[16]\nSize=16\nType=Fixed\n[24]\nSize=24\nType=Fixed\n"
                    "[32]\nSize=32\nType=Fixed\n");
    const QList<std::pair<int, QColor>> sizes{{16, Qt::red}, {24, Qt::green}, {32, Qt::blue}};
    for (const auto &[side, colour] : sizes) {
        const auto name = folder + "/hicolor/" + std::to_string(side);
        test::makeFolder(name);
        writePicture(name + "/ostrel-test-player.png", side, colour);
    }
}

} // namespace

class WorkspaceTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void anEntryIsFoundWithAndWithoutItsEnding();
    void anIdThatEndsInDesktopItselfIsFound();
    void anUnknownIdentifierHasNoPath();
    void subfoldersBecomeDashes();
    void theFirstDataFolderWins();
    void aHiddenEntryHidesThoseBehindIt();
    void aBrokenEntryDoesNotHideThoseBehindIt();
    void anEntryWithoutItsProgramIsNotInstalled();
    void oneThatMenusLeaveOutIsFound();
    void appFoldersAreFoundByTheirIdentifier();
    void anEntryGoesBeforeAnAppFolder();
    void changesAreSeenAtOnce();
    void anAppFolderIsFoundWhenItsInformationArrives();
    void otherDataFoldersAreSeenAtOnce();
    void dataFoldersThatDoNotExistAreWatchedToo();
    void aLinkThatLeadsIntoItselfIsSurvived();
    void anIconComesFromTheTheme();
    void anIconIsSharpAtEveryScale_data();
    void anIconIsSharpAtEveryScale();
    void anIconComesFromAnAbsolutePath();
    void anIconComesFromTheResources_data();
    void anIconComesFromTheResources();
    void whatHasNoIconHasNone_data();
    void whatHasNoIconHasNone();
    void anEntryThatNamesAnotherIconShowsIt();
    void fiveHundredRowsAreFound();
    void thousandsOfEntriesAreFound();
};

void WorkspaceTest::initTestCase()
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    // As the settings applications have it, and Qt 6 always.
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
}

void WorkspaceTest::anEntryIsFoundWithAndWithoutItsEnding()
{
    const test::DataFolders data;
    const auto path = data.first / "applications/vlc.desktop";
    test::writeFile(path, test::entry("VLC"));
    QCOMPARE(pathFor("vlc"), test::text(path));
    QCOMPARE(pathFor("vlc.desktop"), test::text(path));
    QVERIFY(pathFor("VLC").isNull());
}

void WorkspaceTest::anIdThatEndsInDesktopItselfIsFound()
{
    const test::DataFolders data;
    const auto path = data.first / "applications/org.example.desktop.desktop";
    test::writeFile(path, test::entry("Example"));
    QCOMPARE(pathFor("org.example.desktop"), test::text(path));
    QCOMPARE(pathFor("org.example.desktop.desktop"), test::text(path));
}

void WorkspaceTest::anUnknownIdentifierHasNoPath()
{
    const test::DataFolders data;
    test::writeFile(data.first / "outside.desktop", test::entry("A"));
    for (const auto *identifier : {"", "unknown", "outside", "../outside", "/etc/passwd", "."}) {
        QVERIFY2(pathFor(identifier).isNull(), identifier);
    }
    QVERIFY(absolutePathForAppBundleWithIdentifier(QString()).isNull());
}

void WorkspaceTest::subfoldersBecomeDashes()
{
    const test::DataFolders data;
    test::makeFolder(data.second / "applications/kde");
    const auto path = data.second / "applications/kde/player.desktop";
    test::writeFile(path, test::entry("Player"));
    QCOMPARE(pathFor("kde-player"), test::text(path));
    QVERIFY(pathFor("player").isNull());
}

void WorkspaceTest::theFirstDataFolderWins()
{
    const test::DataFolders data;
    for (const auto *folder : {&data.second, &data.first, &data.user}) {
        const auto path = *folder / "applications/a.desktop";
        test::writeFile(path, test::entry("A"));
        QCOMPARE(pathFor("a"), test::text(path));
    }
}

void WorkspaceTest::aHiddenEntryHidesThoseBehindIt()
{
    const test::DataFolders data;
    test::writeFile(data.first / "applications/a.desktop", test::entry("A"));
    test::writeFile(data.user / "applications/a.desktop", test::entry("A", "Hidden=true\n"));
    QVERIFY(pathFor("a").isNull());
}

void WorkspaceTest::aBrokenEntryDoesNotHideThoseBehindIt()
{
    const test::DataFolders data;
    const auto path = data.first / "applications/a.desktop";
    test::writeFile(path, test::entry("A"));
    test::writeFile(data.user / "applications/a.desktop", "rubbish");
    QCOMPARE(pathFor("a"), test::text(path));
}

void WorkspaceTest::anEntryWithoutItsProgramIsNotInstalled()
{
    const test::DataFolders data;
    test::writeFile(data.first / "applications/a.desktop", test::entry("A", "TryExec=/nothing\n"));
    QVERIFY(pathFor("a").isNull());
}

void WorkspaceTest::oneThatMenusLeaveOutIsFound()
{
    const test::DataFolders data;
    test::writeFile(data.first / "applications/a.desktop", test::entry("A", "NoDisplay=true\n"));
    QVERIFY(!pathFor("a").isNull());
}

void WorkspaceTest::appFoldersAreFoundByTheirIdentifier()
{
    const test::DataFolders data;
    test::makeFolder("/Applications/Suite");
    test::makeApp("/Applications/Suite/One.app", "com.example.one");
    QCOMPARE(pathFor("com.example.one"), QStringLiteral("/Applications/Suite/One.app"));
    const auto own = (::getuid() == 0 ? std::string("/var/root") : qgetenv("HOME").toStdString()) +
                     "/Applications";
    test::makeFolder(own);
    test::makeApp(own + "/Two.app", "com.example.one");
    QCOMPARE(pathFor("com.example.one"), test::text(own + "/Two.app"));
    QVERIFY(pathFor("com.example.One").isNull());
}

void WorkspaceTest::anEntryGoesBeforeAnAppFolder()
{
    const test::DataFolders data;
    test::makeApp("/Applications/A.app", "com.example.both");
    QCOMPARE(pathFor("com.example.both"), QStringLiteral("/Applications/A.app"));
    const auto path = data.second / "applications/com.example.both.desktop";
    test::writeFile(path, test::entry("A"));
    QCOMPARE(pathFor("com.example.both"), test::text(path));
}

void WorkspaceTest::changesAreSeenAtOnce()
{
    const test::DataFolders data;
    const auto path = data.first / "applications/a.desktop";
    for (int i = 0; i < 50; ++i) {
        QVERIFY(pathFor("a").isNull());
        test::writeFile(path, test::entry("A"));
        QCOMPARE(pathFor("a"), test::text(path));
        test::writeFile(path, test::entry("A", "Hidden=true\n"));
        QVERIFY(pathFor("a").isNull());
        QCOMPARE(::unlink(path.c_str()), 0);
    }
}

void WorkspaceTest::anAppFolderIsFoundWhenItsInformationArrives()
{
    const test::DataFolders data;
    test::makeFolder("/Applications/Late.app");
    QVERIFY(pathFor("com.example.late").isNull());
    QTest::qWait(50);
    QVERIFY(pathFor("com.example.late").isNull());
    test::makeApp("/Applications/Late.app", "com.example.late");
    QCOMPARE(pathFor("com.example.late"), QStringLiteral("/Applications/Late.app"));
}

void WorkspaceTest::otherDataFoldersAreSeenAtOnce()
{
    const test::DataFolders data;
    test::writeFile(data.first / "applications/a.desktop", test::entry("A"));
    QVERIFY(!pathFor("a").isNull());
    {
        const test::DataFolders other;
        QVERIFY(pathFor("a").isNull());
    }
    QVERIFY(!pathFor("a").isNull());
}

void WorkspaceTest::dataFoldersThatDoNotExistAreWatchedToo()
{
    const test::Folder folder;
    const test::EnvironmentVariable dirs("XDG_DATA_DIRS",
                                         QByteArray::fromStdString(folder / "later"));
    QVERIFY(pathFor("a").isNull());
    QTest::qWait(50);
    QVERIFY(pathFor("a").isNull());
    test::makeFolder(folder / "later");
    test::makeFolder(folder / "later/applications");
    test::writeFile(folder / "later/applications/a.desktop", test::entry("A"));
    QVERIFY(!pathFor("a").isNull());
}

void WorkspaceTest::aLinkThatLeadsIntoItselfIsSurvived()
{
    const test::DataFolders data;
    test::makeLink(".", data.first / "applications/one");
    test::makeLink(".", data.first / "applications/two");
    const auto path = data.first / "applications/a.desktop";
    test::writeFile(path, test::entry("A"));
    QCOMPARE(pathFor("a"), test::text(path));
}

void WorkspaceTest::anIconComesFromTheTheme()
{
    const test::DataFolders data;
    const test::Folder icons;
    makeTheme(icons.path());
    QIcon::setThemeSearchPaths({test::text(icons.path())});
    QIcon::setThemeName(QStringLiteral("hicolor"));
    const auto path = data.first / "applications/a.desktop";
    for (const auto *name : {"ostrel-test-player", "ostrel-test-player.png"}) {
        test::writeFile(path, test::entry("A", std::string("Icon=") + name + "\n"));
        QCOMPARE(painted(iconFor(path), 1).first, QColor(Qt::red));
    }
}

void WorkspaceTest::anIconIsSharpAtEveryScale_data()
{
    QTest::addColumn<double>("scale");
    QTest::addColumn<QColor>("colour");
    QTest::newRow("1") << 1.0 << QColor(Qt::red);
    QTest::newRow("1.5") << 1.5 << QColor(Qt::green);
    QTest::newRow("2") << 2.0 << QColor(Qt::blue);
}

void WorkspaceTest::anIconIsSharpAtEveryScale()
{
    QFETCH(const double, scale);
    QFETCH(const QColor, colour);
    const test::DataFolders data;
    const test::Folder icons;
    makeTheme(icons.path());
    QIcon::setThemeSearchPaths({test::text(icons.path())});
    QIcon::setThemeName(QStringLiteral("hicolor"));
    const auto path = data.first / "applications/a.desktop";
    test::writeFile(path, test::entry("A", "Icon=ostrel-test-player\n"));
    const auto [seen, width] = painted(iconFor(path), scale);
    QCOMPARE(seen, colour);
    QCOMPARE(width, qRound(16 * scale));
}

void WorkspaceTest::anIconComesFromAnAbsolutePath()
{
    const test::Folder folder;
    writePicture(folder / "icon.png", 64, Qt::magenta);
    test::writeFile(folder / "a.desktop", test::entry("A", "Icon=" + (folder / "icon.png") + "\n"));
    for (const auto scale : {1.0, 1.5, 2.0}) {
        const auto [colour, width] = painted(iconFor(folder / "a.desktop"), scale);
        QCOMPARE(colour, QColor(Qt::magenta));
        QCOMPARE(width, qRound(16 * scale));
    }
}

void WorkspaceTest::anIconComesFromTheResources_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("with its ending") << QStringLiteral("picture.png");
    QTest::newRow("without") << QStringLiteral("picture");
}

void WorkspaceTest::anIconComesFromTheResources()
{
    QFETCH(const QString, name);
    const test::Folder folder;
    test::makeApp(folder / "A.app", "a.b",
                  "<key>CFBundleIconFile</key><string>" + name.toStdString() + "</string>");
    writePicture(folder / "A.app/Contents/Resources/picture.png", 32, Qt::cyan);
    QCOMPARE(painted(iconFor(folder / "A.app"), 1).first, QColor(Qt::cyan));
    QCOMPARE(painted(iconFor(folder / "A.app/"), 1).first, QColor(Qt::cyan));
}

void WorkspaceTest::whatHasNoIconHasNone_data()
{
    QTest::addColumn<QString>("name");
    for (const auto *name : {"none", "unknown", "missing", "pipe", "text", "huge", "relative"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

void WorkspaceTest::whatHasNoIconHasNone()
{
    QFETCH(const QString, name);
    const test::Folder folder;
    writePicture(folder / "good.png", 16, Qt::red);
    QCOMPARE(::mkfifo((folder / "pipe.png").c_str(), 0600), 0);
    test::writeFile(folder / "text.png", "no picture");
    // The head of a picture of 60000 by 60000 pixels.
    test::writeFile(folder / "huge.xpm", "/* XPM */\nstatic char *a[] = {\n\"60000 60000 1 1\",\n"
                                         "\"a c #000000\",\n\"aaa\"};\n");
    const auto at = [&](const char *file) { return "Icon=" + (folder / file) + "\n"; };
    const std::map<QString, std::string> lines{
        {QStringLiteral("none"), ""},
        {QStringLiteral("unknown"), "Icon=no such icon at all\n"},
        {QStringLiteral("missing"), at("missing.png")},
        {QStringLiteral("pipe"), at("pipe.png")},
        {QStringLiteral("text"), at("text.png")},
        {QStringLiteral("huge"), at("huge.xpm")},
        {QStringLiteral("relative"), "Icon=../good.png\n"},
    };
    test::writeFile(folder / "a.desktop", test::entry("A", lines.at(name)));
    QVERIFY(iconFor(folder / "a.desktop").isNull());

    test::makeApp(folder / "A.app", "a.b",
                  "<key>CFBundleIconFile</key><string>../../../good.png</string>");
    QVERIFY(iconFor(folder / "A.app").isNull());
    QVERIFY(iconFor(folder / "good.png").isNull());
    QVERIFY(iconFor(folder / "vanished.desktop").isNull());
    QVERIFY(iconForFile(QString()).isNull());
}

void WorkspaceTest::anEntryThatNamesAnotherIconShowsIt()
{
    const test::Folder folder;
    writePicture(folder / "one.png", 16, Qt::red);
    writePicture(folder / "two.png", 16, Qt::blue);
    const auto path = folder / "a.desktop";
    test::writeFile(path, test::entry("A", "Icon=" + (folder / "one.png") + "\n"));
    QCOMPARE(painted(iconFor(path), 1).first, QColor(Qt::red));
    test::writeFile(path, test::entry("A", "Icon=" + (folder / "two.png") + "\n"));
    QCOMPARE(painted(iconFor(path), 1).first, QColor(Qt::blue));
    QCOMPARE(::unlink(path.c_str()), 0);
    QVERIFY(iconFor(path).isNull());
}

void WorkspaceTest::fiveHundredRowsAreFound()
{
    const test::DataFolders data;
    for (int i = 0; i < 500; ++i) {
        test::writeFile(data.first / ("applications/a" + std::to_string(i) + ".desktop"),
                        test::entry("A", "Icon=ostrel-unknown" + std::to_string(i) + "\n"));
    }
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 500; ++i) {
            const auto path = pathFor(QByteArray("a" + QByteArray::number(i)).constData());
            QVERIFY(!path.isNull());
            iconForFile(path);
        }
    }
}

void WorkspaceTest::thousandsOfEntriesAreFound()
{
    const test::DataFolders data;
    for (int i = 0; i < 5000; ++i) {
        test::writeFile(data.first / ("applications/a" + std::to_string(i) + ".desktop"),
                        test::entry("A"));
    }
    QVERIFY(!pathFor("a4999").isNull());
}

TEST_CLASS(WorkspaceTest, QApplication)
#include "WorkspaceTest.moc"
