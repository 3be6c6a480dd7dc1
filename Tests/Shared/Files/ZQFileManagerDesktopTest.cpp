// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Files/FinderInfo.h"
#include "Shared/Files/ZQFileManager.h"
#include "Tests/Support/Children.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/FileTree.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <unistd.h>

#include <cmath>

using test::text;

namespace {

// The user's desktop entries.
std::string entries()
{
    return std::string(::getuid() == 0 ? "/root" : "/home/tester") + "/.local/share/applications/";
}

void makeApplication(const std::string &path, const std::string &program,
                     const std::string &information)
{
    test::makeFolder(path + "/Contents/MacOS");
    test::makeFolder(path + "/Contents/Resources");
    test::makeExecutable(text(path + "/Contents/MacOS/" + program), "#!/bin/sh\n");
    test::writeFile(path + "/Contents/Info.plist",
                    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                    "<key>CFBundleExecutable</key><string>" +
                        program + "</string>" + information + "</dict></plist>\n");
}

} // namespace

class ZQFileManagerDesktopTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aColourIndexHasItsColour_data();
    void aColourIndexHasItsColour();
    void otherIndexesHaveNoColour();
    void aLabelIsSetOnEveryName();
    void theIndexIsTheWholeFlagsWord();
    void anotherFinderFlagAloneIsNoColour();
    void settingALabelKeepsTheOtherFlags();
    void whatIsNotThereHasNoLabelAndTakesNoneSilently();

    void anApplicationIsRegisteredUnderItsIdentifier();
    void aRegistrationIsRenewed();
    void oddNamesAreEscaped();
    void aDesktopEntryIsTakenAsItIs();
    void whatIsNoApplicationIsNotRegistered();
};

void ZQFileManagerDesktopTest::aColourIndexHasItsColour_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<double>("hue");
    QTest::addColumn<double>("saturation");
    QTest::addColumn<double>("brightness");
    QTest::newRow("grey") << 2 << 0.0 << 0.0 << 0.72;
    QTest::newRow("green") << 4 << 0.2056 << 0.5 << 0.85;
    QTest::newRow("purple") << 6 << 0.7917 << 0.26 << 0.86;
    QTest::newRow("blue") << 8 << 0.5789 << 0.56 << 0.98;
    QTest::newRow("yellow") << 10 << 0.1388 << 0.54 << 0.95;
    QTest::newRow("red") << 12 << 0.0083 << 0.54 << 1.0;
    QTest::newRow("orange") << 14 << 0.0888 << 0.52 << 0.98;
}

void ZQFileManagerDesktopTest::aColourIndexHasItsColour()
{
    QFETCH(int, index);
    QFETCH(double, hue);
    QFETCH(double, saturation);
    QFETCH(double, brightness);
    for (const auto either : {index, index + 1}) {
        const auto colour = ZQFileManager::finderColorForColorIndex(either);
        const auto isNear = [](double one, double other) { return std::abs(one - other) < 0.0001; };
        QVERIFY(colour.isValid());
        // Grey has no hue of its own.
        QVERIFY(saturation == 0 || isNear(double{colour.hsvHueF()}, hue));
        QVERIFY(isNear(double{colour.hsvSaturationF()}, saturation));
        QVERIFY(isNear(double{colour.valueF()}, brightness));
        QCOMPARE(colour.alpha(), 255);
    }
}

void ZQFileManagerDesktopTest::otherIndexesHaveNoColour()
{
    for (const auto index : {0, 1, -1, -2, 16, 17, 256, 65535}) {
        QVERIFY(!ZQFileManager::finderColorForColorIndex(index).isValid());
    }
}

void ZQFileManagerDesktopTest::aLabelIsSetOnEveryName()
{
    const test::Folder folder;
    for (const auto &odd : test::oddNames()) {
        test::makeFolder(folder / odd.name);
        const auto path = text(folder / odd.name);
        QCOMPARE(ZQFileManager::finderColorIndexForPath(path), std::uint16_t{0});
        QVERIFY(!ZQFileManager::finderColorForPath(path).isValid());
        ZQFileManager::setFinderColorIndex(12, path);
        QCOMPARE(ZQFileManager::finderColorIndexForPath(path), std::uint16_t{12});
        QCOMPARE(ZQFileManager::finderColorForPath(path),
                 ZQFileManager::finderColorForColorIndex(12));
    }
}

void ZQFileManagerDesktopTest::theIndexIsTheWholeFlagsWord()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    const auto path = text(folder / "file");
    QVERIFY(platform::setFinderFlags(0x400C, path));
    QCOMPARE(ZQFileManager::finderColorIndexForPath(path), std::uint16_t{0x400C});
    QVERIFY(!ZQFileManager::finderColorForPath(path).isValid());
}

void ZQFileManagerDesktopTest::anotherFinderFlagAloneIsNoColour()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    QVERIFY(platform::setFinderFlags(0x0100, text(folder / "file")));
    QVERIFY(!ZQFileManager::finderColorForPath(text(folder / "file")).isValid());
}

void ZQFileManagerDesktopTest::settingALabelKeepsTheOtherFlags()
{
    const test::Folder folder;
    test::writeFile(folder / "file");
    const auto path = text(folder / "file");
    QVERIFY(platform::setFinderFlags(0xFFF1, path));
    ZQFileManager::setFinderColorIndex(0xFFFF, path); // of which bits 1 to 3 count
    QCOMPARE(ZQFileManager::finderColorIndexForPath(path), std::uint16_t{0xFFFF});
    ZQFileManager::setFinderColorIndex(5, path);
    QCOMPARE(ZQFileManager::finderColorIndexForPath(path), std::uint16_t{0xFFF5});
    ZQFileManager::setFinderColorIndex(0, path);
    QCOMPARE(ZQFileManager::finderColorIndexForPath(path), std::uint16_t{0xFFF1});
}

void ZQFileManagerDesktopTest::whatIsNotThereHasNoLabelAndTakesNoneSilently()
{
    const test::Folder folder;
    for (const auto &path : {QString(), text(folder / "missing")}) {
        ZQFileManager::setFinderColorIndex(4, path);
        QCOMPARE(ZQFileManager::finderColorIndexForPath(path), std::uint16_t{0});
        QVERIFY(!ZQFileManager::finderColorForPath(path).isValid());
    }
    QVERIFY(folder.names().isEmpty());
}

void ZQFileManagerDesktopTest::anApplicationIsRegisteredUnderItsIdentifier()
{
    const test::Folder folder;
    const auto path = folder / "Remote.app";
    makeApplication(path, "remote",
                    "<key>CFBundleIdentifier</key><string>com.example.Remote</string>"
                    "<key>CFBundleName</key><string>The Remote</string>"
                    "<key>CFBundleIconFile</key><string>icon</string>");
    test::writeFile(path + "/Contents/Resources/icon.png", "not looked at");
    QVERIFY(ZQFileManager::registerApplicationWithLaunchServices(text(path)));
    const auto entry = entries() + "com.example.Remote.desktop";
    QCOMPARE(test::readFile(entry), "[Desktop Entry]\nType=Application\nVersion=1.5\n"
                                    "Name=The Remote\nTryExec=" +
                                        path + "/Contents/MacOS/remote\nExec=\"" + path +
                                        "/Contents/MacOS/remote\" %F\nIcon=" + path +
                                        "/Contents/Resources/icon.png\n");
}

void ZQFileManagerDesktopTest::aRegistrationIsRenewed()
{
    const test::Folder folder;
    const std::string information =
        "<key>CFBundleIdentifier</key><string>com.example.Renewed</string>";
    makeApplication(folder / "Old.app", "program", information);
    makeApplication(folder / "New.app", "program", information);
    QVERIFY(ZQFileManager::registerApplicationWithLaunchServices(text(folder / "Old.app")));
    QVERIFY(ZQFileManager::registerApplicationWithLaunchServices(text(folder / "New.app/")));
    const auto entry = test::readFile(entries() + "com.example.Renewed.desktop");
    QVERIFY(entry.find("Name=New\n") != std::string::npos);
    QVERIFY(entry.find("Old") == std::string::npos);
}

void ZQFileManagerDesktopTest::oddNamesAreEscaped()
{
    const test::Folder folder;
    const auto path = folder / "a\"b$c%d\\e\nf.app";
    makeApplication(path, "program",
                    "<key>CFBundleIdentifier</key><string>../../com.example/Odd</string>");
    QVERIFY(ZQFileManager::registerApplicationWithLaunchServices(text(path)));
    const auto entry = test::readFile(entries() + "_.._com.example_Odd.desktop");
    QVERIFY(entry.find("Name=a\"b$c%d\\\\e\\nf\n") != std::string::npos);
    // Quoted as a command line's word, then escaped as any value.
    QVERIFY(entry.find("/a\\\\\"b\\\\$c%%d\\\\\\\\e\\nf.app/Contents/MacOS/program\" %F\n") !=
            std::string::npos);
}

void ZQFileManagerDesktopTest::aDesktopEntryIsTakenAsItIs()
{
    const test::Folder folder;
    const test::EnvironmentVariable data("XDG_DATA_HOME",
                                         QByteArray::fromStdString(folder / "data"));
    const std::string entry = "[Desktop Entry]\nType=Application\nName=A\nExec=true\n";
    test::writeFile(folder / "a.desktop", entry);
    QVERIFY(ZQFileManager::registerApplicationWithLaunchServices(text(folder / "a.desktop")));
    const auto registered = folder / "data/applications/a.desktop";
    QCOMPARE(test::readFile(registered), entry);
    QVERIFY(ZQFileManager::registerApplicationWithLaunchServices(text(registered)));
    QCOMPARE(test::readFile(registered), entry);
}

void ZQFileManagerDesktopTest::whatIsNoApplicationIsNotRegistered()
{
    const test::Folder folder;
    const test::EnvironmentVariable data("XDG_DATA_HOME",
                                         QByteArray::fromStdString(folder / "data"));
    test::makeFolder(folder / "Empty.app");
    test::makeFolder(folder / "Folder");
    makeApplication(folder / "Missing.app", "program", "");
    QCOMPARE(::unlink((folder / "Missing.app/Contents/MacOS/program").c_str()), 0);
    test::writeFile(folder / "file.app");
    test::writeFile(folder / "text.desktop", "nothing of the kind");
    for (const auto *name :
         {"Empty.app", "Folder", "Missing.app", "file.app", "text.desktop", "nowhere.app"}) {
        QVERIFY2(!ZQFileManager::registerApplicationWithLaunchServices(text(folder / name)), name);
    }
    QVERIFY(!ZQFileManager::registerApplicationWithLaunchServices(QString()));
    QVERIFY(!test::exists(folder / "data"));
}

TEST_CLASS(ZQFileManagerDesktopTest, QCoreApplication)
#include "ZQFileManagerDesktopTest.moc"
