#pragma once

#include <QByteArray>
#include <QVariant>

#include <cstddef>
#include <optional>

namespace platform {

/// Property lists as values of Qt: QVariantMap, QVariantList, QString, bool, qlonglong (qulonglong
/// where that is too small), double, QByteArray, QDateTime in UTC. Any thread.

/// The value that XML or the binary form holds; nothing when it is damaged, cut off, or beyond the
/// bounds of PropertyListNode.h. Text that is no UTF-8 gets replacement characters.
std::optional<QVariant> parsePropertyList(const QByteArray& bytes);

/// XML, in UTF-8, that parsePropertyList() reads back as storableValue(value). Empty when there is
/// no such value.
QByteArray propertyListXml(const QVariant& value);

/// What is left of a value in a property list's XML: integers, numbers, lists and dictionaries of
/// other types become those above, dates whole seconds of the years 1 to 9999, characters that XML
/// cannot hold U+FFFD. What has no place in it is left out of its container: nulls, other types,
/// and containers that lie deeper than propertyListDepth, of which `depth` are around this one.
/// Invalid when nothing is left.
QVariant storableValue(const QVariant& value, std::size_t depth = 0);

/// Whether two values are alike, with all that is in them, and of one type. (QVariant's own
/// comparison has true equal 1, and NaN differ from itself.)
bool isSameValue(const QVariant& left, const QVariant& right);

} // namespace platform
