#include "model/NewApps.h"

#include "model/AppList.h"
#include "model/AppPreferences.h"
#include "model/MVCommAppValue.h"
#include "model/SeenApps.h"
#include "naming/ApplicationName.h"

#include <utility>

QList<MVCommAppValue*> NewApps::take(const AppList& list) {
    QSet<QString> connected;
    QList<MVCommAppValue*> arrived;
    QStringList names;
    for (MVCommAppValue* const app : list.apps()) {
        if (app->isBeeps() || list.connectedPids(app->processName()).isEmpty())
            continue;
        connected.insert(app->processName());
        if (!connected_.contains(app->processName()) && !seen_.contains(app->displayName())) {
            arrived.append(app);
            names.append(app->displayName());
        }
    }
    connected_ = std::move(connected);
    seen_.add(names);
    return arrived;
}

std::optional<ProgramSetting> NewApps::beginning(const AppList& list,
                                                 const MVCommAppValue& app) const {
    if (preferences_.contains(app.displayName()))
        return std::nullopt;
    const QString former = formerName(list, app);
    if (!former.isEmpty() && preferences_.contains(former))
        return preferences_.setting(former);
    const auto percent = seen_.defaultVolume();
    return percent ? std::optional(ProgramSetting{*percent, false}) : std::nullopt;
}

QStringList
NewApps::ignoredByFormerName(const AppList& list,
                             const std::function<bool(const QString&)>& isIgnored) const {
    QStringList processNames;
    for (const MVCommAppValue* const app : list.apps()) {
        const QString& name = app->displayName();
        if (app->isBeeps() || seen_.contains(name) || preferences_.contains(name))
            continue;
        if (const QString former = formerName(list, *app); !former.isEmpty() && isIgnored(former))
            processNames.append(app->processName());
    }
    return processNames;
}

QString NewApps::formerName(const AppList& list, const MVCommAppValue& app) {
    const std::string path = list.connectedPath(app.processName()).toStdString();
    return QString::fromStdString(::formerName(path));
}
