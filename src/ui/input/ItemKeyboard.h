#pragma once

#include "ui/input/ItemNavigation.h"

#include <QPointer>

class MVCollectionView;
class MVCollectionViewItem;
class QKeyEvent;
class QScrollArea;
class QWidget;

/// What the keys do in the grid of items that its parts do not do themselves: go from item to item,
/// mute, ignore, open the context menu, and find a program by its name. Main thread only.
class ItemKeyboard {
  public:
    /// The grid lies in the scroll area; both must outlive it.
    ItemKeyboard(QScrollArea& area, MVCollectionView& grid) : area_(area), grid_(grid) {}

    /// Whether it was a key of ours.
    bool press(const QKeyEvent& event);

    /// The item that has the focus; null when none has.
    MVCollectionViewItem* current() const;

    /// Gives the focus to an item, to its slider if that takes it, and shows it.
    void focus(int index);

    /// Around a change of the items: where the focus was, so that it does not get lost with its
    /// item.
    std::optional<int> currentIndex() const;
    void restoreFocus(std::optional<int> before);

  private:
    bool act(const QKeyEvent& event);
    bool navigate(const QKeyEvent& event);
    bool find(const QKeyEvent& event);
    void openContextMenu(MVCollectionViewItem& item) const;

    QScrollArea& area_;
    MVCollectionView& grid_;
    TypeAhead typeAhead_;
};
