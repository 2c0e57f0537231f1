#include "model/AppPreferences.h"

#include "platform/defaults/UserDefaults.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

namespace {

QVariantMap tidied(const QVariantMap& preferences) {
    return AppPreferences::tidyAppPref(preferences).value_or(QVariantMap{{"nothing", true}});
}

} // namespace

TEST(AppPreferences, OnlyWhatDiffersFromFullVolumeAndUnmutedIsKept) {
    const QVariantMap nothing{{"nothing", true}};
    EXPECT_EQ(tidied({{"Volume", 100.0}, {"Mute", false}}), nothing);
    EXPECT_EQ(tidied({{"Volume", 100.9}}), nothing) << "its integer value counts";
    EXPECT_EQ(tidied({}), nothing);
    EXPECT_EQ(tidied({{"Volume", 99.9}, {"Mute", false}}), (QVariantMap{{"Volume", 99.9}}));
    EXPECT_EQ(tidied({{"Volume", 100.0}, {"Mute", true}}), (QVariantMap{{"Mute", true}}));
    EXPECT_EQ(tidied({{"Volume", 0.0}}), (QVariantMap{{"Volume", 0.0}}));
    EXPECT_EQ(tidied({{"Color", 1}}), (QVariantMap{{"Color", 1}})) << "not ours to remove";
}

TEST(AppPreferences, AreTidyAfterEachChange) {
    AppPreferences preferences;
    EXPECT_EQ(preferences.setting("player").percent, 100);
    EXPECT_FALSE(preferences.setting("player").muted);
    preferences.setPercent("player", 99);
    preferences.setMuted("other", true);
    EXPECT_EQ(preferences.dictionary(), (QVariantMap{{"player", QVariantMap{{"Volume", 99.0}}},
                                                     {"other", QVariantMap{{"Mute", true}}}}));
    EXPECT_EQ(preferences.dictionary()["player"].toMap()["Volume"].typeId(), QMetaType::Double);
    EXPECT_EQ(preferences.setting("player").percent, 99);
    EXPECT_EQ(preferences.setting("Player").percent, 100) << "names are exact";
    preferences.setPercent("player", 100);
    preferences.setMuted("other", false);
    EXPECT_TRUE(preferences.dictionary().isEmpty());
    preferences.setPercent("player", -5);
    EXPECT_EQ(preferences.setting("player").percent, 0);
}

TEST(AppPreferences, WhatIsMalformedCountsAsNotThere) {
    for (const QVariant& stored :
         {QVariant(), QVariant("text"), QVariant(5), QVariant(QVariantList{1, 2}), QVariant(true)})
        EXPECT_TRUE(AppPreferences(stored).dictionary().isEmpty());
    const QVariantMap stored{
        {"text", "50"},
        {"list", QVariantList{50}},
        {"volume of text", QVariantMap{{"Volume", "50"}, {"Mute", true}}},
        {"mute of text", QVariantMap{{"Volume", 50LL}, {"Mute", "YES"}}},
        {"numbers", QVariantMap{{"Volume", 12.75}, {"Mute", 1LL}}},
        {"below", QVariantMap{{"Volume", -1e300}}},
        {"above", QVariantMap{{"Volume", 1e300}, {"Mute", true}}},
        {"infinite", QVariantMap{{"Volume", qInf()}}},
        {"untidy", QVariantMap{{"Volume", 100LL}, {"Mute", false}}},
        {"unknown", QVariantMap{{"Color", "red"}, {"Volume", QVariantMap()}}},
    };
    const AppPreferences preferences(stored);
    const QVariantMap expected{
        {"volume of text", QVariantMap{{"Mute", true}}},
        {"mute of text", QVariantMap{{"Volume", 50.0}}},
        {"numbers", QVariantMap{{"Volume", 12.75}, {"Mute", true}}},
        {"below", QVariantMap{{"Volume", 0.0}}},
        {"above", QVariantMap{{"Mute", true}}},
        {"unknown", QVariantMap{{"Color", "red"}}},
    };
    EXPECT_EQ(preferences.dictionary(), expected);
    EXPECT_EQ(preferences.setting("numbers").percent, 12);
    EXPECT_FLOAT_EQ(preferences.volume("numbers"), 12.75F);
    EXPECT_EQ(preferences.setting("below").percent, 0);
    EXPECT_EQ(preferences.setting("above").percent, 100);
}

TEST(AppPreferences, AnyNameIsFoundAgainInTheFile) {
    const support::PrivateFolder folder;
    const auto path = folder.path() / "preferences.plist";
    const QStringList names{QString("a\x01") + "b\x1f",
                            "two\nlines",
                            "\u202egnp.exe",
                            "   ",
                            " ",
                            "\t",
                            "a\rb",
                            "a\r\nb",
                            "<key> & \"'",
                            "",
                            QString(QChar(0xD800)) + "x",
                            QString(QChar(0xFFFF)),
                            QString(10000, QChar('n')),
                            "Größe 🎵"};
    AppPreferences preferences;
    for (int i = 0; i < names.size(); ++i)
        preferences.setPercent(names[i], i);
    {
        platform::UserDefaults defaults(path);
        defaults.set("Apps", preferences.dictionary());
    }
    const platform::UserDefaults defaults(path);
    const AppPreferences read(defaults.value("Apps"));
    for (int i = 0; i < names.size(); ++i)
        EXPECT_EQ(read.setting(names[i]).percent, i) << i << " " << names[i].left(20).toStdString();
}
