#include "plugin/server/AudioGraph.h"

#include <algorithm>
#include <charconv>

namespace {

template <typename Number>
std::optional<Number> number(const AudioGlobal& global, std::string_view key) {
    const std::string& text = global.property(key);
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

} // namespace

const std::string& AudioGlobal::property(std::string_view key) const {
    static const std::string none;
    const auto found = properties.find(key);
    return found != properties.end() ? found->second : none;
}

void AudioGraph::add(const AudioGlobal& global) {
    remove(global.id); // the server reuses ids, perhaps for another kind
    const auto serial = number<std::uint64_t>(global, "object.serial").value_or(0);
    newestSerial_ = std::max(newestSerial_, serial);
    switch (global.kind) {
    case AudioGlobal::Kind::node:
        nodes_[global.id] = {global.property("media.class"), global.property("node.name"),
                             number<std::uint32_t>(global, "client.id"),
                             global.property("media.role"), serial};
        break;
    case AudioGlobal::Kind::port: {
        const auto node = number<std::uint32_t>(global, "node.id");
        const auto place = number<std::uint32_t>(global, "port.id");
        if (node && place && global.property("port.monitor") != "true") {
            const Port port{*node, *place, global.property("port.direction") == "out"};
            ports_[global.id] = port;
            portsByNode_.insert(keyOf(global.id, port));
        }
        break;
    }
    case AudioGlobal::Kind::link: {
        const auto source = number<std::uint32_t>(global, "link.output.node");
        const auto destination = number<std::uint32_t>(global, "link.input.node");
        if (source && destination) {
            links_[global.id] = {*source, *destination};
            linksBySource_.emplace(*source, global.id);
        }
        break;
    }
    case AudioGlobal::Kind::client:
        if (const auto process = number<std::uint32_t>(global, "pipewire.sec.pid"))
            processes_[global.id] = *process;
        break;
    case AudioGlobal::Kind::metadata:
    case AudioGlobal::Kind::other:
        break;
    }
}

void AudioGraph::remove(std::uint32_t id) {
    nodes_.erase(id);
    processes_.erase(id);
    if (const auto port = ports_.find(id); port != ports_.end()) {
        portsByNode_.erase(keyOf(id, port->second));
        ports_.erase(port);
    }
    if (const auto link = links_.find(id); link != links_.end()) {
        linksBySource_.erase({link->second.source, id});
        links_.erase(link);
    }
}

void AudioGraph::clear() {
    *this = {};
}

bool AudioGraph::isOutputStream(std::uint32_t node) const {
    const auto found = nodes_.find(node);
    return found != nodes_.end() && found->second.mediaClass == "Stream/Output/Audio";
}

std::string AudioGraph::roleOf(std::uint32_t node) const {
    const auto found = nodes_.find(node);
    return found != nodes_.end() ? found->second.role : "";
}

std::optional<std::uint32_t> AudioGraph::clientOf(std::uint32_t node) const {
    const auto found = nodes_.find(node);
    return found != nodes_.end() ? found->second.client : std::nullopt;
}

std::uint64_t AudioGraph::serialOf(std::uint32_t node) const {
    const auto found = nodes_.find(node);
    return found != nodes_.end() ? found->second.serial : 0;
}

std::uint32_t AudioGraph::ownerOf(std::uint32_t node) const {
    constexpr std::uint32_t aboveAnyProcess = 0x80000000;
    const auto client = clientOf(node);
    if (!client)
        return 0;
    const auto process = processes_.find(*client);
    return process != processes_.end() ? process->second : aboveAnyProcess | *client;
}

std::vector<std::uint32_t> AudioGraph::outputPorts(std::uint32_t node) const {
    std::vector<std::uint32_t> ports;
    for (auto key = portsByNode_.lower_bound({node, true, 0, 0}); key != portsByNode_.end();
         ++key) {
        const auto& [owner, isOutput, number, id] = *key;
        if (owner != node)
            break;
        ports.push_back(id);
    }
    return ports;
}

std::optional<std::uint32_t> AudioGraph::inputPort(std::uint32_t node, std::size_t number) const {
    const auto wanted = static_cast<std::uint32_t>(number);
    const auto key = portsByNode_.lower_bound({node, false, wanted, 0});
    if (key == portsByNode_.end())
        return std::nullopt;
    const auto& [owner, isOutput, place, id] = *key;
    return owner == node && !isOutput && place == wanted ? std::optional(id) : std::nullopt;
}

std::optional<std::uint32_t> AudioGraph::sinkOf(std::uint32_t stream) const {
    std::optional<std::uint32_t> other;
    for (auto link = linksBySource_.lower_bound({stream, 0});
         link != linksBySource_.end() && link->first == stream; ++link) {
        const std::uint32_t to = links_.at(link->second).destination;
        const auto destination = nodes_.find(to);
        if (destination == nodes_.end() || destination->second.name == kMeterNodeName)
            continue;
        if (destination->second.mediaClass.starts_with("Audio/"))
            return to;
        if (!other)
            other = to;
    }
    return other;
}

std::vector<MeterTap> AudioGraph::planTaps(const std::set<std::uint32_t>& streams) const {
    std::vector<MeterTap> taps;
    for (const std::uint32_t stream : streams) {
        const auto sink = sinkOf(stream);
        if (!sink)
            continue;
        std::size_t channel = 0;
        for (const std::uint32_t port : outputPorts(stream))
            taps.push_back({stream, port, *sink, channel++});
    }
    return taps;
}
