// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Applications/DesktopEntry.h"

#include "Platform/Core/Basics/MessageLocales.h"
#include "Tests/Support/EnvironmentVariable.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <array>
#include <random>

using platform::DesktopEntry;
using platform::desktopEntryFromData;

namespace {

constexpr auto mutations = 20000; // the same ones in every run

QByteArray withLines(const QByteArray &lines)
{
    return "[Desktop Entry]\nType=Application\n" + lines;
}

DesktopEntry entry(const QByteArray &lines, const QByteArrayList &locales = {})
{
    return desktopEntryFromData(withLines(lines), locales).value_or(DesktopEntry());
}

QString latin(const char *text)
{
    return QString::fromLatin1(text);
}

} // namespace

class DesktopEntryTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void anApplicationNeedsItsGroupAndType_data();
    void anApplicationNeedsItsGroupAndType();
    void keysOfOtherGroupsDoNotCount();
    void spacesAroundTheEqualsSignAndCarriageReturnsDoNotCount();
    void commentsAndLinesWithoutMeaningArePassedOver();
    void theLastOfTwoEqualKeysCounts();
    void escapesAreRead_data();
    void escapesAreRead();
    void aListIsSeparatedBySemicolons();
    void theBestLocaleThatIsThereCounts();
    void localesComeFromTheEnvironment_data();
    void localesComeFromTheEnvironment();
    void flagsAreFalseUnlessTheySayTrue();
    void desktopsAreAskedInTheirOrder();
    void theProgramIsTheFirstWordThatRuns_data();
    void theProgramIsTheFirstWordThatRuns();
    void withoutTheProgramToTryItIsNotInstalled();
    void hugeAndBinaryInputIsHarmless_data();
    void hugeAndBinaryInputIsHarmless();
    void mutatedEntriesAreReadOrRefused();
};

void DesktopEntryTest::anApplicationNeedsItsGroupAndType_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("isEntry");
    QTest::newRow("both") << QByteArray("[Desktop Entry]\nType=Application\n") << true;
    QTest::newRow("no end of line") << QByteArray("[Desktop Entry]\nType=Application") << true;
    QTest::newRow("comment first")
        << QByteArray("# a\n\n[Desktop Entry]\nType=Application") << true;
    QTest::newRow("empty") << QByteArray() << false;
    QTest::newRow("no group") << QByteArray("Type=Application\n") << false;
    QTest::newRow("another group") << QByteArray("[Desktop]\nType=Application\n") << false;
    QTest::newRow("type in another group")
        << QByteArray("[Desktop Entry]\nName=a\n[Other]\nType=Application\n") << false;
    QTest::newRow("no type") << QByteArray("[Desktop Entry]\nName=a\n") << false;
    QTest::newRow("link") << QByteArray("[Desktop Entry]\nType=Link\n") << false;
    QTest::newRow("type in small letters")
        << QByteArray("[Desktop Entry]\nType=application\n") << false;
}

void DesktopEntryTest::anApplicationNeedsItsGroupAndType()
{
    QFETCH(const QByteArray, data);
    QFETCH(const bool, isEntry);
    QCOMPARE(desktopEntryFromData(data, {}).has_value(), isEntry);
}

void DesktopEntryTest::keysOfOtherGroupsDoNotCount()
{
    QCOMPARE(entry("Name=Player\n[Desktop Action New]\nName=New Window\n").name, latin("Player"));
}

void DesktopEntryTest::spacesAroundTheEqualsSignAndCarriageReturnsDoNotCount()
{
    const auto found = entry("Name  =  A player  \r\nIcon\t=a\r\n");
    QCOMPARE(found.name, latin("A player"));
    QCOMPARE(found.icon, latin("a"));
}

void DesktopEntryTest::commentsAndLinesWithoutMeaningArePassedOver()
{
    const auto found = entry("#Name=Comment\n=nothing\nrubbish\n\nName=Player\n");
    QCOMPARE(found.name, latin("Player"));
}

void DesktopEntryTest::theLastOfTwoEqualKeysCounts()
{
    QCOMPARE(entry("Name=One\nName=Two\n").name, latin("Two"));
}

void DesktopEntryTest::escapesAreRead_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<QString>("read");
    QTest::newRow("space") << QByteArray("\\sa") << latin(" a");
    QTest::newRow("line, tab, return") << QByteArray(R"(a\n\t\rb)") << latin("a\n\t\rb");
    QTest::newRow("backslash") << QByteArray("a\\\\nb") << latin("a\\nb");
    QTest::newRow("unknown") << QByteArray("a\\xb") << latin("a\\xb");
    QTest::newRow("at the end") << QByteArray("a\\") << latin("a\\");
    QTest::newRow("semicolon in a text") << QByteArray("a;b") << latin("a;b");
    QTest::newRow("UTF-8") << QByteArray("Gr\xC3\xBC\xC3\x9F") << QString::fromUtf8("Grüß");
}

void DesktopEntryTest::escapesAreRead()
{
    QFETCH(const QByteArray, written);
    QTEST(entry("Name=" + written + "\n").name, "read");
}

void DesktopEntryTest::aListIsSeparatedBySemicolons()
{
    QCOMPARE(entry("Keywords=a;b c;d\\;e;\n").keywords,
             QStringList({latin("a"), latin("b c"), latin("d;e")}));
    QCOMPARE(entry("Keywords=a;b\n").keywords, QStringList({latin("a"), latin("b")}));
    QVERIFY(entry("Keywords=\n").keywords.isEmpty());
}

void DesktopEntryTest::theBestLocaleThatIsThereCounts()
{
    const QByteArray names("Name=plain\nName[sr]=sr\nName[sr@latin]=latin\nName[sr_RS]=RS\n"
                           "Comment=plain\nComment[sr@latin]=latin\nGenericName=plain\n"
                           "GenericName[de]=de\n");
    const auto found = entry(names, {"sr_RS@latin", "sr_RS", "sr@latin", "sr"});
    QCOMPARE(found.name, latin("RS"));
    QCOMPARE(found.comment, latin("latin"));
    QCOMPARE(found.genericName, latin("plain"));
    QCOMPARE(entry(names).name, latin("plain"));
}

void DesktopEntryTest::localesComeFromTheEnvironment_data()
{
    QTest::addColumn<QByteArray>("all");
    QTest::addColumn<QByteArray>("language");
    QTest::addColumn<QByteArrayList>("locales");
    QTest::newRow("C") << QByteArray("C.UTF-8") << QByteArray("de") << QByteArrayList();
    QTest::newRow("POSIX") << QByteArray("POSIX") << QByteArray() << QByteArrayList();
    QTest::newRow("language") << QByteArray("de") << QByteArray() << QByteArrayList({"de"});
    QTest::newRow("country") << QByteArray("de_AT.UTF-8") << QByteArray()
                             << QByteArrayList({"de_AT", "de"});
    QTest::newRow("modifier") << QByteArray("sr_RS.UTF-8@latin") << QByteArray()
                              << QByteArrayList({"sr_RS@latin", "sr_RS", "sr@latin", "sr"});
    QTest::newRow("several languages") << QByteArray("en_GB.UTF-8") << QByteArray("fr:de")
                                       << QByteArrayList({"fr", "de", "en_GB", "en"});
}

void DesktopEntryTest::localesComeFromTheEnvironment()
{
    QFETCH(const QByteArray, all);
    QFETCH(const QByteArray, language);
    const test::EnvironmentVariable variable("LC_ALL", all);
    const test::EnvironmentVariable languages("LANGUAGE", language);
    QTEST(platform::messageLocales(), "locales");
}

void DesktopEntryTest::flagsAreFalseUnlessTheySayTrue()
{
    QVERIFY(!entry("").noDisplay && !entry("").hidden);
    QVERIFY(entry("NoDisplay=true\n").noDisplay);
    QVERIFY(entry("Hidden=1\n").hidden);
    QVERIFY(!entry("Hidden=yes\n").hidden);
    QVERIFY(!entry("NoDisplay=false\n").noDisplay);
}

void DesktopEntryTest::desktopsAreAskedInTheirOrder()
{
    const QStringList kde{latin("KDE")};
    const QStringList both{latin("ubuntu"), latin("GNOME")};
    QVERIFY(entry("").isShownIn(kde));
    QVERIFY(entry("OnlyShowIn=GNOME;\n").isShownIn(both));
    QVERIFY(!entry("OnlyShowIn=GNOME;\n").isShownIn(kde));
    QVERIFY(!entry("OnlyShowIn=\n").isShownIn(kde));
    QVERIFY(!entry("NotShowIn=KDE;XFCE\n").isShownIn(kde));
    QVERIFY(entry("OnlyShowIn=ubuntu\nNotShowIn=GNOME\n").isShownIn(both));
    QVERIFY(!entry("OnlyShowIn=GNOME\nNotShowIn=ubuntu\n").isShownIn(both));
}

void DesktopEntryTest::theProgramIsTheFirstWordThatRuns_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QString>("program");
    QTest::newRow("name") << QByteArray("vlc %U") << latin("vlc");
    QTest::newRow("path") << QByteArray("/usr/bin/vlc %U") << latin("vlc");
    QTest::newRow("environment") << QByteArray("env A=b /opt/x/run --flag") << latin("run");
    QTest::newRow("quotes") << QByteArray("\"/opt/my player/run it\" %f") << latin("run it");
    QTest::newRow("escaped quote") << QByteArray(R"("/opt/a\\"b" %f)") << latin("a\"b");
    QTest::newRow("open quote") << QByteArray("\"/opt/a b") << latin("a b");
    QTest::newRow("nothing") << QByteArray("") << QString();
}

void DesktopEntryTest::theProgramIsTheFirstWordThatRuns()
{
    QFETCH(const QByteArray, command);
    QTEST(entry("Exec=" + command + "\n").program(), "program");
}

void DesktopEntryTest::withoutTheProgramToTryItIsNotInstalled()
{
    QVERIFY(entry("").isInstalled());
    QVERIFY(entry("TryExec=sh\n").isInstalled());
    QVERIFY(entry("TryExec=/bin/sh\n").isInstalled());
    QVERIFY(!entry("TryExec=/bin/nothing-like-it\n").isInstalled());
    QVERIFY(!entry("TryExec=nothing-like-it\n").isInstalled());
    QVERIFY(!entry("TryExec=/etc/passwd\n").isInstalled());
}

void DesktopEntryTest::hugeAndBinaryInputIsHarmless_data()
{
    const auto million = 1000 * 1000;
    QTest::addColumn<QByteArray>("lines");
    QTest::newRow("one long line") << "Name=" + QByteArray(million, 'a');
    QTest::newRow("backslashes") << "Name=" + QByteArray(million, '\\');
    QTest::newRow("a long list") << "Keywords=" + QByteArray(million, ';');
    QTest::newRow("a long key") << QByteArray(million, 'k') + "=v";
    QTest::newRow("many lines") << QByteArray("A=b\n").repeated(million / 4);
    QTest::newRow("many groups") << QByteArray("[\n").repeated(million / 2);
    QTest::newRow("quotes") << "Exec=" + QByteArray("\" ").repeated(million / 2);
    QTest::newRow("zeros") << QByteArray(million, '\0');
    QTest::newRow("no UTF-8") << "Name=" + QByteArray(million, '\xFF');
}

void DesktopEntryTest::hugeAndBinaryInputIsHarmless()
{
    QFETCH(const QByteArray, lines);
    const auto found = desktopEntryFromData(withLines(lines), {"de_DE", "de"});
    QVERIFY(found.has_value());
    QVERIFY(found->program().size() <= lines.size());
}

void DesktopEntryTest::mutatedEntriesAreReadOrRefused()
{
    const QByteArray seed("[Desktop Entry]\nType=Application\nName=Player\nName[de]=Spieler\n"
                          "Keywords=a;b\\;c;\nExec=env A=b \"/opt/a b\" %U\nTryExec=sh\n"
                          "OnlyShowIn=KDE;GNOME;\nHidden=false\n[Desktop Action a]\nName=A\n");
    const std::array<QByteArray, 8> pieces{
        "\n[Desktop Entry]\n", "\\", "\"", ";", "=", "[", "\n", "\xC3"};
    std::mt19937 numbers(20260214);
    const auto below = [&](int bound) {
        return static_cast<int>(numbers() % static_cast<unsigned>(std::max(bound, 1)));
    };
    auto accepted = 0;
    for (auto i = 0; i < mutations; ++i) {
        auto data = seed;
        for (auto left = below(4) + 1; left > 0; --left) {
            const auto at = below(static_cast<int>(data.size()));
            switch (below(4)) {
            case 0:
                data[at] = static_cast<char>(below(256));
                break;
            case 1:
                data.remove(at, below(20) + 1);
                break;
            case 2:
                data.truncate(std::max(at, 1));
                break;
            default:
                data.insert(at, pieces.at(static_cast<std::size_t>(below(8))));
            }
            data += data.isEmpty() ? "[" : "";
        }
        const auto found = desktopEntryFromData(data, {"de"});
        accepted += found ? 1 : 0;
        if (found) {
            // A value is never longer than what is written.
            QVERIFY(found->name.size() <= data.size());
            QVERIFY(found->program().size() <= found->exec.size());
            QVERIFY(found->keywords.size() <= data.count(';') + 1);
            QVERIFY(!found->onlyShowIn || data.contains("OnlyShowIn"));
        }
    }
    QVERIFY2(accepted > mutations / 10, QByteArray::number(accepted).constData());
    QVERIFY2(accepted < mutations, QByteArray::number(accepted).constData());
}

TEST_CLASS(DesktopEntryTest, QCoreApplication)
#include "DesktopEntryTest.moc"
