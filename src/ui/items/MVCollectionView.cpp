#include "ui/items/MVCollectionView.h"

#include "look/theme/CurrentTheme.h"
#include "look/theme/LighterColor.h"
#include "platform/desktop/DesktopAnimations.h"
#include "platform/loop/RunLoop.h"
#include "ui/items/AccessibleItems.h"
#include "ui/items/ItemLayout.h"
#include "ui/items/MVCollectionViewItem.h"
#include "ui/items/MVMuteImageView.h"
#include "ui/items/MVVolumeSlider.h"

#include <QApplication>
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

MVCollectionView::MVCollectionView(QWidget* parent, const MVBlackTheme* theme)
    : QWidget(parent)
    , theme_(theme)
    , pacer_(*platform::RunLoop::current())
    , hint_(new QLabel(this)) {
    installAccessibleItems();
    platform::DesktopAnimations::shared(); // asks, long before something moves
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    hint_->setObjectName(QStringLiteral("hint"));
    hint_->setWordWrap(true);
    hint_->setTextFormat(Qt::PlainText);
    hint_->setAlignment(Qt::AlignCenter);
    hint_->hide();
    setAttribute(Qt::WA_OpaquePaintEvent);
    connect(qApp, &QApplication::focusChanged, this, &MVCollectionView::followFocus);
    updateCollectionViewColors();
}

MVCollectionView::~MVCollectionView() {
    disconnect(qApp, nullptr, this, nullptr); // an item that goes loses the focus
}

const MVBlackTheme& MVCollectionView::theme() const {
    return theme_ != nullptr ? *theme_ : CurrentTheme::theme();
}

MVCollectionView::Items MVCollectionView::takeItems() noexcept {
    showCurrent(nullptr);
    return std::exchange(items_, {});
}

void MVCollectionView::setItems(Items items) {
    items_ = std::move(items);
    for (const auto& item : items_) {
        if (item->parentWidget() != this)
            item->setParent(this);
        item->slider().setPacer(&pacer_);
    }
    layOut();
    for (const auto& item : items_)
        item->show();
    setOrderOfFocus();
    followFocus();
    updateGeometry();
    update();
}

/// From one item to the next, whenever each was made.
void MVCollectionView::setOrderOfFocus() {
    for (std::size_t index = 0; index < items_.size(); ++index) {
        MVCollectionViewItem& item = *items_[index];
        if (index > 0)
            setTabOrder(&items_[index - 1]->slider(), &item.muteView());
        setTabOrder(&item.muteView(), &item.slider());
    }
}

/// That of the window, which stays while another window has the keys.
void MVCollectionView::followFocus() {
    const QWidget* part = window()->focusWidget();
    while (part != nullptr && part->parentWidget() != this)
        part = part->parentWidget();
    // Not one that has been taken and not destroyed yet.
    const auto found = std::ranges::find(
        items_, part, [](const auto& item) -> const QWidget* { return item.get(); });
    showCurrent(part != nullptr && found != items_.end() ? found->get() : nullptr);
}

void MVCollectionView::showCurrent(MVCollectionViewItem* item) {
    if (item == current_)
        return;
    if (current_ != nullptr)
        current_->setCurrent(false);
    current_ = item;
    if (current_ != nullptr)
        current_->setCurrent(true);
}

void MVCollectionView::showUnderMouse(const QPoint& place) {
    for (const auto& item : items_)
        item->setUnderMouse(item->geometry().contains(place));
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
    return layoutDirection() == Qt::RightToLeft ? place.translated(width() - right - left, 0)
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

bool MVCollectionView::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate || event->type() == QEvent::WindowDeactivate) {
        updateCollectionViewColors();
        if (current_ != nullptr)
            current_->update(); // its frame is another then
    }
    return QWidget::event(event);
}

void MVCollectionView::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        background_ = {};
        updateCollectionViewColors();
        update();
    }
    if (event->type() == QEvent::LayoutDirectionChange)
        layOut();
    QWidget::changeEvent(event);
}

void MVCollectionView::updateCollectionViewColors() {
    const double amount = isActiveWindow() ? 0.0 : theme().windowNonKeyLightenBy();
    const QColor before[2] = {colors_[0], colors_[1]};
    colors_[0] = lighterBy(theme().collectionViewBackgroundColor1(), amount);
    colors_[1] = lighterBy(theme().collectionViewBackgroundColor2(), amount);
    QPalette palette = hint_->palette();
    palette.setColor(QPalette::WindowText, theme().displayNameActivityColor());
    hint_->setPalette(palette);
    if (!std::ranges::equal(before, colors_))
        update();
}

/// Several tiles of the pattern over its colour, so that painting needs fewer of them.
QPixmap MVCollectionView::background() const {
    constexpr int cells = 8;
    const qreal ratio = devicePixelRatioF();
    const QPixmap cell = theme().collectionViewBackgroundPattern(ratio);
    const auto color = theme().collectionViewBackgroundPatternColor();
    if (cell.isNull())
        return {};
    QPixmap background(cell.size() * cells);
    background.setDevicePixelRatio(ratio);
    background.fill(color.value_or(Qt::black));
    QPainter(&background)
        .drawTiledPixmap(QRectF(QPointF(), background.deviceIndependentSize()), cell);
    return background;
}

void MVCollectionView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    if (background_.isNull() || !qFuzzyCompare(background_.devicePixelRatio(), devicePixelRatioF()))
        background_ = background();
    for (const QRect& damage : event->region()) {
        if (!background_.isNull())
            painter.drawTiledPixmap(damage, background_, damage.topLeft());
        else
            painter.fillRect(damage,
                             theme().collectionViewBackgroundPatternColor().value_or(Qt::black));
        const int last = damage.bottom() / ItemLayout::height;
        for (int row = damage.top() / ItemLayout::height; row <= last; ++row) {
            const QColor& color = colors_[row % 2];
            if (color.alpha() > 0)
                painter.fillRect(QRect(0, row * ItemLayout::height, width(), ItemLayout::height)
                                     .intersected(damage),
                                 color);
        }
    }
}
