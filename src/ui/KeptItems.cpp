#include "ui/KeptItems.h"

#include "model/MVCommAppValue.h"
#include "platform/processes/FreedMemory.h"
#include "ui/items/MVCollectionViewItem.h"

KeptItems::ItemsOfRecords KeptItems::take(MVCollectionView::Items& items) {
    ItemsOfRecords kept;
    for (auto& item : items) {
        if (const MVCommAppValue* const record = item->representedObject())
            kept.emplace(record, std::move(item));
    }
    return kept;
}

/// An item has some hundred small blocks, and all programs may leave at once.
void KeptItems::destroy(MVCollectionView::Items items) {
    constexpr std::size_t batch = 16;
    std::size_t count = 0;
    for (auto& item : items) {
        if (item == nullptr)
            continue;
        item.reset();
        if (++count % batch == 0)
            platform::mergeFreedMemory();
    }
}
