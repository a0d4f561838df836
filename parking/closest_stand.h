// parking/closest_stand.h
// Which of two neighbouring airports the user stands at, by the nearest stand of each. Run thread.
#pragma once

#include <filesystem>
#include <string>

#include "core/geography.h"
#include "parking/airport_directory.h"

/// So far is the nearest stand of an airport whose file cannot be found or read.
inline constexpr double noStandNm = 100.0;

struct ClosestStand {
    double distanceNm = noStandNm;
    std::string id;
};

/// The nearest stand of an airport file of the older layout, which has its stands directly at document level; of a tie the
/// earlier one. A file that cannot be read, or has no stands there, is one without stands.
ClosestStand lf_closestStandInFile(const std::filesystem::path& path, const LatLon& position);

/// The neighbour when its stand is nearer, otherwise the best.
const Airport& lf_closerByStand(const Airport& best, const ClosestStand& standOfBest, const Airport& neighbour,
                                const ClosestStand& standOfNeighbour);
