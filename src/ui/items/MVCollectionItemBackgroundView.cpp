#include "ui/items/MVCollectionItemBackgroundView.h"

#include "look/theme/CurrentTheme.h"
#include "model/AppVolumeController.h"
#include "platform/base/WallClock.h"
#include "platform/desktop/DesktopAnimations.h"
#include "ui/items/ItemAnimation.h"
#include "ui/items/MVCollectionView.h"

#include <QPaintEvent>
#include <QPainter>
#include <QPropertyAnimation>
#include <QStyle>

#include <chrono>
#include <utility>

namespace {

constexpr double radius = 8;
constexpr int aroundFrame = 3; // of the item

} // namespace

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

void MVCollectionItemBackgroundView::setLight(bool& light, bool isOn) {
    if (std::exchange(light, isOn) == isOn)
        return;
    update();
    lightChanged(isCurrent_ || isUnderMouse_);
}

void MVCollectionItemBackgroundView::setCurrent(bool isCurrent) {
    setLight(isCurrent_, isCurrent);
}

void MVCollectionItemBackgroundView::setUnderMouse(bool isUnderMouse) {
    setLight(isUnderMouse_, isUnderMouse);
}

void MVCollectionItemBackgroundView::setPressed(bool isPressed) {
    setLight(isPressed_, isPressed);
}

void MVCollectionItemBackgroundView::enterEvent(QEnterEvent* /*event*/) {
    setUnderMouse(true);
}

void MVCollectionItemBackgroundView::leaveEvent(QEvent* /*event*/) {
    setUnderMouse(false);
}

/// A level that moves redraws a piece inside the frame only.
void MVCollectionItemBackgroundView::paintEvent(QPaintEvent* event) {
    if (!isCurrent_ && !isUnderMouse_)
        return;
    const MVBlackTheme& theme = CurrentTheme::theme();
    QPainter painter(this);
    QColor light = theme.rowLightColor();
    const float strength =
        (isUnderMouse_ ? 1.0F : 0.0F) + (isCurrent_ ? 1.0F : 0.0F) + (isPressed_ ? 0.6F : 0.0F);
    light.setAlphaF(light.alphaF() * strength);
    const QRect frame =
        rect().adjusted(aroundFrame, aroundFrame - 1, -aroundFrame, 1 - aroundFrame);
    const int corner = static_cast<int>(radius);
    if (frame.adjusted(1, corner, -1, -corner).contains(event->rect())) {
        painter.fillRect(event->rect(), light);
        return;
    }
    const bool isFocus = isCurrent_ && isActiveWindow();
    const double width = theme.isHighContrast() && isCurrent_ ? 2 : 1;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(light);
    painter.setPen(QPen(isFocus ? theme.displayNameActivityColor() : theme.rowFrameColor(), width));
    const double inside = width / 2;
    painter.drawRoundedRect(QRectF(frame).adjusted(inside, inside, -inside, -inside), radius,
                            radius);
}
