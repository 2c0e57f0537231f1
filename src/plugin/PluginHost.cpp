#include "plugin/PluginHost.h"

#include "platform/ProcessInfo.h"
#include "platform/Timer.h"
#include "plugin/ProgramName.h"

#include <algorithm>
#include <utility>

namespace {

// 26 levels a second: the application counts a program as silent 0.1 s after the last one.
constexpr std::chrono::milliseconds reportingPeriod{38};

} // namespace

PluginHost::PluginHost(platform::RunLoop& loop)
    : plan_(std::make_unique<platform::Timer>(loop, [this] { planMeters(); }))
    , report_(std::make_unique<platform::Timer>(loop, [this] { reportLevels(); }))
    , programs_(loop, *this)
    , server_(loop, *this) {
    server_.start();
}

PluginHost::~PluginHost() {
    forgetServer();
}

void PluginHost::serverConnected() {
    meter_ = std::make_unique<LevelMeter>(*server_.core(), [this] { plan_->start({}); });
}

void PluginHost::serverLost() {
    forgetServer();
    updateReporting();
}

void PluginHost::forgetServer() {
    meter_.reset();
    for (auto& [id, voice] : voices_)
        release(voice);
    voices_.clear();
    while (!clients_.empty())
        dropClient(clients_.begin()->first);
    graph_.clear();
}

void PluginHost::globalAdded(const AudioGlobal& global) {
    globalRemoved(global.id);
    graph_.add(global);
    if (global.kind == AudioGlobal::Kind::node && graph_.isOutputStream(global.id)) {
        AudioStream::Listener& listener = *this;
        voices_[global.id].stream =
            std::make_unique<AudioStream>(*server_.registry(), global.id, listener);
        watchOwner(global.id);
    } else if (global.kind == AudioGlobal::Kind::client) {
        clients_[global.id].appeared = platform::ticksSinceBoot();
        for (const auto& [id, voice] : voices_)
            watchOwner(id);
    }
    plan_->start({});
}

void PluginHost::globalRemoved(std::uint32_t id) {
    graph_.remove(id);
    const auto voice = voices_.find(id);
    if (voice != voices_.end()) {
        release(voice->second);
        voices_.erase(voice);
    }
    dropClient(id);
    plan_->start({});
}

void PluginHost::dropClient(std::uint32_t id) {
    if (clients_.erase(id) > 0)
        programs_.clientGone(id);
}

void PluginHost::watchOwner(std::uint32_t stream) {
    const auto owner = graph_.clientOf(stream);
    const auto client = owner ? clients_.find(*owner) : clients_.end();
    if (client == clients_.end() || client->second.watched != nullptr)
        return;
    AudioClient::Listener& listener = *this;
    client->second.watched = std::make_unique<AudioClient>(*server_.registry(), *owner,
                                                           client->second.appeared, listener);
}

void PluginHost::clientDescribed(AudioClient& client) {
    for (auto& [id, voice] : voices_) {
        if (graph_.clientOf(id) == client.id())
            identify(voice);
    }
    plan_->start({});
}

void PluginHost::streamDescribed(AudioStream& stream) {
    identify(voices_.at(stream.id()));
    plan_->start({});
}

void PluginHost::streamStateChanged(AudioStream&) {
    updateReporting();
}

void PluginHost::identify(Voice& voice) {
    if (voice.orphaned)
        return;
    AudioStream& stream = *voice.stream;
    const auto client = graph_.clientOf(stream.id());
    const auto process = processOf(stream);
    // The new one first, so that one and the same program does not end in between.
    Program* const next = process ? &programs_.join(*process, *client) : nullptr;
    Program* const last = std::exchange(voice.program, nullptr);
    voice.orphaned = false; // if the last one has just ended
    if (last != nullptr && last != next) {
        last->remove(stream);
        stream.adopt({});
    }
    if (next != nullptr && last != next)
        next->add(stream);
    if (last != nullptr)
        programs_.withdraw(*last, voice.process, *client);
    voice.program = next;
    voice.process = process.value_or(platform::StreamProcess{});
}

std::optional<platform::StreamProcess> PluginHost::processOf(const AudioStream& stream) const {
    const auto owner = graph_.clientOf(stream.id());
    const auto client = owner ? clients_.find(*owner) : clients_.end();
    if (client == clients_.end() || client->second.watched == nullptr ||
        !client->second.watched->isDescribed() || !stream.isDescribed() || stream.isInternal())
        return std::nullopt;
    platform::StreamEvidence evidence;
    client->second.watched->describeTo(evidence);
    stream.describeTo(evidence);
    auto process = platform::identifyStream(evidence);
    if (process)
        process->name = checkinName(std::move(process->name));
    return process;
}

void PluginHost::release(Voice& voice) {
    Program* const program = std::exchange(voice.program, nullptr);
    if (program != nullptr)
        program->remove(*voice.stream);
}

void PluginHost::programGoes(Program& program) {
    for (auto& [id, voice] : voices_) {
        if (voice.program != &program)
            continue;
        voice.program = nullptr;
        voice.orphaned = true;
    }
    plan_->start({});
}

void PluginHost::connectionsChanged() {
    plan_->start({});
    updateReporting();
}

void PluginHost::planMeters() {
    if (meter_ == nullptr)
        return;
    std::set<std::uint32_t> listenedTo;
    for (const auto& [id, voice] : voices_) {
        if (voice.program != nullptr && voice.program->isConnected())
            listenedTo.insert(id);
    }
    meter_->reconcile(graph_.planTaps(listenedTo), graph_);
    updateReporting();
}

void PluginHost::reportLevels() {
    if (meter_ != nullptr)
        meter_->collect();
    for (const auto& program : programs_.programs()) {
        float level = 0.0F;
        for (AudioStream* const stream : program->streams())
            level = std::max(level, stream->level(meter_->peaksOf(stream->id())));
        program->report(level);
    }
    updateReporting();
}

bool PluginHost::isAnythingToReport() const {
    const auto runs = [](const AudioStream* stream) { return stream->isRunning(); };
    return std::any_of(
        programs_.programs().begin(), programs_.programs().end(), [&runs](const auto& program) {
            const auto& streams = program->streams();
            return program->isConnected() &&
                   (program->isPlaying() || std::any_of(streams.begin(), streams.end(), runs));
        });
}

void PluginHost::updateReporting() {
    if (!isAnythingToReport())
        report_->stop();
    else if (!report_->isActive())
        report_->start(reportingPeriod);
}
