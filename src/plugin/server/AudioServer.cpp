#include "plugin/server/AudioServer.h"

#include "platform/base/MonotonicClock.h"
#include "platform/base/SystemLog.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopSource.h"
#include "platform/loop/Timer.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <pipewire/extensions/metadata.h>
#include <pipewire/link.h>
#include <stdexcept>
#include <string_view>
#include <utility>

using platform::LogPriority;
using platform::systemLog;

namespace {

AudioGlobal::Kind kindOf(std::string_view type) noexcept {
    if (type == PW_TYPE_INTERFACE_Client)
        return AudioGlobal::Kind::client;
    if (type == PW_TYPE_INTERFACE_Node)
        return AudioGlobal::Kind::node;
    if (type == PW_TYPE_INTERFACE_Port)
        return AudioGlobal::Kind::port;
    if (type == PW_TYPE_INTERFACE_Link)
        return AudioGlobal::Kind::link;
    if (type == PW_TYPE_INTERFACE_Metadata)
        return AudioGlobal::Kind::metadata;
    return AudioGlobal::Kind::other;
}

AudioGlobal describe(std::uint32_t id, const char* type, const spa_dict* properties) {
    AudioGlobal global{id, kindOf(type), {}};
    if (properties == nullptr || global.kind == AudioGlobal::Kind::other)
        return global;
    for (std::uint32_t i = 0; i < properties->n_items; ++i) {
        const spa_dict_item& item = properties->items[i];
        if (item.key != nullptr && item.value != nullptr)
            global.properties.emplace(item.key, item.value);
    }
    return global;
}

/// Whether the object is our link, whose owner retries and reports a permanent failure. The server
/// refuses one whenever the stream has ended meanwhile.
bool isLink(pw_core& core, std::uint32_t id) {
    pw_proxy* const proxy = pw_core_find_proxy(&core, id);
    const char* const type = proxy != nullptr ? pw_proxy_get_type(proxy, nullptr) : nullptr;
    return type != nullptr && std::string_view(type) == PW_TYPE_INTERFACE_Link;
}

pw_properties* propertiesOf(std::initializer_list<std::array<const char*, 2>> items) {
    pw_properties* const properties = pw_properties_new(nullptr, nullptr);
    for (const auto& [key, value] : items)
        pw_properties_set(properties, key, value);
    return properties;
}

} // namespace

class AudioServer::Library {
  public:
    Library() { pw_init(nullptr, nullptr); }
    ~Library() { pw_deinit(); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
};

/// PipeWire's loop and context. The loop stays entered for its whole life, as if it ran: calls made
/// between two turns are then known to come from its thread.
struct AudioServer::Loop {
    Loop() : loop(pw_loop_new(nullptr)) {
        if (loop == nullptr)
            throw std::runtime_error("PipeWire could not create an event loop");
        pw_loop_enter(loop);
        // The configuration with a realtime data thread, for the meters.
        context = pw_context_new(loop, propertiesOf({{PW_KEY_CONFIG_NAME, "client-rt.conf"}}), 0);
        if (context == nullptr)
            context = pw_context_new(loop, nullptr, 0);
        if (context != nullptr)
            return;
        pw_loop_leave(loop);
        pw_loop_destroy(loop);
        throw std::runtime_error("PipeWire found no usable configuration");
    }
    ~Loop() {
        pw_context_destroy(context);
        pw_loop_leave(loop);
        pw_loop_destroy(loop);
    }
    Loop(const Loop&) = delete;
    Loop& operator=(const Loop&) = delete;

    pw_loop* loop;
    pw_context* context = nullptr;
};

struct AudioServer::Connection {
    explicit Connection(pw_core* connected) noexcept : core(connected) {}
    ~Connection() {
        registryHook.reset(); // a hook goes before what it hangs on
        registry.reset();
        coreHook.reset();
        pw_core_disconnect(core);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    pw_core* const core;
    std::unique_ptr<ListenerHook> coreHook = std::make_unique<ListenerHook>();
    ProxyHandle<pw_registry> registry;
    std::unique_ptr<ListenerHook> registryHook = std::make_unique<ListenerHook>();
    int listing = 0;   // the request that is answered after the list of objects
    int answered = -1; // the last request that has been
    bool listed = false;
};

const pw_core_events AudioServer::coreEvents = [] {
    pw_core_events events{};
    events.version = PW_VERSION_CORE_EVENTS;
    events.error = [](void* data, std::uint32_t id, int, int result, const char* message) {
        static_cast<AudioServer*>(data)->failed(id, result, message);
    };
    events.done = [](void* data, std::uint32_t id, int sequence) {
        AudioServer& server = *static_cast<AudioServer*>(data);
        if (id != PW_ID_CORE)
            return;
        server.connection_->answered = sequence;
        if (sequence != server.connection_->listing)
            return;
        server.connection_->listed = true;
        server.pauses_.reset(); // not before it works: it may take connections and never serve them
    };
    return events;
}();

const pw_registry_events AudioServer::registryEvents = [] {
    pw_registry_events events{};
    events.version = PW_VERSION_REGISTRY_EVENTS;
    events.global = [](void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                       const spa_dict* properties) {
        static_cast<AudioServer*>(data)->listener_.globalAdded(describe(id, type, properties));
    };
    events.global_remove = [](void* data, std::uint32_t id) {
        static_cast<AudioServer*>(data)->listener_.globalRemoved(id);
    };
    return events;
}();

AudioServer::AudioServer(platform::RunLoop& loop, Listener& listener)
    : listener_(listener)
    , library_(std::make_unique<Library>())
    , loop_(std::make_unique<Loop>())
    , source_(platform::RunLoopSource::create(loop, pw_loop_get_fd(loop_->loop),
                                              platform::RunLoopSource::reading,
                                              [this] { serveEvents({}); }))
    , retry_(std::make_unique<platform::Timer>(loop, [this] { connect(); }))
    , loss_(std::make_unique<platform::Timer>(loop, [this] { drop(); })) {
    if (source_ == nullptr)
        throw std::runtime_error("PipeWire's event loop cannot be watched");
}

AudioServer::~AudioServer() = default;

void AudioServer::start() {
    retry_->start({});
}

pw_core* AudioServer::core() const noexcept {
    return connection_ != nullptr ? connection_->core : nullptr;
}

pw_registry* AudioServer::registry() const noexcept {
    return connection_ != nullptr ? connection_->registry.get() : nullptr;
}

bool AudioServer::hasListedAll() const noexcept {
    return connection_ != nullptr && connection_->listed;
}

void AudioServer::serveUntil(const std::function<bool()>& condition) {
    constexpr std::chrono::milliseconds longest{500};
    constexpr std::chrono::milliseconds piece{50};
    if (connection_ == nullptr)
        return;
    const auto deadline = platform::MonotonicClock::now() + longest;
    const int last = pw_core_sync(connection_->core, PW_ID_CORE, 0);
    while (!loss_->isActive() && platform::MonotonicClock::now() < deadline &&
           !(connection_->answered == last && condition()))
        serveEvents(piece);
}

void AudioServer::serveEvents(std::chrono::milliseconds wait) {
    const int result = pw_loop_iterate(loop_->loop, static_cast<int>(wait.count()));
    if (result < 0 && result != -EINTR)
        systemLog(LogPriority::error, "PipeWire's event loop failed: %s (%d)",
                  std::strerror(-result), -result);
}

void AudioServer::connect() {
    if (openConnection()) {
        absenceLogged_ = false;
        systemLog(LogPriority::info, "Connected to the sound server");
        listener_.serverConnected();
        return;
    }
    if (!std::exchange(absenceLogged_, true))
        systemLog(LogPriority::warning, "No sound server yet: %s (%d)", std::strerror(errno),
                  errno);
    retry_->start(pauses_.next());
}

pw_core* AudioServer::openCore() const {
    // As a manager, a sandboxed client too may set the volume of others.
    return pw_context_connect(loop_->context,
                              propertiesOf({{PW_KEY_APP_NAME, "Tonvale"},
                                            {PW_KEY_APP_ID, "com.quarnel.Tonvale"},
                                            {PW_KEY_MEDIA_CATEGORY, "Manager"}}),
                              0);
}

bool AudioServer::openConnection() {
    pw_core* const core = openCore();
    if (core == nullptr)
        return false;
    connection_ = std::make_unique<Connection>(core);
    pw_core_add_listener(core, connection_->coreHook->get(), &coreEvents, this);
    connection_->registry.reset(pw_core_get_registry(core, PW_VERSION_REGISTRY, 0));
    if (connection_->registry == nullptr) {
        const int error = errno;
        connection_.reset();
        errno = error;
        return false;
    }
    pw_registry_add_listener(connection_->registry.get(), connection_->registryHook->get(),
                             &registryEvents, this);
    connection_->listing = pw_core_sync(core, PW_ID_CORE, 0);
    return true;
}

void AudioServer::failed(std::uint32_t id, int result, const char* message) {
    if (id == PW_ID_CORE && result == -EPIPE) {
        loss_->start({});
    } else if (result != -ENOENT && result != -ESTALE && // an object that went meanwhile
               !isLink(*connection_->core, id)) {
        systemLog(LogPriority::warning, "The sound server refused something for object %u: %s (%d)",
                  id, message, -result);
    }
}

void AudioServer::drop() {
    if (connection_ == nullptr)
        return;
    systemLog(LogPriority::warning, "The connection to the sound server broke");
    listener_.serverLost();
    connection_.reset();
    retry_->start(pauses_.next());
}
