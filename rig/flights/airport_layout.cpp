// rig/flights/airport_layout.cpp
#include "rig/flights/airport_layout.h"

#include <array>
#include <cmath>
#include <numbers>
#include <stdexcept>

#include <fmt/format.h>

namespace rig::airport {

namespace {

constexpr double quarterTurn = std::numbers::pi / 2;
constexpr double runwayHeadingDegrees = 150;

constexpr double firstStand = 500; // metres along the runway
constexpr double standSpacing = 60;
constexpr int standsPerRow = 34;

struct StandRow {
    char letter;
    double right; ///< metres right of the runway
    double lane;  ///< the same, of its taxilane
};

constexpr std::array<StandRow, 4> rows{{{'A', 360, 420}, {'B', 480, 420}, {'C', 660, 720}, {'D', 780, 720}}};

// The reference is the user's stand, the 17th of the first row.
constexpr double referenceAlong = firstStand + 16 * standSpacing;
constexpr double referenceRight = rows[0].right;

constexpr double feetPerMeter = feetPerNm / metersPerNm;

std::vector<ScriptedStand> makeStands() {
    std::vector<ScriptedStand> result;
    for (const StandRow& row : rows) {
        for (int i = 0; i < standsPerRow; ++i) {
            const double along = firstStand + i * standSpacing;
            // The nose points away from the taxilane.
            const double side = row.right < row.lane ? -quarterTurn : quarterTurn;
            result.push_back({fmt::format("{}{}", row.letter, i + 1), place(along, row.right), runwayHeading() + side,
                              along, row.lane});
        }
    }
    return result;
}

} // namespace

double runwayHeading() {
    return runwayHeadingDegrees * radiansPerDegree;
}

PlanePoint place(double along, double right) {
    const PlanePoint onLine = moved({}, runwayHeading(), along - referenceAlong);
    return moved(onLine, runwayHeading() + quarterTurn, right - referenceRight);
}

const std::vector<ScriptedStand>& stands() {
    static const std::vector<ScriptedStand> all = makeStands();
    return all;
}

const ScriptedStand& stand(const std::string& name) {
    for (const ScriptedStand& candidate : stands()) {
        if (candidate.name == name) {
            return candidate;
        }
    }
    throw std::out_of_range(fmt::format("no stand {}", name));
}

LatLon latLon(const PlanePoint& point) {
    return project(reference, directionFrom({}, point), distanceBetween({}, point) * feetPerMeter);
}

} // namespace rig::airport
