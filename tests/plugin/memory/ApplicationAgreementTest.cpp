#include "model/AppPreferences.h"
#include "model/MVCommAppValue.h"
#include "model/MVIgnoredApps.h"
#include "platform/defaults/PropertyList.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/plist/StorableText.h"
#include "plugin/memory/Preferences.h"
#include "settings/PreferenceKeys.h"

#include <gtest/gtest.h>

#include <set>

// The application writes the preferences and the plug-in reads them, each with code of its own:
// both must understand the same.
namespace {

QString textOf(char32_t character) {
    return QString::fromUcs4(&character, 1);
}

std::vector<char32_t> allCharacters() {
    std::vector<char32_t> all;
    for (char32_t character = 1; character <= QChar::LastValidCodePoint; ++character) {
        if (!QChar::isSurrogate(character))
            all.push_back(character);
    }
    return all;
}

QString keyAtApplication(const QString& name) {
    return AppPreferences::keyForDisplayName(MVCommAppValue::displayNameForProcessName(name));
}

} // namespace

TEST(ApplicationAgreement, AProgramHasTheSameKeyWhateverItsName) {
    for (const char32_t character : allCharacters()) {
        if (character == U'\uFEFF') // no name begins with it
            continue;
        const std::string name = textOf(character).toStdString() + "z";
        EXPECT_EQ(settingsKey(name), keyAtApplication(QString::fromStdString(name)).toStdString())
            << static_cast<unsigned>(character);
    }
    for (const char* const name : {"coreaudiod", "Coreaudiod", "coreaudiod (program)", "", " "})
        EXPECT_EQ(settingsKey(name), keyAtApplication(name).toStdString()) << name;
    EXPECT_EQ(checkinNameOfKey(settingsKey("coreaudiod")), "coreaudiod");
}

TEST(ApplicationAgreement, BothReadTheSameSettingsAndTakeNonsenseForMissing) {
    struct Case {
        const char* entry;
        ProgramSetting expected;
    };
    for (const auto& [entry, expected] : {
             Case{"<dict><key>Volume</key><real>40</real><key>Mute</key><true/></dict>",
                  {40, true}},
             Case{"<dict><key>Volume</key><integer>40</integer></dict>", {40, false}},
             Case{"<dict><key>Volume</key><real>40.9</real></dict>", {40, false}},
             Case{"<dict><key>Volume</key><real>99.99999999</real></dict>", {100, false}},
             Case{"<dict><key>Volume</key><real>28.999999999999996</real></dict>", {29, false}},
             Case{"<dict><key>Volume</key><real>nan</real></dict>", {100, false}},
             Case{"<dict><key>Volume</key><real>-1e300</real></dict>", {0, false}},
             Case{"<dict><key>Volume</key><real>1e300</real></dict>", {100, false}},
             Case{"<dict><key>Volume</key><integer>-3</integer></dict>", {0, false}},
             Case{"<dict><key>Volume</key><integer>18446744073709551615</integer></dict>",
                  {100, false}},
             Case{"<dict><key>Volume</key><true/></dict>", {1, false}},
             Case{"<dict><key>Volume</key><string>40</string></dict>", {100, false}},
             Case{"<dict><key>Volume</key><dict/><key>Mute</key><array/></dict>", {100, false}},
             Case{"<dict><key>Mute</key><real>0.5</real></dict>", {100, true}},
             Case{"<dict><key>Mute</key><real>nan</real></dict>", {100, false}},
             Case{"<dict><key>Mute</key><integer>1</integer></dict>", {100, true}},
             Case{"<dict><key>Mute</key><integer>0</integer></dict>", {100, false}},
             Case{"<dict><key>Mute</key><string>YES</string></dict>", {100, false}},
             Case{"<array><real>40</real></array>", {100, false}},
             Case{"<true/>", {100, false}},
         }) {
        const std::string xml =
            std::string(R"(<plist version="1.0"><dict><key>Apps</key><dict><key>player</key>)") +
            entry + "<key>other</key><dict><key>Mute</key><true/></dict></dict></dict></plist>";
        const auto read = parsePreferences(xml);
        ASSERT_TRUE(read) << entry;
        const auto found = read->programs.find("player");
        EXPECT_EQ(found != read->programs.end() ? found->second : ProgramSetting{}, expected)
            << entry;
        const AppPreferences application(
            platform::parsePropertyList(QByteArray::fromStdString(xml)).value().toMap()["Apps"]);
        EXPECT_EQ(application.setting("player"), expected) << entry;
        EXPECT_TRUE(read->programs.contains("other") && application.setting("other").muted)
            << entry;
    }
}

TEST(ApplicationAgreement, BothIgnoreTheSameNamesWhateverTheirCase) {
    platform::UserDefaults defaults{{}};
    int compared = 0;
    for (const char32_t character : allCharacters()) {
        const std::set<char32_t> others{QChar::toUpper(character), QChar::toLower(character),
                                        QChar::toCaseFolded(character)};
        if (others.size() == 1 && platform::isStorableCharacter(character))
            continue;
        const QString name = textOf(character);
        defaults.set(PreferenceKeys::customIgnoredApps, QStringList{name});
        const MVIgnoredApps application(defaults);
        const QString stored = defaults.list(PreferenceKeys::customIgnoredApps).first().toString();
        const IgnoredNames plugin{{stored.toStdString()}, {}};
        for (const char32_t other : others) {
            EXPECT_EQ(plugin.contains(textOf(other).toStdString()),
                      application.isAppIgnored(textOf(other)))
                << static_cast<unsigned>(character) << " " << static_cast<unsigned>(other);
            ++compared;
        }
    }
    EXPECT_GT(compared, 2000);
}
