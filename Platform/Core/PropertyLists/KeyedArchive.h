// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#pragma once

#include <QVariantMap>

namespace platform {

// NSCoder, keyed: what an object writes of itself under keys and is made from again. The values are
// those of a property list, so that an archive can be kept in a file.
class KeyedArchive {
public:
    KeyedArchive() = default;
    explicit KeyedArchive(QVariantMap values) : m_values(std::move(values)) {}

    /// encodeObject:forKey:
    void encodeObject(const QVariant &object, const QString &key) { m_values.insert(key, object); }

    /// decodeObjectForKey:
    // An invalid value when nothing is stored under the key.
    QVariant decodeObject(const QString &key) const { return m_values.value(key); }

    const QVariantMap &values() const { return m_values; }

private:
    QVariantMap m_values;
};

} // namespace platform
