#include "ui/items/AccessibleSlider.h"

#include "model/VolumeConversion.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"
#include "ui/items/MVCollectionViewItem.h"
#include "ui/items/TNVolumeSlider.h"

AccessibleSlider::AccessibleSlider(TNVolumeSlider& slider)
    : QAccessibleWidget(&slider, QAccessible::Slider, Texts::tr("Volume")), slider_(slider) {}

QString AccessibleSlider::text(QAccessible::Text kind) const {
    if (kind == QAccessible::Value)
        return percentText();
    const auto* const item = qobject_cast<const MVCollectionViewItem*>(slider_.parentWidget());
    return kind == QAccessible::Description && item != nullptr ? item->reasonNotControllable()
                                                               : QAccessibleWidget::text(kind);
}

void* AccessibleSlider::interface_cast(QAccessible::InterfaceType type) {
    if (type == QAccessible::ValueInterface)
        return static_cast<QAccessibleValueInterface*>(this);
    if (type == QAccessible::TextInterface)
        return static_cast<QAccessibleTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QString AccessibleSlider::percentText() const {
    return platform::formatted(QStringLiteral("%d %%"), slider_.percent());
}

QString AccessibleSlider::text(int startOffset, int endOffset) const {
    return percentText().mid(startOffset, endOffset - startOffset);
}

int AccessibleSlider::characterCount() const {
    return static_cast<int>(percentText().size());
}

QString AccessibleSlider::attributes(int /*offset*/, int* startOffset, int* endOffset) const {
    *startOffset = 0;
    *endOffset = characterCount();
    return {};
}

QRect AccessibleSlider::characterRect(int /*offset*/) const {
    return rect();
}

void AccessibleSlider::selection(int /*selectionIndex*/, int* startOffset, int* endOffset) const {
    *startOffset = 0;
    *endOffset = 0;
}

QVariant AccessibleSlider::currentValue() const {
    return static_cast<double>(slider_.floatValue());
}

void AccessibleSlider::setCurrentValue(const QVariant& value) {
    if (!slider_.isEnabled())
        return;
    slider_.setSliderValue_(VolumeConversion::clampedLevel(value.toFloat()), true);
    slider_.update();
}

QStringList AccessibleSlider::actionNames() const {
    return QStringList{increaseAction(), decreaseAction()} + QAccessibleWidget::actionNames();
}

void AccessibleSlider::doAction(const QString& name) {
    const bool isMove = name == increaseAction() || name == decreaseAction();
    if (!isMove)
        QAccessibleWidget::doAction(name);
    else if (slider_.isEnabled() && name == increaseAction())
        slider_.increment();
    else if (slider_.isEnabled())
        slider_.decrement();
}
