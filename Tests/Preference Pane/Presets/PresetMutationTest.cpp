// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Tests/Preference Pane/Presets/PresetFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <random>

// Damaged preset files are loaded, edited and rewritten: none crashes, and what the pane does not
// know stays in the file, as do the shortcuts of the keys that were not edited.
class PresetMutationTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void aThousandDamagedPresetsLoseNothing();
};

namespace {

using Random = std::mt19937;

const QString title = QStringLiteral("Player");
const QString fileName = title + QStringLiteral(".okl");

std::size_t below(Random &random, qsizetype bound)
{
    return std::uniform_int_distribution<std::size_t>(0,
                                                      static_cast<std::size_t>(bound) - 1)(random);
}

// A preset with all that one may hold, and with what is none of ours, written by hand.
const QByteArray preset = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>bundleid</key>
	<string>org.player.desktop</string>
	<key>bundleids</key>
	<array><string>org.player.desktop</string></array>
	<key>foreign</key>
	<dict>
		<key>data</key>
		<data>AP8=</data>
		<key>date</key>
		<date>2026-11-21T10:11:12Z</date>
		<key>real</key>
		<real>0.25</real>
		<key>list</key>
		<array><integer>-1</integer><false/><string>a &amp; é</string></array>
	</dict>
	<key>keys</key>
	<dict>
		<key>laser</key>
		<dict/>
		<key>menu</key>
		<array><integer>1</integer><string>x</string></array>
		<key>play</key>
		<string>Ctrl+P</string>
		<key>stop</key>
		<dict>
			<key>keycode</key>
			<integer>1</integer>
			<key>modifiers</key>
			<integer>262144</integer>
			<key>val</key>
			<string>S</string>
		</dict>
	</dict>
	<key>locked</key>
	<true/>
	<key>name</key>
	<string>Player</string>
	<key>version</key>
	<integer>3</integer>
</dict>
</plist>
)";

void save(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        qFatal("cannot write a file");
    }
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

void PresetMutationTest::aThousandDamagedPresetsLoseNothing()
{
    constexpr int files = 1000;
    const QTemporaryDir folder;
    PresetFixture fixture;
    PresetFixture::writeUserBytes(fileName, preset);
    fixture.open();
    fixture.keyTable().selectOnlyRow(1);
    const QString path = PresetFixture::userPath(title);
    Random random(20261121); // NOLINT(cert-msc*): the same files each time
    for (int file = 0; file < files; ++file) {
        const QByteArray bytes = damaged(preset, random);
        PresetFixture::writeUserBytes(fileName, bytes);
        fixture.browser().populateApplications();
        fixture.editor().loadKeysForFile(path);
        fixture.editor().keyChanged({{},
                                     {},
                                     {{QStringLiteral("keycode"), file % 128},
                                      {QStringLiteral("modifierFlags"), 0x100000}}});
        fixture.window().grab();
        const QString name = folder.filePath(QString::number(file));
        save(name + QStringLiteral(".before"), bytes);
        save(name + QStringLiteral(".after"), PresetFixture::userBytes(title));
    }
    // Read by Python: what our own reader drops, it would not miss.
    QProcess judge;
    judge.start(QStringLiteral("/usr/bin/python3"),
                {QStringLiteral(PRESET_REWRITES), folder.path()});
    QVERIFY(judge.waitForFinished(-1));
    QVERIFY2(judge.exitCode() == 0, judge.readAllStandardError().constData());
    const QByteArrayList counts = judge.readAllStandardOutput().simplified().split(' ');
    QCOMPARE(counts.size(), 2);
    // Both kinds must be among them, or this would prove nothing.
    QVERIFY2(counts[0].toInt() > files / 10 && counts[1].toInt() > files / 10,
             counts.join(' ').constData());
}

TEST_CLASS(PresetMutationTest, QApplication)
#include "PresetMutationTest.moc"
