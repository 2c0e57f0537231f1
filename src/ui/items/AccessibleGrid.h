#pragma once

#include <QAccessibleWidget>

class MVCollectionView;

/// The grid for assistive tools: a list of the items in their order, or the hint if there are none.
class AccessibleGrid final : public QAccessibleWidget {
  public:
    explicit AccessibleGrid(MVCollectionView& grid);

    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;

  private:
    QList<QWidget*> parts() const;

    MVCollectionView& grid_;
};
