// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

// Keeps from the library what it does not survive: it follows nesting on the stack and copies the
// shared objects of the binary form each time that they are met. Keeps from us, too, what the
// library would make something else of: dates that are none, integers of more than 64 bits, zeros
// and halves of surrogate pairs in texts. Whether the bytes are a property list otherwise is for
// the library to say.
namespace platform::propertylist {

// True where XML keeps to PropertyListLimits.h and to what the library and XML take alike: no text
// but XML, no declarations in the document type and no ">" in quotes.
bool isSafeXml(const QByteArray &utf8);

// True where a binary property list, "bplist00", is sound and keeps to the limits when unfolded.
bool isSafeBinary(const QByteArray &data);

} // namespace platform::propertylist
