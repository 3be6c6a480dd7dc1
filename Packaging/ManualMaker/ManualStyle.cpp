// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Packaging/ManualMaker/ManualStyle.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextList>
#include <QTextTable>

#include <array>
#include <vector>

namespace manualStyle {
namespace {

constexpr qreal bodySize = 9.5; // points, as are all sizes of fonts
constexpr qreal codeSize = 8.5;
constexpr qreal paragraphGap = 8;
constexpr qreal lineHeight = 125; // per cent
constexpr qreal cellBorder = 0.75;
constexpr qreal listIndent = 22;

struct HeadingLook {
    qreal size;
    qreal above;
    qreal below;
};
constexpr std::array<HeadingLook, 3> headings{{{23, 0, 10}, {14.5, 24, 7}, {11, 16, 5}}};

const HeadingLook &lookOfHeading(int level)
{
    return headings.at(static_cast<std::size_t>(qBound(1, level, 3) - 1));
}

QStringList codeFamilies()
{
    return {QStringLiteral("DejaVu Sans Mono"), QStringLiteral("monospace")};
}

struct Part {
    int begin;
    int end;
    QTextCharFormat format;
};

void styleCharacters(QTextDocument &document, const QTextBlock &block)
{
    // Setting the format of one part makes new parts of the others.
    std::vector<Part> parts;
    for (auto part = block.begin(); !part.atEnd(); ++part) {
        const auto fragment = part.fragment();
        parts.push_back(
            {fragment.position(), fragment.position() + fragment.length(), fragment.charFormat()});
    }
    const int level = block.blockFormat().headingLevel();
    for (auto &[begin, end, format] : parts) {
        if (format.isImageFormat()) {
            continue;
        }
        // Nothing else has a font of its own.
        const bool isCode = format.hasProperty(QTextFormat::FontFamilies) ||
                            format.hasProperty(QTextFormat::FontFamily);
        format.clearProperty(QTextFormat::FontSizeAdjustment);
        format.clearProperty(QTextFormat::FontPixelSize);
        format.clearProperty(QTextFormat::FontFamily);
        format.setFontFamilies(isCode ? codeFamilies() : bodyFont().families());
        format.setFontPointSize(level > 0 ? lookOfHeading(level).size
                                : isCode  ? codeSize
                                          : bodySize);
        if (level > 0) {
            format.setFontWeight(QFont::Bold);
            format.setForeground(QColor(accent));
        } else if (format.isAnchor()) {
            format.setForeground(QColor(accent));
            format.setFontUnderline(false);
        }
        QTextCursor cursor(&document);
        cursor.setPosition(begin);
        cursor.setPosition(end, QTextCursor::KeepAnchor);
        cursor.setCharFormat(format);
    }
}

bool isCode(const QTextBlock &block)
{
    return block.isValid() && (block.blockFormat().hasProperty(QTextFormat::BlockCodeFence) ||
                               block.blockFormat().hasProperty(QTextFormat::BlockCodeLanguage));
}

bool hasPicture(const QTextBlock &block)
{
    for (auto part = block.begin(); !part.atEnd(); ++part) {
        if (part.fragment().charFormat().isImageFormat()) {
            return true;
        }
    }
    return false;
}

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

void styleBlock(const QTextBlock &block, bool inTable)
{
    auto format = block.blockFormat();
    const int level = format.headingLevel();
    const bool code = isCode(block);
    format.setTopMargin(0);
    format.setBottomMargin(inTable ? 0 : paragraphGap);
    if (level > 0) {
        format.setTopMargin(lookOfHeading(level).above);
        format.setBottomMargin(lookOfHeading(level).below);
    } else if (code) {
        format.setBackground(QColor(shade));
        format.setLeftMargin(12);
        format.setBottomMargin(isCode(block.next()) ? 0 : paragraphGap);
        format.setLineHeight(lineHeight, QTextBlockFormat::ProportionalHeight);
    } else if (!hasPicture(block)) {
        format.setLineHeight(lineHeight, QTextBlockFormat::ProportionalHeight);
        if (block.textList() != nullptr) {
            format.setBottomMargin(block.next().textList() != nullptr ? 3 : paragraphGap);
        }
    }
    QTextCursor(block).setBlockFormat(format);
}

void makeBold(const QTextTableCell &cell)
{
    auto cursor = cell.firstCursorPosition();
    cursor.setPosition(cell.lastCursorPosition().position(), QTextCursor::KeepAnchor);
    QTextCharFormat bold;
    bold.setFontWeight(QFont::Bold);
    cursor.mergeCharFormat(bold);
}

void styleCell(QTextTableCell cell)
{
    auto format = cell.format().toTableCellFormat();
    format.setBorder(cellBorder);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderBrush(QColor(line));
    format.setTopPadding(3);
    format.setBottomPadding(4);
    format.setLeftPadding(6);
    format.setRightPadding(6);
    if (cell.row() == 0) {
        format.setBackground(QColor(shade));
        makeBold(cell);
    }
    cell.setFormat(format);
}

void styleTable(QTextTable &table)
{
    auto format = table.format();
    format.setWidth(QTextLength(QTextLength::PercentageLength, 100));
    // The borders of the cells, each drawn once.
    format.setBorder(cellBorder);
    format.setBorderStyle(QTextFrameFormat::BorderStyle_Solid);
    format.setBorderBrush(QColor(line));
    format.setBorderCollapse(true);
    format.setCellSpacing(0);
    format.setTopMargin(2);
    format.setBottomMargin(paragraphGap + 2);
    format.setHeaderRowCount(1);
    table.setFormat(format);
    for (int row = 0; row < table.rows(); ++row) {
        for (int column = 0; column < table.columns(); ++column) {
            styleCell(table.cellAt(row, column));
        }
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

void apply(QTextDocument &document)
{
    document.setIndentWidth(listIndent);
    removeEmptyCode(document);
    for (auto block = document.begin(); block.isValid(); block = block.next()) {
        styleCharacters(document, block);
        styleBlock(block, QTextCursor(block).currentTable() != nullptr);
    }
    for (auto *frame : document.rootFrame()->childFrames()) {
        if (auto *table = qobject_cast<QTextTable *>(frame)) {
            styleTable(*table);
        }
    }
}

} // namespace manualStyle
