#pragma once

#include "platform/StreamProcess.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// The name of the nodes that measure. Whatever feeds one of them is not heard there.
inline constexpr const char* kMeterNodeName = "tonvale-meter";

/// One object that the sound server announced, with the properties it announced it with.
struct AudioGlobal {
    enum class Kind { client, node, port, link, metadata, other };
    using Properties = std::map<std::string, std::string, std::less<>>;

    std::uint32_t id = 0;
    Kind kind = Kind::other;
    Properties properties;

    /// Empty when there is no such property.
    const std::string& property(std::string_view key) const;
};

/// One meter to have: an output port of a stream, to be measured in the graph of a sink.
struct MeterTap {
    std::uint32_t stream;
    std::uint32_t port;
    std::uint32_t sink;
    std::size_t channel; ///< place of the port among those of its stream

    bool operator==(const MeterTap&) const = default;
};

/// The objects of the sound server as far as they matter here, and what follows from them. Plain
/// data: objects may come in any order, twice, or go without having come.
class AudioGraph {
  public:
    void add(const AudioGlobal& global);
    void remove(std::uint32_t id);
    void clear();

    /// Whether the node is the output of a program.
    bool isOutputStream(std::uint32_t node) const;

    /// What is known of the node's client, and the application's name; the claims of the node
    /// itself are not announced and stay empty.
    platform::StreamEvidence evidenceOf(std::uint32_t node) const;

    /// The output ports of a node in the order of its channels.
    std::vector<std::uint32_t> outputPorts(std::uint32_t node) const;

    /// The input port with this number within its node.
    std::optional<std::uint32_t> inputPort(std::uint32_t node, std::size_t number) const;

    /// The node that a stream is heard through: a sink or device if it feeds one, otherwise
    /// anything else but a meter.
    std::optional<std::uint32_t> sinkOf(std::uint32_t stream) const;

    /// The meters that these streams need. Streams that feed nothing need none.
    std::vector<MeterTap> planTaps(const std::set<std::uint32_t>& streams) const;

  private:
    struct Client {
        std::string process;
        std::string user;
        std::uint64_t serial;
    };
    struct Node {
        std::string mediaClass;
        std::string name;
        std::string applicationName;
        std::optional<std::uint32_t> client;
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

    std::map<std::uint32_t, Client> clients_;
    std::map<std::uint32_t, Node> nodes_;
    std::map<std::uint32_t, Port> ports_;
    std::map<std::uint32_t, Link> links_;
};
