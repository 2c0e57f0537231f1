#include "plugin/SpareConnection.h"

#include "platform/RunLoop.h"
#include "platform/Timer.h"

#include <cerrno>
#include <utility>

namespace {

// Not in the moment in which the server has a new stream to serve.
constexpr std::chrono::milliseconds delay{250};

} // namespace

const pw_core_events SpareConnection::coreEvents = [] {
    pw_core_events events{};
    events.version = PW_VERSION_CORE_EVENTS;
    events.error = [](void* data, std::uint32_t id, int, int result, const char*) {
        static_cast<SpareConnection*>(data)->failed(id, result);
    };
    return events;
}();

SpareConnection::SpareConnection(platform::RunLoop& loop, std::function<pw_core*()> open)
    : open_(std::move(open))
    , opening_(std::make_unique<platform::Timer>(loop, [this] { this->open(); })) {}

SpareConnection::~SpareConnection() {
    close();
}

void SpareConnection::prepare() {
    opening_->start(delay);
}

pw_core* SpareConnection::take() {
    prepare();
    if (broken_)
        return nullptr;
    hook_.reset();
    return std::exchange(core_, nullptr);
}

void SpareConnection::close() {
    opening_->stop();
    hook_.reset();
    if (core_ != nullptr)
        pw_core_disconnect(std::exchange(core_, nullptr));
    broken_ = false;
}

void SpareConnection::open() {
    if (broken_)
        close();
    if (core_ != nullptr)
        return;
    core_ = open_();
    if (core_ == nullptr)
        return; // those who need one will say so
    hook_ = std::make_unique<ListenerHook>();
    pw_core_add_listener(core_, hook_->get(), &coreEvents, this);
}

/// Dropped later, since not from inside the connection's own events.
void SpareConnection::failed(std::uint32_t id, int result) {
    if (id != PW_ID_CORE || result != -EPIPE)
        return;
    broken_ = true;
    prepare();
}
