#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

/// What the units that talk to the X server share: Qt's connection to it, replies that free
/// themselves, atoms, and events that are asked for beside Qt's. The GUI thread only.
namespace platform::x11 {

/// The bit of an event's type that says that another client has sent it.
constexpr unsigned sentByClient = 0x80;

struct Free {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

/// A reply, which is null when the server has refused.
template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

/// Qt's own; null on other platforms.
xcb_connection_t* connection();

/// The root window of the first screen; there must be a connection.
xcb_window_t rootWindow();

/// Asks for the number of a name, so that several questions can be under way.
xcb_intern_atom_cookie_t requestAtom(std::string_view name);

/// Waits for the answer; none when there is no such.
xcb_atom_t atomReply(xcb_intern_atom_cookie_t question);

/// Has the server tell of such events of the window, besides what Qt has asked for. Nothing
/// happens when the window has gone.
void selectEvents(xcb_window_t window, std::uint32_t events);

} // namespace platform::x11
