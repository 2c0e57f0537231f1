#include "ui/VolumeWindow.h"

#include "comm/MVCommAppValue.h"
#include "platform/values/UserDefaults.h"
#include "prefs/MVIgnoredApps.h"
#include "prefs/PreferenceKeys.h"
#include "ui/AppVolumeController.h"
#include "ui/WindowSize.h"
#include "ui/items/ItemLayout.h"
#include "ui/items/MVCollectionView.h"
#include "ui/items/TNBeeper.h"

#include <QGuiApplication>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

constexpr QSize usualSize(560, 6 * ItemLayout::height);
constexpr std::chrono::milliseconds restOfResizing{100};

/// Takes the item of the record out of `items`; null when it has none.
std::unique_ptr<MVCollectionViewItem> takeItem(MVCollectionView::Items& items,
                                               const MVCommAppValue* app) {
    const auto found = std::ranges::find_if(items, [app](const auto& item) {
        return item != nullptr && item->representedObject() == app;
    });
    return found != items.end() ? std::move(*found) : nullptr;
}

} // namespace

MVCollectionViewItem::Surroundings
VolumeWindow::sharedSurroundings(AppVolumeController& controller) {
    return {controller,
            [](const QString& name) { MVIgnoredApps::sharedInstance().addCustomIgnore(name); },
            [] {
                const auto& defaults = platform::UserDefaults::standard();
                return !defaults.boolean(PreferenceKeys::disableSoundEffects);
            },
            [](float volume) { TNBeeper::sharedBeeper().beepAtVolume(volume); }};
}

VolumeWindow::VolumeWindow(const MVCollectionViewItem::Surroundings& surroundings)
    : surroundings_(surroundings), scrollArea_(new QScrollArea), grid_(new MVCollectionView) {
    setWindowTitle(tr("Tonvale"));
    scrollArea_->setFrameShape(QFrame::NoFrame);
    scrollArea_->setWidgetResizable(true);
    scrollArea_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrollArea_->setWidget(grid_);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(scrollArea_);
    connect(&sight_, &platform::WindowSight::changed, this, &QWidget::setUpdatesEnabled);
    keepToWholeRows();
    surroundings_.controller.setView(this);
}

/// In the middle at first. Window managers that know of steps keep to them while a person pulls,
/// the others are corrected afterwards.
void VolumeWindow::keepToWholeRows() {
    const QSize size = WindowSize::snapped(usualSize, {itemHeight(), titleBarHeight()}).toSize();
    setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, size,
                                    QWidget::screen()->availableGeometry()));
    setBaseSize(0, static_cast<int>(titleBarHeight()));
    setSizeIncrement(1, ItemLayout::height);
    endOfResizing_.setSingleShot(true);
    endOfResizing_.setInterval(restOfResizing);
    connect(&endOfResizing_, &QTimer::timeout, this, &VolumeWindow::snap);
}

VolumeWindow::~VolumeWindow() {
    surroundings_.controller.setView(nullptr);
}

void VolumeWindow::appsDidChange(const QList<MVCommAppValue*>& apps) {
    MVCollectionView::Items before = grid_->takeItems();
    MVCollectionView::Items items;
    for (MVCommAppValue* const app : apps) {
        auto item = takeItem(before, app);
        if (item == nullptr)
            item = std::make_unique<MVCollectionViewItem>(surroundings_, *app);
        else
            item->updateControls();
        items.push_back(std::move(item));
    }
    grid_->setItems(std::move(items));
    updateHint();
}

/// The sound effects' item is there as soon as the plug-in is, so alone it means silence.
void VolumeWindow::updateHint() {
    const auto& items = grid_->items();
    const bool isAlone = items.size() == 1 && items[0]->representedObject()->isBeeps();
    if (!items.empty() && !isAlone)
        grid_->setHint({});
    else if (!problem_.isEmpty())
        grid_->setHint(problem_);
    else if (isAlone)
        grid_->setHint(tr("Nothing else makes sound yet.\nA program appears here when it plays."));
    else
        grid_->setHint(tr("The audio plug-in is not connected.\n\nA program appears here as soon "
                          "as it plays sound. If one is playing now, start the plug-in: it is the "
                          "program “Tonvale” in “Tonvale.plugin”."));
}

void VolumeWindow::handleActivity(qsizetype index, qint64 level100, float level) {
    grid_->items()[static_cast<std::size_t>(index)]->handleActivity(level100, level);
}

void VolumeWindow::itemDidChange(qsizetype index) {
    grid_->items()[static_cast<std::size_t>(index)]->updateControls();
}

void VolumeWindow::showProblem(const QString& text) {
    problem_ = text;
    updateHint();
}

void VolumeWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    endOfResizing_.start();
}

/// Once for a size, since a window manager may insist on it.
void VolumeWindow::snap() {
    const QSize wanted = surroundings_.controller.windowWillResize(size()).toSize();
    if (wanted == size() || size() == insistedSize_ || isMaximized() || isFullScreen())
        return;
    insistedSize_ = size();
    resize(wanted);
}

QRect VolumeWindow::frame() const {
    return isMaximized() || isFullScreen() ? normalGeometry() : geometry();
}

double VolumeWindow::itemHeight() const {
    return ItemLayout::height;
}

double VolumeWindow::titleBarHeight() const {
    return 0;
}

void VolumeWindow::setSizeLimits(const QSizeF& minimum, const QSizeF& maximum) {
    constexpr double largest = QWIDGETSIZE_MAX;
    setMinimumSize(minimum.toSize());
    setMaximumSize(maximum.boundedTo({largest, largest}).toSize());
}

void VolumeWindow::setFrame(const QRect& frame) {
    const auto screens = QGuiApplication::screens();
    const bool isSeen = std::ranges::any_of(screens, [&](const QScreen* screen) {
        return screen->availableGeometry().intersects(frame);
    });
    if (isSeen)
        setGeometry(frame);
    else
        resize(frame.size());
}
