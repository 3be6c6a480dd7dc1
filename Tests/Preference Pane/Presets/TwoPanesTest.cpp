// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Tests/Preference Pane/Presets/PresetFixture.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QProcess>
#include <QTest>

#include <poll.h>
#include <unistd.h>

#include <cstdio>

// Two panes that edit one preset: each writes all that it shows, so the last writer wins, and the
// file is whole at any time.
class TwoPanesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void theLastWriterWins();
    void noFileIsTorn();
};

namespace {

const QString title = QStringLiteral("Player");
constexpr int edits = 300;

void edit(PresetFixture &fixture, int row, int keyCode)
{
    fixture.keyTable().selectOnlyRow(row);
    fixture.editor().keyChanged(
        {{},
         {},
         {{QStringLiteral("keycode"), keyCode}, {QStringLiteral("modifierFlags"), 0x100000}}});
}

int keyCodeOf(const QString &key)
{
    const QVariantMap keys = PresetFixture::user(title).value(QStringLiteral("keys")).toMap();
    return keys.value(key).toMap().value(QStringLiteral("keycode"), -1).toInt();
}

} // namespace

void TwoPanesTest::theLastWriterWins()
{
    PresetFixture first;
    PresetFixture second;
    PresetFixture::writeUser(title, {{QStringLiteral("keys"), QVariantMap()}});
    first.open();
    second.open();
    edit(first, 0, 1);
    QCOMPARE(keyCodeOf(QStringLiteral("play")), 1);
    // It does not know of the first one's edit.
    edit(second, 1, 2);
    QCOMPARE(keyCodeOf(QStringLiteral("stop")), 2);
    QCOMPARE(keyCodeOf(QStringLiteral("play")), -1);
    edit(first, 0, 3);
    QCOMPARE(keyCodeOf(QStringLiteral("play")), 3);
    QCOMPARE(keyCodeOf(QStringLiteral("stop")), -1);
}

void TwoPanesTest::noFileIsTorn()
{
    PresetFixture fixture;
    PresetFixture::writeUser(title, {{QStringLiteral("keys"), QVariantMap()},
                                     {QStringLiteral("foreign"), QStringLiteral("stays")}});
    fixture.open();
    QProcess other;
    other.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("TwoPanesTest"), QStringLiteral("--edit")});
    QVERIFY(other.waitForReadyRead());
    for (int i = 0; i < edits; ++i) {
        edit(fixture, 0, 1);
        const QVariantMap preset = PresetFixture::user(title);
        QCOMPARE(preset.value(QStringLiteral("foreign")).toString(), QStringLiteral("stays"));
        const int play = keyCodeOf(QStringLiteral("play"));
        const int stop = keyCodeOf(QStringLiteral("stop"));
        QVERIFY(play == 1 || play == -1);
        QVERIFY(stop == 2 || stop == -1);
    }
    other.closeWriteChannel();
    QVERIFY(other.waitForFinished());
    QCOMPARE(other.exitCode(), 0);
    QVERIFY(keyCodeOf(QStringLiteral("play")) == 1 || keyCodeOf(QStringLiteral("stop")) == 2);
}

namespace {

// The second pane, in a process of its own, until it is told to end.
int editMeanwhile()
{
    PresetFixture fixture(PresetFixture::UserPresets::Keep);
    fixture.open();
    std::puts("ready");
    std::fflush(stdout);
    pollfd end{STDIN_FILENO, POLLIN, 0};
    while (poll(&end, 1, 0) == 0) {
        edit(fixture, 1, 2);
        if (PresetFixture::user(title).value(QStringLiteral("foreign")) !=
            QStringLiteral("stays")) {
            return 1;
        }
    }
    return 0;
}

} // namespace

static int run(int argc, char **argv)
{
    QApplication application(argc, argv);
    if (argc > 1 && qstrcmp(argv[1], "--edit") == 0) {
        return editMeanwhile();
    }
    TwoPanesTest test;
    return QTest::qExec(&test, argc, argv);
}

TEST_FUNCTION(TwoPanesTest, run)
#include "TwoPanesTest.moc"
