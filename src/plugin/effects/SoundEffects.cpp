#include "plugin/effects/SoundEffects.h"

#include "comm/MVCommMessages.h"
#include "platform/base/SystemLog.h"
#include "platform/loop/Timer.h"
#include "plugin/effects/AudioServerProcess.h"
#include "plugin/identity/PseudoPids.h"
#include "plugin/programs/ProgramTable.h"
#include "plugin/server/AudioGraph.h"

#include <pipewire/extensions/metadata.h>

using platform::MonotonicClock;

namespace {

// For a server whose process can't be seen: the last of the numbers that no process has.
constexpr std::uint32_t numberWithoutProcess = PseudoPids::last + 1;

ProgramProcess serverProcess() {
    ProgramProcess process;
    process.pid = numberWithoutProcess;
    process.name = kMVCommNotificationSoundsName;
    if (const auto server = findAudioServer()) {
        process.pid = static_cast<std::uint32_t>(server->pid);
        process.proof = StreamProcess::Proof::peer;
        if (server->path.size() <= ProgramProcess::longestPath)
            process.path = server->path;
    } else {
        platform::systemLog(platform::LogPriority::info,
                            "The sound server's process can't be seen");
    }
    // It goes with the connection to the server, not with the process.
    return process;
}

} // namespace

SoundEffects::SoundEffects(platform::RunLoop& loop, ProgramTable& programs)
    : programs_(programs)
    , settled_(std::make_unique<platform::Timer>(loop, [this] { settle(); })) {}

SoundEffects::~SoundEffects() = default;

void SoundEffects::serverConnected() {
    program_ = &programs_.add(serverProcess());
}

void SoundEffects::serverLost() {
    others_.clear();
    if (settings_ != nullptr)
        globalRemoved(settings_->id());
    registry_ = nullptr;
    if (program_ != nullptr)
        programs_.programEnded(*program_);
}

void SoundEffects::globalAdded(pw_registry& registry, const AudioGlobal& global) {
    if (global.kind != AudioGlobal::Kind::metadata ||
        global.property(PW_KEY_METADATA_NAME) != RouteSettings::name)
        return;
    registry_ = &registry;
    others_.push_back(global.id);
    if (settings_ == nullptr)
        watchNext();
}

void SoundEffects::watchNext() {
    settings_ = std::make_unique<RouteSettings>(
        *registry_, others_.front(),
        [this](const std::optional<std::string>& value) { settingChanged(value); });
    others_.pop_front();
    volume_.appeared();
    settled_->start(RouteVolumePolicy::settling);
}

void SoundEffects::globalRemoved(std::uint32_t id) {
    std::erase(others_, id);
    if (settings_ == nullptr || settings_->id() != id)
        return;
    settled_->stop();
    volume_.gone();
    settings_.reset();
    if (!others_.empty())
        watchNext();
}

void SoundEffects::asked(const WantedVolume& all) {
    write(volume_.asked(all, MonotonicClock::now()));
}

void SoundEffects::changedElsewhere() {
    write(volume_.changedBeside(program_->wanted(), MonotonicClock::now()));
}

void SoundEffects::settle() {
    if (program_ != nullptr)
        write(volume_.settled(program_->wanted(), MonotonicClock::now()));
}

void SoundEffects::settingChanged(const std::optional<std::string>& value) {
    const WantedVolume change = volume_.told(value, MonotonicClock::now());
    if (program_ != nullptr)
        program_->changedElsewhere(change);
}

void SoundEffects::write(const std::optional<std::string>& value) {
    if (value && settings_ != nullptr)
        settings_->set(*value);
}
