#include "platform/loop/RunLoop.h"
#include "support/ManualClock.h"
#include "ui/items/TNBeeper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace {

struct Played {
    double start;
    double length;
    float gain;
};

struct Told {
    int stops = 0;
    std::vector<Played> played;
};

class FakeOutput final : public platform::SampleOutput {
  public:
    explicit FakeOutput(Told& told) : told_(told) {}

    void play(Seconds start, Seconds length, float gain) override {
        told_.played.push_back({start.count(), length.count(), gain});
    }
    void stop() override { ++told_.stops; }

  private:
    Told& told_;
};

class BeeperTest : public testing::Test {
  protected:
    void pass(double seconds) {
        clock_.advance(std::chrono::duration_cast<std::chrono::nanoseconds>(
            std::chrono::duration<double>(seconds)));
        loop_.turn();
    }

    support::ManualClock clock_;
    platform::RunLoop loop_;
    Told told_;
    TNBeeper beeper_{loop_, [this] { return std::make_unique<FakeOutput>(told_); }};
};

} // namespace

TEST_F(BeeperTest, TheOutputIsMadeOnceEvenIfThatFails) {
    int tries = 0;
    TNBeeper silent(loop_, [&tries] {
        ++tries;
        return nullptr;
    });
    EXPECT_EQ(tries, 0);
    silent.beepAtVolume(1.0F);
    silent.beepAtVolume(1.0F);
    EXPECT_EQ(tries, 1);
}

TEST_F(BeeperTest, ASampleIsPlayedToItsEndAndANewOneCutsItShort) {
    beeper_.beepAtVolume(0.5F);
    ASSERT_EQ(told_.played.size(), 1U);
    pass(told_.played[0].length / 2);
    EXPECT_EQ(told_.stops, 0);
    beeper_.beepAtVolume(0.0F);
    EXPECT_EQ(told_.stops, 1);
    const double length = told_.played.at(1).length;
    pass(length - 0.001);
    EXPECT_EQ(told_.stops, 1) << "the first one's end is forgotten";
    pass(0.002);
    EXPECT_EQ(told_.stops, 2) << "also one that is not heard";
    pass(10);
    EXPECT_EQ(told_.stops, 2);
}

TEST_F(BeeperTest, TheGainIsTheCubeOfTheVolume) {
    const float none = std::numeric_limits<float>::quiet_NaN();
    for (const auto& [volume, gain] :
         {std::pair{0.5F, 0.125F}, {0.0F, 0.0F}, {-1.0F, 0.0F}, {3.0F, 1.0F}, {none, 0.0F}}) {
        beeper_.beepAtVolume(volume);
        EXPECT_EQ(told_.played.back().gain, gain) << volume;
    }
}

TEST_F(BeeperTest, AllPiecesComeAndNoOther) {
    std::array<int, TNBeeper::ranges.size()> counts{};
    for (int i = 0; i < 2000; ++i) {
        beeper_.beepAtVolume(1.0F);
        const Played& played = told_.played.back();
        const auto range = std::ranges::find_if(TNBeeper::ranges, [&](const auto& each) {
            return each.start.count() == played.start && each.duration.count() == played.length;
        });
        ASSERT_NE(range, TNBeeper::ranges.end());
        ++counts[static_cast<std::size_t>(range - TNBeeper::ranges.begin())];
    }
    EXPECT_GT(std::ranges::min(counts), 60);
}
