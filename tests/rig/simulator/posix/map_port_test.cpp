#include <gtest/gtest.h>

#include <stdexcept>

#include "rig/map/map_server.h"

using namespace rig;

TEST(MapPortThreads, aPortThatIsTakenIsToldWithItsNumber) {
    const MapServer first(0);
    try {
        const MapServer second(first.port());
        ADD_FAILURE() << "both listen";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), "cannot listen on map port " + std::to_string(first.port()));
    }
}
