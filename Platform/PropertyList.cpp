// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PropertyList.h"

#include <QDateTime>
#include <QFile>
#include <QSaveFile>

#include <plist/plist.h>

#include <cstdlib>
#include <limits>
#include <memory>

namespace platform {
namespace {

constexpr qint64 secondsFrom1970To2001 = 978307200;

QString takeText(char *text)
{
    const auto result = QString::fromUtf8(text == nullptr ? "" : text);
    std::free(text); // NOLINT(cppcoreguidelines-no-malloc)
    return result;
}

QVariant toVariant(plist_t node)
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return value != 0;
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return static_cast<qlonglong>(value);
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_STRING: {
        char *text = nullptr;
        plist_get_string_val(node, &text);
        return takeText(text);
    }
    case PLIST_DATE: {
        int32_t seconds = 0;
        int32_t microseconds = 0;
        plist_get_date_val(node, &seconds, &microseconds);
        return QDateTime::fromSecsSinceEpoch(seconds + secondsFrom1970To2001, Qt::UTC);
    }
    case PLIST_DATA: {
        uint64_t length = 0;
        const auto *bytes = plist_get_data_ptr(node, &length);
        return QByteArray(bytes, static_cast<int>(length));
    }
    case PLIST_ARRAY: {
        QVariantList list;
        const auto count = plist_array_get_size(node);
        for (uint32_t i = 0; i < count; ++i) {
            list << toVariant(plist_array_get_item(node, i));
        }
        return list;
    }
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter iterator = nullptr;
        plist_dict_new_iter(node, &iterator);
        char *key = nullptr;
        plist_t value = nullptr;
        for (plist_dict_next_item(node, iterator, &key, &value); value != nullptr;
             plist_dict_next_item(node, iterator, &key, &value)) {
            map.insert(takeText(key), toVariant(value));
        }
        std::free(iterator); // NOLINT(cppcoreguidelines-no-malloc)
        return map;
    }
    default:
        return {};
    }
}

bool writeValue(QByteArray &xml, const QVariant &value, int depth);

void writeElement(QByteArray &xml, int depth, const char *name, const QByteArray &text)
{
    xml.append(depth, '\t').append('<').append(name).append('>').append(text);
    xml.append("</").append(name).append(">\n");
}

bool writeList(QByteArray &xml, const QVariantList &list, int depth)
{
    if (list.isEmpty()) {
        xml.append(depth, '\t').append("<array/>\n");
        return true;
    }
    xml.append(depth, '\t').append("<array>\n");
    for (const auto &item : list) {
        if (!writeValue(xml, item, depth + 1)) {
            return false;
        }
    }
    xml.append(depth, '\t').append("</array>\n");
    return true;
}

bool writeMap(QByteArray &xml, const QVariantMap &map, int depth)
{
    if (map.isEmpty()) {
        xml.append(depth, '\t').append("<dict/>\n");
        return true;
    }
    xml.append(depth, '\t').append("<dict>\n");
    for (auto item = map.begin(); item != map.end(); ++item) {
        writeElement(xml, depth + 1, "key", item.key().toHtmlEscaped().toUtf8());
        if (!writeValue(xml, item.value(), depth + 1)) {
            return false;
        }
    }
    xml.append(depth, '\t').append("</dict>\n");
    return true;
}

bool writeValue(QByteArray &xml, const QVariant &value, int depth)
{
    switch (value.userType()) {
    case QMetaType::Bool:
        xml.append(depth, '\t').append(value.toBool() ? "<true/>\n" : "<false/>\n");
        return true;
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Long:
    case QMetaType::Short:
        writeElement(xml, depth, "integer", QByteArray::number(value.toLongLong()));
        return true;
    case QMetaType::UInt:
    case QMetaType::ULongLong:
    case QMetaType::ULong:
    case QMetaType::UShort:
        writeElement(xml, depth, "integer", QByteArray::number(value.toULongLong()));
        return true;
    case QMetaType::Double:
    case QMetaType::Float:
        writeElement(xml, depth, "real", QByteArray::number(value.toDouble(), 'g', 17));
        return true;
    case QMetaType::QString:
        writeElement(xml, depth, "string", value.toString().toHtmlEscaped().toUtf8());
        return true;
    case QMetaType::QByteArray:
        writeElement(xml, depth, "data", value.toByteArray().toBase64());
        return true;
    case QMetaType::QDateTime:
        writeElement(xml, depth, "date", value.toDateTime().toUTC().toString(Qt::ISODate).toUtf8());
        return true;
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
        return writeList(xml, value.toList(), depth);
    case QMetaType::QVariantMap:
        return writeMap(xml, value.toMap(), depth);
    default:
        return false;
    }
}

} // namespace

std::optional<QVariant> propertyListFromData(const QByteArray &data)
{
    plist_t root = nullptr;
    plist_from_memory(data.constData(), static_cast<uint32_t>(data.size()), &root);
    if (root == nullptr) {
        return std::nullopt;
    }
    auto value = toVariant(root);
    plist_free(root);
    return value;
}

QByteArray propertyListToXml(const QVariant &value)
{
    QByteArray xml("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                   "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                   "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                   "<plist version=\"1.0\">\n");
    if (!writeValue(xml, value, 0)) {
        return {};
    }
    return xml.append("</plist>\n");
}

std::optional<QVariantMap> dictionaryFromFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const auto value = propertyListFromData(file.readAll());
    if (!value || value->userType() != QMetaType::QVariantMap) {
        return std::nullopt;
    }
    return value->toMap();
}

bool writeDictionaryToFile(const QVariantMap &dictionary, const QString &path, QString *error)
{
    const auto xml = propertyListToXml(dictionary);
    QSaveFile file(path);
    const auto written = !xml.isEmpty() && file.open(QIODevice::WriteOnly) &&
                         file.write(xml) == xml.size() && file.commit();
    if (!written && error != nullptr) {
        *error = xml.isEmpty() ? QStringLiteral("The dictionary holds a value of an unknown kind.")
                               : file.errorString();
    }
    return written;
}

} // namespace platform
