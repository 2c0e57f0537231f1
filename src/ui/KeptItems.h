#pragma once

#include "ui/items/MVCollectionView.h"

#include <memory>
#include <unordered_map>

class MVCommAppValue;

/// Handling many items at once. Main thread only.
namespace KeptItems {

using ItemsOfRecords =
    std::unordered_map<const MVCommAppValue*, std::unique_ptr<MVCollectionViewItem>>;

/// Takes those whose record is still there out of `items`.
ItemsOfRecords take(MVCollectionView::Items& items);

/// Destroys the others, and gives their memory back.
void destroy(MVCollectionView::Items items);

} // namespace KeptItems
