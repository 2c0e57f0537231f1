#include "ui/items/MVCollectionViewTextField.h"

#include "platform/text/OneLineText.h"
#include "ui/items/ItemLayout.h"

#include <QFontInfo>
#include <QPainter>
#include <QStyle>

MVCollectionViewTextField::MVCollectionViewTextField(QWidget* parent) : QWidget(parent) {
    constexpr double larger = 1.12;
    QFont named = font();
    if (named.pointSizeF() > 0)
        named.setPointSizeF(named.pointSizeF() * larger);
    named.setWeight(QFont::Medium);
    if (const int height = QFontMetrics(named).height(); height > ItemLayout::nameHeight)
        named.setPixelSize(QFontInfo(named).pixelSize() * ItemLayout::nameHeight / height);
    setFont(named);
}

void MVCollectionViewTextField::setText(const QString& text) {
    if (text_ == text)
        return;
    text_ = text;
    update();
}

void MVCollectionViewTextField::setTextColor(const QColor& color) {
    if (color_ == color)
        return;
    color_ = color;
    update();
}

void MVCollectionViewTextField::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(color_);
    painter.setLayoutDirection(platform::textDirection(text_));
    const QString shown = fontMetrics().elidedText(text_, Qt::ElideRight, width());
    const QRect place =
        QStyle::alignedRect(layoutDirection(), Qt::AlignLeft,
                            {fontMetrics().horizontalAdvance(shown), height()}, rect());
    painter.drawText(place,
                     static_cast<int>(Qt::AlignLeft | Qt::AlignAbsolute | Qt::AlignVCenter |
                                      Qt::TextSingleLine | Qt::TextDontClip),
                     shown);
}
