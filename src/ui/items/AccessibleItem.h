#pragma once

#include <QAccessibleWidget>

class MVCollectionViewItem;

/// An item for assistive tools: a list entry named after its program, with name, mute button and
/// slider as children, and the field for the percent while that is typed. Its description is its
/// state and the text of its tool tip. The icon and what stands beside the name are decoration, and
/// the level is not exposed, since it changes all the time. The state is here and not at the
/// slider, since tools cache descriptions until they are notified of a change, except those of list
/// entries.
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
