#include "sim/controls.h"

#include <gmock/gmock.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <utility>

#include "sim/frame_flush.h"
#include "sim/simulator_link.h"
#include "tests/sim/sim_test.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::uint32_t object = 77;

class Controls : public SimTest {
protected:
    Controls() { aircraft.objectId = object; }

    LiveAircraft aircraft;
};

using ControlsThreads = Controls;

TEST_F(Controls, eachFlapsIndexHasItsValue) {
    const std::pair<int, int> table[] = {{0, 0}, {1, 3072}, {2, 10240}, {3, 16383}};
    for (const auto& [index, value] : table) {
        eventQueue.clear();
        gf_setFlaps(aircraft, index);
        EXPECT_THAT(events(), ElementsAre(fmt::format("77 218 {}", value))) << "index " << index;
        EXPECT_EQ(aircraft.flapsIndex, index);
    }
}

TEST_F(Controls, flapsIndexFourSendsTheFlapsUp) {
    aircraft.flapsIndex = 3;
    gf_setFlaps(aircraft, 4);
    EXPECT_THAT(events(), ElementsAre("77 218 0"));
    EXPECT_EQ(aircraft.flapsIndex, 4);
}

TEST_F(Controls, flapsThatStandThereAlreadyAreNotSent) {
    gf_setFlaps(aircraft, initialFlapsIndex);
    EXPECT_THAT(events(), IsEmpty()) << "a new record has them up";
    gf_setFlaps(aircraft, 2);
    gf_setFlaps(aircraft, 2);
    EXPECT_THAT(events(), ElementsAre("77 218 10240"));
}

TEST_F(Controls, flapsIndexFiveLogsAndSendsNothingYetIsKept) {
    gf_setFlaps(aircraft, 5);
    EXPECT_THAT(log.lines(), ElementsAre("==> gf_setFlaps: invalid flaps index"));
    EXPECT_THAT(events(), IsEmpty());
    EXPECT_EQ(aircraft.flapsIndex, 5);
}

TEST_F(Controls, aNegativeFlapsIndexIsAsInvalidAsOneTooHigh) {
    gf_setFlaps(aircraft, -1);
    EXPECT_THAT(log.lines(), ElementsAre("==> gf_setFlaps: invalid flaps index"));
    EXPECT_THAT(events(), IsEmpty());
}

TEST_F(Controls, eachThrottleIndexHasItsValue) {
    const std::pair<int, int> table[] = {{0, 0}, {1, 4914}, {2, 8191}, {3, 11468}, {4, 16383}};
    for (const auto& [index, value] : table) {
        eventQueue.clear();
        gf_setThrottle(aircraft, index);
        EXPECT_THAT(events(), ElementsAre(fmt::format("77 223 {}", value))) << "index " << index;
        EXPECT_EQ(aircraft.throttleIndex, index);
    }
}

TEST_F(Controls, aThrottleThatStandsThereAlreadyIsNotSent) {
    gf_setThrottle(aircraft, 0);
    gf_setThrottle(aircraft, 0);
    EXPECT_THAT(events(), ElementsAre("77 223 0"));
}

TEST_F(Controls, throttleIndexFiveSendsNothingAndIsKept) {
    aircraft.throttleIndex = 2;
    gf_setThrottle(aircraft, 5);
    EXPECT_THAT(events(), IsEmpty());
    EXPECT_EQ(aircraft.throttleIndex, 5);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(Controls, spoilersAndGearHaveTwoPositionsEach) {
    gf_setSpoilers(aircraft, Spoilers::extended);
    gf_setSpoilers(aircraft, Spoilers::retracted);
    gf_setGear(aircraft, Gear::down);
    gf_setGear(aircraft, Gear::up);
    EXPECT_THAT(events(), ElementsAre("77 219 16383", "77 219 0", "77 220 1", "77 220 0"));
}

TEST_F(Controls, aRotorcraftHasNoFlapsSpoilersOrGear) {
    aircraft.category = AircraftCategory::Rotorcraft;
    gf_setFlaps(aircraft, 2);
    gf_setSpoilers(aircraft, Spoilers::extended);
    gf_setGear(aircraft, Gear::down);
    EXPECT_THAT(events(), IsEmpty());
    EXPECT_EQ(aircraft.flapsIndex, initialFlapsIndex);
    gf_setThrottle(aircraft, 4);
    EXPECT_THAT(events(), ElementsAre("77 223 16383")) << "but a throttle it has";
}

TEST_F(Controls, enginesStartAndStop) {
    gf_startEngines(object);
    gf_stopEngines(object);
    EXPECT_THAT(events(), ElementsAre("77 221 0", "77 222 0"));
}

TEST_F(Controls, theSevenLightsGoInTheirOrder) {
    gf_setLights(object, {11, 12, 13, 14, 15, 16, 17});
    EXPECT_THAT(events(),
                ElementsAre("77 208 11", "77 207 12", "77 211 13", "77 209 14", "77 210 15", "77 213 16", "77 212 17"));
}

TEST_F(Controls, navAndCabinLightsCanBeSetAlone) {
    gf_setNavLights(object, 1);
    gf_setCabinLights(object, 0);
    EXPECT_THAT(events(), ElementsAre("77 208 1", "77 212 0"));
}

TEST_F(Controls, nothingIsSentBeforeTheFrame) {
    gf_setGear(aircraft, Gear::down);
    EXPECT_THAT(simulator->calls(), IsEmpty());
    flushFrame();
    EXPECT_THAT(simulator->calls(), ElementsAre("SimConnect_TransmitClientEvent(77, 220, 1, 301, 0)"));
}

TEST_F(ControlsThreads, whoeverTakesTheLockNeverSeesHalfALightSet) {
    constexpr std::size_t sets = 50000;
    std::atomic<bool> engineDone{false};
    std::thread engine([&] {
        for (std::size_t i = 0; i < sets; ++i) {
            gf_setLights(object, {1, 1, 1, 1, 1, 1, 1});
        }
        engineDone = true;
    });
    std::size_t lights = 0;
    std::size_t halfSets = 0;
    for (bool last = false; !last;) {
        last = engineDone;
        const std::lock_guard lock(simLock);
        halfSets += eventQueue.size() % lightCount == 0 ? 0 : 1;
        lights += eventQueue.size();
        eventQueue.clear();
    }
    engine.join();
    EXPECT_EQ(halfSets, 0U);
    EXPECT_EQ(lights, sets * lightCount);
}

} // namespace
