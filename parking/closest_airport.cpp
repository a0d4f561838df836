// parking/closest_airport.cpp
#include "parking/closest_airport.h"

#include <cmath>

#include <fmt/format.h>

#include "core/log.h"

namespace {

constexpr double farAwayNm = 100.0;
constexpr double reachNm = 5.0;
/// More than the reach along a meridian, so that no airport within it is passed over for its latitude.
constexpr double reachLatitudeDeg = reachNm / (earthDiameterNm / 2) * degreesPerRadian * 1.001;

/// The two that held the lead last.
struct Closest {
    const Airport* best = nullptr;
    const Airport* neighbour = nullptr;
};

Closest closestTo(const LatLon& position) {
    Closest closest;
    double bestNm = farAwayNm;
    for (const Airport& airport : gAirports) {
        if (!(std::abs(airport.lat - position.lat) <= reachLatitudeDeg)) {
            continue;
        }
        const double distanceNm = greatCircleNm(position, {airport.lat, airport.lon});
        if (distanceNm <= reachNm && distanceNm < bestNm) {
            closest = {&airport, closest.best};
            bestNm = distanceNm;
        }
    }
    return closest;
}

ClosestStand closestStandAt(const Airport& airport, const LatLon& position) {
    ClosestStand closest;
    closest.distanceNm = gf_readDestApfForClosestStand(airport.code, position, closest.id);
    return closest;
}

const Airport& closerByStand(const Airport& best, const Airport& neighbour, const LatLon& position) {
    log(fmt::format("Airport {} is closest, neighbour is {}", best.code, neighbour.code));
    const ClosestStand standOfBest = closestStandAt(best, position);
    const ClosestStand standOfNeighbour = closestStandAt(neighbour, position);
    return lf_closerByStand(best, standOfBest, neighbour, standOfNeighbour);
}

} // namespace

std::optional<Airport> closest_airport(const LatLon& position) {
    const Closest closest = closestTo(position);
    if (closest.best == nullptr) {
        return std::nullopt;
    }
    if (closest.neighbour == nullptr) {
        return *closest.best;
    }
    return closerByStand(*closest.best, *closest.neighbour, position);
}

const Airport& lf_closerByStand(const Airport& best, const ClosestStand& standOfBest, const Airport& neighbour,
                                const ClosestStand& standOfNeighbour) {
    if (standOfNeighbour.distanceNm >= standOfBest.distanceNm) {
        return best;
    }
    log(fmt::format("Airport {} is closest, but stand {} at neighbouring airport {} is closer at {:.0F} meters ...",
                    best.code, standOfNeighbour.id, neighbour.code, standOfNeighbour.distanceNm * metersPerNm));
    return neighbour;
}
