// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QFont>

class QTextDocument;

// How a manual looks: fonts, colours and distances, which are counted in parts of an inch.
namespace manualStyle {

constexpr qreal distancesPerInch = 96;

// A picture's pixels, taken at scale 2, as distances; windows are shown a little smaller than on a
// screen, because paper is held nearer.
constexpr qreal pictureScale = 0.5 * 0.8;

constexpr QRgb accent = qRgb(0x1f, 0x4e, 0x79);
constexpr QRgb quiet = qRgb(0x60, 0x60, 0x60);
constexpr QRgb line = qRgb(0xb8, 0xc0, 0xc8);
constexpr QRgb shade = qRgb(0xf1, 0xf4, 0xf7);

QFont bodyFont();

// Gives every paragraph, heading, table and piece of code its look, whatever it had.
void apply(QTextDocument &document);

} // namespace manualStyle
