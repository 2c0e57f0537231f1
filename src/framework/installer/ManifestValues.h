#pragma once

#include "platform/base/CallStack.h"

#include <QString>
#include <QVariantMap>

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

/// Reading the values of an install manifest. A fault of the manifest is an exception with the call
/// stack of the check that found it.
using ManifestError = platform::TracedError<std::invalid_argument>;

/// The value; throws "nil @ LINE!" with the line of the caller if there is none.
template <typename T>
T required(std::optional<T> value, int line = __builtin_LINE()) {
    if (!value)
        throw ManifestError("nil @ " + std::to_string(line) + "!");
    return *std::move(value);
}

/// The entry of that key if it is there and of that type, else nothing.
[[nodiscard]] std::optional<QString> textIn(const QVariantMap& dictionary, const char* key);
[[nodiscard]] std::optional<QVariantMap> dictionaryIn(const QVariantMap& dictionary,
                                                      const char* key);
[[nodiscard]] std::optional<QVariantList> listIn(const QVariantMap& dictionary, const char* key);

/// Whether the entry is a true boolean or a number other than 0.
[[nodiscard]] bool isSet(const QVariantMap& dictionary, const char* key);
