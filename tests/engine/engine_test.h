// tests/engine/engine_test.h
// What the tests of the engine have in common: everything empty, the simulator's calls written down, and aircraft and
// samples made to measure. The slot clock begins at 10000.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "core/geography.h"
#include "core/slot_clock.h"
#include "engine/airport_in_use.h"
#include "engine/engine_state.h"
#include "engine/new_aircraft.h"
#include "feed/qnh_reader.h"
#include "feed/sample_queue.h"
#include "liveries/livery_matching.h"
#include "liveries/reference_tables.h"
#include "tests/sim/sim_test.h"

inline constexpr std::int32_t testSlot = 10000;
inline constexpr std::uint32_t testHexid = 4739591;
inline constexpr std::uint32_t testObject = 77;
inline constexpr LatLon testPlace{52.0, 4.0};

class EngineTest : public SimTest {
protected:
    EngineTest() {
        resetAll();
        slotClock = testSlot;
        gAllTypes = {"A320", "B77W", "C172", "F16", "EC35", "CRJ2"};
        gCategoryTypes.large = {"A320"};
        gCategoryTypes.heavy = {"B77W"};
        gCategoryTypes.buzjet = {"CRJ2"};
        gCategoryTypes.highPerformance = {"F16"};
        gCategoryTypes.rotorcraft = {"EC35"};
        LIGHT_AIRCRAFT.value = true;
        HIGH_PERF_AIRCRAFT.value = true;
        HELICOPTERS.value = true;
        RegcodeTable["PH-ABC"] = "Some Livery";
    }
    ~EngineTest() override { resetAll(); }

    static void resetAll() {
        resetEngineState();
        resetNewAircraft();
        resetLiveryMatching();
        clearLiveryTables();
        resetReferenceTables();
        gAirportInUse.reset();
        gUserState = {};
        gQnh = standardQnh;
        slotClock = 0;
        gLiveSampleQueue.clear();
    }

    /// So far north and east of the test's place, so many slots from the begin of the test.
    static Sample airSample(double northNm, double eastNm, std::int32_t slots, double altFeet = 5000,
                            double knots = 250) {
        Sample sample;
        sample.lat = testPlace.lat + northNm / 60;
        sample.lon = testPlace.lon + eastNm / 60 / std::cos(testPlace.lat * radiansPerDegree);
        sample.alt = altFeet;
        sample.gs = knots;
        sample.tas = knots;
        sample.airborne = altFeet > 0 ? 1 : 0;
        sample.slot = testSlot + slots;
        return sample;
    }

    static Sample groundSample(double northNm, double eastNm, std::int32_t slots, double knots = 15) {
        return airSample(northNm, eastNm, slots, 0, knots);
    }

    static LiveAircraft aircraftOf(const std::string& model) {
        LiveAircraft aircraft;
        aircraft.hexid = testHexid;
        aircraft.callsign = "KLM123";
        aircraft.airline = "KLM";
        aircraft.model = model;
        aircraft.registration = "PH-ABC";
        aircraft.category = gf_categoryOfType(model);
        takeCategoryLimits(aircraft);
        aircraft.halfWingSpan = 0.01;
        aircraft.groundPitch = 0.7 * radiansPerDegree;
        return aircraft;
    }

    /// In the table, "active", flying north from the test's place, 5000 feet high, without samples.
    static LiveAircraft& flying(const std::string& model = "A320") {
        LiveAircraft aircraft = aircraftOf(model);
        aircraft.objectId = testObject;
        aircraft.lifeState = LifeState::active;
        aircraft.phase = FlightPhase::flying;
        aircraft.liveryTitle = "Some Livery";
        aircraft.lat = testPlace.lat;
        aircraft.lon = testPlace.lon;
        aircraft.alt = 5000;
        liveTable.push_back(std::move(aircraft));
        return liveTable.back();
    }

    /// The same on the ground, in "taxi".
    static LiveAircraft& taxiing(const std::string& model = "A320") {
        LiveAircraft& aircraft = flying(model);
        aircraft.phase = FlightPhase::taxi;
        aircraft.onGround = 1;
        aircraft.alt = 10;
        aircraft.altAboveGround = 0;
        return aircraft;
    }

    template <typename... Samples>
    static LiveAircraft& give(LiveAircraft& aircraft, const Samples&... samples) {
        (aircraft.stream.pushBack(samples), ...);
        return aircraft;
    }

    static FeedRecord recordOf(const Sample& sample, double feedTime = 1000) {
        return {.type = "A320",
                .origin = "AMS",
                .destination = "LHR",
                .callsign = "KLM123",
                .registration = "PH-ABC",
                .sample = sample,
                .feedTime = feedTime,
                .hexid = testHexid};
    }

    static void knowRegistration(const std::string& registration, std::string_view airline, std::string_view type,
                                 std::string_view thirdCode = {}, bool cargo = false) {
        DbaseTable.insert(registration, {airline, type, thirdCode, cargo});
    }

    static void openAirport(double altFeet) { gAirportInUse = AirportInUse{"EHAM", "AMS", testPlace, altFeet}; }
};
