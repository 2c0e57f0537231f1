#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

/// Shared helpers for talking to the X server: Qt's connection, owning pointers for replies, atoms,
/// and event selection besides Qt's. GUI thread only.
namespace platform::x11 {

/// The bit of an event's type that marks events sent by another client.
constexpr unsigned sentByClient = 0x80;

struct Free {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

/// A reply; null if the server reported an error.
template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

/// Qt's connection; null on other platforms.
xcb_connection_t* connection();

/// The root window of the first screen; there must be a connection.
xcb_window_t rootWindow();

/// Requests the atom of a name, so that several requests can be in flight.
xcb_intern_atom_cookie_t requestAtom(std::string_view name);

/// Waits for the reply; XCB_ATOM_NONE on failure.
xcb_atom_t atomReply(xcb_intern_atom_cookie_t question);

/// Selects these events of the window in addition to those that Qt has selected. Does nothing if
/// the window no longer exists.
void selectEvents(xcb_window_t window, std::uint32_t events);

} // namespace platform::x11
