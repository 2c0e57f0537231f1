#include "e2e/DesktopFixture.h"

#include "support/AccessibleObject.h"

using support::AccessibleObject;
using support::waitUntil;

// The preferences window of the running program, seen and used by assistive tools.
namespace {

constexpr unsigned checked = 4;

class PreferencesTest : public DesktopFixture {
  protected:
    void SetUp() override {
        startTonvale();
        connectPlayer();
        activateAction("preferences");
        EXPECT_TRUE(waitUntil([&] { return tool_.window("Preferences").has_value(); }))
            << tool_.outline().toStdString();
    }

    /// Whatever its role.
    std::optional<AccessibleObject> find(const QString& name) const {
        for (const char* const role :
             {"check box", "radio button", "button", "push button", "cell"}) {
            if (auto found = tool_.desktop().find(role, name))
                return found;
        }
        return std::nullopt;
    }

    void press(const QString& name) const {
        const auto found = find(name);
        ASSERT_TRUE(found) << tool_.outline().toStdString();
        found->act(found->actions().value(0));
    }

    bool stored(const std::string& text) const {
        return waitUntil([&] {
            std::ifstream file(preferences_, std::ios::binary);
            return std::string(std::istreambuf_iterator<char>(file), {}).find(text) !=
                   std::string::npos;
        });
    }

    support::AssistiveTool tool_{session_};
};

} // namespace

TEST_F(PreferencesTest, AreSetFromOutside) {
    const QString sample = "Play a sample sound when a volume was set";
    ASSERT_TRUE(find(sample)) << tool_.outline().toStdString();
    EXPECT_TRUE(find(sample)->hasState(checked));
    press(sample);
    EXPECT_TRUE(stored("DisableSoundEffects"));
    EXPECT_FALSE(find(sample)->hasState(checked));
    EXPECT_EQ(find("Show in menu bar")->description(),
              "This application isn't installed, so it keeps no icon in the menu bar.");
}

TEST_F(PreferencesTest, TheIgnoreListIsChangedByATerminalWhileItsSheetIsOpen) {
    press("Ignore List");
    ASSERT_TRUE(waitUntil([&] { return find("file manager of macOS").has_value(); }))
        << tool_.outline().toStdString();
    press("Add…");
    ASSERT_TRUE(waitUntil([&] { return tool_.window("Ignore a Program").has_value(); }));
    const auto result = support::runCommand({TONVALECTL, "ignore", "player"});
    EXPECT_EQ(result.status, 0) << result.output;
    sentUntil("11,0,0 ");
    EXPECT_TRUE(waitUntil([&] { return tool_.desktop().find("cell", "player").has_value(); }))
        << tool_.outline().toStdString();
    EXPECT_TRUE(tool_.window("Ignore a Program"));
    EXPECT_TRUE(stored("<string>player</string>"));
}
