#pragma once

#include "platform/base/MonotonicClock.h"

#include <QObject>
#include <QWidget>

#include <optional>

/// Decides what a click on the tray icon does to a window: it goes away if it was in front when the
/// user clicked, else it comes there. The click itself takes the focus from it on some desktops, so
/// what counts is half a second before. Main thread only.
class WindowToggle final : public QObject {
    Q_OBJECT

  public:
    /// Watches `window`, which must outlive the object.
    explicit WindowToggle(QWidget& window);

    [[nodiscard]] bool goesAway() const;

    /// Lets the window go away if it should: hides it if something else can show it again, else
    /// minimises it. False if it stays.
    [[nodiscard]] bool letGo(bool mayHide);

  private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    QWidget& window_;
    std::optional<platform::MonotonicClock::time_point> lastActive_;
};
