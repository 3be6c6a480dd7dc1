// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/Core/PropertyLists/PropertyList.h"

#include "Platform/Core/Files/FileContents.h"
#include "Platform/Core/PropertyLists/PropertyListFence.h"
#include "Platform/Core/PropertyLists/PropertyListLimits.h"
#include "Platform/Core/Text/CLocale.h"

#include <QDateTime>

#include <plist/plist.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

namespace platform {
namespace {

using propertylist::maximumDepth;
using propertylist::maximumSize;

struct FreeNode {
    void operator()(void *node) const { plist_free(node); }
};
using Node = std::unique_ptr<void, FreeNode>;

struct FreeMemory {
    void operator()(void *memory) const { std::free(memory); } // NOLINT(*-no-malloc)
};
template <typename Type>
using Memory = std::unique_ptr<Type, FreeMemory>;

Node nodeFromXml(const QByteArray &xml)
{
    const CLocale cLocale; // the library takes the decimal point from the locale
    plist_t node = nullptr;
    plist_from_xml(xml.constData(), static_cast<uint32_t>(xml.size()), &node);
    return Node(node);
}

Node nodeFromBinary(const QByteArray &data)
{
    plist_t node = nullptr;
    plist_from_bin(data.constData(), static_cast<uint32_t>(data.size()), &node);
    return Node(node);
}

QByteArray binaryFromNode(plist_t node)
{
    char *data = nullptr;
    uint32_t size = 0;
    plist_to_bin(node, &data, &size);
    const Memory<char> owner(data);
    return {data, static_cast<int>(size)};
}

QByteArray xmlFromNode(plist_t node)
{
    const CLocale cLocale;
    char *text = nullptr;
    uint32_t size = 0;
    plist_to_xml(node, &text, &size);
    const Memory<char> owner(text);
    return {text, static_cast<int>(size)};
}

// Negative integers, those beyond 63 bits and dates that are read go through the XML form of a
// single element: the library's functions for them differ between its versions or have too few
// bits.
Node nodeFromText(const QByteArray &tag, const QByteArray &text)
{
    return nodeFromXml("<plist><" + tag + '>' + text + "</" + tag + "></plist>");
}

QByteArray textFromNode(plist_t node, const QByteArray &tag)
{
    const auto xml = xmlFromNode(node);
    const auto start = xml.indexOf('<' + tag + '>') + tag.size() + 2;
    return xml.mid(start, xml.indexOf("</" + tag + '>') - start);
}

QVariant integerFromNode(plist_t node)
{
    uint64_t number = 0;
    plist_get_uint_val(node, &number);
    const auto large = number > static_cast<quint64>(std::numeric_limits<qint64>::max());
    return large && !textFromNode(node, "integer").startsWith('-')
               ? QVariant(static_cast<qulonglong>(number))
               : QVariant(static_cast<qlonglong>(number));
}

// Nothing for what is no date. The library does not fill up the year with zeros and knows a year 0,
// which Qt calls -1.
std::optional<QVariant> dateFromNode(plist_t node)
{
    const auto text = QString::fromLatin1(textFromNode(node, "date"));
    const auto dash = text.indexOf(u'-', 1);
    const auto number = text.left(dash).toInt();
    const auto year = number > 0 ? number : number - 1;
    const auto inYear = QDateTime::fromString(QStringLiteral("2000") + text.mid(dash), Qt::ISODate);
    const QDateTime date({year, inYear.date().month(), inYear.date().day()}, inYear.time(),
                         Qt::UTC);
    return dash > 0 && date.isValid() ? std::optional<QVariant>(date) : std::nullopt;
}

// By way of the binary form: the library's function for it has 32 bits.
Node nodeFromDate(const QDateTime &date)
{
    constexpr auto secondsTo2001 = 978307200;
    const auto since1970 = (date.toMSecsSinceEpoch() - date.time().msec()) / 1000;
    const auto seconds = static_cast<double>(since1970 - secondsTo2001);
    quint64 bits = 0;
    std::memcpy(&bits, &seconds, sizeof bits);
    QByteArray list("bplist003"); // what comes is a date
    for (auto shift = 56; shift >= 0; shift -= 8) {
        list += static_cast<char>(bits >> static_cast<unsigned>(shift) & 0xFFU);
    }
    // Where the date is, and the trailer: an offset and a reference of one byte each, one object,
    // the table of offsets at 17.
    list += QByteArray::fromHex("08 0000000000000101 0000000000000001 0000000000000000"
                                "0000000000000011");
    return nodeFromBinary(list);
}

QString textFromUtf8(const char *utf8, quint64 size)
{
    if (size == 0) {
        return QLatin1String(""); // Qt would make it null
    }
    const auto bytes = QByteArray::fromRawData(utf8, static_cast<int>(size));
    const auto text = QString::fromUtf8(bytes);
    // Qt takes a first U+FEFF for a byte order mark and drops it; here it is a character.
    return bytes.startsWith("\xEF\xBB\xBF") ? QChar(0xFEFF) + text : text;
}

std::optional<QVariant> valueFromNode(plist_t node, int depth);

std::optional<QVariant> arrayFromNode(plist_t node, int depth)
{
    QVariantList array;
    array.reserve(static_cast<int>(plist_array_get_size(node)));
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(node, &iterator);
    const Memory<void> owner(iterator);
    plist_t item = nullptr;
    while (plist_array_next_item(node, iterator, &item), item != nullptr) {
        auto value = valueFromNode(item, depth);
        if (!value) {
            return std::nullopt;
        }
        array.append(*std::move(value));
    }
    return array;
}

std::optional<QVariant> dictionaryFromNode(plist_t node, int depth)
{
    QVariantMap dictionary;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    const Memory<void> owner(iterator);
    char *key = nullptr;
    plist_t item = nullptr;
    while (plist_dict_next_item(node, iterator, &key, &item), item != nullptr) {
        const Memory<char> name(key);
        const auto value = valueFromNode(item, depth);
        if (!value) {
            return std::nullopt;
        }
        // Writers sort the keys, so each belongs at the end as a rule.
        dictionary.insert(dictionary.cend(), textFromUtf8(key, qstrlen(key)), *value);
    }
    return dictionary;
}

// Nothing where it holds what the library has no value for or lies inside too many containers.
std::optional<QVariant> valueFromNode(plist_t node, int depth)
{
    uint64_t number = 0;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return plist_bool_val_is_true(node) != 0;
    case PLIST_UINT:
        return integerFromNode(node);
    case PLIST_REAL: {
        double real = 0;
        plist_get_real_val(node, &real);
        return real;
    }
    case PLIST_STRING: {
        const auto *text = plist_get_string_ptr(node, &number);
        return textFromUtf8(text, number);
    }
    case PLIST_DATA: {
        const auto *bytes = plist_get_data_ptr(node, &number);
        return number == 0 ? QByteArray("") : QByteArray(bytes, static_cast<int>(number));
    }
    case PLIST_DATE:
        return dateFromNode(node);
    case PLIST_UID:
        plist_get_uid_val(node, &number);
        return QVariantMap{{QStringLiteral("CF$UID"), static_cast<qlonglong>(number)}};
    case PLIST_ARRAY:
        return depth < maximumDepth ? arrayFromNode(node, depth + 1) : std::nullopt;
    case PLIST_DICT:
        return depth < maximumDepth ? dictionaryFromNode(node, depth + 1) : std::nullopt;
    default:
        return std::nullopt;
    }
}

enum class Form { Xml, Binary };

// The library writes a zero without its sign. No other text in XML can hold this one.
const char *const negativeZero = "\x1A-0.0\x1A";

class NodeMaker {
public:
    NodeMaker(Form form, QString &error) : m_form(form), m_error(error) {}

    // Whether something cannot be held by the XML form, but by the binary one.
    bool needsBinary() const { return m_needsBinary; }

    // Null where it failed, and for a null, which the XML form does not have.
    Node make(const QVariant &value, int depth)
    {
        if (!weigh(propertylist::valueWeight)) {
            return {};
        }
        switch (value.userType()) {
        case QMetaType::UnknownType:
            return {};
        case QMetaType::Bool:
            return Node(plist_new_bool(value.toBool() ? 1 : 0));
        case QMetaType::Short:
        case QMetaType::UShort:
        case QMetaType::Int:
        case QMetaType::UInt:
        case QMetaType::Long:
        case QMetaType::ULong:
        case QMetaType::LongLong:
        case QMetaType::ULongLong: // negative where it does not fit
            return value.toLongLong() >= 0 ? Node(plist_new_uint(value.toULongLong()))
                                           : nodeFromText("integer", value.toString().toLatin1());
        case QMetaType::Float:
        case QMetaType::Double:
            return makeReal(value.toDouble());
        case QMetaType::QString: {
            const auto text = cleanUtf8(value.toString());
            return weigh(text.size()) ? Node(plist_new_string(text.constData())) : Node();
        }
        case QMetaType::QByteArray: {
            const auto data = value.toByteArray();
            const auto size = static_cast<uint64_t>(data.size());
            return weigh(data.size()) ? Node(plist_new_data(data.constData(), size)) : Node();
        }
        case QMetaType::QDateTime:
            return makeDate(value.toDateTime().toUTC());
        case QMetaType::QStringList:
        case QMetaType::QVariantList:
        case QMetaType::QVariantMap:
            return makeContainer(value, depth);
        default:
            return fail(QStringLiteral("A property list cannot hold a value of the type “%1”.")
                            .arg(QString::fromLatin1(value.typeName())));
        }
    }

private:
    // Neither form of the library holds zeros and halves of surrogate pairs: each becomes U+FFFD.
    // XML has no place for the other control characters and for U+FFFE and U+FFFF.
    QByteArray cleanUtf8(QString text)
    {
        const auto size = static_cast<int>(text.size());
        for (auto i = 0; i < size; ++i) {
            const auto *at = text.utf16() + i;
            if (*at >= 0x20 ? *at < 0xD800 : *at == '\t' || *at == '\n' || *at == '\r') {
                continue;
            }
            if (QChar::isHighSurrogate(*at) && QChar::isLowSurrogate(at[1])) { // ends with a zero
                ++i;
            } else if (*at == 0 || QChar::isSurrogate(*at)) {
                text[i] = QChar(QChar::ReplacementCharacter);
            } else if (*at < 0x20 || *at >= 0xFFFE) {
                m_needsBinary = true;
            }
        }
        return text.toUtf8();
    }

    Node makeReal(double real) const
    {
        const auto isNegativeZero = real == 0 && std::signbit(real);
        return Node(isNegativeZero && m_form == Form::Xml ? plist_new_string(negativeZero)
                                                          : plist_new_real(real));
    }

    Node makeDate(const QDateTime &date)
    {
        if (!date.isValid()) {
            return fail(QStringLiteral("A date is not valid."));
        }
        constexpr auto lastYear = 9999; // that has four digits
        m_needsBinary = m_needsBinary || date.date().year() < 1 || date.date().year() > lastYear;
        return nodeFromDate(date);
    }

    Node makeContainer(const QVariant &value, int depth)
    {
        if (depth >= maximumDepth) {
            return fail(QStringLiteral("The property list is nested too deeply."));
        }
        return value.userType() == QMetaType::QVariantMap ? makeDictionary(value.toMap(), depth)
                                                          : makeArray(value.toList(), depth);
    }

    Node makeArray(const QVariantList &array, int depth)
    {
        Node node(plist_new_array());
        for (const auto &item : array) {
            auto child = make(item, depth + 1);
            if (child) {
                plist_array_append_item(node.get(), child.release());
            } else if (!m_error.isNull()) {
                return {};
            }
        }
        return node;
    }

    Node makeDictionary(const QVariantMap &dictionary, int depth)
    {
        Node node(plist_new_dict());
        for (auto item = dictionary.cbegin(); item != dictionary.cend(); ++item) {
            const auto key = cleanUtf8(item.key());
            auto child = weigh(key.size()) ? make(*item, depth + 1) : Node();
            if (child) {
                plist_dict_set_item(node.get(), key.constData(), child.release());
            } else if (!m_error.isNull()) {
                return {};
            }
        }
        return node;
    }

    bool weigh(qint64 weight)
    {
        m_weight += weight;
        if (m_weight > maximumSize) {
            fail(QStringLiteral("The property list would be too large."));
        }
        return m_weight <= maximumSize;
    }

    Node fail(const QString &error)
    {
        m_error = error;
        return {};
    }

    Form m_form;
    QString &m_error;
    bool m_needsBinary = false;
    qint64 m_weight = 0; // of all values so far
};

// Years get four digits, which other readers insist on.
QByteArray withLongYears(const QByteArray &xml)
{
    constexpr auto lengthOfDate = 20;
    const QByteArray tag("<date>");
    QByteArray result;
    decltype(xml.size()) copied = 0;
    for (auto at = xml.indexOf(tag); at >= 0; at = xml.indexOf(tag, copied)) {
        const auto begin = at + tag.size();
        const auto length = xml.indexOf('<', begin) - begin;
        result.append(xml.constData() + copied, begin - copied);
        if (length < lengthOfDate) {
            result.append(QByteArray(lengthOfDate - length, '0'));
        }
        copied = begin;
    }
    return result.append(xml.constData() + copied, xml.size() - copied);
}

// What other readers want otherwise than the library writes it.
QByteArray corrected(QByteArray xml)
{
    if (xml.contains('\r')) { // which they would take for a line feed
        xml.replace('\r', "&#13;");
    }
    if (xml.contains(negativeZero)) {
        xml.replace(QByteArray("<string>") + negativeZero + "</string>", "<real>-0.0</real>");
    }
    return xml.contains("<date>") ? withLongYears(xml) : xml;
}

// Empty, with the reason in error, for what the form cannot hold and for what would be too large or
// too deep to be read again. Tells of XML whether it cannot hold the value, but the binary form
// can.
QByteArray dataFromValue(const QVariant &value, Form form, QString &error, bool &needsBinary)
{
    NodeMaker maker(form, error);
    const auto node = maker.make(value, 0);
    if (!node) {
        error = error.isNull() ? QStringLiteral("There is nothing to write.") : error;
        return {};
    }
    needsBinary = form == Form::Xml && maker.needsBinary();
    if (needsBinary) {
        error = QStringLiteral("The XML form cannot hold one of the values.");
        return {};
    }
    auto data = form == Form::Xml ? corrected(xmlFromNode(node.get())) : binaryFromNode(node.get());
    if (data.size() > maximumSize) {
        error = QStringLiteral("The property list would be too large.");
        return {};
    }
    return data;
}

} // namespace

std::optional<QVariant> propertyListFromData(const QByteArray &data)
{
    const auto binary = data.startsWith("bplist");
    const auto xml = data.startsWith("\xEF\xBB\xBF") ? data.mid(3) : data;
    if (data.size() > maximumSize ||
        !(binary ? propertylist::isSafeBinary(data) : propertylist::isSafeXml(xml))) {
        return std::nullopt;
    }
    const auto node = binary ? nodeFromBinary(data) : nodeFromXml(xml);
    return node ? valueFromNode(node.get(), 0) : std::nullopt;
}

namespace {

std::optional<QVariant> valueFromFile(const QString &path, int type)
{
    const auto data = contentsOfFile(path, maximumSize);
    const auto value = data ? propertyListFromData(*data) : std::nullopt;
    return value && value->userType() == type ? value : std::nullopt;
}

} // namespace

QByteArray propertyListToXml(const QVariant &value)
{
    QString error;
    auto needsBinary = false;
    return dataFromValue(value, Form::Xml, error, needsBinary);
}

QByteArray propertyListToData(const QVariant &value, QString *error)
{
    QString reason;
    auto needsBinary = false;
    auto data = dataFromValue(value, Form::Xml, reason, needsBinary);
    if (needsBinary) {
        reason = QString();
        data = dataFromValue(value, Form::Binary, reason, needsBinary);
    }
    if (error != nullptr && data.isEmpty()) {
        *error = reason;
    }
    return data;
}

std::optional<QVariantMap> dictionaryFromFile(const QString &path)
{
    const auto value = valueFromFile(path, QMetaType::QVariantMap);
    return value ? std::optional(value->toMap()) : std::nullopt;
}

std::optional<QVariantList> arrayFromFile(const QString &path)
{
    const auto value = valueFromFile(path, QMetaType::QVariantList);
    return value ? std::optional(value->toList()) : std::nullopt;
}

bool writeDictionaryToFile(const QVariantMap &dictionary, const QString &path, QString *error)
{
    const auto data = propertyListToData(dictionary, error);
    return !data.isEmpty() && replaceFile(path, data, error);
}

} // namespace platform
