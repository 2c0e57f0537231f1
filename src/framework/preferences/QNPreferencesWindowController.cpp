#include "framework/preferences/QNPreferencesWindowController.h"

#include "framework/preferences/PreferencesWindow.h"
#include "framework/preferences/QNObjToolbarItem.h"
#include "framework/preferences/QNPreferencesItemViewController.h"
#include "framework/preferences/WindowPosition.h"
#include "look/window/WindowPlacement.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/desktop/DesktopAnimations.h"
#include "platform/text/Format.h"
#include "platform/window/WindowFront.h"
#include "platform/window/WindowPositioning.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

using Pane = std::shared_ptr<QNPreferencesItemViewController>;

namespace {

constexpr std::chrono::milliseconds resizingTime{200};
constexpr int labelFontSize = 14;

/// Those of all screens, the window's first.
template <typename Geometry>
QList<QRect> screensFor(const QWidget& window, const Geometry& geometry) {
    QList<QRect> all{geometry(*window.screen())};
    for (const QScreen* const screen : QGuiApplication::screens()) {
        if (screen != window.screen())
            all += geometry(*screen);
    }
    return all;
}

} // namespace

QNPreferencesWindowController::QNPreferencesWindowController(QString toolbarIdentifier,
                                                             unsigned options)
    : QNPreferencesWindowController(std::move(toolbarIdentifier), options,
                                    platform::UserDefaults::standard()) {}

QNPreferencesWindowController::QNPreferencesWindowController(QString toolbarIdentifier,
                                                             unsigned options,
                                                             platform::UserDefaults& defaults)
    : toolbarIdentifier_(std::move(toolbarIdentifier))
    , options_(options)
    , defaults_(defaults)
    , window_(std::make_unique<PreferencesWindow>()) {
    connect(window_.get(), &PreferencesWindow::moved, this,
            &QNPreferencesWindowController::windowDidMove);
    connect(window_.get(), &PreferencesWindow::willClose, this,
            &QNPreferencesWindowController::windowWillClose);
    resizing_.setDuration(static_cast<int>(resizingTime.count()));
    resizing_.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&resizing_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& size) { window_->setFixedSize(size.toSize()); });
    connect(&resizing_, &QVariantAnimation::finished, this,
            &QNPreferencesWindowController::limitSize);
}

QNPreferencesWindowController::~QNPreferencesWindowController() {
    window_->disconnect(this);
}

QWidget& QNPreferencesWindowController::window() const {
    return *window_;
}

void QNPreferencesWindowController::addController(const Pane& pane) {
    auto* const item = new QNObjToolbarItem(pane->identifier(), pane->label(), pane->icon());
    item->setRepresentedObject(pane);
    item->setEnabled(pane->validateToolbarItem());
    // Not when it is clicked only: assistive tools check it.
    connect(item, &QAbstractButton::toggled, this, [this, item](bool isChecked) {
        if (isChecked)
            itemAction(*item);
    });
    connect(item, &QNObjToolbarItem::neighbourWanted, this,
            [this, item](int offset) { selectNeighbour(*item, offset); });
    items_.emplace_back(item);
    window_->addItem(*item);
}

void QNPreferencesWindowController::removeController(const Pane& pane) {
    QNObjToolbarItem* const item = itemOf(pane.get());
    if (item == nullptr)
        return;
    std::erase(items_, item);
    const bool wasSelected = item == selected_;
    if (wasSelected) {
        selected_ = nullptr;
        window_->setView(nullptr);
    }
    if (pane->isViewLoaded())
        pane->view().setParent(nullptr); // it goes with the pane
    delete item;
    if (wasSelected && !items_.empty())
        itemAction(*items_.front());
}

void QNPreferencesWindowController::selectController(const Pane& pane) {
    if (QNObjToolbarItem* const item = itemOf(pane.get()))
        itemAction(*item);
}

QList<Pane> QNPreferencesWindowController::controllers() const {
    QList<Pane> panes;
    for (const auto& item : items_)
        panes += item->representedObject();
    return panes;
}

Pane QNPreferencesWindowController::selectedController() const {
    return selected_ != nullptr ? selected_->representedObject() : nullptr;
}

QNObjToolbarItem*
QNPreferencesWindowController::itemOf(const QNPreferencesItemViewController* pane) const {
    const auto found = std::ranges::find(
        items_, pane, [](const auto& item) { return item->representedObject().get(); });
    return found != items_.end() ? found->data() : nullptr;
}

QStringList QNPreferencesWindowController::identifiers() const {
    QStringList all;
    for (const auto& item : items_)
        all += item->itemIdentifier();
    return all;
}

QNObjToolbarItem*
QNPreferencesWindowController::itemForItemIdentifier(const QString& identifier) const {
    const auto found = std::ranges::find(items_, identifier,
                                         [](const auto& item) { return item->itemIdentifier(); });
    return found != items_.end() ? found->data() : nullptr;
}

int QNPreferencesWindowController::minimumViewWidth() const {
    QFont font = window_->font();
    font.setPixelSize(labelFontSize);
    const QFontMetricsF metrics(font);
    double width = 0;
    for (const auto& item : items_)
        width += std::max(metrics.horizontalAdvance(item->label()),
                          static_cast<double>(item->minimumItemWidth()));
    return static_cast<int>(std::ceil(width));
}

/// Checking the item unchecks the others.
void QNPreferencesWindowController::itemAction(QNObjToolbarItem& item) {
    if (selected_ != &item) {
        QNPreferencesItemViewController& pane = *item.representedObject();
        pane.willSelect();
        selected_ = &item;
        window_->setView(&pane.view());
        resizeToPane();
    }
    item.setChecked(true);
}

void QNPreferencesWindowController::selectNeighbour(const QNObjToolbarItem& item, int offset) {
    const auto place = std::ranges::find(items_, &item) - items_.begin() + offset;
    if (place < 0 || place >= std::ssize(items_))
        return;
    QNObjToolbarItem& neighbour = *items_[static_cast<std::size_t>(place)];
    if (!neighbour.isEnabled())
        return;
    itemAction(neighbour);
    neighbour.setFocus(Qt::TabFocusReason);
}

/// The upper left corner stays where it is, unless the window would end below the screen.
void QNPreferencesWindowController::resizeToPane() {
    const QSize pane = selectedController()->viewOriginalSize();
    const QSize wanted = window_->sizeForView(pane.expandedTo({minimumViewWidth(), 0}));
    resizing_.stop();
    if (window_->isVisible())
        makeRoomBelow(wanted.height());
    if (!window_->isVisible() || !platform::DesktopAnimations::shared().areEnabled()) {
        window_->setFixedSize(wanted);
        limitSize();
        return;
    }
    resizing_.setStartValue(window_->size());
    resizing_.setEndValue(wanted);
    resizing_.start();
}

void QNPreferencesWindowController::makeRoomBelow(int height) {
    const QRect screen = window_->screen()->availableGeometry();
    const QPoint place = window_->geometry().topLeft();
    const int highest = std::max(screen.top(), screen.bottom() + 1 - height);
    if (place.y() > highest && screen.contains(place) && platform::canPositionWindows())
        window_->move(place.x(), highest);
}

bool QNPreferencesWindowController::showsResizeIndicator() const {
    return (options_ & resizable) != 0 && selected_ != nullptr &&
           selected_->representedObject()->canResizeWindow();
}

QSize QNPreferencesWindowController::windowWillResize(const QSize& proposed) const {
    if (!showsResizeIndicator())
        return window_->size();
    const QWidget& view = selectedController()->view();
    const QSize least = view.minimumSizeHint().expandedTo(view.minimumSize());
    return proposed.expandedTo(window_->sizeForView(least.expandedTo({minimumViewWidth(), 0})));
}

/// The window system gets to know the limits, so that it does not even try.
void QNPreferencesWindowController::limitSize() {
    window_->setMinimumSize(windowWillResize({0, 0}));
    window_->setMaximumSize(windowWillResize({QWIDGETSIZE_MAX, QWIDGETSIZE_MAX}));
}

void QNPreferencesWindowController::showWindow() {
    for (const auto& item : items_)
        item->setEnabled(item->representedObject()->validateToolbarItem());
    if (selected_ == nullptr && !items_.empty())
        itemAction(*items_.front());
    if (!window_->isVisible()) {
        platform::moveToCenter(*window_, *window_->screen());
        restoreWindowPosition();
    }
    platform::bringToFront(*window_);
}

void QNPreferencesWindowController::windowWillClose() {
    for (const Pane& pane : controllers())
        pane->windowWillClose();
}

void QNPreferencesWindowController::windowDidMove() {
    if (window_->isVisible())
        saveWindowPosition();
}

QString QNPreferencesWindowController::windowPositionKey() const {
    return platform::formatted(QStringLiteral("QNPrefWindow-%@"), toolbarIdentifier_);
}

void QNPreferencesWindowController::saveWindowPosition() {
    if (platform::canPositionWindows())
        defaults_.set(windowPositionKey(),
                      WindowPosition::text(window_->geometry(), window_->screen()->geometry()));
}

void QNPreferencesWindowController::restoreWindowPosition() {
    const auto stored = WindowPosition::parsed(defaults_.text(windowPositionKey()));
    if (!stored || !platform::canPositionWindows())
        return;
    const auto screens = screensFor(*window_, [](const QScreen& each) { return each.geometry(); });
    const auto usable =
        screensFor(*window_, [](const QScreen& each) { return each.availableGeometry(); });
    const QRect frame(WindowPosition::topLeft(*stored, screens), window_->size());
    const int titleBar = static_cast<int>(window_->titleBarHeight());
    window_->move(WindowPlacement::movedOnScreen(frame, titleBar, usable).topLeft());
}
