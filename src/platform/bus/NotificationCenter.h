#pragma once

#include <QHash>
#include <QString>
#include <QVariant>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>

namespace platform {

/// Named notifications within this process, for prescribed notification names; for one known sender
/// use a Qt signal instead. Main thread only.
class NotificationCenter {
  public:
    static NotificationCenter& standard();

    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    /// Calls the observers of `name` before it returns, in the order in which they were made. An
    /// exception of one is reported (ExceptionReport) and the next is called. Observers may be
    /// added and removed meanwhile: a new one is not called yet, a removed one is not called any
    /// more.
    void post(const QString& name, const QVariant& object = {});

  private:
    friend class NotificationObserver;
    struct Entry;

    NotificationCenter() = default;

    using Entries = std::map<std::uint64_t, std::shared_ptr<Entry>>; // by number, the oldest first

    QHash<QString, Entries> entries_;
    std::uint64_t observers_ = 0; // how many there have been
};

/// Calls a handler with the posted object whenever the name is posted to the standard centre, until
/// it is destroyed, which the handler may do. The main thread only.
class NotificationObserver {
  public:
    NotificationObserver(const QString& name, std::function<void(const QVariant&)> handler);
    ~NotificationObserver();
    NotificationObserver(const NotificationObserver&) = delete;
    NotificationObserver& operator=(const NotificationObserver&) = delete;

  private:
    NotificationCenter& center_;
    const QString name_;
    const std::uint64_t number_;
    const std::shared_ptr<NotificationCenter::Entry> entry_;
};

} // namespace platform
