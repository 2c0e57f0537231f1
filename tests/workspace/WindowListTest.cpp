#include "workspace/WindowList.h"

#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QWidget>
#include <QWindow>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <unistd.h>
#include <vector>
#include <xcb/xcb.h>

namespace {

struct Disconnect {
    void operator()(xcb_connection_t* connection) const noexcept { xcb_disconnect(connection); }
};

/// What a window manager would do: lists windows, over a connection of its own.
class ListingManager {
  public:
    ListingManager() : connection_(xcb_connect(nullptr, nullptr)) {
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root;
    }

    void write(const char* property, const std::vector<std::uint32_t>& values) {
        const auto length = static_cast<std::uint16_t>(std::strlen(property));
        xcb_intern_atom_reply_t* const atom = xcb_intern_atom_reply(
            connection_.get(), xcb_intern_atom(connection_.get(), 0, length, property), nullptr);
        ASSERT_NE(atom, nullptr);
        constexpr std::uint8_t bits = 32;
        xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, root_, atom->atom,
                            XCB_ATOM_WINDOW, bits, static_cast<std::uint32_t>(values.size()),
                            values.data());
        std::free(atom);
        xcb_flush(connection_.get());
    }

  private:
    const std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    xcb_window_t root_ = 0;
};

} // namespace

TEST(WindowList, TellsWhoseWindowsAreListedWheneverTheListChanges) {
    ListingManager manager;
    int changes = 0;
    const WindowList list([&] { ++changes; });
    EXPECT_TRUE(list.owners().empty());
    auto window = std::make_unique<QWidget>();
    window->show();
    const auto id = static_cast<std::uint32_t>(window->winId());
    ASSERT_TRUE(support::waitUntil([&] { return window->windowHandle()->isExposed(); }));
    manager.write("_NET_CLIENT_LIST_STACKING", {id});
    manager.write("_NET_CLIENT_LIST", {id});
    ASSERT_TRUE(support::waitUntil([&] { return changes > 0; }));
    EXPECT_EQ(changes, 1) << "of the order nobody wants to know";
    EXPECT_EQ(list.owners(), std::set<pid_t>{::getpid()});

    window.reset();
    EXPECT_TRUE(support::waitUntil([&] { return list.owners().empty(); })) << "still listed";
    manager.write("_NET_CLIENT_LIST", {});
    EXPECT_TRUE(support::waitUntil([&] { return changes == 2; }));
}
