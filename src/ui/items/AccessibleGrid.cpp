#include "ui/items/AccessibleGrid.h"

#include "platform/text/Texts.h"
#include "ui/items/MVCollectionView.h"
#include "ui/items/MVCollectionViewItem.h"

#include <QLabel>

AccessibleGrid::AccessibleGrid(MVCollectionView& grid)
    : QAccessibleWidget(&grid, QAccessible::List, Texts::tr("Programs")), grid_(grid) {}

QList<QWidget*> AccessibleGrid::parts() const {
    QList<QWidget*> parts;
    for (const auto& item : grid_.items())
        parts.push_back(item.get());
    for (QLabel* const hint : grid_.findChildren<QLabel*>(Qt::FindDirectChildrenOnly)) {
        if (!hint->isHidden())
            parts.push_back(hint);
    }
    return parts;
}

int AccessibleGrid::childCount() const {
    return static_cast<int>(parts().size());
}

QAccessibleInterface* AccessibleGrid::child(int index) const {
    return QAccessible::queryAccessibleInterface(parts().value(index));
}

int AccessibleGrid::indexOfChild(const QAccessibleInterface* child) const {
    return child != nullptr
               ? static_cast<int>(parts().indexOf(qobject_cast<QWidget*>(child->object())))
               : -1;
}
