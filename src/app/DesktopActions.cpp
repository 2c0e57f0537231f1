#include "app/DesktopActions.h"

#include "model/AppVolumeController.h"
#include "model/MVCommAppValue.h"
#include "platform/bus/SingleInstance.h"
#include "platform/loop/RunLoop.h"
#include "platform/window/WindowFront.h"
#include "remote/ControlLog.h"

#include <chrono>
#include <utility>

namespace {

const QString preferences = QStringLiteral("preferences");
const QString muteAll = QStringLiteral("mute-all");

/// Until the programs that play have connected and told their levels.
constexpr std::chrono::milliseconds firstLevels{2000};

} // namespace

DesktopActions::DesktopActions(Dependencies dependencies)
    : dependencies_(std::move(dependencies))
    , muting_(*platform::RunLoop::current(), [this] { muteWhatPlays(); }) {}

void DesktopActions::serve(platform::SingleInstance& instance) {
    instance.onActivation(dependencies_.showWindow);
    instance.onAction([this](const QString& action, const QString& token) {
        platform::useActivationToken(token);
        return perform(action);
    });
}

bool DesktopActions::perform(const QString& action) {
    if (action == preferences)
        dependencies_.showPreferences();
    else if (action == muteAll)
        muteWhatPlays();
    else
        return false;
    return true;
}

void DesktopActions::performAtStart(const QString& action) {
    if (action == muteAll)
        muting_.start(firstLevels);
    else
        perform(action);
}

void DesktopActions::muteWhatPlays() {
    dependencies_.controller.catchUp();
    const QList<MVCommAppValue*> apps = dependencies_.controller.apps();
    for (MVCommAppValue* const app : apps) {
        if (!app->hasActivity() || app->muted() ||
            !dependencies_.controller.reasonNotControllable(*app).isEmpty())
            continue;
        dependencies_.controller.setMuted(*app, true);
        ControlLog::muted(app->displayName(), true);
    }
}
