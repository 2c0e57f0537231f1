#pragma once

#include "platform/desktop/TitleBarSettings.h"

#include <QAbstractButton>

/// A button of a title bar: closes the window, minimises it, or opens its menu. Main thread only.
class WindowButton final : public QAbstractButton {
    Q_OBJECT

  public:
    using Kind = platform::TitleBarSettings::Button;

    explicit WindowButton(Kind kind, QWidget* parent = nullptr);

    Kind kind() const noexcept { return kind_; }
    QSize sizeHint() const override;

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    const Kind kind_;
};
