// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Alerts/AlertPanel.h"

#include "Platform/Desktop/Alerts/AlertText.h"

#include <QAccessibleWidget>
#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTextDocument>

#include <algorithm>

namespace platform {
namespace {

// A person reads no more than this in an alert, and laying out more would take noticeable time.
constexpr int maxMessageLength = 1000;
constexpr int maxBodyLength = 10000;

// Line lengths that read well, in average characters.
constexpr int minLineWidth = 34;
constexpr int maxLineWidth = 60;
constexpr int maxTitleWidth = 30;

QLabel *alertIcon(AlertStyle alertStyle, QWidget *panel)
{
    auto *icon = new QLabel(panel);
    const auto *style = panel->style();
    const auto side = style->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, panel);
    const auto picture = alertStyle == AlertStyle::Warning ? QStyle::SP_MessageBoxWarning
                                                           : QStyle::SP_MessageBoxInformation;
    icon->setPixmap(style->standardIcon(picture, nullptr, panel).pixmap(side, side));
    return icon;
}

// Screen readers announce a window with this role at once, whole.
QAccessibleInterface *accessibleAlert(const QString &className, QObject *object)
{
    if (className != QLatin1String(AlertPanel::staticMetaObject.className())) {
        return nullptr;
    }
    return new QAccessibleWidget(qobject_cast<QWidget *>(object), QAccessible::AlertMessage);
}

void bringToFront(QWidget *window)
{
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
}

} // namespace

qint64 AlertDescription::escapeReturn() const
{
    if (!alternateButton.isEmpty()) {
        return AlertAlternateReturn;
    }
    return otherButton.isEmpty() ? AlertDefaultReturn : AlertOtherReturn;
}

AlertPanel::AlertPanel(const AlertDescription &description, QWidget *parent)
    : QDialog(parent == nullptr ? nullptr : parent->window()), m_description(description),
      m_message(new AlertText(description.messageText, maxMessageLength, this)),
      m_body(new AlertText(description.informativeText, maxBodyLength, this)),
      m_buttons(new QDialogButtonBox(this))
{
    static const bool installed = [] {
        QAccessible::installFactory(accessibleAlert);
        return true;
    }();
    Q_UNUSED(installed)

    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    setWindowModality(parent == nullptr ? Qt::NonModal : Qt::WindowModal);
    setAttribute(Qt::WA_QuitOnClose, false);
    setWindowTitle(QGuiApplication::applicationDisplayName());
    setAccessibleName(description.messageText.left(maxMessageLength));
    setAccessibleDescription(description.informativeText.left(maxBodyLength));
    m_message->setObjectName(QStringLiteral("messageText"));
    m_body->setObjectName(QStringLiteral("informativeText"));
    m_body->setVisible(!description.informativeText.isEmpty());

    auto *layout = new QGridLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(alertIcon(description.style, this), 0, 0, 3, 1, Qt::AlignTop);
    layout->addWidget(m_message, 0, 1);
    layout->addWidget(m_body, 1, 1);
    layout->setRowStretch(2, 1);
    layout->setColumnStretch(2, 1);
    layout->addWidget(m_buttons, 4, 0, 1, 3);
    const auto gap = style()->pixelMetric(QStyle::PM_LayoutHorizontalSpacing, nullptr, this);
    layout->setHorizontalSpacing(2 * std::max(gap, 6));
    fit();
    addButtons();
}

QCheckBox *AlertPanel::suppressionButton()
{
    if (m_suppression == nullptr) {
        m_suppression = new QCheckBox(tr("Do not show this message again"), this);
        m_suppression->setObjectName(QStringLiteral("suppressionButton"));
        static_cast<QGridLayout *>(layout())->addWidget(m_suppression, 3, 1);
        setTabOrder(m_body, m_suppression);
        setTabOrder(m_suppression, m_defaultButton);
    }
    return m_suppression;
}

void AlertPanel::begin()
{
    if (auto *parent = parentWidget()) {
        bringToFront(parent);
    }
    m_defaultButton->setFocus();
    bringToFront(this);
}

void AlertPanel::orderOut()
{
    m_answered = true;
    hide();
}

void AlertPanel::accept()
{
    answer(AlertDefaultReturn);
}

void AlertPanel::reject()
{
    answer(m_description.escapeReturn());
}

void AlertPanel::answer(qint64 code)
{
    if (!m_answered) {
        orderOut();
        Q_EMIT answered(code);
    }
}

void AlertPanel::addButtons()
{
    m_defaultButton =
        addButton(m_description.defaultButton, QDialogButtonBox::AcceptRole, AlertDefaultReturn);
    m_defaultButton->setDefault(true);
    m_defaultButton->setObjectName(QStringLiteral("defaultButton"));
    if (!m_description.otherButton.isEmpty()) {
        addButton(m_description.otherButton, QDialogButtonBox::DestructiveRole, AlertOtherReturn)
            ->setObjectName(QStringLiteral("otherButton"));
    }
    if (!m_description.alternateButton.isEmpty()) {
        addButton(m_description.alternateButton, QDialogButtonBox::RejectRole, AlertAlternateReturn)
            ->setObjectName(QStringLiteral("alternateButton"));
    }
}

QPushButton *AlertPanel::addButton(const QString &title, int role, qint64 code)
{
    QPushButton *button = nullptr;
    if (title.isEmpty()) {
        button = m_buttons->addButton(QDialogButtonBox::Ok);
    } else {
        const auto metrics = fontMetrics();
        const auto maxWidth =
            std::min(maxTitleWidth * metrics.averageCharWidth(), availableSize().width() / 5);
        const auto shown =
            metrics.elidedText(title.left(maxMessageLength).simplified(), Qt::ElideRight, maxWidth);
        // An ampersand in a title is one, not the mark of a shortcut.
        auto label = shown;
        label.replace(QLatin1Char('&'), QLatin1String("&&"));
        button = m_buttons->addButton(label, static_cast<QDialogButtonBox::ButtonRole>(role));
        button->setAccessibleName(title.left(maxMessageLength));
        if (shown != title) {
            button->setToolTip(Qt::convertFromPlainText(title.left(maxMessageLength)));
        }
    }
    connect(button, &QPushButton::clicked, this, [this, code] { answer(code); });
    return button;
}

void AlertPanel::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        fit();
    }
}

void AlertPanel::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

QSize AlertPanel::availableSize() const
{
    const auto *nearest = parentWidget() != nullptr ? parentWidget()->screen() : screen();
    return nearest->availableGeometry().size();
}

// Gives the texts their room: as wide as reads well, and never higher than the screen.
void AlertPanel::fit()
{
    auto headline = QApplication::font("QMessageBoxLabel");
    // Bold only where there is a body to stand out from.
    headline.setBold(headline.bold() || !m_description.informativeText.isEmpty());
    m_message->setFont(headline);

    const auto character = fontMetrics().averageCharWidth();
    const auto maxWidth = std::min(maxLineWidth * character, availableSize().width() / 2);
    const auto width = std::max({m_message->idealWidth(maxWidth), m_body->idealWidth(maxWidth),
                                 std::min(minLineWidth * character, maxWidth)});
    m_message->fit(width, availableSize().height() / 5);
    m_body->fit(width, availableSize().height() * 2 / 5);
}

} // namespace platform
