#include "platform/plist/PropertyListValues.h"

#include "platform/plist/PropertyListNode.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <plist/plist.h>

namespace platform {

namespace {

/// libplist answers the bits of an integer, but not whether they are meant with a sign. An integer
/// that it makes of them always is.
double integerOf(plist_t node) noexcept {
    std::uint64_t bits = 0;
    plist_get_uint_val(node, &bits);
    const PropertyListNode withSign(plist_new_uint(bits));
    return plist_compare_node_value(node, withSign.get()) == 0
               ? static_cast<double>(bits)
               : static_cast<double>(static_cast<std::int64_t>(bits));
}

} // namespace

bool isDictionary(void* node) noexcept {
    return plist_get_node_type(node) == PLIST_DICT;
}

std::optional<std::string> textOf(void* node) {
    if (plist_get_node_type(node) != PLIST_STRING)
        return std::nullopt;
    std::uint64_t length = 0;
    const char* const text = plist_get_string_ptr(node, &length);
    return std::string(text, length);
}

std::optional<double> numberOf(void* node) noexcept {
    double number = 0;
    std::uint8_t boolean = 0;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        plist_get_bool_val(node, &boolean);
        return boolean != 0 ? 1 : 0;
    case PLIST_UINT:
        return integerOf(node);
    case PLIST_REAL:
        plist_get_real_val(node, &number);
        return std::isfinite(number) ? std::optional(number) : std::nullopt;
    default:
        return std::nullopt;
    }
}

void forEachItem(void* array, const std::function<void(void* value)>& take) {
    if (plist_get_node_type(array) != PLIST_ARRAY)
        return;
    plist_array_iter first = nullptr;
    plist_array_new_iter(array, &first);
    const std::unique_ptr<void, decltype(&std::free)> iterator(first, &std::free);
    for (;;) {
        plist_t value = nullptr;
        plist_array_next_item(array, iterator.get(), &value);
        if (value == nullptr)
            return;
        take(value);
    }
}

void* entryOf(void* dictionary, const char* key) noexcept {
    return isDictionary(dictionary) ? plist_dict_get_item(dictionary, key) : nullptr;
}

} // namespace platform
