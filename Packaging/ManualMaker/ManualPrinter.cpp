// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Packaging/ManualMaker/ManualPrinter.h"

#include "Packaging/ManualMaker/ManualDocument.h"
#include "Packaging/ManualMaker/ManualStyle.h"

#include <QPainter>
#include <QPdfWriter>

namespace {

constexpr int resolution = 1200; // dots per inch

constexpr qreal dots(qreal millimetres)
{
    return millimetres / 25.4 * resolution;
}

// Below the text, which has this size.
void drawFooter(QPainter &painter, QSizeF text, const QString &left, const QString &right)
{
    auto font = manualStyle::bodyFont();
    font.setPointSizeF(8);
    painter.setFont(font);
    const QRectF row(0, text.height() + dots(6), text.width(), dots(7));
    painter.setPen(QPen(QColor(manualStyle::line), dots(0.2)));
    painter.drawLine(row.topLeft(), row.topRight());
    painter.setPen(QColor(manualStyle::quiet));
    painter.drawText(row, Qt::AlignLeft | Qt::AlignVCenter, left);
    painter.drawText(row, Qt::AlignRight | Qt::AlignVCenter, right);
}

} // namespace

bool printManual(ManualDocument &document, const QString &version, QIODevice &device)
{
    QPdfWriter writer(&device);
    writer.setTitle(document.title());
    writer.setCreator(QStringLiteral("Corvane"));
    writer.setResolution(resolution);
    writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait,
                                     manualStyle::margins, QPageLayout::Millimeter));
    const QSizeF text(writer.width(), writer.height());
    QPainter painter;
    if (!painter.begin(&writer)) {
        return false;
    }
    // Not as JPEG, which blurs letters.
    painter.setRenderHint(QPainter::LosslessImageRendering);
    document.layOut(&writer, text);
    const int pages = document.pageCount();
    const QString left = version.isEmpty()
                             ? document.title()
                             : QStringLiteral("%1 · Version %2").arg(document.title(), version);
    for (int page = 0; page < pages; ++page) {
        if (page > 0 && !writer.newPage()) {
            return false;
        }
        painter.save();
        painter.translate(0, -page * text.height());
        // A dot less: what begins the next page does not show at the end of this one.
        document.drawContents(&painter, {0, page * text.height(), text.width(), text.height() - 1});
        painter.restore();
        drawFooter(painter, text, left, QStringLiteral("Page %1 of %2").arg(page + 1).arg(pages));
    }
    return painter.end();
}
