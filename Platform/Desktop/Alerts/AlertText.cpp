// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Desktop/Alerts/AlertText.h"

#include "Platform/Core/Text/ShortText.h"

#include <QEvent>
#include <QTextDocument>

#include <algorithm>
#include <cmath>

namespace platform {

AlertText::AlertText(const QString &text, int maxLength, QWidget *parent) : QTextBrowser(parent)
{
    setFrameStyle(QFrame::NoFrame);
    viewport()->setAutoFillBackground(false);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setOpenLinks(false);
    setUndoRedoEnabled(false);
    document()->setDocumentMargin(0);
    setPlainText(shortened(text, maxLength));
    takeLabelColours();
}

int AlertText::idealWidth(int maxWidth) const
{
    return static_cast<int>(std::min<qreal>(std::ceil(measured(-1)->idealWidth()), maxWidth));
}

void AlertText::fit(int width, int maxHeight)
{
    const auto height = static_cast<int>(std::ceil(measured(width)->size().height()));
    const bool scrolls = height > maxHeight;
    setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    // Only a text that must be scrolled is a stop for the Tab key.
    setFocusPolicy(scrolls ? Qt::StrongFocus : Qt::NoFocus);
    setTextInteractionFlags(scrolls ? Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard
                                    : Qt::TextInteractionFlags(Qt::TextSelectableByMouse));
    setFixedSize(width, std::min(height, maxHeight));
}

void AlertText::changeEvent(QEvent *event)
{
    QTextBrowser::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        takeLabelColours();
    }
}

// The text laid out that wide; -1: as wide as it likes. A copy, since the view lays its own text
// out for the width that it has just now.
std::unique_ptr<QTextDocument> AlertText::measured(int width) const
{
    std::unique_ptr<QTextDocument> text(document()->clone());
    text->setTextWidth(width);
    return text;
}

// A text view paints in the colour of input fields, which need not be readable on a window.
void AlertText::takeLabelColours()
{
    auto colours = palette();
    if (colours.color(QPalette::Text) != colours.color(QPalette::WindowText)) {
        colours.setBrush(QPalette::Text, colours.windowText());
        setPalette(colours);
    }
}

} // namespace platform
