#include "app/WindowToggle.h"

#include <QEvent>

#include <chrono>

WindowToggle::WindowToggle(QWidget& window) : window_(window) {
    window_.installEventFilter(this);
}

bool WindowToggle::goesAway() const {
    constexpr std::chrono::milliseconds memory{500};
    if (!window_.isVisible() || window_.isMinimized())
        return false;
    return window_.isActiveWindow() ||
           (lastActive_ && platform::MonotonicClock::now() - *lastActive_ <= memory);
}

bool WindowToggle::letGo(bool mayHide) {
    if (!goesAway())
        return false;
    if (mayHide)
        window_.hide();
    else
        window_.showMinimized();
    return true;
}

bool WindowToggle::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::WindowDeactivate)
        lastActive_ = platform::MonotonicClock::now();
    return QObject::eventFilter(watched, event);
}
