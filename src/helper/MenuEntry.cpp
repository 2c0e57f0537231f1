#include "helper/MenuEntry.h"

#include <algorithm>

const MenuEntry* findEntry(const MenuEntry& tree, int id) noexcept {
    if (tree.id == id)
        return &tree;
    for (const MenuEntry& child : tree.children) {
        if (const MenuEntry* const found = findEntry(child, id))
            return found;
    }
    return nullptr;
}

bool hasSameEntries(const MenuEntry& one, const MenuEntry& other) noexcept {
    return one.id == other.id && std::ranges::equal(one.children, other.children, &hasSameEntries);
}
