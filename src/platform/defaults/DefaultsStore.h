#pragma once

#include "platform/base/MonotonicClock.h"
#include "platform/base/Mutex.h"
#include "platform/defaults/DefaultsFile.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/DispatchTimer.h"

#include <QHash>
#include <QMap>
#include <QString>
#include <QVariant>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// The values behind UserDefaults: unsaved changes, then the file's content, then registered
/// defaults. Saves on its own queue, soon after the first unsaved change, and retries while that
/// fails: every second if the disk is full, else less and less often. Any thread; create it with
/// std::make_shared.
class DefaultsStore : public std::enable_shared_from_this<DefaultsStore> {
  public:
    using Reporter = std::function<void(const DefaultsError& trouble)>;

    struct Observer {
        QString key;
        std::function<void()> handler;
        // Guarded by the store's mutex.
        QVariant told;
        bool isPosted = false;
        bool isCancelled = false;
    };

    /// Sets the reporter of all stores; null: the system log.
    static void setReporter(Reporter reporter);

    /// Without a path nothing is saved.
    DefaultsStore(const std::filesystem::path& path, DefaultsFileCalls& calls);
    DefaultsStore(const DefaultsStore&) = delete;
    DefaultsStore& operator=(const DefaultsStore&) = delete;

    /// Reads the file for the first time. Call it once, before everything else.
    void load();

    void registerDefaults(const QVariantMap& values);

    /// Invalid: there is none.
    [[nodiscard]] QVariant stored(const QString& key) const;
    [[nodiscard]] QVariant registered(const QString& key) const;

    /// `value` is storable, or invalid to remove the key.
    void change(const QString& key, const QVariant& value);

    /// False if some change is not in the file.
    [[nodiscard]] bool synchronize();

    /// Also false, after a line in the log, if saving has not ended within `bound`.
    [[nodiscard]] bool synchronize(std::chrono::milliseconds bound);

    /// Whether the last save failed because the disk is full.
    [[nodiscard]] bool lacksRoom() const;

    /// Saves unsaved changes and waits for saves in progress. The last call.
    void finish();

    [[nodiscard]] std::shared_ptr<Observer> addObserver(const QString& key,
                                                        std::function<void()> handler);
    void cancelObserver(const std::shared_ptr<Observer>& observer);

  private:
    struct Change {
        QVariant value;
        std::uint64_t number;
    };

    bool save(bool isDurable);
    bool hasUnsaved() const EXCLUDES(mutex_);
    void settle(const DefaultsFile::Outcome& outcome, std::uint64_t lastNumber);
    void report(const DefaultsFile::Outcome& outcome, DefaultsError::Kind damage);
    void saveBy(MonotonicClock::time_point deadline) REQUIRES(mutex_);
    QVariant storedLocked(const QString& key) const REQUIRES(mutex_);
    QVariant effectiveLocked(const QString& key) const REQUIRES(mutex_);
    void tellLocked(const std::shared_ptr<Observer>& observer) REQUIRES(mutex_);
    void tellAllLocked() REQUIRES(mutex_);
    void tellObserver(const std::shared_ptr<Observer>& observer);

    const std::shared_ptr<DispatchQueue> queue_;
    std::optional<DefaultsFile> file_;   // the queue's blocks and load() only
    bool isFailing_ = false;             // likewise: has been reported
    std::chrono::seconds retryDelay_{1}; // likewise

    mutable Mutex mutex_;
    std::optional<DispatchTimer> saveTimer_ GUARDED_BY(mutex_);
    QVariantMap registered_ GUARDED_BY(mutex_);
    QVariantMap inFile_ GUARDED_BY(mutex_);
    QHash<QString, Change> unsaved_ GUARDED_BY(mutex_);
    std::uint64_t changes_ GUARDED_BY(mutex_) = 0; // how many there have been
    std::optional<MonotonicClock::time_point> saveTime_ GUARDED_BY(mutex_);
    bool lacksRoom_ GUARDED_BY(mutex_) = false;
    std::vector<std::shared_ptr<Observer>> observers_ GUARDED_BY(mutex_);
};

} // namespace platform
