#pragma once

#include <QAccessibleWidget>

class MVCollectionViewItem;

/// An item to assistive tools: an entry of a list with the name of its program, which holds name,
/// mute button and slider. Described by its state and as by its tool tip. The icon is decoration,
/// and how loud the program is at the moment is not told: that would be news all the time. The
/// state belongs here and not to the slider, since tools keep descriptions until they are told of a
/// change, except those of entries of a list.
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
