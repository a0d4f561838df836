// engine/feed_filter.cpp
#include "engine/feed_filter.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "core/geography.h"
#include "core/slot_clock.h"
#include "engine/aircraft_log.h"
#include "engine/aircraft_tables.h"
#include "engine/airport_in_use.h"
#include "engine/angles.h"
#include "engine/identity.h"
#include "engine/new_aircraft.h"
#include "engine/sample_decoding.h"

namespace {

// No aircraft is in such a state: what lies beyond is no report of one.
constexpr double poleDegrees = 90;
constexpr double antimeridianDegrees = 180;
constexpr double mostFeet = 200000;
constexpr double mostKnots = 10000;
constexpr double mostFpm = 100000;
constexpr double mostTrackDegrees = 360;

constexpr double leastGapSeconds = 1;

// A speed that changes so from one record to the next is an error of the source.
constexpr double rollingKnots = 5;
constexpr double wildFactor = 10;
constexpr double wildKnots = 80;

// Dense data are thinned out while they show nothing new.
constexpr double secondsPerHour = 3600;
constexpr double cruisingKnots = 120;
constexpr double cruisingTurnDegrees = 1;
constexpr double cruisingGapNm = 450 * nmPerMeter;
constexpr double taxiKnots = 30;
constexpr double taxiTurnDegrees = 2;
constexpr double taxiGapNm = 20 * nmPerMeter;
constexpr double longestGapSeconds = 15;

// As many seconds as a leg may be made longer, twice: a gap of more, which no slots have filled, is flown at more than
// twice the speed.
constexpr double mostAheadSeconds = 20;
// About as long an aircraft flies on without records, and can wait for a feed that is no more than that behind.
constexpr double mostBackSeconds = 90;
// A stamp that stands alone is an error of its source. As long as this the aircraft has samples to fly on.
constexpr double believedAfterSeconds = 15;

constexpr double airportInterestFeet = 10000;
constexpr double overRunwayFeet = 108;
constexpr double noAirportFeet = -1000;

/// Not-a-number is within nothing.
bool isWithin(double value, double most) {
    return std::abs(value) <= most;
}

bool isBelievable(const Sample& sample) {
    return isWithin(sample.lat, poleDegrees) && isWithin(sample.lon, antimeridianDegrees) &&
           isWithin(sample.alt, mostFeet) && isWithin(sample.gs, mostKnots) && isWithin(sample.tas, mostKnots) &&
           isWithin(sample.vs, mostFpm) && isWithin(sample.track, mostTrackDegrees) &&
           isWithin(sample.roll.value_or(0), std::numbers::pi) && isWithin(sample.heading.value_or(0), twoPi);
}

bool jumps(double before, double after) {
    return (before > rollingKnots && after >= wildFactor * before) || (before <= rollingKnots && after >= wildKnots);
}

bool changesSpeedWildly(const Sample& last, const Sample& next) {
    return jumps(last.gs, next.gs) || jumps(next.gs, last.gs);
}

double secondsFor(double nm, double knots) {
    return knots == 0 ? longestGapSeconds : nm / knots * secondsPerHour;
}

/// The tracks' difference is not the shorter way round, which lets through a record more at north.
bool showsNothingNew(const Sample& last, const Sample& next, double gapSeconds) {
    const double turnDegrees = std::abs(next.track - last.track);
    if (next.airborne != 0) {
        return next.gs > cruisingKnots && turnDegrees <= cruisingTurnDegrees &&
               gapSeconds <= secondsFor(cruisingGapNm, next.gs);
    }
    return next.gs <= taxiKnots && turnDegrees <= taxiTurnDegrees &&
           gapSeconds <= std::min(secondsFor(taxiGapNm, next.gs), longestGapSeconds);
}

bool isToBeDropped(const LiveAircraft& aircraft, const FeedRecord& record) {
    if (aircraft.stream.empty()) {
        return false;
    }
    const Sample& last = aircraft.stream[aircraft.stream.size() - 1];
    // A gap below 0 is a line that came late.
    const double gapSeconds = record.feedTime - aircraft.lastFeedTime;
    return gapSeconds <= leastGapSeconds || changesSpeedWildly(last, record.sample) ||
           (aircraft.extensions < 1 && showsNothingNew(last, record.sample, gapSeconds));
}

/// The same aircraft, seen by another transmitter. The type may have come from the registration table or, where only
/// the other one's registration is known there, from the feed.
bool isKnownByName(const FeedRecord& record) {
    return !record.callsign.empty() &&
           std::any_of(liveTable.begin(), liveTable.end(), [&record](const LiveAircraft& aircraft) {
               return aircraft.callsign == record.callsign &&
                      (aircraft.model == record.type || aircraft.model == modelOf(record));
           });
}

double secondsSince(std::int32_t slot) {
    return static_cast<double>(slotClock - slot) / slotsPerSecond;
}

/// Slots and feed pass alike, but not where a flight did not run, a computer slept or the feed was wound on: what comes
/// then has too far to go for the time there is. A feed that was wound back tells nothing new for as long.
bool isOfAnotherTime(double knownTime, std::int32_t knownSlot, double feedTime) {
    const double gapSeconds = feedTime - knownTime;
    return gapSeconds > 2 * secondsSince(knownSlot) + mostAheadSeconds || gapSeconds < -mostBackSeconds;
}

void takeFeedTime(LiveAircraft& aircraft, double feedTime) {
    aircraft.lastFeedTime = feedTime;
    aircraft.lastFeedSlot = slotClock;
    aircraft.firstStraySlot = noStray;
}

/// A line that comes again, or a second source that lags behind, goes on in no time of its own.
bool goesOnFromStray(const LiveAircraft& aircraft, double feedTime) {
    return aircraft.firstStraySlot != noStray && feedTime > aircraft.firstStrayTime &&
           !isOfAnotherTime(aircraft.firstStrayTime, aircraft.firstStraySlot, feedTime);
}

bool standsWhereItStood(const LiveAircraft& aircraft, const Sample& sample) {
    return !aircraft.stream.empty() && isWithinDegrees(positionOf(aircraft.stream[aircraft.stream.size() - 1]),
                                                       positionOf(sample), hardlyMovedDegrees);
}

/// None of them joins the stream. An aircraft that has not moved goes on in the other time; one that has goes, and its
/// next record begins it anew where it is now.
void meetAnotherTime(LiveAircraft& aircraft, const FeedRecord& record) {
    if (!goesOnFromStray(aircraft, record.feedTime)) {
        aircraft.firstStrayTime = record.feedTime;
        aircraft.firstStraySlot = slotClock;
    }
    if (secondsSince(aircraft.firstStraySlot) < believedAfterSeconds) {
        return;
    }
    if (standsWhereItStood(aircraft, record.sample)) {
        takeFeedTime(aircraft, record.feedTime);
    } else {
        removeSaying(aircraft, "the time of its feed has jumped");
    }
}

void processKnown(LiveAircraft& aircraft, const FeedRecord& record) {
    const bool isLeaving =
        aircraft.lifeState == LifeState::liveryrespawn || aircraft.lifeState == LifeState::removingfromsim;
    if (isLeaving) {
        return;
    }
    if (isOfAnotherTime(aircraft.lastFeedTime, aircraft.lastFeedSlot, record.feedTime)) {
        meetAnotherTime(aircraft, record);
        return;
    }
    if (record.feedTime > aircraft.lastFeedTime) {
        aircraft.firstStraySlot = noStray;
    }
    if (isToBeDropped(aircraft, record)) {
        return;
    }
    if (aircraft.lifeState == LifeState::buffer && hangsOverRunway(record.sample.alt)) {
        return;
    }
    if (checkIdentity(aircraft, record)) {
        takeFeedTime(aircraft, record.feedTime);
        decodeExisting(aircraft, record.sample);
    }
}

} // namespace

void processFeedRecord(FeedRecord&& record) {
    if (!isBelievable(record.sample) || !std::isfinite(record.feedTime)) {
        return;
    }
    if (LiveAircraft* known = findLiveByHexid(record.hexid)) {
        processKnown(*known, record);
    } else if (!isKnownByName(record)) {
        newAircraft(std::move(record));
    }
}

bool hangsOverRunway(double altFeet) {
    return altFeet > 0 && altFeet < airportInterestFeet &&
           std::abs(altFeet - airportAltitudeOr(noAirportFeet)) <= overRunwayFeet;
}
