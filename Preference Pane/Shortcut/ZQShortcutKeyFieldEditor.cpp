// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Shortcut/ZQShortcutKeyFieldEditor.h"

#include "Ostrel/OstrelNames.h"
#include "Platform/Core/Keys/KeyPress.h"
#include "Platform/Core/Notifications/NotificationCenter.h"
#include "Preference Pane/Shortcut/ShortcutPayload.h"
#include "Shared/Log/ZQException.h"

#include <QKeyEvent>

ZQShortcutKeyFieldEditor::ZQShortcutKeyFieldEditor(QWidget *parent) : QTextEdit(parent)
{
    setFieldEditor(true);
    setPlainText(QString());
    // Neither an input method nor a paste nor a drop types into it.
    setTextInteractionFlags(Qt::NoTextInteraction);
    setAttribute(Qt::WA_InputMethodEnabled, false);
}

void ZQShortcutKeyFieldEditor::keyDown(quint16 keyCode, quint32 modifierFlags)
{
    platform::NotificationCenter::defaultCenter().post(
        {names::shortcutKeyChanged, {}, shortcutPayload::ofFieldEditor(keyCode, modifierFlags)});
}

bool ZQShortcutKeyFieldEditor::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        event->accept();
        return true;
    }
    if (event->type() != QEvent::KeyPress) {
        return QTextEdit::event(event);
    }
    // Here and not in keyPressEvent(), which Tab does not reach.
    event->accept();
    const platform::KeyPress press(static_cast<QKeyEvent &>(*event));
    if (const auto keyCode = press.shortcutKeyCode()) {
        try {
            keyDown(*keyCode, press.modifierFlags());
        } catch (const platform::Exception &exception) {
            ZQException::logException(exception, "-[ZQShortcutKeyFieldEditor keyDown:]");
        }
    }
    return true;
}
