#include "plugin/host/PluginStatus.h"

#include <gtest/gtest.h>

using Proof = StreamProcess::Proof;
using Evidence = NameEvidence;

namespace {

StreamProps propsOf(std::vector<float> volumes, bool mute, float volume = 1.0F) {
    return {std::move(volumes), mute, volume};
}

} // namespace

TEST(PluginStatus, TellsOfEachProgramAndItsStreams) {
    PluginStatus status{true, {}};
    status.programs.push_back(
        {{321, "Player", "/opt/player/player", 7, Proof::peer, Evidence::program,
          "/usr/share/applications/player.desktop"},
         {gainOfPercent(50), true},
         {gainOfPercent(30), std::nullopt},
         true,
         {{45, true, {gainOfPercent(50), true}, propsOf({0.125F, 0.0625F}, true)},
          {46, false, {}, std::nullopt},
          {47, false, {1.0F, std::nullopt}, propsOf({1.0F, 1.0F}, false, 0.125F)},
          {48, true, kFullVolume, propsOf({0.125F}, true), {0.125F, true}}},
         false,
         {}});
    status.programs.push_back({{1073741824, "radio", "", {}, Proof::none, Evidence::clientName},
                               {},
                               {{}, false},
                               false,
                               {},
                               true,
                               "It is \"odd\"."});
    status.preferences = "/home/a/\n.plist";
    status.ownPreferences = "/etc/own.plist";
    status.crashFolder = "/home/a/crashes\n";
    EXPECT_EQ(describe(status),
              "sound server: connected\n"
              "application: connected\n"
              "preferences: /home/a/\\n.plist, not /etc/own.plist\n"
              "crash reports: /home/a/crashes\\n\n"
              "Player (pid 321, /opt/player/player, confirmed by the kernel): "
              "wanted 50 % muted, remembered 30 %\n"
              "    This application starts the program. (/usr/share/applications/player.desktop)\n"
              "    stream 45 plays: wanted 50 % muted, has 50 % muted\n"
              "    stream 46 pauses: nothing wanted, volume not known yet\n"
              "    stream 47 pauses: wanted 100 %, has 50 % not muted\n"
              "    stream 48 plays: wanted 100 % not muted, own volume 50 % muted, "
              "has 50 % muted\n"
              "radio (pid 1073741824, path unknown, claimed only, pseudo pid): "
              "nothing wanted, remembered not muted, ignored, the application does not know of it; "
              "can't be set: It is "
              "\"odd\".\n"
              "    The program uses this name for itself.\n");
}

TEST(PluginStatus, AProgramCannotWriteLinesOfItsOwn) {
    PluginStatus status;
    status.programs.push_back({{1,
                                "a\nsound server: gone\x1b[2J",
                                "/\u202e\xff",
                                {},
                                Proof::peer,
                                Evidence::program,
                                "/b\n.desktop"},
                               {},
                               {},
                               true,
                               {},
                               false,
                               {}});
    EXPECT_NE(describe(status).find("\na\\nsound server: gone\\u001b[2J (pid 1, /\\u202e\\xff, "),
              std::string::npos)
        << describe(status);
    EXPECT_NE(describe(status).find("(/b\\n.desktop)\n"), std::string::npos) << describe(status);
}
