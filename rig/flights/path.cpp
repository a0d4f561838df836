// rig/flights/path.cpp
#include "rig/flights/path.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rig {

namespace {

constexpr double pi = std::numbers::pi;
constexpr double shortestLine = 0.01; // metres
constexpr double smallestTurn = 1e-6; // radians

double normalized(double angle) {
    return std::remainder(angle, 2 * pi);
}

PathPlace placeOn(const Path::Piece& piece, double meters) {
    const double k = piece.start.curvature;
    const double before = piece.start.direction;
    const double now = before + k * meters;
    PathPlace place = piece.start;
    place.direction = now;
    if (k == 0) {
        place.at = moved(piece.start.at, before, meters);
    } else {
        place.at.x += (std::cos(before) - std::cos(now)) / k;
        place.at.y += (std::sin(now) - std::sin(before)) / k;
    }
    return place;
}

std::vector<PlanePoint> withoutRepeats(const std::vector<PlanePoint>& points) {
    std::vector<PlanePoint> result;
    for (const PlanePoint& point : points) {
        if (result.empty() || distanceBetween(result.back(), point) > shortestLine) {
            result.push_back(point);
        }
    }
    return result;
}

} // namespace

double distanceBetween(const PlanePoint& a, const PlanePoint& b) {
    return std::hypot(b.x - a.x, b.y - a.y);
}

double directionFrom(const PlanePoint& a, const PlanePoint& b) {
    return std::atan2(b.x - a.x, b.y - a.y);
}

PlanePoint moved(const PlanePoint& from, double directionRad, double meters) {
    return {from.x + std::sin(directionRad) * meters, from.y + std::cos(directionRad) * meters};
}

Path::Path(const std::vector<PlanePoint>& points, double radius, double directionOfPoint) {
    const std::vector<PlanePoint> corners = withoutRepeats(points);
    if (corners.size() < 2) {
        pieces_.push_back({0, 0, {corners.at(0), directionOfPoint, 0}});
        return;
    }
    double cut = 0; // of the present line, by the corner behind it
    double direction = directionFrom(corners[0], corners[1]);
    for (std::size_t i = 0; i + 1 < corners.size(); ++i) {
        const double line = distanceBetween(corners[i], corners[i + 1]);
        const PlanePoint from = moved(corners[i], direction, cut);
        if (i + 2 >= corners.size()) {
            addLine(from, direction, line - cut);
            break;
        }
        const double turn = normalized(directionFrom(corners[i + 1], corners[i + 2]) - direction);
        const double half = std::tan(std::abs(turn) / 2);
        const double room = std::min(line, distanceBetween(corners[i + 1], corners[i + 2])) / 2;
        const double nextCut = std::min(radius * half, room);
        addLine(from, direction, line - cut - nextCut);
        if (std::abs(turn) > smallestTurn) {
            addArc(turn, nextCut / half);
        }
        direction += turn;
        cut = nextCut;
    }
}

void Path::addLine(const PlanePoint& from, double direction, double length) {
    if (length > 0) {
        pieces_.push_back({length_, length, {from, direction, 0}});
        length_ += length;
    }
}

void Path::addArc(double turn, double radius) {
    PathPlace start = at(length_);
    start.curvature = (turn > 0 ? 1 : -1) / radius;
    const double length = std::abs(turn) * radius;
    pieces_.push_back({length_, length, start});
    length_ += length;
}

PathPlace Path::at(double meters) const {
    const double along = std::clamp(meters, 0.0, length_);
    auto piece = std::upper_bound(pieces_.begin(), pieces_.end(), along,
                                  [](double value, const Piece& other) { return value < other.begin; });
    if (piece != pieces_.begin()) {
        --piece;
    }
    return placeOn(*piece, along - piece->begin);
}

} // namespace rig
