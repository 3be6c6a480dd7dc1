// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QDialog>

#include <memory>

class QLabel;
class QTimer;

namespace platform {
class ShortcutInhibition;
}

// The sheet that takes the next key press as a shortcut, any key with any modifiers. No key leaves
// it without a shortcut; the mouse does, and so does whoever presses nothing for 30 seconds. While
// it shows, the desktop's own shortcuts keep quiet.
class ZQKeyboardEditPanel : public QDialog {
    Q_OBJECT
public:
    explicit ZQKeyboardEditPanel(QWidget *parent = nullptr);
    ~ZQKeyboardEditPanel() override;

    // Which key of the remote control the shortcut is for; null for none.
    void setKeyDescription(const QString &description);
    // The shortcut that the key has, as people read it; empty for none.
    void setCurrentShortcut(const QString &shortcut);

    /// beginSheet:modalForWindow:modalDelegate:didEndSelector:contextInfo:
    void beginSheet(QWidget *window);

    /// keyDown:
    /// Posts ZQShortcutKeyChanged with the press, ends the sheet and hides the panel.
    void keyDown(quint16 keyCode, quint32 modifierFlags);

protected:
    bool event(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QLabel *addText(const char *name);
    void pressed(const QKeyEvent &event);
    void showModifiers(quint32 modifierFlags);
    void setHint(const QString &hint);
    void restartCountdown();
    void countDown();
    void showRefusal();
    void describe();

    QLabel *m_question;
    QLabel *m_current;
    QLabel *m_shortcut;
    QLabel *m_hint;
    QLabel *m_refusal;
    QLabel *m_countdown;
    QTimer *m_seconds;
    int m_secondsLeft = 0;
    std::unique_ptr<platform::ShortcutInhibition> m_inhibition;
};
