#include "plugin/ProgramName.h"

#include <gtest/gtest.h>

TEST(ProgramName, NoProgramPassesForTheNotificationSounds) {
    for (const std::string name :
         {"coreaudiod", " coreaudiod", "coreaudiod\n", "\t\x01 coreaudiod \x7F\r",
          "\xC2\xA0"
          "coreaudiod"
          "\xE3\x80\x80",
          "\xE2\x80\x8B"
          "coreaudiod"
          "\xEF\xBB\xBF",
          "\xC2\x85"
          "coreaudiod"
          "\xE2\x80\xAE",
          "coreaudiod\xF3\xA0\x80\xA0"})
        EXPECT_EQ(checkinName(name), "coreaudiod (program)") << name;
    const std::string cut = "coreaudiod" + std::string(117, ' ');
    EXPECT_EQ(checkinName(cut), "coreaudiod (program)");
}

TEST(ProgramName, OtherNamesStay) {
    for (const std::string name : {"", " ", "coreaudio", "Coreaudiod", "core audiod", "coreaudiod2",
                                   "xcoreaudiod", " padded ",
                                   "\xC3\xA4"
                                   "coreaudiod",
                                   "\xF0\x9F\x8E\xB5 player"})
        EXPECT_EQ(checkinName(name), name);
}
