#include "platform/window/X11Connection.h"

#include <QGuiApplication>

namespace platform::x11 {

xcb_connection_t* connection() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->connection() : nullptr;
}

xcb_window_t rootWindow() {
    return xcb_setup_roots_iterator(xcb_get_setup(connection())).data->root;
}

xcb_intern_atom_cookie_t requestAtom(std::string_view name) {
    return xcb_intern_atom(connection(), 0, static_cast<std::uint16_t>(name.size()), name.data());
}

xcb_atom_t atomReply(xcb_intern_atom_cookie_t question) {
    const Owned<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection(), question, nullptr));
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void selectEvents(xcb_window_t window, std::uint32_t events) {
    const Owned<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        connection(), xcb_get_window_attributes(connection(), window), nullptr));
    if (attributes == nullptr)
        return;
    const std::uint32_t mask = attributes->your_event_mask | events;
    xcb_change_window_attributes(connection(), window, XCB_CW_EVENT_MASK, &mask);
}

} // namespace platform::x11
