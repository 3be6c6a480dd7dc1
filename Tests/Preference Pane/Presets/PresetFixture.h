// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Core/Bundles/Bundle.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"

#include <QMainWindow>
#include <QTemporaryDir>
#include <QVariantMap>

// Presets in their real folders, in the sandbox, and the two controllers with their tables in a
// window. The remote control has the keys "play" ("Play"), "stop" ("Stop") and "menu", which has no
// name.
class PresetFixture {
public:
    enum class UserPresets { Remove, Keep };

    // Removes what an earlier test left, unless it is to be kept.
    explicit PresetFixture(UserPresets userPresets = UserPresets::Remove);

    static void writeUser(const QString &title, const QVariantMap &preset);
    void writeDefault(const QString &title, const QVariantMap &preset) const;
    static void writeUserBytes(const QString &fileName, const QByteArray &bytes);
    void writeKeyNames(const QVariant &list) const;
    static QVariantMap user(const QString &title);
    static QByteArray userBytes(const QString &title);
    static QString userPath(const QString &title);
    QString defaultPath(const QString &title) const;
    platform::Bundle bundle() const { return platform::Bundle(m_folder.path()); }

    // The two controllers as the page's interface file makes them.
    void open();
    ZQKeyboardLayoutEditController &editor() { return *m_editor; }
    ZQKeyboardLayoutAppBrowser &browser() { return *m_browser; }
    ZQShortcutKeyTableview &keyTable() { return *m_keyTable; }
    platform::TableView &applicationTable() { return *m_applicationTable; }
    ZQKeyboardEditPanel &panel() { return *m_panel; }
    QMainWindow &window() { return *m_window; }

    QStringList titles() const;
    // The texts of a column of the key table as it asks for them.
    QStringList keyColumn(const QString &column) const;

private:
    QTemporaryDir m_folder;
    std::unique_ptr<QMainWindow> m_window;
    ZQShortcutKeyTableview *m_keyTable = nullptr;
    platform::TableView *m_applicationTable = nullptr;
    ZQKeyboardEditPanel *m_panel = nullptr;
    std::unique_ptr<ZQKeyboardLayoutEditController> m_editor;
    std::unique_ptr<ZQKeyboardLayoutAppBrowser> m_browser;
};

// An entry of a preset's keys.
QVariantMap shortcutEntry(const QString &text, int keyCode, uint modifiers);
// The entry of a key without a shortcut.
QVariantMap blankEntry();
