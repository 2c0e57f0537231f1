#include "model/PreferencePublisher.h"

#include "model/AppPreferences.h"
#include "platform/defaults/PropertyList.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/loop/RunLoop.h"
#include "settings/PreferenceKeys.h"

#include <QVariantMap>

#include <algorithm>
#include <utility>

using platform::MonotonicClock;

PreferencePublisher::PreferencePublisher(const platform::UserDefaults& defaults,
                                         std::filesystem::path file,
                                         std::function<void(const NamedSetting&)> learn)
    : defaults_(defaults)
    , file_(std::move(file))
    , learn_(std::move(learn))
    , timer_(*platform::RunLoop::current(), [this] { tell(); }) {}

void PreferencePublisher::begin() {
    tell();
}

void PreferencePublisher::changed() {
    if (timer_.isActive())
        return;
    if (last_ + pace > MonotonicClock::now())
        timer_.startAt(last_ + pace);
    else
        tell();
}

void PreferencePublisher::note(const QString& displayName) {
    const QString key = AppPreferences::keyForDisplayName(displayName);
    news_.insert(key);
    onTheWay_.remove(key);
}

void PreferencePublisher::tell() {
    isDue_ = isWaiting_;
    if (isWaiting_ || !sender_)
        return;
    last_ = MonotonicClock::now();
    onTheWay_ = news_;
    isWaiting_ = sender_(word(), [this](const auto& newer) { answered(newer); });
}

void PreferencePublisher::answered(const std::optional<QList<NamedSetting>>& newer) {
    isWaiting_ = false;
    if (newer) {
        news_.subtract(onTheWay_);
        for (const NamedSetting& setting : *newer) {
            if (!news_.contains(setting.name))
                learn_(setting);
        }
    }
    if (std::exchange(isDue_, false))
        changed();
}

PreferencesMessage PreferencePublisher::word() const {
    QVariantMap preferences;
    for (const QString& key :
         {PreferenceKeys::apps, PreferenceKeys::seenApps, PreferenceKeys::newAppVolume,
          PreferenceKeys::customIgnoredApps, PreferenceKeys::disabledBuiltInIgnoredApps,
          PreferenceKeys::messageLanguage}) {
        if (const QVariant value = defaults_.value(key); value.isValid())
            preferences.insert(key, value);
    }
    return {QString::fromStdString(file_), platform::propertyListXml(preferences), news_.values()};
}
