// Streams of samples as wild as they come: whatever the feed says, what goes to the simulator stays sound.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <optional>
#include <random>

#include "core/injection_radius.h"
#include "engine/angles.h"
#include "engine/live_update.h"
#include "engine/stepping.h"
#include "tests/engine/engine_test.h"
#include "tests/engine/flight_world.h"

using ::testing::AllOf;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

constexpr double degree = radiansPerDegree;
constexpr double shortestLeg = 25; ///< slots
constexpr double highestFeet = 60000;
constexpr double lowestFeet = -1000;
constexpr double airportFeet = 500;
constexpr double fastestFpm = 20000;
constexpr double slotsPerMinute = 6000;

/// How an aircraft lies in the air.
struct Attitude {
    LatLon at;
    double alt = 0;
    double pitch = 0;
    double bank = 0;
    double heading = 0;
};

/// What each slot of a leg may change, by its target and the slots that it has for it, which are 25 at least.
struct LegBounds {
    double lat = 0; ///< degrees
    double lon = 0; ///< degrees
    double climbFeet = 0;
    double sinkFeet = 0;

    LegBounds() = default;
    /// `before` is where the leg began, in this slot.
    LegBounds(const Attitude& before, const LiveAircraft& aircraft, std::int32_t slot) {
        const Sample& target = aircraft.stream[0];
        const double slots = std::max(static_cast<double>(target.slot) - slot, shortestLeg);
        const double asked = (target.alt - before.alt) / slots;
        const double toAirport = gAirportInUse ? (airportFeet - before.alt) / slots : 0;
        // The mean of two vertical speeds, and what the pressure adds.
        const double fastest = (fastestFpm + 100 * 6) / slotsPerMinute;
        lat = std::abs(target.lat - before.at.lat) / slots;
        lon = std::abs(longitudeDifference(target.lon, before.at.lon)) / slots;
        climbFeet = std::max({aircraft.landing != 0 ? asked : 0, aircraft.maxClimbPerSlot, toAirport});
        sinkFeet = std::max({-asked, fastest, -toAirport});
    }

    void expectKept(const Attitude& before, const Attitude& now) const {
        constexpr double rounding = 1e-9;
        // Over a pole the other side's longitude is as near.
        if (std::abs(before.at.lat) < 89.9) {
            ASSERT_LE(std::abs(now.at.lat - before.at.lat), lat + rounding);
            ASSERT_LE(std::abs(longitudeDifference(now.at.lon, before.at.lon)), lon + rounding);
        }
        ASSERT_LE(now.alt - before.alt, climbFeet + rounding);
        ASSERT_LE(before.alt - now.alt, sinkFeet + rounding);
    }
};

class AnyStream : public EngineTest {
protected:
    AnyStream() {
        gRadiusNm = 100;
        GUID_CHANGES.value = false;
    }
    ~AnyStream() override { gRadiusNm = 40; }

    double uniform(double least, double most) { return std::uniform_real_distribution<double>(least, most)(random_); }
    int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(random_); }
    bool coin() { return below(2) == 1; }
    std::uint8_t flag() { return coin() ? 1 : 0; }

    Sample wildSample(std::int32_t slot) {
        Sample sample;
        sample.lat = uniform(-90, 90);
        sample.lon = uniform(-180, 180);
        sample.alt = coin() ? 0 : uniform(lowestFeet, highestFeet);
        sample.airborne = sample.alt > 0 ? 1 : 0;
        sample.gs = coin() ? 0 : uniform(-10, 3000);
        sample.track = uniform(0, 360);
        sample.vs = uniform(-fastestFpm, fastestFpm);
        sample.tas = uniform(-10, 3000);
        sample.slot = slot + static_cast<std::int32_t>(uniform(-2000, 4000));
        sample.stationary = below(10) == 0 ? 1 : 0;
        if (coin()) {
            sample.roll = uniform(-std::numbers::pi, std::numbers::pi);
        }
        if (coin()) {
            sample.heading = uniform(0, twoPi);
            sample.hasHeading = 1;
        }
        return sample;
    }

    static Attitude attitudeOf(const LiveAircraft& aircraft) {
        return {{aircraft.lat, aircraft.lon}, aircraft.alt, aircraft.pitch, aircraft.bank, aircraft.heading};
    }

    /// Lets the aircraft go through a wild stream, slot by slot; `check` gets how it was before each, and whether a leg
    /// begins with it.
    template <typename Check>
    void go(LiveAircraft& aircraft, Check check) {
        slotClock = testSlot;
        for (int i = 0; i < 12; ++i) {
            aircraft.stream.pushBack(wildSample(testSlot + i * 200));
        }
        for (int slot = 0; slot < 2000 && aircraft.lifeState == LifeState::active; ++slot) {
            const Attitude before = attitudeOf(aircraft);
            const bool legBegins = slotClock >= aircraft.stream[0].slot;
            updateLiveAc(aircraft);
            ++slotClock;
            expectSound(aircraft);
            expectContinuous(before, aircraft, legBegins);
            check(before, legBegins);
            if (HasFatalFailure()) {
                return;
            }
        }
        removalQueue.clear();
        positionFront.clear();
        eventQueue.clear();
    }

    static void expectSound(const LiveAircraft& aircraft) {
        ASSERT_TRUE(std::isfinite(aircraft.lat + aircraft.lon + aircraft.alt + aircraft.pitch + aircraft.bank +
                                  aircraft.heading + aircraft.vsFps + aircraft.tas));
        ASSERT_LE(std::abs(aircraft.lat), 90);
        ASSERT_LE(std::abs(aircraft.lon), 180);
        ASSERT_GE(aircraft.heading, 0);
        ASSERT_LE(aircraft.heading, largestHeadingRad);
    }

    /// A leg takes a quarter of a second at least, and no slot takes more than its share of it.
    static void expectContinuous(const Attitude& before, const LiveAircraft& aircraft, bool legBegins) {
        if (legBegins && aircraft.lifeState == LifeState::active) {
            const Sample& target = aircraft.stream[0];
            ASSERT_LE(std::abs(aircraft.dLat) * shortestLeg, std::abs(target.lat - before.at.lat) + 1e-9);
            ASSERT_LE(std::abs(aircraft.dLon) * shortestLeg,
                      std::abs(longitudeDifference(target.lon, before.at.lon)) + 1e-9);
        }
        ASSERT_LE(greatCircleNm(before.at, {aircraft.lat, aircraft.lon}),
                  std::hypot(aircraft.dLat, aircraft.dLon) * 60 * 1.01 + 1e-9);
        ASSERT_LE(std::abs(headingDifference(aircraft.heading, before.heading)), std::numbers::pi / shortestLeg + 1e-9);
    }

    static void expectLimitedRates(const Attitude& before, const LiveAircraft& aircraft) {
        const CategoryLimits& limits = limitsOf(aircraft.category);
        ASSERT_LE(std::abs(aircraft.bank), limits.maxBankDeg * degree + 1e-9);
        ASSERT_LE(std::abs(aircraft.pitch - before.pitch), limits.maxPitchRateDeg * degree + 1e-12);
        ASSERT_LE(std::abs(aircraft.bank - before.bank), 2 * limits.maxBankDeg * degree / shortestLeg + 1e-9);
    }

    std::mt19937 random_{20260601};
};

TEST_F(AnyStream, isFlownWithinLimitedRates) {
    for (const char* model : {"A320", "B77W", "C172", "F16", "EC35", "CRJ2"}) {
        for (int round = 0; round < 25; ++round) {
            liveTable.clear();
            gQnh = 950 + below(100);
            gAirportInUse.reset();
            if (coin()) {
                openAirport(airportFeet);
            }
            LiveAircraft& aircraft = flying(model);
            aircraft.altAboveGround = uniform(0, 3000);
            aircraft.landing = flag();
            LegBounds bounds;
            go(aircraft, [&aircraft, &bounds](const Attitude& before, bool legBegins) {
                expectLimitedRates(before, aircraft);
                if (legBegins && aircraft.lifeState == LifeState::active) {
                    bounds = LegBounds(before, aircraft, slotClock - 1);
                }
                bounds.expectKept(before, attitudeOf(aircraft));
            });
            ASSERT_FALSE(HasFatalFailure()) << model << ", round " << round;
        }
    }
}

TEST_F(AnyStream, isFollowedOnTheGroundWithTheGroundsAttitude) {
    for (const FlightPhase phase : {FlightPhase::taxi, FlightPhase::parking, FlightPhase::parked,
                                    FlightPhase::pushed_back, FlightPhase::pushing_back}) {
        for (int round = 0; round < 20; ++round) {
            liveTable.clear();
            LiveAircraft& aircraft = taxiing();
            aircraft.phase = phase;
            aircraft.rollingOut = flag();
            aircraft.takingOff = flag();
            go(aircraft, [&aircraft](const Attitude& before, bool) {
                ASSERT_EQ(aircraft.alt, before.alt);
                ASSERT_TRUE(aircraft.pitch == before.pitch || aircraft.pitch == aircraft.groundPitch);
                ASSERT_EQ(aircraft.bank, 0);
            });
            ASSERT_FALSE(HasFatalFailure()) << printedName(phase) << ", round " << round;
        }
    }
}

TEST_F(AnyStream, endsAFlareAndATouchdownInASoundAttitude) {
    for (int round = 0; round < 60; ++round) {
        liveTable.clear();
        LiveAircraft& aircraft = coin() ? flying() : taxiing();
        aircraft.flareStage = below(5);
        aircraft.nosewheelDown = flag();
        aircraft.landing = flag();
        aircraft.pitch = uniform(-4, 2) * degree;
        aircraft.bank = uniform(-0.1, 0.1);
        aircraft.dPitch = uniform(-0.01, 0.01) * degree;
        aircraft.dBank = uniform(-0.0001, 0.0001);
        go(aircraft, [&aircraft](const Attitude& before, bool) {
            ASSERT_LE(std::abs(aircraft.bank), std::numbers::pi);
            if (aircraft.flareStage != 0 && aircraft.nosewheelDown == 0) {
                ASSERT_GE(aircraft.pitch, std::min(before.pitch, -4 * degree) - 1e-12);
            }
        });
        ASSERT_FALSE(HasFatalFailure()) << "round " << round;
    }
}

TEST_F(AnyStream, isReachedSampleBySampleInTime) {
    for (int round = 0; round < 200; ++round) {
        liveTable.clear();
        slotClock = testSlot;
        LiveAircraft& aircraft = flying();
        aircraft.stream.pushBack(airSample(0, 0, 0));
        for (int i = 1; i < 12; ++i) {
            aircraft.stream.pushBack(airSample(0.2 * i + uniform(-0.05, 0.05), uniform(-0.2, 0.2), i * 300));
        }
        while (aircraft.stream.size() > 1) {
            nextPosMain(aircraft);
            const Sample target = aircraft.stream[0];
            while (slotClock < target.slot) {
                perSlotStep(aircraft);
                ++slotClock;
            }
            ASSERT_NEAR(aircraft.lat, target.lat, 1e-9);
            ASSERT_NEAR(aircraft.lon, target.lon, 1e-9);
        }
    }
}

/// From the feed's records to the simulator, through all filters.
class AnyFeed : public AnyStream {
protected:
    static constexpr int aircraftCount = 6;

    struct Course {
        std::int32_t slot = 0; ///< of the last position; 0: none yet
        Attitude last;
        Sample target;
        std::optional<LegBounds> bounds; // none in the first leg, whose begin nobody has seen
    };

    /// Behind a slot. Whether a leg began with it.
    static bool expectContinuous(Course& course, const LiveAircraft& aircraft) {
        const Sample& target = aircraft.stream[0];
        const bool isFirst = course.slot == 0;
        const bool legBegins = !isFirst && (target.slot != course.target.slot || target.lat != course.target.lat ||
                                            target.lon != course.target.lon || target.alt != course.target.alt);
        if (legBegins) {
            course.bounds = LegBounds(course.last, aircraft, slotClock - 1);
        }
        const Attitude now = attitudeOf(aircraft);
        if (!isFirst) {
            EXPECT_EQ(slotClock, course.slot + 1);
        }
        if (course.bounds) {
            course.bounds->expectKept(course.last, now);
        }
        course.slot = slotClock;
        course.last = now;
        course.target = target;
        return legBegins;
    }

    /// One number in twenty is none, or far beyond everything.
    double broken(double value) {
        constexpr double infinity = std::numeric_limits<double>::infinity();
        constexpr std::array<double, 6> wild{
            std::numeric_limits<double>::quiet_NaN(), infinity, -infinity, 1e300, -1e300, 1e-300};
        return below(20) == 0 ? wild[static_cast<std::size_t>(below(6))] : value;
    }

    FeedRecord wildRecord(double seconds) {
        const int which = below(aircraftCount);
        Sample sample;
        sample.lat = broken(testPlace.lat + uniform(-0.3, 0.3));
        sample.lon = broken(testPlace.lon + uniform(-0.3, 0.3));
        sample.alt = below(40) == 0 ? 0 : broken(uniform(-100, 45000));
        sample.airborne = sample.alt > 0 ? 1 : 0;
        sample.gs = broken(uniform(90, 800));
        sample.tas = broken(uniform(90, 800));
        sample.track = broken(uniform(0, 360));
        sample.vs = broken(uniform(-fastestFpm, fastestFpm));
        if (coin()) {
            sample.roll = broken(uniform(-1, 1));
            sample.heading = broken(uniform(0, twoPi));
            sample.hasHeading = 1;
        }
        FeedRecord record = recordOf(sample, broken(1000 + seconds + uniform(-4, 4)));
        record.hexid = testHexid + static_cast<std::uint32_t>(which);
        record.callsign = fmt::format("KLM{}", which);
        record.registration = fmt::format("PH-AB{}", which);
        record.type = std::array{"A320", "B77W", "C172", "F16", "EC35", "CRJ2"}[static_cast<std::size_t>(which)];
        return record;
    }
};

TEST_F(AnyFeed, givesTheSimulatorSoundPositionsOnly) {
    for (int i = 0; i < aircraftCount; ++i) {
        RegcodeTable[fmt::format("PH-AB{}", i)] = "Some Livery";
    }
    gUserState.lat = testPlace.lat;
    gUserState.lon = testPlace.lon;
    int positions = 0;
    int legs = 0;
    std::map<std::uint32_t, Course> courses; // by object id
    FlightWorld world([&](std::uint32_t hexid, const PositionUpdate& at) {
        const LiveAircraft* aircraft = findLiveByHexid(hexid);
        ASSERT_NE(aircraft, nullptr);
        expectSound(*aircraft);
        ASSERT_TRUE(isSound(at)) << at.lat << " " << at.lon << " " << at.alt << " ft " << at.vsFps << " ft/s " << at.tas
                                 << " kt, " << at.pitch << " " << at.bank << " " << at.heading;
        ASSERT_EQ(at.lat, aircraft->lat);
        legs += expectContinuous(courses[at.objectId], *aircraft) ? 1 : 0;
        ASSERT_LE(std::abs(at.bank), limitsOf(aircraft->category).maxBankDeg * degree + 1e-9);
        ASSERT_LE(std::abs(at.pitch), 12 * degree);
        ++positions;
    });
    for (int slot = 0; slot < 20000 && !HasFatalFailure(); ++slot) {
        if (below(50) == 0) {
            world.feed(wildRecord(slot / 100.0));
        }
        world.slot();
    }
    EXPECT_GE(world.created(), 3u);
    EXPECT_GT(positions, 10000);
    EXPECT_GT(legs, 100);
    EXPECT_THAT(log.lines(), Each(AllOf(Not(HasSubstr("sz:")), Not(HasSubstr("exception")))));
}

} // namespace
