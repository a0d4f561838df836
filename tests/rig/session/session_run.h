// tests/rig/session/session_run.h
// A run of the program's simulator side in the simulated world. The test's thread is the run thread: it takes slots for
// as long as a condition wants, and the world goes on by a frame with each of them.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/aircraft_record.h"
#include "engine/live_aircraft.h"
#include "sim/engine_inbox.h"
#include "sim/sim_queues.h"
#include "tests/rig/session/front.h"
#include "tests/support/log_capture.h"

// --- The world -------------------------------------------------------------------------------------------------------

/// The user's aircraft stands at Schiphol, 100 ft above the sea.
rig::Scene airportScene();
inline constexpr LatLon nearTheUser{52.31, 4.77};
/// Beyond the radius within which the simulator is asked for objects.
inline constexpr LatLon outOfRange{54.5, 4.77};
inline constexpr double airportFeet = 100;

// The liveries that are installed.
inline constexpr const char* airliner = "Airliner";
inline constexpr const char* helicopter = "Helicopter";
inline constexpr double airlinerCgFeet = 9;

// --- The run ---------------------------------------------------------------------------------------------------------

enum class Where { onTheGround, inTheAir };
inline constexpr double inTheAirFeet = 3000;

class SessionRun : public ::testing::TestWithParam<std::string> {
protected:
    SessionRun();
    ~SessionRun() override;

    void startSimulator(rig::Scene scene = airportScene());
    void stopSimulator() { front_.reset(); }
    Front& simulator() { return *front_; }

    /// A simulator, a session with it, and its flight runs.
    void connect(rig::Scene scene = airportScene());
    /// The same, and the user's aircraft is known.
    void connectAndKnowUser(rig::Scene scene = airportScene());
    /// With the simulator that is there.
    void openSession();
    void knowUser();
    static void endSession();
    /// What the program does between two runs.
    void endRun();

    /// A frame and a slot. Throws as readInbox does.
    void turn();
    /// The same for a world whose frames another thread makes.
    void turnWithoutFrame();
    /// Turns until the condition holds, at most twenty seconds of real time; whether it came to hold.
    bool pumpUntil(const std::function<bool()>& condition);
    void pumpTurns(int count);
    /// Turns until the simulator has handled whatever the slots have queued so far; the records of it have come.
    bool settle();

    /// In each slot every active aircraft gets the position of its record.
    void fliesAircraft() { fliesAircraft_ = true; }
    /// Whether the slots ask what is in range.
    void looksAround(bool does) { looksAround_ = does; }
    /// Whether the slots read the inbox.
    void readsInbox(bool does) { readsInbox_ = does; }

    /// A record whose creation waits in its queue, as the engine leaves it.
    static LiveAircraft& wantLive(std::uint32_t hexid, const std::string& callsign, Where where,
                                  std::string_view title = airliner, const LatLon& at = nearTheUser);
    static AircraftRecord& wantStatic(std::uint32_t serial, const std::string& callsign,
                                      std::string_view title = airliner);

    bool becomesActive(std::uint32_t hexid);
    /// A live aircraft, active; its object id.
    std::uint32_t activeAircraft(std::uint32_t hexid, const std::string& callsign, Where where);
    /// What the world holds of it; nothing when it does not know it.
    std::optional<rig::WorldObject> inWorld(std::uint32_t objectId);
    std::size_t aircraftInWorld();
    std::uint32_t lights(std::uint32_t objectId);

    /// What the simulator's side has told the engine and no slot has read.
    static std::vector<EngineMessage> inbox();
    /// The creations that the simulator has neither described nor refused.
    static std::vector<SentCreation> sentCreations();

    LogCapture log;

private:
    void slot();

    std::unique_ptr<Front> front_;
    bool fliesAircraft_ = false;
    bool looksAround_ = true;
    bool readsInbox_ = true;
};

/// For INSTANTIATE_TEST_SUITE_P.
inline std::string wayName(const ::testing::TestParamInfo<std::string>& way) {
    return way.param;
}
