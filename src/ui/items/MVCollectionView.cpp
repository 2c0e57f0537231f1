#include "ui/items/MVCollectionView.h"

#include "ui/items/ItemLayout.h"
#include "ui/items/MVCollectionViewItem.h"
#include "ui/theme/LighterColor.h"
#include "ui/theme/MVOrangeBrownTheme.h"

#include <QLabel>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

constexpr std::chrono::milliseconds resizePause{300};
constexpr int hintMargin = 24;

} // namespace

int MVCollectionView::columnsFor(int width) noexcept {
    return std::max(1, width / ItemLayout::leastWidth);
}

MVCollectionView::MVCollectionView(QWidget* parent) : QWidget(parent), hint_(new QLabel(this)) {
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    hint_->setObjectName(QStringLiteral("hint"));
    hint_->setWordWrap(true);
    hint_->setTextFormat(Qt::PlainText);
    hint_->setAlignment(Qt::AlignCenter);
    hint_->hide();
    setAttribute(Qt::WA_OpaquePaintEvent);
    updateCollectionViewColors();
}

MVCollectionView::~MVCollectionView() = default;

MVCollectionView::Items MVCollectionView::takeItems() noexcept {
    return std::exchange(items_, {});
}

void MVCollectionView::setItems(Items items) {
    items_ = std::move(items);
    for (const auto& item : items_) {
        if (item->parentWidget() != this)
            item->setParent(this);
    }
    layOut();
    for (const auto& item : items_)
        item->show();
    updateGeometry();
    update();
}

bool MVCollectionView::isInLiveResize() const {
    return resized_ && platform::MonotonicClock::now() - *resized_ < resizePause;
}

int MVCollectionView::heightForWidth(int width) const {
    const auto columns = static_cast<std::size_t>(columnsFor(width));
    return static_cast<int>((items_.size() + columns - 1) / columns) * ItemLayout::height;
}

QSize MVCollectionView::sizeHint() const {
    return {ItemLayout::leastWidth, heightForWidth(width())};
}

/// Columns share the width so that no pixel is left over.
QRect MVCollectionView::placeOf(std::size_t index) const {
    const int columns = columnsFor(width());
    const int number = static_cast<int>(index);
    const int column = number % columns;
    const int left = width() * column / columns;
    const int right = width() * (column + 1) / columns;
    const QRect place(left, number / columns * ItemLayout::height, right - left,
                      ItemLayout::height);
    return layoutDirection() == Qt::RightToLeft
               ? place.translated(width() - right - left, 0)
               : place;
}

void MVCollectionView::setHint(const QString& text) {
    hint_->setText(text);
    hint_->setVisible(!text.isEmpty());
}

void MVCollectionView::layOut() {
    const int top = heightForWidth(width());
    hint_->setGeometry(QRect(0, top, width(), std::max(0, height() - top))
                           .adjusted(hintMargin, 0, -hintMargin, 0));
    for (std::size_t index = 0; index < items_.size(); ++index)
        items_[index]->placeAt(placeOf(index));
}

void MVCollectionView::resizeEvent(QResizeEvent* event) {
    if (event->size().width() != event->oldSize().width())
        resized_ = platform::MonotonicClock::now();
    layOut();
}

void MVCollectionView::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ActivationChange)
        updateCollectionViewColors();
    if (event->type() == QEvent::LayoutDirectionChange)
        layOut();
    QWidget::changeEvent(event);
}

void MVCollectionView::updateCollectionViewColors() {
    const MVBlackTheme& theme = MVOrangeBrownTheme::sharedTheme();
    const double amount = isActiveWindow() ? 0.0 : theme.windowNonKeyLightenBy();
    const QColor before[2] = {colors_[0], colors_[1]};
    colors_[0] = lighterBy(theme.collectionViewBackgroundColor1(), amount);
    QPalette palette = hint_->palette();
    palette.setColor(QPalette::WindowText, theme.displayNameActivityMutedColor());
    hint_->setPalette(palette);
    colors_[1] = lighterBy(theme.collectionViewBackgroundColor2(), amount);
    if (!std::ranges::equal(before, colors_))
        update();
}

void MVCollectionView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const MVBlackTheme& theme = MVOrangeBrownTheme::sharedTheme();
    const QRect damage = event->rect();
    const QPixmap pattern = theme.collectionViewBackgroundPattern(devicePixelRatioF());
    if (const auto color = theme.collectionViewBackgroundPatternColor())
        painter.fillRect(damage, *color);
    if (!pattern.isNull())
        painter.drawTiledPixmap(damage, pattern, damage.topLeft());
    for (std::size_t index = 0; index < items_.size(); ++index) {
        const QColor& color = colors_[index % 2];
        if (const QRect place = placeOf(index); color.alpha() > 0 && place.intersects(damage))
            painter.fillRect(place, color);
    }
}
