// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Packaging/ManualMaker/PageBreaks.h"

#include "Packaging/ManualMaker/ManualStyle.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>
#include <QTextTable>

#include <cmath>

namespace pageBreaks {
namespace {

QTextTable *tableOf(const QTextBlock &block)
{
    return QTextCursor(block).currentTable();
}

bool keepsWithNext(const QTextBlock &block)
{
    const auto next = block.next();
    if (auto *table = tableOf(block)) {
        return table == tableOf(next);
    }
    return block.blockFormat().headingLevel() > 0 ||
           block.text().trimmed().endsWith(QLatin1Char(':')) ||
           (manualStyle::isCode(block) && manualStyle::isCode(next));
}

// Of the line that holds this character, from the beginning of the document.
qreal topOfLine(const QTextBlock &block, int character)
{
    return block.document()->documentLayout()->blockBoundingRect(block).top() +
           block.layout()->lineForTextPosition(character).y();
}

bool isSplit(const QTextBlock &first, const QTextBlock &last)
{
    constexpr qreal rounding = 2; // the layout counts in parts of a dot
    const qreal page = first.document()->pageSize().height();
    const qreal top = topOfLine(first, 0) + rounding;
    const qreal bottom = topOfLine(last, last.length() - 1) + rounding;
    return std::floor(top / page) != std::floor(bottom / page) && bottom - top < page;
}

void beginPageAt(const QTextBlock &block)
{
    if (auto *table = tableOf(block)) {
        auto format = table->format();
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        table->setFormat(format);
        return;
    }
    QTextBlockFormat format;
    format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    QTextCursor(block).mergeBlockFormat(format);
}

} // namespace

void improve(QTextDocument &document)
{
    for (auto first = document.begin(); first.isValid();) {
        auto last = first;
        while (last.next().isValid() && keepsWithNext(last)) {
            last = last.next();
        }
        document.documentLayout()->documentSize(); // lays out what has moved
        if (isSplit(first, last)) {
            beginPageAt(first);
        }
        first = last.next();
    }
}

} // namespace pageBreaks
