// rig/flights/path.h
// A way on the plane: straight lines through given points, with rounded corners. Immutable once made.
#pragma once

#include <vector>

namespace rig {

/// Metres east and north of a reference.
struct PlanePoint {
    double x = 0;
    double y = 0;
};

double distanceBetween(const PlanePoint& a, const PlanePoint& b);
/// Radians from north, clockwise, -pi to pi.
double directionFrom(const PlanePoint& a, const PlanePoint& b);
PlanePoint moved(const PlanePoint& from, double directionRad, double meters);

struct PathPlace {
    PlanePoint at;
    double direction = 0; ///< radians from north, clockwise; goes on beyond a full turn
    double curvature = 0; ///< radians a metre, positive to the right
};

class Path {
public:
    /// One point, or the same one again, is a way of no length in the given direction. A corner gets the radius, or a
    /// smaller one where the lines beside it are too short for it.
    Path(const std::vector<PlanePoint>& points, double radius, double directionOfPoint = 0);

    double length() const { return length_; }
    /// Beyond the ends it is the end.
    PathPlace at(double meters) const;

    struct Piece {
        double begin = 0; ///< metres along the way
        double length = 0;
        PathPlace start;
    };
    const std::vector<Piece>& pieces() const { return pieces_; }

private:
    void addLine(const PlanePoint& from, double direction, double length);
    void addArc(double turn, double radius);

    std::vector<Piece> pieces_;
    double length_ = 0;
};

} // namespace rig
