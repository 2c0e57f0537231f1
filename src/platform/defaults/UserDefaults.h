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

/// An error with the file of user defaults.
struct DefaultsError {
    enum class Kind {
        unsaved,  ///< changes are kept in memory only, for now
        lost,     ///< the file was damaged when it was first read, so nothing is set
        restored, ///< it was damaged later; the last known content is written again
    };

    Kind kind;
    std::string line;      ///< for the log
    std::string file = {}; ///< the path in the line, if any; of a damaged file its new one
};

/// The user's settings, with registered defaults. Values are stored under keys in a property list
/// that other programs may read and change too. A new value is visible at once in this process; it
/// is in the file within a second, or at once after synchronize(), which the program must call
/// before it ends. Only keys that were set here are written; keys that another program changes, and
/// unknown keys, stay as the file has them. If saving fails, the values are kept in memory and
/// saving is retried; this is reported once.
///
/// Values are those of PropertyList.h, keys text that XML can hold. Any thread, and none but
/// synchronize(), constructor and destructor waits for a disk.
class UserDefaults {
  public:
    /// The program's defaults, in com.quarnel.Tonvale.plist in the user's preferences folder. Read
    /// on the first call, and never destroyed.
    static UserDefaults& standard();

    /// The path of that file; empty when there is no such folder.
    static std::filesystem::path standardPath();

    /// Sets the handler for errors; null: the system log. It is called on any thread, and must not
    /// call back. Set it before the first call of standard(), or errors of the first reading go to
    /// the system log.
    static void setReporter(std::function<void(const DefaultsError& trouble)> reporter);

    /// Reads the file at `path`, which is absolute. With an empty path, values are in memory only.
    /// `calls` must outlive the object.
    explicit UserDefaults(const std::filesystem::path& path,
                          DefaultsFileCalls& calls = DefaultsFileCalls::system());

    /// Saves what is not saved.
    ~UserDefaults();
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

    /// Registers default values, in addition to those registered before.
    void registerDefaults(const QVariantMap& values);

    /// The raw value of a key: set, else registered, else invalid.
    [[nodiscard]] QVariant value(const QString& key) const;

    /// The value of a key in the wanted type. A stored value that cannot be converted counts as not
    /// set; without any value it is false, 0 or empty. Booleans and numbers stand for each other,
    /// text for what it spells: "YES", "true", "1", "-2.5".
    [[nodiscard]] bool boolean(const QString& key) const;
    [[nodiscard]] qlonglong integer(const QString& key) const; ///< fractions are cut off
    [[nodiscard]] double number(const QString& key) const;     ///< finite
    [[nodiscard]] QString text(const QString& key) const;
    [[nodiscard]] QVariantMap dictionary(const QString& key) const;
    [[nodiscard]] QVariantList list(const QString& key) const;

    /// Sets a value, converted by storableValue(); if nothing is left of it, this is remove().
    void set(const QString& key, const QVariant& value);

    /// Resets the key to its registered default.
    void remove(const QString& key);

    /// Calls `handler` on the main thread after value(key) has changed, here or in the file; never
    /// from within the change itself. Rapid changes may be merged into one call.
    [[nodiscard]] DefaultsObservation observe(const QString& key, std::function<void()> handler);

    /// Saves all changes and loads those of other programs. If it returns true, all values set
    /// before are in the file and survive a crash of the machine.
    bool synchronize();

    /// The same, but waits no longer than `bound`: a disk may hang. After that time it reports an
    /// error (setReporter) and returns false, and saving goes on.
    bool synchronize(std::chrono::milliseconds bound);

    /// Whether the last save failed because the disk is full. The next attempt follows within a
    /// second.
    [[nodiscard]] bool lacksRoom() const;

  private:
    const std::shared_ptr<DefaultsStore> store_;
};

/// Ends an observation on destruction: on the main thread, no call comes afterwards. May outlive
/// the defaults.
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
