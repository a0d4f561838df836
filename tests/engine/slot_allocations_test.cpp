// What a slot takes from the heap while as many aircraft fly as ever did and the feed goes on.
#include <gtest/gtest.h>

#include <cmath>

#include "core/injection_radius.h"
#include "engine/slot.h"
#include "tests/engine/engine_test.h"
#include "tests/support/allocation_count.h"

namespace {

constexpr int count = 40;
constexpr double knots = 400;
constexpr double turnRadPerSecond = 0.01;
constexpr double circleDegrees = knots / 3600 / turnRadPerSecond / 60;
/// Every aircraft has a record each 2.5 seconds.
constexpr std::int32_t slotsBetweenRecords = 250 / count;
constexpr std::int32_t delaySlots = 3000;
constexpr std::uint32_t firstHexid = 20000;

class SlotAllocations : public EngineTest {
protected:
    SlotAllocations() {
        simHandle = nullptr; // nobody is told
        gRadiusNm = 10000;
        for (int i = 0; i < count; ++i) {
            takeOff(i);
        }
    }

    /// Where the aircraft is so long after the test's begin, on a circle of its own.
    static Sample at(int aircraft, double seconds) {
        const double angle = aircraft * 0.7 + seconds * turnRadPerSecond;
        Sample sample;
        sample.lat = testPlace.lat + 0.2 * aircraft + circleDegrees * std::cos(angle);
        sample.lon = testPlace.lon + circleDegrees * std::sin(angle) / std::cos(sample.lat * radiansPerDegree);
        sample.alt = 20000 + 100 * aircraft;
        sample.airborne = 1;
        sample.gs = sample.tas = knots;
        sample.track = std::fmod((angle + 1.5707963) * degreesPerRadian, 360);
        sample.slot = testSlot + static_cast<std::int32_t>(std::lround(seconds * slotsPerSecond)) + delaySlots;
        return sample;
    }

    /// With samples for the 30 seconds before the feed's first one.
    static void takeOff(int number) {
        LiveAircraft& aircraft = flying();
        aircraft.hexid = firstHexid + static_cast<std::uint32_t>(number);
        aircraft.objectId = 100 + static_cast<std::uint32_t>(number);
        aircraft.callsign = fmt::format("KLM{}", number);
        aircraft.origin = "AMS";
        aircraft.destination = "LHR";
        aircraft.lastFeedTime = -10;
        for (double seconds = -31; seconds < -1; seconds += 3) {
            aircraft.stream.pushBack(at(number, seconds));
        }
        aircraft.lat = aircraft.stream[0].lat;
        aircraft.lon = aircraft.stream[0].lon;
        aircraft.alt = aircraft.stream[0].alt;
    }

    void feed() {
        if (slotClock % slotsBetweenRecords != 0) {
            return;
        }
        const double seconds = static_cast<double>(slotClock - testSlot) / slotsPerSecond;
        FeedRecord record = recordOf(at(next_, seconds), seconds);
        record.hexid = firstHexid + static_cast<std::uint32_t>(next_);
        record.callsign = fmt::format("KLM{}", next_);
        gLiveSampleQueue.push(std::move(record));
        next_ = (next_ + 1) % count;
    }

    /// What the slots alone have allocated.
    std::size_t allocationsOf(int slots) {
        std::size_t allocations = 0;
        for (int i = 0; i < slots; ++i) {
            feed();
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

private:
    int next_ = 0;
};

TEST_F(SlotAllocations, areNoneOnceTheStreamsAreAsLongAsTheyGet) {
    EXPECT_GT(allocationsOf(6000), 0u); // they grow
    EXPECT_EQ(allocationsOf(6000), 0u);
    ASSERT_EQ(liveTable.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(positionBack.size(), static_cast<std::size_t>(count)); // all of them fly
    EXPECT_GT(streamSizes(), static_cast<std::size_t>(2 * count));   // on what the feed tells
}

} // namespace
