#include "plugin/AudioGraph.h"

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
    remove(global.id); // the server uses numbers again, perhaps for another kind
    switch (global.kind) {
    case AudioGlobal::Kind::client:
        clients_[global.id] = {global.property("pipewire.sec.pid"),
                               global.property("pipewire.sec.uid"),
                               number<std::uint64_t>(global, "object.serial").value_or(global.id)};
        break;
    case AudioGlobal::Kind::node:
        nodes_[global.id] = {global.property("media.class"), global.property("node.name"),
                             global.property("application.name"),
                             number<std::uint32_t>(global, "client.id")};
        break;
    case AudioGlobal::Kind::port: {
        const auto node = number<std::uint32_t>(global, "node.id");
        const auto place = number<std::uint32_t>(global, "port.id");
        if (node && place && global.property("port.monitor") != "true")
            ports_[global.id] = {*node, *place, global.property("port.direction") == "out"};
        break;
    }
    case AudioGlobal::Kind::link: {
        const auto source = number<std::uint32_t>(global, "link.output.node");
        const auto destination = number<std::uint32_t>(global, "link.input.node");
        if (source && destination)
            links_[global.id] = {*source, *destination};
        break;
    }
    case AudioGlobal::Kind::metadata:
    case AudioGlobal::Kind::other:
        break;
    }
}

void AudioGraph::remove(std::uint32_t id) {
    clients_.erase(id);
    nodes_.erase(id);
    ports_.erase(id);
    links_.erase(id);
}

void AudioGraph::clear() {
    *this = {};
}

bool AudioGraph::isOutputStream(std::uint32_t node) const {
    const auto found = nodes_.find(node);
    return found != nodes_.end() && found->second.mediaClass == "Stream/Output/Audio";
}

platform::StreamEvidence AudioGraph::evidenceOf(std::uint32_t node) const {
    platform::StreamEvidence evidence;
    const auto found = nodes_.find(node);
    if (found == nodes_.end())
        return evidence;
    evidence.applicationName = found->second.applicationName;
    const auto client =
        found->second.client ? clients_.find(*found->second.client) : clients_.end();
    if (client != clients_.end()) {
        evidence.clientProcess = client->second.process;
        evidence.clientUser = client->second.user;
        evidence.clientSerial = client->second.serial;
    }
    return evidence;
}

std::vector<std::uint32_t> AudioGraph::outputPorts(std::uint32_t node) const {
    std::vector<std::uint32_t> ports;
    for (const auto& [id, port] : ports_) {
        if (port.node == node && port.isOutput)
            ports.push_back(id);
    }
    std::sort(ports.begin(), ports.end(), [this](std::uint32_t a, std::uint32_t b) {
        return ports_.at(a).number < ports_.at(b).number;
    });
    return ports;
}

std::optional<std::uint32_t> AudioGraph::inputPort(std::uint32_t node, std::size_t number) const {
    for (const auto& [id, port] : ports_) {
        if (port.node == node && !port.isOutput && port.number == number)
            return id;
    }
    return std::nullopt;
}

std::optional<std::uint32_t> AudioGraph::sinkOf(std::uint32_t stream) const {
    std::optional<std::uint32_t> other;
    for (const auto& [id, link] : links_) {
        const auto destination = nodes_.find(link.destination);
        if (link.source != stream || destination == nodes_.end() ||
            destination->second.name == kMeterNodeName)
            continue;
        if (destination->second.mediaClass.starts_with("Audio/"))
            return link.destination;
        if (!other)
            other = link.destination;
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
