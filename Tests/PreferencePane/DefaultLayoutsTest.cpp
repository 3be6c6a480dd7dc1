// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PropertyList.h"

#include <QDir>
#include <QRegularExpression>
#include <QSet>
#include <QTest>

namespace {

const QString resources = QStringLiteral(RESOURCES);
const QString bundledResources = QStringLiteral(BUNDLED_RESOURCES);
const QString general = QStringLiteral("General");

constexpr qlonglong shift = 0x20000;
constexpr qlonglong control = 0x40000;
constexpr qlonglong alt = 0x80000;
constexpr qlonglong command = 0x100000;
constexpr qlonglong numericPad = 0x200000;
constexpr qlonglong functionKey = 0x800000;

struct Key {
    QString name;   // what the naming gives it under a US layout
    qlonglong bits; // what every event of it carries, held modifiers apart
};

QMap<qlonglong, Key> usKeys()
{
    QMap<qlonglong, Key> keys;
    const auto row = [&keys](qlonglong code, const char *characters) {
        for (const auto character : QString::fromLatin1(characters)) {
            keys.insert(code++, {QString(character), 0});
        }
    };
    row(0x00, "ASDFHGZXCV");
    row(0x0B, "BQWERYT123465=97-80]OU[IP");
    row(0x25, "LJ'K;\\,/NM.");
    row(0x32, "`");
    const auto named = [&keys](qlonglong bits, const QMap<qlonglong, const char *> &names) {
        for (auto it = names.begin(); it != names.end(); ++it) {
            keys.insert(it.key(), {QLatin1String(it.value()), bits});
        }
    };
    named(0,
          {{0x24, "Enter"}, {0x30, "Tab"}, {0x31, "Space"}, {0x33, "Backspace"}, {0x35, "Escape"}});
    named(functionKey, {{0x7A, "F1"},
                        {0x78, "F2"},
                        {0x63, "F3"},
                        {0x76, "F4"},
                        {0x60, "F5"},
                        {0x61, "F6"},
                        {0x62, "F7"},
                        {0x64, "F8"},
                        {0x65, "F9"},
                        {0x6D, "F10"},
                        {0x67, "F11"},
                        {0x6F, "F12"},
                        {0x73, "Home"},
                        {0x77, "End"},
                        {0x74, "Page Up"},
                        {0x79, "Page Down"}});
    named(functionKey | numericPad,
          {{0x7B, "Left Arrow"}, {0x7C, "Right Arrow"}, {0x7D, "Down Arrow"}, {0x7E, "Up Arrow"}});
    named(numericPad, {{0x41, "."},
                       {0x43, "*"},
                       {0x45, "+"},
                       {0x4B, "/"},
                       {0x4C, "Return"},
                       {0x4E, "-"},
                       {0x51, "="},
                       {0x52, "0"},
                       {0x53, "1"},
                       {0x54, "2"},
                       {0x55, "3"},
                       {0x56, "4"},
                       {0x57, "5"},
                       {0x58, "6"},
                       {0x59, "7"},
                       {0x5B, "8"},
                       {0x5C, "9"}});
    return keys;
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList titles(const QString &folder = resources)
{
    QStringList result;
    const QDir layouts(folder + QStringLiteral("/Default Layouts"));
    for (const auto &entry : layouts.entryInfoList(QDir::Files | QDir::Hidden)) {
        result.append(entry.completeBaseName());
    }
    return result;
}

QString layoutPath(const QString &title, const QString &folder = resources)
{
    return folder + QStringLiteral("/Default Layouts/") + title + QStringLiteral(".okl");
}

QVariantMap layout(const QString &title)
{
    return platform::dictionaryFromFile(layoutPath(title)).value_or(QVariantMap());
}

QVariantMap shortcuts(const QString &title)
{
    return layout(title).value(QStringLiteral("keys")).toMap();
}

qlonglong number(const QVariant &shortcut, const char *key)
{
    return shortcut.toMap().value(QLatin1String(key), -1).toLongLong();
}

QString text(const QVariant &dictionary, const char *key)
{
    return dictionary.toMap().value(QLatin1String(key)).toString();
}

bool isWholeNumber(const QVariant &value)
{
    return value.userType() == QMetaType::LongLong;
}

QVariantList remoteKeys()
{
    const auto list =
        platform::propertyListFromData(contents(resources + QStringLiteral("/keynames.plist")));
    return list ? list->toList() : QVariantList();
}

} // namespace

// What the pane ships: the keys of the remote and a preset for each of many applications.
class DefaultLayoutsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyKeyOfTheRemoteHasAnIdentifierAndAName();
    void noKeyOfTheRemoteIsThereTwice();
    void atLeastTwelveApplicationsHaveAPreset();
    void noApplicationHasTwoPresets();
    void aPresetHasTheRequiredEntriesAndNoOthers_data() { addTitles(); }
    void aPresetHasTheRequiredEntriesAndNoOthers();
    void onlyTheGeneralPresetHasNoIdentifiers_data() { addTitles(); }
    void onlyTheGeneralPresetHasNoIdentifiers();
    void aPresetUsesOnlyKeysOfTheRemote_data() { addTitles(); }
    void aPresetUsesOnlyKeysOfTheRemote();
    void aShortcutHasATextAKeyCodeAndModifiers_data() { addTitles(); }
    void aShortcutHasATextAKeyCodeAndModifiers();
    void theTextIsWhatTheNamingGivesUnderAUsLayout_data() { addTitles(); }
    void theTextIsWhatTheNamingGivesUnderAUsLayout();
    void theModifiersHoldTheBitsOfTheKeyItself_data() { addTitles(); }
    void theModifiersHoldTheBitsOfTheKeyItself();
    void noTwoKeysOfAPresetShareAShortcut_data() { addTitles(); }
    void noTwoKeysOfAPresetShareAShortcut();
    void rewritingAPresetChangesNoByte_data() { addTitles(); }
    void rewritingAPresetChangesNoByte();
    void theBundleHoldsTheseFilesAndNoOthers();
    void theDocumentNamesEveryKeyAndEveryPreset();

private:
    static void addTitles();
    QMap<qlonglong, Key> m_keys = usKeys();
};

void DefaultLayoutsTest::addTitles()
{
    QTest::addColumn<QString>("title");
    for (const auto &title : titles()) {
        QTest::newRow(qPrintable(title)) << title;
    }
}

void DefaultLayoutsTest::everyKeyOfTheRemoteHasAnIdentifierAndAName()
{
    const auto keys = remoteKeys();
    QVERIFY2(keys.size() >= 50, qPrintable(QString::number(keys.size())));
    const QRegularExpression form(QStringLiteral("^[a-z]+(-[a-z0-9]+)*$"));
    for (const auto &key : keys) {
        const auto identifier = text(key, "key");
        QVERIFY2(form.match(identifier).hasMatch(), qPrintable(identifier));
        QVERIFY2(!text(key, "name").isEmpty(), qPrintable(identifier));
        QCOMPARE(key.toMap().size(), 2);
    }
}

void DefaultLayoutsTest::noKeyOfTheRemoteIsThereTwice()
{
    QSet<QString> identifiers;
    QSet<QString> names;
    for (const auto &key : remoteKeys()) {
        QVERIFY2(!identifiers.contains(text(key, "key")), qPrintable(text(key, "key")));
        QVERIFY2(!names.contains(text(key, "name")), qPrintable(text(key, "name")));
        identifiers.insert(text(key, "key"));
        names.insert(text(key, "name"));
    }
}

void DefaultLayoutsTest::atLeastTwelveApplicationsHaveAPreset()
{
    auto applications = titles();
    QCOMPARE(applications.removeAll(general), 1);
    QVERIFY2(applications.size() >= 12, qPrintable(QString::number(applications.size())));
}

void DefaultLayoutsTest::noApplicationHasTwoPresets()
{
    QMap<QString, QString> owners;
    for (const auto &title : titles()) {
        for (const auto &identifier : layout(title).value(QStringLiteral("bundleids")).toList()) {
            const auto owner = owners.value(identifier.toString());
            QVERIFY2(owner.isEmpty(), qPrintable(identifier.toString()));
            owners.insert(identifier.toString(), title);
        }
    }
}

void DefaultLayoutsTest::aPresetHasTheRequiredEntriesAndNoOthers()
{
    QFETCH(QString, title);
    QVERIFY2(QFile::exists(layoutPath(title)), "the name does not end in .okl");
    const auto preset = layout(title);
    QStringList entries{QStringLiteral("bundleids"), QStringLiteral("keys"),
                        QStringLiteral("name")};
    if (title != general) {
        entries.prepend(QStringLiteral("bundleid"));
    }
    QCOMPARE(QStringList(preset.keys()), entries);
    QCOMPARE(preset.value(QStringLiteral("name")), QVariant(title));
    QCOMPARE(preset.value(QStringLiteral("bundleids")).userType(), int(QMetaType::QVariantList));
    QCOMPARE(preset.value(QStringLiteral("keys")).userType(), int(QMetaType::QVariantMap));
    QVERIFY(!shortcuts(title).isEmpty());
}

void DefaultLayoutsTest::onlyTheGeneralPresetHasNoIdentifiers()
{
    QFETCH(QString, title);
    const auto identifiers = layout(title).value(QStringLiteral("bundleids")).toList();
    QCOMPARE(identifiers.isEmpty(), title == general);
    for (const auto &identifier : identifiers) {
        QCOMPARE(identifier.userType(), int(QMetaType::QString));
        QVERIFY2(identifier.toString().endsWith(QStringLiteral(".desktop")),
                 qPrintable(identifier.toString()));
    }
    QCOMPARE(layout(title).value(QStringLiteral("bundleid")), identifiers.value(0));
}

void DefaultLayoutsTest::aPresetUsesOnlyKeysOfTheRemote()
{
    QFETCH(QString, title);
    QStringList known;
    for (const auto &key : remoteKeys()) {
        known.append(text(key, "key"));
    }
    for (const auto &key : shortcuts(title).keys()) {
        QVERIFY2(known.contains(key), qPrintable(key));
    }
}

void DefaultLayoutsTest::aShortcutHasATextAKeyCodeAndModifiers()
{
    QFETCH(QString, title);
    const auto keys = shortcuts(title);
    for (auto it = keys.begin(); it != keys.end(); ++it) {
        const auto shortcut = it->toMap();
        const auto *key = qPrintable(it.key());
        QCOMPARE(QStringList(shortcut.keys()),
                 (QStringList{QStringLiteral("keycode"), QStringLiteral("modifiers"),
                              QStringLiteral("val")}));
        QVERIFY2(isWholeNumber(shortcut.value(QStringLiteral("keycode"))), key);
        QVERIFY2(isWholeNumber(shortcut.value(QStringLiteral("modifiers"))), key);
        QVERIFY2(!shortcut.value(QStringLiteral("val")).toString().isEmpty(), key);
        QVERIFY2(number(*it, "keycode") >= 0 && number(*it, "keycode") <= 0xFFFF, key);
        QVERIFY2(number(*it, "modifiers") >= 0 && number(*it, "modifiers") <= 0xFFFFFFFF, key);
    }
}

void DefaultLayoutsTest::theTextIsWhatTheNamingGivesUnderAUsLayout()
{
    QFETCH(QString, title);
    const auto keys = shortcuts(title);
    for (auto it = keys.begin(); it != keys.end(); ++it) {
        const auto key = m_keys.constFind(number(*it, "keycode"));
        QVERIFY2(key != m_keys.constEnd(), qPrintable(it.key()));
        const auto modifiers = number(*it, "modifiers");
        QString expected;
        expected += (modifiers & control) ? QStringLiteral("Ctrl+") : QString();
        expected += (modifiers & shift) ? QStringLiteral("Shift+") : QString();
        expected += (modifiers & alt) ? QStringLiteral("Alt+") : QString();
        expected += (modifiers & command) ? QStringLiteral("Cmd+") : QString();
        QCOMPARE(text(*it, "val"), expected + key->name);
    }
}

void DefaultLayoutsTest::theModifiersHoldTheBitsOfTheKeyItself()
{
    QFETCH(QString, title);
    const auto keys = shortcuts(title);
    for (auto it = keys.begin(); it != keys.end(); ++it) {
        const auto key = m_keys.value(number(*it, "keycode"));
        const auto own = number(*it, "modifiers") & ~(shift | control | alt | command);
        QVERIFY2(own == key.bits, qPrintable(it.key()));
    }
}

void DefaultLayoutsTest::noTwoKeysOfAPresetShareAShortcut()
{
    QFETCH(QString, title);
    QSet<std::pair<qlonglong, qlonglong>> used;
    QSet<QString> texts; // two keys that read alike would puzzle people as much
    const auto keys = shortcuts(title);
    for (auto it = keys.begin(); it != keys.end(); ++it) {
        const std::pair shortcut(number(*it, "keycode"), number(*it, "modifiers"));
        QVERIFY2(!used.contains(shortcut) && !texts.contains(text(*it, "val")),
                 qPrintable(it.key()));
        used.insert(shortcut);
        texts.insert(text(*it, "val"));
    }
}

void DefaultLayoutsTest::rewritingAPresetChangesNoByte()
{
    QFETCH(QString, title);
    QCOMPARE(platform::propertyListToXml(layout(title)), contents(layoutPath(title)));
}

void DefaultLayoutsTest::theBundleHoldsTheseFilesAndNoOthers()
{
    QCOMPARE(titles(bundledResources), titles());
    for (const auto &title : titles()) {
        QCOMPARE(contents(layoutPath(title, bundledResources)), contents(layoutPath(title)));
    }
    const auto keyNames = QStringLiteral("/keynames.plist");
    QVERIFY(!contents(resources + keyNames).isEmpty());
    QCOMPARE(contents(bundledResources + keyNames), contents(resources + keyNames));
}

void DefaultLayoutsTest::theDocumentNamesEveryKeyAndEveryPreset()
{
    const auto document =
        QString::fromUtf8(contents(resources + QStringLiteral("/../../Documentation/Presets.md")));
    for (const auto &key : remoteKeys()) {
        const auto identifier = text(key, "key");
        QVERIFY2(document.contains(QLatin1Char('`') + identifier + QLatin1Char('`')),
                 qPrintable(identifier));
    }
    for (const auto &title : titles()) {
        QVERIFY2(document.contains(QStringLiteral("\n| ") + title), qPrintable(title));
    }
}

QTEST_GUILESS_MAIN(DefaultLayoutsTest)
#include "DefaultLayoutsTest.moc"
