#include "platform/bus/NotificationCenter.h"

#include "platform/base/ExceptionReport.h"

#include <utility>

namespace platform {

struct NotificationCenter::Entry {
    std::function<void(const QVariant&)> handler;
    bool active = true;
};

NotificationCenter& NotificationCenter::standard() {
    static NotificationCenter center;
    return center;
}

void NotificationCenter::post(const QString& name, const QVariant& object) {
    // A copy, which keeps a handler alive that destroys its own observer.
    const auto entries = entries_.value(name);
    for (const auto& [number, entry] : entries) {
        if (entry->active)
            guarded(kExceptionInObserver, [&entry = entry, &object] { entry->handler(object); });
    }
}

NotificationObserver::NotificationObserver(const QString& name,
                                           std::function<void(const QVariant&)> handler)
    : center_(NotificationCenter::standard())
    , name_(name)
    , number_(++center_.observers_)
    , entry_(std::make_shared<NotificationCenter::Entry>(
          NotificationCenter::Entry{std::move(handler)})) {
    center_.entries_[name_].emplace(number_, entry_);
}

NotificationObserver::~NotificationObserver() {
    entry_->active = false;
    const auto found = center_.entries_.find(name_);
    found->erase(number_);
    if (found->empty())
        center_.entries_.erase(found);
}

} // namespace platform
