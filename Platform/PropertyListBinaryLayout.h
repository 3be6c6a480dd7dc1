// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>

namespace platform {

// Where things lie in the binary form of a property list ("bplist00"): a header of 8 bytes, the
// objects, a table of the objects' offsets and a trailer of 32 bytes. All numbers are big-endian.
class PropertyListBinaryLayout {
public:
    explicit PropertyListBinaryLayout(const QByteArray &data);

    // A big-endian number of up to 8 bytes.
    static quint64 number(const char *bytes, quint64 size);

    // False where header, table or trailer are not sound.
    bool isSound() const { return m_sound; }

    quint64 objectCount() const { return m_count; }
    quint64 rootNumber() const { return m_root; }
    quint64 referenceSize() const { return m_referenceSize; }

    // Where an object begins, which may lie outside the data.
    quint64 objectOffset(quint64 number) const;

    // Some bytes before the trailer; null where they are not all there.
    const char *bytes(quint64 offset, quint64 count) const;

    // The same for an object's content: count pieces of a size. Objects do not overlap, so all
    // contents together are not larger than the data; null where they are.
    const char *content(quint64 offset, quint64 count, quint64 size);

private:
    QByteArray m_data;
    bool m_sound = false;
    quint64 m_end = 0; // where the trailer begins
    quint64 m_offsetSize = 0;
    quint64 m_referenceSize = 0;
    quint64 m_count = 0;
    quint64 m_root = 0;
    quint64 m_table = 0;
    quint64 m_contentSize = 0;
};

} // namespace platform
