// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

class QTextDocument;

// Where a text goes on on the next page.
namespace pageBreaks {

// Moves to the next page what should not be torn off what it belongs to: a heading and what it is
// over, a sentence with a colon and what it announces, the lines of a piece of code, the rows of a
// table. The document has its page size already. What is longer than a page stays as it is.
void improve(QTextDocument &document);

} // namespace pageBreaks
