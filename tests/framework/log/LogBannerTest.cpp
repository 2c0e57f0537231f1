#include "framework/log/LogBanner.h"

#include "LogFixture.h"

#include "platform/bundle/Bundle.h"

#include <vector>

TEST_F(LogTest, TheBannerNamesTheVersionsThatThereAre) {
    const std::string shortVersion = "<key>CFBundleShortVersionString</key>";
    const std::string build = "<key>QNBuildIdentifier</key><string>a1b2</string>";
    const std::string full = "<key>CFBundleVersion</key><string>214</string>";
    const std::string both = full + shortVersion + "<string>1.0</string>";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {both + build, "**** 1.0/214/a1b2 - OS X Version 12 (Build 6.1) (Intel 64-bit) ****"},
        {both, "**** 1.0/214 - OS X Version 12 (Build 6.1) (Intel 64-bit) ****"},
        {full + build, "**** 214/a1b2 - OS X Version 12 (Build 6.1) (Intel 64-bit) ****"},
        {full + shortVersion + "<integer>7</integer>",
         "**** 214 - OS X Version 12 (Build 6.1) (Intel 64-bit) ****"},
        {build, "**** OS X Version 12 (Build 6.1) (Intel 64-bit) ****"}};
    for (const auto& [keys, expected] : cases) {
        makeFile("Info.plist", "<plist version=\"1.0\"><dict>" + keys + "</dict></plist>");
        const platform::Bundle bundle(std::filesystem::path(path("Info.plist")).parent_path());
        EXPECT_EQ(QN::log::banner(bundle, "12", "6.1"), expected);
    }
}
