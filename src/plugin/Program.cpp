#include "plugin/Program.h"

#include "plugin/AudioStream.h"

#include <algorithm>

Program::Program(platform::RunLoop& loop, platform::StreamProcess process, Listener& listener)
    : loop_(loop)
    , process_(std::move(process))
    , listener_(listener)
    , life_(loop, [this] { lifeChanged(); }) {}

Program::~Program() {
    report(0.0F);
}

void Program::add(AudioStream& stream) {
    if (std::find(streams_.begin(), streams_.end(), &stream) != streams_.end())
        return;
    streams_.push_back(&stream);
    stream.adopt(wanted_);
}

void Program::remove(AudioStream& stream) {
    std::erase(streams_, &stream);
}

void Program::changedElsewhere(const WantedVolume& change) {
    wanted_.merge(change);
}

bool Program::connect() {
    if (connection_ == nullptr)
        connection_ = AppConnection::open(loop_, process_, *this);
    return connection_ != nullptr;
}

void Program::report(float level) {
    if (connection_ == nullptr || (level <= 0.0F && !playing_))
        return;
    playing_ = level > 0.0F;
    connection_->sendLevel(level);
}

void Program::commandArrived(const MVCommConsoleMessage& command) {
    WantedVolume change;
    if (command.type == kMVCommSetVolume)
        change.gain = gainOfPercent(command.value);
    else
        change.muted = command.value != 0;
    wanted_.merge(change);
    for (AudioStream* const stream : streams_)
        stream->want(change);
    listener_.programCommanded(*this, change);
}

void Program::connectionLost() {
    connection_.reset();
    playing_ = false;
    listener_.programDisconnected(*this);
}

void Program::lifeChanged() {
    const platform::StreamProcess* const first = life_.first();
    if (first == nullptr) {
        listener_.programEnded(*this);
        return;
    }
    if (first->pid == process_.pid && first->name == process_.name && first->path == process_.path)
        return;
    report(0.0F);
    process_ = *first;
    if (connection_ == nullptr)
        return;
    connection_.reset();
    playing_ = false;
    if (!connect())
        listener_.programDisconnected(*this);
}
