#include "ui/items/MVCollectionViewImageView.h"

#include "workspace/ImageWarningFilter.h"

#include <QPainter>

void MVCollectionViewImageView::setIcon(const QIcon& icon) {
    icon_ = icon;
    update();
}

void MVCollectionViewImageView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const ImageWarningFilter foreign;
    icon_.paint(&painter, rect());
}
