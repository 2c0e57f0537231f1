#include "ui/items/AccessibleItem.h"

#include "ui/items/MVCollectionViewItem.h"
#include "ui/items/MVCollectionViewTextField.h"
#include "ui/items/MVMuteImageView.h"
#include "ui/items/MVVolumeSlider.h"
#include "ui/items/PercentField.h"

AccessibleItem::AccessibleItem(MVCollectionViewItem& item)
    : QAccessibleWidget(&item, QAccessible::ListItem, item.label().text()), item_(item) {}

QString AccessibleItem::text(QAccessible::Text kind) const {
    if (kind != QAccessible::Description)
        return QAccessibleWidget::text(kind);
    const QString more = item_.description();
    return more.isEmpty() ? item_.state() : item_.state() + QLatin1Char('\n') + more;
}

QList<QWidget*> AccessibleItem::parts() const {
    QList<QWidget*> parts{&item_.label(), &item_.muteView(), &item_.slider()};
    if (item_.percentField() != nullptr)
        parts.push_back(item_.percentField());
    return parts;
}

int AccessibleItem::childCount() const {
    return static_cast<int>(parts().size());
}

QAccessibleInterface* AccessibleItem::child(int index) const {
    return index >= 0 && index < childCount()
               ? QAccessible::queryAccessibleInterface(parts().at(index))
               : nullptr;
}

int AccessibleItem::indexOfChild(const QAccessibleInterface* child) const {
    return child != nullptr
               ? static_cast<int>(parts().indexOf(qobject_cast<QWidget*>(child->object())))
               : -1;
}
