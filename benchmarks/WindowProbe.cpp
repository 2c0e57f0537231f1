#include "WindowProbe.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <poll.h>
#include <stdexcept>
#include <string_view>

namespace bench {

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};
template <typename Reply>
using Owned = std::unique_ptr<Reply, Free>;

template <typename Reply>
Owned<Reply> own(Reply* reply) {
    return Owned<Reply>(reply);
}

xcb_connection_t* connect() {
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(connection) == 0)
        return connection;
    xcb_disconnect(connection);
    throw std::runtime_error("the display does not answer");
}

std::uint8_t startDamage(xcb_connection_t* connection) {
    const auto* const extension = xcb_get_extension_data(connection, &xcb_damage_id);
    const auto version = own(xcb_damage_query_version_reply(
        connection, xcb_damage_query_version(connection, 1, 1), nullptr));
    if (extension == nullptr || extension->present == 0 || !version)
        throw std::runtime_error("the display does not report what is drawn");
    return static_cast<std::uint8_t>(extension->first_event + XCB_DAMAGE_NOTIFY);
}

/// Menus and tips are no windows of their own.
bool isTopLevel(const xcb_map_notify_event_t& event, xcb_window_t root) {
    return event.event == root && event.override_redirect == 0;
}

} // namespace

bool Picture::isOneColour() const {
    return std::ranges::adjacent_find(pixels_, std::ranges::not_equal_to()) == pixels_.end();
}

WindowProbe::WindowProbe()
    : connection_(connect())
    , root_(xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root)
    , damageEvent_(startDamage(connection_.get())) {
    const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_.get(), root_, XCB_CW_EVENT_MASK, &mask);
    reset();
}

void WindowProbe::reset() {
    if (damage_ != XCB_NONE)
        xcb_damage_destroy(connection_.get(), damage_); // fails for a window that is gone
    window_ = XCB_NONE;
    damage_ = XCB_NONE;
    // The answer to a request comes after all events before it.
    own(xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()),
                                  nullptr));
    while (own(xcb_poll_for_event(connection_.get()))) {
    }
}

std::optional<WindowProbe::Clock::time_point>
WindowProbe::waitFor(const std::function<bool(const Picture&)>& shows, Clock::duration bound) {
    const auto end = Clock::now() + bound;
    if (window_ != XCB_NONE && shows(picture()))
        return Clock::now();
    for (;;) {
        const auto event = own(xcb_poll_for_event(connection_.get()));
        const auto now = Clock::now();
        if (event && take(*event) && shows(picture()))
            return now;
        if (now >= end)
            return std::nullopt;
        if (!event)
            awaitEvent(end - now);
    }
}

void WindowProbe::resize(std::uint32_t width, std::uint32_t height) {
    const std::uint32_t place[] = {0, 0, width, height};
    xcb_configure_window(connection_.get(), window_,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                             XCB_CONFIG_WINDOW_HEIGHT,
                         place);
    xcb_flush(connection_.get());
}

void WindowProbe::iconify() {
    constexpr std::uint32_t iconicState[] = {3, XCB_NONE}; // and no icon window
    constexpr std::string_view property = "WM_STATE";
    const auto atom = own(xcb_intern_atom_reply(
        connection_.get(), xcb_intern_atom(connection_.get(), 0, property.size(), property.data()),
        nullptr));
    if (atom)
        xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window_, atom->atom,
                            atom->atom, 32, std::size(iconicState), iconicState);
    xcb_unmap_window(connection_.get(), window_);
    xcb_flush(connection_.get());
}

void WindowProbe::awaitEvent(Clock::duration bound) {
    xcb_flush(connection_.get());
    if (xcb_connection_has_error(connection_.get()) != 0)
        throw std::runtime_error("the display was lost");
    pollfd ready{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
    ::poll(&ready, 1,
           static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(bound).count()));
}

/// Whether the window has something new to show.
bool WindowProbe::take(const xcb_generic_event_t& event) {
    const unsigned type = event.response_type & 0x7fU;
    if (type == XCB_MAP_NOTIFY && window_ == XCB_NONE) {
        const auto& mapped = reinterpret_cast<const xcb_map_notify_event_t&>(event);
        if (!isTopLevel(mapped, root_))
            return false;
        window_ = mapped.window;
        damage_ = xcb_generate_id(connection_.get());
        xcb_damage_create(connection_.get(), damage_, window_, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
        return true;
    }
    if (type != damageEvent_ || window_ == XCB_NONE)
        return false;
    // Before the picture is taken, so that what is drawn after it is reported.
    xcb_damage_subtract(connection_.get(), damage_, XCB_NONE, XCB_NONE);
    return true;
}

/// Empty if the window no longer exists.
Picture WindowProbe::picture() const {
    xcb_connection_t* const connection = connection_.get();
    const auto place =
        own(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, window_), nullptr));
    if (!place)
        return {{}, 0};
    const auto image =
        own(xcb_get_image_reply(connection,
                                xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, window_, 0, 0,
                                              place->width, place->height, ~0U),
                                nullptr));
    const std::size_t count = std::size_t{place->width} * place->height;
    std::vector<std::uint32_t> pixels(count);
    const std::size_t bytes = count * sizeof pixels[0];
    if (!image || static_cast<std::size_t>(xcb_get_image_data_length(image.get())) != bytes)
        return {{}, 0};
    std::memcpy(pixels.data(), xcb_get_image_data(image.get()), bytes);
    for (std::uint32_t& pixel : pixels)
        pixel &= 0xffffffU;
    return {std::move(pixels), place->width};
}

} // namespace bench
