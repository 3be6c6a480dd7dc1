// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Pane/PageNotice.h"

#include <QAccessible>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

PageNotice::PageNotice(QWidget *parent)
    : QFrame(parent), m_icon(new QLabel(this)), m_label(new QLabel(this)),
      m_actionButton(new QPushButton(this)), m_closeButton(new QToolButton(this))
{
    setFrameShape(QFrame::StyledPanel);
    m_icon->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    m_label->setObjectName(QStringLiteral("noticeLabel"));
    m_label->setTextFormat(Qt::PlainText);
    m_label->setWordWrap(true);
    m_actionButton->setObjectName(QStringLiteral("noticeActionButton"));
    m_actionButton->setText(tr("Show")); // until there is something to do
    m_closeButton->setObjectName(QStringLiteral("noticeCloseButton"));
    m_closeButton->setAutoRaise(true);
    m_closeButton->setToolTip(tr("Close this notice"));
    m_closeButton->setAccessibleName(tr("Close this notice"));
    m_closeButton->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    connect(m_closeButton, &QToolButton::clicked, this, [this] { showText({}); });
    auto *layout = new QHBoxLayout(this);
    layout->addWidget(m_icon);
    layout->addWidget(m_label, 1);
    layout->addWidget(m_actionButton);
    layout->addWidget(m_closeButton);
    hide();
}

void PageNotice::showText(const QString &text, const QString &buttonTitle,
                          const std::function<void()> &action)
{
    const int side = m_label->fontMetrics().height() * 3 / 2;
    m_icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxInformation).pixmap(side, side));
    m_label->setText(text);
    m_actionButton->disconnect();
    m_actionButton->setVisible(action != nullptr);
    if (action) {
        m_actionButton->setText(buttonTitle);
        connect(m_actionButton, &QPushButton::clicked, this, action);
    }
    m_isFailedStart = false;
    setVisible(!text.isNull());
    if (isVisible()) {
        QAccessibleEvent event(m_label, QAccessible::Alert);
        QAccessible::updateAccessibility(&event);
    }
}

void PageNotice::showFailedStart(const QString &text)
{
    if (m_label->text() != text || !m_isFailedStart) {
        showText(text);
    }
    m_isFailedStart = true;
}

void PageNotice::clearButFailedStart()
{
    if (!m_isFailedStart) {
        showText({});
    }
}

void PageNotice::followInTabOrder(QWidget *previous)
{
    setTabOrder(previous, m_actionButton);
    setTabOrder(m_actionButton, m_closeButton);
}
