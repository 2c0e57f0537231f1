#include "framework/installer/ManifestValues.h"

namespace {

/// Only values of the type itself: QVariant would also convert.
template <typename T>
std::optional<T> valueIn(const QVariantMap& dictionary, const char* key) {
    const QVariant value = dictionary.value(QString::fromLatin1(key));
    if (value.metaType() != QMetaType::fromType<T>())
        return std::nullopt;
    return value.value<T>();
}

} // namespace

std::optional<QString> textIn(const QVariantMap& dictionary, const char* key) {
    return valueIn<QString>(dictionary, key);
}

std::optional<QVariantMap> dictionaryIn(const QVariantMap& dictionary, const char* key) {
    return valueIn<QVariantMap>(dictionary, key);
}

std::optional<QVariantList> listIn(const QVariantMap& dictionary, const char* key) {
    return valueIn<QVariantList>(dictionary, key);
}

bool isSet(const QVariantMap& dictionary, const char* key) {
    const QVariant value = dictionary.value(QString::fromLatin1(key));
    return value.metaType() != QMetaType::fromType<QString>() && value.toBool();
}
