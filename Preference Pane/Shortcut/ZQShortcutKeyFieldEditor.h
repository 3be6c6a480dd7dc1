// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QTextEdit>

// A field editor that reports key presses instead of typing them.
class ZQShortcutKeyFieldEditor : public QTextEdit {
    Q_OBJECT
public:
    /// init: an empty field editor.
    explicit ZQShortcutKeyFieldEditor(QWidget *parent = nullptr);

    // Whether it edits fields on behalf of others, as opposed to a text view of its own.
    bool isFieldEditor() const { return m_isFieldEditor; }
    void setFieldEditor(bool fieldEditor) { m_isFieldEditor = fieldEditor; }

    /// keyDown:
    /// Posts ZQShortcutKeyChanged, without "modifierFlags". What an observer throws passes through.
    static void keyDown(quint16 keyCode, quint32 modifierFlags);

protected:
    bool event(QEvent *event) override;

private:
    bool m_isFieldEditor = false;
};
