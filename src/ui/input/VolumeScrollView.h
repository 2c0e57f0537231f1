#pragma once

#include "ui/input/ItemKeyboard.h"
#include "ui/input/WheelPolicy.h"

#include <QPointer>
#include <QScrollArea>
#include <QTimer>

class MVCollectionView;
class MVVolumeSlider;

/// Scrolls the grid of items: by whole rows with a wheel, smoothly with a touchpad. Over a slider
/// the wheel moves the slider like the mouse does; see WheelPolicy. Main thread only.
class VolumeScrollView final : public QScrollArea {
    Q_OBJECT

  public:
    /// Takes ownership of the grid.
    explicit VolumeScrollView(MVCollectionView* grid, QWidget* parent = nullptr);
    ~VolumeScrollView() override;

    MVCollectionView& grid() const noexcept { return grid_; }
    ItemKeyboard& keyboard() noexcept { return keyboard_; }

    /// Keys that no control of an item has handled.
    void keyPressEvent(QKeyEvent* event) override;

  protected:
    void wheelEvent(QWheelEvent* event) override;

  private:
    MVVolumeSlider* sliderAt(const QPointF& place) const;
    void scroll(const QWheelEvent& event);
    void moveSlider(MVVolumeSlider& slider, const QWheelEvent& event);
    void release();

    MVCollectionView& grid_;
    ItemKeyboard keyboard_;
    WheelPolicy rule_;
    WheelSteps pixels_;
    WheelSteps percents_;
    QPointer<MVVolumeSlider> moved_;
    QTimer release_;
};
