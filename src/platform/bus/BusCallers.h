#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <deque>
#include <functional>
#include <optional>
#include <vector>

namespace platform {

/// Tells callers on a bus that belong to this user from all others. A session bus lets nobody else
/// in unless it is configured to. Main thread only.
class BusCallers {
  public:
    using Answer = std::function<void(bool isOurs)>;

    explicit BusCallers(const QDBusConnection& bus) : bus_(bus) {}

    /// Calls `answer` as soon as the bus has told whose process `sender`, a unique name, is: at
    /// once when that is known, else from the event loop. Answers for one sender come in the order
    /// of the questions, none after the object has gone. Of whom the bus does not tell is not ours.
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
