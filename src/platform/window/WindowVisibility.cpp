#include "platform/window/WindowVisibility.h"

#include <QEvent>
#include <QGuiApplication>

#include <cstdlib>
#include <memory>
#include <utility>
#include <xcb/xcb.h>

namespace platform {

namespace {

constexpr unsigned sentByClient = 0x80;

struct Free {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

/// Selects visibility events of the window in addition to those already selected.
void askForVisibility(xcb_window_t window) {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* const connection = x11 != nullptr ? x11->connection() : nullptr;
    if (connection == nullptr)
        return;
    const std::unique_ptr<xcb_get_window_attributes_reply_t, Free> attributes(
        xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, window),
                                        nullptr));
    if (attributes == nullptr)
        return;
    const std::uint32_t mask = attributes->your_event_mask | XCB_EVENT_MASK_VISIBILITY_CHANGE;
    xcb_change_window_attributes(connection, window, XCB_CW_EVENT_MASK, &mask);
}

} // namespace

WindowVisibility::WindowVisibility(QWidget& window) : window_(window) {
    window.installEventFilter(this);
    qGuiApp->installNativeEventFilter(this);
}

WindowVisibility::~WindowVisibility() {
    qGuiApp->removeNativeEventFilter(this);
}

void WindowVisibility::follow(QWindow* handle) {
    if (handle == nullptr)
        return;
    const auto native = static_cast<std::uint32_t>(handle->winId());
    if (handle_ == handle && nativeWindow_ == native)
        return;
    if (handle_ != handle)
        handle->installEventFilter(this);
    handle_ = handle;
    nativeWindow_ = native;
    wasExposed_ = false;
    isCovered_ = false;
    askForVisibility(native);
}

bool WindowVisibility::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &window_) {
        if (event->type() == QEvent::Show)
            follow(window_.windowHandle());
        if (event->type() == QEvent::Show || event->type() == QEvent::Hide ||
            event->type() == QEvent::WindowStateChange)
            review();
    } else if (watched == handle_ && event->type() == QEvent::Expose) {
        wasExposed_ = wasExposed_ || handle_->isExposed();
        review();
    }
    return false;
}

bool WindowVisibility::nativeEventFilter(const QByteArray& kind, void* message,
                                         qintptr* /*result*/) {
    if (nativeWindow_ == 0 || kind != "xcb_generic_event_t")
        return false;
    const auto& event = *static_cast<const xcb_generic_event_t*>(message);
    if ((event.response_type & ~sentByClient) != XCB_VISIBILITY_NOTIFY)
        return false;
    const auto& visibility = reinterpret_cast<const xcb_visibility_notify_event_t&>(event);
    if (visibility.window != nativeWindow_)
        return false;
    isCovered_ = visibility.state == XCB_VISIBILITY_FULLY_OBSCURED;
    review();
    return false;
}

void WindowVisibility::review() {
    const bool isExposed = handle_ == nullptr || handle_->isExposed() || !wasExposed_;
    const bool isVisible =
        window_.isVisible() && !window_.isMinimized() && isExposed && !isCovered_;
    if (std::exchange(isVisible_, isVisible) != isVisible)
        Q_EMIT changed(isVisible);
}

} // namespace platform
