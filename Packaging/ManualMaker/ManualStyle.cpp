// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Packaging/ManualMaker/ManualStyle.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextTable>

#include <vector>

namespace manualStyle {
namespace {

constexpr qreal bodySize = 9.5; // points
constexpr qreal codeSize = 8.5; // points
constexpr qreal paragraphGap = 8;
constexpr qreal tableBorder = 0.75;
constexpr int lineHeight = 125; // per cent

// The reader of Markdown leaves an empty line after code.
void removeEmptyCode(QTextDocument &document)
{
    for (auto block = document.begin(); block.isValid(); block = block.next()) {
        if (isCode(block) && block.length() == 1 && !isCode(block.next())) {
            QTextCursor cursor(block);
            block = block.previous();
            cursor.deletePreviousChar();
        }
    }
}

// The reader of Markdown gives a font to code alone.
std::vector<QTextCursor> codeIn(const QTextBlock &block)
{
    std::vector<QTextCursor> found;
    for (auto part = block.begin(); !part.atEnd(); ++part) {
        const auto fragment = part.fragment();
        if (fragment.charFormat().hasProperty(QTextFormat::FontFamilies) ||
            fragment.charFormat().hasProperty(QTextFormat::FontFamily)) {
            auto &cursor = found.emplace_back(block);
            cursor.setPosition(fragment.position());
            cursor.setPosition(fragment.position() + fragment.length(), QTextCursor::KeepAnchor);
        }
    }
    return found;
}

// Whether this and the next paragraph are entries of a list or lines of code.
bool goesOn(const QTextBlock &block)
{
    return isCode(block) ? isCode(block.next())
                         : block.textList() != nullptr && block.next().textList() != nullptr;
}

void styleBlock(const QTextBlock &block)
{
    QTextBlockFormat format;
    QTextCursor cursor(block);
    const bool inTable = cursor.currentTable() != nullptr;
    format.setTopMargin(0);
    format.setBottomMargin(inTable ? 0 : goesOn(block) ? (isCode(block) ? 0 : 3) : paragraphGap);
    if (const int level = block.blockFormat().headingLevel(); level > 0) {
        format.setTopMargin(level == 1 ? 0 : 24 - 8 * (level - 2));
        QTextCharFormat letters;
        letters.setForeground(QColor(accent));
        cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        cursor.mergeCharFormat(letters);
    } else if (block.text() != QChar(QChar::ObjectReplacementCharacter)) { // a picture
        format.setLineHeight(lineHeight, QTextBlockFormat::ProportionalHeight);
    }
    if (isCode(block)) {
        format.setBackground(QColor(shade));
        format.setLeftMargin(12);
    }
    cursor.mergeBlockFormat(format);
    for (auto &code : codeIn(block)) {
        QTextCharFormat letters;
        letters.setFontFamilies({QStringLiteral("DejaVu Sans Mono"), QStringLiteral("monospace")});
        letters.setFontPointSize(codeSize);
        letters.setFontWeight(code.charFormat().fontWeight());
        code.setCharFormat(letters);
    }
}

void styleTable(QTextTable &table)
{
    auto format = table.format();
    format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
    format.setBorder(tableBorder);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderBrush(QColor(line));
    format.setBorderCollapse(true);
    format.setCellSpacing(0);
    format.setBottomMargin(paragraphGap);
    format.setHeaderRowCount(1);
    table.setFormat(format);
    for (auto cell = table.cellAt(0, 0); cell.isValid();
         cell = table.cellAt(cell.lastPosition() + 1)) {
        auto look = cell.format().toTableCellFormat();
        look.setBorder(tableBorder);
        look.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
        look.setBorderBrush(QColor(line));
        look.setPadding(4);
        if (cell.row() == 0) {
            look.setBackground(QColor(shade));
        }
        cell.setFormat(look);
    }
}

} // namespace

QFont bodyFont()
{
    QFont font;
    font.setFamilies({QStringLiteral("DejaVu Sans"), QStringLiteral("sans-serif")});
    font.setPointSizeF(bodySize);
    // Next to nothing, but it does without ligatures: who searches for "file" finds it.
    font.setLetterSpacing(QFont::AbsoluteSpacing, 0.02);
    return font;
}

bool isCode(const QTextBlock &block)
{
    return block.blockFormat().hasProperty(QTextFormat::BlockCodeFence) ||
           block.blockFormat().hasProperty(QTextFormat::BlockCodeLanguage);
}

void apply(QTextDocument &document)
{
    document.setDefaultFont(bodyFont());
    document.setDocumentMargin(0);
    document.setIndentWidth(22);
    removeEmptyCode(document);
    for (auto block = document.begin(); block.isValid(); block = block.next()) {
        styleBlock(block);
    }
    for (auto *frame : document.rootFrame()->childFrames()) {
        if (auto *table = qobject_cast<QTextTable *>(frame)) {
            styleTable(*table);
        }
    }
}

} // namespace manualStyle
