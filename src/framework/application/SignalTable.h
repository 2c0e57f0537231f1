#pragma once

#include <QByteArray>
#include <QPointer>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

class QNSignalProxy;

namespace platform {
class RunLoop;
class RunLoopSource;
class SignalEvents;
} // namespace platform

/// Who observes which signal in this process, and the source of the run loop that tells of them.
/// Main thread only.
class SignalTable {
  public:
    struct Observer {
        QPointer<QObject> target;
        QByteArray selname; ///< the method that is called, by name, with the signal's number
        std::shared_ptr<QNSignalProxy> proxy; ///< keeps a target alive that is one
    };

    static SignalTable& instance();
    SignalTable(const SignalTable&) = delete;
    SignalTable& operator=(const SignalTable&) = delete;

    /// Has `didFire` called on the current run loop while signals wait. Does nothing when there is
    /// a source already. Throws std::system_error when the system has no descriptors left, and
    /// std::logic_error when the thread has no run loop.
    void open(std::function<void()> didFire);

    /// For the end of the program: observed signals do nothing any more, and go on doing nothing.
    void silence();

    /// Takes the source from the run loop, before that goes. Signals do what they did before.
    void close();

    /// Not added again when it is there. Numbers of signals that cannot be caught are ignored.
    void add(int signal, Observer observer);

    /// The target's entries for the signal, those with the method if one is given; for -1 those of
    /// all signals.
    void remove(int signal, const QObject* target, const QByteArray& selname);

    /// The newest first.
    std::vector<Observer> observers(int signal) const;

    /// A signal that waits for delivery.
    std::optional<int> next();

    /// Whether the run loop looks for signals; without that they wait.
    void setListening(bool listens);

  private:
    SignalTable();
    ~SignalTable();

    std::map<int, std::vector<Observer>> observers_; // the oldest first
    std::unique_ptr<platform::SignalEvents> events_;
    std::unique_ptr<platform::RunLoopSource> source_;
};
