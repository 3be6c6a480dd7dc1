// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"
#include "Tests/Preference Pane/Presets/PresetFixture.h"
#include "Tests/Preference Pane/Presets/ShippedLayouts.h"
#include "Tests/Support/TestProgram.h"

#include <QApplication>
#include <QTest>

// The default layouts that come with the pane, in the pane's own hands.
class ShippedPresetsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void itsTextIsThePanesNameOfItsShortcut_data() { shipped::addTitles(); }
    void itsTextIsThePanesNameOfItsShortcut();
    void loadingRewritingAndLoadingChangesNothing_data() { shipped::addTitles(); }
    void loadingRewritingAndLoadingChangesNothing();
};

void ShippedPresetsTest::itsTextIsThePanesNameOfItsShortcut()
{
    QFETCH(const QString, title);
    const QVariantMap shortcuts = shipped::shortcuts(title);
    QVERIFY(!shortcuts.isEmpty());
    for (auto shortcut = shortcuts.begin(); shortcut != shortcuts.end(); ++shortcut) {
        const QVariantMap entry = shortcut->toMap();
        const QString name = ZQKeyboardLayoutEditController::nameForKeyCode(
            entry.value(QStringLiteral("keycode")), entry.value(QStringLiteral("modifiers")));
        QVERIFY2(name == entry.value(QStringLiteral("val")).toString(),
                 qPrintable(shortcut.key() + QStringLiteral(": ") + name));
    }
}

void ShippedPresetsTest::loadingRewritingAndLoadingChangesNothing()
{
    QFETCH(const QString, title);
    PresetFixture fixture;
    fixture.writeKeyNames(shipped::remoteKeys());
    const QVariantMap preset = shipped::layout(title);
    fixture.writeDefault(title, preset);
    fixture.open();
    const QList<QVariantMap> rows = fixture.editor().keyArray();
    fixture.editor().updatePresetFile();

    QVariantMap foreign = PresetFixture::user(title);
    const QVariantMap written = foreign.take(QStringLiteral("keys")).toMap();
    QVariantMap before = preset;
    const QVariantMap shortcuts = before.take(QStringLiteral("keys")).toMap();
    QCOMPARE(foreign, before);
    // What has no shortcut is there now, too, without one.
    QCOMPARE(written.size(), shipped::remoteKeys().size());
    for (auto key = written.begin(); key != written.end(); ++key) {
        QCOMPARE(key->toMap(), shortcuts.value(key.key(), blankEntry()).toMap());
    }
    fixture.editor().loadKeysForFile(PresetFixture::userPath(title));
    QCOMPARE(fixture.editor().keyArray(), rows);
    const QByteArray bytes = PresetFixture::userBytes(title);
    fixture.editor().updatePresetFile();
    QCOMPARE(PresetFixture::userBytes(title), bytes);
}

TEST_CLASS(ShippedPresetsTest, QApplication)
#include "ShippedPresetsTest.moc"
