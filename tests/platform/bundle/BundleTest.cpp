#include "platform/bundle/Bundle.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

TEST(Bundle, ReadsItsInformationAndSurvivesADamagedOrMissingFile) {
    const support::PrivateFolder folder;
    const support::SystemLogRecorder log;
    std::ofstream(folder.path() / "Info.plist")
        << R"(<?xml version="1.0"?><plist version="1.0"><dict><key>CFBundleName</key>)"
        << R"(<string>Tönvale</string><key>CFBundleShortVersionString</key><integer>7</integer>)"
        << "</dict></plist>";
    const platform::Bundle bundle(folder.path());
    EXPECT_EQ(bundle.name(), "Tönvale");
    EXPECT_EQ(bundle.version(), "") << "a value of the wrong type counts as missing";
    EXPECT_EQ(bundle.plugIns(), folder.path() / "PlugIns");

    for (const char* const content : {"", "no property list", "<plist><array/></plist>"}) {
        std::ofstream(folder.path() / "Info.plist") << content;
        EXPECT_EQ(platform::Bundle(folder.path()).name(), "");
    }
    std::filesystem::create_directories(folder.path() / "strange" / "Info.plist");
    for (const char* const missing : {"absent", "strange"})
        EXPECT_EQ(platform::Bundle(folder.path() / missing).identifier(), "");
    EXPECT_EQ(log.count("Couldn't read the bundle's information"), 5U);
}
