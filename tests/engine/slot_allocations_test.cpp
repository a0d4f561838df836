// What a slot takes from the heap while as many aircraft fly as ever did and the feed goes on.
#include <gtest/gtest.h>

#include "core/injection_radius.h"
#include "engine/slot.h"
#include "tests/engine/engine_test.h"
#include "tests/support/allocation_count.h"
#include "tests/support/circling_traffic.h"

namespace {

constexpr int aircraftFlying = 40;
constexpr double recordsPerSecond = 16; // of each aircraft one in 2.5 seconds

class SlotAllocations : public EngineTest {
protected:
    SlotAllocations() {
        simHandle = nullptr; // nobody is told
        traffic.takeOff();
    }
    ~SlotAllocations() override { gRadiusNm = 40; }

    /// What the slots alone have allocated.
    std::size_t allocationsOf(int slots) {
        std::size_t allocations = 0;
        for (int i = 0; i < slots; ++i) {
            traffic.feed();
            const std::size_t before = allocationsOfThisThread();
            lf_handleAddingStack();
            allocations += allocationsOfThisThread() - before;
            eventQueue.clear(); // as a session takes them
        }
        return allocations;
    }

    static std::size_t streamSizes() {
        std::size_t sum = 0;
        for (const LiveAircraft& aircraft : liveTable) {
            sum += aircraft.stream.size();
        }
        return sum;
    }

    CirclingTraffic traffic{aircraftFlying, recordsPerSecond};
};

TEST_F(SlotAllocations, areNoneOnceTheStreamsAreAsLongAsTheyGet) {
    EXPECT_GT(allocationsOf(6000), 0u); // they grow
    EXPECT_EQ(allocationsOf(6000), 0u);
    ASSERT_EQ(liveTable.size(), static_cast<std::size_t>(aircraftFlying));
    EXPECT_EQ(positionBack.size(), static_cast<std::size_t>(aircraftFlying)); // all of them fly
    EXPECT_GT(streamSizes(), static_cast<std::size_t>(2 * aircraftFlying));   // on what the feed tells
}

} // namespace
