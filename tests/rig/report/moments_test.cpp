#include "rig/report/moments.h"

#include <gmock/gmock.h>

using ::testing::SizeIs;

namespace rig {
namespace {

Moment sidewaysAt(double seconds, double weight) {
    return {.kind = MomentKind::sideways, .objectId = 10, .seconds = seconds, .value = weight * 20, .weight = weight};
}

TEST(Moments, whatGoesOnIsOneMomentWithItsWorstPoint) {
    Moments moments;
    Episode episode;
    for (const auto& [seconds, weight] : {std::pair{5.0, 1.5}, {5.5, 3.0}, {6.2, 2.0}}) {
        episode.goesOn(sidewaysAt(seconds, weight), moments);
    }
    episode.ends(1e9, moments);
    ASSERT_THAT(moments.worst(9, 9), SizeIs(1));
    const Moment moment = moments.worst(9, 9)[0];
    EXPECT_EQ(moment.begin, 5.0);
    EXPECT_EQ(moment.seconds, 5.5);
    EXPECT_EQ(moment.end, 6.2);
    EXPECT_EQ(moment.value, 60);
}

TEST(Moments, aPauseOfMoreThanASecondMakesTwo) {
    Moments moments;
    Episode episode;
    episode.goesOn(sidewaysAt(5, 2), moments);
    episode.ends(5.5, moments);
    episode.goesOn(sidewaysAt(5.9, 2), moments);
    episode.goesOn(sidewaysAt(7, 2), moments);
    episode.ends(1e9, moments);
    EXPECT_EQ(moments.count(MomentKind::sideways), 2u);
}

TEST(Moments, theWeightiestComeFirstWhateverTheirKind) {
    Moments moments;
    moments.add({.kind = MomentKind::jump, .objectId = 1, .weight = 2});
    moments.add({.kind = MomentKind::crossTrack, .objectId = 2, .weight = 9});
    moments.add({.kind = MomentKind::jump, .objectId = 3, .weight = 4});
    const std::vector<Moment> worst = moments.worst(9, 9);
    ASSERT_THAT(worst, SizeIs(3));
    EXPECT_EQ(worst[0].objectId, 2u);
    EXPECT_EQ(worst[1].objectId, 3u);
    EXPECT_EQ(worst[2].objectId, 1u);
}

TEST(Moments, allAreCountedButOnlySoManyOfAKindAndAnObjectAreAnswered) {
    Moments moments;
    for (int i = 0; i < 1000; ++i) {
        moments.add({.kind = MomentKind::jump, .objectId = static_cast<std::uint32_t>(i % 5), .weight = 1.0 * i});
    }
    EXPECT_EQ(moments.count(MomentKind::jump), 1000u);
    EXPECT_THAT(moments.worst(100, 100), SizeIs(Moments::keptOfKind));
    EXPECT_THAT(moments.worst(100, 2), SizeIs(10));
    EXPECT_THAT(moments.worst(3, 2), SizeIs(3));
    EXPECT_EQ(moments.worst(3, 2)[0].weight, 999);
}

} // namespace
} // namespace rig
