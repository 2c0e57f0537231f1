#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <deque>
#include <functional>
#include <optional>
#include <vector>

namespace platform {

/// Checks whether callers on a bus belong to this user. By default a session bus admits no other
/// users. Main thread only.
class BusCallers {
  public:
    using Answer = std::function<void(bool isOurs)>;

    explicit BusCallers(const QDBusConnection& bus) : bus_(bus) {}

    /// Calls `answer` with whether the process of `sender`, a unique name, belongs to this user: at
    /// once if that is known, else from the event loop when the bus has replied. Answers for one
    /// sender come in the order of the calls, none after the object is destroyed. If the bus does
    /// not know, the caller is not ours.
    void ask(const QString& sender, Answer answer);

  private:
    struct Caller {
        QString name;
        std::optional<bool> isOurs = std::nullopt;
        std::vector<Answer> waiting = {};
    };

    Caller* find(const QString& sender);
    void learn(const QString& sender, bool isOurs);

    QDBusConnection bus_;
    std::deque<Caller> callers_; // the oldest first; a bus never gives a unique name again
    QObject watchers_;           // owns the questions that are under way
};

} // namespace platform
