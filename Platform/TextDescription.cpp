// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/TextFormat.h"

#include <QDateTime>
#include <QStringList>

#include <array>
#include <charconv>

namespace platform {
namespace {

// More levels than anyone reads.
constexpr int deepest = 32;

QString nullText()
{
    return QStringLiteral("(null)");
}

QString describe(const QVariant &value, int depth);

QString listText(const QVariantList &list, int depth)
{
    QStringList parts;
    parts.reserve(list.size());
    for (const auto &item : list) {
        parts << describe(item, depth + 1);
    }
    return QStringLiteral("(%1)").arg(parts.join(QStringLiteral(", ")));
}

QString dictionaryText(const QVariantMap &dictionary, int depth)
{
    QStringList parts;
    parts.reserve(dictionary.size());
    for (auto entry = dictionary.cbegin(); entry != dictionary.cend(); ++entry) {
        parts << entry.key() + QStringLiteral(" = ") + describe(entry.value(), depth + 1);
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

QString describe(const QVariant &value, int depth)
{
    if (depth > deepest) {
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
    case QMetaType::QByteArray:
        return dataText(value.toByteArray());
    case QMetaType::QDateTime:
        return description(value.toDateTime());
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
        return listText(value.toList(), depth);
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return dictionaryText(value.toMap(), depth);
    default:
        break;
    }
    const auto text = value.toString();
    return text.isNull() ? QStringLiteral("<%1>").arg(QString::fromLatin1(value.typeName())) : text;
}

} // namespace

QString description(const QVariant &value)
{
    return describe(value, 0);
}

QString description(const QDateTime &date)
{
    if (!date.isValid()) {
        return nullText();
    }
    // Written out by hand: toString() with a pattern costs microseconds and every log line has one.
    const auto utc = date.toUTC();
    const auto day = utc.date();
    const auto time = utc.time();
    return QString::asprintf("%04d-%02d-%02d %02d:%02d:%02d +0000", day.year(), day.month(),
                             day.day(), time.hour(), time.minute(), time.second());
}

QString description(double number)
{
    std::array<char, 32> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    return QString::fromLatin1(buffer.data(), static_cast<int>(end - buffer.data()));
}

} // namespace platform
