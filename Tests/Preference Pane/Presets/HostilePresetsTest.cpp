// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Ostrel/PresetFiles.h"
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Platform/Desktop/ApplicationPanel/ApplicationPanel.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"
#include "Tests/Preference Pane/Presets/PageFixture.h"
#include "Tests/Support/AlertWatcher.h"
#include "Tests/Support/TestProgram.h"

#include <QDir>
#include <QLabel>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

// Presets that somebody made to stop the pane: it opens, shows what fits, and loses nothing.
class HostilePresetsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void aLongTextIsShownShortAndKeptWhole();
    void aShortcutThatIsNoTextIsShownShortToo_data();
    void aShortcutThatIsNoTextIsShownShortToo();
    void aLongNameIsAskedForShort();
    void aToolTipIsPlainText();
    void ofManyIdentifiersTheFirstOnesAreLookedUp();
    void aFolderOfManyAndOddFilesOpens();
    void largeFilesAreListedWithoutIdentifiers();
    void aFileAboveTheLimitIsNotOpenedAndStaysAsItIs();
    void anImportAboveALimitIsRefusedWithTheLimit_data();
    void anImportAboveALimitIsRefusedWithTheLimit();
    void manyRefusedFilesAreOneAlert();
    void manyTitlesThatExistAreOneQuestion();
    void twoFilesOfOneTitleAreBothImported();
};

namespace {

constexpr int shown = 1000; // more than any text of a table has
constexpr int mebibyte = 1024 * 1024;

const QString unreadable = QStringLiteral("This preset cannot be read.");
const QString play = QStringLiteral("play");
const QString val = QStringLiteral("val");

QVariantMap presetWith(const QVariantMap &entry)
{
    return {{QStringLiteral("keys"), QVariantMap{{play, entry}}}};
}

QVariantMap entryOf(const QString &title, const QString &key)
{
    return PresetFixture::user(title).value(QStringLiteral("keys")).toMap().value(key).toMap();
}

QStringList identifiers(int count)
{
    QStringList list;
    for (int number = 0; number < count; ++number) {
        list.append(QStringLiteral("org.example.%1").arg(number));
    }
    return list;
}

void makeApplication(const QString &identifier)
{
    const QString path = QStringLiteral("/Applications/Player.app/Contents/");
    QDir().mkpath(path + QStringLiteral("Resources"));
    QImage picture(16, 16, QImage::Format_RGB32);
    picture.fill(Qt::red);
    picture.save(path + QStringLiteral("Resources/icon.png"));
    platform::writeDictionaryToFile({{QStringLiteral("CFBundleIdentifier"), identifier},
                                     {QStringLiteral("CFBundleIconFile"), QStringLiteral("icon")}},
                                    path + QStringLiteral("Info.plist"));
}

QString fileNamed(const QTemporaryDir &folder, const QString &name, const QByteArray &bytes)
{
    QFile file(folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("cannot write a file");
    }
    return file.fileName();
}

const QByteArray good = "<plist><dict><key>keys</key><dict/></dict></plist>";

} // namespace

void HostilePresetsTest::initTestCase()
{
    makeApplication(QStringLiteral("org.example.0"));
}

void HostilePresetsTest::aLongTextIsShownShortAndKeptWhole()
{
    const PresetFixture fixture;
    const QString text(5 * mebibyte, QLatin1Char('x'));
    PresetFixture::writeUser(QStringLiteral("A"), presetWith({{val, text}}));
    Page page(fixture);
    page.show();
    QVERIFY(page.shortcut(0).startsWith(QStringLiteral("xxx")));
    QVERIFY(page.shortcut(0).size() < shown);
    QVERIFY(page.shortcut(0).endsWith(QChar(0x2026)));
    page.keys()->selectOnlyRow(1);
    page->panel()->keyDown(1, 0);
    QCOMPARE(entryOf(QStringLiteral("A"), play).value(val).toString(), text);
    QCOMPARE(entryOf(QStringLiteral("A"), QStringLiteral("stop")).value(val).toString(),
             QStringLiteral("S"));
}

void HostilePresetsTest::aShortcutThatIsNoTextIsShownShortToo_data()
{
    QTest::addColumn<QVariant>("value");
    QVariantList numbers;
    QVariantMap map;
    for (int number = 0; number < 200000; ++number) {
        numbers.append(number);
        map.insert(QString::number(number), number);
    }
    QTest::newRow("array") << QVariant(numbers);
    QTest::newRow("array in an array") << QVariant(QVariantList{QVariant(numbers), 1});
    QTest::newRow("dictionary") << QVariant(map);
}

void HostilePresetsTest::aShortcutThatIsNoTextIsShownShortToo()
{
    QFETCH(const QVariant, value);
    const PresetFixture fixture;
    PresetFixture::writeUser(QStringLiteral("A"), presetWith({{val, value}}));
    Page page(fixture);
    page.show();
    QVERIFY(page.shortcut(0).size() < shown);
    QVERIFY(page.shortcut(0).contains(QStringLiteral("1")));
    page.keys()->selectOnlyRow(1);
    page->panel()->keyDown(1, 0);
    QCOMPARE(entryOf(QStringLiteral("A"), play).value(val), value);
}

// What a preset says of a key goes into the row, its name too.
void HostilePresetsTest::aLongNameIsAskedForShort()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(
        QStringLiteral("A"),
        presetWith({{QStringLiteral("name"), QString(mebibyte, QLatin1Char('n'))},
                    {QStringLiteral("val"), QString(mebibyte, QLatin1Char('v'))}}));
    Page page(fixture);
    page.show();
    page.keys()->selectOnlyRow(0);
    page->editor()->changeKeyboardShortcut();
    const QString description = page->panel()->accessibleDescription();
    QVERIFY(description.contains(QStringLiteral("vvv")));
    QVERIFY(description.size() < shown);
    QVERIFY(page->panel()->accessibleName().contains(QStringLiteral("nnn")));
    QVERIFY(page->panel()->accessibleName().size() < shown);
}

void HostilePresetsTest::aToolTipIsPlainText()
{
    const PresetFixture fixture;
    QVariantMap entry = shortcutEntry(QStringLiteral("S"), 1, 0);
    const QVariantMap same = entry;
    entry[QStringLiteral("name")] = QStringLiteral("<img src=\"/etc/hostname\">");
    PresetFixture::writeUser(
        QStringLiteral("A"),
        {{QStringLiteral("keys"), QVariantMap{{play, entry}, {QStringLiteral("stop"), same}}}});
    Page page(fixture);
    page.show();
    const auto index = page.keys()->model()->index(1, 1);
    const QString tip = index.data(Qt::ToolTipRole).toString();
    QVERIFY2(tip.contains(QStringLiteral("&lt;img")), qPrintable(tip));
    QVERIFY(index.data(Qt::AccessibleDescriptionRole).toString().contains(QStringLiteral("<img")));
}

void HostilePresetsTest::ofManyIdentifiersTheFirstOnesAreLookedUp()
{
    const PresetFixture fixture;
    PresetFixture::writeUser(QStringLiteral("First"),
                             {{QStringLiteral("bundleids"), identifiers(200000)}});
    auto list = identifiers(200);
    std::reverse(list.begin(), list.end());
    PresetFixture::writeUser(QStringLiteral("Last"), {{QStringLiteral("bundleids"), list}});
    Page page(fixture);
    page.show();
    auto *model = page.applications()->model();
    QVERIFY(!model->index(0, 0).data(Qt::DecorationRole).isNull());
    QVERIFY(model->index(1, 0).data(Qt::DecorationRole).isNull());
    // Whether an application has a preset is found out from all of them.
    QFile::remove(PresetFixture::userPath(QStringLiteral("First")));
    platform::AlertDescription said;
    const test::AlertWatcher answer([&said](platform::AlertPanel &alert) {
        said = alert.description();
        test::click(alert, "defaultButton");
    });
    page->browser()->appBrowseDidEnd(nullptr, platform::PanelOKButton,
                                     QStringLiteral("/Applications/Player.app"));
    QCOMPARE(said.messageText,
             QStringLiteral("A layout preset already exists for this application"));
}

void HostilePresetsTest::aFolderOfManyAndOddFilesOpens()
{
    const PresetFixture fixture;
    for (int number = 0; number < 3000; ++number) {
        PresetFixture::writeUserBytes(
            QStringLiteral("N%1.okl").arg(number, 4, 10, QLatin1Char('0')), good);
    }
    const QByteArray folder = QFile::encodeName(presets::userFolder());
    QCOMPARE(::mkfifo((folder + "/A pipe.okl").constData(), 0600), 0);
    QVERIFY(QDir(presets::userFolder()).mkdir(QStringLiteral("B folder.okl")));
    QCOMPARE(::symlink("nowhere", (folder + "/C nowhere.okl").constData()), 0);
    QCOMPARE(::symlink("D itself.okl", (folder + "/D itself.okl").constData()), 0);
    QCOMPARE(::symlink("/dev/zero", (folder + "/E endless.okl").constData()), 0);
    Page page(fixture);
    page.show();
    QCOMPARE(page.shownTitles().size(), 3005);
    const auto *hint = page.control<QLabel>("keyHint");
    for (int row = 0; row < 6; ++row) {
        page.applications()->selectOnlyRow(row);
        QCOMPARE(hint->text().startsWith(unreadable), row < 5);
        page.keys()->selectOnlyRow(0);
        page->panel()->keyDown(1, 0);
        QCOMPARE(hint->text().startsWith(unreadable), row < 5);
    }
}

void HostilePresetsTest::largeFilesAreListedWithoutIdentifiers()
{
    const PresetFixture fixture;
    const QByteArray head = "<plist><dict><key>bundleid</key><string>a</string></dict></plist>";
    const QByteArray large = head + QByteArray(12 * mebibyte, ' ');
    PresetFixture::writeUserBytes(QStringLiteral("1.okl"), large);
    PresetFixture::writeUserBytes(QStringLiteral("2.okl"), large);
    PresetFixture::writeUserBytes(QStringLiteral("3.okl"), large);
    PresetFixture::writeUserBytes(QStringLiteral("4.okl"), head);
    Page page(fixture);
    page.show();
    QList<int> counts;
    for (const auto &row : page->browser()->dataArray()) {
        counts.append(static_cast<int>(row.bundleIDs.size()));
    }
    QCOMPARE(counts, QList<int>({1, 1, 0, 1}));
}

void HostilePresetsTest::aFileAboveTheLimitIsNotOpenedAndStaysAsItIs()
{
    const PresetFixture fixture;
    const QByteArray bytes = good + QByteArray(17 * mebibyte, ' ');
    PresetFixture::writeUserBytes(QStringLiteral("A.okl"), bytes);
    Page page(fixture);
    page.show();
    const auto *hint = page.control<QLabel>("keyHint");
    QVERIFY(hint->text().startsWith(unreadable));
    page.keys()->selectOnlyRow(0);
    page->panel()->keyDown(1, 0);
    QCOMPARE(PresetFixture::userBytes(QStringLiteral("A")), bytes);
}

void HostilePresetsTest::anImportAboveALimitIsRefusedWithTheLimit_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("limit");
    const auto preset = [](const QVariantMap &more) {
        QVariantMap map = more;
        map.insert(QStringLiteral("keys"), more.value(QStringLiteral("keys"), QVariantMap()));
        return platform::propertyListToXml(map);
    };
    const QString longText(5000, QLatin1Char('x'));
    QTest::newRow("size") << good + QByteArray(mebibyte, ' ') << QStringLiteral("1 MB");
    QTest::newRow("identifiers") << preset({{QStringLiteral("bundleids"), identifiers(2000)}})
                                 << QStringLiteral("1,000 applications");
    QTest::newRow("name") << preset({{QStringLiteral("name"), longText}})
                          << QStringLiteral("500 characters");
    QTest::newRow("identifier") << preset({{QStringLiteral("bundleid"), longText}})
                                << QStringLiteral("500 characters");
    QTest::newRow("an identifier") << preset({{QStringLiteral("bundleids"), QStringList{longText}}})
                                   << QStringLiteral("500 characters");
    QTest::newRow("shortcut") << preset(presetWith({{val, longText}}))
                              << QStringLiteral("500 characters");
    QTest::newRow("old shortcut") << preset(
                                         {{QStringLiteral("keys"), QVariantMap{{play, longText}}}})
                                  << QStringLiteral("500 characters");
}

void HostilePresetsTest::anImportAboveALimitIsRefusedWithTheLimit()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, limit);
    const PresetFixture fixture;
    Page page(fixture);
    page.show();
    const QTemporaryDir folder;
    platform::AlertDescription said;
    const test::AlertWatcher answer([&said](platform::AlertPanel &alert) {
        said = alert.description();
        test::click(alert, "defaultButton");
    });
    page->importPresets({fileNamed(folder, QStringLiteral("A.okl"), bytes)});
    QCOMPARE(answer.count(), 1);
    QVERIFY2(said.informativeText.contains(limit), qPrintable(said.informativeText));
    QVERIFY(page.shownTitles().isEmpty());
}

void HostilePresetsTest::manyRefusedFilesAreOneAlert()
{
    const PresetFixture fixture;
    Page page(fixture);
    page.show();
    const QTemporaryDir folder;
    QStringList paths{fileNamed(folder, QStringLiteral("Good.okl"), good)};
    for (int number = 10; number < 30; ++number) {
        paths.append(fileNamed(folder, QStringLiteral("%1 %@.okl").arg(number), "x"));
    }
    paths.append(fileNamed(folder, QStringLiteral("Last.okl"), good));
    platform::AlertDescription said;
    const test::AlertWatcher answer([&said](platform::AlertPanel &alert) {
        said = alert.description();
        test::click(alert, "defaultButton");
    });
    page->importPresets(paths);
    QCOMPARE(answer.count(), 1);
    QCOMPARE(page.shownTitles(), QStringList({QStringLiteral("Good"), QStringLiteral("Last")}));
    QCOMPARE(said.messageText, QStringLiteral("20 of 22 files were not imported"));
    for (const auto *part : {"“10 %@.okl”: It is not a property list", "“14 %@.okl”", "15 more"}) {
        QVERIFY2(said.informativeText.contains(QString::fromUtf8(part)),
                 qPrintable(said.informativeText));
    }
    QVERIFY(!said.informativeText.contains(QStringLiteral("15 %@.okl")));
}

void HostilePresetsTest::manyTitlesThatExistAreOneQuestion()
{
    const PresetFixture fixture;
    Page page(fixture);
    page.show();
    const QTemporaryDir folder;
    QStringList paths;
    for (int number = 10; number < 30; ++number) {
        const QString name = QStringLiteral("%1 %@.okl").arg(number);
        PresetFixture::writeUserBytes(name, "old");
        paths.append(fileNamed(folder, name, good));
    }
    platform::AlertDescription said;
    QByteArray button = "alternateButton";
    const test::AlertWatcher answer([&](platform::AlertPanel &alert) {
        said = alert.description();
        test::click(alert, button.constData());
    });
    const auto good20 = [] {
        int count = 0;
        for (int number = 10; number < 30; ++number) {
            count += PresetFixture::userBytes(QStringLiteral("%1 %@").arg(number)) == good ? 1 : 0;
        }
        return count;
    };
    page->importPresets(paths);
    QCOMPARE(answer.count(), 1);
    QCOMPARE(said.messageText, QStringLiteral("You already have 20 of these presets"));
    QVERIFY(said.informativeText.contains(QStringLiteral("“10 %@”")));
    QCOMPARE(good20(), 0);
    button = "otherButton";
    page->importPresets(paths);
    QCOMPARE(answer.count(), 2);
    QCOMPARE(good20(), 20);
    QCOMPARE(page.shownTitles().size(), 20);
    button = "defaultButton";
    page->importPresets(paths);
    QCOMPARE(answer.count(), 3);
    QCOMPARE(page.shownTitles().size(), 40);
}

void HostilePresetsTest::twoFilesOfOneTitleAreBothImported()
{
    const PresetFixture fixture;
    Page page(fixture);
    page.show();
    const QTemporaryDir one;
    const QTemporaryDir other;
    page->importPresets({fileNamed(one, QStringLiteral("A.okl"), good),
                         fileNamed(other, QStringLiteral("A.okl"), good + ' ')});
    QCOMPARE(PresetFixture::userBytes(QStringLiteral("A")), good);
    QCOMPARE(PresetFixture::userBytes(QStringLiteral("A 2")), good + ' ');
}

TEST_CLASS(HostilePresetsTest, QApplication)
#include "HostilePresetsTest.moc"
