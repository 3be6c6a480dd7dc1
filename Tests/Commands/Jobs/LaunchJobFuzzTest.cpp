// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Commands/Jobs/LaunchJob.h"
#include "Commands/Jobs/LaunchUnit.h"
#include "Tests/Platform/Core/PropertyLists/BinaryPropertyList.h"
#include "Tests/Support/TestProgram.h"

#include <QTest>

#include <algorithm>
#include <array>
#include <random>

namespace {

constexpr auto mutations = 20000; // of each seed; the same ones in every run

const QByteArray file("/Library/LaunchAgents/com.x.plist");

QByteArray xmlSeed()
{
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>Label</key><string>com.x</string>
<key>ProgramArguments</key><array><string>/bin/a</string><data>YQ==</data></array>
<key>WorkingDirectory</key><string>/a b</string>
<key>RunAtLoad</key><true/>
<key>KeepAlive</key><dict><key>SuccessfulExit</key><false/></dict>
<key>EnvironmentVariables</key><dict><key>A</key><string>b</string></dict>
<key>StandardOutPath</key><string>/o</string>
<key>Nice</key><integer>-5</integer><key>Umask</key><string>022</string>
<key>ThrottleInterval</key><integer>5</integer>
</dict></plist>)";
}

QByteArray binarySeed()
{
    const auto text = [](const char *ascii) { return BinaryPropertyList::text(ascii); };
    BinaryPropertyList list;
    list.objects = {list.dictionary({1, 3, 5, 7, 9, 2, 4, 6, 8, 10}),
                    text("Label"),
                    text("com.x"),
                    text("Program"),
                    text("/bin/a"),
                    text("RunAtLoad"),
                    QByteArray("\x09"),
                    text("ProgramArguments"),
                    list.container({4, 2, 4}),
                    text("ThrottleInterval"),
                    QByteArray("\x10\x05")};
    return list.data();
}

QByteArray mutated(QByteArray data, std::mt19937 &numbers)
{
    static const std::array<QByteArray, 11> pieces{"\n[Service]\nExecStart=/bin/evil\n",
                                                   "%h",
                                                   "$HOME",
                                                   "\\",
                                                   "\"",
                                                   "\xFF",
                                                   "<true/>",
                                                   "<string>",
                                                   "</string>",
                                                   "<integer>99999999999999999999</integer>",
                                                   "&#10;"};
    const auto below = [&](qsizetype bound) {
        return static_cast<int>(numbers() % static_cast<unsigned>(std::max<qsizetype>(bound, 1)));
    };
    for (auto left = below(2) + 1; left > 0; --left) {
        const auto at = below(data.size());
        switch (below(4)) {
        case 0:
            data[at] = static_cast<char>(below(256));
            break;
        case 1:
            data.remove(at, below(8) + 1);
            break;
        case 2:
            data.insert(at, data.mid(below(data.size()), below(40)));
            break;
        default:
            data.insert(at, pieces.at(static_cast<std::size_t>(below(pieces.size()))));
        }
        data += data.isEmpty() ? "<" : "";
    }
    return data;
}

// What holds for the unit of every job that is accepted, whatever its bytes.
QByteArray whatIsWrong(const platform::LaunchJob &job)
{
    const auto unit = platform::launchUnitFile(job);
    auto commands = 0;
    const auto lines = unit.split('\n');
    for (const auto &line : lines) {
        static const QByteArrayList beginnings{"#",
                                               "[Unit]",
                                               "[Service]",
                                               "Description=",
                                               "Documentation=file:///",
                                               "SourcePath=/",
                                               "StartLimit",
                                               "Type=exec",
                                               "Slice=app.slice",
                                               "KillMode=mixed",
                                               "TimeoutStopSec=5",
                                               "Restart",
                                               "StandardInput=file:/",
                                               "StandardOutput=append:/",
                                               "StandardError=append:/",
                                               "WorkingDirectory=/",
                                               "ExecStart=\"",
                                               "Environment=\"",
                                               "Nice=",
                                               "UMask=",
                                               "CPUSchedulingPolicy=batch",
                                               "IOSchedulingClass=idle"};
        const auto isKnown = line.isEmpty() ||
                             std::any_of(beginnings.begin(), beginnings.end(),
                                         [&](const auto &start) { return line.startsWith(start); });
        commands += line.startsWith("ExecStart=") ? 1 : 0;
        if (!isKnown || line.endsWith('\\') || !platform::isUtf8Name(line) ||
            QByteArray(line).replace("%%", "").contains('%')) {
            return line;
        }
    }
    return commands == 1 ? QByteArray() : "not one command";
}

} // namespace

// Whatever the bytes of a job file: reading it ends, and no part of it can become a setting of its
// own in the unit.
class LaunchJobFuzzTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void hostileFilesAreRefusedOrMakeSoundUnits_data();
    void hostileFilesAreRefusedOrMakeSoundUnits();
};

void LaunchJobFuzzTest::hostileFilesAreRefusedOrMakeSoundUnits_data()
{
    QTest::addColumn<QByteArray>("seed");
    QTest::newRow("XML") << xmlSeed();
    QTest::newRow("binary") << binarySeed();
}

void LaunchJobFuzzTest::hostileFilesAreRefusedOrMakeSoundUnits()
{
    QFETCH(QByteArray, seed);
    QString error;
    QVERIFY2(platform::launchJobFromData(seed, file, &error), qPrintable(error));
    std::mt19937 numbers(20260131);
    auto accepted = 0;
    for (auto i = 0; i < mutations; ++i) {
        const auto data = mutated(seed, numbers);
        error.clear();
        const auto job = platform::launchJobFromData(data, file, &error);
        if (job) {
            error = platform::launchUnitObjection(*job);
        }
        const auto isAccepted = job && error.isNull();
        QVERIFY(isAccepted ||
                error.startsWith(QStringLiteral("/Library/LaunchAgents/com.x.plist: ")));
        const auto wrong = isAccepted ? whatIsWrong(*job) : QByteArray();
        QVERIFY2(wrong.isEmpty(), (wrong + " from " + data.toPercentEncoding()).constData());
        accepted += isAccepted ? 1 : 0;
    }
    // Else the mutations would be too wild to test anything but the first check.
    QVERIFY2(accepted > mutations / 100, QByteArray::number(accepted).constData());
    QVERIFY2(accepted < mutations, QByteArray::number(accepted).constData());
}

TEST_CLASS(LaunchJobFuzzTest, QCoreApplication)
#include "LaunchJobFuzzTest.moc"
