// rig/report/overlap.cpp
#include "rig/report/overlap.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace rig {

namespace {

constexpr double metresPerFoot = metersPerNm / feetPerNm;
constexpr double halfWidthShare = 0.05; // of the span, of body and wings
constexpr double heightShare = 1.0 / 3; // of the span

/// Wider than any aircraft, so that two in one another are in one cell or in cells side by side.
constexpr double cellMetres = 120;
constexpr double cellDegrees = cellMetres / metersPerDegreeLatitude;
/// Cells are counted by degrees, so they get narrower towards the poles; from here on nothing flies.
constexpr double leastCosine = 0.02;
/// More than there are cells round the earth.
constexpr std::int64_t rowKeys = 1 << 20;

struct Point {
    double east = 0;
    double north = 0;
};

struct Segment {
    Point a;
    Point b;
};

double cross(const Point& o, const Point& a, const Point& b) {
    return (a.east - o.east) * (b.north - o.north) - (a.north - o.north) * (b.east - o.east);
}

bool meet(const Segment& s, const Segment& t) {
    return cross(s.a, s.b, t.a) * cross(s.a, s.b, t.b) < 0 && cross(t.a, t.b, s.a) * cross(t.a, t.b, s.b) < 0;
}

double distance(const Point& p, const Segment& s) {
    const double east = s.b.east - s.a.east;
    const double north = s.b.north - s.a.north;
    const double squared = east * east + north * north;
    const double along = squared == 0 ? 0 : ((p.east - s.a.east) * east + (p.north - s.a.north) * north) / squared;
    const double share = std::clamp(along, 0.0, 1.0);
    return std::hypot(p.east - s.a.east - share * east, p.north - s.a.north - share * north);
}

double distance(const Segment& s, const Segment& t) {
    if (meet(s, t)) {
        return 0;
    }
    return std::min({distance(s.a, t), distance(s.b, t), distance(t.a, s), distance(t.b, s)});
}

/// Body and wings.
std::array<Segment, 2> barsOf(const Footprint& aircraft, const Point& centre) {
    const double reach = aircraft.spanMetres * (0.5 - halfWidthShare);
    const double east = reach * std::sin(aircraft.headingRad);
    const double north = reach * std::cos(aircraft.headingRad);
    return {{{{centre.east - east, centre.north - north}, {centre.east + east, centre.north + north}},
             {{centre.east - north, centre.north + east}, {centre.east + north, centre.north - east}}}};
}

std::int64_t rowOf(const LatLon& at) {
    return static_cast<std::int64_t>(std::floor((at.lat + 90) / cellDegrees));
}

double columnDegrees(std::int64_t row) {
    const double lat = static_cast<double>(row) * cellDegrees - 90;
    return cellDegrees / std::max(std::cos(lat * radiansPerDegree), leastCosine);
}

std::int64_t columnOf(const LatLon& at, std::int64_t row) {
    return static_cast<std::int64_t>(std::floor((at.lon + 180) / columnDegrees(row)));
}

std::int64_t keyOf(std::int64_t row, std::int64_t column) {
    return row * rowKeys + column;
}

} // namespace

bool overlap(const Footprint& a, const Footprint& b) {
    const double widest = std::max(a.spanMetres, b.spanMetres);
    if (std::abs(a.altFeet - b.altFeet) * metresPerFoot > widest * heightShare) {
        return false;
    }
    const double eastPerDegree = metersPerDegreeLatitude * std::cos(a.at.lat * radiansPerDegree);
    const Point apart{std::remainder(b.at.lon - a.at.lon, 360.0) * eastPerDegree,
                      (b.at.lat - a.at.lat) * metersPerDegreeLatitude};
    if (std::hypot(apart.east, apart.north) > (a.spanMetres + b.spanMetres) / 2) {
        return false;
    }
    const double touch = (a.spanMetres + b.spanMetres) * halfWidthShare;
    for (const Segment& mine : barsOf(a, {})) {
        for (const Segment& other : barsOf(b, apart)) {
            if (distance(mine, other) < touch) {
                return true;
            }
        }
    }
    return false;
}

void OverlapSearch::compareWithCell(const std::vector<Footprint>& footprints, const Cell& cell, std::int64_t key) {
    const auto first = std::lower_bound(cells_.begin(), cells_.end(), key,
                                        [](const Cell& one, std::int64_t value) { return one.key < value; });
    for (auto other = first; other != cells_.end() && other->key == key; ++other) {
        // Each pair is met from both sides.
        if (cell.index < other->index && overlap(footprints[cell.index], footprints[other->index])) {
            pairs_.emplace_back(cell.index, other->index);
        }
    }
}

const std::vector<std::pair<std::size_t, std::size_t>>& OverlapSearch::pairs(const std::vector<Footprint>& footprints) {
    pairs_.clear();
    cells_.clear();
    for (std::size_t i = 0; i < footprints.size(); ++i) {
        const std::int64_t row = rowOf(footprints[i].at);
        cells_.push_back({keyOf(row, columnOf(footprints[i].at, row)), i});
    }
    std::sort(cells_.begin(), cells_.end(), [](const Cell& a, const Cell& b) { return a.key < b.key; });
    for (const Cell& cell : cells_) {
        const LatLon& at = footprints[cell.index].at;
        const std::int64_t row = rowOf(at);
        for (std::int64_t near = row - 1; near <= row + 1; ++near) {
            const std::int64_t column = columnOf(at, near);
            for (std::int64_t beside = column - 1; beside <= column + 1; ++beside) {
                compareWithCell(footprints, cell, keyOf(near, beside));
            }
        }
    }
    return pairs_;
}

} // namespace rig
