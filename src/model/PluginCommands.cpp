#include "model/PluginCommands.h"

#include "comm/MVComm.h"
#include "platform/loop/RunLoop.h"

#include <algorithm>
#include <utility>

using platform::MonotonicClock;

namespace {

/// Longer than the servers' twelfth of a second, which begins when their queues come to a command.
constexpr std::chrono::milliseconds droppingTime{150};

} // namespace

PluginCommands::PluginCommands(MVComm& comm)
    : comm_(comm), timer_(*platform::RunLoop::current(), [this] { repeat(); }) {}

void PluginCommands::send(std::int32_t type, std::uint32_t pid, int value) {
    const Command command{type, pid, value, MonotonicClock::now()};
    std::erase_if(recent_,
                  [&](const Command& each) { return each.sent + droppingTime <= command.sent; });
    if (isToBeRepeated(command))
        return;
    std::erase_if(dropped_, [&](const Command& each) { return each.isAbout(command); });
    if (mayBeDropped(command)) {
        dropped_.push_back(command);
        timer_.start(droppingTime);
    }
    sendNow(command);
}

void PluginCommands::sendNow(const Command& command) {
    const MVCommConsoleMessage message{command.type, static_cast<std::int32_t>(command.pid), 0,
                                       command.value};
    comm_.sendMessage(&message);
    recent_.push_back(command);
}

/// Whether it has been sent, and would make a difference now. A list that has changed again always
/// does.
bool PluginCommands::mayBeDropped(const Command& command) const {
    const auto isAbout = [&](const Command& each) { return each.isAbout(command); };
    const auto isSame = [&](const Command& each) {
        return each.isAbout(command) && each.value == command.value;
    };
    if (!std::ranges::any_of(recent_, isSame))
        return false;
    return command.type == kMVCommIgnoreListChanged ||
           !isSame(*std::find_if(recent_.rbegin(), recent_.rend(), isAbout));
}

/// Whether the very same is going to be sent anyway, as soon as it is not dropped any longer.
bool PluginCommands::isToBeRepeated(const Command& command) const {
    return command.type != kMVCommIgnoreListChanged &&
           std::ranges::any_of(dropped_, [&](const Command& each) {
               return each.isAbout(command) && each.value == command.value;
           });
}

void PluginCommands::repeat() {
    recent_.clear();
    for (Command& command : std::exchange(dropped_, {})) {
        command.sent = MonotonicClock::now();
        sendNow(command);
    }
}
