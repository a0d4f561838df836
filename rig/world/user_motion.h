// rig/world/user_motion.h
// How the user's aircraft moves: along the points of the act that was begun last.
// Belongs to its world.
#pragma once

#include <deque>

#include "rig/world/ground.h"
#include "rig/world/scene.h"
#include "rig/world/world_object.h"

namespace rig {

class UserMotion {
public:
    void begin(const TaxiAct& act, WorldObject& user);
    void begin(const FlyAct& act, WorldObject& user);
    /// Puts the aircraft on the glide path.
    void begin(const ApproachAct& act, WorldObject& user, const Ground& ground);
    void begin(const TakeOffAct& act, WorldObject& user, const Ground& ground);
    /// Ends what goes on: what stands on the ground stops there, what flies flies on.
    void forget() { legs_.clear(); }

    void advance(WorldObject& user, const Ground& ground, double seconds);

private:
    struct Leg {
        LatLon to;
        bool onGround = false;
        double altFeet = 0; ///< at its end, in the air
        double knots = 0;
    };

    void moveAlongLegs(WorldObject& user, double seconds);
    double wantedKnots(const WorldObject& user) const;

    std::deque<Leg> legs_;
};

} // namespace rig
