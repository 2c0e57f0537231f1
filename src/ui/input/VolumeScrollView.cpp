#include "ui/input/VolumeScrollView.h"

#include "look/window/MVScroller.h"
#include "ui/items/ItemLayout.h"
#include "ui/items/MVCollectionView.h"
#include "ui/items/MVVolumeSlider.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWheelEvent>

#include <chrono>

namespace {

constexpr double notch = 120;      // of the wheel, in eighths of a degree
constexpr double usualLines = 3;   // for a notch, which then is one row
constexpr double notchPercent = 5; // of a volume
constexpr std::chrono::milliseconds restOfWheel{400};

} // namespace

VolumeScrollView::VolumeScrollView(MVCollectionView* grid, QWidget* parent)
    : QScrollArea(parent), grid_(*grid), keyboard_(*this, *grid) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBar(new MVScroller(Qt::Vertical, this));
    verticalScrollBar()->setSingleStep(ItemLayout::height);
    setWidget(grid);
    release_.setSingleShot(true);
    release_.setInterval(restOfWheel);
    connect(&release_, &QTimer::timeout, this, &VolumeScrollView::release);
}

VolumeScrollView::~VolumeScrollView() = default;

void VolumeScrollView::keyPressEvent(QKeyEvent* event) {
    event->setAccepted(keyboard_.press(*event));
}

MVVolumeSlider* VolumeScrollView::sliderAt(const QPointF& place) const {
    return qobject_cast<MVVolumeSlider*>(grid_.childAt(grid_.mapFrom(viewport(), place).toPoint()));
}

void VolumeScrollView::wheelEvent(QWheelEvent* event) {
    event->accept();
    MVVolumeSlider* const slider = sliderAt(event->position());
    const bool isFree = slider != nullptr && slider->isEnabled() && !slider->isInDrag();
    if (rule_.use(isFree) == WheelPolicy::Use::volume && slider != nullptr)
        moveSlider(*slider, *event);
    else
        scroll(*event);
}

void VolumeScrollView::scroll(const QWheelEvent& event) {
    release();
    double way = event.pixelDelta().y();
    if (event.pixelDelta().isNull())
        way = event.angleDelta().y() / notch * ItemLayout::height *
              QApplication::wheelScrollLines() / usualLines;
    verticalScrollBar()->setValue(verticalScrollBar()->value() - pixels_.add(way));
    grid_.showUnderMouse(grid_.mapFrom(viewport(), event.position().toPoint()));
}

/// Upwards is louder, also with natural scrolling.
void VolumeScrollView::moveSlider(MVVolumeSlider& slider, const QWheelEvent& event) {
    if (moved_ != &slider) {
        release();
        percents_.clear();
        moved_ = &slider;
    }
    const double turn = event.angleDelta().y() / notch * (event.inverted() ? -1 : 1);
    if (const int percents = percents_.add(turn * notchPercent); percents != 0)
        slider.moveTo(slider.percent() + percents);
    release_.start();
}

void VolumeScrollView::release() {
    release_.stop();
    if (moved_ != nullptr)
        moved_->finishMove();
    moved_ = nullptr;
}
