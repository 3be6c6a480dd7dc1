// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/Text/FormatValue.h"

#include <cmath>

namespace platform {
namespace {

using Value = FormatArgument::Value;

WholeNumber wholeNumber(qint64 number)
{
    const auto bits = static_cast<quint64>(number);
    return number < 0 ? WholeNumber{0 - bits, true} : WholeNumber{bits, false};
}

std::optional<WholeNumber> wholeNumber(double number)
{
    constexpr double tooLarge = 18446744073709551616.0; // 2^64
    const auto magnitude = std::trunc(std::fabs(number));
    if (!(magnitude < tooLarge)) {
        return std::nullopt;
    }
    return WholeNumber{static_cast<quint64>(magnitude), number <= -1};
}

std::optional<WholeNumber> wholeNumber(const QString &text)
{
    const auto trimmed = text.trimmed();
    bool isNumber = false;
    const auto number = trimmed.toLongLong(&isNumber);
    if (isNumber) {
        return wholeNumber(number);
    }
    const auto magnitude = trimmed.toULongLong(&isNumber);
    return isNumber ? std::optional(WholeNumber{magnitude, false}) : std::nullopt;
}

QString addressText(const void *pointer)
{
    return QStringLiteral("0x") + QString::number(reinterpret_cast<quintptr>(pointer), 16);
}

} // namespace

Value unwrapped(const Value &value)
{
    const auto *const *held = std::get_if<const QVariant *>(&value);
    if (held == nullptr) {
        return value;
    }
    const auto &variant = **held;
    switch (variant.userType()) {
    case QMetaType::QString:
        return static_cast<const QString *>(variant.constData());
    case QMetaType::Bool:
    case QMetaType::SChar:
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
        return Value(std::in_place_type<qint64>, variant.toLongLong());
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return Value(std::in_place_type<quint64>, variant.toULongLong());
    case QMetaType::Char:
    case QMetaType::QChar:
        return variant.toChar();
    case QMetaType::Float:
    case QMetaType::Double:
        return variant.toDouble();
    default:
        return value;
    }
}

std::optional<WholeNumber> wholeNumberOf(const Value &value)
{
    if (const auto *number = std::get_if<qint64>(&value)) {
        return wholeNumber(*number);
    }
    if (const auto *number = std::get_if<quint64>(&value)) {
        return WholeNumber{*number, false};
    }
    if (const auto *number = std::get_if<double>(&value)) {
        return wholeNumber(*number);
    }
    if (const auto *character = std::get_if<QChar>(&value)) {
        return WholeNumber{character->unicode(), false};
    }
    if (const auto *pointer = std::get_if<const void *>(&value)) {
        return WholeNumber{reinterpret_cast<quintptr>(*pointer), false};
    }
    return wholeNumber(textOf(value));
}

std::optional<double> realOf(const Value &value)
{
    if (const auto *number = std::get_if<double>(&value)) {
        return *number;
    }
    if (const auto *number = std::get_if<qint64>(&value)) {
        return static_cast<double>(*number);
    }
    if (const auto *number = std::get_if<quint64>(&value)) {
        return static_cast<double>(*number);
    }
    bool isNumber = false;
    const auto number = textOf(value).trimmed().toDouble(&isNumber);
    return isNumber ? std::optional(number) : std::nullopt;
}

QString textOf(const Value &value)
{
    struct Text {
        QString operator()(const QString *text) const { return *text; }
        QString operator()(const QByteArray *text) const { return QString::fromUtf8(*text); }
        QString operator()(const char *text) const { return QString::fromUtf8(text); }
        QString operator()(const QVariant *variant) const { return description(*variant); }
        QString operator()(qint64 number) const { return QString::number(number); }
        QString operator()(quint64 number) const { return QString::number(number); }
        QString operator()(QChar character) const { return character; }
        QString operator()(double number) const { return description(number); }
        QString operator()(const void *pointer) const { return addressText(pointer); }
    };
    return std::visit(Text(), value);
}

} // namespace platform
