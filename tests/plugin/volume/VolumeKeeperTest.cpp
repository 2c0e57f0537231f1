#include "plugin/volume/VolumeKeeper.h"

#include <gmock/gmock.h>

#include <array>
#include <utility>

using testing::ElementsAre;
using testing::FloatNear;

namespace {

using namespace std::chrono_literals;
using Volumes = std::vector<float>;

constexpr float half = 0.125F;
constexpr float sixty = 0.216F;
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
        keeper_->linked();
        carryOut(keeper_->setRunning(true));
        now_ += ChangeAuthor::start;
        writes_ = 0;
    }

    /// Lets time pass, in which all is done that is due.
    void pass(std::chrono::milliseconds time) {
        const auto end = now_ + time;
        for (auto due = keeper_->due(); due && *due <= end; due = keeper_->due()) {
            now_ = std::max(now_, *due);
            obey(keeper_->wake(now_));
        }
        now_ = end;
    }

    /// What counts as changed once it has rested.
    WantedVolume changesAfterRest() {
        EXPECT_EQ(keeper_->takeChangesElsewhere(), nothing) << "too early";
        pass(VolumeKeeper::rest);
        return keeper_->takeChangesElsewhere();
    }

    int stepsToTheEnd() {
        int steps = 0;
        for (; keeper_->isRamping(); ++steps) {
            now_ = std::max(now_, keeper_->due().value());
            obey(keeper_->wake(now_));
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

TEST_F(VolumeKeeperTest, ALateForeignChangeIsTheUsers) {
    play(wantsHalf);
    changeElsewhere({0.4F, 0.2F});
    EXPECT_EQ(changesAfterRest(), (WantedVolume{0.4F, false})) << "seen and let be";
    stream_.mute = true;
    tell();
    EXPECT_EQ(changesAfterRest(), wantsMute);
    changeElsewhere({1.5F, 0.75F});
    EXPECT_EQ(changesAfterRest(), (WantedVolume{1.5F, std::nullopt}));
    EXPECT_EQ(writes_, 0) << "nothing is fought";
    obey(keeper_->want({half, false}, now_));
    stepsToTheEnd();
    EXPECT_EQ(stream_, (StreamProps{{half, half / 2}, false, 1.0F})) << "the balance is theirs";
    EXPECT_EQ(changesAfterRest(), nothing);
}

TEST_F(VolumeKeeperTest, WhatNobodyHadAskedForIsToldWithTheFirstChange) {
    stream_.channelVolumes = {0.2F, 0.2F}; // restored
    play();
    stream_.mute = true;
    tell();
    EXPECT_EQ(changesAfterRest(), (WantedVolume{0.2F, true}));
    stream_.mute = false;
    tell();
    EXPECT_EQ(changesAfterRest(), wantsSound);
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
    EXPECT_EQ(changesAfterRest(), (WantedVolume{0.3F, false}));
}

TEST_F(VolumeKeeperTest, ValuesComeBackRoundedLateAndLeftOut) {
    play(wantsFull);
    carryOut(keeper_->want(wantsHalf, now_));
    for (int i = 0; i < 3; ++i) {
        now_ = keeper_->due().value();
        carryOut(keeper_->wake(now_));
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
    EXPECT_EQ(changesAfterRest(), nothing);
    changeElsewhere({1.0F, 1.0F});
    EXPECT_EQ(changesAfterRest().gain, 1.0F);
}

TEST_F(VolumeKeeperTest, AReleasedStreamIsNoLongerUpheld) {
    play(wantsHalf);
    now_ += VolumeHold::duration;
    carryOut(keeper_->want({1.0F, {}}, now_));
    keeper_->release();
    stepsToTheEnd();
    EXPECT_EQ(stream_.channelVolumes, (Volumes{1.0F, 1.0F})) << "what was asked for before";
    changeElsewhere({half, half});
    EXPECT_EQ(changesAfterRest().gain, half);
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

TEST_F(VolumeKeeperTest, WhatIsSetWhileAPageIsLetGoIsNotItsOwn) {
    keeper_->setKind(StreamKind::page);
    play({sixty, false});
    changeElsewhere({half, half});
    carryOut(keeper_->adopt({}, now_));
    keeper_->release();
    changeElsewhere({half / 2, half / 2});
    EXPECT_EQ(keeper_->ownVolume(), OwnVolume{});
    obey(keeper_->adopt({}, now_));
    obey(keeper_->want({sixty, false}, now_));
    stepsToTheEnd();
    EXPECT_EQ(stream_.channelVolumes, (Volumes{sixty, sixty}));
}

TEST_F(VolumeKeeperTest, ACommandForWhatIsWantedAlreadyLeavesTheStartOfAPlayerQuiet) {
    play({sixty, false});
    now_ -= ChangeAuthor::start;
    changeElsewhere({0.1F, 0.1F});
    obey(keeper_->want({sixty, false}, now_));
    stepsToTheEnd();
    EXPECT_THAT(stream_.channelVolumes[0], FloatNear(0.1F, 1e-6F));
}

TEST_F(VolumeKeeperTest, WhatWasWrittenWhileTheStreamWasNewIsNoExcuseLater) {
    play(wantsHalf);
    now_ -= ChangeAuthor::start;
    obey(keeper_->want(wantsFull, now_));
    now_ += ChangeAuthor::start;
    changeElsewhere({half, half});
    EXPECT_EQ(changesAfterRest(), (WantedVolume{half, false}));
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

TEST_F(VolumeKeeperTest, AFormatChangeIsNotAUsersChange) {
    stream_.channelVolumes = {};
    play(wantsHalf);
    EXPECT_THAT(stream_.channelVolumes, ElementsAre(half)) << "which the server spreads";
    changeElsewhere({half, half});
    changeElsewhere({0.7F, 0.7F, 0.7F, 0.7F, 0.7F, 0.7F});
    EXPECT_EQ(stream_.channelVolumes, Volumes(6, half));
    EXPECT_EQ(keeper_->takeChangesElsewhere(), nothing);
}

namespace {

/// Foreign changes of a stream whose wanted volume is 60 %, and their effect.
struct Story {
    struct Step {
        std::chrono::milliseconds after; // the step before, or the begin of the stream
        WantedVolume set;
    };

    const char* name;
    StreamKind kind;
    std::vector<Step> steps;
    WantedVolume heard;
    int changes = 0; // that count as the user's
    bool linked = true;
};

constexpr auto later = ChangeAuthor::start;

Story::Step gainAfter(std::chrono::milliseconds time, float gain) {
    return {time, {gain, std::nullopt}};
}

/// Even steps, long after the stream began.
std::vector<Story::Step> seriesTo(std::initializer_list<float> gains,
                                  std::chrono::milliseconds pause) {
    std::vector<Story::Step> steps;
    for (const float gain : gains)
        steps.push_back(gainAfter(steps.empty() ? later : pause, gain));
    return steps;
}

const auto fade = seriesTo({0.9F, 0.8F, 0.7F, 0.6F, 0.5F, 0.4F, 0.35F, 0.3F}, 16ms);
const auto fadeAndBack = seriesTo({0.2F, 0.1F, 0.0F, 0.1F, sixty}, 400ms);
const auto alternation = seriesTo({0.3F, 1.0F, 0.3F, 1.0F, 0.3F, 1.0F}, 700ms);
const auto drag =
    seriesTo({0.2F, 0.19F, 0.18F, 0.17F, 0.16F, 0.15F, 0.14F, 0.13F, 0.12F, 0.1F}, 150ms);
const auto step = seriesTo({0.3F}, 0ms);
const std::vector<Story::Step> muted{{later, {std::nullopt, true}}};
const std::vector<Story::Step> mutedAndBack{{later, {std::nullopt, true}},
                                            {700ms, {std::nullopt, false}}};

const std::array stories{
    Story{"a page fades and stays", StreamKind::page, fade, {sixty * 0.3F, false}},
    Story{"a page fades and comes back to full",
          StreamKind::page,
          seriesTo({0.5F, 0.0F, 0.5F, 1.0F}, 100ms),
          {sixty, false}},
    Story{"a page alternates", StreamKind::page, alternation, {sixty, false}},
    Story{"a page mutes", StreamKind::page, muted, {sixty, true}},
    Story{"a page mutes and is back", StreamKind::page, mutedAndBack, {sixty, false}},
    Story{
        "a page starts quietly", StreamKind::page, {gainAfter(50ms, 0.3F)}, {sixty * 0.3F, false}},
    Story{"another mixer sets a browser", StreamKind::page, step, {sixty * 0.3F, false}},
    Story{"another mixer sets a browser beyond full",
          StreamKind::page,
          seriesTo({1.728F}, 0ms),
          {sixty, false}},
    Story{"a player fades and stays", StreamKind::player, fade, {0.3F, false}, 1},
    Story{"a player fades and comes back", StreamKind::player, fadeAndBack, {sixty, false}},
    Story{"a player alternates", StreamKind::player, alternation, {1.0F, false}, 1},
    Story{"a player mutes and is back", StreamKind::player, mutedAndBack, {sixty, false}},
    Story{"a player's slider is dragged", StreamKind::player, drag, {0.1F, false}, 1},
    Story{"another mixer sets a player", StreamKind::player, step, {0.3F, false}, 1},
    Story{"a player starts quietly", StreamKind::player, {gainAfter(50ms, 0.1F)}, {0.1F, false}},
    Story{"a player sets its volume within two seconds",
          StreamKind::player,
          {gainAfter(1900ms, 0.3F)},
          {sixty, false}},
    Story{"the session manager restores before it makes the link",
          StreamKind::player,
          {gainAfter(3ms, 0.3F)},
          {sixty, false},
          0,
          false},
    Story{"the session manager restores to a sound that plays",
          StreamKind::notification,
          {gainAfter(50ms, 0.3F)},
          {sixty, false}},
    Story{"the desktop's slider moves while a sound plays",
          StreamKind::notification,
          {gainAfter(1s, 0.3F)},
          {0.3F, false},
          1}};

} // namespace

TEST_F(VolumeKeeperTest, OnlyTheUsersChangesCountAndTakeEffectUnchanged) {
    for (const Story& story : stories) {
        SCOPED_TRACE(story.name);
        keeper_.emplace(now_);
        keeper_->setKind(story.kind);
        stream_ = {{1.0F, 0.5F}, false, 1.0F};
        obey(keeper_->adopt({sixty, false}, now_));
        tell();
        if (story.linked)
            keeper_->linked();
        obey(keeper_->setRunning(true));
        int changes = 0;
        WantedVolume remembered{sixty, false};
        const auto remember = [&] {
            const WantedVolume change = keeper_->takeChangesElsewhere();
            changes += change.isEmpty() ? 0 : 1;
            remembered.merge(change);
        };
        for (const auto& [after, set] : story.steps) {
            pass(after);
            if (set.gain)
                stream_.channelVolumes = {*set.gain, *set.gain / 2};
            stream_.mute = set.muted.value_or(stream_.mute);
            tell();
            EXPECT_LE(story.kind == StreamKind::page ? loudestGain(stream_) : 0, sixty + 1e-6F)
                << "never louder than the user's percent";
            remember();
            EXPECT_EQ(changes, 0) << "nothing counts before it has rested";
        }
        pass(1min);
        remember();
        EXPECT_EQ(changes, story.changes);
        EXPECT_EQ(remembered, story.changes > 0 ? story.heard : (WantedVolume{sixty, false}));
        EXPECT_THAT(stream_.channelVolumes, ElementsAre(FloatNear(*story.heard.gain, 1e-6F),
                                                        FloatNear(*story.heard.gain / 2, 1e-6F)));
        EXPECT_EQ(stream_.mute, *story.heard.muted);

        obey(keeper_->want({1.0F, false}, now_));
        stepsToTheEnd();
        const bool isPage = story.kind == StreamKind::page;
        EXPECT_FLOAT_EQ(loudestOf(stream_.channelVolumes),
                        isPage ? *story.heard.gain / sixty : 1.0F)
            << "of the program's volume only a page's outlives a command";
        EXPECT_EQ(stream_.mute, *story.heard.muted);
    }
}

TEST_F(VolumeKeeperTest, APageCannotUnmuteWhatTheUserMuted) {
    keeper_->setKind(StreamKind::page);
    play({sixty, true});
    stream_.mute = false;
    tell();
    EXPECT_TRUE(stream_.mute);
    EXPECT_EQ(changesAfterRest(), nothing);
}

TEST_F(VolumeKeeperTest, APageThatKeepsSettingItsVolumeIsCorrectedRarely) {
    keeper_->setKind(StreamKind::page);
    play({sixty, false});
    for (int i = 0; i < 1000; ++i) {
        stream_.channelVolumes = {1.0F, 1.0F};
        const StreamProps told = stream_;
        carryOut(keeper_->propsArrived(told, now_));
        carryOut(keeper_->propsArrived(stream_, now_));
        pass(1ms);
    }
    EXPECT_LE(writes_, 252) << "in a second";
    pass(1s);
    EXPECT_EQ(stream_.channelVolumes, (Volumes{sixty, sixty})) << "and it has the last word";
}

TEST_F(VolumeKeeperTest, APostponedAnswerToAPageNeitherWritesItsVolumeNorEndsARamp) {
    keeper_->setKind(StreamKind::page);
    play({sixty, false});
    now_ += VolumeHold::duration;
    changeElsewhere({1.0F, 1.0F}); // is answered
    (void)keeper_->want(wantsHalf, now_);
    ASSERT_TRUE(keeper_->isRamping());
    EXPECT_EQ(keeper_->propsArrived({{0.9F, 0.9F}, false, 1.0F}, now_), VolumeWrite{})
        << "a step of ours is on its way, but that is louder than what is wanted";
    (void)keeper_->want({0.001F, {}}, now_);
    ASSERT_TRUE(keeper_->isRamping());
    (void)keeper_->wake(now_ + VolumeKeeper::correctionPause);
    EXPECT_TRUE(keeper_->isRamping());
}

TEST_F(VolumeKeeperTest, WhatAPageIsFoundWithIsExplainedByWhatItHasSet) {
    struct Case {
        const char* name;
        WantedVolume remembered;
        StreamProps before;
        StreamProps after;
        OwnVolume own;
    };
    for (const auto& [name, remembered, before, after, own] : {
             Case{"quieter",
                  {sixty, false},
                  {{sixty / 4, sixty / 8}, false, 1.0F},
                  {{sixty / 4, sixty / 8}, false, 1.0F},
                  {0.25F, false}},
             Case{"louder",
                  {sixty, false},
                  {{1.0F, 0.5F}, false, 1.0F},
                  {{sixty, sixty / 2}, false, 1.0F},
                  {}},
             Case{"muted",
                  {1.0F, false},
                  {{1.0F, 1.0F}, true, 1.0F},
                  {{1.0F, 1.0F}, true, 1.0F},
                  {1.0F, true}},
             Case{"to be muted",
                  {0.0F, true},
                  {{0.5F, 0.5F}, true, 1.0F},
                  {{0.0F, 0.0F}, true, 1.0F},
                  {}},
         }) {
        SCOPED_TRACE(name);
        keeper_.emplace(now_);
        keeper_->heardAlready();
        keeper_->setKind(StreamKind::page);
        stream_ = before;
        carryOut(keeper_->setRunning(true));
        carryOut(keeper_->adopt({}, now_)); // nothing is known of its program yet
        tell();
        obey(keeper_->adopt(remembered, now_));
        stepsToTheEnd();
        EXPECT_EQ(stream_, after);
        EXPECT_EQ(keeper_->ownVolume(), own);
        const WantedVolume found{loudestOf(before.channelVolumes), before.mute};
        EXPECT_EQ(keeper_->takeFound(), own == OwnVolume{} ? nothing : found);
        EXPECT_EQ(changesAfterRest(), nothing);
        obey(keeper_->want(remembered, now_));
        EXPECT_EQ(keeper_->ownVolume(), own) << "that was wanted already";
        obey(keeper_->want({1.0F, false}, now_, WantReason::restored));
        stepsToTheEnd();
        EXPECT_EQ(stream_.mute, after.mute && own.muted);
        if (own != OwnVolume{}) {
            EXPECT_LE(loudestOf(stream_.channelVolumes), loudestOf(before.channelVolumes));
        }
        obey(keeper_->want({1.0F, false}, now_, WantReason::news));
        stepsToTheEnd();
        EXPECT_EQ(keeper_->ownVolume(), OwnVolume{}) << "the user's setting overrides a guess";
        EXPECT_EQ(loudestOf(stream_.channelVolumes), 1.0F);
    }
}
