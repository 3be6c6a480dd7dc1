// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Bundles/Bundle.h"
#include "Platform/Core/Notifications/NotificationCenter.h"
#include "Platform/Desktop/Tables/TableDataSource.h"
#include "Preference Pane/Presets/ZQShortcutKeyTableview.h"
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"

#include <QList>
#include <QPointer>
#include <QVariantMap>

#include <optional>

// The keys of the remote control beside the shortcuts that one preset gives them. Each change is
// written at once, to the user's folder, and announced to the listener. Main thread only.
class ZQKeyboardLayoutEditController : public QObject, public platform::TableDataSource {
    Q_OBJECT
public:
    // The bundle that has the names of the keys and the default layouts.
    explicit ZQKeyboardLayoutEditController(platform::Bundle bundle);
    ~ZQKeyboardLayoutEditController() override;

    // The table's columns; any other column shows the shortcut, too.
    static const QString descriptionColumn;
    static const QString shortcutColumn;

    /// awakeFromNib: begins to hear captured and cleared shortcuts, from any sender, and the
    /// table's double-click.
    void awakeFromNib();
    /// populateKeyNames: reads the keys of the remote control anew; none where that fails.
    void populateKeyNames();
    /// loadBlankKeys: a row without a shortcut for each key.
    void loadBlankKeys();
    /// loadKeysForFile:
    /// Shows that preset from now on; the rows stay as they were where it cannot be read.
    void loadKeysForFile(const QString &path);
    /// changeKeyboardShortcut: opens the sheet that captures a shortcut.
    void changeKeyboardShortcut();
    /// keyChanged:
    /// Gives the selected key the notification's shortcut. Does not ask the table to reload,
    /// which asks for its cells anew when the sheet goes. Throws platform::Exception where the
    /// notification lacks "keycode" or "modifierFlags"; the row then has part of the shortcut and
    /// nothing is written.
    void keyChanged(const platform::Notification &notification);
    /// keyCleared:
    /// Takes the selected key's shortcut away.
    void keyCleared(const platform::Notification &notification);
    /// updatePresetFile: writes all rows to the user's file of the preset and announces that. A
    /// failure shows on the system console only.
    void updatePresetFile();

    /// nameForKeyCode:modifiers:
    /// A shortcut for people: "Ctrl+", "Shift+", "Alt+", "Cmd+" and the key's name.
    static QString nameForKeyCode(const QVariant &keyCode, const QVariant &modifiers);
    /// stringForKeyCode:withModifierFlags:
    /// The key's name under the current keyboard layout; null where it has none.
    static QString stringForKeyCode(quint16 keyCode, quint32 modifierFlags);

    int numberOfRowsInTableView() const override;
    QVariant tableViewObjectValueForTableColumn(const QString &column, int row) const override;
    void tableViewWillDisplayCell(platform::TableCell &cell, const QString &column,
                                  int row) const override;

    const QList<QVariantMap> &keyArray() const { return m_keyArray; }
    // Null as long as nothing was loaded.
    const QString &currentFile() const { return m_currentFile; }
    void setCurrentFile(const QString &path) { m_currentFile = path; }
    ZQShortcutKeyTableview *tableView() const { return m_tableView; }
    void setTableView(ZQShortcutKeyTableview *tableView);
    ZQKeyboardEditPanel *panelEdit() const { return m_panelEdit; }
    void setPanelEdit(ZQKeyboardEditPanel *panel);

    // Whether the rows are those of a preset that could be read, and have that one's shortcuts.
    bool isShowing(const QVariantMap &preset) const;
    // Whether the last change of the rows could not be written.
    bool isUnsaved() const { return m_isUnsaved; }
    // Gives a row the shortcut that it had (see shortcutReplaced), writes it and shows the row.
    void restoreShortcut(int row, const QVariantMap &shortcut);

    // What people call the key of a row, and its shortcut; empty for none.
    QString descriptionOfRow(int row) const;
    QString shortcutTextOfRow(int row) const;

Q_SIGNALS:
    // Another preset is shown, or the same anew; whether it could be read.
    void presetLoaded(bool readable);
    // The rows have been written, or could not be for that reason; null for none.
    void presetWritten(const QString &error);
    // A row of the current file had this shortcut until now: "val", "keycode" and "modifiers",
    // where they are there.
    void shortcutReplaced(int row, const QVariantMap &shortcut);

private:
    QVariantMap *selectedKey();
    void setBlankKeys();
    QVariantMap keysToWrite() const;
    void reloadTable();
    void tellReplaced(const QVariantMap &before);
    // Which other keys have the row's shortcut.
    QStringList keysWithShortcutOf(int row) const;

    platform::Bundle m_bundle;
    QList<QVariantMap> m_keyArray;
    QList<QVariantMap> m_keyNames;
    QString m_currentFile;
    bool m_isReadable = false;
    bool m_isUnsaved = false;
    QPointer<ZQShortcutKeyTableview> m_tableView;
    QPointer<ZQKeyboardEditPanel> m_panelEdit;
    std::optional<platform::NotificationCenter::Observer> m_changeObserver;
    std::optional<platform::NotificationCenter::Observer> m_clearObserver;
};
