#pragma once

#include <QObject>

#include <functional>
#include <memory>

namespace platform {
class DispatchQueue;
}

/// Delivers a signal to a handler on a dispatch queue. Held by shared pointers; the signal table
/// holds one as long as the proxy is an observer.
class QNSignalProxy final : public QObject, public std::enable_shared_from_this<QNSignalProxy> {
    Q_OBJECT

  public:
    using Handler = std::function<void(int signal)>;

    /// No queue: the main queue.
    QNSignalProxy(Handler handler, const std::shared_ptr<platform::DispatchQueue>& queue);

    /// Submits a call of the handler with the signal's number and returns.
    Q_INVOKABLE void signalHandler(int signal) const;

  private:
    const Handler handler_;
    const std::shared_ptr<platform::DispatchQueue> q_;
};
