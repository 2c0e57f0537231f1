#include "ui/items/AccessibleMute.h"

#include "platform/text/Texts.h"
#include "ui/items/MVCollectionViewItem.h"
#include "ui/items/MVMuteImageView.h"

AccessibleMute::AccessibleMute(MVMuteImageView& view)
    : QAccessibleWidget(&view, QAccessible::CheckBox, Texts::tr("Mute")), view_(view) {}

QString AccessibleMute::text(QAccessible::Text kind) const {
    const auto* const item = qobject_cast<const MVCollectionViewItem*>(view_.parentWidget());
    return kind == QAccessible::Description && item != nullptr ? item->reasonNotControllable()
                                                               : QAccessibleWidget::text(kind);
}

QAccessible::State AccessibleMute::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    state.disabled = !view_.isOperable();
    state.checkable = true;
    state.checked = view_.app() != nullptr && view_.app()->muted();
    return state;
}

QStringList AccessibleMute::actionNames() const {
    return QStringList{pressAction()} + QAccessibleWidget::actionNames();
}

void AccessibleMute::doAction(const QString& name) {
    if (name == pressAction())
        view_.toggle();
    else
        QAccessibleWidget::doAction(name);
}
