#include "model/SeenApps.h"

#include "model/AppPreferences.h"
#include "platform/defaults/UserDefaults.h"
#include "settings/PreferenceKeys.h"

namespace {

constexpr qsizetype bound = 2000;

} // namespace

SeenApps::SeenApps(platform::UserDefaults& defaults) : defaults_(defaults) {
    for (const QVariant& item : defaults.list(PreferenceKeys::seenApps)) {
        if (item.typeId() == QMetaType::QString && !known_.contains(item.toString())) {
            names_.append(item.toString());
            known_.insert(names_.constLast());
        }
    }
}

bool SeenApps::contains(const QString& displayName) const {
    return known_.contains(AppPreferences::keyForDisplayName(displayName));
}

bool SeenApps::add(const QStringList& displayNames) {
    bool isNew = false;
    for (const QString& displayName : displayNames) {
        const QString name = AppPreferences::keyForDisplayName(displayName);
        if (known_.contains(name))
            continue;
        known_.insert(name);
        names_.append(name);
        isNew = true;
    }
    while (names_.size() > bound)
        known_.remove(names_.takeFirst());
    if (isNew)
        store();
    return isNew;
}

bool SeenApps::remove(const QString& displayName) {
    const QString name = AppPreferences::keyForDisplayName(displayName);
    if (!known_.remove(name))
        return false;
    names_.removeAll(name);
    store();
    return true;
}

std::optional<int> SeenApps::defaultVolume() const {
    const QVariant value = defaults_.value(PreferenceKeys::newAppVolume);
    switch (value.typeId()) {
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return static_cast<int>(ProgramSetting::clamped(value.toDouble()));
    default:
        return std::nullopt;
    }
}

void SeenApps::setDefaultVolume(std::optional<int> percent) {
    if (percent)
        defaults_.set(PreferenceKeys::newAppVolume, ProgramSetting::clamped(*percent));
    else
        defaults_.remove(PreferenceKeys::newAppVolume);
}

void SeenApps::store() {
    if (names_.isEmpty())
        defaults_.remove(PreferenceKeys::seenApps);
    else
        defaults_.set(PreferenceKeys::seenApps, names_);
}
