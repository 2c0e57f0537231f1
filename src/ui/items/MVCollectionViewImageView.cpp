#include "ui/items/MVCollectionViewImageView.h"

#include "workspace/ForeignImages.h"

#include <QPainter>

void MVCollectionViewImageView::setIcon(const QIcon& icon) {
    icon_ = icon;
    update();
}

void MVCollectionViewImageView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const ForeignImages foreign;
    icon_.paint(&painter, rect());
}
