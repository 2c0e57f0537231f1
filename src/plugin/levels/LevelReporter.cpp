#include "plugin/levels/LevelReporter.h"

#include "platform/loop/Timer.h"
#include "plugin/programs/ProgramTable.h"
#include "plugin/server/AudioStream.h"

#include <algorithm>

using platform::MonotonicClock;

namespace {

// 21 levels a second, each of which costs a call of the kernel. The application counts a program as
// silent 0.1 s after the last one, so one may come late by more than a period.
constexpr std::chrono::milliseconds reportingPeriod{47};

bool isMeasured(const AudioStream* stream) {
    return stream->isRunning();
}

} // namespace

LevelReporter::LevelReporter(platform::RunLoop& loop, const AudioGraph& graph,
                             const ProgramTable& programs)
    : graph_(graph)
    , programs_(programs)
    , planTimer_(std::make_unique<platform::Timer>(loop, [this] { plan(); }))
    , reportTimer_(std::make_unique<platform::Timer>(loop, [this] { report(); })) {}

LevelReporter::~LevelReporter() = default;

void LevelReporter::attach(pw_core& core) {
    meter_ = std::make_unique<LevelMeter>(core, [this] { review(); });
}

void LevelReporter::detach() {
    meter_.reset();
    review();
}

void LevelReporter::review() {
    planTimer_->start({});
}

void LevelReporter::rebuild() {
    if (meter_ != nullptr)
        meter_->rebuild();
    review();
}

std::set<std::uint32_t> LevelReporter::measuredStreams() const {
    std::set<std::uint32_t> streams;
    for (const auto& program : programs_.programs()) {
        if (!program->isConnected())
            continue;
        for (const AudioStream* const stream : program->streams()) {
            if (isMeasured(stream))
                streams.insert(stream->id());
        }
    }
    return streams;
}

void LevelReporter::plan() {
    if (meter_ != nullptr)
        meter_->reconcile(graph_.planTaps(measuredStreams()), graph_);
    if (const auto next = meter_ != nullptr ? meter_->nextDrop() : std::nullopt)
        planTimer_->startAt(*next);
    scheduleReport();
}

void LevelReporter::report() {
    if (meter_ != nullptr)
        meter_->collect();
    for (const auto& program : programs_.programs()) {
        if (program->isConnected())
            program->report(levelOf(*program));
    }
    scheduleReport();
}

float LevelReporter::levelOf(const Program& program) const {
    float level = 0.0F;
    for (AudioStream* const stream : program.streams()) {
        const auto peaks =
            meter_ != nullptr ? meter_->peaksOf(stream->id()) : std::span<const ChannelPeak>();
        level = std::max(level, stream->level(peaks));
    }
    return level;
}

bool LevelReporter::isAnythingToReport() const {
    return std::ranges::any_of(programs_.programs(), [](const auto& program) {
        return program->isConnected() &&
               (program->isPlaying() || std::ranges::any_of(program->streams(), isMeasured));
    });
}

/// Points in time instead of pauses, so that one late report does not delay the others.
void LevelReporter::scheduleReport() {
    if (!isAnythingToReport()) {
        reportTimer_->stop();
    } else if (!reportTimer_->isActive()) {
        const auto now = MonotonicClock::now();
        nextReport_ += reportingPeriod;
        if (nextReport_ <= now)
            nextReport_ = now + reportingPeriod;
        reportTimer_->startAt(nextReport_);
    }
}
