#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class MVIgnoredApp;

namespace platform {
class UserDefaults;
}

/// The ignore list: built-in entries, which the user can switch off, and the user's own names.
/// Every change is stored in the preferences at once and announced; the plug-ins are notified when
/// a name is added or a built-in entry is switched off, but not when a name is removed or an entry
/// is switched on again. Main thread only.
class MVIgnoredApps {
  public:
    /// Posted, without an object, by every save.
    inline static const QString didChangeNotification =
        QStringLiteral("MVIgnoredAppsDidChangeNotification");

    /// The list of the process, in the standard preferences; created on first use, never destroyed.
    static MVIgnoredApps& sharedInstance();

    /// Loads the list from `defaults`, which must outlive the object. Values of the wrong type and
    /// unknown entries are ignored, and dropped with the next save.
    explicit MVIgnoredApps(platform::UserDefaults& defaults);
    ~MVIgnoredApps();
    MVIgnoredApps(const MVIgnoredApps&) = delete;
    MVIgnoredApps& operator=(const MVIgnoredApps&) = delete;

    /// All entries, sorted ignoring case. Switching one on or off is a change.
    [[nodiscard]] const std::vector<std::unique_ptr<MVIgnoredApp>>& builtIn() const noexcept {
        return builtIn_;
    }

    /// The user's names: in stored order, sorted from the first addition on. Characters that the
    /// preferences cannot represent are replaced (storableValue()).
    [[nodiscard]] const QStringList& custom() const noexcept { return custom_; }

    /// Whether a process's name, not the displayed one, is an enabled entry or one of the user's
    /// names. Compares the whole text, ignoring case, in any locale.
    [[nodiscard]] bool isAppIgnored(const QString& processName) const;

    /// Ignores a process: switches the built-in entry of its name on again, else adds the name.
    /// Does nothing if it is ignored already. Ignores case.
    void ignore(const QString& processName);

    /// The opposite: removes the name and switches the built-in entry off. False if the process was
    /// not ignored.
    [[nodiscard]] bool unignore(const QString& processName);

    /// Adds a name, also one that is there already.
    void addCustomIgnore(const QString& name);

    /// Removes all names that are exactly this one.
    void removeCustomIgnore(const QString& name);

    /// Stores the list, posts the notification, then notifies the plug-ins if requested. Never
    /// waits for a disk.
    void save(bool tellPlugins);

    /// Sets how save() notifies the plug-ins; null, the default: notifyPlugins(). The preferences
    /// must first be copied to where plug-ins read them, or have failed to. It is called after the
    /// observers of the notification.
    static void setPluginNotifier(std::function<void()> notifier);

    /// Sends all plug-ins the message that the list has changed.
    static void notifyPlugins();

  private:
    MVIgnoredApp* builtInEntry(const QString& name) const;
    void builtInDidChange(const MVIgnoredApp& entry);

    platform::UserDefaults& defaults_;
    std::vector<std::unique_ptr<MVIgnoredApp>> builtIn_;
    QStringList custom_;
};
