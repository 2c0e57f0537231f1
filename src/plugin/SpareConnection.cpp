#include "plugin/SpareConnection.h"

#include "platform/RunLoop.h"
#include "platform/Timer.h"
#include "plugin/ClientClaims.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

// Not in the moment in which the server has a new stream to serve.
constexpr std::chrono::milliseconds delay{250};

} // namespace

struct SpareConnection::Connection {
    explicit Connection(pw_core* connected) noexcept : core(connected) {}
    ~Connection() {
        leaveCore();
        if (core != nullptr)
            pw_core_disconnect(core);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    void leaveCore() {
        registryHook.reset();
        registry.reset();
        coreHook.reset();
    }

    pw_core* core;
    bool broken = false;
    std::uint64_t newest = 0; // serial that the server has told of
    std::unique_ptr<ListenerHook> coreHook = std::make_unique<ListenerHook>();
    ProxyHandle<pw_registry> registry;
    std::unique_ptr<ListenerHook> registryHook = std::make_unique<ListenerHook>();
};

const pw_core_events SpareConnection::coreEvents = [] {
    pw_core_events events{};
    events.version = PW_VERSION_CORE_EVENTS;
    events.error = [](void* data, std::uint32_t id, int, int result, const char*) {
        static_cast<SpareConnection*>(data)->failed(id, result);
    };
    return events;
}();

const pw_registry_events SpareConnection::registryEvents = [] {
    pw_registry_events events{};
    events.version = PW_VERSION_REGISTRY_EVENTS;
    events.global = [](void* data, std::uint32_t, std::uint32_t, const char*, std::uint32_t,
                       const spa_dict* properties) {
        Connection& connection = *static_cast<SpareConnection*>(data)->connection_;
        connection.newest = std::max(connection.newest, serialIn(properties));
    };
    return events;
}();

SpareConnection::SpareConnection(platform::RunLoop& loop, std::function<pw_core*()> open)
    : open_(std::move(open))
    , opening_(std::make_unique<platform::Timer>(loop, [this] { this->open(); })) {}

SpareConnection::~SpareConnection() = default;

void SpareConnection::prepare() {
    opening_->start(delay);
}

pw_core* SpareConnection::take(std::uint64_t serial) {
    prepare();
    if (connection_ == nullptr || connection_->broken || connection_->newest < serial)
        return nullptr;
    connection_->leaveCore();
    pw_core* const core = std::exchange(connection_->core, nullptr);
    connection_.reset();
    return core;
}

void SpareConnection::close() {
    opening_->stop();
    connection_.reset();
}

void SpareConnection::open() {
    if (connection_ != nullptr && !connection_->broken)
        return;
    connection_.reset();
    pw_core* const core = open_();
    if (core == nullptr)
        return; // those who need one will say so
    connection_ = std::make_unique<Connection>(core);
    pw_core_add_listener(core, connection_->coreHook->get(), &coreEvents, this);
    connection_->registry.reset(pw_core_get_registry(core, PW_VERSION_REGISTRY, 0));
    if (connection_->registry != nullptr)
        pw_registry_add_listener(connection_->registry.get(), connection_->registryHook->get(),
                                 &registryEvents, this);
}

/// Dropped later, since not from inside the connection's own events.
void SpareConnection::failed(std::uint32_t id, int result) {
    if (id != PW_ID_CORE || result != -EPIPE)
        return;
    connection_->broken = true;
    prepare();
}
