#include "ui/items/AccessibleItems.h"

#include "ui/items/AccessibleGrid.h"
#include "ui/items/AccessibleItem.h"
#include "ui/items/AccessibleMute.h"
#include "ui/items/AccessibleSlider.h"
#include "ui/items/ItemStatus.h"
#include "ui/items/MVCollectionView.h"
#include "ui/items/MVCollectionViewImageView.h"
#include "ui/items/MVCollectionViewItem.h"
#include "ui/items/MVCollectionViewTextField.h"
#include "ui/items/MVMuteImageView.h"
#include "ui/items/TNVolumeSlider.h"

#include <QAccessibleWidget>

namespace {

/// Exposed, but not a stop: its neighbour says what it shows.
class Decoration final : public QAccessibleWidget {
  public:
    explicit Decoration(QWidget* widget) : QAccessibleWidget(widget, QAccessible::Graphic) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.invisible = true;
        return state;
    }
};

/// Qt owns the result.
QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    if (auto* const slider = qobject_cast<TNVolumeSlider*>(object))
        return new AccessibleSlider(*slider);
    if (auto* const mute = qobject_cast<MVMuteImageView*>(object))
        return new AccessibleMute(*mute);
    if (auto* const grid = qobject_cast<MVCollectionView*>(object))
        return new AccessibleGrid(*grid);
    if (auto* const item = qobject_cast<MVCollectionViewItem*>(object))
        return new AccessibleItem(*item);
    if (auto* const label = qobject_cast<MVCollectionViewTextField*>(object))
        return new QAccessibleWidget(label, QAccessible::StaticText, label->text());
    if (auto* const image = qobject_cast<MVCollectionViewImageView*>(object))
        return new Decoration(image);
    if (auto* const status = qobject_cast<ItemStatus*>(object))
        return new Decoration(status);
    return nullptr;
}

} // namespace

void installAccessibleItems() {
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(&makeInterface);
        return true;
    }();
}
