#include "naming/ApplicationName.h"

#include <gtest/gtest.h>

TEST(FittingName, IsOneLineOfUtf8ThatEndsWithAWholeCharacter) {
    EXPECT_EQ(sanitizedName("  Böhmischer Jäger\t\n"), "Böhmischer Jäger");
    EXPECT_EQ(sanitizedName("one\ntwo\x1b[31m"), "one?two?[31m");
    EXPECT_EQ(sanitizedName("a\xff\xfe"), "a??");
    EXPECT_EQ(sanitizedName("pay\u202Egpj.exe"), "paygpj.exe") << "text that turns its direction";
    EXPECT_EQ(sanitizedName(std::string_view("cut\0off", 7)), "cut");
    const std::string ascii(126, 'x');
    EXPECT_EQ(sanitizedName(ascii + "€"), ascii) << "126 bytes and a character of three";
    EXPECT_EQ(sanitizedName(ascii + "é"), ascii);
    EXPECT_EQ(sanitizedName(ascii + "ab"), ascii + "a");
}

TEST(TellingName, IsWhatTheProgramHasChosen) {
    for (const char* const empty :
         {"", "Chromium", "ALSA plug-in [java]", "PipeWire ALSA [python3.11]", "AudioIPC Server",
          "CubebUtils", "SDL Application", "pw-cat", "audio stream", "electron25", "OpenAL Soft"})
        EXPECT_EQ(meaningfulName(empty), "") << empty;
    EXPECT_EQ(meaningfulName("ALSA plug-in [mpg123]"), "mpg123");
    EXPECT_EQ(meaningfulName("PipeWire ALSA [supertux2]"), "supertux2");
    EXPECT_EQ(meaningfulName("Chromium Web Browser"), "Chromium Web Browser");
    EXPECT_EQ(meaningfulName("C* Music Player"), "C* Music Player");
}

TEST(FormerName, IsThatOfTheFileUnlessManyProgramsHaveIt) {
    const struct {
        const char* path;
        const char* expected;
    } cases[] = {{"/usr/bin/pacat", "pacat"},
                 {"/usr/lib/speech-dispatcher-modules/sd_espeak-ng", "sd_espeak-ng"},
                 {"/home/ann/b/player.bin", "player"},
                 {"/home/ann/Chatter-1.2.AppImage", "Chatter"},
                 {"/usr/bin/python3.11", ""},
                 {"/usr/lib/electron25/electron", ""},
                 {"", ""}};
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(formerName(path), expected) << path;
}
