// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/FileName.h"

#include <algorithm>

namespace platform {
namespace {

constexpr ushort escapes = 0xDC00; // the byte 0x80 is escaped as 0xDC80

bool isAscii(uchar byte)
{
    return byte < 0x80U;
}

// The length of the well-formed UTF-8 sequence at the start; 0 where there is none.
int sequenceLength(const uchar *bytes, qsizetype size)
{
    const uint first = bytes[0];
    const int length = first < 0xC2U   ? 0
                       : first < 0xE0U ? 2
                       : first < 0xF0U ? 3
                       : first < 0xF5U ? 4
                                       : 0;
    if (length == 0 || length > size) {
        return 0;
    }
    const uint second = bytes[1];
    const auto overlong = (first == 0xE0U && second < 0xA0U) || (first == 0xF0U && second < 0x90U);
    const auto surrogate = first == 0xEDU && second > 0x9FU;
    const auto beyond = first == 0xF4U && second > 0x8FU;
    const auto continues =
        std::all_of(bytes + 1, bytes + length, [](uchar byte) { return (byte & 0xC0U) == 0x80U; });
    return continues && !overlong && !surrogate && !beyond ? length : 0;
}

bool standsForByte(QChar character)
{
    return character.unicode() >= escapes + 0x80U && character.unicode() <= escapes + 0xFFU;
}

} // namespace

QString fileNameFromBytes(const QByteArray &bytes)
{
    const auto *data =
        reinterpret_cast<const uchar *>(bytes.constData()); // NOLINT(*-reinterpret-cast)
    const qsizetype size = bytes.size();
    QString name;
    qsizetype decoded = 0;
    const auto decodeUntil = [&](qsizetype end) {
        for (; bytes.mid(static_cast<int>(decoded), 3) == "\xEF\xBB\xBF"; decoded += 3) {
            name += QChar(QChar::ByteOrderMark); // the decoder drops it at the start
        }
        name += QString::fromUtf8(bytes.constData() + decoded, static_cast<int>(end - decoded));
    };
    for (qsizetype at = 0; at < size;) {
        const auto length = isAscii(data[at]) ? 1 : sequenceLength(data + at, size - at);
        if (length == 0) {
            decodeUntil(at);
            name += QChar(static_cast<ushort>(escapes + data[at]));
            decoded = at + 1;
        }
        at += std::max(length, 1);
    }
    decodeUntil(size);
    return name;
}

QByteArray fileNameBytes(const QString &name)
{
    QByteArray bytes;
    qsizetype encoded = 0;
    for (qsizetype at = 0; at < name.size(); ++at) {
        const auto character = name.at(static_cast<int>(at));
        if (character.isHighSurrogate() && at + 1 < name.size() &&
            name.at(static_cast<int>(at) + 1).isLowSurrogate()) {
            ++at;
        } else if (standsForByte(character)) {
            bytes += QStringView(name).mid(encoded, at - encoded).toUtf8();
            bytes += static_cast<char>(character.unicode() & 0xFFU);
            encoded = at + 1;
        }
    }
    return bytes + QStringView(name).mid(encoded).toUtf8();
}

} // namespace platform
