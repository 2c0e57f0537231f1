#include "plugin/volume/StreamObstacle.h"

#include "plugin/server/StreamParam.h"

#include <gtest/gtest.h>

#include <array>
#include <spa/param/audio/format-utils.h>
#include <spa/param/props.h>
#include <spa/pod/builder.h>

namespace {

/// A builder with room for a parameter.
struct Builder {
    static constexpr std::uint32_t size = 1024;
    std::array<std::byte, size> space{};
    spa_pod_builder builder{};
    Builder() { spa_pod_builder_init(&builder, space.data(), size); }
};

const spa_pod* formatOf(Builder& space, std::uint32_t subtype) {
    return static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &space.builder, SPA_TYPE_OBJECT_Format, SPA_PARAM_EnumFormat, SPA_FORMAT_mediaType,
        SPA_POD_Id(SPA_MEDIA_TYPE_audio), SPA_FORMAT_mediaSubtype, SPA_POD_Id(subtype)));
}

const spa_pod* propsWith(Builder& space, const char* name, bool value) {
    spa_pod_builder* const builder = &space.builder;
    std::array<spa_pod_frame, 2> frames{};
    spa_pod_builder_push_object(builder, frames.data(), SPA_TYPE_OBJECT_Props, SPA_PARAM_Props);
    spa_pod_builder_prop(builder, SPA_PROP_volume, 0);
    spa_pod_builder_float(builder, 1.0F);
    spa_pod_builder_prop(builder, SPA_PROP_params, 0);
    spa_pod_builder_push_struct(builder, &frames[1]);
    spa_pod_builder_string(builder, "resample.quality");
    spa_pod_builder_int(builder, 4);
    spa_pod_builder_string(builder, name);
    spa_pod_builder_bool(builder, value);
    spa_pod_builder_pop(builder, &frames[1]);
    return static_cast<const spa_pod*>(spa_pod_builder_pop(builder, frames.data()));
}

} // namespace

TEST(StreamObstacle, NoneIsKnownUntilItIsReported) {
    StreamObstacle obstacle;
    EXPECT_EQ(obstacle.reason(), "");
    obstacle.propsListed(true);
    EXPECT_EQ(obstacle.reason(), "");
    obstacle.propsListed(false);
    EXPECT_NE(obstacle.reason(), "") << "a filter";
    obstacle.propsListed(true);
    EXPECT_EQ(obstacle.reason(), "");
    obstacle.lockTold(true);
    EXPECT_NE(obstacle.reason(), "");
    obstacle.lockTold(false);
    EXPECT_EQ(obstacle.reason(), "");
}

TEST(StreamObstacle, AnyFormatOfSamplesWillDo) {
    struct Case {
        std::vector<std::uint32_t> subtypes;
        bool isOpen;
    };
    for (const auto& [subtypes, isOpen] :
         {Case{{SPA_MEDIA_SUBTYPE_raw}, true}, Case{{SPA_MEDIA_SUBTYPE_iec958}, false},
          Case{{SPA_MEDIA_SUBTYPE_dsd, SPA_MEDIA_SUBTYPE_iec958}, false},
          Case{{SPA_MEDIA_SUBTYPE_iec958, SPA_MEDIA_SUBTYPE_raw}, true},
          Case{{SPA_MEDIA_SUBTYPE_raw, SPA_MEDIA_SUBTYPE_iec958}, true}}) {
        StreamObstacle obstacle;
        obstacle.propsListed(true);
        for (int round = 0; round < 2; ++round) { // all are told again when one changes
            for (std::uint32_t i = 0; i < subtypes.size(); ++i) {
                Builder space;
                obstacle.formatTold(i, isRawFormat(formatOf(space, subtypes[i])));
            }
            EXPECT_EQ(obstacle.reason().empty(), isOpen) << subtypes.size();
        }
        obstacle.formatTold(0, true);
        EXPECT_EQ(obstacle.reason(), "");
    }
}

TEST(StreamObstacle, TheLockIsAmongTheConvertersParameters) {
    for (const bool locked : {false, true}) {
        Builder space;
        EXPECT_EQ(readVolumeLock(propsWith(space, "channelmix.lock-volumes", locked)), locked);
    }
    Builder space;
    EXPECT_EQ(readVolumeLock(propsWith(space, "channelmix.upmix", true)), std::nullopt);
    Builder other;
    EXPECT_EQ(readVolumeLock(formatOf(other, SPA_MEDIA_SUBTYPE_raw)), std::nullopt);
    EXPECT_EQ(readVolumeLock(nullptr), std::nullopt);
}
