#include "sim/flight_plan.h"

#include <gtest/gtest.h>

#include "tests/support/log_capture.h"
#include "tests/support/posix/full_disk.h"
#include "tests/support/temporary_folder.h"

namespace fs = std::filesystem;

namespace {

TEST(FlightPlanOnAFullDisk, isNoneAndLeavesNoFile) {
    const TemporaryFolder workingFolder;
    const LogCapture log;
    const fs::path path = fs::absolute("4921892.pln");
    AircraftRecord aircraft;
    aircraft.origin = "LSZH";
    aircraft.destination = "EGLL";
    {
        const FullDisk disk(0);
        EXPECT_FALSE(lf_writeFlightPlan(path, aircraft));
    }
    EXPECT_FALSE(fs::exists(path));
    EXPECT_TRUE(lf_writeFlightPlan(path, aircraft));
}

} // namespace
