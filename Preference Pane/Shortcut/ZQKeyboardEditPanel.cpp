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
#include <QFontInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace {

// For somebody who has no mouse and wants the shortcut as it is; long enough to look for a key.
constexpr int patience = 30; // seconds

// A shortcut reads from left to right also within a sentence that does not.
QString isolated(const QString &shortcut)
{
    return QChar(0x2066) + shortcut + QChar(0x2069);
}

} // namespace

ZQKeyboardEditPanel::ZQKeyboardEditPanel(QWidget *parent)
    : QDialog(parent), m_question(addText("panelEditQuestion")),
      m_current(addText("panelEditCurrent")), m_shortcut(addText("panelEditShortcut")),
      m_hint(addText("panelEditHint")), m_refusal(addText("panelEditRefusal")),
      m_countdown(addText("panelEditCountdown")), m_seconds(new QTimer(this))
{
    constexpr int width = 56; // characters
    constexpr double largeFont = 1.5;
    constexpr int second = 1000; // milliseconds
    setObjectName(QStringLiteral("panelEdit"));
    setWindowTitle(tr("Choose a Shortcut"));
    setFocusPolicy(Qt::StrongFocus);

    m_shortcut->setAlignment(Qt::AlignCenter);
    m_shortcut->setFrameShape(QFrame::StyledPanel);
    QFont font = m_shortcut->font();
    font.setPointSizeF(QFontInfo(font).pointSizeF() * largeFont);
    m_shortcut->setFont(font);
    m_shortcut->setMinimumHeight(m_shortcut->fontMetrics().height() * 2);
    m_refusal->setText(tr("The desktop keeps its own shortcuts to itself here: they do what they "
                          "always do, and cannot be chosen."));

    auto *buttons = new QDialogButtonBox(this);
    auto *cancel = buttons->addButton(QDialogButtonBox::Cancel);
    cancel->setObjectName(QStringLiteral("panelEditCancel"));
    // Space and Enter are shortcuts like any other.
    cancel->setFocusPolicy(Qt::NoFocus);
    cancel->setAutoDefault(false);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    m_seconds->setInterval(second);
    connect(m_seconds, &QTimer::timeout, this, &ZQKeyboardEditPanel::countDown);

    auto *layout = new QVBoxLayout(this);
    for (auto *text : {m_question, m_current, m_shortcut, m_hint, m_refusal}) {
        layout->addWidget(text);
    }
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_countdown, 1);
    bottom->addWidget(buttons);
    layout->addLayout(bottom);
    setMinimumWidth(width * fontMetrics().averageCharWidth());
    m_refusal->hide();
    setKeyDescription({});
    setCurrentShortcut({});
    showModifiers(0);
}

ZQKeyboardEditPanel::~ZQKeyboardEditPanel() = default;

QLabel *ZQKeyboardEditPanel::addText(const char *name)
{
    auto *label = new QLabel(this);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

void ZQKeyboardEditPanel::setKeyDescription(const QString &description)
{
    m_question->setText(description.isEmpty()
                            ? tr("Press the shortcut that the key shall send.")
                            : tr("Press the shortcut that “%1” shall send.").arg(description));
    setAccessibleName(m_question->text());
}

void ZQKeyboardEditPanel::setCurrentShortcut(const QString &shortcut)
{
    m_current->setText(shortcut.isEmpty() ? tr("It has no shortcut now.")
                                          : tr("Its shortcut now: %1").arg(isolated(shortcut)));
    describe();
}

void ZQKeyboardEditPanel::beginSheet(QWidget *window)
{
    if (isVisible()) {
        return;
    }
    setParent(window, Qt::Dialog);
    setWindowModality(window != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
    m_refusal->hide();
    setHint(tr("Every key counts, Esc, Enter and Tab too. To leave the shortcut as it is, click "
               "Cancel, or press nothing for %1 seconds. Ctrl, Shift, Alt or Meta give you that "
               "time anew.")
                .arg(patience));
    showModifiers(platform::heldModifierFlags());
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
    case QEvent::KeyRelease:
        showModifiers(platform::KeyPress(static_cast<QKeyEvent &>(*event)).modifierFlags());
        return true;
    case QEvent::WindowActivate:
        showModifiers(platform::heldModifierFlags()); // pressed while another window was told
        return QDialog::event(event);
    case QEvent::WindowDeactivate:
        showModifiers(0); // nobody will tell of their release
        return QDialog::event(event);
    default:
        return QDialog::event(event);
    }
}

void ZQKeyboardEditPanel::pressed(const QKeyEvent &event)
{
    const platform::KeyPress press(event);
    showModifiers(press.modifierFlags());
    // The Enter that opened the sheet may still be held down.
    if (event.isAutoRepeat()) {
        return;
    }
    if (press.isModifierKey()) {
        restartCountdown();
        return;
    }
    const auto keyCode = press.shortcutKeyCode();
    if (!keyCode) {
        setHint(tr("Shortcuts cannot have this key. Press another one, or click Cancel."));
        return;
    }
    try {
        keyDown(*keyCode, press.modifierFlags());
    } catch (const platform::Exception &exception) {
        ZQException::logException(exception, "-[ZQKeyboardEditPanel keyDown:]");
        reject();
    }
}

void ZQKeyboardEditPanel::showModifiers(quint32 modifierFlags)
{
    const QString text = shortcutPayload::prefixes(modifierFlags);
    m_shortcut->setLayoutDirection(text.isEmpty() ? layoutDirection() : Qt::LeftToRight);
    m_shortcut->setText(text.isEmpty() ? tr("Waiting for a key…") : text + QStringLiteral("…"));
}

void ZQKeyboardEditPanel::setHint(const QString &hint)
{
    m_hint->setText(hint);
    describe();
}

void ZQKeyboardEditPanel::restartCountdown()
{
    m_secondsLeft = patience + 1;
    m_seconds->start();
    countDown();
}

void ZQKeyboardEditPanel::countDown()
{
    --m_secondsLeft;
    if (m_secondsLeft <= 0) {
        reject();
        return;
    }
    m_countdown->setText(tr("Closes in %1 s").arg(m_secondsLeft));
    if (m_secondsLeft < patience) {
        showRefusal();
    }
}

// Looked at once a second: the desktop may need a moment to agree, and may change its mind.
void ZQKeyboardEditPanel::showRefusal()
{
    const bool isRefused = isActiveWindow() && m_inhibition != nullptr && !m_inhibition->isActive();
    if (isRefused == m_refusal->isHidden()) {
        m_refusal->setVisible(isRefused);
        describe();
    }
}

// What a screen reader reads of the sheet, and the sheet's height with it.
void ZQKeyboardEditPanel::describe()
{
    QStringList texts{m_current->text(), m_hint->text()};
    if (!m_refusal->isHidden()) {
        texts.append(m_refusal->text());
    }
    setAccessibleDescription(texts.join(QLatin1Char(' ')));
    // Not adjustSize(), which cuts texts off on a small screen.
    const int width = qMax(minimumWidth(), layout()->totalMinimumSize().width());
    resize(width, layout()->totalHeightForWidth(width));
}

void ZQKeyboardEditPanel::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    m_inhibition = std::make_unique<platform::ShortcutInhibition>(this);
    if (!event->spontaneous()) {
        restartCountdown();
    }
}

void ZQKeyboardEditPanel::hideEvent(QHideEvent *event)
{
    m_inhibition.reset();
    if (!event->spontaneous()) {
        m_seconds->stop();
    }
    QDialog::hideEvent(event);
}
