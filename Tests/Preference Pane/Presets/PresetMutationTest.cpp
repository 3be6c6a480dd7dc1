// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Tests/Preference Pane/Presets/PresetFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QTest>

#include <random>

// Damaged preset files are loaded, edited and rewritten: none crashes, and what the pane does not
// know stays in the file.
class PresetMutationTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void tenThousandDamagedPresetsLoseNoForeignKey();
};

namespace {

using Random = std::mt19937;

const QString title = QStringLiteral("Player");
const QString keysKey = QStringLiteral("keys");

std::size_t below(Random &random, qsizetype bound)
{
    return std::uniform_int_distribution<std::size_t>(0,
                                                      static_cast<std::size_t>(bound) - 1)(random);
}

// A preset with all that one may hold, and with what is none of ours.
QVariantMap preset()
{
    const QVariantMap keys{{QStringLiteral("play"), QStringLiteral("Ctrl+P")},
                           {QStringLiteral("stop"), shortcutEntry(QStringLiteral("S"), 1, 0x40000)},
                           {QStringLiteral("menu"), QVariantList{1, QStringLiteral("x")}},
                           {QStringLiteral("laser"), QVariantMap()}};
    return {
        {keysKey, keys},
        {QStringLiteral("name"), QStringLiteral("Player")},
        {QStringLiteral("bundleid"), QStringLiteral("org.player.desktop")},
        {QStringLiteral("bundleids"), QVariantList{QStringLiteral("org.player.desktop")}},
        {QStringLiteral("foreign"), QVariantMap{{QStringLiteral("data"), QByteArray("\0\xFF", 2)},
                                                {QStringLiteral("real"), 0.25}}},
        {QStringLiteral("version"), 3},
        {QStringLiteral("locked"), true}};
}

// Some bytes changed, doubled, dropped, or pieces of it exchanged: often still a property list.
QByteArray damaged(QByteArray bytes, Random &random)
{
    static const QList<QByteArray> pieces{"<dict>",   "</dict>", "<array>",     "</array>",
                                          "<string>", "<true/>", "<integer>-1", "keys",
                                          "keycode",  "key",     "9999999999",  "&amp;",
                                          "\xC3\x28", "val",     "unknown",     "<real>1</real>"};
    for (auto changes = below(random, 3) + 1; changes > 0 && !bytes.isEmpty(); --changes) {
        const auto at = static_cast<int>(below(random, bytes.size()));
        const auto length = static_cast<int>(below(random, 24));
        switch (below(random, 5)) {
        case 0:
            bytes[at] = static_cast<char>(below(random, 256));
            break;
        case 1:
            bytes.remove(at, length);
            break;
        case 2:
            bytes.insert(at, bytes.mid(static_cast<int>(below(random, bytes.size())), length));
            break;
        case 3:
            bytes.insert(at, pieces[static_cast<int>(below(random, pieces.size()))]);
            break;
        default:
            if (const auto digit = bytes.indexOf('1', at); digit >= 0) {
                bytes.replace(digit, 1, "4294967295");
            }
        }
    }
    return bytes;
}

} // namespace

void PresetMutationTest::tenThousandDamagedPresetsLoseNoForeignKey()
{
    constexpr int files = 10000;
    PresetFixture fixture;
    PresetFixture::writeUser(title, preset());
    fixture.open();
    fixture.keyTable().selectOnlyRow(1);
    const QByteArray whole = PresetFixture::userBytes(title);
    const QString path = PresetFixture::userPath(title);
    const QString fileName = title + QStringLiteral(".okl");
    Random random(20261121); // NOLINT(cert-msc*): the same files each time
    int readable = 0;
    for (int file = 0; file < files; ++file) {
        const QByteArray bytes = damaged(whole, random);
        PresetFixture::writeUserBytes(fileName, bytes);
        const auto before = platform::dictionaryFromFile(path);
        fixture.browser().populateApplications();
        fixture.editor().loadKeysForFile(path);
        fixture.editor().keyChanged({{},
                                     {},
                                     {{QStringLiteral("keycode"), file % 128},
                                      {QStringLiteral("modifierFlags"), 0x100000}}});
        fixture.window().grab();
        if (!before) {
            QCOMPARE(PresetFixture::userBytes(title), bytes);
            continue;
        }
        ++readable;
        auto after = platform::dictionaryFromFile(path);
        QVERIFY2(after, bytes.constData());
        QCOMPARE(after->value(keysKey).userType(), static_cast<int>(QMetaType::QVariantMap));
        QVariantMap foreign = *before;
        foreign.remove(keysKey);
        after->remove(keysKey);
        QCOMPARE(*after, foreign);
    }
    // Both kinds must be among them, or this would prove nothing.
    QVERIFY2(readable > files / 10 && readable < files, qPrintable(QString::number(readable)));
}

TEST_CLASS(PresetMutationTest, QApplication)
#include "PresetMutationTest.moc"
