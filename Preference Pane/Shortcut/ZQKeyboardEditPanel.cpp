// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Shortcut/ZQKeyboardEditPanel.h"

#include "Ostrel/OstrelNames.h"
#include "Platform/Core/Keys/KeyPress.h"
#include "Platform/Core/Notifications/NotificationCenter.h"
#include "Platform/Desktop/KeyCapture/ShortcutInhibition.h"
#include "Preference Pane/Shortcut/ShortcutPayload.h"
#include "Shared/Log/ZQException.h"

#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

ZQKeyboardEditPanel::ZQKeyboardEditPanel(QWidget *parent)
    : QDialog(parent), m_question(new QLabel(this)), m_shortcut(new QLabel(this)),
      m_hint(new QLabel(this))
{
    constexpr int width = 400; // pixels; room for the longest names
    constexpr int largeFont = 15;
    setObjectName(QStringLiteral("panelEdit"));
    setWindowTitle(tr("Choose a Shortcut"));
    setFocusPolicy(Qt::StrongFocus);

    m_question->setObjectName(QStringLiteral("panelEditQuestion"));
    m_question->setTextFormat(Qt::PlainText);
    m_question->setWordWrap(true);
    m_shortcut->setObjectName(QStringLiteral("panelEditShortcut"));
    m_shortcut->setAlignment(Qt::AlignCenter);
    m_shortcut->setFrameShape(QFrame::StyledPanel);
    QFont font = m_shortcut->font();
    font.setPointSize(largeFont);
    m_shortcut->setFont(font);
    m_shortcut->setMinimumHeight(m_shortcut->fontMetrics().height() * 2);
    m_hint->setObjectName(QStringLiteral("panelEditHint"));
    m_hint->setWordWrap(true);

    auto *buttons = new QDialogButtonBox(this);
    auto *cancel = buttons->addButton(QDialogButtonBox::Cancel);
    cancel->setObjectName(QStringLiteral("panelEditCancel"));
    // Space and Enter are shortcuts like any other.
    cancel->setFocusPolicy(Qt::NoFocus);
    cancel->setAutoDefault(false);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_question);
    layout->addWidget(m_shortcut);
    layout->addWidget(m_hint);
    layout->addWidget(buttons);
    setMinimumWidth(width);
    setKeyDescription({});
    showModifiers(Qt::NoModifier);
}

ZQKeyboardEditPanel::~ZQKeyboardEditPanel() = default;

void ZQKeyboardEditPanel::setKeyDescription(const QString &description)
{
    m_question->setText(description.isEmpty()
                            ? tr("Press the shortcut that the key shall send.")
                            : tr("Press the shortcut that “%1” shall send.").arg(description));
    setAccessibleName(m_question->text());
}

void ZQKeyboardEditPanel::beginSheet(QWidget *window)
{
    if (isVisible()) {
        return;
    }
    setParent(window, Qt::Dialog);
    setWindowModality(window != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
    m_hint->setText(tr("Every key counts, Esc, Enter and Tab too. To leave the shortcut as it is, "
                       "click Cancel."));
    setAccessibleDescription(m_hint->text());
    showModifiers(Qt::NoModifier);
    show();
    raise();
    activateWindow();
    setFocus();
}

void ZQKeyboardEditPanel::keyDown(quint16 keyCode, quint32 modifierFlags)
{
    const QPointer<ZQKeyboardEditPanel> self(this);
    platform::NotificationCenter::defaultCenter().post(
        {names::shortcutKeyChanged, {}, shortcutPayload::ofSheet(keyCode, modifierFlags)});
    if (self != nullptr) { // an observer may have closed the pane
        done(QDialog::Accepted);
    }
}

bool ZQKeyboardEditPanel::event(QEvent *event)
{
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        event->accept();
        return true;
    case QEvent::KeyPress:
        // Here and not in keyPressEvent(), which Tab does not reach.
        event->accept();
        pressed(static_cast<QKeyEvent &>(*event));
        return true;
    case QEvent::KeyRelease: {
        const auto &key = static_cast<QKeyEvent &>(*event);
        showModifiers(key.modifiers() &
                      ~Qt::KeyboardModifiers(platform::modifierOfQtKey(key.key())));
        return true;
    }
    default:
        return QDialog::event(event);
    }
}

void ZQKeyboardEditPanel::pressed(const QKeyEvent &event)
{
    const platform::KeyPress press(event);
    if (press.isModifierKey()) {
        showModifiers(event.modifiers() | platform::modifierOfQtKey(event.key()));
        return;
    }
    // The Enter that opened the sheet may still be held down.
    if (event.isAutoRepeat()) {
        return;
    }
    if (!press.keyCode()) {
        m_hint->setText(tr("Shortcuts cannot have this key. Press another one, or click Cancel."));
        return;
    }
    try {
        keyDown(*press.keyCode(), press.modifierFlags());
    } catch (const platform::Exception &exception) {
        ZQException::logException(exception, "-[ZQKeyboardEditPanel keyDown:]");
        reject();
    }
}

void ZQKeyboardEditPanel::showModifiers(Qt::KeyboardModifiers modifiers)
{
    quint32 flags = 0;
    for (const auto &key : platform::modifierKeys) {
        flags |= modifiers.testFlag(key.modifier) ? key.flag : 0;
    }
    const QString text = shortcutPayload::prefixes(flags);
    m_shortcut->setText(text.isEmpty() ? tr("Waiting for a key…") : text + QStringLiteral("…"));
}

void ZQKeyboardEditPanel::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    m_inhibition = std::make_unique<platform::ShortcutInhibition>(this);
}

void ZQKeyboardEditPanel::hideEvent(QHideEvent *event)
{
    m_inhibition.reset();
    QDialog::hideEvent(event);
}
