#include "framework/application/QNSignalProxy.h"

#include "platform/loop/DispatchQueue.h"

#include <utility>

using platform::DispatchQueue;

QNSignalProxy::QNSignalProxy(Handler handler, const std::shared_ptr<DispatchQueue>& queue)
    : handler_(std::move(handler)), q_(queue ? queue : DispatchQueue::main()) {}

void QNSignalProxy::signalHandler(int signal) const {
    q_->async([handler = handler_, signal] { handler(signal); });
}
