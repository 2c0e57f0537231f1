#include "model/MVIgnoredApps.h"

#include "comm/MVComm.h"
#include "comm/MVCommLogText.h"
#include "comm/MVCommMessages.h"
#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "model/MVIgnoredApp.h"
#include "platform/bus/NotificationCenter.h"
#include "platform/defaults/PropertyList.h"
#include "platform/defaults/UserDefaults.h"
#include "settings/IgnoredNames.h"
#include "settings/PreferenceKeys.h"

#include <algorithm>
#include <utility>

namespace {

std::function<void()>& pluginNotifier() {
    static std::function<void()> notifier;
    return notifier;
}

QStringList builtInNames() {
    QStringList names;
    for (const std::string_view name : builtInIgnoredNames())
        names += QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
    return names;
}

void sortNames(QStringList& names) {
    // Names that differ in case only stay in the order in which they came.
    std::stable_sort(names.begin(), names.end(), [](const QString& one, const QString& other) {
        return QString::compare(one, other, Qt::CaseInsensitive) < 0;
    });
}

/// What the preferences make of a name: a program whose name holds what they cannot stays ignored
/// when they are read again.
QString storableName(const QString& name) {
    return platform::storableValue(name).toString();
}

bool isSameName(const QString& one, const QString& other) {
    return QString::compare(one, other, Qt::CaseInsensitive) == 0;
}

/// The texts of an array; what is none is left out.
QStringList storedNames(const platform::UserDefaults& defaults, const QString& key) {
    QStringList names;
    for (const QVariant& item : defaults.list(key)) {
        if (item.typeId() == QMetaType::QString)
            names += item.toString();
    }
    return names;
}

void storeNames(platform::UserDefaults& defaults, const QString& key, const QStringList& names) {
    if (names.isEmpty())
        defaults.remove(key);
    else
        defaults.set(key, names);
}

} // namespace

MVIgnoredApps& MVIgnoredApps::sharedInstance() {
    static auto& shared = *new MVIgnoredApps(platform::UserDefaults::standard());
    return shared;
}

MVIgnoredApps::MVIgnoredApps(platform::UserDefaults& defaults)
    : defaults_(defaults), custom_(storedNames(defaults, PreferenceKeys::customIgnoredApps)) {
    QStringList names = builtInNames();
    sortNames(names);
    const QStringList disabled = storedNames(defaults, PreferenceKeys::disabledBuiltInIgnoredApps);
    for (const QString& name : std::as_const(names)) {
        auto& entry =
            builtIn_.emplace_back(std::make_unique<MVIgnoredApp>(name, !disabled.contains(name)));
        QObject::connect(entry.get(), &MVIgnoredApp::enabledChanged, entry.get(),
                         [this, &entry = *entry] { builtInDidChange(entry); });
    }
}

MVIgnoredApps::~MVIgnoredApps() = default;

bool MVIgnoredApps::isAppIgnored(const QString& processName) const {
    const QString name = storableName(processName);
    return std::ranges::any_of(builtIn_,
                               [&](const auto& entry) {
                                   return entry->enabled() && isSameName(entry->name(), name);
                               }) ||
           std::ranges::any_of(custom_,
                               [&](const QString& each) { return isSameName(each, name); });
}

MVIgnoredApp* MVIgnoredApps::builtInEntry(const QString& name) const {
    const auto entry = std::ranges::find_if(
        builtIn_, [&](const auto& each) { return isSameName(each->name(), name); });
    return entry != builtIn_.end() ? entry->get() : nullptr;
}

void MVIgnoredApps::ignore(const QString& processName) {
    if (isAppIgnored(processName))
        return;
    if (MVIgnoredApp* const entry = builtInEntry(processName))
        entry->setEnabled(true);
    else
        addCustomIgnore(processName);
}

bool MVIgnoredApps::unignore(const QString& processName) {
    if (!isAppIgnored(processName))
        return false;
    const QStringList names = custom_;
    for (const QString& name : names) {
        if (isSameName(name, storableName(processName)))
            removeCustomIgnore(name);
    }
    if (MVIgnoredApp* const entry = builtInEntry(processName))
        entry->setEnabled(false);
    return true;
}

void MVIgnoredApps::addCustomIgnore(const QString& name) {
    QNLog(qnlog_user, "Added custom '%@'", MVCommLogText(name));
    custom_ += storableName(name);
    sortNames(custom_);
    save(true);
}

void MVIgnoredApps::removeCustomIgnore(const QString& name) {
    QNLog(qnlog_user, "Removed custom '%@'", MVCommLogText(name));
    custom_.removeAll(storableName(name));
    save(false);
}

void MVIgnoredApps::builtInDidChange(const MVIgnoredApp& entry) {
    QNLog(qnlog_user, entry.enabled() ? "Enabled built-in '%@'" : "Disabled built-in '%@'",
          entry.name());
    save(!entry.enabled());
}

void MVIgnoredApps::save(bool tellPlugins) {
    QStringList disabled;
    for (const auto& entry : builtIn_) {
        if (!entry->enabled())
            disabled += entry->name();
    }
    storeNames(defaults_, PreferenceKeys::disabledBuiltInIgnoredApps, disabled);
    storeNames(defaults_, PreferenceKeys::customIgnoredApps, custom_);
    platform::NotificationCenter::standard().post(didChangeNotification);
    if (!tellPlugins)
        return;
    if (const auto notifier = pluginNotifier())
        notifier();
    else
        notifyPlugins();
}

void MVIgnoredApps::setPluginNotifier(std::function<void()> notifier) {
    pluginNotifier() = std::move(notifier);
}

void MVIgnoredApps::notifyPlugins() {
    const MVCommConsoleMessage message{kMVCommIgnoreListChanged, 0, 0, 0};
    MVComm::sharedComm().sendMessage(&message);
}
