#include "look/window/MVCustomWindow.h"
#include "look/window/MVCustomWindowTitleView.h"
#include "look/window/WindowButton.h"
#include "platform/window/X11Settings.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QTest>
#include <QtEndian>

#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

using platform::X11Settings;
using Button = platform::TitleBarSettings::Button;

namespace {

/// What a settings daemon tells, in one of the two orders of bytes.
class Told {
  public:
    explicit Told(bool isBigEndian = false) : isBigEndian_(isBigEndian) {}

    Told& number(std::uint8_t value) {
        bytes_.append(static_cast<char>(value));
        return *this;
    }
    template <typename Number>
    Told& number(Number value) {
        value = isBigEndian_ ? qToBigEndian(value) : qToLittleEndian(value);
        bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
        return *this;
    }
    Told& text(std::string_view text) {
        bytes_.append(text.data(), static_cast<qsizetype>(text.size()));
        bytes_.append((4 - text.size() % 4) % 4, '\0');
        return *this;
    }
    Told& begin(std::uint8_t kind, std::string_view name) {
        ++count_;
        number(kind).number(std::uint8_t{0}).number(static_cast<std::uint16_t>(name.size()));
        return text(name).number(std::uint32_t{7});
    }
    Told& add(std::string_view name, std::string_view value) {
        return begin(1, name).number(static_cast<std::uint32_t>(value.size())).text(value);
    }
    QByteArray bytes() const {
        Told whole(isBigEndian_);
        whole.number(std::uint8_t{isBigEndian_}).number(std::uint8_t{0});
        whole.number(std::uint16_t{0}).number(std::uint32_t{1}).number(count_);
        return whole.bytes_ + bytes_;
    }

  private:
    const bool isBigEndian_;
    QByteArray bytes_;
    std::uint32_t count_ = 0;
};

/// A settings daemon on a connection of its own.
class SettingsDaemon {
  public:
    explicit SettingsDaemon(const QByteArray& told)
        : connection_(xcb_connect(nullptr, nullptr), &xcb_disconnect) {
        xcb_connection_t* const connection = connection_.get();
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
        window_ = xcb_generate_id(connection);
        xcb_create_window(connection, 0, window_, root, 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                          XCB_COPY_FROM_PARENT, 0, nullptr);
        tell(told);
        xcb_set_selection_owner(connection, window_, atom("_XSETTINGS_S0"), XCB_CURRENT_TIME);
        xcb_client_message_event_t news{};
        news.response_type = XCB_CLIENT_MESSAGE;
        news.format = 32;
        news.window = root;
        news.type = atom("MANAGER");
        news.data.data32[1] = atom("_XSETTINGS_S0");
        news.data.data32[2] = window_;
        xcb_send_event(connection, 0, root, XCB_EVENT_MASK_STRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&news));
        atom("_XSETTINGS_S0"); // by its answer all of that has been done
    }

    void tell(const QByteArray& told) {
        const xcb_atom_t property = atom("_XSETTINGS_SETTINGS");
        xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window_, property, property,
                            8, static_cast<std::uint32_t>(told.size()), told.data());
        xcb_flush(connection_.get());
    }

  private:
    xcb_atom_t atom(std::string_view name) {
        const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> reply(
            xcb_intern_atom_reply(connection_.get(),
                                  xcb_intern_atom(connection_.get(), 0,
                                                  static_cast<std::uint16_t>(name.size()),
                                                  name.data()),
                                  nullptr),
            &std::free);
        return reply->atom;
    }

    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection_;
    xcb_window_t window_ = 0;
};

QByteArray layout(std::string_view text, bool isBigEndian = false) {
    return Told(isBigEndian).add("Gtk/DecorationLayout", text).bytes();
}

} // namespace

TEST(X11TitleBar, FollowsTheDesktopsDaemonForButtonsAndClicks) {
    auto daemon = std::make_unique<SettingsDaemon>(Told()
                                                       .add("Gtk/DecorationLayout", "close:")
                                                       .add("Gtk/TitlebarDoubleClick", "minimize")
                                                       .bytes());
    MVCustomWindow window(new QWidget, MVCustomWindow::closable | MVCustomWindow::miniaturizable);
    window.setGeometry(100, 100, 500, 300);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    const auto place = [&](Button kind) {
        const WindowButton* const button = window.titleView().button(kind);
        return button != nullptr ? button->mapTo(&window, QPoint()).x() : -1;
    };
    EXPECT_LT(place(Button::close), 50);
    EXPECT_EQ(place(Button::minimize), -1);
    QTest::mouseDClick(&window.titleView(), Qt::LeftButton, {}, window.titleView().rect().center());
    EXPECT_TRUE(window.isMinimized());
    EXPECT_FALSE(window.isMaximized());

    daemon->tell(layout("menu:minimize,maximize,close"));
    EXPECT_TRUE(support::waitUntil([&] { return place(Button::minimize) > 300; }));
    EXPECT_GT(place(Button::close), place(Button::minimize));
    daemon = nullptr;
    daemon = std::make_unique<SettingsDaemon>(layout("minimize:close", true));
    EXPECT_TRUE(support::waitUntil([&] { return place(Button::minimize) < 100; }));
    EXPECT_GT(place(Button::close), 300);
    daemon->tell(layout("close:"));
    EXPECT_TRUE(support::waitUntil([&] { return place(Button::close) < 50; }));
}

TEST(X11Settings, ReadsTextsAmongOthersUpToTheFirstError) {
    for (const bool isBigEndian : {false, true}) {
        Told told(isBigEndian);
        told.begin(0, "Net/DoubleClickTime").number(std::uint32_t{400}).add("Odd", "one");
        told.begin(2, "Colour").number(std::uint64_t{1}).add("Empty", "").add("Last", "äh");
        const QByteArray bytes = told.bytes();
        const X11Settings::Texts all{{"Odd", "one"}, {"Empty", ""}, {"Last", "äh"}};
        EXPECT_EQ(X11Settings::textsIn(bytes), all);
        EXPECT_EQ(X11Settings::textsIn(bytes + "more"), all);
        for (qsizetype length = 0; length < bytes.size(); ++length) {
            const X11Settings::Texts texts = X11Settings::textsIn(bytes.first(length));
            for (auto each = texts.begin(); each != texts.end(); ++each)
                EXPECT_EQ(all.value(each.key()), each.value()) << length;
        }
        told.begin(3, "Unknown").add("Later", "text");
        EXPECT_EQ(X11Settings::textsIn(told.bytes()), all);
    }
    QByteArray many = layout("close:");
    many.replace(8, 4, "\xff\xff\xff\xff");
    EXPECT_EQ(X11Settings::textsIn(many).size(), 1) << "more than there are";
    EXPECT_TRUE(
        X11Settings::textsIn(Told().begin(1, "Long").number(std::uint32_t{0xffffffff}).bytes())
            .isEmpty());
}
