// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/ShortText.h"
#include "Platform/Core/Text/TextFormat.h"

#include <QDateTime>
#include <QStringList>

#include <array>
#include <charconv>
#include <chrono>
#include <limits>

namespace platform {
namespace {

// More levels than anyone reads.
constexpr int deepest = 32;

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

QString shortened(const QString &text, int longest)
{
    if (text.size() <= longest) {
        return text;
    }
    const bool splitsPair = text.at(longest - 1).isHighSurrogate();
    return text.left(splitsPair ? longest - 1 : longest) + QChar(0x2026);
}

QString shortDescription(const QVariant &value, int longest)
{
    return shortened(describe(value, 0, longest), longest);
}

QString description(const QDateTime &date)
{
    if (!date.isValid()) {
        return nullText();
    }
    // Written out by hand: every log line has one, and a pattern costs microseconds.
    using namespace std::chrono;
    const milliseconds moment(date.toMSecsSinceEpoch());
    const auto epochDay = floor<days>(moment);
    const hh_mm_ss time(floor<seconds>(moment - epochDay));
    constexpr qint64 epochJulianDay = 2440588;
    int year = 0;
    int month = 0;
    int day = 0;
    QDate::fromJulianDay(epochJulianDay + epochDay.count()).getDate(&year, &month, &day);

    auto text = QStringLiteral("0000-00-00 00:00:00 +0000");
    auto *const characters = text.data();
    const auto put = [characters](int last, qint64 number) {
        for (; number > 0; number /= 10) {
            characters[last--] = QLatin1Char(static_cast<char>('0' + number % 10));
        }
    };
    put(6, month);
    put(9, day);
    put(12, time.hours().count());
    put(15, time.minutes().count());
    put(18, time.seconds().count());
    if (year < 0 || year > 9999) {
        return QString::number(year) + text.mid(4);
    }
    put(3, year);
    return text;
}

QString description(double number)
{
    std::array<char, 32> buffer{};
    const auto *const end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    return QString::fromLatin1(buffer.data(), static_cast<int>(end - buffer.data()));
}

} // namespace platform
