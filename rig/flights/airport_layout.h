// rig/flights/airport_layout.h
// The ground that the scripted flights move on: one runway, a taxiway beside it, two taxilanes with stands on both
// sides. It is nobody's real airport, but lies where one is, so that simulator and program find something there.
// Immutable.
#pragma once

#include <string>
#include <vector>

#include "core/geography.h"
#include "rig/flights/path.h"

namespace rig {

struct ScriptedStand {
    std::string name; ///< row letter and number: "A1"
    PlanePoint at;
    double heading = 0; ///< radians, of the nose
    double along = 0;   ///< metres along the runway
    double lane = 0;    ///< metres right of it, of the taxilane that it opens to
};

namespace airport {

inline constexpr const char* code = "EHAM";
inline constexpr double elevationFt = -11;
/// The reference of the plane, and the stand that is left free for the user.
inline constexpr LatLon reference{52.30780, 4.76160};
inline constexpr const char* userStand = "A17";

inline constexpr double runwayLength = 3300; ///< metres
inline constexpr double taxiway = 200;       ///< metres right of the runway's centre line
inline constexpr double holdingPoint = 75;   ///< the same
inline constexpr double entry = 40;          ///< metres along the runway
inline constexpr double exit = 2300;
inline constexpr double linkOut = 300; ///< from the taxilanes to the taxiway
inline constexpr double linkIn = 2700; ///< and back

/// Radians.
double runwayHeading();
/// From metres along the runway and right of it.
PlanePoint place(double along, double right);
const std::vector<ScriptedStand>& stands();
/// Throws std::out_of_range for a name that is none.
const ScriptedStand& stand(const std::string& name);
LatLon latLon(const PlanePoint& point);

} // namespace airport

} // namespace rig
