#pragma once

#include <QAccessibleWidget>

class TNVolumeSlider;

/// A volume slider for assistive tools: titled "Volume", from 0 to 1, with the percent as its text.
/// They move it by tenths, or to any value, which counts as a release there. A disabled slider is
/// described by the reason.
class AccessibleSlider final : public QAccessibleWidget,
                               public QAccessibleValueInterface,
                               public QAccessibleTextInterface {
  public:
    explicit AccessibleSlider(TNVolumeSlider& slider);

    QString text(QAccessible::Text kind) const override;
    void* interface_cast(QAccessible::InterfaceType type) override;

    QVariant currentValue() const override;
    void setCurrentValue(const QVariant& value) override;
    QVariant minimumValue() const override { return 0.0; }
    QVariant maximumValue() const override { return 1.0; }
    /// The step of a key. Tools show as many digits as this has.
    QVariant minimumStepSize() const override { return 0.01; }

    QStringList actionNames() const override;
    void doAction(const QString& name) override;

    // Its text can only be read.
    QString text(int startOffset, int endOffset) const override;
    int characterCount() const override;
    QString attributes(int offset, int* startOffset, int* endOffset) const override;
    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint& /*point*/) const override { return -1; }
    int cursorPosition() const override { return 0; }
    void setCursorPosition(int /*position*/) override {}
    int selectionCount() const override { return 0; }
    void selection(int selectionIndex, int* startOffset, int* endOffset) const override;
    void addSelection(int /*startOffset*/, int /*endOffset*/) override {}
    void removeSelection(int /*selectionIndex*/) override {}
    void setSelection(int /*index*/, int /*startOffset*/, int /*endOffset*/) override {}
    void scrollToSubstring(int /*startIndex*/, int /*endIndex*/) override {}

  private:
    QString percentText() const;

    TNVolumeSlider& slider_;
};
