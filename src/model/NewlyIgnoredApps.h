#pragma once

#include <QSet>
#include <QString>

class AppList;
class AppPreferences;
class MVIgnoredApps;
class PluginCommands;

/// Resets programs that become ignored to full volume, not muted. Their stored settings are kept
/// for the time when they are no longer ignored. Main thread only.
class NewlyIgnoredApps {
  public:
    /// All must outlive the object.
    NewlyIgnoredApps(const AppPreferences& preferences, const MVIgnoredApps& ignoredApps,
                     PluginCommands& commands)
        : preferences_(preferences), ignoredApps_(ignoredApps), commands_(commands) {}

    /// Call this after the ignored names have changed, and before the records are removed from
    /// `list`.
    void mark(const AppList& list);

    /// Sends the reset of the marked programs to the plug-ins. Programs that are not connected,
    /// since no plug-in is running, stay marked for a later call.
    void resetConnected(const AppList& list);

  private:
    const AppPreferences& preferences_;
    const MVIgnoredApps& ignoredApps_;
    PluginCommands& commands_;
    QSet<QString> processNames_;
};
