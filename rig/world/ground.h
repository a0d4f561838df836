// rig/world/ground.h
// How high the ground is: flat round each place of the scene, and flat everywhere else.
// Value type without threads of its own.
#pragma once

#include <string>
#include <vector>

#include "core/geography.h"

namespace rig {

struct Place {
    std::string name;
    LatLon at;
    double radiusNm = 0;
    double elevationFeet = 0;
};

struct Ground {
    double defaultElevationFeet = 0;
    std::vector<Place> places; ///< where two overlap the first one counts

    double elevationFeet(const LatLon& at) const;
};

} // namespace rig
