#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

/// The name of our meter nodes. They are not audible outputs.
inline constexpr const char* kMeterNodeName = "tonvale-meter";

/// One object that the sound server has announced, with its properties.
struct AudioGlobal {
    enum class Kind { client, node, port, link, metadata, other };
    using Properties = std::map<std::string, std::string, std::less<>>;

    std::uint32_t id = 0;
    Kind kind = Kind::other;
    Properties properties;

    /// Empty if there is no such property.
    [[nodiscard]] const std::string& property(std::string_view key) const;
};

/// A required meter: an output port of a stream, to be measured in the graph of a sink.
struct MeterTap {
    std::uint32_t stream;
    std::uint32_t port;
    std::uint32_t sink;
    std::size_t channel; ///< index of the port within its stream

    bool operator==(const MeterTap&) const = default;
};

/// The relevant objects of the sound server, and facts derived from them. Plain data: objects may
/// be added in any order or twice, and removed without having been added.
class AudioGraph {
  public:
    /// Replaces an object with the same id. Objects that lack required properties are left out.
    void add(const AudioGlobal& global);

    /// Keeps objects that refer to it, since their removal is announced separately.
    void remove(std::uint32_t id);
    void clear();

    /// Whether the node is the output of a program.
    [[nodiscard]] bool isOutputStream(std::uint32_t node) const;

    /// The node's media.role, if it was announced.
    [[nodiscard]] std::string roleOf(std::uint32_t node) const;

    /// The client that owns the node; none for the server's own nodes.
    [[nodiscard]] std::optional<std::uint32_t> clientOf(std::uint32_t node) const;

    /// The node's object.serial, and the greatest of all objects so far; 0 if unknown. The server
    /// assigns increasing serials.
    [[nodiscard]] std::uint64_t serialOf(std::uint32_t node) const;
    [[nodiscard]] std::uint64_t newestSerial() const noexcept { return newestSerial_; }

    /// Identifies the process that serves the node: the same value for all its nodes. 0 for the
    /// server itself.
    [[nodiscard]] std::uint32_t ownerOf(std::uint32_t node) const;

    /// The output ports of a node in the order of its channels.
    [[nodiscard]] std::vector<std::uint32_t> outputPorts(std::uint32_t node) const;

    /// The input port with this number within its node.
    [[nodiscard]] std::optional<std::uint32_t> inputPort(std::uint32_t node,
                                                         std::size_t number) const;

    /// The node through which a stream is audible: a sink or device if it feeds one, otherwise any
    /// node except a meter.
    [[nodiscard]] std::optional<std::uint32_t> sinkOf(std::uint32_t stream) const;

    /// The meters that these streams need. Streams that feed nothing need none.
    [[nodiscard]] std::vector<MeterTap> planTaps(const std::set<std::uint32_t>& streams) const;

  private:
    struct Node {
        std::string mediaClass;
        std::string name;
        std::optional<std::uint32_t> client;
        std::string role;
        std::uint64_t serial;
    };
    struct Port {
        std::uint32_t node;
        std::uint32_t number;
        bool isOutput;
    };
    struct Link {
        std::uint32_t source;
        std::uint32_t destination;
    };

    using PortKey = std::tuple<std::uint32_t, bool, std::uint32_t, std::uint32_t>;
    static PortKey keyOf(std::uint32_t id, const Port& port) {
        return {port.node, port.isOutput, port.number, id};
    }

    std::uint64_t newestSerial_ = 0;
    std::map<std::uint32_t, Node> nodes_;
    std::map<std::uint32_t, std::uint32_t> processes_; // by client, as the kernel told the server
    std::map<std::uint32_t, Port> ports_;
    std::map<std::uint32_t, Link> links_;

    // The same once more, so that what belongs to a node is found at once.
    std::set<PortKey> portsByNode_;
    std::set<std::pair<std::uint32_t, std::uint32_t>> linksBySource_;
};
