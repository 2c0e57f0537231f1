#include "plugin/server/NodeWriter.h"

#include "platform/base/SystemLog.h"
#include "platform/loop/Timer.h"
#include "plugin/server/AudioGraph.h"
#include "plugin/server/AudioServer.h"
#include "plugin/server/ClientClaims.h"
#include "plugin/server/StreamParam.h"

#include <cerrno>
#include <cstring>
#include <utility>

using platform::MonotonicClock;

struct NodeWriter::Connection {
    Connection(NodeWriter& owner, WriteLanes::Lane number, pw_core* connected)
        : writer(owner), lane(number), core(connected), newestSerial(owner.graph_.newestSerial()) {
        pw_core_add_listener(core, hook->get(), &coreEvents, this);
        registry.reset(pw_core_get_registry(core, PW_VERSION_REGISTRY, 0));
        if (registry != nullptr)
            pw_registry_add_listener(registry.get(), registryHook->get(), &registryEvents, this);
    }
    ~Connection() {
        nodes.clear();
        registryHook.reset();
        registry.reset();
        hook.reset();
        pw_core_disconnect(core);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Bound once, since the server describes a node to whoever binds it. Null on failure.
    pw_node* node(std::uint32_t id) {
        ProxyHandle<pw_node>& bound = nodes[id];
        if (bound == nullptr && registry != nullptr)
            bound.reset(static_cast<pw_node*>(
                pw_registry_bind(registry.get(), id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0)));
        return bound.get();
    }

    void told(const spa_dict* properties) {
        const std::uint64_t serial = serialIn(properties);
        if (serial <= newestSerial)
            return;
        newestSerial = serial;
        writer.lanes_.heard(MonotonicClock::now());
        writer.schedule();
    }

    NodeWriter& writer;
    const WriteLanes::Lane lane;
    pw_core* const core;
    std::uint64_t newestSerial; // that the server has announced on this connection
    std::unique_ptr<ListenerHook> hook = std::make_unique<ListenerHook>();
    ProxyHandle<pw_registry> registry;
    std::unique_ptr<ListenerHook> registryHook = std::make_unique<ListenerHook>();
    std::map<std::uint32_t, ProxyHandle<pw_node>> nodes;
};

const pw_core_events NodeWriter::coreEvents = [] {
    pw_core_events events{};
    events.version = PW_VERSION_CORE_EVENTS;
    events.done = [](void* data, std::uint32_t, int sequence) {
        const Connection& connection = *static_cast<Connection*>(data);
        connection.writer.lanes_.answered(connection.lane, sequence, MonotonicClock::now());
        connection.writer.schedule();
    };
    events.error = [](void* data, std::uint32_t id, int, int result, const char*) {
        if (id != PW_ID_CORE || result != -EPIPE)
            return;
        const Connection& connection = *static_cast<Connection*>(data);
        connection.writer.lanes_.broken(connection.lane);
        connection.writer.schedule();
    };
    return events;
}();

const pw_registry_events NodeWriter::registryEvents = [] {
    pw_registry_events events{};
    events.version = PW_VERSION_REGISTRY_EVENTS;
    events.global = [](void* data, std::uint32_t, std::uint32_t, const char*, std::uint32_t,
                       const spa_dict* properties) {
        static_cast<Connection*>(data)->told(properties);
    };
    return events;
}();

NodeWriter::NodeWriter(platform::RunLoop& loop, const AudioServer& server, const AudioGraph& graph)
    : server_(server), graph_(graph), timer_(std::make_unique<platform::Timer>(loop, [this] {
        lanes_.serve(MonotonicClock::now());
        schedule();
    })) {}

NodeWriter::~NodeWriter() = default;

void NodeWriter::prepare() {
    lanes_.prepare(MonotonicClock::now());
    schedule();
}

void NodeWriter::write(std::uint32_t node, const VolumeWrite& change) {
    lanes_.write(node, graph_.ownerOf(node), change, MonotonicClock::now());
    schedule();
}

void NodeWriter::forget(std::uint32_t node) {
    lanes_.forget(node);
    for (const auto& [lane, connection] : connections_)
        connection->nodes.erase(node);
}

void NodeWriter::clear() {
    lanes_.clear();
    schedule();
}

bool NodeWriter::settle() {
    lanes_.serve(MonotonicClock::now());
    return lanes_.isSettled();
}

bool NodeWriter::open(WriteLanes::Lane lane) {
    pw_core* const core = server_.openCore();
    if (core == nullptr) {
        platform::systemLog(platform::LogPriority::error,
                            "Couldn't connect to the sound server for changes: %s (%d)",
                            std::strerror(errno), errno);
        return false;
    }
    connections_[lane] = std::make_unique<Connection>(*this, lane, core);
    return true;
}

void NodeWriter::close(WriteLanes::Lane lane) {
    connections_.erase(lane);
}

bool NodeWriter::knows(WriteLanes::Lane lane, std::uint32_t node) const {
    return graph_.serialOf(node) <= connections_.at(lane)->newestSerial;
}

int NodeWriter::send(WriteLanes::Lane lane, std::uint32_t node, const VolumeWrite& change) {
    Connection& connection = *connections_.at(lane);
    if (pw_node* const bound = connection.node(node))
        writeStreamProps(bound, change);
    return pw_core_sync(connection.core, PW_ID_CORE, 0);
}

void NodeWriter::schedule() {
    if (const auto due = lanes_.due())
        timer_->startAt(*due);
    else
        timer_->stop();
}
