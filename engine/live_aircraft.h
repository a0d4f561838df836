// engine/live_aircraft.h
// A live aircraft: its record, where it is, how it moves in each slot, and the samples that it is still to reach.
// Engine thread only.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "engine/aircraft_record.h"
#include "engine/aircraft_states.h"
#include "engine/sample_stream.h"
#include "feed/feed_record.h"

struct Offset {
    double northMetres = 0;
    double eastMetres = 0;
};

/// A quadratic curve on the ground: from p0 towards the control point, which p1 and p2 both hold, to p3. Offsets are
/// metres from p0. Not-a-number in p3 means that there is no curve.
struct GroundCurve {
    static constexpr double none = std::numeric_limits<double>::quiet_NaN();

    Offset p3{none, none}; // first, for each slot looks at it
    LatLon p0;
    Offset p1{none, none};
    Offset p2{none, none};

    bool exists() const { return !std::isnan(p3.northMetres) && !std::isnan(p3.eastMetres); }
};

/// What an aircraft that is still to be created has given up samples to, or why none are made up for one that flies.
enum class SamplesLostTo : std::uint8_t {
    nothing,
    // Before it is created.
    creationQueue,
    takeOffOrLanding,
    missingStand,
    // When its feed has ended.
    otherInTheWay,
    longHolding,
    airborneOnly,
    unwantedCategory,
    rangeEdge, ///< also before its creation
};

inline constexpr std::int32_t initialTimeShiftSlots = 1000;
inline constexpr std::int32_t noStray = -1;
inline constexpr double initialAltAboveGroundFeet = 2500;

/// What each slot reads and writes stands together, from hexid to the beginning of the curve: with thousands of
/// aircraft each line of the cache counts.
struct LiveAircraft : AircraftRecord {
    std::uint8_t onGround = 0;      ///< driven as a ground object
    std::uint8_t nosewheelDown = 0; ///< the pitch still goes towards groundPitch after touchdown

    // The block that is sent to the simulator each slot, in this order.
    double lat = 0;     ///< degrees
    double lon = 0;     ///< degrees
    double pitch = 0;   ///< radians, negative is nose up
    double bank = 0;    ///< radians, in the simulator's sense
    double heading = 0; ///< radians
    double alt = 0;     ///< feet
    double vsFps = 0;   ///< feet per second
    double tas = 0;     ///< knots

    FlightPhase phase = FlightPhase::birth; ///< changed by changePhase, but where a rule sets it directly
    std::int32_t flareStage = 0;            ///< 0 to 4
    SampleStream stream;

    // Per-slot increments, computed for each leg.
    double dLat = 0;      ///< degrees
    double dLon = 0;      ///< degrees
    double dPitch = 0;    ///< radians
    double dBank = 0;     ///< radians
    double dHeading = 0;  ///< radians
    double dAlt = 0;      ///< feet
    double vsFpm = 0;     ///< feet per minute
    double tasSigned = 0; ///< knots; negative while pushing back

    GroundCurve curve;
    double lastFeedTime = 0; ///< feed time stamp of the last accepted sample, seconds
    double lastConflictLat = 0;
    double lastConflictLon = 0;
    std::int64_t parkedAt = 0;      ///< ticks of 100 ns at arrival on the stand
    std::int32_t extensions = 0;    ///< samples by which the stream may still be extended; -1 when they were used up
    std::int32_t holdStartSlot = 0; ///< slotClock when holding began
    FlightPhase previousPhase = FlightPhase::birth; ///< before the last real change
    std::uint8_t seenAtStand = 0;                   ///< a sample confirmed the aircraft at its stand
    std::uint8_t hasFlightPlan = 0;                 ///< a flight-plan file was attached
    std::uint8_t hiddenForUser = 0;                 ///< samples are skipped because it would collide with the user
    std::uint8_t holding = 0;                       ///< still on a taxiway or runway, its stream held

    double curveT = 0;       ///< 0 to 0.999999
    double curveDt = 0;      ///< per slot
    double curveDegrees = 0; ///< size of the turn
    Sample pushSecondLeg;    ///< held second leg of a push-back
    double lastParkCheckLat = 0;
    double lastParkCheckLon = 0;
    std::int32_t maxEarlier = initialTimeShiftSlots;   ///< by which a sample time may be moved earlier
    std::int32_t maxLater = initialTimeShiftSlots;     ///< by which a sample time may be moved later
    std::int32_t groundSlots = 1;                      ///< down-counter of the take-off and landing scripts
    std::int32_t pushStep = 0;                         ///< 2, then 1, then 0 while pushing back
    std::uint32_t standCheckCount = 0;                 ///< samples counted as moving away from the stand
    double targetHeading = 0;                          ///< radians, that the ground step turns towards
    double altAboveGround = initialAltAboveGroundFeet; ///< feet
    double altAboveRunway = 0;                         ///< feet
    double touchdownHeading = 0;                       ///< radians
    double pushedBackDistance = 0;                     ///< nautical miles
    double firstStandDistance = 0;                     ///< nautical miles
    double lastStandDistance = 0;                      ///< nautical miles
    double turnError = 0;                              ///< degrees
    std::optional<double> respawnHeading;              ///< radians, kept after a livery respawn
    std::uint8_t pushLeft = 0;                         ///< direction of a curved push-back
    std::uint8_t pushSideKnown = 0;
    std::optional<double> runwayAlt; ///< feet
    std::uint8_t landing = 0;        ///< the landing script runs
    std::uint8_t landedHere = 0;     ///< so a later stand move may be a tow
    std::uint8_t towed = 0;
    std::uint8_t cleanedUp = 0;     ///< gear and flaps went up after a go-around or a high pass
    std::uint8_t takingOff = 0;     ///< the take-off script runs
    std::uint8_t lightsHighSet = 0; ///< the lights for above 10000 feet were sent
    std::uint8_t lightsLowSet = 0;  ///< the lights for below 10000 feet were sent
    std::uint8_t rollingOut = 0;    ///< the landing roll runs
    std::uint8_t leavingStand = 0;  ///< a moved sample arrived while parked
    std::uint8_t turning = 0;       ///< the heading error exceeds 3 degrees on the ground

    SamplesLostTo samplesLostTo = SamplesLostTo::nothing; ///< the last time; for the log alone

    std::int32_t lastFeedSlot = 0;         ///< slotClock when lastFeedTime was taken
    std::int32_t firstStraySlot = noStray; ///< slotClock at the first of the records of another time, if any came
    double firstStrayTime = 0;             ///< its stamp
};

/// No curve, and nothing travelled on it.
void clearCurve(LiveAircraft& aircraft);

/// Takes the call sign, and with it the flight codes: the first is its copy, the second empty.
void takeCallsign(LiveAircraft& aircraft, const std::string& callsign);

/// Writes the new phase and keeps the old one in previousPhase; nothing when it would not change.
void changePhase(LiveAircraft& aircraft, FlightPhase phase);
