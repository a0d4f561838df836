// What the engine does with its aircraft where it is easily done wrong.
#include <stdexcept>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/slot_clock.h"
#include "core/user_error.h"
#include "engine/aircraft_tables.h"
#include "liveries/failed_titles.h"
#include "sim/controls.h"
#include "sim/object_life.h"
#include "sim/object_queues.h"
#include "tests/rig/session/session_run.h"
#include "window/window_state.h"

using rig::TraceEvent;
using rig::TraceEventKind;
using ::testing::Contains;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

constexpr std::uint32_t hexid = 0x484001;

class AiOperationsThreads : public SessionRun {
protected:
    void SetUp() override { connectAndKnowUser(); }

    std::size_t eventsNamed(std::string_view name) {
        std::size_t count = 0;
        for (const TraceEvent& event : simulator().events()) {
            count += event.kind == TraceEventKind::clientEvent && event.name == name ? 1 : 0;
        }
        return count;
    }
};

TEST_P(AiOperationsThreads, flapsIndex5IsLoggedAndKeptAndNothingIsSent) {
    activeAircraft(hexid, "KLM641", Where::inTheAir);
    const std::size_t before = eventsNamed("FLAPS_SET");
    gf_setFlaps(*findLiveByHexid(hexid), 5);
    ASSERT_TRUE(settle());
    EXPECT_EQ(eventsNamed("FLAPS_SET"), before);
    EXPECT_EQ(findLiveByHexid(hexid)->flapsIndex, 5);
    EXPECT_THAT(log.errors(), Contains("==> gf_setFlaps: invalid flaps index"));
}

TEST_P(AiOperationsThreads, throttleIndex5IsKeptAndNothingIsSent) {
    activeAircraft(hexid, "KLM641", Where::onTheGround);
    const std::size_t before = eventsNamed("THROTTLE_SET");
    gf_setThrottle(*findLiveByHexid(hexid), 5);
    ASSERT_TRUE(settle());
    EXPECT_EQ(eventsNamed("THROTTLE_SET"), before);
    EXPECT_EQ(findLiveByHexid(hexid)->throttleIndex, 5);
}

TEST_P(AiOperationsThreads, anAircraftThatIsRemovedWhileItIsAddedComesIntoBeingAndGoesTwoSecondsLater) {
    wantLive(hexid, "KLM641", Where::inTheAir);
    ASSERT_TRUE(pumpUntil([] { return liveCreateQueue.empty(); }));
    removeAircraftFromSim(*findLiveByHexid(hexid));
    EXPECT_EQ(findLiveByHexid(hexid)->removeWhenAdded, 1);
    ASSERT_TRUE(pumpUntil([] { return findLiveByHexid(hexid)->objectId != 0; }));
    const std::int32_t born = slotClock;
    ASSERT_TRUE(pumpUntil([] { return findLiveByHexid(hexid)->lifeState == LifeState::removingfromsim; }));
    EXPECT_EQ(slotClock - born, 2 * slotsPerSecond);
    EXPECT_EQ(aircraftInWorld(), 1u);
    EXPECT_TRUE(pumpUntil([this] { return aircraftInWorld() == 0 && liveTable.empty(); }));
}

TEST_P(AiOperationsThreads, anAircraftThatIsRemovedInTheQueueNeverComesIntoBeing) {
    wantLive(hexid, "KLM641", Where::inTheAir);
    removeAircraftFromSim(*findLiveByHexid(hexid));
    EXPECT_EQ(findLiveByHexid(hexid)->dropRecordQueued, 1);
    compactLiveTable();
    EXPECT_THAT(liveTable, IsEmpty());
    pumpTurns(100);
    EXPECT_EQ(aircraftInWorld(), 0u);
}

TEST_P(AiOperationsThreads, ofTwoWithOneTailNumberTheFirstThatIsDescribedIsTakenForTheFirstThatWasSent) {
    wantLive(hexid, "TWIN", Where::inTheAir, airliner, outOfRange);
    wantLive(hexid + 1, "TWIN", Where::inTheAir);
    looksAround(false);
    ASSERT_TRUE(pumpUntil([] { return sentCreations().size() == 2; }));
    looksAround(true);
    ASSERT_TRUE(pumpUntil([] { return findLiveByHexid(hexid)->objectId != 0; }));
    EXPECT_EQ(findLiveByHexid(hexid)->objectId, rig::firstAircraftId + 1) << "the second object, for it is in range";
    EXPECT_EQ(findLiveByHexid(hexid + 1)->objectId, 0u);
    ASSERT_THAT(sentCreations(), SizeIs(1));
    EXPECT_EQ(sentCreations()[0].hexid, hexid + 1);
}

TEST_P(AiOperationsThreads, theUsersAircraftIsNeverRemoved) {
    removalQueue.push_back(rig::userObjectId);
    const std::string line = fmt::format("==> SimConnect call to remove ac with objectid {}", rig::userObjectId);
    ASSERT_TRUE(pumpUntil([&] { return log.contains(line); }));
    ASSERT_TRUE(settle());
    for (const TraceEvent& event : simulator().events()) {
        EXPECT_NE(event.kind, TraceEventKind::exception) << "no call was made";
    }
    EXPECT_FALSE(gf_isStopping());
}

TEST_P(AiOperationsThreads, twentyRefusedLiveriesAreError81) {
    std::vector<std::string> titles;
    for (int i = 0; i < 20; ++i) {
        titles.push_back(fmt::format("Not installed {}", i));
    }
    for (std::uint32_t i = 0; i < titles.size(); ++i) {
        wantLive(hexid + i, fmt::format("KLM{}", i), Where::inTheAir, titles[i]);
    }
    try {
        pumpUntil([] { return liveTable.empty(); });
        FAIL() << "the run goes on";
    } catch (const kvd::UserErrorException& error) {
        EXPECT_EQ(error.code(), 81);
        EXPECT_STREQ(error.what(), "There are too many liveries that could not be created!, see Log.txt");
    }
    EXPECT_THAT(FailedTitles, SizeIs(20));
    EXPECT_EQ(shownMessage(), "There are too many liveries that could not be created!");
    resetAircraftTables();
    resetObjectQueues();
}

INSTANTIATE_TEST_SUITE_P(By, AiOperationsThreads, ::testing::ValuesIn(Front::ways()), wayName);

} // namespace
