#pragma once

#include "look/window/WindowDrag.h"
#include "platform/desktop/TitleBarSettings.h"

#include <QPointer>
#include <QWidget>

class MVCustomWindowBackgroundView;
class MVCustomWindowContentView;
class MVCustomWindowTitleView;
class QMenu;

/// A window that draws its own title bar and frame, which behave like the desktop's: the window
/// system moves and resizes it, and it follows the desktop's settings. Some desktops add their own
/// frame anyway. Main thread only.
class MVCustomWindow : public QWidget {
    Q_OBJECT

  public:
    /// Features of the title bar; can be combined. Instead of the title it may show the
    /// name of the program; the desktop and assistive tools have the title all the same.
    enum StyleMask : unsigned { closable = 2, miniaturizable = 4, namedByProgram = 8 };

    /// Takes the content over.
    explicit MVCustomWindow(QWidget* contentView, unsigned styleMask = closable | miniaturizable,
                            QWidget* parent = nullptr);
    ~MVCustomWindow() override;

    /// The height without the content, in pixels.
    double titleBarHeight() const;

    /// The size of the window around a content of that size, in pixels.
    [[nodiscard]] QSize sizeForContent(const QSize& content) const;

    QWidget& contentView() const;
    MVCustomWindowTitleView& titleView() const noexcept { return *titleView_; }

    /// The menu of the title bar's menu button; null for no such button. Not owned.
    void setMenu(QMenu* menu);

    /// Opens the menu for keyboard use.
    void openMenu();

    /// Toggles between the screen's size and the former size.
    void zoom();

  protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

    WindowDrag& drag() noexcept { return drag_; }

    /// Performs an action of the title bar.
    void act(platform::TitleBarSettings::Action action);

  private:
    void drawAnew();
    void followTitleBarSettings();
    void press(platform::TitleBarSettings::Button button);

    const unsigned styleMask_;
    WindowDrag drag_{*this};
    MVCustomWindowBackgroundView* const backgroundView_;
    MVCustomWindowTitleView* const titleView_;
    MVCustomWindowContentView* const contentView_;
    QPointer<QMenu> menu_;
};
