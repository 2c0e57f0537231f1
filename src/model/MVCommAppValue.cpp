#include "model/MVCommAppValue.h"

#include "comm/MVCommConnectedProcess.h"
#include "platform/text/Texts.h"
#include "workspace/Workspace.h"

#include <utility>

std::unique_ptr<MVCommAppValue> MVCommAppValue::initWithApp(const MVCommConnectedProcess* app,
                                                            const Workspace& workspace) {
    if (app == nullptr)
        return nullptr;
    return std::unique_ptr<MVCommAppValue>(
        new MVCommAppValue(workspace.iconForProgram({app->pid, app->name, app->path}), false,
                           app->name, app->path, app->pid, app->isAudioDaemon, false));
}

std::unique_ptr<MVCommAppValue> MVCommAppValue::initWithRunningApp(const RunningApplication& app,
                                                                   const Workspace& workspace) {
    const bool isGeneric = app.bundlePath.isEmpty();
    const QString& path = pathOf(app);
    QIcon icon = isGeneric ? workspace.genericApplicationIcon()
                           : workspace.iconForProgram({app.pid, app.localizedName, path});
    return std::unique_ptr<MVCommAppValue>(new MVCommAppValue(
        std::move(icon), isGeneric, app.localizedName, path, app.pid, false, true));
}

const QString& MVCommAppValue::pathOf(const RunningApplication& app) {
    return app.executablePath.isEmpty() ? app.bundlePath : app.executablePath;
}

QString MVCommAppValue::displayNameForProcessName(const QString& name) {
    return name == kMVCommAudioDaemonName ? Texts::tr("Sound Effects") : name;
}

MVCommAppValue::MVCommAppValue(QIcon icon, bool isGeneric, QString processName, QString path,
                               std::uint32_t pid, bool isBeeps, bool isRunningApp)
    : icon_(std::move(icon))
    , isGeneric_(isGeneric)
    , processName_(std::move(processName))
    , path_(std::move(path))
    , pid_(pid)
    , isBeeps_(isBeeps)
    , isRunningApp_(isRunningApp) {}

void MVCommAppValue::setProcess(std::uint32_t pid, const QString& path) {
    pid_ = pid;
    path_ = path;
}

void MVCommAppValue::updateIcon(const Workspace& workspace) {
    QIcon icon = isGeneric_ ? icon_ : workspace.iconForProgram({pid_, processName_, path_});
    if (icon.cacheKey() == icon_.cacheKey())
        return;
    icon_ = std::move(icon);
    Q_EMIT iconChanged();
}

void MVCommAppValue::setVolume(double volume) {
    const bool isAnother = volume < volume_ || volume > volume_;
    if (!isAnother)
        return;
    volume_ = volume;
    Q_EMIT volumeChanged(volume);
}

void MVCommAppValue::setMuted(bool muted) {
    if (muted == muted_)
        return;
    muted_ = muted;
    Q_EMIT mutedChanged(muted);
}

MVCommActivityChange MVCommAppValue::setActivity(qint64 activity) {
    const qint64 previous = activity_;
    if (activity == previous)
        return kMVCommActivityUnchanged;
    activity_ = activity;
    Q_EMIT activityChanged(activity);
    // An observer may have set the next activity already.
    if (const bool hasActivity = activity_ > 0; hasActivity != hasActivity_) {
        hasActivity_ = hasActivity;
        Q_EMIT hasActivityChanged(hasActivity);
    }
    if (activity == 0)
        return kMVCommActivityEnded;
    return previous == 0 ? kMVCommActivityBegan : kMVCommActivityMoved;
}
