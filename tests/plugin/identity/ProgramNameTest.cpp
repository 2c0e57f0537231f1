#include "plugin/identity/ProgramName.h"

#include <gtest/gtest.h>

TEST(ProgramName, NoProgramPassesForTheNotificationSounds) {
    for (const std::string name :
         {"coreaudiod", " coreaudiod", "coreaudiod\n", "\t\u0001 coreaudiod \u007F\r",
          "\u00A0coreaudiod\u3000", "\u200Bcoreaudiod\uFEFF", "\u0085coreaudiod\u202E",
          "coreaudiod\U000E0020", "core\u200Baudiod", "\u2060c\u00ADore\uFE0Faudio\u061Cd",
          " coreaudiod\u200B ", "core\U000E0001audiod", "core\u202Eaudiod", "core\u3164audiod",
          "core\u0001audiod", "coreaudio\u007Fd"})
        EXPECT_EQ(checkinName(name), "coreaudiod (program)") << name;
    const std::string cut = "coreaudiod" + std::string(117, ' ');
    EXPECT_EQ(checkinName(cut), "coreaudiod (program)");
}

TEST(ProgramName, OtherNamesStay) {
    for (const std::string name :
         {"", " ", "coreaudio", "Coreaudiod", "core audiod", "core\u00A0audiod", "coreaudiod2",
          "xcoreaudiod", " padded ", "\u00E4coreaudiod", "\U0001F3B5 player"})
        EXPECT_EQ(checkinName(name), name);
}
