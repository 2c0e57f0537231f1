#include "ui/items/MVCollectionItemBackgroundView.h"

#include "model/AppVolumeController.h"
#include "platform/base/WallClock.h"
#include "platform/desktop/DesktopAnimations.h"
#include "ui/items/ItemAnimation.h"
#include "ui/items/MVCollectionView.h"

#include <QPropertyAnimation>
#include <QStyle>

#include <chrono>

MVCollectionItemBackgroundView::MVCollectionItemBackgroundView(QWidget* parent) : QWidget(parent) {}

MVCollectionItemBackgroundView::~MVCollectionItemBackgroundView() = default;

std::unique_ptr<QPropertyAnimation>
MVCollectionItemBackgroundView::animationForKey(const QByteArray& key) {
    const auto* const controller = AppVolumeController::sharedController();
    const auto* const grid = qobject_cast<const MVCollectionView*>(parentWidget());
    ItemAnimation motion;
    if (controller != nullptr)
        motion.sinceStart = platform::WallClock::now().time_since_epoch() -
                            std::chrono::duration<double>(controller->initTime());
    motion.isInLiveResize = grid != nullptr && grid->isInLiveResize();
    motion.isEnabled = platform::DesktopAnimations::shared().areEnabled() &&
                       style()->styleHint(QStyle::SH_Widget_Animation_Duration) > 0;
    const auto duration = motion.duration();
    if (duration == duration.zero())
        return nullptr;
    auto animation = std::make_unique<QPropertyAnimation>(this, key);
    animation->setDuration(static_cast<int>(duration.count()));
    animation->setEasingCurve(QEasingCurve::OutCubic);
    return animation;
}

void MVCollectionItemBackgroundView::placeAt(const QRect& place) {
    resize(place.size());
    if (move_ != nullptr && move_->state() == QAbstractAnimation::Running &&
        move_->endValue().toPoint() == place.topLeft())
        return;
    move_.reset();
    if (pos() == place.topLeft())
        return;
    if (isVisible())
        move_ = animationForKey("pos");
    if (move_ == nullptr) {
        move(place.topLeft());
        return;
    }
    move_->setStartValue(pos());
    move_->setEndValue(place.topLeft());
    move_->start();
}
