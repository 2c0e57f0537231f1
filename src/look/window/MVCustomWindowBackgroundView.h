#pragma once

#include <QWidget>

/// What a window that draws its own frame lies on: the colours of its title bar and the fine line
/// around it. Main thread only.
class MVCustomWindowBackgroundView final : public QWidget {
    Q_OBJECT

  public:
    /// Pixels of the line.
    static constexpr int border = 1;

    /// The title bar takes the top `titleBar` pixels, the line included.
    explicit MVCustomWindowBackgroundView(int titleBar, QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    const int titleBar_;
};
