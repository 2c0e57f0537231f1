#pragma once

#include <QPen>
#include <QWidget>

/// A control of an item that takes keys: knows whether it has to show that, which it has not while
/// the mouse has given it the focus, for then it is under the mouse. Main thread only.
class ItemControl : public QWidget {
    Q_OBJECT

  public:
    using QWidget::QWidget;

  protected:
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

    bool hasKeyFocus() const noexcept { return hasKeyFocus_; }
    void showKeyFocus(bool hasKeyFocus);

    /// What the mark of the focus is drawn with.
    static QPen focusPen();

  private:
    bool hasKeyFocus_ = false;
};
