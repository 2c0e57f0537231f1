#include "plugin/volume/StreamVolume.h"
#include "plugin/server/StreamParam.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <limits>
#include <spa/param/param.h>
#include <spa/param/props.h>
#include <spa/pod/builder.h>

using testing::ElementsAre;
using testing::FloatEq;
using testing::FloatNear;

namespace {

using Volumes = std::vector<float>;

StreamProps propsOf(Volumes volumes, bool mute = false, float volume = 1.0F) {
    return {std::move(volumes), mute, volume};
}

} // namespace

TEST(StreamVolume, APercentageIsTheCubeRootOfTheGainAndClamped) {
    EXPECT_FLOAT_EQ(gainOfPercent(50), 0.125F);
    EXPECT_FLOAT_EQ(gainOfPercent(1), 1e-6F);
    EXPECT_EQ(gainOfPercent(std::numeric_limits<int>::min()), 0.0F);
    EXPECT_EQ(gainOfPercent(std::numeric_limits<int>::max()), 1.0F);
    for (int percent = 0; percent <= 100; ++percent)
        EXPECT_EQ(std::lround(100.0 * std::cbrt(static_cast<double>(gainOfPercent(percent)))),
                  percent);
}

TEST(StreamVolume, AGainIsShownAsTheNearestPercentage) {
    const auto percentOf = [](float gain) { return WantedVolume{gain, std::nullopt}.percent(); };
    EXPECT_EQ(percentOf(gainOfPercent(29)), 29);
    EXPECT_EQ(percentOf(0.5F), 79);
    EXPECT_EQ(percentOf(1.728F), 120);
    EXPECT_EQ(percentOf(0.0F), 0);
    EXPECT_EQ(WantedVolume{}.percent(), std::nullopt);
}

TEST(StreamVolume, ScalingKeepsTheBalance) {
    EXPECT_THAT(balancedVolumes({1.0F, 0.5F}, 2, 0.125F),
                ElementsAre(FloatEq(0.125F), FloatEq(0.0625F)));
    EXPECT_THAT(balancedVolumes({0.0F, 0.01F}, 2, 1.0F), ElementsAre(0.0F, 1.0F));
    EXPECT_THAT(balancedVolumes({1.5F, 1.5F}, 2, 1.0F), ElementsAre(1.0F, 1.0F));
    EXPECT_THAT(balancedVolumes({0.3F, 0.6F}, 2, 0.0F), ElementsAre(0.0F, 0.0F));
}

TEST(StreamVolume, WithoutABalanceAllChannelsAreEqual) {
    EXPECT_THAT(balancedVolumes({0.0F, 0.0F}, 2, 0.125F), ElementsAre(0.125F, 0.125F));
    EXPECT_THAT(balancedVolumes({}, 3, 0.125F), ElementsAre(0.125F, 0.125F, 0.125F));
    EXPECT_THAT(balancedVolumes({}, 0, 0.125F), ElementsAre(0.125F));
}

TEST(StreamVolume, TheLevelIsThatBeforeTheGainOfEachChannel) {
    const std::array<ChannelPeak, 2> peaks{{{0, 0.1F}, {1, 0.05F}}};
    struct Case {
        StreamProps props;
        float level;
    };
    for (const auto& [props, level] :
         {Case{propsOf({1.0F, 1.0F}), 0.1F}, Case{propsOf({0.125F, 0.125F}), 0.8F},
          Case{propsOf({1.0F, 0.1F}), 0.5F}, Case{propsOf({0.0F, 0.1F}), 0.5F},
          Case{propsOf({1.0F, 1.0F}, false, 0.25F), 0.4F}, // the scalar counts
          Case{propsOf({0.01F, 0.01F}), 1.0F},             // clamped
          Case{propsOf({0.5F}), 0.2F},                     // one channel mixed to two ports
          Case{propsOf({0.1F, 0.5F, 0.5F}), 0.2F},         // three channels mixed to two ports
          Case{propsOf({}), 0.1F}, Case{propsOf({1.0F, 1.0F}, true), 0.0F}})
        EXPECT_THAT(levelBeforeGain(peaks, props), FloatNear(level, 1e-5F));
    EXPECT_EQ(levelBeforeGain({}, propsOf({1.0F})), 0.0F);
}

TEST(StreamVolume, AStreamIsSilencedWhenNoChannelIsLetThrough) {
    EXPECT_TRUE(isSilenced(propsOf({1.0F, 1.0F}, true)));
    EXPECT_TRUE(isSilenced(propsOf({0.0F, 0.0F})));
    EXPECT_TRUE(isSilenced(propsOf({1.0F, 1.0F}, false, 0.0F)));
    EXPECT_FALSE(isSilenced(propsOf({0.0F, 1.0F})));
    EXPECT_FALSE(isSilenced(propsOf({gainOfPercent(1)})));
    EXPECT_FALSE(isSilenced(propsOf({})));
}

TEST(StreamVolume, AVolumeIsInEffectInSpiteOfRoundingOnly) {
    const WantedVolume half{0.125F, std::nullopt};
    EXPECT_TRUE(isInEffect(half, propsOf({0.125000002F, 0.0625F})));
    EXPECT_FALSE(isInEffect(half, propsOf({0.13F, 0.13F})));
    EXPECT_FALSE(isInEffect(half, propsOf({})));
    EXPECT_TRUE(isInEffect(half, propsOf({0.125F}, true)));
    EXPECT_FALSE(isInEffect({gainOfPercent(3), std::nullopt}, propsOf({0.0F})));
    EXPECT_FALSE(isInEffect({std::nullopt, true}, propsOf({1.0F})));
    EXPECT_TRUE(isInEffect({}, propsOf({})));
}

TEST(StreamVolume, ANewStreamIsHeldForAWhileAndNotForEver) {
    const platform::MonotonicClock::time_point start{std::chrono::hours{1}};
    VolumeHold late(start);
    EXPECT_TRUE(late.takeWrite(start + VolumeHold::duration - std::chrono::milliseconds(1)));
    EXPECT_FALSE(late.takeWrite(start + VolumeHold::duration));
    VolumeHold often(start);
    for (int i = 0; i < VolumeHold::mostWrites; ++i)
        EXPECT_TRUE(often.takeWrite(start));
    EXPECT_FALSE(often.takeWrite(start));
}

TEST(StreamVolume, TheServersParameterIsReadAndWhatItLeavesOutStays) {
    std::array<std::byte, 512> space{};
    spa_pod_builder builder{};
    spa_pod_builder_init(&builder, space.data(), space.size());
    spa_pod_frame frame{};
    const std::array<float, 2> volumes{0.25F, 0.5F};
    spa_pod_builder_push_object(&builder, &frame, SPA_TYPE_OBJECT_Props, SPA_PARAM_Props);
    spa_pod_builder_prop(&builder, SPA_PROP_mute, 0);
    spa_pod_builder_bool(&builder, true);
    spa_pod_builder_prop(&builder, SPA_PROP_channelVolumes, 0);
    spa_pod_builder_array(&builder, sizeof(float), SPA_TYPE_Float, 2, volumes.data());
    const auto* const pod = static_cast<const spa_pod*>(spa_pod_builder_pop(&builder, &frame));

    StreamProps props = propsOf({1.0F}, false, 0.75F);
    readStreamProps(pod, props);
    EXPECT_EQ(props, propsOf({0.25F, 0.5F}, true, 0.75F));
    readStreamProps(nullptr, props);
    EXPECT_EQ(props, propsOf({0.25F, 0.5F}, true, 0.75F));
}
