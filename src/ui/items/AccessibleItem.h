#pragma once

#include <QAccessibleWidget>

class MVCollectionViewItem;

/// An item to assistive tools: an entry of a list with the name of its program, which holds name,
/// mute button and slider. Described as by its tool tip. The icon is decoration, and how loud the
/// program is at the moment is not told: that would be news all the time.
class AccessibleItem final : public QAccessibleWidget {
  public:
    explicit AccessibleItem(MVCollectionViewItem& item);

    QString text(QAccessible::Text kind) const override;
    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;

  private:
    QList<QWidget*> parts() const;

    MVCollectionViewItem& item_;
};
