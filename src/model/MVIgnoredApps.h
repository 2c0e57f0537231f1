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

/// The processes that never get an item: a built-in list, of which a person can switch entries off,
/// and the person's own names. Every change is kept in the preferences at once and announced; the
/// plug-ins are told when a name is added or a built-in entry is switched off, and not when a name
/// is removed or an entry is switched on again. Main thread only.
class MVIgnoredApps {
  public:
    /// Posted, without an object, by every save.
    inline static const QString didChangeNotification =
        QStringLiteral("MVIgnoredAppsDidChangeNotification");

    /// The one of the process, on the standard preferences; made on first use, never destroyed.
    static MVIgnoredApps& sharedInstance();

    /// Takes over what `defaults`, which must outlive the object, hold. What is of another type
    /// there, or names no entry, counts as not there and goes with the next save.
    explicit MVIgnoredApps(platform::UserDefaults& defaults);
    ~MVIgnoredApps();
    MVIgnoredApps(const MVIgnoredApps&) = delete;
    MVIgnoredApps& operator=(const MVIgnoredApps&) = delete;

    /// All entries, sorted without regard to case. Switching one on or off is a change.
    const std::vector<std::unique_ptr<MVIgnoredApp>>& builtIn() const noexcept { return builtIn_; }

    /// The person's names: as they were stored, from the first addition on sorted like the others.
    /// What the preferences cannot hold of a name is replaced in all of them (storableValue()).
    const QStringList& custom() const noexcept { return custom_; }

    /// Whether a process's name, not what is displayed, is an enabled entry or one of the person's
    /// names. The whole text counts, its case does not, in any locale.
    bool isAppIgnored(const QString& processName) const;

    /// Ignores a process by whatever it takes: switches the built-in entry of its name on again,
    /// else adds the name. Does nothing when it is ignored already. Case does not count.
    void ignore(const QString& processName);

    /// The opposite: removes the name and switches the built-in entry off. False when the process
    /// was not ignored.
    bool unignore(const QString& processName);

    /// Adds a name, also one that is there already.
    void addCustomIgnore(const QString& name);

    /// Removes all names that are exactly this one.
    void removeCustomIgnore(const QString& name);

    /// Stores the list, posts the notification, then has the plug-ins told if that is asked for.
    /// Never waits for a disk.
    void save(bool tellPlugins);

    /// How save() has the plug-ins told; null: notifyPlugins(), as in the beginning. For who writes
    /// the preferences to where plug-ins read them: they must lie there, or have failed to, before
    /// the plug-ins look. It gets its turn after the observers of the notification.
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
