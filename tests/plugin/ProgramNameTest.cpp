#include "plugin/ProgramName.h"

#include <gtest/gtest.h>

TEST(ProgramName, NoProgramPassesForTheNotificationSounds) {
    for (const std::string name :
         {"coreaudiod", " coreaudiod", "coreaudiod\n", "\t\u0001 coreaudiod \u007F\r",
          "\u00A0coreaudiod\u3000", "\u200Bcoreaudiod\uFEFF", "\u0085coreaudiod\u202E",
          "coreaudiod\U000E0020"})
        EXPECT_EQ(checkinName(name), "coreaudiod (program)") << name;
    const std::string cut = "coreaudiod" + std::string(117, ' ');
    EXPECT_EQ(checkinName(cut), "coreaudiod (program)");
}

TEST(ProgramName, OtherNamesStay) {
    for (const std::string name :
         {"", " ", "coreaudio", "Coreaudiod", "core audiod", "coreaudiod2", "xcoreaudiod",
          " padded ", "\u00E4coreaudiod", "\U0001F3B5 player"})
        EXPECT_EQ(checkinName(name), name);
}
