#include "ui/preferences/IconView.h"

#include <QPainter>

#include <utility>

IconView::IconView(QIcon icon, const QSize& size) : icon_(std::move(icon)) {
    setFixedSize(size);
}

void IconView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    icon_.paint(&painter, rect(), Qt::AlignCenter, isEnabled() ? QIcon::Normal : QIcon::Disabled);
}
