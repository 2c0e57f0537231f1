#include "plugin/programs/Program.h"

#include "plugin/server/AudioStream.h"

#include <algorithm>
#include <utility>

Program::Program(platform::RunLoop& loop, ProgramProcess process, Owner& owner, Listener& listener,
                 const ApplicationReports& reports)
    : loop_(loop)
    , process_(std::move(process))
    , owner_(owner)
    , listener_(listener)
    , reports_(reports)
    , lifetime_(loop, [this] { lifetimeChanged(); }) {}

Program::~Program() {
    report(0.0F);
}

void Program::add(AudioStream& stream) {
    if (streams_.empty())
        remembered_ = wanted_;
    streams_.insert(&stream);
    // The volume of one of several existing streams does not apply to the others.
    const bool existed = stream.origin() == AudioStream::Origin::existed;
    stream.adopt(existed && !ignored_ ? remembered_ : takeForNext());
    if (ignored_)
        stream.release();
}

void Program::remove(AudioStream& stream) {
    streams_.erase(&stream);
}

void Program::changedElsewhere(const WantedVolume& change) {
    if (ignored_)
        return;
    const WantedVolume before = wanted_;
    wanted_.merge(change);
    if (wanted_ != before)
        listener_.programChangedElsewhere(*this, before);
}

void Program::found(const WantedVolume& found) {
    if (!ignored_)
        wanted_.merge(found);
}

void Program::recall(const WantedVolume& remembered) {
    wanted_.merge(remembered);
    remembered_.merge(remembered);
}

void Program::want(const WantedVolume& change, WantReason reason) {
    if (!ignored_)
        recall(change);
    for (AudioStream* const stream : streams_)
        stream->want(change, reason);
}

void Program::ignore(bool reset) {
    ignored_ = true;
    wanted_ = {};
    remembered_ = {};
    resetsNext_ = reset && streams_.empty();
    for (AudioStream* const stream : streams_) {
        if (reset)
            stream->want(kFullVolume);
        else
            stream->adopt({});
        stream->release();
    }
}

void Program::unignore() {
    if (!std::exchange(ignored_, false))
        return;
    resetsNext_ = false;
    for (AudioStream* const stream : streams_)
        stream->adopt({});
}

WantedVolume Program::takeForNext() noexcept {
    return std::exchange(resetsNext_, false) ? kFullVolume : wanted_;
}

void Program::reviewObstacle() {
    const bool isOpen = std::ranges::any_of(
        streams_, [](const AudioStream* each) { return each->obstacle().empty(); });
    if (streams_.empty())
        return;
    std::string obstacle(isOpen ? std::string_view() : (*streams_.begin())->obstacle());
    if (std::exchange(obstacle_, std::move(obstacle)) != obstacle_ && isConnected())
        reports_.notControllable(process_.pid, obstacle_);
}

bool Program::connect() {
    if (connection_ != nullptr)
        return true;
    connection_ = AppConnection::open(loop_, process_, *this);
    if (connection_ == nullptr)
        return false;
    listener_.programConnected(*this);
    if (!obstacle_.empty())
        reports_.notControllable(process_.pid, obstacle_);
    return true;
}

void Program::report(float level) {
    if (connection_ == nullptr || (level <= 0.0F && !playing_))
        return;
    playing_ = level > 0.0F;
    connection_->sendLevel(level);
}

void Program::commandArrived(const MVCommConsoleMessage& command) {
    if (command.type == kMVCommIgnoreListChanged) {
        listener_.ignoreListChanged();
        return;
    }
    WantedVolume change;
    if (command.type == kMVCommSetVolume)
        change.gain = gainOfPercent(command.value);
    else
        change.muted = command.value != 0;
    want(change);
    listener_.programCommanded(*this, change);
}

void Program::connectionLost() {
    connection_.reset();
    playing_ = false;
    owner_.programDisconnected(*this);
}

void Program::lifetimeChanged() {
    if (lifetime_.contains(process_))
        return;
    const ProgramProcess* const first = lifetime_.first();
    if (first == nullptr) {
        owner_.programEnded(*this);
        return;
    }
    report(0.0F);
    process_ = *first;
    if (connection_ == nullptr)
        return;
    connection_.reset();
    playing_ = false;
    if (!connect())
        owner_.programDisconnected(*this);
}
