#include "platform/defaults/PropertyList.h"
#include "platform/plist/PropertyListNode.h"
#include "platform/plist/StorableText.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>
#include <limits>

namespace platform {

namespace {

constexpr QChar replacement(0xFFFD);

/// How many code units at `at` make a character that XML can hold; 0 when they make none.
qsizetype storableLength(QStringView text, qsizetype at) {
    const char16_t unit = text[at].unicode();
    if (QChar::isHighSurrogate(unit)) {
        const bool isPair = at + 1 < text.size() && text[at + 1].isLowSurrogate();
        return isPair ? 2 : 0;
    }
    return isStorableCharacter(unit) ? 1 : 0;
}

bool isStorableText(QStringView text) {
    for (qsizetype at = 0; at < text.size();) {
        const qsizetype length = storableLength(text, at);
        if (length == 0)
            return false;
        at += length;
    }
    return true;
}

QString storableText(QString text) {
    for (qsizetype at = 0; at < text.size();) {
        const qsizetype length = storableLength(text, at);
        if (length == 0)
            text[at] = replacement;
        at += std::max<qsizetype>(length, 1);
    }
    return text;
}

QVariant storableDate(const QDateTime& date) {
    const QDateTime utc = date.toUTC();
    const int year = utc.date().year();
    if (!utc.isValid() || year < 1 || year > 9999)
        return {};
    return utc.addMSecs(-utc.time().msec());
}

/// Whether storableValue() would answer the value itself. Copying a large one takes far longer than
/// finding this out.
bool isStorable(const QVariant& value, std::size_t depth) {
    const auto isStorableInside = [depth](const QVariant& inner) {
        return isStorable(inner, depth + 1);
    };
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::LongLong:
    case QMetaType::Double:
    case QMetaType::QByteArray:
        return true;
    case QMetaType::QString:
        return isStorableText(value.toString());
    case QMetaType::QVariantList: {
        const QVariantList list = value.toList();
        return depth < propertyListDepth && std::all_of(list.begin(), list.end(), isStorableInside);
    }
    case QMetaType::QVariantMap: {
        const QVariantMap map = value.toMap();
        return depth < propertyListDepth &&
               std::all_of(map.keyBegin(), map.keyEnd(), &isStorableText) &&
               std::all_of(map.begin(), map.end(), isStorableInside);
    }
    default: // dates, for one, are seldom
        return false;
    }
}

QVariantMap storableMap(const QVariantMap& map, std::size_t depth) {
    QVariantMap storable;
    for (auto entry = map.begin(); entry != map.end(); ++entry) {
        const QVariant value = storableValue(entry.value(), depth);
        if (value.isValid())
            storable.insert(storable.cend(), storableText(entry.key()), value);
    }
    return storable;
}

QVariantList storableList(const QVariantList& list, std::size_t depth) {
    QVariantList storable;
    storable.reserve(list.size());
    for (const QVariant& item : list) {
        const QVariant value = storableValue(item, depth);
        if (value.isValid())
            storable.append(value);
    }
    return storable;
}

QVariant storableUnsigned(qulonglong value) {
    if (value > static_cast<qulonglong>(std::numeric_limits<qlonglong>::max()))
        return value;
    return static_cast<qlonglong>(value);
}

QVariant storableOther(const QVariant& value) {
    if (value.typeId() != QMetaType::Nullptr && value.canConvert<QString>())
        return storableText(value.toString());
    return {};
}

bool isSameMap(const QVariantMap& left, const QVariantMap& right) {
    if (left.isSharedWith(right))
        return true;
    const auto isSameEntry = [](const auto& one, const auto& other) {
        return one.first == other.first && isSameValue(one.second, other.second);
    };
    return left.size() == right.size() &&
           std::equal(left.constKeyValueBegin(), left.constKeyValueEnd(),
                      right.constKeyValueBegin(), isSameEntry);
}

bool isSameNumber(double left, double right) {
    return (std::isnan(left) && std::isnan(right)) || (left <= right && left >= right);
}

} // namespace

QVariant storableValue(const QVariant& value, std::size_t depth) {
    if (isStorable(value, depth))
        return value;
    switch (value.typeId()) {
    case QMetaType::QString:
        return storableText(value.toString());
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::Short:
    case QMetaType::Int:
    case QMetaType::Long:
        return value.toLongLong();
    case QMetaType::UChar:
    case QMetaType::UShort:
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return storableUnsigned(value.toULongLong());
    case QMetaType::Float:
        return value.toDouble();
    case QMetaType::QDateTime:
        return storableDate(value.toDateTime());
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash:
        return depth < propertyListDepth ? storableMap(value.toMap(), depth + 1) : QVariant();
    case QMetaType::QVariantList:
    case QMetaType::QStringList:
        return depth < propertyListDepth ? storableList(value.toList(), depth + 1) : QVariant();
    default:
        return storableOther(value);
    }
}

bool isSameValue(const QVariant& left, const QVariant& right) {
    if (left.typeId() != right.typeId())
        return false;
    switch (left.typeId()) {
    case QMetaType::Double:
        return isSameNumber(left.toDouble(), right.toDouble());
    case QMetaType::QVariantMap:
        return isSameMap(left.toMap(), right.toMap());
    case QMetaType::QVariantList: {
        const QVariantList one = left.toList();
        const QVariantList other = right.toList();
        return one.isSharedWith(other) ||
               (one.size() == other.size() &&
                std::equal(one.begin(), one.end(), other.begin(), isSameValue));
    }
    default:
        return left == right;
    }
}

} // namespace platform
