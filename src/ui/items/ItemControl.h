#pragma once

#include <QPen>
#include <QWidget>

/// A control of an item that accepts keys. Shows a focus mark, except if it got the focus by the
/// mouse. Main thread only.
class ItemControl : public QWidget {
    Q_OBJECT

  public:
    using QWidget::QWidget;

  protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

    [[nodiscard]] bool hasKeyFocus() const noexcept { return hasKeyFocus_; }
    void showKeyFocus(bool hasKeyFocus);

    /// The pen of the focus mark.
    static QPen focusPen();

  private:
    bool hasKeyFocus_ = false;
    bool hadKeyFocus_ = false; // when it last lost the focus
};
