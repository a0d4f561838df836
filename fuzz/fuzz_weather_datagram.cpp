// fuzz/fuzz_weather_datagram.cpp
// Any bytes as a weather datagram: no fault, and the QNH stays within its limits, the same in all its copies.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "feed/qnh_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    gQnhReader.datagram = {reinterpret_cast<const char*>(data), size};
    gQnhReader.onDatagram();
    const bool withinLimits = gQnh >= 900 && gQnh <= 1100;
    const bool alikeEverywhere = gTrafficReader.qnh == gQnh && gWindowState.qnh == gQnh;
    if (!withinLimits || !alikeEverywhere) {
        std::abort();
    }
    return 0;
}
