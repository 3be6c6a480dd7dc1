// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

// Rejects input that the library cannot handle: it recurses into nested containers and copies a
// shared object of the binary form at each reference. Also rejects values that the library would
// change: dates that are none, integers of more than 64 bits, zeros and halves of surrogate pairs
// in texts. Whether the bytes are a property list otherwise is for the library to say.
namespace platform::propertylist {

// True where XML keeps to PropertyListLimits.h and to what the library and XML take alike: no text
// but XML, no declarations in the document type and no ">" in quotes.
bool isSafeXml(const QByteArray &utf8);

// True where a binary property list, "bplist00", is sound and keeps to the limits when unfolded.
bool isSafeBinary(const QByteArray &data);

} // namespace platform::propertylist
