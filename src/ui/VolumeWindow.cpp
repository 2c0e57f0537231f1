#include "ui/VolumeWindow.h"

#include "look/theme/CurrentTheme.h"
#include "look/window/UndoNotice.h"
#include "look/window/WindowPlacement.h"
#include "model/AppVolumeController.h"
#include "model/MVCommAppValue.h"
#include "model/MVIgnoredApps.h"
#include "model/VolumeConversion.h"
#include "model/WindowSize.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/text/Format.h"
#include "platform/text/OneLineText.h"
#include "platform/text/Texts.h"
#include "platform/window/WindowPositioning.h"
#include "settings/PreferenceKeys.h"
#include "ui/KeptItems.h"
#include "ui/KeysSheet.h"
#include "ui/MoreContrast.h"
#include "ui/VolumeMenu.h"
#include "ui/input/VolumeScrollView.h"
#include "ui/items/ItemLayout.h"
#include "ui/items/MVCollectionView.h"
#include "ui/items/MVCollectionViewTextField.h"
#include "ui/items/MVMuteImageView.h"
#include "ui/items/MVVolumeSlider.h"
#include "ui/items/TNBeeper.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>
#include <utility>

using platform::formatted;

namespace {

constexpr int usualWidth = 560;
constexpr int usualRows = 6;
constexpr std::chrono::milliseconds restOfResizing{100};

/// The bar above the grid. It takes the space of one row.
QWidget* makeContent() {
    auto* const content = new QWidget;
    auto* const layout = new QVBoxLayout(content);
    layout->setContentsMargins({});
    layout->setSpacing(0);
    layout->addWidget(new ProblemBar(ItemLayout::height));
    layout->addWidget(new VolumeScrollView(new MVCollectionView), 1);
    return content;
}

} // namespace

MVCollectionViewItem::Dependencies
VolumeWindow::sharedDependencies(AppVolumeController& controller) {
    return {controller,
            [](const QString& name) { MVIgnoredApps::sharedInstance().addCustomIgnore(name); },
            [] {
                const auto& defaults = platform::UserDefaults::standard();
                return !defaults.boolean(PreferenceKeys::disableSoundEffects);
            },
            [](float volume) { TNBeeper::sharedBeeper().beepAtVolume(volume); },
            [](const QString& name) { MVIgnoredApps::sharedInstance().removeCustomIgnore(name); }};
}

VolumeWindow::VolumeWindow(const MVCollectionViewItem::Dependencies& dependencies)
    : MVCustomWindow(makeContent())
    , history_(undoActions(), [this] { updateMenu(); })
    , dependencies_(dependencies)
    , problemBar_(contentView().findChild<ProblemBar*>())
    , scrollView_(contentView().findChild<VolumeScrollView*>())
    , grid_(&scrollView_->grid())
    , menu_(new VolumeMenu(*this))
    , notice_(new UndoNotice(scrollView_)) {
    setWindowTitle(QCoreApplication::applicationName());
    makeMenu();
    connect(&visibility_, &platform::WindowVisibility::changed, this, &QWidget::setUpdatesEnabled);
    connect(notice_, &UndoNotice::undoWanted, this, [this] {
        notice_->hide();
        history_.undo();
    });
    connect(problemBar_, &ProblemBar::helpWanted, this, &VolumeWindow::helpWanted);
    connect(problemBar_, &ProblemBar::detailsWanted, this, &VolumeWindow::detailsWanted);
    keepToWholeRows();
    keepOnScreens();
    connect(&CurrentTheme::shared(), &CurrentTheme::changed, this, [this] {
        for (const auto& item : grid_->items())
            item->updateControls();
    });
    dependencies_.controller.setGestureObserver(
        {[this](const MVCommAppValue& app, int before, int after) {
             history_.volumeChanged(app.displayName(), before, after);
         },
         [this](const MVCommAppValue& app) { history_.volumeReleased(app.displayName()); },
         [this](const MVCommAppValue& app, bool muted) {
             history_.muteChanged(app.displayName(), muted);
         }});
    dependencies_.controller.setView(this);
    setFocus(); // no item is the current one before somebody chooses one
}

/// The window undoes ignoring, since the item no longer exists then.
MVCollectionViewItem::Dependencies VolumeWindow::itemDependencies() {
    MVCollectionViewItem::Dependencies dependencies = dependencies_;
    dependencies.ignore = [this](const QString& process) { ignore(process); };
    return dependencies;
}

void VolumeWindow::ignore(const QString& process) {
    dependencies_.ignore(process);
    if (!dependencies_.stopIgnoring)
        return;
    history_.ignoredChanged(process, true);
    notice_->tell(
        formatted(Texts::tr("\"%@\" is ignored from now on."),
                  platform::oneLineText(MVCommAppValue::displayNameForProcessName(process))));
}

void VolumeWindow::tell(const QString& text) {
    notice_->tell(text, UndoNotice::Undo::impossible);
}

/// The controls themselves are moved, so that everything happens as if by the mouse. What has no
/// item at the moment, or cannot be controlled, stays as it is.
UndoHistory::Actions VolumeWindow::undoActions() {
    return {[this](const QString& program, int percent) {
                const MVCollectionViewItem* const item = itemOf(program);
                if (item != nullptr && item->slider().isEnabled()) {
                    item->slider().setSliderValue_(VolumeConversion::fractionForPercent(percent),
                                                   false);
                    item->slider().update();
                }
            },
            [this](const QString& program, bool muted) {
                const MVCollectionViewItem* const item = itemOf(program);
                if (item != nullptr && item->representedObject()->muted() != muted)
                    item->muteView().toggle();
            },
            [this](const QString& process, bool isIgnored) {
                notice_->hide();
                if (isIgnored)
                    dependencies_.ignore(process);
                else
                    dependencies_.stopIgnoring(process);
            }};
}

MVCollectionViewItem* VolumeWindow::itemOf(const QString& program) const {
    const auto& items = grid_->items();
    const auto found =
        std::ranges::find(items, program, [](const auto& item) { return item->displayName(); });
    return found != items.end() ? found->get() : nullptr;
}

void VolumeWindow::makeMenu() {
    setMenu(menu_);
    connect(menu_, &VolumeMenu::closeWanted, this, &QWidget::close);
    connect(menu_, &VolumeMenu::undoWanted, this, [this] { history_.undo(); });
    connect(menu_, &VolumeMenu::redoWanted, this, [this] { history_.redo(); });
    connect(menu_, &VolumeMenu::minimizeWanted, this, &QWidget::showMinimized);
    connect(menu_, &VolumeMenu::zoomWanted, this, &VolumeWindow::zoomToPrograms);
    connect(menu_, &VolumeMenu::keysWanted, this, &VolumeWindow::showKeys);
    connect(menu_, &VolumeMenu::openWanted, this, &MVCustomWindow::openMenu);
    updateMenu();
}

/// There is one at most.
void VolumeWindow::showKeys() {
    auto* sheet = findChild<KeysSheet*>();
    if (sheet == nullptr)
        sheet = new KeysSheet(*this, menu_->keys());
    sheet->open();
}

void VolumeWindow::updateMenu() {
    menu_->showHistory(history_);
}

/// Initially centred. Window managers that support size increments use them during a resize; for
/// others the size is corrected afterwards.
void VolumeWindow::keepToWholeRows() {
    const int titleBar = static_cast<int>(titleBarHeight());
    const QSize usualSize(usualWidth, usualRows * ItemLayout::height + titleBar);
    setGeometry(QStyle::alignedRect(Qt::LeftToRight, Qt::AlignCenter, usualSize,
                                    QWidget::screen()->availableGeometry()));
    setBaseSize(0, titleBar);
    setSizeIncrement(1, ItemLayout::height);
    endOfResizing_.setSingleShot(true);
    endOfResizing_.setInterval(restOfResizing);
    connect(&endOfResizing_, &QTimer::timeout, this, &VolumeWindow::snap);
    connect(&drag(), &WindowDrag::ended, this, [this] {
        insistedSize_ = {};
        snap();
    });
}

/// A screen that goes, or becomes smaller, may take the window with it.
void VolumeWindow::keepOnScreens() {
    const auto follow = [this](QScreen* screen) {
        connect(screen, &QScreen::availableGeometryChanged, this, [this] { setFrame(frame()); });
    };
    for (QScreen* const screen : QGuiApplication::screens())
        follow(screen);
    connect(qGuiApp, &QGuiApplication::screenAdded, this, follow);
    connect(qGuiApp, &QGuiApplication::screenRemoved, this, [this] { setFrame(frame()); });
}

VolumeWindow::~VolumeWindow() {
    dependencies_.controller.setGestureObserver({});
    dependencies_.controller.setView(nullptr);
}

void VolumeWindow::appsDidChange(const QList<MVCommAppValue*>& apps) {
    const auto focused = scrollView_->keyboard().currentIndex();
    MVCollectionView::Items before = grid_->takeItems();
    KeptItems::ItemsOfRecords kept = KeptItems::take(before);
    MVCollectionView::Items items;
    items.reserve(static_cast<std::size_t>(apps.size()));
    for (MVCommAppValue* const app : apps) {
        std::unique_ptr<MVCollectionViewItem>& item = kept[app];
        if (item == nullptr)
            item = std::make_unique<MVCollectionViewItem>(itemDependencies(), *app);
        else
            item->updateControls();
        items.push_back(std::move(item));
    }
    grid_->setItems(std::move(items));
    KeptItems::destroy(std::move(before));
    scrollView_->keyboard().restoreFocus(focused);
    updateHint();
}

/// The sound effects' item is there as soon as the plug-in is, so alone it means silence. A problem
/// explains an empty grid too.
void VolumeWindow::updateHint() {
    const auto& items = grid_->items();
    const bool isAlone = items.size() == 1 && items[0]->representedObject()->isBeeps();
    if (!problemBar_->isHidden() || (!items.empty() && !isAlone))
        grid_->setHint({});
    else if (isAlone)
        grid_->setHint(
            Texts::tr("Nothing else makes sound yet.\nA program appears here when it plays."));
    else
        grid_->setHint(Texts::tr("A program appears here when it plays."));
}

void VolumeWindow::handleActivity(qsizetype index, qint64 level100, float level) {
    grid_->items()[static_cast<std::size_t>(index)]->handleActivity(level100, level);
}

void VolumeWindow::itemDidChange(qsizetype index) {
    grid_->items()[static_cast<std::size_t>(index)]->updateControls();
}

void VolumeWindow::showProblem(const ProblemBar::Content& content) {
    problemBar_->setContent(content);
    updateHint();
}

void VolumeWindow::resizeEvent(QResizeEvent* event) {
    MVCustomWindow::resizeEvent(event);
    notice_->place();
    const QSize corrected = dependencies_.controller.windowWillResize(insistedSize_).toSize();
    if (size() != insistedSize_ && size() != corrected)
        insistedSize_ = {}; // it has been resized since
    endOfResizing_.start();
}

/// Keys that no part of the grid has had, as long as nothing in it has the focus.
void VolumeWindow::keyPressEvent(QKeyEvent* event) {
    scrollView_->keyPressEvent(event);
}

void VolumeWindow::changeEvent(QEvent* event) {
    if (event->type() == QEvent::WindowStateChange)
        endOfResizing_.start();
    MVCustomWindow::changeEvent(event);
}

/// Not during a drag. A compositor may repeat the final size of a drag after the window has been
/// corrected, so one size is corrected several times; but not for ever, since a window manager may
/// insist on it.
void VolumeWindow::snap() {
    constexpr int mostCorrections = 3;
    const QSize wanted = dependencies_.controller.windowWillResize(size()).toSize();
    if (drag().isUnderWay() || wanted == size() || isMaximized() || isFullScreen())
        return;
    if (size() != insistedSize_)
        corrections_ = 0;
    insistedSize_ = size();
    if (corrections_++ < mostCorrections)
        resize(wanted);
}

QRect VolumeWindow::frame() const {
    const QRect frame = isMaximized() || isFullScreen() ? normalGeometry() : geometry();
    return platform::canPositionWindows() ? frame : QRect(keptPlace_, frame.size());
}

double VolumeWindow::itemHeight() const {
    return ItemLayout::height;
}

double VolumeWindow::titleBarHeight() const {
    return MVCustomWindow::titleBarHeight();
}

void VolumeWindow::setSizeLimits(const QSizeF& minimum, const QSizeF& maximum) {
    constexpr double largest = QWIDGETSIZE_MAX;
    setMinimumSize(minimum.toSize());
    setMaximumSize(maximum.boundedTo({largest, largest}).toSize());
}

void VolumeWindow::setFrame(const QRect& frame) {
    keptPlace_ = frame.topLeft();
    if (!platform::canPositionWindows()) {
        resize(frame.size());
        return;
    }
    QList<QRect> places;
    for (const QScreen* const screen : QGuiApplication::screens())
        places += screen->availableGeometry();
    const QRect place =
        WindowPlacement::movedOnScreen(frame, static_cast<int>(titleBarHeight()), places);
    if (place != geometry() && !isMaximized() && !isFullScreen())
        setGeometry(place);
}

bool VolumeWindow::fillsScreen() const {
    return isMaximized();
}

void VolumeWindow::setFillsScreen() {
    setWindowState(windowState() | Qt::WindowMaximized);
}

/// The bar above the grid takes a row.
QSize VolumeWindow::sizeForAll() const {
    const int columns = MVCollectionView::columnsFor(contentView().width());
    const auto programs = static_cast<int>(grid_->items().size());
    const int rows = (programs + columns - 1) / columns + (problemBar_->isHidden() ? 0 : 1);
    const QSizeF room(width(), screen()->availableGeometry().height());
    const QSize size =
        WindowSize::showingItems(rows, room, {itemHeight(), titleBarHeight()}).toSize();
    return size.expandedTo(minimumSize()).boundedTo(maximumSize());
}

void VolumeWindow::zoomToPrograms() {
    if (isMaximized() || isFullScreen()) {
        showNormal();
        return;
    }
    const QSize fitting = sizeForAll();
    const QSize before = std::exchange(sizeBeforeZoom_, size());
    if (size() != fitting)
        resize(fitting);
    else if (before.isValid())
        resize(before);
    setFrame(frame()); // on the screen
}

void VolumeWindow::followContrast(platform::UserDefaults& defaults) {
    contrast_ = std::make_unique<MoreContrast>(defaults, *menu_);
}
