// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>

// Puts a binary property list together from the bytes of its objects, sound or not.
class BinaryPropertyList {
public:
    QList<QByteArray> objects;
    int offsetSize = 4;
    int referenceSize = 1;
    int root = 0;

    // A big-endian number.
    static QByteArray number(quint64 value, int size)
    {
        QByteArray bytes;
        for (auto i = size; i-- > 0;) {
            bytes.append(static_cast<char>(i < 8 ? value >> (8 * i) & 0xFF : 0));
        }
        return bytes;
    }

    // An object whose marker says how many pieces follow.
    static QByteArray counted(int kind, qsizetype count, const QByteArray &content)
    {
        const auto low = static_cast<int>(count < 15 ? count : 15);
        QByteArray bytes(1, static_cast<char>(kind << 4 | low));
        if (low == 15) {
            bytes += char(0x12) + number(static_cast<quint64>(count), 4);
        }
        return bytes + content;
    }

    static QByteArray text(const QByteArray &ascii) { return counted(5, ascii.size(), ascii); }

    // An array, or, for the kind 0xD, a dictionary: all keys, then all values.
    QByteArray container(const QList<int> &references, int kind = 0xA) const
    {
        QByteArray content;
        for (const auto reference : references) {
            content += number(static_cast<quint64>(reference), referenceSize);
        }
        const qsizetype size = references.size();
        return counted(kind, kind == 0xD ? size / 2 : size, content);
    }

    QByteArray dictionary(const QList<int> &references) const { return container(references, 0xD); }

    QByteArray data() const
    {
        QByteArray bytes("bplist00");
        QByteArray table;
        for (const auto &object : objects) {
            table += number(static_cast<quint64>(bytes.size()), offsetSize);
            bytes += object;
        }
        const auto tableOffset = static_cast<quint64>(bytes.size());
        bytes += table + QByteArray(6, '\0');
        bytes += number(static_cast<quint64>(offsetSize), 1);
        bytes += number(static_cast<quint64>(referenceSize), 1);
        bytes += number(static_cast<quint64>(objects.size()), 8);
        bytes += number(static_cast<quint64>(root), 8);
        return bytes + number(tableOffset, 8);
    }
};
