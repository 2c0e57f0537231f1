#include "app/MenuBarPreferences.h"

#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "platform/bus/DistributedNotification.h"
#include "settings/PreferenceKeys.h"

#include <QSaveFile>

#include <filesystem>
#include <system_error>
#include <utility>

namespace {

constexpr const char* notification = "com.quarnel.Tonvale.HelperUpdateMenuBarIcon";

} // namespace

MenuBarPreferences::Dependencies MenuBarPreferences::sharedDependencies() {
    const QString folder = QNApplication::current()->applicationSupportPath();
    return {platform::UserDefaults::standard(),
            folder.isEmpty() ? QString() : folder + QStringLiteral("/UseColorMenuBarIcon"),
            {},
            [](const QString& name) { platform::postDistributedNotification(name); }};
}

MenuBarPreferences::MenuBarPreferences(Dependencies dependencies)
    : dependencies_(std::move(dependencies))
    , shownObservation_(dependencies_.defaults.observe(PreferenceKeys::showInMenuBar,
                                                       [this] { showInMenuBarChanged(); }))
    , colorObservation_(dependencies_.defaults.observe(PreferenceKeys::useColorMenuBarIcon,
                                                       [this] { useColorIconChanged(); })) {}

void MenuBarPreferences::updateTNHelperPref(const Dependencies& dependencies) {
    const bool isColor = dependencies.defaults.boolean(PreferenceKeys::useColorMenuBarIcon);
    QSaveFile file(dependencies.iconFile);
    if (!file.open(QIODevice::WriteOnly) || file.write(isColor ? "1" : "0") != 1 || !file.commit())
        QNLog(qnlog_error, "Can't write pref file: %@", file.errorString());
}

void MenuBarPreferences::removeTNHelperPref(const Dependencies& dependencies) {
    const std::filesystem::path file = dependencies.iconFile.toStdString();
    std::error_code error;
    std::filesystem::remove(file, error);
    if (error)
        QNLog(qnlog_error, "Can't remove pref file: %@", error.message());
    else
        std::filesystem::remove(file.parent_path(), error);
}

void MenuBarPreferences::showInMenuBarChanged() {
    const bool isShown = dependencies_.defaults.boolean(PreferenceKeys::showInMenuBar);
    QNLog(qnlog_user, "%@ \"Show in menu bar\"", isShown ? "Checked" : "Unchecked");
    dependencies_.showHelper(isShown);
}

/// Observers are told later than the change, so the file is written now.
void MenuBarPreferences::useColorIconChanged() {
    const bool isColor = dependencies_.defaults.boolean(PreferenceKeys::useColorMenuBarIcon);
    QNLog(qnlog_user, "%@ icon set", isColor ? "Color" : "Grayscale");
    updateTNHelperPref(dependencies_);
    dependencies_.post(QLatin1String(notification));
}
