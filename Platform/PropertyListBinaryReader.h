// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/PropertyListBinaryLayout.h"

#include <QVariant>

#include <optional>
#include <vector>

namespace platform {

// Reads the binary form of a property list. Its objects refer to one another by number, so they may
// be shared, and in a bad file go in circles or unfold to far more than the file's size; both are
// refused.
class PropertyListBinaryReader {
public:
    explicit PropertyListBinaryReader(const QByteArray &data) : m_layout(data) {}

    static bool isBinary(const QByteArray &data) { return data.startsWith("bplist"); }

    // The value; nothing where the data are malformed, cut short or nested too deeply. A null is an
    // invalid QVariant; a UID is the dictionary that stands for it in the XML form,
    // {"CF$UID": number}.
    std::optional<QVariant> read();

private:
    enum class State : quint8 { Unread, BeingRead, Read };
    struct Object {
        QVariant value;
        qint64 values = 1; // this one and all that it holds
        int height = 0;    // containers inside one another
        State state = State::Unread;
    };

    const Object *object(quint64 number, int depth);
    bool readObject(quint64 offset, int depth, Object &object);
    bool readCount(quint64 &offset, quint64 &count) const;
    bool readContent(quint64 kind, quint64 offset, quint64 count, QVariant &value);
    bool readArray(quint64 offset, quint64 count, int depth, Object &object);
    bool readDictionary(quint64 offset, quint64 count, int depth, Object &object);
    const char *references(quint64 offset, quint64 count, quint64 perItem, int depth);
    const Object *referredObject(const char *references, quint64 index, int depth, Object &holder);

    PropertyListBinaryLayout m_layout;
    std::vector<Object> m_objects;
};

} // namespace platform
