#include "platform/plist/PropertyListNode.h"

#include "platform/plist/PropertyListBounds.h"

#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <plist/plist.h>

namespace platform {

namespace {

locale_t pointLocale() noexcept {
    static const locale_t locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

} // namespace

void PropertyListDeleter::operator()(void* node) const noexcept {
    plist_free(node);
}

PropertyListNode readPropertyList(std::string_view bytes) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF"; // libplist does not know it
    if (bytes.starts_with(byteOrderMark))
        bytes.remove_prefix(byteOrderMark.size());
    if (!isWithinPropertyListBounds(bytes))
        return nullptr;
    const NumericCLocale locale;
    plist_t root = nullptr;
    plist_from_memory(bytes.data(), static_cast<std::uint32_t>(bytes.size()), &root);
    return PropertyListNode(root);
}

void forEachEntry(void* dictionary, const std::function<void(const char* key, void* value)>& take) {
    plist_dict_iter first = nullptr;
    plist_dict_new_iter(dictionary, &first);
    const std::unique_ptr<void, decltype(&std::free)> iterator(first, &std::free);
    for (;;) {
        char* key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(dictionary, iterator.get(), &key, &value);
        const std::unique_ptr<char, decltype(&std::free)> ownedKey(key, &std::free);
        if (key == nullptr)
            return;
        take(key, value);
    }
}

NumericCLocale::NumericCLocale() noexcept : previous_(::uselocale(pointLocale())) {}

NumericCLocale::~NumericCLocale() {
    ::uselocale(static_cast<locale_t>(previous_));
}

} // namespace platform
