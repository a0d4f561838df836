// parking/closest_airport.h
// Which airport a position belongs to: the closest one of the directory, or of two neighbouring ones that with the
// nearer stand. Run thread.
#pragma once

#include <optional>

#include "core/geography.h"
#include "parking/airport_directory.h"
#include "parking/closest_stand.h"

/// The airport within 5 nm that is closest to a position; nothing when there is none. Of two neighbouring ones the one
/// with the nearer stand, for which their files are read: it may block for the length of two downloads.
std::optional<Airport> closest_airport(const LatLon& position);

/// The neighbour when its stand is nearer, otherwise the best.
const Airport& lf_closerByStand(const Airport& best, const ClosestStand& standOfBest, const Airport& neighbour,
                                const ClosestStand& standOfNeighbour);
