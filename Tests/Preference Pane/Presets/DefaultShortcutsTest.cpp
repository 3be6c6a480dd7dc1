// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Tests/Preference Pane/Presets/ShippedLayouts.h"
#include "Tests/Support/TestProgram.h"

#include <QSet>
#include <QTest>

using shipped::number;
using shipped::shortcuts;
using shipped::text;

namespace {

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

bool isWholeNumber(const QVariant &value)
{
    return value.userType() == QMetaType::LongLong;
}

} // namespace

// The shortcuts in the presets that the pane ships.
class DefaultShortcutsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aShortcutHasATextAKeyCodeAndModifiers_data() { shipped::addTitles(); }
    void aShortcutHasATextAKeyCodeAndModifiers();
    void theTextIsWhatTheNamingGivesUnderAUsLayout_data() { shipped::addTitles(); }
    void theTextIsWhatTheNamingGivesUnderAUsLayout();
    void theModifiersHoldTheBitsOfTheKeyItself_data() { shipped::addTitles(); }
    void theModifiersHoldTheBitsOfTheKeyItself();
    void noTwoKeysOfAPresetShareAShortcut_data() { shipped::addTitles(); }
    void noTwoKeysOfAPresetShareAShortcut();

private:
    QMap<qlonglong, Key> m_keys = usKeys();
};

void DefaultShortcutsTest::aShortcutHasATextAKeyCodeAndModifiers()
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

void DefaultShortcutsTest::theTextIsWhatTheNamingGivesUnderAUsLayout()
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

void DefaultShortcutsTest::theModifiersHoldTheBitsOfTheKeyItself()
{
    QFETCH(QString, title);
    const auto keys = shortcuts(title);
    for (auto it = keys.begin(); it != keys.end(); ++it) {
        const auto key = m_keys.value(number(*it, "keycode"));
        const auto own = number(*it, "modifiers") & ~(shift | control | alt | command);
        QVERIFY2(own == key.bits, qPrintable(it.key()));
    }
}

void DefaultShortcutsTest::noTwoKeysOfAPresetShareAShortcut()
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

TEST_CLASS(DefaultShortcutsTest, QCoreApplication)
#include "DefaultShortcutsTest.moc"
