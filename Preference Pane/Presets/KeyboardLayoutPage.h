// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Bundles/Bundle.h"
#include "Preference Pane/Presets/PresetTransfer.h"

#include <QPointer>
#include <QWidget>

#include <memory>
#include <optional>

class QAction;
class ZQKeyboardEditPanel;
class ZQKeyboardLayoutAppBrowser;
class ZQKeyboardLayoutEditController;

namespace Ui {
class KeyboardLayoutPage;
}

// The pane's page of presets: the applications on the left, on the right the remote control's keys
// with their shortcuts. Holds the two controllers and wires them to the controls.
class KeyboardLayoutPage : public QWidget {
    Q_OBJECT
public:
    explicit KeyboardLayoutPage(QWidget *parent = nullptr);
    ~KeyboardLayoutPage() override;

    // The pane's. To be set before load().
    void setBundle(const platform::Bundle &bundle) { m_bundle = bundle; }

    // Makes the controls and reads the presets, once. Done when the page shows for the first time,
    // so that the pane opens as fast as if there were no presets.
    void load();

    ZQKeyboardLayoutAppBrowser *browser() const { return m_browser.get(); }
    ZQKeyboardLayoutEditController *editor() const { return m_editor.get(); }
    ZQKeyboardEditPanel *panel() const;

    // Imports files as presets. Asks once whether presets of the same titles may be replaced; the
    // second of two files with one title gets another title. Files that are no presets are refused;
    // one alert at the end gives the reasons.
    void importPresets(const QStringList &paths);
    // Copies the selected preset to a place that the user chooses.
    void exportPreset();
    // Restores the preset that was removed or replaced last; the next call the one before it.
    void restorePreset();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void connectTables();
    void makeMenu();
    void chooseImport();
    // Whether those of the titles that the user has may be replaced; nothing for no import at all.
    std::optional<bool> mayReplace(const QStringList &titles);
    void keepRestorable(const presets::KeptPreset &preset);
    void presetChangedOutside(const QString &title);
    void updateControls();
    void updateHint();
    void alert(const QString &message, const QString &reason);

    platform::Bundle m_bundle;
    std::unique_ptr<Ui::KeyboardLayoutPage> m_ui;
    std::unique_ptr<ZQKeyboardLayoutEditController> m_editor;
    std::unique_ptr<ZQKeyboardLayoutAppBrowser> m_browser;
    // A child of the window on which it was shown last.
    QPointer<ZQKeyboardEditPanel> m_panel;
    QAction *m_exportAction = nullptr;
    QAction *m_restoreAction = nullptr;
    QList<presets::KeptPreset> m_removed;
    bool m_readable = true;
    QString m_writeError;
};
