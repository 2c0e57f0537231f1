#include "app/MenuBarPreferences.h"

#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "settings/PreferenceKeys.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <vector>

using support::waitUntil;

TEST(MenuBarPreferences, TellTheHelperWhatTheUserHasChosen) {
    platform::RunLoop loop;
    const platform::RunLoopNotifier notifier(loop);
    const platform::MainQueueService mainQueue(loop);
    const support::PrivateFolder folder;
    const support::SystemLogRecorder log;
    platform::UserDefaults defaults({});
    defaults.registerDefaults(PreferenceKeys::defaults());
    std::vector<bool> shown;
    std::vector<std::string> posted; // and what was in the file then
    const auto file = folder.path() / "UseColorMenuBarIcon";
    const MenuBarPreferences::Dependencies dependencies{
        defaults, QString::fromStdString(file), [&](bool isShown) { shown.push_back(isShown); },
        [&](const QString& name) {
            posted.push_back(name.toStdString() + support::contentOf(file));
        }};
    MenuBarPreferences::updateTNHelperPref(dependencies);
    EXPECT_EQ(support::contentOf(file), "0");
    const MenuBarPreferences preferences(dependencies);
    for (const bool isOn : {false, true}) {
        defaults.set(PreferenceKeys::showInMenuBar, isOn);
        EXPECT_TRUE(waitUntil([&] { return !shown.empty() && shown.back() == isOn; }));
    }
    for (const bool isOn : {true, false}) {
        const std::size_t before = posted.size();
        defaults.set(PreferenceKeys::useColorMenuBarIcon, isOn);
        EXPECT_TRUE(waitUntil([&] { return posted.size() > before; }));
        EXPECT_EQ(posted.back(),
                  std::string("com.quarnel.Tonvale.HelperUpdateMenuBarIcon") + (isOn ? "1" : "0"));
    }
    for (const char* const line : {"Unchecked \"Show in menu bar\"", "Checked \"Show in menu bar\"",
                                   "Color icon set", "Grayscale icon set"})
        EXPECT_EQ(log.count(line), 1U) << line;
    std::filesystem::remove(file);
    std::filesystem::create_directories(file / "in the way");
    MenuBarPreferences::updateTNHelperPref(dependencies);
    EXPECT_EQ(log.count("Can't write pref file: "), 1U);
}
