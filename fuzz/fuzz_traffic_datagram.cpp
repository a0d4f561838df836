// fuzz/fuzz_traffic_datagram.cpp
// Any bytes as a traffic datagram: no fault, and no record with a number or a text that nothing behind it could bear.
// The first byte of an input says what the reader knows of its surroundings, the rest is the datagram.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "core/injection_radius.h"
#include "core/parameters.h"
#include "feed/sample_queue.h"
#include "feed/traffic_reader.h"
#include "platform/text_encoding.h"

namespace {

/// As far as a great circle reaches, so that the rules behind the range test are tried too.
constexpr double wholeGlobeNm = 11000;

TrafficReader& reader() {
    static TrafficReader one;
    static const bool ready = [] {
        gRadiusNm = wholeGlobeNm;
        gAcceptSamples = true;
        one.setUserLatLon({52.31, 4.76});
        one.setParkingAirport(ParkingAirport{{52.31, 4.76}, -11});
        one.collectCallSigns = true;
        return true;
    }();
    (void)ready;
    return one;
}

/// The bits of the first byte.
constexpr unsigned withReferenceElevation = 1;
constexpr unsigned airborneOnly = 2;

void arrange(unsigned choice) {
    if ((choice & withReferenceElevation) != 0) {
        reader().setReferenceElevation(-11);
    } else {
        reader().clearReferenceElevation();
    }
    AIRBORNE_ONLY.value = (choice & airborneOnly) != 0;
}

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

void check(const FeedRecord& record) {
    const Sample& s = record.sample;
    for (const double value : {s.lat, s.lon, s.alt, s.gs, s.track, s.vs, s.tas, s.roll.value_or(0),
                               s.heading.value_or(0), record.feedTime}) {
        require(std::isfinite(value));
    }
    require(std::abs(s.lat) <= 90 && std::abs(s.lon) <= 180 && s.alt >= 0);
    require(record.hexid > 10000);
    for (const std::string& text :
         {record.type, record.origin, record.destination, record.callsign, record.registration}) {
        require(platform::isValidUtf8(text));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    arrange(data[0]);
    const LineOutcome outcome = reader().processLine({reinterpret_cast<const char*>(data) + 1, size - 1});
    require((outcome == LineOutcome::accepted) == (gLiveSampleQueue.size() == 1));
    if (const std::optional<FeedRecord> record = gLiveSampleQueue.pop()) {
        check(*record);
    }
    for (const std::string& callsign : reader().seenCallSignsNow()) {
        require(platform::isValidUtf8(callsign));
    }
    reader().clearSeenCallSigns();
    return 0;
}
