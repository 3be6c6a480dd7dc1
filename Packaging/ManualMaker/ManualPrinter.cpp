// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Packaging/ManualMaker/ManualPrinter.h"

#include "Packaging/ManualMaker/ManualDocument.h"
#include "Packaging/ManualMaker/ManualStyle.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QPdfWriter>

namespace {

constexpr int resolution = 1200; // dots per inch
constexpr qreal side = 22;       // millimetres, as are these
constexpr qreal top = 20;
constexpr qreal bottom = 24;
constexpr qreal footerBelowText = 6;

qreal dots(qreal millimetres)
{
    constexpr qreal millimetresPerInch = 25.4;
    return millimetres / millimetresPerInch * resolution;
}

void drawFooter(QPainter &painter, const QRectF &text, const QString &left, const QString &right)
{
    auto font = manualStyle::bodyFont();
    font.setPointSizeF(8);
    painter.setFont(font);
    const qreal line = text.bottom() + dots(footerBelowText);
    painter.setPen(QPen(QColor(manualStyle::line), dots(0.2)));
    painter.drawLine(QPointF(text.left(), line), QPointF(text.right(), line));
    painter.setPen(QColor(manualStyle::quiet));
    const QRectF row(text.left(), line + dots(1), text.width(), dots(6));
    painter.drawText(row, Qt::AlignLeft | Qt::AlignTop, left);
    painter.drawText(row, Qt::AlignRight | Qt::AlignTop, right);
}

} // namespace

bool printManual(ManualDocument &document, const QString &version, QIODevice &device)
{
    QPdfWriter writer(&device);
    writer.setTitle(document.title());
    writer.setCreator(QStringLiteral("Corvane"));
    writer.setResolution(resolution);
    writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, QMarginsF(),
                                     QPageLayout::Millimeter));
    const QRectF paper(0, 0, writer.width(), writer.height());
    const QRectF text = paper.adjusted(dots(side), dots(top), -dots(side), -dots(bottom));

    QPainter painter;
    if (!painter.begin(&writer)) {
        return false;
    }
    // Not as JPEG, which blurs letters.
    painter.setRenderHint(QPainter::LosslessImageRendering);
    document.layOut(&writer, text.size());
    const int pages = document.pageCount();
    QString left = document.title();
    if (!version.isEmpty()) {
        left += QStringLiteral(" · Version %1").arg(version);
    }
    for (int page = 0; page < pages; ++page) {
        if (page > 0 && !writer.newPage()) {
            return false;
        }
        // A dot less: what begins the next page does not show at the end of this one.
        const QRectF shown(0, page * text.height(), text.width(), text.height() - 1);
        painter.save();
        painter.translate(text.left(), text.top() - shown.top());
        painter.setClipRect(shown);
        QAbstractTextDocumentLayout::PaintContext context;
        context.clip = shown;
        context.palette.setColor(QPalette::Text, Qt::black);
        document.documentLayout()->draw(&painter, context);
        painter.restore();
        drawFooter(painter, text, left, QStringLiteral("Page %1 of %2").arg(page + 1).arg(pages));
    }
    return painter.end();
}
