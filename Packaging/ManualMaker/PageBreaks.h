// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

class QTextDocument;

// The page breaks of a text.
namespace pageBreaks {

// Moves to the next page what a page break would split: a heading and its text, a sentence with a
// colon and what follows it, the lines of a piece of code, the rows of a table. The document must
// have its page size. What is longer than a page stays as it is.
void improve(QTextDocument &document);

} // namespace pageBreaks
