#include "model/AppPreferences.h"

#include "platform/defaults/PropertyList.h"
#include "settings/PreferenceKeys.h"

#include <cmath>
#include <utility>

using PreferenceKeys::appMute;
using PreferenceKeys::appVolume;

namespace {

bool isNumber(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return std::isfinite(value.toDouble());
    default:
        return false;
    }
}

/// A value that has no meaning is gone, one that has is a number in range, or a boolean.
QVariantMap sound(QVariantMap preferences) {
    if (const QVariant volume = preferences.take(appVolume); isNumber(volume))
        preferences.insert(appVolume, ProgramSetting::clamped(volume.toDouble()));
    if (const QVariant mute = preferences.take(appMute); isNumber(mute))
        preferences.insert(appMute, mute.toBool());
    return preferences;
}

} // namespace

AppPreferences::AppPreferences(const QVariant& stored) {
    if (stored.typeId() != QMetaType::QVariantMap)
        return;
    const QVariantMap apps = stored.toMap();
    for (auto app = apps.begin(); app != apps.end(); ++app) {
        if (app->typeId() != QMetaType::QVariantMap)
            continue;
        if (const auto tidy = tidyAppPref(sound(app->toMap())))
            apps_.insert(apps_.cend(), app.key(), *tidy);
    }
}

float AppPreferences::volume(const QString& displayName) const {
    return preferencesOf(displayName).value(appVolume, ProgramSetting::fullVolume).toFloat();
}

ProgramSetting AppPreferences::setting(const QString& displayName) const {
    return {static_cast<int>(volume(displayName)),
            preferencesOf(displayName).value(appMute).toBool()};
}

bool AppPreferences::contains(const QString& displayName) const {
    return apps_.contains(keyForDisplayName(displayName));
}

void AppPreferences::set(const QString& displayName, const ProgramSetting& setting) {
    setPercent(displayName, setting.percent);
    setMuted(displayName, setting.muted);
}

void AppPreferences::setPercent(const QString& displayName, int percent) {
    set(displayName, appVolume, static_cast<double>(ProgramSetting::clamped(percent)));
}

void AppPreferences::setMuted(const QString& displayName, bool muted) {
    set(displayName, appMute, muted);
}

void AppPreferences::remove(const QString& displayName) {
    apps_.remove(keyForDisplayName(displayName));
}

std::optional<QVariantMap> AppPreferences::tidyAppPref(QVariantMap preferences) {
    if (const auto mute = preferences.constFind(appMute);
        mute != preferences.cend() && !mute->toBool())
        preferences.remove(appMute);
    if (const auto volume = preferences.constFind(appVolume);
        volume != preferences.cend() &&
        static_cast<int>(volume->toDouble()) == ProgramSetting::fullVolume)
        preferences.remove(appVolume);
    if (preferences.isEmpty())
        return std::nullopt;
    return preferences;
}

QString AppPreferences::keyForDisplayName(const QString& displayName) {
    return platform::storableValue(displayName).toString();
}

QVariantMap AppPreferences::preferencesOf(const QString& displayName) const {
    return apps_.value(keyForDisplayName(displayName)).toMap();
}

void AppPreferences::set(const QString& displayName, const QString& key, const QVariant& value) {
    QVariantMap preferences = preferencesOf(displayName);
    preferences.insert(key, value);
    const QString name = keyForDisplayName(displayName);
    if (const auto tidy = tidyAppPref(std::move(preferences)))
        apps_.insert(name, *tidy);
    else
        apps_.remove(name);
}
