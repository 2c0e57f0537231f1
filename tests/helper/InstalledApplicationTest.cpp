#include "helper/InstalledApplication.h"

#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>

namespace fs = std::filesystem;

namespace {

std::string listOf(const std::vector<std::pair<std::string, std::string>>& entries) {
    std::string text = "<plist version=\"1.0\"><dict>";
    for (const auto& [key, value] : entries)
        text.append("<key>").append(key).append("</key><string>").append(value).append("</string>");
    return text + "</dict></plist>";
}

} // namespace

TEST(InstalledApplication, IsTheBundleOfTheLastLaunchIfThatIsOurs) {
    const support::PrivateFolder folder;
    const support::ScopedVariable config("XDG_CONFIG_HOME", folder.path());
    const support::SystemLogRecorder log;
    const fs::path bundle = folder.path() / "Some Tonvale.app";
    const fs::path program = bundle / "Contents/Linux/Tonvale";
    const auto preferences = [&](const std::string& text) {
        std::ofstream(folder.path() / "com.quarnel.Tonvale.plist") << text;
    };
    const auto information = [&](const std::string& text) {
        std::ofstream(bundle / "Contents/Info.plist") << text;
    };
    struct Case {
        const char* what;
        std::function<void()> spoil;
    };
    for (const Case& each :
         {Case{"as it should be", nullptr},
          Case{"no preferences", [&] { fs::remove(folder.path() / "com.quarnel.Tonvale.plist"); }},
          Case{"damaged preferences", [&] { preferences("<plist><dict>"); }},
          Case{"an array", [&] { preferences("<plist><array/></plist>"); }},
          Case{"a relative path",
               [&] {
                   preferences(listOf({{"LastLaunchPath", "Tonvale.app"}}));
               }},
          Case{"gone", [&] { fs::remove_all(bundle); }},
          Case{"without a program", [&] { fs::remove(program); }},
          Case{"no program", [&] { fs::permissions(program, fs::perms::owner_read); }},
          Case{"damaged", [&] { information("<plist>"); }},
          Case{"another's bundle",
               [&] {
                   information(listOf({{"CFBundleIdentifier", "org.example.Other"},
                                       {"CFBundleExecutable", "Tonvale"}}));
               }},
          Case{"a program elsewhere", [&] {
                   information(listOf({{"CFBundleIdentifier", "com.quarnel.Tonvale"},
                                       {"CFBundleExecutable", "../../../../../bin/sh"}}));
               }}}) {
        fs::create_directories(program.parent_path());
        std::ofstream(program) << "#!/bin/sh\n";
        fs::permissions(program, fs::perms::owner_all);
        information(listOf(
            {{"CFBundleIdentifier", "com.quarnel.Tonvale"}, {"CFBundleExecutable", "Tonvale"}}));
        preferences(listOf({{"LastLaunchPath", bundle}, {"MessageLanguage", "de_DE"}}));
        if (each.spoil)
            each.spoil();
        const auto found = InstalledApplication::program();
        EXPECT_EQ(found.value_or(""), each.spoil ? fs::path() : program) << each.what;
        fs::remove_all(bundle);
    }
    EXPECT_EQ(InstalledApplication::language(), "de_DE");
}
