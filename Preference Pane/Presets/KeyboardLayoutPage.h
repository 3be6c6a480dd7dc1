// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Bundles/Bundle.h"
#include "Preference Pane/Presets/PresetTransfer.h"
#include "Preference Pane/Presets/PresetWatch.h"

#include <QPointer>
#include <QWidget>

#include <memory>
#include <optional>
#include <variant>

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

    // The control after which Tab comes to those of the page.
    void setTabOrderAfter(QWidget *control);

    // The pane's. To be set before load().
    void setBundle(const platform::Bundle &bundle) { m_bundle = bundle; }

    // Reads the presets, once. Done when the page shows for the first time, so that the pane opens
    // as fast as if there were no presets. The controls are there before, so that the page has its
    // size from the start.
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
    // Undoes the last change of a shortcut, or puts the preset back that was removed or replaced;
    // the next call the one before it.
    void undo();
    // Makes a copy of the selected preset, under a title of its own, one of the user's.
    void duplicatePreset();

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    // The sheet that captures a shortcut goes with the page.
    void hideEvent(QHideEvent *event) override;

private:
    void setUpTables();
    void makeMenu();
    void connectControls();
    void connectControllers();
    void chooseImport();
    // Whether those of the titles that the user has may be replaced; nothing for no import at all.
    std::optional<bool> mayReplace(const QStringList &titles);
    // A shortcut of the preset of that title, as it was.
    struct KeptShortcut {
        QString title;
        int row;
        QVariantMap shortcut;
    };
    using Change = std::variant<presets::KeptPreset, KeptShortcut>;
    void keep(const Change &change);
    void undo(const presets::KeptPreset &preset);
    void undo(const KeptShortcut &kept);
    // What the next undo() is, for people; null for none.
    QString nextUndo() const;
    void dropLostChanges();
    // Of the preset that the editor shows.
    QString shownTitle() const;
    void presetChangedOutside(const QString &title);
    void updateControls();
    void updateHint();
    void updateHeading();
    void alert(const QString &message, const QString &reason);

    platform::Bundle m_bundle;
    std::unique_ptr<Ui::KeyboardLayoutPage> m_ui;
    std::unique_ptr<ZQKeyboardLayoutEditController> m_editor;
    std::unique_ptr<ZQKeyboardLayoutAppBrowser> m_browser;
    // A child of the window on which it was shown last.
    QPointer<ZQKeyboardEditPanel> m_panel;
    QAction *m_exportAction = nullptr;
    QAction *m_duplicateAction = nullptr;
    QAction *m_undoAction = nullptr;
    std::unique_ptr<PresetWatch> m_watch;
    QList<Change> m_changes; // that can be undone, the last one at the end
    bool m_readable = true;
    QString m_writeError;
};
