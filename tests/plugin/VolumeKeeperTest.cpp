#include "plugin/volume/VolumeKeeper.h"

#include <gmock/gmock.h>

#include <utility>

using testing::ElementsAre;
using testing::FloatNear;

namespace {

using namespace std::chrono_literals;
using Volumes = std::vector<float>;

constexpr float half = 0.125F;
constexpr WantedVolume nothing{};
constexpr WantedVolume wantsHalf{half, std::nullopt};
constexpr WantedVolume wantsFull{1.0F, std::nullopt};
constexpr WantedVolume wantsMute{std::nullopt, true};
constexpr WantedVolume wantsSound{std::nullopt, false};

/// A stream that does as it is told and tells what it does.
class VolumeKeeperTest : public testing::Test {
  protected:
    VolumeKeeper::TimePoint now_{std::chrono::hours(1)};
    std::optional<VolumeKeeper> keeper_{now_};
    StreamProps stream_{{1.0F, 1.0F}, false, 1.0F};
    int writes_ = 0;

    /// Carries out what is to be written, without telling of it yet.
    void carryOut(const VolumeWrite& write) {
        writes_ += write.isEmpty() ? 0 : 1;
        if (write.channelVolumes)
            stream_.channelVolumes = *write.channelVolumes;
        stream_.mute = write.mute.value_or(stream_.mute);
    }

    /// Tells what is in effect, as often as that leads to something new.
    void tell() {
        StreamProps told;
        do {
            told = stream_;
            carryOut(keeper_->propsArrived(told, now_));
        } while (told != stream_);
    }

    void obey(const VolumeWrite& write) {
        carryOut(write);
        tell();
    }

    void changeElsewhere(Volumes volumes) {
        stream_.channelVolumes = std::move(volumes);
        tell();
    }

    /// A stream that began a while ago and is heard.
    void play(const WantedVolume& wanted = {}) {
        carryOut(keeper_->adopt(wanted, now_));
        tell();
        carryOut(keeper_->setRunning(true));
        now_ += VolumeHold::duration;
        writes_ = 0;
    }

    int stepsToTheEnd() {
        int steps = 0;
        for (; keeper_->isRamping(); ++steps) {
            now_ = std::max(now_, keeper_->nextStep());
            obey(keeper_->step(now_));
        }
        return steps;
    }
};

} // namespace

TEST_F(VolumeKeeperTest, ANewStreamIsHeldAgainstWhatIsRestored) {
    carryOut(keeper_->adopt({half, true}, now_));
    EXPECT_EQ(writes_, 0) << "nothing is known of the stream yet";
    tell();
    EXPECT_EQ(stream_, (StreamProps{{half, half}, true, 1.0F}));
    stream_ = {{0.9F, 0.9F}, false, 1.0F};
    now_ += 400ms;
    tell();
    EXPECT_EQ(stream_, (StreamProps{{half, half}, true, 1.0F}));
    for (int i = 0; i < 100; ++i)
        changeElsewhere({0.9F, 0.9F});
    EXPECT_LE(writes_, VolumeHold::mostWrites + 1) << "not for ever";
    EXPECT_EQ(keeper_->takeChangesElsewhere(), nothing);
}

TEST_F(VolumeKeeperTest, OnlyWhatIsHeardNeedsARamp) {
    play();
    obey(keeper_->want(wantsHalf, now_));
    EXPECT_THAT(stream_.channelVolumes[0], FloatNear(0.857375F, 1e-5F)) << "the first step at once";
    EXPECT_EQ(stepsToTheEnd(), 9);
    EXPECT_EQ(stream_.channelVolumes, (Volumes{half, half}));
    EXPECT_EQ(keeper_->takeChangesElsewhere(), nothing) << "these are echoes";

    obey(keeper_->want(wantsMute, now_));
    obey(keeper_->want(wantsFull, now_));
    EXPECT_EQ(stream_, (StreamProps{{1.0F, 1.0F}, true, 1.0F})) << "muted";
    obey(keeper_->want(wantsSound, now_));
    EXPECT_EQ(stream_, (StreamProps{{1.0F, 1.0F}, false, 1.0F}));
    obey(keeper_->setRunning(false));
    obey(keeper_->want(wantsHalf, now_));
    EXPECT_EQ(stream_.channelVolumes, (Volumes{half, half})) << "not running";
    EXPECT_FALSE(keeper_->isRamping());
}

TEST_F(VolumeKeeperTest, ARampJumpsToItsEndWhenItIsHeardNoMore) {
    for (int way = 0; way < 3; ++way) {
        obey(keeper_->adopt(wantsFull, now_));
        play(wantsFull);
        obey(keeper_->setRunning(true));
        obey(keeper_->want(wantsHalf, now_));
        EXPECT_TRUE(keeper_->isRamping());
        if (way == 0)
            obey(keeper_->setRunning(false));
        else if (way == 1)
            obey(keeper_->want(wantsMute, now_));
        else
            obey(keeper_->finish());
        EXPECT_EQ(stream_.channelVolumes, (Volumes{half, half})) << way;
        EXPECT_FALSE(keeper_->isRamping());
        obey(keeper_->want(wantsSound, now_));
    }
}

TEST_F(VolumeKeeperTest, ALateChangeOfSomebodyElseIsAPersonsWill) {
    play(wantsHalf);
    changeElsewhere({0.4F, 0.2F});
    EXPECT_EQ(keeper_->takeChangesElsewhere(), (WantedVolume{0.4F, false})) << "seen and let be";
    stream_.mute = true;
    tell();
    EXPECT_EQ(keeper_->takeChangesElsewhere(), wantsMute);
    changeElsewhere({1.5F, 0.75F});
    EXPECT_EQ(keeper_->takeChangesElsewhere(), (WantedVolume{1.5F, std::nullopt}));
    EXPECT_EQ(writes_, 0) << "nothing is fought";
    obey(keeper_->want({half, false}, now_));
    stepsToTheEnd();
    EXPECT_EQ(stream_, (StreamProps{{half, half / 2}, false, 1.0F})) << "the balance is theirs";
    EXPECT_EQ(keeper_->takeChangesElsewhere(), nothing);
}

TEST_F(VolumeKeeperTest, WhatNobodyHadAskedForIsToldWithTheFirstChange) {
    stream_.channelVolumes = {0.2F, 0.2F}; // restored
    play();
    stream_.mute = true;
    tell();
    EXPECT_EQ(keeper_->takeChangesElsewhere(), (WantedVolume{0.2F, true}));
    stream_.mute = false;
    tell();
    EXPECT_EQ(keeper_->takeChangesElsewhere(), wantsSound);
}

TEST_F(VolumeKeeperTest, AChangeDuringARampEndsItAndIsNotOvertaken) {
    play(wantsFull);
    carryOut(keeper_->want(wantsHalf, now_));
    const StreamProps step = stream_; // on its way when the other change is made
    stream_.channelVolumes = {0.3F, 0.3F};
    carryOut(keeper_->propsArrived(stream_, now_));
    EXPECT_FALSE(keeper_->isRamping());
    carryOut(keeper_->propsArrived(step, now_));
    tell();
    EXPECT_EQ(stream_.channelVolumes, (Volumes{0.3F, 0.3F}));
    EXPECT_EQ(keeper_->takeChangesElsewhere(), (WantedVolume{0.3F, false}));
}

TEST_F(VolumeKeeperTest, ValuesComeBackRoundedLateAndLeftOut) {
    play(wantsFull);
    carryOut(keeper_->want(wantsHalf, now_));
    for (int i = 0; i < 3; ++i) {
        now_ = keeper_->nextStep();
        carryOut(keeper_->step(now_));
    }
    stream_.channelVolumes[0] *= 1.00001F;
    now_ += 1min; // the program was stopped
    carryOut(keeper_->propsArrived(stream_, now_));
    EXPECT_EQ(keeper_->takeChangesElsewhere(), nothing);
    EXPECT_TRUE(keeper_->isRamping());
}

TEST_F(VolumeKeeperTest, WhatIsHeardAlreadyIsOnlyMadeQuieter) {
    struct Case {
        const char* name;
        WantedVolume remembered;
        StreamProps before;
        StreamProps after;
        WantedVolume found;
    };
    const StreamProps quiet{{0.02F, 0.01F}, false, 1.0F};
    for (const auto& [name, remembered, before, after, found] : {
             Case{"quieter by itself", wantsHalf, quiet, quiet, {0.02F, false}},
             Case{"muted by itself",
                  {half, false},
                  {{1.0F, 0.5F}, true, 1.0F},
                  {{half, half / 2}, true, 1.0F},
                  wantsMute},
             Case{"to be muted", {1.0F, true}, quiet, {{0.02F, 0.01F}, true, 1.0F}, {0.02F, {}}},
             Case{"nothing remembered", {}, quiet, quiet, {0.02F, false}},
         }) {
        keeper_.emplace(now_);
        keeper_->heardAlready();
        stream_ = before;
        carryOut(keeper_->setRunning(true));
        carryOut(keeper_->adopt(remembered, now_));
        tell();
        stepsToTheEnd();
        EXPECT_EQ(stream_, after) << name;
        EXPECT_EQ(keeper_->takeFound(), found) << name;
        EXPECT_EQ(keeper_->takeChangesElsewhere(), nothing) << name;
        changeElsewhere({0.9F, 0.9F});
        EXPECT_EQ(stream_.channelVolumes, (Volumes{0.9F, 0.9F})) << "it has no hold";
    }
}

TEST_F(VolumeKeeperTest, WhatIsUpheldIsHeldLikeANewStreamAlsoIfItWasHeardAlready) {
    keeper_->heardAlready();
    stream_.channelVolumes = {half, half};
    play();
    now_ += std::chrono::minutes(1);
    keeper_->uphold(now_);
    changeElsewhere({0.729F, 0.729F});
    EXPECT_THAT(stream_.channelVolumes,
                ElementsAre(FloatNear(half, 1e-4F), FloatNear(half, 1e-4F)));
    EXPECT_EQ(keeper_->takeFound().gain, half);
    EXPECT_EQ(keeper_->takeChangesElsewhere(), nothing);
    now_ += VolumeHold::duration;
    changeElsewhere({1.0F, 1.0F});
    EXPECT_EQ(keeper_->takeChangesElsewhere().gain, 1.0F);
}

TEST_F(VolumeKeeperTest, AStreamThatIsLetGoIsUpToOthers) {
    play(wantsHalf);
    now_ += VolumeHold::duration;
    carryOut(keeper_->want({1.0F, {}}, now_));
    keeper_->letGo();
    stepsToTheEnd();
    EXPECT_EQ(stream_.channelVolumes, (Volumes{1.0F, 1.0F})) << "what was asked for before";
    changeElsewhere({half, half});
    EXPECT_EQ(keeper_->takeChangesElsewhere().gain, half);
    keeper_->uphold(now_);
    for (const Volumes& others : {Volumes{0.9F, 0.9F}, Volumes(6, 0.7F), Volumes(2, 0.3F)}) {
        changeElsewhere(others);
        EXPECT_EQ(stream_.channelVolumes, others);
    }
    carryOut(keeper_->adopt(wantsHalf, now_));
    stepsToTheEnd();
    changeElsewhere(Volumes(6, 0.7F));
    EXPECT_EQ(stream_.channelVolumes, Volumes(6, half)) << "taken up again";
}

TEST_F(VolumeKeeperTest, WhatWasWrittenWhileTheStreamWasNewIsNoExcuseLater) {
    play(wantsHalf);
    now_ -= VolumeHold::duration;
    obey(keeper_->want(wantsFull, now_));
    now_ += VolumeHold::duration;
    changeElsewhere({half, half});
    EXPECT_EQ(keeper_->takeChangesElsewhere(), (WantedVolume{half, false}));
}

TEST_F(VolumeKeeperTest, AStreamThatBelongsToNoProgramIsNeverWritten) {
    tell();
    now_ += VolumeHold::duration;
    changeElsewhere({half, half});
    keeper_->uphold(now_);
    changeElsewhere({0.9F, 0.9F});
    now_ += VolumeHold::duration;
    changeElsewhere(Volumes(6, 0.7F));
    EXPECT_EQ(writes_, 0);
}

TEST_F(VolumeKeeperTest, AnotherFormatIsNobodysWill) {
    stream_.channelVolumes = {};
    play(wantsHalf);
    EXPECT_THAT(stream_.channelVolumes, ElementsAre(half)) << "which the server spreads";
    changeElsewhere({half, half});
    changeElsewhere({0.7F, 0.7F, 0.7F, 0.7F, 0.7F, 0.7F});
    EXPECT_EQ(stream_.channelVolumes, Volumes(6, half));
    EXPECT_EQ(keeper_->takeChangesElsewhere(), nothing);
}
