#include "ui/items/TNBeeper.h"

#include "model/VolumeConversion.h"
#include "platform/bundle/Bundle.h"
#include "platform/loop/RunLoop.h"

#include <cstdlib>
#include <ctime>
#include <utility>

const std::array<TNBeeper::Range, 16> TNBeeper::ranges{{
    {Seconds(0.0), Seconds(0.59)},
    {Seconds(0.644), Seconds(0.713)},
    {Seconds(1.385), Seconds(0.686)},
    {Seconds(2.084), Seconds(0.644)},
    {Seconds(2.797), Seconds(0.781)},
    {Seconds(3.866), Seconds(0.631)},
    {Seconds(4.565), Seconds(0.631)},
    {Seconds(5.594), Seconds(0.521)},
    {Seconds(6.17), Seconds(0.425)},
    {Seconds(6.567), Seconds(0.535)},
    {Seconds(7.143), Seconds(0.781)},
    {Seconds(7.924), Seconds(0.823)},
    {Seconds(8.994), Seconds(0.686)},
    {Seconds(9.693), Seconds(0.809)},
    {Seconds(10.612), Seconds(0.85)},
    {Seconds(11.681), Seconds(0.781)},
}};

TNBeeper& TNBeeper::sharedBeeper() {
    static auto* const beeper = new TNBeeper(*platform::RunLoop::current(), [] {
        return platform::SampleOutput::load(
            platform::Bundle::main().resource("bounces.mp3", {".flac", ".ogg", ".mp3"}));
    });
    return *beeper;
}

TNBeeper::TNBeeper(platform::RunLoop& loop, MakeOutput makeOutput)
    : makeOutput_(std::move(makeOutput)), end_(loop, [this] { stop(); }) {
    ::srandom(static_cast<unsigned>(std::time(nullptr)));
}

void TNBeeper::beepAtVolume(float volume) {
    if (!std::exchange(hasOutput_, true))
        sound_ = makeOutput_();
    if (sound_ == nullptr)
        return;
    if (end_.isActive())
        stop();
    const Range& range = ranges[static_cast<std::size_t>(::random()) & 15U];
    const float level = VolumeConversion::clampedLevel(volume);
    sound_->play(range.start, range.duration, level * level * level);
    end_.start(std::chrono::duration_cast<platform::MonotonicClock::duration>(range.duration));
}

void TNBeeper::stop() {
    end_.stop();
    sound_->stop();
}
