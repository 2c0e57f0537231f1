#pragma once

#include "platform/desktop/TitleBarSettings.h"

#include <QWidget>

class MVCustomWindowWidgetsView;
class WindowButton;

/// The title bar of a window that draws its own: the title, and buttons at both ends. Emits a
/// signal for each user action. Main thread only.
class MVCustomWindowTitleView final : public QWidget {
    Q_OBJECT

  public:
    /// Pixels; enough for the title in the usual font.
    static constexpr int usualHeight = 32;

    explicit MVCustomWindowTitleView(QWidget* parent = nullptr);

    /// Sets its actions and buttons. Mirrored for right-to-left languages.
    void setTitleBar(const platform::TitleBarSettings& titleBar);

    /// Whether it shows the name of the program instead of the window's title; not at first.
    void setNamesProgram(bool namesIt) noexcept { namesProgram_ = namesIt; }

    /// Null if there is no such button.
    WindowButton* button(platform::TitleBarSettings::Button kind) const;

  Q_SIGNALS:
    /// The user drags the title bar; the mouse button is still down.
    void dragged();
    void acted(platform::TitleBarSettings::Action action);
    void buttonPressed(platform::TitleBarSettings::Button kind);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    bool event(QEvent* event) override;

  private:
    QRect roomForTitle() const;

    platform::TitleBarSettings titleBar_;
    MVCustomWindowWidgetsView* const start_;
    MVCustomWindowWidgetsView* const end_;
    QPoint pressed_;
    bool isHeld_ = false;
    bool namesProgram_ = false;
};
