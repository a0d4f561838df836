// engine/identity.cpp
#include "engine/identity.h"

#include <optional>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "core/log.h"
#include "core/parameters.h"
#include "engine/airport_in_use.h"
#include "engine/ghosts.h"
#include "engine/livery_respawn.h"
#include "liveries/livery_matching.h"
#include "liveries/reference_tables.h"

namespace {

/// What the aircraft's object must follow. The texts are in the record by then; the rest is done only when it is made
/// anew, for an active aircraft without livery or out of its phase would never move again.
struct Change {
    bool any = false;
    bool ofRoute = false;
    bool ofLivery = false;

    void ofAircraft() { any = ofLivery = true; }
};

void fill(std::string& stored, const std::string& told) {
    if (!told.empty()) {
        stored = told;
    }
}

bool differs(const std::string& stored, const std::string& told) {
    return !told.empty() && stored != told;
}

void fillIn(LiveAircraft& aircraft, const FeedRecord& record) {
    fill(aircraft.destination, record.destination);
    fill(aircraft.origin, record.origin);
    if (differs(aircraft.callsign, record.callsign)) {
        takeCallsign(aircraft, record.callsign);
    }
    fill(aircraft.registration, record.registration);
}

bool announcesReturn(const LiveAircraft& aircraft, const FeedRecord& record) {
    return gAirportInUse && gAirportInUse->hasCode(aircraft.origin) && gAirportInUse->hasCode(record.destination);
}

void checkRoute(LiveAircraft& aircraft, const FeedRecord& record, Change& change) {
    if (aircraft.destination.empty()) {
        aircraft.destination = record.destination;
    }
    if (aircraft.origin.empty()) {
        aircraft.origin = record.origin;
    }
    const bool isOther = differs(aircraft.destination, record.destination) && differs(aircraft.origin, record.origin);
    if (!isOther || announcesReturn(aircraft, record)) {
        return;
    }
    aircraft.destination = record.destination;
    aircraft.origin = record.origin;
    change.any = change.ofRoute = true;
}

/// The code by which liveries are looked for.
std::string_view operatorOf(const DbaseRecord& known) {
    return known.opr.empty() ? known.airl : known.opr;
}

/// A field that the data leave empty tells nothing.
bool isOther(const std::string& stored, std::string_view known) {
    return !known.empty() && stored != known;
}

bool isOtherAircraft(const LiveAircraft& aircraft, const DbaseRecord& known) {
    return isOther(aircraft.airline, known.airl) || isOther(aircraft.model, known.type);
}

bool hasOperatorAlready(const LiveAircraft& aircraft, const DbaseRecord& known) {
    return !known.opr.empty() && known.opr == aircraft.airline;
}

void takeAircraft(LiveAircraft& aircraft, std::string_view airline, std::string_view model, Change& change) {
    if (!airline.empty()) {
        aircraft.airline = airline;
    }
    if (!model.empty()) {
        aircraft.model = model;
    }
    change.ofAircraft();
}

void takeLiveryOf(LiveAircraft& aircraft, std::string_view title, const std::optional<DbaseRecord>& known,
                  Change& change) {
    if (title == aircraft.liveryTitle) {
        return;
    }
    change.ofAircraft();
    if (known) {
        takeAircraft(aircraft, known->airl, known->type, change);
    }
}

/// For the first real registration of an aircraft.
void liveryFromRegistration(LiveAircraft& aircraft, const std::string& registration, Change& change) {
    const std::optional<DbaseRecord> known = gf_findRegcodeRecord(registration);
    if (const auto livery = RegcodeTable.find(registration); livery != RegcodeTable.end() && !livery->second.empty()) {
        takeLiveryOf(aircraft, livery->second, known, change);
    } else if (known && isOtherAircraft(aircraft, *known) && !hasOperatorAlready(aircraft, *known)) {
        takeAircraft(aircraft, operatorOf(*known), known->type, change);
    }
}

/// For another registration than before: only one whose operator goes with the call sign is believed.
void changeAirframe(LiveAircraft& aircraft, const FeedRecord& record, Change& change) {
    const std::optional<DbaseRecord> known = gf_findRegcodeRecord(record.registration);
    if (!known || !isOtherAircraft(aircraft, *known) || hasOperatorAlready(aircraft, *known)) {
        return;
    }
    const std::string airline = airlineOfFlightNumber(record.callsign);
    if (!airline.empty() && (airline == known->airl || airline == known->opr)) {
        takeAircraft(aircraft, operatorOf(*known), known->type, change);
    }
}

void checkRegistration(LiveAircraft& aircraft, const FeedRecord& record, Change& change) {
    if (!differs(aircraft.registration, record.registration)) {
        return;
    }
    const bool isPlaceholder = aircraft.registration.empty() || aircraft.registration == aircraft.callsign;
    if (isPlaceholder) {
        liveryFromRegistration(aircraft, record.registration, change);
    } else {
        changeAirframe(aircraft, record, change);
    }
    aircraft.registration = record.registration;
}

/// False for the ghost of an aircraft that is there. A call sign that cannot be used tells nothing: made anew, the
/// aircraft would go by its registration, and be made anew with each record from then on.
bool checkCallsign(LiveAircraft& aircraft, const FeedRecord& record, Change& change) {
    const bool isNew = differs(aircraft.callsign, record.callsign) && record.callsign != aircraft.registration;
    if (!isNew) {
        return true;
    }
    if (isGhostCallsign(record.callsign) && hasPlainTwin(record.callsign)) {
        return false;
    }
    if (!isUsableCallsign(record.callsign)) {
        return true;
    }
    takeCallsign(aircraft, record.callsign);
    change.any = true;
    return true;
}

void dropLivery(LiveAircraft& aircraft) {
    hexidLiveries.erase(aircraft.hexid);
    aircraft.liveryTitle = {};
    changePhase(aircraft, FlightPhase::birth);
}

void taxiOn(LiveAircraft& aircraft) {
    if (aircraft.onGround != 0 && aircraft.phase != FlightPhase::parking && aircraft.phase != FlightPhase::parked) {
        changePhase(aircraft, FlightPhase::taxi);
        aircraft.targetHeading = aircraft.heading;
    }
}

/// The livery goes only when the object does.
void respawn(LiveAircraft& aircraft, const Change& change) {
    log(fmt::format("          {} respawns", shortLine(aircraft)));
    if (!liveryRespawn(aircraft, change.ofLivery ? StandOnRespawn::soughtAnew : StandOnRespawn::kept)) {
        return;
    }
    if (change.ofRoute) {
        taxiOn(aircraft);
    }
    if (change.ofLivery) {
        dropLivery(aircraft);
    }
}

} // namespace

bool checkIdentity(LiveAircraft& aircraft, const FeedRecord& record) {
    if (aircraft.takingOff != 0 || aircraft.landing != 0) {
        return true;
    }
    if (aircraft.lifeState == LifeState::buffer) {
        fillIn(aircraft, record);
        return true;
    }
    if (aircraft.lifeState != LifeState::active || aircraft.phase == FlightPhase::pushing_back ||
        aircraft.extensions >= 1) {
        return true;
    }
    Change change;
    checkRoute(aircraft, record, change);
    checkRegistration(aircraft, record, change);
    const bool isOfItself = checkCallsign(aircraft, record, change);
    if (!change.any || !GUID_CHANGES.value) {
        return isOfItself;
    }
    // Also when it is a ghost's: its other texts are taken by now, and no later record would tell of a change.
    respawn(aircraft, change);
    return false;
}
