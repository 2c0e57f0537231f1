#include "ui/items/MVMuteImageView.h"

#include "framework/log/qnlog.h"
#include "ui/theme/MVOrangeBrownTheme.h"

#include <QMouseEvent>
#include <QPainter>
#include <QPixmapCache>

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

void MVMuteImageView::toggle() {
    if (app_ == nullptr)
        return;
    app_->setMuted(!app_->muted());
}

void MVMuteImageView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton)
        toggle();
    else
        event->ignore();
}

QSize MVMuteImageView::sizeHint() const {
    return {24, 24};
}

/// One for each look, shared by all items.
QPixmap MVMuteImageView::image() const {
    const bool muted = app_->muted();
    const bool active = app_->hasActivity();
    const qreal ratio = devicePixelRatioF();
    const QString key = QStringLiteral("MVMuteImageView/%1%2@%3").arg(muted).arg(active).arg(ratio);
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap))
        return pixmap;
    const MVBlackTheme& theme = MVOrangeBrownTheme::sharedTheme();
    QImage image =
        muted ? theme.muteOnImage(active, ratio) : theme.muteOffImage(active, ratio);
    if (const auto tint = theme.muteFilters(muted, active); tint && !image.isNull()) {
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_SourceAtop);
        painter.fillRect(QRectF(QPointF(), image.deviceIndependentSize()), *tint);
    }
    pixmap = QPixmap::fromImage(image);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

void MVMuteImageView::paintEvent(QPaintEvent* /*event*/) {
    if (app_ == nullptr)
        return;
    const QPixmap shown = image();
    QRectF place(QPointF(), shown.deviceIndependentSize());
    place.moveCenter(QRectF(rect()).center());
    QPainter painter(this);
    painter.drawPixmap(place.topLeft(), shown);
}
