#pragma once

#include <QScrollBar>

/// The scroll bar of the window, in its colours. Main thread only.
class MVScroller final : public QScrollBar {
    Q_OBJECT

  public:
    explicit MVScroller(Qt::Orientation orientation, QWidget* parent = nullptr);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
};
