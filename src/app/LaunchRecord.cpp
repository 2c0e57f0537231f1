#include "app/LaunchRecord.h"

#include "platform/bundle/Bundle.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/language/MessageLanguages.h"
#include "settings/PreferenceKeys.h"

#include <chrono>
#include <string>

using platform::UserDefaults;

void LaunchRecord::store() {
    constexpr std::chrono::seconds longestSaving{3};
    UserDefaults& defaults = UserDefaults::standard();
    const auto store = [&](const QString& key, const std::string& value) {
        const QString text = QString::fromStdString(value);
        const bool isNew = defaults.text(key) != text;
        if (isNew)
            defaults.set(key, text);
        return isNew;
    };
    bool isNew =
        store(PreferenceKeys::lastLaunchPath, platform::Bundle::main().contents().parent_path());
    isNew |= store(PreferenceKeys::messageLanguage, platform::messageLanguage());
    if (isNew)
        defaults.synchronize(longestSaving);
}
