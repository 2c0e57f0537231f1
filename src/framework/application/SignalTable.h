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

/// The observers of signals in this process, and the run loop source that delivers the signals.
/// Main thread only.
class SignalTable {
  public:
    struct Observer {
        QPointer<QObject> target;
        QByteArray selname; ///< the method that is called, by name, with the signal's number
        std::shared_ptr<QNSignalProxy> proxy; ///< keeps the target alive if it is a proxy
    };

    static SignalTable& instance();
    SignalTable(const SignalTable&) = delete;
    SignalTable& operator=(const SignalTable&) = delete;

    /// Calls `didFire` on the current run loop while signals are pending. Does nothing if it is
    /// open already. Throws std::system_error if the system has no descriptors left, and
    /// std::logic_error if the thread has no run loop.
    void open(std::function<void()> didFire);

    /// For the end of the program: from now on observed signals have no effect.
    void silence();

    /// Removes the source from the run loop, before that is destroyed. Signals get their former
    /// actions back.
    void close();

    /// Does nothing for an observer that is registered already. Signals that cannot be caught are
    /// ignored.
    void add(int signal, Observer observer);

    /// The target's entries for the signal, those with the method if one is given; for -1 those of
    /// all signals.
    void remove(int signal, const QObject* target, const QByteArray& selname);

    /// The newest first.
    [[nodiscard]] std::vector<Observer> observers(int signal) const;

    /// A pending signal, or nothing.
    [[nodiscard]] std::optional<int> next();

    /// Whether the run loop delivers signals; otherwise they stay pending.
    void setListening(bool listens);

  private:
    SignalTable();
    ~SignalTable();

    std::map<int, std::vector<Observer>> observers_; // the oldest first
    std::unique_ptr<platform::SignalEvents> events_;
    std::unique_ptr<platform::RunLoopSource> source_;
};
