#pragma once

#include <QWidget>

/// The background of a window that draws its own frame: the title bar's colours and the border
/// line. Main thread only.
class MVCustomWindowBackgroundView final : public QWidget {
    Q_OBJECT

  public:
    /// The width of the line in pixels.
    static constexpr int border = 1;

    /// The title bar takes the top `titleBar` pixels, the line included.
    explicit MVCustomWindowBackgroundView(int titleBar, QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    const int titleBar_;
};
