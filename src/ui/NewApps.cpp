#include "ui/NewApps.h"

#include "comm/MVCommAppValue.h"
#include "ui/AppList.h"
#include "ui/SeenApps.h"

#include <QStringList>

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
