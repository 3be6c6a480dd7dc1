// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
// What was changed, and undoing it.
#include "Platform/Core/Text/ShortText.h"
#include "Preference Pane/Presets/KeyboardLayoutPage.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutAppBrowser.h"
#include "Preference Pane/Presets/ZQKeyboardLayoutEditController.h"

#include <QPointer>

void KeyboardLayoutPage::keep(const Change &change)
{
    constexpr int maxChanges = 100;                      // nobody undoes more
    constexpr qint64 maxSize = qint64(64) * 1024 * 1024; // bytes, of presets of any size
    m_changes.append(change);
    qint64 size = 0;
    for (auto at = m_changes.size() - 1; at >= 0; --at) {
        const auto *preset = std::get_if<presets::KeptPreset>(&m_changes[at]);
        size += preset != nullptr ? preset->size() : 0;
        // The last change can be undone, whatever its size.
        if (at < m_changes.size() - 1 && (size > maxSize || m_changes.size() - at > maxChanges)) {
            m_changes.erase(m_changes.begin(), m_changes.begin() + at + 1);
            break;
        }
    }
    updateControls();
}

// Of a preset that somebody else has removed, or renamed, no shortcut comes back.
void KeyboardLayoutPage::dropLostChanges()
{
    const auto isLost = [this](const Change &change) {
        const auto *kept = std::get_if<KeptShortcut>(&change);
        return kept != nullptr && !m_browser->hasPreset(kept->title);
    };
    while (!m_changes.isEmpty() && isLost(m_changes.last())) {
        m_changes.removeLast();
    }
}

QString KeyboardLayoutPage::nextUndo() const
{
    if (m_changes.isEmpty()) {
        return {};
    }
    const auto plain = [](const QString &text) {
        constexpr int maxLength = 40;
        // An ampersand would underline what follows it.
        return platform::shortened(text, maxLength).replace(QLatin1Char('&'), QLatin1String("&&"));
    };
    if (const auto *preset = std::get_if<presets::KeptPreset>(&m_changes.last())) {
        return tr("&Restore “%1”").arg(plain(preset->title()));
    }
    const auto &kept = std::get<KeptShortcut>(m_changes.last());
    return tr("&Undo Change of “%1” in “%2”")
        .arg(plain(m_editor->descriptionOfRow(kept.row)), plain(kept.title));
}

void KeyboardLayoutPage::undo()
{
    dropLostChanges();
    if (!m_changes.isEmpty()) {
        const Change change = m_changes.takeLast();
        std::visit([this](const auto &kept) { undo(kept); }, change);
    }
}

void KeyboardLayoutPage::undo(const KeptShortcut &kept)
{
    const QPointer<KeyboardLayoutPage> self(this);
    m_browser->showPreset(kept.title);
    m_editor->restoreShortcut(kept.row, kept.shortcut);
    if (self != nullptr) {
        updateControls();
    }
}

void KeyboardLayoutPage::undo(const presets::KeptPreset &preset)
{
    const QPointer<KeyboardLayoutPage> self(this);
    QString error;
    const QString title = preset.putBack(&error);
    if (self == nullptr) {
        return; // closed while a password was asked for
    }
    if (title.isNull()) {
        m_changes.append(preset);
        alert(tr("“%1” cannot be restored").arg(preset.title()), error);
        return;
    }
    // The changes before were made to this one, whatever it is called now.
    for (Change &change : m_changes) {
        auto *kept = std::get_if<KeptShortcut>(&change);
        if (kept != nullptr && kept->title == preset.title()) {
            kept->title = title;
        }
    }
    presetChangedOutside(title);
}
