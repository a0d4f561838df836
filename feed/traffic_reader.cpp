// feed/traffic_reader.cpp
#include "feed/traffic_reader.h"

#include <algorithm>
#include <exception>
#include <fmt/format.h>
#include <stdexcept>
#include <utility>

#include "core/injection_radius.h"
#include "core/log.h"
#include "core/number_text.h"
#include "core/parameters.h"
#include "core/slot_clock.h"
#include "feed/log_text.h"
#include "feed/sample_queue.h"
#include "feed/traffic_line.h"
#include "platform/text_encoding.h"

TrafficReader gTrafficReader;

namespace {

constexpr std::size_t longestRegistration = 12;
/// Every aircraft runs this far behind the real one: the engine needs the samples ahead to turn, flare and rotate in
/// time.
constexpr std::int32_t delaySlots = 30 * slotsPerSecond;
constexpr double groundTrafficRadiusNm = 5;
/// Stands for a reference elevation while there is none: nothing is so low.
constexpr double noReferenceElevationFt = -1000;
constexpr double airborneOnlyHeightFt = 300;
/// The feed's word for a roll or an airspeed that is not known.
constexpr double notKnown = -1.0;

[[noreturn]] void fail(std::string_view name, std::string_view text) {
    throw std::runtime_error(fmt::format("{}:{}", name, text));
}

std::string positionText(const LatLon& position) {
    return fmt::format("{:.6f},{:.6f}", position.lat, position.lon);
}

bool isNameOfNoAircraft(std::string_view callsign) {
    return callsign == "ERARMTR1" || callsign == "AIRPORT1" || callsign == "00000000";
}

/// Almost every text is ASCII, which needs no decoding.
bool isUtf8(std::string_view text) {
    const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    return std::all_of(text.begin(), text.end(), isAscii) || platform::isValidUtf8(text);
}

bool hasAt(std::string_view text) {
    return text.find('@') != std::string_view::npos;
}

bool isAirborneEnough(double altitudeFt, const std::optional<ParkingAirport>& airport) {
    return altitudeFt - (airport ? airport->elevationFt : 0) > airborneOnlyHeightFt;
}

/// Ground traffic exists for this program only round the chosen airport.
bool isNear(const std::optional<ParkingAirport>& airport, const LatLon& position) {
    return airport && !isFartherThan(airport->position, position, groundTrafficRadiusNm);
}

LineOutcome enqueue(FeedRecord&& record) {
    const std::lock_guard lock(gTrafficMutex);
    if (!gAcceptSamples) {
        return LineOutcome::refused;
    }
    gLiveSampleQueue.push(std::move(record));
    return LineOutcome::accepted;
}

} // namespace

void TrafficReader::onDatagram() {
    lineCounter.count(processLine(datagram));
}

void TrafficReader::onStopped() {
    gWindowState.trafficLamp = FeedLamp::notRunning;
    log("Traffic Reader has stopped");
}

LineOutcome TrafficReader::processLine(std::string_view line) {
    if (line.find(" VEH") != std::string_view::npos) {
        return LineOutcome::groundVehicle;
    }
    splitTrafficLine(line, fields);
    return processLineSub();
}

LineOutcome TrafficReader::processLineSub() {
    try {
        return judgeAndDecode(surroundingsNow());
    } catch (const std::exception& error) {
        log(asLogText(fmt::format("exception in processLineSub: {}", error.what())));
        return LineOutcome::doesNotParse;
    }
}

// What tells most lines apart comes first, and only a line that is accepted costs texts of its own.
LineOutcome TrafficReader::judgeAndDecode(const TrafficSurroundings& around) {
    if (fields.size() < traffic_field::count) {
        throw std::runtime_error(fmt::format("{} fields, {} are needed", fields.size(), traffic_field::count));
    }
    const double feedTime = number("timestamp", traffic_field::timestamp);
    lastFeedTime = feedTime;

    const LatLon position = plausiblePosition();
    if (isFartherThan(around.userLatLon, position, gRadiusNm)) {
        return LineOutcome::outOfRange;
    }
    if (field(traffic_field::registration).size() > longestRegistration) {
        return LineOutcome::registrationTooLong;
    }
    const std::string_view registration = text("registration", traffic_field::registration);
    if (collectCallSigns) {
        collectCallSign();
    }
    const std::string_view type = typeFrom(text("type", traffic_field::type));
    if (!isWantedKind(type, field(traffic_field::category))) {
        return LineOutcome::unwantedKind;
    }

    Sample sample;
    sample.lat = position.lat;
    sample.lon = position.lon;
    sample.heading = trueHeading();
    sample.hasHeading = sample.heading.has_value();
    const std::uint32_t identity = hexid();
    if (identity <= highestStaticHexid) {
        return LineOutcome::hexidTooLow;
    }
    sample.gs = number("gs", traffic_field::gs);
    sample.alt = altitude(sample.gs, around);
    if (AIRBORNE_ONLY.value && !isAirborneEnough(sample.alt, around.parkingAirport)) {
        return LineOutcome::notAirborneEnough;
    }
    sample.airborne = sample.alt > 0;
    std::string_view callsign = text("callsign", traffic_field::callsign);
    if (hasAt(callsign)) {
        callsign = {};
    }
    if (isNameOfNoAircraft(callsign)) {
        return LineOutcome::unwantedCallSign;
    }
    if (callsign.empty() && registration.empty()) {
        return LineOutcome::nameless;
    }
    if (!sample.airborne && !isNear(around.parkingAirport, position)) {
        return LineOutcome::groundNotWanted;
    }
    sample.track = track(sample.heading);
    sample.vs = number("vs", traffic_field::vs);
    const std::string_view origin = text("origin", traffic_field::origin);
    const std::string_view destination = text("destination", traffic_field::destination);
    if (sample.airborne) {
        sample.roll = roll();
    }
    sample.tas = tas(sample.alt);
    sample.slot = slotClock + delaySlots;

    return enqueue({.type = std::string(type),
                    .origin = std::string(origin),
                    .destination = std::string(destination),
                    .callsign = std::string(callsign),
                    .registration = std::string(registration),
                    .sample = sample,
                    .feedTime = feedTime,
                    .hexid = identity});
}

LatLon TrafficReader::plausiblePosition() const {
    const LatLon position{number("lat", traffic_field::lat), number("lon", traffic_field::lon)};
    if (!isPlausible(position)) {
        throw std::runtime_error(fmt::format("invalid lalo: {}", positionText(position)));
    }
    return position;
}

std::uint32_t TrafficReader::hexid() const {
    const std::optional<std::uint32_t> value = hexidFrom(field(traffic_field::hexid));
    if (!value) {
        throw std::runtime_error(fmt::format("hexid incorrect{}", field(traffic_field::hexid)));
    }
    return *value;
}

void TrafficReader::collectCallSign() {
    const std::string_view callsign = textFrom(field(traffic_field::callsign));
    if (callsign.empty() || hasAt(callsign) || !isUtf8(callsign)) {
        return;
    }
    const std::lock_guard lock(callSignMutex);
    if (!seenCallSigns.contains(callsign)) {
        seenCallSigns.emplace(callsign);
    }
}

double TrafficReader::number(const char* name, std::size_t index) const {
    const std::optional<double> value = parseDouble(field(index));
    if (!value) {
        fail(name, field(index));
    }
    return *value;
}

// These texts go on into files and window texts, which hold UTF-8 alone.
std::string_view TrafficReader::text(const char* name, std::size_t index) const {
    if (!isUtf8(field(index))) {
        fail(name, field(index));
    }
    return textFrom(field(index));
}

double TrafficReader::altitude(double gsKnots, const TrafficSurroundings& around) const {
    const std::optional<double> value = parseDouble(field(traffic_field::altitude));
    if (!value) {
        throw std::runtime_error(fmt::format("altitude {} incorrect, from: {}", field(traffic_field::altitude),
                                             field(traffic_field::source)));
    }
    return altitudeOrGround(*value, gsKnots,
                            around.hasReferenceElevation ? around.referenceElevation : noReferenceElevationFt);
}

double TrafficReader::track(const std::optional<double>& headingRad) const {
    const std::string_view degrees = field(traffic_field::track);
    const std::optional<double> value = degrees.empty() ? 0 : parseDouble(degrees);
    if (!value) {
        throw std::runtime_error(fmt::format("track incorrect {}", degrees));
    }
    return *value == 0 && headingRad ? *headingRad * degreesPerRadian : *value;
}

std::optional<double> TrafficReader::trueHeading() const {
    if (field(traffic_field::source) != "adsb_icao") {
        return std::nullopt;
    }
    return headingRadFrom(number("trueheading", traffic_field::trueHeading));
}

std::optional<double> TrafficReader::roll() const {
    const double degrees = number("roll", traffic_field::roll);
    if (degrees == notKnown || degrees == 0) {
        return std::nullopt;
    }
    return -degrees * radiansPerDegree;
}

double TrafficReader::tas(double altitudeFt) const {
    const std::optional<double> value = parseDouble(field(traffic_field::tas));
    if (!value) {
        throw std::runtime_error(fmt::format("TAS incorrect{}", field(traffic_field::tas)));
    }
    return *value == notKnown ? usualTas(altitudeFt) : *value;
}

TrafficSurroundings TrafficReader::surroundingsNow() const {
    const std::lock_guard lock(surroundingsMutex);
    return surroundings;
}

void TrafficReader::setUserLatLon(const LatLon& position) {
    const std::lock_guard lock(surroundingsMutex);
    surroundings.userLatLon = position;
}

void TrafficReader::setReferenceElevation(double feet) {
    const std::lock_guard lock(surroundingsMutex);
    surroundings.referenceElevation = feet;
    surroundings.hasReferenceElevation = true;
}

void TrafficReader::clearReferenceElevation() {
    const std::lock_guard lock(surroundingsMutex);
    surroundings.hasReferenceElevation = false;
}

void TrafficReader::setParkingAirport(const std::optional<ParkingAirport>& airport) {
    const std::lock_guard lock(surroundingsMutex);
    surroundings.parkingAirport = airport;
}

CallSignSet TrafficReader::seenCallSignsNow() const {
    const std::lock_guard lock(callSignMutex);
    return seenCallSigns;
}

void TrafficReader::clearSeenCallSigns() {
    const std::lock_guard lock(callSignMutex);
    seenCallSigns.clear();
}

void TrafficReader::reset() {
    resetReader();
    clearSeenCallSigns();
    qnh = standardQnh;
    lastFeedTime = 0;
}

void runTrafficReader(std::uint16_t port, bool local) {
    gTrafficReader.lineCounter.clear();
    runReader(gTrafficReader, "Traffic Reader", {&gWindowState.trafficLamp, &gWindowState.weatherLamp}, port, local);
}
