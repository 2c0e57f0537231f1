#include "workspace/WindowList.h"

#include "platform/base/ExceptionReport.h"
#include "platform/window/X11Connection.h"

#include <QGuiApplication>

#include <utility>
#include <vector>
#include <xcb/xcb.h>

namespace {

using platform::x11::atomReply;
using platform::x11::connection;
using platform::x11::Owned;
using platform::x11::requestAtom;
using platform::x11::rootWindow;
using platform::x11::selectEvents;
using platform::x11::sentByClient;

constexpr std::uint32_t mostWindows = 1024;

xcb_get_property_cookie_t askFor(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                                 std::uint32_t length) {
    return xcb_get_property(connection(), 0, window, property, type, 0, length);
}

/// The values of a property; none if the window no longer exists.
std::vector<std::uint32_t> atomReply(xcb_get_property_cookie_t question) {
    const Owned<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(connection(), question, nullptr));
    constexpr int bits = 32;
    if (reply == nullptr || reply->format != bits)
        return {};
    const auto* const values =
        static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + reply->value_len};
}

} // namespace

WindowList::WindowList(std::function<void()> changed) : changed_(std::move(changed)) {
    if (connection() == nullptr)
        return;
    root_ = rootWindow();
    const auto list = requestAtom("_NET_CLIENT_LIST");
    const auto process = requestAtom("_NET_WM_PID");
    clientList_ = atomReply(list);
    windowProcess_ = atomReply(process);
    selectEvents(root_, XCB_EVENT_MASK_PROPERTY_CHANGE);
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
         atomReply(askFor(root_, clientList_, XCB_ATOM_WINDOW, mostWindows)))
        questions.push_back(askFor(window, windowProcess_, XCB_ATOM_CARDINAL, 1));
    std::set<pid_t> owners;
    for (const xcb_get_property_cookie_t question : questions) {
        for (const std::uint32_t process : atomReply(question))
            owners.insert(static_cast<pid_t>(process));
    }
    return owners;
}

bool WindowList::nativeEventFilter(const QByteArray& kind, void* message, qintptr* /*result*/) {
    if (kind != "xcb_generic_event_t")
        return false;
    const auto& event = *static_cast<const xcb_generic_event_t*>(message);
    if ((event.response_type & ~sentByClient) != XCB_PROPERTY_NOTIFY)
        return false;
    const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (property.window == root_ && property.atom == clientList_)
        platform::guarded(platform::kExceptionInNotification, changed_);
    return false;
}
