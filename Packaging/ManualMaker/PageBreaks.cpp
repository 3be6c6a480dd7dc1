// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Packaging/ManualMaker/PageBreaks.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>
#include <QTextTable>

#include <vector>

namespace pageBreaks {
namespace {

// A paragraph or a table, as they stand one below the other.
struct Item {
    QTextBlock first;
    QTextBlock last;
    QTextTable *table = nullptr;
};

std::vector<Item> itemsOf(const QTextDocument &document)
{
    std::vector<Item> items;
    for (auto part = document.rootFrame()->begin(); !part.atEnd(); ++part) {
        if (auto *table = qobject_cast<QTextTable *>(part.currentFrame())) {
            items.push_back(
                {table->firstCursorPosition().block(), table->lastCursorPosition().block(), table});
        } else if (part.currentBlock().isValid()) {
            items.push_back({part.currentBlock(), part.currentBlock(), nullptr});
        }
    }
    return items;
}

bool isCode(const Item &item)
{
    return item.table == nullptr &&
           (item.first.blockFormat().hasProperty(QTextFormat::BlockCodeFence) ||
            item.first.blockFormat().hasProperty(QTextFormat::BlockCodeLanguage));
}

bool staysWithNext(const Item &item, const Item &next)
{
    return item.table == nullptr && (item.first.blockFormat().headingLevel() > 0 ||
                                     item.first.text().trimmed().endsWith(QLatin1Char(':')) ||
                                     (isCode(item) && isCode(next)));
}

// Of the first or the last line, from the beginning of the document.
qreal topOfLine(const QTextBlock &block, bool last)
{
    const auto box = block.document()->documentLayout()->blockBoundingRect(block);
    const auto *layout = block.layout();
    if (layout->lineCount() == 0) {
        return box.top();
    }
    return box.top() + layout->lineAt(last ? layout->lineCount() - 1 : 0).y();
}

int pageAt(const QTextDocument &document, qreal y)
{
    constexpr qreal rounding = 2; // the layout counts in parts of a dot
    return static_cast<int>((y + rounding) / document.pageSize().height());
}

void beginPageAt(const Item &item)
{
    if (item.table != nullptr) {
        auto format = item.table->format();
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
        item.table->setFormat(format);
        return;
    }
    auto format = item.first.blockFormat();
    format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    QTextCursor(item.first).setBlockFormat(format);
}

bool isTorn(const QTextDocument &document, const Item &first, const Item &last)
{
    const qreal top = topOfLine(first.first, false);
    const qreal bottom = topOfLine(last.last, true);
    return pageAt(document, top) != pageAt(document, bottom) &&
           bottom - top < document.pageSize().height();
}

} // namespace

void improve(QTextDocument &document)
{
    const auto items = itemsOf(document);
    for (std::size_t begin = 0; begin < items.size();) {
        std::size_t end = begin;
        while (end + 1 < items.size() && staysWithNext(items[end], items[end + 1])) {
            ++end;
        }
        document.documentLayout()->documentSize(); // lays out what has moved
        if (isTorn(document, items[begin], items[end])) {
            beginPageAt(items[begin]);
        }
        begin = end + 1;
    }
}

} // namespace pageBreaks
