#pragma once

#include <QByteArray>
#include <QVariant>

#include <cstddef>
#include <optional>

namespace platform {

/// Property lists as Qt values: QVariantMap, QVariantList, QString, bool, qlonglong (qulonglong
/// where that is too small), double, QByteArray, QDateTime in UTC. Any thread.

/// Parses XML or the binary form; nothing if it is damaged, truncated, or beyond the limits of
/// PropertyListNode.h. Invalid UTF-8 gets replacement characters.
[[nodiscard]] std::optional<QVariant> parsePropertyList(const QByteArray& bytes);

/// XML, in UTF-8, that parsePropertyList() reads back as storableValue(value). Empty if there is no
/// such value.
QByteArray propertyListXml(const QVariant& value);

/// The value as a property list's XML can represent it: integers, numbers, lists and dictionaries
/// of other types become those above, dates whole seconds of the years 1 to 9999, characters that
/// XML cannot represent U+FFFD. Values that cannot be represented are left out of their containers:
/// nulls, other types, and containers nested deeper than propertyListDepth, where `depth` is the
/// depth of this value. Invalid if nothing is left.
QVariant storableValue(const QVariant& value, std::size_t depth = 0);

/// Whether two values have the same type and content, recursively. (QVariant's own comparison
/// treats true as equal to 1, and NaN as different from itself.)
[[nodiscard]] bool isSameValue(const QVariant& left, const QVariant& right);

} // namespace platform
