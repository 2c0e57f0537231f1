#pragma once

#include "ui/input/ItemKeyboard.h"
#include "ui/input/WheelPolicy.h"

#include <QPointer>
#include <QScrollArea>
#include <QTimer>

class MVCollectionView;
class MVVolumeSlider;

/// Scrolls the grid of items: by whole rows with a wheel, smoothly with a device that counts
/// pixels. Over a slider the wheel moves that, as the mouse does, by the rules of WheelPolicy. Main
/// thread only.
class VolumeScrollView final : public QScrollArea {
    Q_OBJECT

  public:
    /// Takes the grid over.
    explicit VolumeScrollView(MVCollectionView* grid, QWidget* parent = nullptr);
    ~VolumeScrollView() override;

    MVCollectionView& grid() const noexcept { return grid_; }
    ItemKeyboard& keyboard() noexcept { return keyboard_; }

    /// Keys that no part of an item has used.
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
