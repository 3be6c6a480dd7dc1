// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Bus/DBusValue.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>

namespace platform {
namespace {

class Sender {
public:
    QVariantMap dictionary(const QVariantMap &dictionary, int depth);
    bool fits() const { return m_size <= maxBytes; }

private:
    static constexpr int maxDepth = 16;
    static constexpr qint64 maxBytes = 8LL * 1024 * 1024;
    static constexpr qint64 valueSize = 16;

    QVariant value(const QVariant &value, int depth);
    QVariantList list(const QVariantList &values, int depth);

    // UTF-8 takes at most three bytes for a UTF-16 unit.
    void count(const QString &text) { m_size += valueSize + 3 * qint64(text.size()); }

    qint64 m_size = 0;
};

QVariantMap Sender::dictionary(const QVariantMap &dictionary, int depth)
{
    QVariantMap result;
    for (auto entry = dictionary.cbegin(); fits() && entry != dictionary.cend(); ++entry) {
        const auto carried = value(entry.value(), depth + 1);
        if (carried.isValid()) {
            count(entry.key());
            result.insert(entry.key(), carried);
        }
    }
    return result;
}

QVariantList Sender::list(const QVariantList &values, int depth)
{
    QVariantList result;
    for (const auto &item : values) {
        const auto carried = value(item, depth + 1);
        if (carried.isValid() && fits()) {
            result << carried;
        }
    }
    return result;
}

QVariant Sender::value(const QVariant &value, int depth)
{
    if (depth > maxDepth) {
        return {};
    }
    m_size += valueSize;
    switch (value.userType()) {
    case QMetaType::UnknownType:
        return {};
    case QMetaType::Bool:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return value;
    case QMetaType::SChar:
    case QMetaType::Long:
        return value.toLongLong();
    case QMetaType::ULong:
        return value.toULongLong();
    case QMetaType::Float:
        return value.toDouble();
    case QMetaType::QByteArray:
        m_size += value.toByteArray().size();
        return value;
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
        return list(value.toList(), depth);
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return dictionary(value.toMap(), depth);
    default:
        break;
    }
    if (!value.canConvert<QString>()) {
        return {};
    }
    const auto text = value.toString();
    count(text);
    return text;
}

class Receiver {
public:
    QVariant value(const QVariant &value);

private:
    static constexpr int maxValues = 10000;

    QVariant contents(const QDBusArgument &argument);
    QVariantList list(const QDBusArgument &argument);
    QVariantMap dictionary(const QDBusArgument &argument);

    int m_values = 0;
};

QVariant Receiver::value(const QVariant &value)
{
    const auto type = value.userType();
    if (type == qMetaTypeId<QDBusVariant>()) {
        return this->value(value.value<QDBusVariant>().variant());
    }
    if (type == qMetaTypeId<QDBusArgument>()) {
        return contents(value.value<QDBusArgument>());
    }
    if (type == qMetaTypeId<QDBusObjectPath>()) {
        return value.value<QDBusObjectPath>().path();
    }
    if (type == qMetaTypeId<QDBusSignature>()) {
        return value.value<QDBusSignature>().signature();
    }
    switch (type) {
    case QMetaType::Bool:
    case QMetaType::UChar:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::QString:
    case QMetaType::QByteArray:
    case QMetaType::QStringList:
        return value;
    default:
        return {};
    }
}

QVariant Receiver::contents(const QDBusArgument &argument)
{
    switch (argument.currentType()) {
    case QDBusArgument::BasicType:
    case QDBusArgument::VariantType:
        return value(argument.asVariant());
    case QDBusArgument::ArrayType:
    case QDBusArgument::StructureType:
        return list(argument);
    case QDBusArgument::MapType:
        return dictionary(argument);
    default:
        return {};
    }
}

QVariantList Receiver::list(const QDBusArgument &argument)
{
    QVariantList result;
    const bool isArray = argument.currentType() == QDBusArgument::ArrayType;
    isArray ? argument.beginArray() : argument.beginStructure();
    while (!argument.atEnd() && ++m_values <= maxValues) {
        const auto item = value(argument.asVariant());
        if (item.isValid()) {
            result << item;
        }
    }
    isArray ? argument.endArray() : argument.endStructure();
    return result;
}

QVariantMap Receiver::dictionary(const QDBusArgument &argument)
{
    QVariantMap result;
    argument.beginMap();
    while (!argument.atEnd() && ++m_values <= maxValues) {
        argument.beginMapEntry();
        const auto key = value(argument.asVariant()).toString();
        const auto entry = value(argument.asVariant());
        argument.endMapEntry();
        if (entry.isValid()) {
            result.insert(key, entry);
        }
    }
    argument.endMap();
    return result;
}

} // namespace

std::optional<QVariantMap> dbusDictionary(const QVariantMap &dictionary)
{
    Sender sender;
    const auto result = sender.dictionary(dictionary, 0);
    return sender.fits() ? std::optional(result) : std::nullopt;
}

QVariantMap plainDictionary(const QVariant &argument)
{
    return Receiver().value(argument).toMap();
}

} // namespace platform
