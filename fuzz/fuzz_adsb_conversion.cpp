// fuzz/fuzz_adsb_conversion.cpp
// Any bytes as public ADS-B data: converted or refused, and what comes out is whole rows.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>

#include "rig/traffic/conversion.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const std::string rows = rig::convertToRecording({reinterpret_cast<const char*>(data), size}, {});
        if (!rows.empty() && rows.back() != '\n') {
            std::abort();
        }
    } catch (const std::exception&) {
        return 0;
    }
    return 0;
}
