#pragma once

#include <QAccessibleWidget>

class TNVolumeSlider;

/// A volume slider to assistive tools: titled "Volume", from 0 to 1. They move it by tenths, or to
/// any value, as a person does who lets go of it there. One that cannot be moved is described by
/// the reason.
class AccessibleSlider final : public QAccessibleWidget, public QAccessibleValueInterface {
  public:
    explicit AccessibleSlider(TNVolumeSlider& slider);

    QString text(QAccessible::Text kind) const override;
    void* interface_cast(QAccessible::InterfaceType type) override;

    QVariant currentValue() const override;
    void setCurrentValue(const QVariant& value) override;
    QVariant minimumValue() const override { return 0.0; }
    QVariant maximumValue() const override { return 1.0; }
    QVariant minimumStepSize() const override { return 0.1; }

    QStringList actionNames() const override;
    void doAction(const QString& name) override;

  private:
    TNVolumeSlider& slider_;
};
