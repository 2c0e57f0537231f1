#include "platform/defaults/PropertyList.h"

#include "platform/plist/PropertyListNode.h"

#include <QDateTime>
#include <QTimeZone>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <plist/plist.h>
#include <string>

namespace platform {

namespace {

using Iterator = std::unique_ptr<void, decltype(&std::free)>;

QVariant variantFrom(plist_t node);

QVariantMap mapFrom(plist_t dictionary) {
    QVariantMap map;
    forEachEntry(dictionary, [&](const char* key, void* value) {
        map.insert(QString::fromUtf8(key), variantFrom(value));
    });
    return map;
}

QVariantList listFrom(plist_t array) {
    QVariantList list;
    list.reserve(static_cast<qsizetype>(plist_array_get_size(array)));
    plist_array_iter first = nullptr;
    plist_array_new_iter(array, &first);
    const Iterator iterator(first, &std::free);
    for (;;) {
        plist_t value = nullptr;
        plist_array_next_item(array, iterator.get(), &value);
        if (value == nullptr)
            return list;
        list.append(variantFrom(value));
    }
}

/// libplist answers the bits of an integer, but not whether they are meant with a sign. An integer
/// that it makes of them always is.
QVariant integerFrom(plist_t node) {
    std::uint64_t bits = 0;
    plist_get_uint_val(node, &bits);
    const PropertyListNode withSign(plist_new_uint(bits));
    if (plist_compare_node_value(node, withSign.get()) == 0 &&
        bits > static_cast<std::uint64_t>(std::numeric_limits<qlonglong>::max()))
        return QVariant::fromValue<qulonglong>(bits);
    return QVariant::fromValue<qlonglong>(static_cast<qlonglong>(bits));
}

/// Seconds since 2001. libplist answers them in 32 bits, which end in 2069; its binary form has
/// all.
double secondsOf(plist_t date) {
    const PropertyListNode array(plist_new_array());
    plist_array_append_item(array.get(), plist_copy(date));
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(array.get(), &bytes, &length);
    const std::unique_ptr<char, decltype(&plist_to_bin_free)> owned(bytes, &plist_to_bin_free);
    constexpr std::uint32_t place = 8 + 2 + 1; // header, array of one, marker of a date
    if (bytes == nullptr || length < place + sizeof(double))
        return 0;
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < sizeof(double); ++i)
        bits = bits << 8U | static_cast<unsigned char>(bytes[place + i]);
    return std::bit_cast<double>(bits);
}

QVariant dateFrom(plist_t node) {
    constexpr double epoch = 978307200; // 2001 in the seconds of Unix
    constexpr double bound = 1e12;      // 30000 years, which no calendar of Qt minds
    const double seconds = secondsOf(node);
    if (!(std::abs(seconds) < bound))
        return QDateTime();
    return QDateTime::fromMSecsSinceEpoch(std::llround((seconds + epoch) * 1000), Qt::UTC);
}

QVariant variantFrom(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return value != 0;
    }
    case PLIST_UINT:
        return integerFrom(node);
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_STRING: {
        std::uint64_t length = 0;
        const char* const text = plist_get_string_ptr(node, &length);
        return QString::fromUtf8(text, static_cast<qsizetype>(length));
    }
    case PLIST_ARRAY:
        return listFrom(node);
    case PLIST_DICT:
        return mapFrom(node);
    case PLIST_DATE:
        return dateFrom(node);
    case PLIST_DATA: {
        std::uint64_t length = 0;
        const char* const bytes = plist_get_data_ptr(node, &length);
        return QByteArray(bytes, static_cast<qsizetype>(length));
    }
    case PLIST_UID: { // as XML holds it
        std::uint64_t value = 0;
        plist_get_uid_val(node, &value);
        return QVariantMap{{QStringLiteral("CF$UID"), static_cast<qlonglong>(value)}};
    }
    default:
        return {};
    }
}

/// A node that libplist has no constructor for.
plist_t nodeFromXml(const QByteArray& element) {
    const QByteArray xml = "<plist version=\"1.0\">" + element + "</plist>";
    plist_t node = nullptr;
    plist_from_xml(xml.constData(), static_cast<std::uint32_t>(xml.size()), &node);
    return node;
}

plist_t nodeFrom(const QVariant& value);

plist_t dictionaryFrom(const QVariantMap& map) {
    plist_t dictionary = plist_new_dict();
    for (auto entry = map.begin(); entry != map.end(); ++entry)
        plist_dict_set_item(dictionary, entry.key().toUtf8().constData(), nodeFrom(entry.value()));
    return dictionary;
}

plist_t arrayFrom(const QVariantList& list) {
    plist_t array = plist_new_array();
    for (const QVariant& value : list)
        plist_array_append_item(array, nodeFrom(value));
    return array;
}

/// Of a storable value.
plist_t nodeFrom(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::QVariantMap:
        return dictionaryFrom(value.toMap());
    case QMetaType::QVariantList:
        return arrayFrom(value.toList());
    case QMetaType::Bool:
        return plist_new_bool(value.toBool() ? 1 : 0);
    case QMetaType::LongLong:
        return plist_new_uint(static_cast<std::uint64_t>(value.toLongLong()));
    case QMetaType::ULongLong:
        return nodeFromXml("<integer>" + QByteArray::number(value.toULongLong()) + "</integer>");
    case QMetaType::Double:
        return plist_new_real(value.toDouble());
    case QMetaType::QByteArray: {
        const QByteArray bytes = value.toByteArray();
        return plist_new_data(bytes.constData(), static_cast<std::uint64_t>(bytes.size()));
    }
    case QMetaType::QDateTime:
        return nodeFromXml("<date>" + value.toDateTime().toString(Qt::ISODate).toLatin1() +
                           "</date>");
    default:
        return plist_new_string(value.toString().toUtf8().constData());
    }
}

} // namespace

std::optional<QVariant> parsePropertyList(const QByteArray& bytes) {
    const PropertyListNode root =
        readPropertyList({bytes.constData(), static_cast<std::size_t>(bytes.size())});
    if (!root)
        return {};
    return variantFrom(root.get());
}

QByteArray propertyListXml(const QVariant& value) {
    const QVariant storable = storableValue(value);
    if (!storable.isValid())
        return {};
    const NumericCLocale locale;
    const PropertyListNode root(nodeFrom(storable));
    char* xml = nullptr;
    std::uint32_t length = 0;
    plist_to_xml(root.get(), &xml, &length);
    const std::unique_ptr<char, decltype(&plist_to_xml_free)> owned(xml, &plist_to_xml_free);
    return {xml, static_cast<qsizetype>(length)};
}

} // namespace platform
