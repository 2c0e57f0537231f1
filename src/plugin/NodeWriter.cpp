#include "plugin/NodeWriter.h"

#include "platform/SystemLog.h"
#include "platform/Timer.h"
#include "plugin/AudioServer.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace {

constexpr std::chrono::seconds restAfter{5};

} // namespace

struct NodeWriter::Connection {
    explicit Connection(pw_core* connected) noexcept : core(connected) {}
    ~Connection() {
        node.reset();
        registry.reset();
        hook.reset();
        pw_core_disconnect(core);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    pw_core* const core;
    std::unique_ptr<ListenerHook> hook = std::make_unique<ListenerHook>();
    ProxyHandle<pw_registry> registry;
    ProxyHandle<pw_node> node;
};

const pw_core_events NodeWriter::coreEvents = [] {
    pw_core_events events{};
    events.version = PW_VERSION_CORE_EVENTS;
    events.done = [](void* data, std::uint32_t, int sequence) {
        static_cast<NodeWriter*>(data)->answered(sequence);
    };
    events.error = [](void* data, std::uint32_t id, int, int result, const char*) {
        if (id != PW_ID_CORE || result != -EPIPE)
            return;
        NodeWriter& writer = *static_cast<NodeWriter*>(data);
        writer.broken_ = true;
        writer.close();
    };
    return events;
}();

NodeWriter::NodeWriter(platform::RunLoop& loop, const AudioServer& server, std::uint32_t node)
    : server_(server)
    , id_(node)
    , serial_(server.newestSerial())
    , pause_(std::make_unique<platform::Timer>(loop, [this] { rest(); })) {}

NodeWriter::~NodeWriter() = default;

pw_node* NodeWriter::node() {
    if (std::exchange(broken_, false))
        connection_.reset();
    closing_ = false;
    pause_->start(restAfter);
    if (connection_ != nullptr)
        return connection_->node.get();
    pw_core* const core = server_.openCore(serial_);
    if (core == nullptr) {
        platform::systemLog(platform::LogPriority::error, "Couldn't change stream %u: %s (%d)", id_,
                            std::strerror(errno), errno);
        return nullptr;
    }
    connection_ = std::make_unique<Connection>(core);
    pw_core_add_listener(core, connection_->hook->get(), &coreEvents, this);
    connection_->registry.reset(pw_core_get_registry(core, PW_VERSION_REGISTRY, 0));
    if (connection_->registry != nullptr)
        connection_->node.reset(static_cast<pw_node*>(pw_registry_bind(
            connection_->registry.get(), id_, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0)));
    return connection_->node.get();
}

/// Asks whether all has been done, and closes the connection when it has been said so.
void NodeWriter::rest() {
    if (!closing_) {
        ask();
        return;
    }
    connection_.reset();
    broken_ = false;
}

void NodeWriter::ask() {
    answered_ = false;
    if (connection_ != nullptr)
        question_ = pw_core_sync(connection_->core, PW_ID_CORE, 0);
}

void NodeWriter::answered(int sequence) {
    if (sequence != question_)
        return;
    answered_ = true;
    if (!pause_->isActive())
        close();
}

/// At the loop's next turn, since not from inside the connection's own events.
void NodeWriter::close() {
    closing_ = true;
    pause_->start({});
}
