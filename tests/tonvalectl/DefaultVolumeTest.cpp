#include "tonvalectl/CtlFixture.h"

namespace {

constexpr std::uint32_t pid = 4711;

using DefaultVolumeTest = CtlFixture;

} // namespace

TEST_F(DefaultVolumeTest, IsForProgramsThatWereNeverSeenOrSet) {
    startTonvale();
    EXPECT_EQ(ctl({"default"}).output, "off\n");
    auto& early = checkIn(pid, "early");
    EXPECT_TRUE(does({"default", "30"}));
    EXPECT_EQ(ctl({"default"}).output, "30%\n");
    EXPECT_TRUE(isStored("NewAppVolume", 30LL));
    auto& late = checkIn(pid + 1, "late");
    EXPECT_TRUE(receives(late, pid + 1, "9,30 ")) << "by the road of the slider";
    EXPECT_TRUE(isStored("Apps", QVariantMap{{"late", setting(30)}}));
    EXPECT_TRUE(isStored("SeenApps", QVariantList{"early", "late"}));
    EXPECT_EQ(programJson("late")["volume"], 30);
    EXPECT_TRUE(logs("'late' is new"));
    EXPECT_EQ(takeCommands(early, pid), "") << "it was seen before";
    checkIn(pid + 2, "coreaudiod");
    EXPECT_EQ(programJson("Sound Effects")["volume"], 100) << "is no program";

    EXPECT_TRUE(does({"set", "late", "100"}));
    leave("late");
    auto& again = checkIn(pid + 3, "late");
    EXPECT_EQ(programJson("late")["volume"], 100) << "it has been set by hand";
    EXPECT_EQ(takeCommands(again, pid + 3), "");
    EXPECT_TRUE(does({"forget", "late"}));
    EXPECT_TRUE(isStored("SeenApps", QVariantList{"early"}));
    checkIn(pid + 4, "another");
    EXPECT_EQ(programJson("late")["volume"], 100) << "it has not come anew";
    EXPECT_TRUE(isStored("SeenApps", QVariantList({"early", "another"})));
    leave("late");
    checkIn(pid + 5, "late");
    EXPECT_EQ(programJson("late")["volume"], 30);

    EXPECT_TRUE(does({"default", "off"}));
    EXPECT_TRUE(isStored("NewAppVolume", QVariant()));
    checkIn(pid + 6, "last");
    EXPECT_EQ(programJson("last")["volume"], 100);
    EXPECT_EQ(programJson("late")["volume"], 30) << "what was set stays";
}
