#include "look/window/MVCustomWindow.h"

#include "look/theme/CurrentTheme.h"
#include "look/theme/HighContrastStyle.h"
#include "look/window/AccessibleWindow.h"
#include "look/window/MVCustomWindowBackgroundView.h"
#include "look/window/MVCustomWindowContentView.h"
#include "look/window/MVCustomWindowTitleView.h"
#include "look/window/WindowButton.h"
#include "platform/desktop/DesktopSettings.h"
#include "platform/window/X11Settings.h"

#include <QCoreApplication>
#include <QCursor>
#include <QEvent>
#include <QKeyEvent>
#include <QMenu>

#include <algorithm>

using platform::TitleBarSettings;

namespace {

constexpr int border = MVCustomWindowBackgroundView::border;
constexpr int titleHeight = MVCustomWindowTitleView::usualHeight;

/// As the key does it.
void chooseFirst(QMenu& menu) {
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
    QCoreApplication::sendEvent(&menu, &press);
}

} // namespace

MVCustomWindow::MVCustomWindow(QWidget* contentView, unsigned styleMask, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint)
    , styleMask_(styleMask)
    , backgroundView_(new MVCustomWindowBackgroundView(titleHeight, this))
    , titleView_(new MVCustomWindowTitleView(backgroundView_))
    , contentView_(new MVCustomWindowContentView(contentView, backgroundView_)) {
    installAccessibleWindow();
    titleView_->setNamesProgram((styleMask & namedByProgram) != 0);
    HighContrastStyle::install();
    connect(titleView_, &MVCustomWindowTitleView::dragged, &drag_, &WindowDrag::startMove);
    connect(titleView_, &MVCustomWindowTitleView::acted, this, &MVCustomWindow::act);
    connect(titleView_, &MVCustomWindowTitleView::buttonPressed, this, &MVCustomWindow::press);
    connect(&platform::DesktopSettings::shared(), &platform::DesktopSettings::changed, this,
            &MVCustomWindow::followTitleBarSettings);
    connect(&platform::X11Settings::shared(), &platform::X11Settings::changed, this,
            &MVCustomWindow::followTitleBarSettings);
    connect(&CurrentTheme::shared(), &CurrentTheme::changed, this, &MVCustomWindow::drawAnew);
    followTitleBarSettings();
}

/// Widgets that cache colours or pixmaps of the theme handle it like a palette change.
void MVCustomWindow::drawAnew() {
    for (QWidget* const part : findChildren<QWidget*>()) {
        QEvent event(QEvent::PaletteChange);
        QCoreApplication::sendEvent(part, &event);
        part->update();
    }
    update();
}

/// The contents do not get these events.
bool MVCustomWindow::event(QEvent* event) {
    if (event->type() == QEvent::ActivationChange || event->type() == QEvent::WindowTitleChange)
        backgroundView_->update(); // with all that it holds
    if (event->type() == QEvent::ApplicationPaletteChange)
        CurrentTheme::shared().review();
    return QWidget::event(event);
}

MVCustomWindow::~MVCustomWindow() = default;

double MVCustomWindow::titleBarHeight() const {
    return titleHeight + border;
}

QSize MVCustomWindow::sizeForContent(const QSize& content) const {
    return content + QSize(2 * border, titleHeight + border);
}

QWidget& MVCustomWindow::contentView() const {
    return contentView_->content();
}

void MVCustomWindow::resizeEvent(QResizeEvent* /*event*/) {
    backgroundView_->setGeometry(rect());
    titleView_->setGeometry(border, 0, width() - 2 * border, titleHeight);
    contentView_->setGeometry(rect().adjusted(border, titleHeight, -border, -border));
}

void MVCustomWindow::followTitleBarSettings() {
    TitleBarSettings titleBar = TitleBarSettings::of(platform::DesktopSettings::shared(),
                                                     platform::X11Settings::shared().texts());
    const auto drop = [&](TitleBarSettings::Button button, bool isThere) {
        if (isThere)
            return;
        std::erase(titleBar.left, button);
        std::erase(titleBar.right, button);
    };
    drop(TitleBarSettings::Button::close, (styleMask_ & closable) != 0);
    drop(TitleBarSettings::Button::minimize, (styleMask_ & miniaturizable) != 0);
    drop(TitleBarSettings::Button::menu, menu_ != nullptr);
    titleView_->setTitleBar(titleBar);
}

void MVCustomWindow::setMenu(QMenu* menu) {
    menu_ = menu;
    followTitleBarSettings();
}

void MVCustomWindow::openMenu() {
    if (menu_ == nullptr || menu_->isEmpty())
        return;
    const WindowButton* const button = titleView_->button(TitleBarSettings::Button::menu);
    const bool isLeftwards = layoutDirection() == Qt::RightToLeft;
    const QPoint corner = isLeftwards
                              ? button->rect().bottomRight() - QPoint(menu_->sizeHint().width(), 0)
                              : button->rect().bottomLeft();
    menu_->popup(button->mapToGlobal(corner));
    chooseFirst(*menu_);
}

void MVCustomWindow::zoom() {
    if (isMaximized())
        showNormal();
    else
        showMaximized();
}

void MVCustomWindow::act(TitleBarSettings::Action action) {
    switch (action) {
    case TitleBarSettings::Action::none:
        break;
    case TitleBarSettings::Action::maximize:
        if (minimumSize() != maximumSize())
            zoom();
        break;
    case TitleBarSettings::Action::minimize:
        if ((styleMask_ & miniaturizable) != 0)
            showMinimized();
        break;
    case TitleBarSettings::Action::lower:
        lower();
        break;
    case TitleBarSettings::Action::menu:
        if (menu_ != nullptr)
            menu_->popup(QCursor::pos());
        break;
    }
}

void MVCustomWindow::press(TitleBarSettings::Button button) {
    switch (button) {
    case TitleBarSettings::Button::close:
        close();
        break;
    case TitleBarSettings::Button::minimize:
        showMinimized();
        break;
    case TitleBarSettings::Button::menu:
        openMenu();
        break;
    }
}
