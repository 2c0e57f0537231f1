#include "plugin/memory/Preferences.h"

#include "comm/MVCommMessages.h"
#include "platform/plist/PropertyListNode.h"
#include "platform/plist/PropertyListValues.h"
#include "platform/plist/StorableText.h"

namespace {

/// The displayed name of the notification sounds, which is their key. The application translates
/// it; so would we.
constexpr std::string_view notificationSoundsTitle = "Sound Effects";

std::optional<int> percentIn(void* dictionary, const char* key) {
    void* const entry = platform::entryOf(dictionary, key);
    const auto percent = entry != nullptr ? platform::numberOf(entry) : std::nullopt;
    if (!percent)
        return std::nullopt;
    return static_cast<int>(static_cast<float>(ProgramSetting::clamped(*percent)));
}

ProgramSetting settingIn(void* dictionary) {
    ProgramSetting setting;
    if (const auto percent = percentIn(dictionary, "Volume"))
        setting.percent = *percent;
    void* const mute = platform::entryOf(dictionary, "Mute");
    if (const auto muted = mute != nullptr ? platform::numberOf(mute) : std::nullopt)
        setting.muted = *muted != 0;
    return setting;
}

std::vector<std::string> textsIn(void* dictionary, const char* key) {
    std::vector<std::string> texts;
    if (void* const list = platform::entryOf(dictionary, key)) {
        platform::forEachItem(list, [&texts](void* item) {
            if (auto text = platform::textOf(item))
                texts.push_back(*std::move(text));
        });
    }
    return texts;
}

} // namespace

WantedVolume wantedBy(const ProgramSetting& setting) noexcept {
    return {gainOfPercent(setting.percent), setting.muted};
}

ProgramSetting settingOf(const WantedVolume& wanted) noexcept {
    return {wanted.percent().value_or(ProgramSetting::fullVolume), wanted.muted.value_or(false)};
}

ProgramSetting Preferences::settingOfUnset(const std::string& key,
                                           const std::string& formerKey) const {
    if (seen.contains(key))
        return {};
    if (const auto found = programs.find(formerKey); found != programs.end() && !formerKey.empty())
        return found->second;
    return forNew ? ProgramSetting{*forNew, false} : ProgramSetting{};
}

bool Preferences::isIgnored(std::string_view name, std::string_view former) const {
    if (ignored.contains(name))
        return true;
    const std::string key = settingsKey(name);
    return !former.empty() && !seen.contains(key) && !programs.contains(key) &&
           ignored.contains(former);
}

std::optional<Preferences> parsePreferences(std::string_view bytes) {
    const platform::PropertyListNode root = platform::readPropertyList(bytes);
    if (root == nullptr || !platform::isDictionary(root.get()))
        return std::nullopt;
    Preferences preferences;
    preferences.written = true;
    void* const apps = platform::entryOf(root.get(), "Apps");
    if (apps != nullptr && platform::isDictionary(apps)) {
        platform::forEachEntry(apps, [&preferences](const char* key, void* value) {
            if (const ProgramSetting setting = settingIn(value); !setting.isPlain())
                preferences.programs[platform::storableText(key)] = setting;
        });
    }
    if (void* const language = platform::entryOf(root.get(), "MessageLanguage"))
        preferences.language = platform::textOf(language).value_or("");
    for (const std::string& name : textsIn(root.get(), "SeenApps"))
        preferences.seen.insert(platform::storableText(name));
    preferences.forNew = percentIn(root.get(), "NewAppVolume");
    preferences.ignored.custom = textsIn(root.get(), "CustomIgnoredApps");
    preferences.ignored.disabledBuiltIn = textsIn(root.get(), "DisabledBuiltInIgnoredApps");
    return preferences;
}

std::string settingsKey(std::string_view name) {
    return name == kMVCommNotificationSoundsName ? std::string(notificationSoundsTitle)
                                                 : platform::storableText(name);
}

std::string_view checkinNameOfKey(std::string_view key) noexcept {
    return key == notificationSoundsTitle ? kMVCommNotificationSoundsName : key;
}
