#include "plugin/Program.h"

#include "platform/ProcessInfo.h"
#include "plugin/AudioStream.h"

Program::Program(platform::RunLoop& loop, platform::StreamProcess process, Listener& listener)
    : loop_(loop), process_(std::move(process)), listener_(listener) {
    if (process_.startTime)
        watch_ = platform::ProcessWatch::create(loop, static_cast<pid_t>(process_.pid),
                                                [this] { listener_.programEnded(*this); });
}

Program::~Program() {
    report(0.0F);
}

void Program::add(AudioStream& stream) {
    if (streams_.empty())
        remembered_ = wanted_;
    streams_.insert(&stream);
    // What one of several that played before us has is not the will for the others.
    stream.adopt(stream.origin() == AudioStream::Origin::existed ? remembered_ : wanted_);
}

void Program::remove(AudioStream& stream) {
    streams_.erase(&stream);
}

void Program::changedElsewhere(const WantedVolume& change) {
    const WantedVolume before = wanted_;
    wanted_.merge(change);
    if (wanted_ != before)
        listener_.programChangedElsewhere(*this);
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
    remembered_.merge(change);
    for (AudioStream* const stream : streams_)
        stream->want(change);
    listener_.programCommanded(*this, change);
}

void Program::connectionLost() {
    connection_.reset();
    playing_ = false;
    listener_.programDisconnected(*this);
}
