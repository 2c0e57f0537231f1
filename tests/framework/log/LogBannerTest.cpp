#include "framework/log/LogBanner.h"

#include "LogFixture.h"

#include "platform/files/Bundle.h"
#include "platform/processes/SystemFacts.h"

#include <sys/utsname.h>
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

TEST_F(LogTest, TheBannerIsTheFirstMessageAndNamesThisSystem) {
    utsname system{};
    ASSERT_EQ(::uname(&system), 0);
    openLog(path("banner.log"), QNLOG_BANNER);
    const std::string content = contentOf(path("banner.log"));
    EXPECT_NE(content.find(": **** "), std::string::npos) << content;
    EXPECT_NE(content.find("OS X Version " + platform::productVersion() + " (Build " +
                           system.release + ") (Intel 64-bit) ****\n"),
              std::string::npos)
        << content;
}
