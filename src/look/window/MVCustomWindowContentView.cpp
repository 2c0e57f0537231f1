#include "look/window/MVCustomWindowContentView.h"

MVCustomWindowContentView::MVCustomWindowContentView(QWidget* content, QWidget* parent)
    : QWidget(parent), content_(content) {
    content->setParent(this);
}

void MVCustomWindowContentView::resizeEvent(QResizeEvent* /*event*/) {
    content_->setGeometry(rect());
}
