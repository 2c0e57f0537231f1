#include "platform/desktop/WindowList.h"

#include "platform/processes/ExceptionReport.h"

#include <QGuiApplication>

#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>
#include <xcb/xcb.h>

namespace platform {

namespace {

constexpr unsigned sentByAClient = 0x80;
constexpr std::uint32_t mostWindows = 1024;

struct Free {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

xcb_connection_t* connection() {
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->connection() : nullptr;
}

xcb_get_property_cookie_t askFor(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                                 std::uint32_t length) {
    return xcb_get_property(connection(), 0, window, property, type, 0, length);
}

/// The numbers of a property; none when the window has gone.
std::vector<std::uint32_t> answerOf(xcb_get_property_cookie_t question) {
    const Owned<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection(), question, nullptr));
    constexpr int bits = 32;
    if (reply == nullptr || reply->format != bits)
        return {};
    const auto* const values =
        static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + reply->value_len};
}

xcb_intern_atom_cookie_t nameAtom(std::string_view name) {
    return xcb_intern_atom(connection(), 0, static_cast<std::uint16_t>(name.size()), name.data());
}

xcb_atom_t answerOf(xcb_intern_atom_cookie_t question) {
    const Owned<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection(), question, nullptr));
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

/// Has the server tell of the root window's properties, besides what Qt has asked for.
void askForProperties(xcb_window_t root) {
    const Owned<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        connection(), xcb_get_window_attributes(connection(), root), nullptr));
    if (attributes == nullptr)
        return;
    const std::uint32_t mask = attributes->your_event_mask | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection(), root, XCB_CW_EVENT_MASK, &mask);
}

} // namespace

WindowList::WindowList(std::function<void()> changed) : changed_(std::move(changed)) {
    if (connection() == nullptr)
        return;
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection())).data->root;
    const auto list = nameAtom("_NET_CLIENT_LIST");
    const auto process = nameAtom("_NET_WM_PID");
    clientList_ = answerOf(list);
    windowProcess_ = answerOf(process);
    askForProperties(root_);
    qGuiApp->installNativeEventFilter(this);
}

WindowList::~WindowList() {
    if (root_ != 0 && qGuiApp != nullptr)
        qGuiApp->removeNativeEventFilter(this);
}

std::set<pid_t> WindowList::owners() const {
    if (root_ == 0 || connection() == nullptr)
        return {};
    std::vector<xcb_get_property_cookie_t> questions;
    for (const xcb_window_t window :
         answerOf(askFor(root_, clientList_, XCB_ATOM_WINDOW, mostWindows)))
        questions.push_back(askFor(window, windowProcess_, XCB_ATOM_CARDINAL, 1));
    std::set<pid_t> owners;
    for (const xcb_get_property_cookie_t question : questions) {
        for (const std::uint32_t process : answerOf(question))
            owners.insert(static_cast<pid_t>(process));
    }
    return owners;
}

bool WindowList::nativeEventFilter(const QByteArray& kind, void* message, qintptr* /*result*/) {
    if (kind != "xcb_generic_event_t")
        return false;
    const auto& event = *static_cast<const xcb_generic_event_t*>(message);
    if ((event.response_type & ~sentByAClient) != XCB_PROPERTY_NOTIFY)
        return false;
    const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (property.window == root_ && property.atom == clientList_)
        guarded(kExceptionInNotification, changed_);
    return false;
}

} // namespace platform
