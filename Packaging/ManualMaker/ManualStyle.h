// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QFont>
#include <QMarginsF>

class QTextBlock;
class QTextDocument;

// How a manual looks. Distances are counted in 96ths of an inch.
namespace manualStyle {

constexpr QMarginsF margins(22, 20, 22, 24);                        // millimetres
constexpr qreal textWidth = 210 - margins.left() - margins.right(); // millimetres, on A4

constexpr QRgb accent = qRgb(0x1f, 0x4e, 0x79);
constexpr QRgb quiet = qRgb(0x60, 0x60, 0x60);
constexpr QRgb line = qRgb(0xb8, 0xc0, 0xc8);
constexpr QRgb shade = qRgb(0xf1, 0xf4, 0xf7);

QFont bodyFont();

// Whether the paragraph is a line of a block of code.
bool isCode(const QTextBlock &block);

// Gives the paragraphs, tables and code of a text that was read as Markdown their look.
void apply(QTextDocument &document);

} // namespace manualStyle
