// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QString>

class ManualDocument;
class QIODevice;

// Writes the document as PDF: A4, with the title, the version and the page's number at the foot of
// each page. The text can be selected, and the fonts are in the file. False when the device fails.
bool printManual(ManualDocument &document, const QString &version, QIODevice &device);
