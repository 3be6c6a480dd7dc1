// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Preference Pane/Pane/StatusLabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

namespace {
// More than any window shows; keeps painting quick whatever somebody sends.
constexpr int maxPaintedLength = 512;
constexpr int widthInCharacters = 30;
} // namespace

StatusLabel::StatusLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize StatusLabel::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * widthInCharacters, fontMetrics().height()};
}

QSize StatusLabel::minimumSizeHint() const
{
    return sizeHint();
}

QString StatusLabel::shownText() const
{
    QString shown = text().left(maxPaintedLength);
    for (auto &character : shown) {
        if (character.category() == QChar::Other_Control ||
            character.category() == QChar::Separator_Line ||
            character.category() == QChar::Separator_Paragraph) {
            character = QLatin1Char(' ');
        }
    }
    if (text().size() > maxPaintedLength) {
        shown += QChar(0x2026);
    }
    return shown;
}

void StatusLabel::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    const QString elided = fontMetrics().elidedText(shownText(), Qt::ElideRight, width());
    // The text has its own direction, whatever that of the window: its dots stay at its end.
    const auto flags = QStyle::visualAlignment(layoutDirection(), alignment()) | Qt::AlignAbsolute;
    const auto direction =
        elided.isRightToLeft() ? Qt::TextForceRightToLeft : Qt::TextForceLeftToRight;
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(flags) | direction, palette(),
                          isEnabled(), elided, foregroundRole());
}

bool StatusLabel::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        const QString shown = shownText();
        const bool fits = fontMetrics().horizontalAdvance(shown) <= width();
        QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(),
                           fits ? QString() : shown.toHtmlEscaped(), this);
        return true;
    }
    return QLabel::event(event);
}
