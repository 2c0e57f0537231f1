#pragma once

#include "ui/input/ItemNavigation.h"

#include <QPointer>

class MVCollectionView;
class MVCollectionViewItem;
class QKeyEvent;
class QScrollArea;
class QWidget;

/// Handles the keys of the grid that the controls of an item do not handle: navigation, mute,
/// ignore, typing or resetting a volume, the context menu, and finding a program by its name. Main
/// thread only.
class ItemKeyboard {
  public:
    /// `grid` is in the scroll area; both must outlive this.
    ItemKeyboard(QScrollArea& area, MVCollectionView& grid) : area_(area), grid_(grid) {}

    /// Handles a key. Returns whether it was one of ours.
    [[nodiscard]] bool press(const QKeyEvent& event);

    /// The focused item, or null.
    [[nodiscard]] MVCollectionViewItem* current() const;

    /// Focuses an item, its slider if possible, and scrolls to it.
    void focus(int index);

    /// Call these before and after a change of the items, so that the focus is not lost with its
    /// item.
    [[nodiscard]] std::optional<int> currentIndex() const;
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
