#pragma once

#include <QSet>
#include <QString>

class AppList;
class AppPreferences;
class MVIgnoredApps;
class PluginCommands;

/// Has programs that become ignored be as if they had never been touched: at full volume, not
/// muted. What is remembered of them stays, for the day when they are not ignored any more. Main
/// thread only.
class NewlyIgnoredApps {
  public:
    /// All must outlive the object.
    NewlyIgnoredApps(const AppPreferences& preferences, const MVIgnoredApps& ignoredApps,
                     PluginCommands& commands)
        : preferences_(preferences), ignoredApps_(ignoredApps), commands_(commands) {}

    /// After the ignored names have changed, and before the records of `list` go.
    void mark(const AppList& list);

    /// Tells the plug-ins about those that were marked. Who is not connected, since the plug-in is
    /// away, waits for that, and for another call.
    void resetConnected(const AppList& list);

  private:
    const AppPreferences& preferences_;
    const MVIgnoredApps& ignoredApps_;
    PluginCommands& commands_;
    QSet<QString> processNames_;
};
