// engine/feed_filter.cpp
#include "engine/feed_filter.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "core/geography.h"
#include "engine/aircraft_tables.h"
#include "engine/airport_in_use.h"
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

void processKnown(LiveAircraft& aircraft, const FeedRecord& record) {
    const bool isLeaving =
        aircraft.lifeState == LifeState::liveryrespawn || aircraft.lifeState == LifeState::removingfromsim;
    if (isLeaving || isToBeDropped(aircraft, record)) {
        return;
    }
    if (aircraft.lifeState == LifeState::buffer && hangsOverRunway(record.sample.alt)) {
        return;
    }
    if (checkIdentity(aircraft, record)) {
        aircraft.lastFeedTime = record.feedTime;
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
