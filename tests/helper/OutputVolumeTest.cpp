#include "helper/OutputVolume.h"

#include "helper/TrayScene.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

using support::waitUntil;
using State = OutputVolume::State;

TEST(OutputVolume, UnderstandsTheTool) {
    struct Case {
        const char* text;
        std::optional<State> state;
    };
    for (const Case& each :
         {Case{"Volume: 0.45\n", State{45, false}},
          Case{"Volume: 1.00 [MUTED]\n", State{100, true}}, Case{"Volume: 1.26", State{126, false}},
          Case{"Volume: 0.295", State{30, false}}, Case{"", std::nullopt},
          Case{"Volume:", std::nullopt}, Case{"Volume: nan", std::nullopt},
          Case{"Volume: -1", std::nullopt}, Case{"Volume: 1e9", std::nullopt},
          Case{"Volume: loud", std::nullopt}, Case{"Node '3' not found", std::nullopt}})
        EXPECT_EQ(OutputVolume::parse(each.text), each.state) << each.text;
}

TEST(OutputVolume, PutsWhatIsWantedMeanwhileIntoOneCall) {
    FakeVolumeTool tool;
    OutputVolume output(tool.path());
    EXPECT_FALSE(output.state());
    output.step(1); // runs at once; the others wait for it
    output.step(2);
    output.step(2);
    output.step(-1);
    output.toggleMute();
    output.toggleMute();
    output.toggleMute();
    EXPECT_TRUE(waitUntil([&] { return output.state().has_value(); }));
    EXPECT_EQ(tool.calls(), "set-volume --limit 1.0 @DEFAULT_AUDIO_SINK@ 5%+\n"
                            "set-volume --limit 1.0 @DEFAULT_AUDIO_SINK@ 15%+\n"
                            "set-mute @DEFAULT_AUDIO_SINK@ toggle\n"
                            "get-volume @DEFAULT_AUDIO_SINK@\n");
    output.step(-1000);
    EXPECT_TRUE(waitUntil([&] { return tool.calls().find(" 100%-") != std::string::npos; }));
}

TEST(OutputVolume, KnowsNothingWithoutToolOrOutput) {
    FakeVolumeTool tool;
    OutputVolume output(tool.path());
    int changes = 0;
    QObject::connect(&output, &OutputVolume::changed, [&] { ++changes; });
    const auto settles = [&](const std::optional<State>& state) {
        output.refresh();
        return waitUntil([&] { return output.state() == state; });
    };
    EXPECT_TRUE(settles(State{40, false}));
    tool.say("nothing");
    EXPECT_TRUE(settles(std::nullopt));
    tool.say("Volume: 0.50");
    EXPECT_TRUE(settles(State{50, false}));
    tool.remove();
    EXPECT_TRUE(settles(std::nullopt));
    output.step(1);
    output.toggleMute();
    EXPECT_EQ(changes, 4);
}
