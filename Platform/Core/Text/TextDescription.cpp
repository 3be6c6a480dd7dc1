// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/ShortText.h"
#include "Platform/Core/Text/TextFormat.h"

#include <QDateTime>
#include <QStringList>

#include <array>
#include <charconv>
#include <limits>

namespace platform {
namespace {

// Nobody reads more levels.
constexpr int maxDepth = 32;

QString nullText()
{
    return QStringLiteral("(null)");
}

// What is beyond the room, in UTF-16 units, may be left out.
QString describe(const QVariant &value, int depth, int room);

QString listText(const QVariantList &list, int depth, int room)
{
    QStringList parts;
    for (auto item = list.cbegin(); item != list.cend() && room > 0; ++item) {
        parts << describe(*item, depth + 1, room);
        room -= static_cast<int>(parts.constLast().size()) + 1;
    }
    return QStringLiteral("(%1)").arg(parts.join(QStringLiteral(", ")));
}

QString dictionaryText(const QVariantMap &dictionary, int depth, int room)
{
    QStringList parts;
    for (auto entry = dictionary.cbegin(); entry != dictionary.cend() && room > 0; ++entry) {
        parts << entry.key() + QStringLiteral(" = ") + describe(entry.value(), depth + 1, room);
        room -= static_cast<int>(parts.constLast().size());
    }
    return QStringLiteral("{%1}").arg(parts.join(QStringLiteral("; ")));
}

QString dataText(const QByteArray &data)
{
    constexpr int shown = 32;
    const auto hex = QString::fromLatin1(data.left(shown).toHex());
    if (data.size() <= shown) {
        return QStringLiteral("<%1>").arg(hex);
    }
    return QStringLiteral("<%1... %2 bytes>").arg(hex, QString::number(data.size()));
}

QString describe(const QVariant &value, int depth, int room)
{
    if (depth > maxDepth) {
        return QStringLiteral("...");
    }
    switch (value.userType()) {
    case QMetaType::UnknownType:
    case QMetaType::Nullptr:
        return nullText();
    case QMetaType::QString: {
        const auto text = value.toString();
        return text.isNull() ? nullText() : text;
    }
    case QMetaType::Bool:
        return QString::number(value.toInt());
    case QMetaType::Double:
    case QMetaType::Float:
        return description(value.toDouble());
    case QMetaType::VoidStar:
        return QStringLiteral("0x") +
               QString::number(reinterpret_cast<quintptr>(value.value<void *>()), 16);
    case QMetaType::QByteArray:
        return dataText(value.toByteArray());
    case QMetaType::QDateTime:
        return description(value.toDateTime());
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
        return listText(value.toList(), depth, room);
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return dictionaryText(value.toMap(), depth, room);
    default:
        break;
    }
    const auto text = value.toString();
    return text.isNull() ? QStringLiteral("<%1>").arg(QString::fromLatin1(value.typeName())) : text;
}

} // namespace

QString description(const QVariant &value)
{
    return describe(value, 0, std::numeric_limits<int>::max());
}

QString shortened(const QString &text, int maxLength)
{
    if (text.size() <= maxLength) {
        return text;
    }
    const bool splitsPair = text.at(maxLength - 1).isHighSurrogate();
    return text.left(splitsPair ? maxLength - 1 : maxLength) + QChar(0x2026);
}

QString shortDescription(const QVariant &value, int maxLength)
{
    return shortened(describe(value, 0, maxLength), maxLength);
}

QString description(const QDateTime &date)
{
    if (!date.isValid()) {
        return nullText();
    }
    // Not by a pattern of Qt's: the log still needs dates when Qt has torn down its calendars.
    const auto utc = date.toUTC();
    const auto time = utc.time();
    int year = 0;
    int month = 0;
    int day = 0;
    utc.date().getDate(&year, &month, &day);
    return format(QStringLiteral("%04d-%02d-%02d %02d:%02d:%02d +0000"), year, month, day,
                  time.hour(), time.minute(), time.second());
}

QString description(double number)
{
    std::array<char, 32> buffer{};
    const auto *const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    return QString::fromLatin1(buffer.data(), static_cast<int>(end - buffer.data()));
}

} // namespace platform
