// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Bundle.h"
#include "Preference Pane/PresetTransfer.h"

#include <QWidget>

#include <memory>

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
    ZQKeyboardEditPanel *panel() const { return m_panel; }

    // Makes presets of files, asking where there is one of the same title already. What is none is
    // refused with the reason.
    void importPresets(const QStringList &paths);
    // Copies the selected preset to a place that the user chooses.
    void exportPreset();
    // Puts the preset that was removed last back.
    void restorePreset();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void connectTables();
    void makeMenu();
    void chooseImport();
    bool importPreset(const QString &path);
    void presetChangedOutside(const QString &title);
    void updateControls();
    void showState(bool readable);
    void alert(const QString &message, const QString &reason);

    platform::Bundle m_bundle;
    std::unique_ptr<Ui::KeyboardLayoutPage> m_ui;
    std::unique_ptr<ZQKeyboardLayoutEditController> m_editor;
    std::unique_ptr<ZQKeyboardLayoutAppBrowser> m_browser;
    ZQKeyboardEditPanel *m_panel = nullptr;
    QAction *m_exportAction = nullptr;
    QAction *m_restoreAction = nullptr;
    presets::KeptPreset m_removed;
};
