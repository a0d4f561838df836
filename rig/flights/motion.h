// rig/flights/motion.h
// How a scripted aircraft moves: legs along ways, with speeds that are reached and left at given rates, and heights
// that follow from the distance flown. Everything is a function of the time since the start. Value types.
#pragma once

#include <string>
#include <vector>

#include "core/geography.h"
#include "rig/flights/path.h"

namespace rig {

struct HeightPoint {
    double meters = 0;   ///< along the leg
    double heightFt = 0; ///< above the airport
};

struct Leg {
    std::string phase;
    Path path;
    double speed = 0;        ///< metres a second
    double endSpeed = 0;     ///< at the end of the leg
    double acceleration = 1; ///< metres a second, a second; also for slowing down
    bool backwards = false;  ///< the nose points against the way
    std::vector<HeightPoint> heights =
        {};                 ///< straight between them, rounded at them; none: as high as the leg before ended
    double waitSeconds = 0; ///< at the end, where endSpeed is 0
    double hoverFt = -1;    ///< reached while waiting, and added to all heights from then on; below 0: as before
};

struct MotionState {
    double seconds = 0; ///< since the start
    std::string phase;
    LatLon position;
    double heightFt = 0; ///< above the airport; 0 on the ground
    bool onGround = true;
    double heading = 0; ///< degrees, 0 up to 360
    double track = 0;   ///< degrees; of a standing aircraft its heading
    double gsKnots = 0;
    double vsFpm = 0;
    double rollDegrees = 0; ///< right positive
};

/// The state at each second from 0 to the end of the last leg.
std::vector<MotionState> fly(const std::vector<Leg>& legs);

} // namespace rig
