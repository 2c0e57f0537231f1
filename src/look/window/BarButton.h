#pragma once

#include <QPushButton>

/// A button in the theme's colours, for the bars of a window. If its text does not fit, it ends in
/// an ellipsis and the tool tip has the full text. An ampersand marks the key
/// that presses it with Alt. Main thread only.
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
