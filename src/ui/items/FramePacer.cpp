#include "ui/items/FramePacer.h"

#include <algorithm>
#include <utility>

using platform::MonotonicClock;

namespace {

constexpr std::chrono::microseconds frameTime{16667};
constexpr std::chrono::milliseconds burst{4}; // what comes within it is drawn together

} // namespace

FramePacer::FramePacer(platform::RunLoop& loop) : timer_(loop, [this] { draw(); }) {}

void FramePacer::request(Client& client) {
    if (std::exchange(client.isAwaited_, true))
        return;
    awaited_.push_back(&client);
    if (timer_.isActive())
        return;
    timer_.startAt(std::max(MonotonicClock::now() + burst, earliest_));
}

void FramePacer::withdraw(Client& client) noexcept {
    if (std::exchange(client.isAwaited_, false))
        std::erase(awaited_, &client);
    std::ranges::replace(drawing_, &client, static_cast<Client*>(nullptr));
}

void FramePacer::draw() {
    earliest_ = MonotonicClock::now() + frameTime;
    drawing_.swap(awaited_);
    for (Client* const client : drawing_)
        client->isAwaited_ = false;
    // One that goes meanwhile leaves a null in its place.
    for (Client* const& client : drawing_) {
        if (client != nullptr)
            client->frame();
    }
    drawing_.clear();
}
