#include "naming/ProgramCommand.h"

#include "naming/ProcessView.h"

#include <gmock/gmock.h>

namespace {

ProgramCommand started(const std::string& line) {
    return startedProgram(commandWords(line));
}

} // namespace

TEST(StartedProgram, IsWhatIsLeftWithoutThePreparations) {
    const struct {
        const char* line;
        const char* program;
        const char* script;
    } cases[] = {
        {"mpv --pseudo-gui -- %U", "mpv", ""},
        {R"("/opt/My Player/player" --name "a \"b\" \\ c" %f)", "/opt/My Player/player", ""},
        {"env -u LD_PRELOAD GTK_THEME=Adwaita FOO=a=b player %U", "player", ""},
        {"env FOO=1 nice -n 5 gamemoderun /opt/x/game", "/opt/x/game", ""},
        {"sh -c \"LANG=C exec player \\\"\\$@\\\"\" dummy", "player", ""},
        {"sh -c 'cd /opt/x; ./game'", "/opt/x/game", ""},
        {"bash -c 'cd /opt/x && env A=1 sh -c \"exec ./game\"'", "./game", ""},
        {"konsole", "konsole", ""},
        {"taskset -c 0 player", "player", ""},
        {"firejail --net=none mpv", "mpv", ""},
        {"python3 -u /usr/share/foo/foo.py %f", "python3", "/usr/share/foo/foo.py"},
        {"python3 -m foo.bar", "python3", "foo.bar"},
        {"java -Xmx1g -cp a.jar:b.jar org.x.Main --full", "java", "org.x.Main"},
        {"wine start /unix /home/ann/x.exe", "wine", "/home/ann/x.exe"},
        {"mono /usr/lib/x/x.exe", "mono", "/usr/lib/x/x.exe"},
        {"bash /opt/x/start.sh", "bash", "/opt/x/start.sh"},
        {"player \"unfinished", "", ""},
        {"", "", ""},
        {"env", "", ""},
    };
    for (const auto& each : cases) {
        const ProgramCommand command = started(each.line);
        EXPECT_EQ(command.program, each.program) << each.line;
        EXPECT_EQ(command.script, each.script) << each.line;
    }
    EXPECT_THAT(started("office --calc %U").arguments, testing::ElementsAre("--calc"));
    EXPECT_THAT(started("player --percent %% --icon %i").arguments,
                testing::ElementsAre("--percent", "%", "--icon"));
}

TEST(StartedProgram, KnowsSandboxesAndRequestsToOthers) {
    EXPECT_EQ(
        started("/usr/bin/flatpak run --branch=stable --command=vlc org.videolan.VLC @@u %U @@")
            .sandbox,
        "org.videolan.VLC");
    EXPECT_EQ(started("env BAMF_DESKTOP_FILE_HINT=/x.desktop /snap/bin/studio.mixer %U").sandbox,
              "snap.studio.mixer");
    EXPECT_EQ(started("snap run mpv").sandbox, "snap.mpv");
    EXPECT_EQ(started("flatpak run").sandbox, "");
    EXPECT_EQ(started("steam steam://rungameid/42").game, "42");
    EXPECT_EQ(started("steam -applaunch 43 -novid").game, "43");
    EXPECT_TRUE(started("lutris lutris:rungameid/3").isRequest);
    EXPECT_FALSE(started("steam %U").isRequest);
    EXPECT_FALSE(started("player http://radio.example/stream").isRequest);
}

TEST(PackageFolder, IsNoneThatProgramsShare) {
    EXPECT_EQ(packageFolder("/opt/google/chrome/chrome"), "/opt/google/chrome");
    EXPECT_EQ(packageFolder("/opt/idea/bin/idea.sh"), "/opt/idea");
    EXPECT_EQ(packageFolder("/usr/lib/libreoffice/program/soffice"), "/usr/lib/libreoffice");
    EXPECT_EQ(packageFolder("/home/ann/tuner/tuner"), "/home/ann/tuner");
    for (const char* const program :
         {"/usr/bin/mpv", "/usr/games/supertux2", "/usr/libexec/x", "/usr/lib/x",
          "/usr/lib/x86_64-linux-gnu/x", "/usr/local/bin/x", "/home/ann/x", "/home/ann/bin/x",
          "/home/ann/.local/bin/x", "/home/ann/Downloads/x.AppImage", "/opt/x", "/x", "x", ""})
        EXPECT_EQ(packageFolder(program), "") << program;
}
