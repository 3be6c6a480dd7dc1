// SPDX-FileCopyrightText: 2026 Corvane
// SPDX-License-Identifier: MIT
#include "Platform/PropertyList.h"

#include "Platform/FileContents.h"
#include "Platform/PropertyListFence.h"
#include "Platform/PropertyListLimits.h"

#include <QDateTime>

#include <plist/plist.h>

#include <clocale>
#include <cstdlib>
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

// While it lives, numbers have a point on this thread: the library reads reals in the form that the
// user's language gives them.
class NumbersWithPoint {
public:
    NumbersWithPoint()
    {
        static auto *const plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
        m_old = ::uselocale(plain);
    }
    ~NumbersWithPoint() { ::uselocale(m_old); }
    NumbersWithPoint(const NumbersWithPoint &) = delete;
    NumbersWithPoint &operator=(const NumbersWithPoint &) = delete;

private:
    locale_t m_old = nullptr;
};

Node nodeFromXml(const QByteArray &xml)
{
    const NumbersWithPoint point;
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

QByteArray xmlFromNode(plist_t node)
{
    const NumbersWithPoint point;
    char *text = nullptr;
    uint32_t size = 0;
    plist_to_xml(node, &text, &size);
    const Memory<char> owner(text);
    return {text, static_cast<int>(size)};
}

// Negative integers, those beyond 63 bits and dates go through the XML form of a single element:
// the library's functions for them differ between its versions or have too few bits.
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

// A null for what is no date. The library does not fill up the year with zeros.
QVariant dateFromNode(plist_t node)
{
    const auto text = QString::fromLatin1(textFromNode(node, "date").rightJustified(20, '0'));
    const auto date = QDateTime::fromString(text, Qt::ISODate);
    return date.isValid() ? QVariant(date) : QVariant();
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

// XML has no place for most control characters and for halves of surrogate pairs; each becomes
// U+FFFD, as a file that nobody can read would cost more than such a character.
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
        } else if (*at < 0xE000 || *at >= 0xFFFE) {
            text[i] = QChar(QChar::ReplacementCharacter);
        }
    }
    return text.toUtf8();
}

class NodeMaker {
public:
    explicit NodeMaker(QString &error) : m_error(error) {}

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
            return Node(plist_new_real(value.toDouble()));
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
    Node makeDate(const QDateTime &date)
    {
        constexpr auto lastYear = 9999; // the library reads four digits
        if (!date.isValid() || date.date().year() < 1 || date.date().year() > lastYear) {
            return fail(QStringLiteral("A date is not valid."));
        }
        return nodeFromText("date",
                            date.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ssZ")).toLatin1());
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

    QString &m_error;
    qint64 m_weight = 0; // of all values so far
};

// Empty, with the reason in error, for what a property list cannot hold and for what would be too
// large or too deep to be read again.
QByteArray xmlFromValue(const QVariant &value, QString &error)
{
    const auto node = NodeMaker(error).make(value, 0);
    if (!node) {
        error = error.isNull() ? QStringLiteral("There is nothing to write.") : error;
        return {};
    }
    auto xml = xmlFromNode(node.get());
    if (xml.contains('\r')) { // which other readers would take for a line feed
        xml.replace('\r', "&#13;");
    }
    if (xml.size() > maximumSize) {
        error = QStringLiteral("The property list would be too large.");
        return {};
    }
    return xml;
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
    return xmlFromValue(value, error);
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
    QString reason;
    const auto xml = xmlFromValue(dictionary, reason);
    if (!xml.isEmpty()) {
        return replaceFile(path, xml, error);
    }
    if (error != nullptr) {
        *error = reason;
    }
    return false;
}

} // namespace platform
