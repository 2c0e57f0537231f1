#pragma once

#include "look/window/WindowButton.h"

#include <QWidget>

/// The buttons at one end of a title bar. Main thread only.
class MVCustomWindowWidgetsView final : public QWidget {
    Q_OBJECT

  public:
    using QWidget::QWidget;

    /// Replaces the buttons; in reading direction.
    void setButtons(const platform::TitleBarSettings::Buttons& kinds);

    /// Null if there is no such button here.
    WindowButton* button(WindowButton::Kind kind) const;

    QSize sizeHint() const override;

  Q_SIGNALS:
    void pressed(WindowButton::Kind kind);

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    QList<WindowButton*> buttons_;
};
