#pragma once

#include "platform/defaults/DefaultsFileCalls.h"

#include <QString>
#include <QVariant>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace platform {

class DefaultsObservation;
class DefaultsStore;

/// What has gone wrong with the file of user defaults.
struct DefaultsError {
    enum class Kind {
        unsaved,  ///< what is set is kept in memory only, for now
        lost,     ///< the file was damaged when it was read first, so nothing is set
        restored, ///< it was damaged later; what was known of it is written again
    };

    Kind kind;
    std::string line;      ///< for the log
    std::string file = {}; ///< the path in the line, if any; of a damaged file its new one
};

/// What a person has set, and what holds where nothing has been set. Values lie under keys in a
/// property list that other programs may read and change too. A value that is set is seen at once
/// in all of this process; it is in the file within a second, and at once with synchronize(), which
/// has to be the program's last word. Only what was set here is written; keys that another program
/// changes, and keys that nobody here knows, stay as the file has them. What cannot be saved is
/// kept in memory and tried again; that is told once.
///
/// Values are those of PropertyList.h, keys text that XML can hold. Any thread, and none but
/// synchronize(), constructor and destructor waits for a disk.
class UserDefaults {
  public:
    /// Those of the program, in com.quarnel.Tonvale.plist in the user's folder of preferences. Read
    /// on the first call, and never destroyed.
    static UserDefaults& standard();

    /// The path of that file; empty when there is no such folder.
    static std::filesystem::path standardPath();

    /// Who is told of trouble; null: the system log. Called on any thread, and must not call back.
    /// Set it before standard() is asked for, or what that finds at first goes to the system log.
    static void setReporter(std::function<void(const DefaultsError& trouble)> reporter);

    /// Reads the file at `path`, which is absolute. With an empty path, values are in memory only.
    /// `calls` must outlive the object.
    explicit UserDefaults(const std::filesystem::path& path,
                          DefaultsFileCalls& calls = DefaultsFileCalls::system());

    /// Saves what is not saved.
    ~UserDefaults();
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

    /// What a key has where nothing is set. Adds to what was registered before.
    void registerDefaults(const QVariantMap& values);

    /// The value of a key as it is: set, else registered, else invalid.
    QVariant value(const QString& key) const;

    /// The value of a key in the wanted type. One that is set and has no meaning in that type
    /// counts as not set; where nothing is left it is false, 0 or empty. Booleans and numbers stand
    /// for each other, text for what it spells: "YES", "true", "1", "-2.5".
    bool boolean(const QString& key) const;
    qlonglong integer(const QString& key) const; ///< fractions are cut off
    double number(const QString& key) const;     ///< finite
    QString text(const QString& key) const;
    QVariantMap dictionary(const QString& key) const;
    QVariantList list(const QString& key) const;

    /// Sets a value, or what storableValue() leaves of it; with nothing left it is remove().
    void set(const QString& key, const QVariant& value);

    /// Has the key be as registered.
    void remove(const QString& key);

    /// Calls `handler` on the main thread, never from within the change itself, after value(key)
    /// has become another, here or in the file; not once for each step when changes come fast.
    [[nodiscard]] DefaultsObservation observe(const QString& key, std::function<void()> handler);

    /// Saves what is set and takes over what other programs have changed. When it returns true, all
    /// that was set before is in the file and outlives a crash of the machine.
    bool synchronize();

    /// The same, but waits no longer than `bound`: a disk may hang. When that is over, it is told
    /// (setReporter), the answer is false, and saving goes on.
    bool synchronize(std::chrono::milliseconds bound);

    /// Whether the last save failed because the disk is full. Then the next one is tried within a
    /// second.
    bool lacksRoom() const;

  private:
    const std::shared_ptr<DefaultsStore> store_;
};

/// Ends an observation when it goes: on the main thread, no call comes afterwards. May outlive the
/// defaults.
class DefaultsObservation {
  public:
    DefaultsObservation() noexcept = default;
    explicit DefaultsObservation(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
    ~DefaultsObservation();
    DefaultsObservation(DefaultsObservation&& other) noexcept;
    DefaultsObservation& operator=(DefaultsObservation&& other) noexcept;

  private:
    std::function<void()> cancel_;
};

} // namespace platform
