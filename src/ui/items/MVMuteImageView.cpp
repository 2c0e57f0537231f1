#include "ui/items/MVMuteImageView.h"

#include "comm/MVCommLogText.h"
#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "look/theme/CurrentTheme.h"
#include "ui/items/PixmapCache.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <utility>

namespace {

constexpr QSize usualSize(24, 24);
constexpr double paleness = 0.4; // as of a slider that cannot be moved

struct Look {
    bool isMuted;
    bool isActive;
    qreal ratio;
    unsigned theme = CurrentTheme::generation();
    bool operator==(const Look&) const = default;
};

QImage imageOf(const Look& look) {
    const MVBlackTheme& theme = CurrentTheme::theme();
    QImage image = look.isMuted ? theme.muteOnImage(look.isActive, look.ratio)
                                : theme.muteOffImage(look.isActive, look.ratio);
    const auto tint = theme.muteFilters(look.isMuted, look.isActive);
    if (tint && !image.isNull()) {
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
        painter.fillRect(QRectF(QPointF(), image.deviceIndependentSize()), *tint);
    }
    return image;
}

/// In the middle of a button of the usual size; shared by all items.
const QPixmap& pictureOf(const Look& look) {
    static auto* const kept = new PixmapCache<Look>;
    return kept->get(look, usualSize, look.ratio, [&look](QPainter& picture) {
        const QImage image = imageOf(look);
        QRectF place(QPointF(), image.deviceIndependentSize());
        place.moveCenter(QRectF(QPointF(), QSizeF(usualSize)).center());
        picture.drawImage(place.topLeft(), image);
    });
}

} // namespace

MVMuteImageView::MVMuteImageView(QWidget* parent) : ItemControl(parent) {
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
}

void MVMuteImageView::setApp(MVCommAppValue* app) {
    if (app_ != nullptr)
        app_->disconnect(this);
    app_ = app;
    if (app != nullptr) {
        connect(app, &MVCommAppValue::mutedChanged, this, [this] { update(); });
        connect(app, &MVCommAppValue::hasActivityChanged, this, [this] { update(); });
    }
    update();
}

void MVMuteImageView::setControllable(bool controllable) {
    if (std::exchange(isControllable_, controllable) == controllable)
        return;
    update();
    QAccessible::State changed;
    changed.disabled = true;
    announce(changed);
}

/// Announces changes by the user only to assistive tools.
void MVMuteImageView::announce(const QAccessible::State& changed) {
    if (!QAccessible::isActive())
        return;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

void MVMuteImageView::toggle() {
    if (!isOperable())
        return;
    const bool muted = !app_->muted();
    const QString name = app_->displayName(); // an observer may make the record go
    const QPointer<MVMuteImageView> self(this);
    app_->setMuted(muted);
    QAccessible::State changed;
    changed.checked = true;
    if (self != nullptr)
        announce(changed);
    QNLog(qnlog_user, "'%@' %@", MVCommLogText(name), muted ? "muted" : "unmuted");
}

void MVMuteImageView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    isPressed_ = true;
    update();
    toggle(); // the record may go, and this with it
}

void MVMuteImageView::mouseReleaseEvent(QMouseEvent* /*event*/) {
    isPressed_ = false;
    update();
}

void MVMuteImageView::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Select)
        event->ignore();
    else if (!event->isAutoRepeat())
        toggle();
}

QSize MVMuteImageView::sizeHint() const {
    return usualSize;
}

void MVMuteImageView::paintEvent(QPaintEvent* /*event*/) {
    if (app_ == nullptr)
        return;
    QPainter painter(this);
    constexpr double radius = 4;
    QRectF place{QPointF(), QSizeF(usualSize)};
    place.moveCenter(QRectF(rect()).center());
    if (isOperable() && (isPressed_ || underMouse())) {
        QColor light = CurrentTheme::theme().windowTitleBarTextColor();
        light.setAlphaF(isPressed_ ? 0.28F : 0.14F);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(light);
        painter.drawRoundedRect(place, radius, radius);
    }
    painter.setOpacity(isOperable() ? 1 : paleness);
    painter.drawPixmap(place.topLeft(),
                       pictureOf({app_->muted(), app_->hasActivity(), devicePixelRatioF()}));
    painter.setOpacity(1);
    if (!hasKeyFocus())
        return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(focusPen());
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), radius, radius);
}
