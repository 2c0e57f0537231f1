#pragma once

#include <QPushButton>

/// A button in the colours of the theme, for the bars of a window. Where it does not get the room
/// for its text, that ends in an ellipsis and the tool tip has all of it. Main thread only.
class BarButton final : public QPushButton {
    Q_OBJECT

  public:
    explicit BarButton(QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};
