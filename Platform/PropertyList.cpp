// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PropertyList.h"

#include "Platform/FileContents.h"
#include "Platform/PropertyListBinaryReader.h"
#include "Platform/PropertyListLimits.h"
#include "Platform/PropertyListXmlReader.h"
#include "Platform/PropertyListXmlWriter.h"

#include <QtEndian>

namespace platform {
namespace {

QByteArray utf8FromUtf16(const QByteArray &data, bool bigEndian)
{
    QString text(data.size() / 2, Qt::Uninitialized);
    if (bigEndian) {
        qFromBigEndian<quint16>(data.constData(), text.size(), text.data());
    } else {
        qFromLittleEndian<quint16>(data.constData(), text.size(), text.data());
    }
    return text.toUtf8();
}

// XML in UTF-8 without a byte order mark. UTF-16 is known by its first two bytes; all else is
// UTF-8.
QByteArray utf8FromXml(const QByteArray &data)
{
    if (data.startsWith("\xFE\xFF") || data.startsWith(QByteArray("\0<", 2))) {
        return utf8FromXml(utf8FromUtf16(data, true));
    }
    if (data.startsWith("\xFF\xFE") || data.startsWith(QByteArray("<\0", 2))) {
        return utf8FromXml(utf8FromUtf16(data, false));
    }
    return data.startsWith("\xEF\xBB\xBF") ? data.mid(3) : data;
}

} // namespace

std::optional<QVariant> propertyListFromData(const QByteArray &data)
{
    if (data.size() > propertylist::maximumSize) {
        return std::nullopt;
    }
    if (PropertyListBinaryReader::isBinary(data)) {
        return PropertyListBinaryReader(data).read();
    }
    const auto xml = utf8FromXml(data);
    return PropertyListXmlReader({xml.constData(), static_cast<std::size_t>(xml.size())}).read();
}

QByteArray propertyListToXml(const QVariant &value)
{
    PropertyListXmlWriter writer;
    return writer.write(value) ? QByteArray::fromStdString(writer.xml()) : QByteArray();
}

std::optional<QVariantMap> dictionaryFromFile(const QString &path)
{
    const auto data = contentsOfFile(path, propertylist::maximumSize);
    const auto value = data ? propertyListFromData(*data) : std::nullopt;
    return value && value->userType() == QMetaType::QVariantMap ? std::optional(value->toMap())
                                                                : std::nullopt;
}

bool writeDictionaryToFile(const QVariantMap &dictionary, const QString &path, QString *error)
{
    PropertyListXmlWriter writer;
    if (!writer.write(dictionary)) {
        if (error != nullptr) {
            *error = writer.error();
        }
        return false;
    }
    return replaceFile(path, QByteArray::fromStdString(writer.xml()), error);
}

} // namespace platform
