#include "framework/application/SignalTable.h"

#include "framework/application/QNSignalProxy.h"

#include "platform/base/CallStack.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopSource.h"
#include "platform/loop/SignalEvents.h"

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

using platform::RunLoop;
using platform::RunLoopSource;

SignalTable& SignalTable::instance() {
    static SignalTable table;
    return table;
}

SignalTable::SignalTable() = default;
SignalTable::~SignalTable() = default;

void SignalTable::open(std::function<void()> didFire) {
    if (source_)
        return;
    RunLoop* const loop = RunLoop::current();
    if (!loop)
        throw platform::TracedError<std::logic_error>("signals need a run loop");
    if (!events_)
        events_ = std::make_unique<platform::SignalEvents>();
    source_ = RunLoopSource::create(*loop, events_->descriptor(), RunLoopSource::reading,
                                    std::move(didFire));
    if (!source_)
        throw platform::TracedError<std::system_error>(errno, std::generic_category(), "epoll_ctl");
}

void SignalTable::silence() {
    source_.reset();
    if (events_)
        events_->silence();
}

void SignalTable::close() {
    source_.reset();
    events_.reset();
    observers_.clear();
}

void SignalTable::add(int signal, Observer observer) {
    if (!events_->watch(signal))
        return;
    auto& list = observers_[signal];
    const bool isThere = std::any_of(list.begin(), list.end(), [&](const Observer& each) {
        return each.target == observer.target && each.selname == observer.selname;
    });
    if (!isThere)
        list.push_back(std::move(observer));
}

void SignalTable::remove(int signal, const QObject* target, const QByteArray& selname) {
    for (auto& [number, list] : observers_) {
        if (signal != -1 && signal != number)
            continue;
        std::erase_if(list, [&](const Observer& each) {
            return !each.target ||
                   (each.target == target && (selname.isEmpty() || each.selname == selname));
        });
    }
}

std::vector<SignalTable::Observer> SignalTable::observers(int signal) const {
    const auto found = observers_.find(signal);
    if (found == observers_.end())
        return {};
    return {found->second.rbegin(), found->second.rend()};
}

std::optional<int> SignalTable::next() {
    return events_ ? events_->next() : std::nullopt;
}

void SignalTable::setListening(bool listens) {
    if (source_)
        source_->setInterest(listens ? RunLoopSource::reading : RunLoopSource::nothing);
}
