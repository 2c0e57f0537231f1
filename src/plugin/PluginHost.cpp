#include "plugin/PluginHost.h"

#include "platform/Timer.h"

#include <algorithm>
#include <utility>

namespace {

// 26 levels a second: the application counts a program as silent 0.1 s after the last one.
constexpr std::chrono::milliseconds reportingPeriod{38};

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
    for (const auto& [id, voice] : voices_)
        voice.stream->finish();
    server_.settle();
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
    graph_.clear();
}

void PluginHost::globalAdded(const AudioGlobal& global) {
    globalRemoved(global.id);
    graph_.add(global);
    if (global.kind == AudioGlobal::Kind::node && graph_.isOutputStream(global.id)) {
        AudioStream::Listener& listener = *this;
        voices_[global.id].stream = std::make_unique<AudioStream>(
            loop_, *server_.registry(), global.id,
            server_.hasListedAll() ? AudioStream::Origin::appeared : AudioStream::Origin::existed,
            listener);
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

void PluginHost::streamChangedElsewhere(AudioStream& stream, const WantedVolume& change) {
    Program* const program = voices_.at(stream.id()).program;
    if (program != nullptr)
        program->changedElsewhere(change);
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
