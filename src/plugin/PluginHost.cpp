#include "plugin/PluginHost.h"

#include "platform/Timer.h"

#include <algorithm>
#include <utility>

namespace {

// 26 levels a second: the application counts a program as silent 0.1 s after the last one.
constexpr std::chrono::milliseconds reportingPeriod{38};

/// A session manager that starts publishes this, and a moment later gives all streams the volumes
/// that it remembers: one for all programs with the same role, say.
bool tellsOfSessionManager(const AudioGlobal& global) {
    return global.kind == AudioGlobal::Kind::metadata &&
           global.property("metadata.name") == "default";
}

} // namespace

PluginHost::PluginHost(platform::RunLoop& loop)
    : loop_(loop)
    , plan_(std::make_unique<platform::Timer>(loop, [this] { planMeters(); }))
    , report_(std::make_unique<platform::Timer>(loop, [this] { reportLevels(); }))
    , programs_(loop, *this)
    , server_(loop, *this) {
    server_.start();
}

PluginHost::~PluginHost() {
    forgetServer();
}

void PluginHost::resumed() {
    plan_->start({});
}

PluginStatus PluginHost::status() const {
    PluginStatus status{server_.core() != nullptr, {}};
    for (const auto& program : programs_.programs()) {
        ProgramStatus& entry = status.programs.emplace_back(
            ProgramStatus{program->process(), program->wanted(), program->isConnected(), {}});
        for (const AudioStream* const stream : program->streams())
            entry.streams.push_back(
                {stream->id(), stream->isRunning(), stream->wanted(), stream->props()});
    }
    return status;
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
    graph_.clear();
}

void PluginHost::globalAdded(const AudioGlobal& global) {
    globalRemoved(global.id);
    graph_.add(global);
    if (global.kind == AudioGlobal::Kind::node && graph_.isOutputStream(global.id)) {
        AudioStream::Listener& listener = *this;
        voices_[global.id].stream =
            std::make_unique<AudioStream>(loop_, server_, global.id, listener);
    }
    if (tellsOfSessionManager(global)) {
        for (const auto& [id, voice] : voices_)
            voice.stream->uphold();
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
    AudioStream& stream = *voice.stream;
    if (voice.orphaned || stream.isInternal())
        return;
    platform::StreamEvidence evidence = graph_.evidenceOf(stream.id());
    stream.describeTo(evidence);
    const auto process = platform::identifyStream(evidence);
    if (!process)
        return;
    if (voice.program != nullptr) {
        if (voice.program->process().pid == process->pid)
            return;
        release(voice);
    }
    Program& program = programs_.programOf(*process);
    voice.program = &program;
    program.add(stream);
}

void PluginHost::release(Voice& voice) {
    Program* const program = std::exchange(voice.program, nullptr);
    if (program == nullptr)
        return;
    program->remove(*voice.stream);
    programs_.dropUnlessHeld(*program);
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
    if (meter_->hasIdleFilters() && !plan_->isActive())
        plan_->start(LevelMeter::idleTime);
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
