#include "platform/desktop/DesktopSettings.h"

#include "platform/desktop/DesktopAnimations.h"
#include "platform/desktop/TitleBarSettings.h"
#include "support/DesktopPortal.h"

#include <gtest/gtest.h>

using platform::DesktopSettings;
using platform::TitleBarSettings;
using Action = TitleBarSettings::Action;
using Button = TitleBarSettings::Button;

namespace {

constexpr const char* appearance = "org.freedesktop.appearance";
constexpr const char* interface = "org.gnome.desktop.interface";
constexpr const char* preferences = "org.gnome.desktop.wm.preferences";

class DesktopSettingsTest : public testing::Test {
  protected:
    void change(const char* group, const char* key, const QVariant& value) {
        const int before = changes_;
        portal_->change(group, key, value);
        EXPECT_TRUE(support::waitUntil([&] { return changes_ > before; })) << key;
    }

    const support::PrivateBus bus_;
    std::unique_ptr<support::DesktopPortal> portal_ =
        std::make_unique<support::DesktopPortal>(bus_);
    support::BusConnection connection_{bus_.address()};
    DesktopSettings settings_{*connection_};
    int changes_ = 0;
    const QMetaObject::Connection counting_ =
        QObject::connect(&settings_, &DesktopSettings::changed, [this] { ++changes_; });
};

} // namespace

TEST_F(DesktopSettingsTest, AnimationsAndContrastFollowTheDesktop) {
    const platform::DesktopAnimations motion(settings_);
    support::serveEvents();
    EXPECT_TRUE(motion.areEnabled()) << "nobody has said anything";
    change(interface, "enable-animations", false);
    EXPECT_FALSE(motion.areEnabled());
    change(interface, "enable-animations", true);
    EXPECT_TRUE(motion.areEnabled());
    change(appearance, "reduced-motion", 1U);
    EXPECT_FALSE(motion.areEnabled());
    change(interface, "enable-animations", "yes");
    change(appearance, "reduced-motion", 0U);
    EXPECT_TRUE(motion.areEnabled());

    EXPECT_FALSE(isHighContrastWanted(settings_));
    change(appearance, "contrast", 1U);
    EXPECT_TRUE(isHighContrastWanted(settings_));
    change(appearance, "contrast", 0U);
    EXPECT_FALSE(isHighContrastWanted(settings_));
    change("org.gnome.desktop.a11y.interface", "high-contrast", true);
    EXPECT_TRUE(isHighContrastWanted(settings_));
    change("org.gnome.desktop.a11y.interface", "high-contrast", false);
    change(interface, "gtk-theme", "HighContrastInverse");
    EXPECT_TRUE(isHighContrastWanted(settings_));
}

TEST_F(DesktopSettingsTest, ALaterPortalIsAskedAndOneThatDoesNotAnswerIsHarmless) {
    portal_->set(appearance, "contrast", 1U);
    EXPECT_TRUE(support::waitUntil([&] { return isHighContrastWanted(settings_); }))
        << "it was there first";
    portal_ = nullptr;
    portal_ = std::make_unique<support::DesktopPortal>(bus_, false);
    portal_->set(appearance, "contrast", 0U);
    support::serveEvents();
    EXPECT_TRUE(isHighContrastWanted(settings_)) << "what was known last";
    portal_ = nullptr;
    portal_ = std::make_unique<support::DesktopPortal>(bus_);
    portal_->set(appearance, "contrast", 0U);
    EXPECT_TRUE(support::waitUntil([&] { return !isHighContrastWanted(settings_); }));
    const DesktopSettings none(QDBusConnection("none"));
    EXPECT_EQ(TitleBarSettings::of(none), TitleBarSettings());
}

TEST_F(DesktopSettingsTest, TitleBarsDoWhatTheDesktopsDo) {
    change(preferences, "action-double-click-titlebar", "minimize");
    change(preferences, "action-middle-click-titlebar", "lower");
    change(preferences, "action-right-click-titlebar", "none");
    change(preferences, "button-layout", "close,maximize,minimize:appmenu");
    const TitleBarSettings titleBar = TitleBarSettings::of(settings_);
    EXPECT_EQ(titleBar.doubleClick, Action::minimize);
    EXPECT_EQ(titleBar.middleClick, Action::lower);
    EXPECT_EQ(titleBar.secondaryClick, Action::none);
    EXPECT_EQ(titleBar.left, (TitleBarSettings::Buttons{Button::close, Button::minimize}));
    EXPECT_EQ(titleBar.right, (TitleBarSettings::Buttons{Button::menu}));

    const TitleBarSettings onX11 = TitleBarSettings::of(
        settings_, {{"Gtk/TitlebarMiddleClick", "menu"}, {"Gtk/TitlebarRightClick", "minimize"}});
    EXPECT_EQ(onX11.doubleClick, Action::minimize) << "of that it tells nothing";
    EXPECT_EQ(onX11.middleClick, Action::menu);
    EXPECT_EQ(onX11.secondaryClick, Action::minimize);
    EXPECT_EQ(onX11.left, titleBar.left);
}

TEST(TitleBarSettings, TextsThatSayNothingLeaveWhatIsUsual) {
    TitleBarSettings titleBar;
    for (const char* const layout : {"", "close", "a:b:c"}) {
        titleBar.placeButtons(QLatin1String(layout));
        EXPECT_EQ(titleBar, TitleBarSettings()) << layout;
    }
    titleBar.placeButtons("appmenu:close");
    EXPECT_EQ(titleBar.left, (TitleBarSettings::Buttons{Button::menu}));
    EXPECT_EQ(titleBar.right, (TitleBarSettings::Buttons{Button::close}));
    titleBar.placeButtons("minimize:close");
    EXPECT_EQ(titleBar.right, (TitleBarSettings::Buttons{Button::menu, Button::close}));
    const auto action = [](const char* text) {
        return TitleBarSettings::actionFromText(QLatin1String(text), Action::lower);
    };
    EXPECT_EQ(action("toggle-maximize-vertically"), Action::maximize);
    EXPECT_EQ(action("none"), Action::none);
    EXPECT_EQ(action("menu"), Action::menu);
    EXPECT_EQ(action("dance"), Action::lower);
}
