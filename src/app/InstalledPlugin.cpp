#include "app/InstalledPlugin.h"

#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/text/Format.h"
#include "settings/PreferenceKeys.h"

#include <QEventLoop>

#include <memory>
#include <utility>

using platform::UserService;

InstalledPlugin::InstalledPlugin(SystemCalls system, QString bundle,
                                 platform::UserDefaults& defaults)
    : system_(std::move(system)), bundle_(std::move(bundle)), defaults_(defaults) {}

void InstalledPlugin::run(bool isReplaced) {
    if (!system_.isInstalled())
        return; // the window tells
    if (isReplaced)
        system_.end();
    system_.askService([this](const UserService::State& state) {
        if (state.hasManager())
            runAsService(state);
        else
            runAsLoginItem();
    });
}

void InstalledPlugin::runAsService(const UserService::State& state) {
    if (state.isMasked()) {
        QNLog(qnlog_user, "The plug-in's service is masked");
        return;
    }
    if (state.isOutdated) {
        system_.reloadServices([this](const QString& error) { startAfter("reload", error); });
        return;
    }
    if (state.isInstalled || defaults_.boolean(PreferenceKeys::pluginIsSetUp)) {
        startUnlessItRuns();
        return;
    }
    system_.enableService(bundle_ + QStringLiteral("/Contents/Resources/tonvale-plugin.service"),
                          [this](const QString& error) {
                              if (error.isEmpty())
                                  defaults_.set(PreferenceKeys::pluginIsSetUp, true);
                              startAfter("enable", error);
                          });
}

void InstalledPlugin::startAfter(const char* attempt, const QString& error) {
    if (!error.isEmpty())
        QNLog(qnlog_error, "Couldn't %s the plug-in's service: %@", attempt, error);
    startUnlessItRuns();
}

void InstalledPlugin::runAsLoginItem() {
    if (!defaults_.boolean(PreferenceKeys::pluginIsSetUp) && system_.setLoginItem(true))
        defaults_.set(PreferenceKeys::pluginIsSetUp, true);
    startUnlessItRuns();
}

void InstalledPlugin::startUnlessItRuns() {
    if (!system_.isRunning())
        system_.start();
}

void InstalledPlugin::remove() {
    // The answer may come after a wait that the end of the program has cut short.
    const auto untilDone = std::make_shared<QEventLoop>();
    system_.removeService([untilDone](const QString& error) {
        if (!error.isEmpty()) // also without a manager
            QNLog(qnlog_debug, "Couldn't remove the plug-in's service: %@", error);
        untilDone->quit();
    });
    untilDone->exec();
    system_.setLoginItem(false);
    defaults_.remove(PreferenceKeys::pluginIsSetUp);
    system_.end();
}
