#include "plugin/memory/PreferencesWatch.h"

#include "platform/base/SystemLog.h"
#include "platform/files/FileWatch.h"
#include "platform/loop/DispatchQueue.h"

#include <atomic>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

using platform::DispatchQueue;
using platform::FileWatch;

namespace {

/// What is to be watched so that no change of the file is missed: itself, its folder, and where a
/// link leads.
void addPlaces(const fs::path& file, std::set<std::string>& places) {
    if (file.empty())
        return;
    std::error_code error;
    fs::path folder = file.parent_path();
    while (!fs::is_directory(folder, error) && folder.has_relative_path())
        folder = folder.parent_path();
    places.insert(folder);
    if (!fs::exists(file, error))
        return;
    places.insert(file);
    const fs::path target = fs::canonical(file, error);
    if (!error)
        places.insert(target.parent_path());
}

} // namespace

/// Lives until the queue has let it go.
class PreferencesWatch::Worker : public std::enable_shared_from_this<Worker> {
  public:
    Worker(PreferencesFile file, std::function<void(const Preferences&)> changed)
        : file_(std::move(file)), changed_(std::move(changed)) {}

    void begin() {
        queue_->async([self = shared_from_this()] { self->look(true); });
    }

    std::optional<Preferences> first() {
        std::optional<Preferences> first;
        queue_->sync([&] { first = known_; });
        return first;
    }

    void follow(std::string own) {
        queue_->async([self = shared_from_this(), own = std::move(own)]() mutable {
            self->file_.setOwn(std::move(own));
            self->look(false);
        });
    }

    void readAgain() {
        if (!pending_.exchange(true))
            queue_->async([self = shared_from_this()] { self->look(false); });
    }

    /// The main thread, where readings are delivered.
    void end() {
        changed_ = nullptr;
        queue_->async([self = shared_from_this()] {
            self->hasEnded_ = true;
            self->watches_.clear();
        });
    }

  private:
    void look(bool isFirst) {
        pending_ = false;
        if (hasEnded_)
            return;
        follow();
        const auto& reading = file_.read();
        if (!reading || reading == known_)
            return;
        known_ = reading;
        if (isFirst)
            return;
        DispatchQueue::main()->async([self = shared_from_this(), preferences = *reading] {
            if (self->changed_)
                self->changed_(preferences);
        });
    }

    /// Watches what there is to watch now. What appears before its folder is watched shows only to
    /// who looks again.
    void follow() {
        std::erase_if(watches_, [](const auto& entry) { return entry.second == nullptr; });
        std::set<std::string> places = placesNow();
        while (watchAll(places))
            places = placesNow();
        std::erase_if(watches_, [&](const auto& entry) { return !places.contains(entry.first); });
    }

    std::set<std::string> placesNow() const {
        std::set<std::string> places;
        addPlaces(file_.own(), places);
        addPlaces(file_.standardOwn(), places);
        addPlaces(file_.copy(), places);
        return places;
    }

    /// Whether there was one that has not been watched.
    bool watchAll(const std::set<std::string>& places) {
        bool isAnyNew = false;
        for (const std::string& place : places) {
            if (watches_.contains(place))
                continue;
            watches_[place] = watch(place);
            isAnyNew = true;
        }
        return isAnyNew;
    }

    std::unique_ptr<FileWatch> watch(const std::string& place) {
        const auto happened = [weak = weak_from_this(), place](std::uint32_t events) {
            if (const auto self = weak.lock())
                self->happened(place, events);
        };
        try {
            return FileWatch::createForPath(place, queue_, happened);
        } catch (const std::system_error& error) { // no thread or descriptor is left
            platform::systemLog(platform::LogPriority::error,
                                "The preferences can't be watched: %s", error.what());
            return nullptr;
        }
    }

    void happened(const std::string& place, std::uint32_t events) {
        // A watch stays with its file wherever that goes; what is at the path now gets a new one.
        if ((events & (FileWatch::deleted | FileWatch::renamed | FileWatch::revoked)) != 0)
            watches_.erase(place);
        look(false);
    }

    const std::shared_ptr<DispatchQueue> queue_ =
        DispatchQueue::makeSerial("com.quarnel.plugin-preferences");
    std::atomic<bool> pending_{false}; // readAgain() waits for its turn

    // The queue's blocks only.
    PreferencesFile file_;
    std::optional<Preferences> known_;
    std::map<std::string, std::unique_ptr<FileWatch>> watches_; // by path; null: could not be
    bool hasEnded_ = false;

    // The main thread only.
    std::function<void(const Preferences&)> changed_;
};

PreferencesWatch::PreferencesWatch(PreferencesFile file,
                                   std::function<void(const Preferences&)> changed)
    : worker_(std::make_shared<Worker>(std::move(file), std::move(changed))) {
    worker_->begin();
}

PreferencesWatch::~PreferencesWatch() {
    worker_->end();
}

std::optional<Preferences> PreferencesWatch::first() {
    return worker_->first();
}

void PreferencesWatch::follow(std::string own) {
    worker_->follow(std::move(own));
}

void PreferencesWatch::readAgain() {
    worker_->readAgain();
}
