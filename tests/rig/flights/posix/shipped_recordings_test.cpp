// The shipped recordings are written natively: another mathematics library differs in the last bit.
#include <cstdint>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "rig/flights/flights_run.h"
#include "rig/flights/scenarios.h"
#include "rig/traffic/gzip_text.h"
#include "rig/traffic/recording.h"

namespace rig {
namespace {

TEST(RunFlights, theShippedRecordingsAreWhatTheCommandWrites) {
    const std::filesystem::path data = std::filesystem::absolute("data/recordings");
    FlightsOptions options;
    options.fidelity = Fidelity::network;
    std::uintmax_t bytes = 0;
    for (const char* name : {"quiet_half_hour", "busy_ten_minutes"}) {
        const std::filesystem::path file = data / (std::string(name) + ".csv.gz");
        // Not compared by a matcher: it would print half a megabyte of differences.
        EXPECT_TRUE(readText(file) == writeScenario(makeScenario(name, options.seed), options).recording) << name;
        bytes += std::filesystem::file_size(file);
    }
    EXPECT_LT(bytes, 1000000u);
}

} // namespace
} // namespace rig
