// fuzz/fuzz_airport_xml.cpp
// airports.xml: whatever it holds, the directory is sorted, and every airport of it is found again.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>

#include "fuzz/memory_folder.h"
#include "parking/airport_directory.h"
#include "parking/closest_airport.h"

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MemoryFolder folder("fuzz_airport_xml");
    const auto path = folder.file("airports.xml");
    writeInput(path, data, size);
    resetAirportDirectory();
    try {
        lf_readAirportXml(path, [](std::string_view) {});
    } catch (const std::runtime_error&) {
        require(gAirports.empty());
        return 0;
    }
    require(std::is_sorted(gAirports.begin(), gAirports.end(),
                           [](const Airport& a, const Airport& b) { return a.code < b.code; }));
    for (const Airport& airport : gAirports) {
        require(is_supported_airport(airport.code) && find_airport(airport.code) != nullptr);
        const LatLon position{airport.lat, airport.lon};
        if (const auto closest = closest_airport(position)) {
            require(greatCircleNm(position, {closest->lat, closest->lon}) <= 5.0);
        }
    }
    return 0;
}
