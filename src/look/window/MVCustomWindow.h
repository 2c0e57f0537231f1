#pragma once

#include "look/window/WindowDrag.h"
#include "platform/desktop/TitleBarSettings.h"

#include <QPointer>
#include <QWidget>

class MVCustomWindowBackgroundView;
class MVCustomWindowContentView;
class MVCustomWindowTitleView;
class QMenu;

/// A window that draws its own title bar and frame, and behaves there as those of the desktop do:
/// it is moved and resized by the window system, and follows the desktop's settings. Desktops that
/// insist on a frame of theirs put it around. Main thread only.
class MVCustomWindow : public QWidget {
    Q_OBJECT

  public:
    /// What its title bar offers; to be combined.
    enum StyleMask : unsigned { closable = 2, miniaturizable = 4 };

    /// Takes the content over.
    explicit MVCustomWindow(QWidget* contentView, unsigned styleMask = closable | miniaturizable,
                            QWidget* parent = nullptr);
    ~MVCustomWindow() override;

    /// Pixels: what the window takes of its height besides the content.
    double titleBarHeight() const;

    QWidget& contentView() const;
    MVCustomWindowTitleView& titleView() const noexcept { return *titleView_; }

    /// What the title bar's menu button opens; null for no such button. Not owned.
    void setMenu(QMenu* menu);

    /// Opens it, ready for the keys: with the menu of the chosen entry open too, if there is one.
    void openMenu(QAction* chosen = nullptr);

    /// Makes it as large as the screen, or as it was before.
    void zoom();

  protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

    WindowDrag& drag() noexcept { return drag_; }

    /// What a person does with the title bar, as the desktop has it.
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
