#include "platform/defaults/DefaultsStore.h"

#include "platform/base/Mutex.h"
#include "platform/base/SystemLog.h"
#include "platform/defaults/PropertyList.h"

#include <algorithm>
#include <exception>
#include <future>
#include <utility>

namespace platform {

namespace {

constexpr std::chrono::milliseconds saveDelay{500};
constexpr std::chrono::seconds firstRetry{1}; // also each retry if the disk is full
constexpr std::chrono::seconds slowestRetry{60};

struct SharedReporter {
    Mutex mutex;
    DefaultsStore::Reporter call GUARDED_BY(mutex);
};

/// Never destroyed: a save may end after main() has.
SharedReporter& sharedReporter() {
    static auto* const reporter = new SharedReporter;
    return *reporter;
}

void report(const DefaultsError& trouble) {
    DefaultsStore::Reporter call;
    {
        const ScopedLock lock(sharedReporter().mutex);
        call = sharedReporter().call;
    }
    if (call)
        call(trouble);
    else
        systemLog(trouble.kind == DefaultsError::Kind::unsaved ? LogPriority::error
                                                               : LogPriority::warning,
                  "%s", trouble.line.c_str());
}

} // namespace

void DefaultsStore::setReporter(Reporter reporter) {
    const ScopedLock lock(sharedReporter().mutex);
    sharedReporter().call = std::move(reporter);
}

DefaultsStore::DefaultsStore(const std::filesystem::path& path, DefaultsFileCalls& calls)
    : queue_(DispatchQueue::makeSerial("com.quarnel.defaults")) {
    if (!path.empty())
        file_.emplace(path, calls);
}

void DefaultsStore::load() {
    if (!file_) {
        platform::report({DefaultsError::Kind::unsaved,
                          "There is no folder for settings; they are kept in memory only"});
        return;
    }
    const DefaultsFile::Outcome outcome = file_->update({}, {}, false);
    report(outcome, DefaultsError::Kind::lost);
    const ScopedLock lock(mutex_);
    saveTimer_.emplace(queue_, [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->save(false);
    });
    inFile_ = outcome.values.value_or(QVariantMap());
}

void DefaultsStore::registerDefaults(const QVariantMap& values) {
    const ScopedLock lock(mutex_);
    registered_.insert(values);
    tellAllLocked();
}

QVariant DefaultsStore::stored(const QString& key) const {
    const ScopedLock lock(mutex_);
    return storedLocked(key);
}

QVariant DefaultsStore::registered(const QString& key) const {
    const ScopedLock lock(mutex_);
    return registered_.value(key);
}

void DefaultsStore::change(const QString& key, const QVariant& value) {
    const ScopedLock lock(mutex_);
    if (isSameValue(storedLocked(key), value))
        return;
    unsaved_.insert(key, {value, ++changes_});
    for (const std::shared_ptr<Observer>& observer : observers_) {
        if (observer->key == key)
            tellLocked(observer);
    }
    saveBy(MonotonicClock::now() + saveDelay);
}

bool DefaultsStore::synchronize() {
    bool isSaved = false;
    queue_->sync([&] { isSaved = save(true); });
    return isSaved;
}

bool DefaultsStore::synchronize(std::chrono::milliseconds bound) {
    const auto saving = std::make_shared<std::packaged_task<bool()>>(
        [self = shared_from_this()] { return self->save(true); });
    std::future<bool> isSaved = saving->get_future();
    queue_->async([saving] { (*saving)(); });
    if (isSaved.wait_for(bound) == std::future_status::ready)
        return isSaved.get();
    platform::report({DefaultsError::Kind::unsaved, "Saving the settings takes too long"});
    return false;
}

void DefaultsStore::finish() {
    queue_->sync([this] {
        if (hasUnsaved())
            save(true);
    });
}

bool DefaultsStore::lacksRoom() const {
    const ScopedLock lock(mutex_);
    return lacksRoom_;
}

bool DefaultsStore::hasUnsaved() const {
    const ScopedLock lock(mutex_);
    return !unsaved_.isEmpty();
}

std::shared_ptr<DefaultsStore::Observer> DefaultsStore::addObserver(const QString& key,
                                                                    std::function<void()> handler) {
    const ScopedLock lock(mutex_);
    auto observer =
        std::make_shared<Observer>(Observer{key, std::move(handler), effectiveLocked(key)});
    observers_.push_back(observer);
    return observer;
}

void DefaultsStore::cancelObserver(const std::shared_ptr<Observer>& observer) {
    const ScopedLock lock(mutex_);
    observer->isCancelled = true;
    std::erase(observers_, observer);
}

/// On the queue.
bool DefaultsStore::save(bool isDurable) {
    if (!file_)
        return false;
    QVariantMap known;
    DefaultsFile::Changes changes;
    std::uint64_t lastNumber = 0;
    {
        const ScopedLock lock(mutex_);
        saveTime_.reset();
        saveTimer_->cancel();
        known = inFile_;
        lastNumber = changes_;
        for (auto change = unsaved_.cbegin(); change != unsaved_.cend(); ++change)
            changes.insert(change.key(), change->value);
    }
    const DefaultsFile::Outcome outcome = file_->update(known, changes, isDurable);
    report(outcome, DefaultsError::Kind::restored);
    settle(outcome, lastNumber);
    return outcome.failure.empty();
}

/// Changes up to `lastNumber` are in the file, if nothing failed.
void DefaultsStore::settle(const DefaultsFile::Outcome& outcome, std::uint64_t lastNumber) {
    const ScopedLock lock(mutex_);
    if (outcome.values)
        inFile_ = *outcome.values;
    if (outcome.failure.empty()) {
        unsaved_.removeIf([&](const auto& change) { return change->number <= lastNumber; });
        retryDelay_ = firstRetry;
    } else if (!unsaved_.isEmpty()) {
        retryDelay_ = outcome.lacksRoom ? firstRetry : retryDelay_;
        saveBy(MonotonicClock::now() + retryDelay_);
        retryDelay_ = std::min(2 * retryDelay_, slowestRetry);
    }
    lacksRoom_ = outcome.lacksRoom;
    tellAllLocked();
}

void DefaultsStore::report(const DefaultsFile::Outcome& outcome, DefaultsError::Kind damage) {
    if (!outcome.setAside.empty())
        platform::report({damage,
                          "The settings were damaged and have been moved to " + outcome.setAside,
                          outcome.setAside});
    if (!outcome.failure.empty() && !isFailing_)
        platform::report({DefaultsError::Kind::unsaved,
                          outcome.failure + "; settings are kept in memory until it works",
                          outcome.file});
    isFailing_ = !outcome.failure.empty();
}

void DefaultsStore::saveBy(MonotonicClock::time_point deadline) {
    if (!saveTimer_ || (saveTime_ && *saveTime_ <= deadline))
        return;
    try {
        saveTimer_->start(deadline);
        saveTime_ = deadline;
    } catch (const std::exception& error) {
        // The next change tries again, as does synchronize().
        systemLog(LogPriority::error, "Couldn't schedule saving the settings: %s", error.what());
    }
}

QVariant DefaultsStore::storedLocked(const QString& key) const {
    const auto change = unsaved_.constFind(key);
    return change != unsaved_.cend() ? change->value : inFile_.value(key);
}

QVariant DefaultsStore::effectiveLocked(const QString& key) const {
    const QVariant value = storedLocked(key);
    return value.isValid() ? value : registered_.value(key);
}

void DefaultsStore::tellAllLocked() {
    for (const std::shared_ptr<Observer>& observer : observers_)
        tellLocked(observer);
}

/// At most one block per observer is queued, however often the value changes meanwhile.
void DefaultsStore::tellLocked(const std::shared_ptr<Observer>& observer) {
    if (observer->isPosted || isSameValue(observer->told, effectiveLocked(observer->key)))
        return;
    observer->isPosted = true;
    DispatchQueue::main()->async([weak = weak_from_this(), observer] {
        if (const auto self = weak.lock())
            self->tellObserver(observer);
    });
}

/// On the main thread. The value may be back at what the observer knows.
void DefaultsStore::tellObserver(const std::shared_ptr<Observer>& observer) {
    {
        const ScopedLock lock(mutex_);
        observer->isPosted = false;
        QVariant value = effectiveLocked(observer->key);
        if (observer->isCancelled || isSameValue(observer->told, value))
            return;
        observer->told = std::move(value);
    }
    observer->handler();
}

} // namespace platform
