// rig/report/series.h
// The course of one aircraft in so many points at most, however long it was to be seen.
// Value type without threads of its own.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "core/geography.h"

namespace rig {

struct SeriesPoint {
    double seconds = 0; ///< since the begin of the trace
    LatLon at;
    double altFeet = 0;
    double knots = 0;
    double headingDegrees = 0;
    bool onGround = false;
};

class Series {
public:
    static constexpr std::size_t mostPoints = 800;

    /// Points that follow each other too fast are left out.
    void add(const SeriesPoint& point) {
        last_ = point;
        if (!points_.empty() && point.seconds < points_.back().seconds + everySeconds_) {
            return;
        }
        points_.push_back(point);
        if (points_.size() > mostPoints) {
            thin(points_);
            everySeconds_ *= 2;
        }
    }

    /// Evenly chosen, the first and the last always among them; `most` is 2 at least.
    std::vector<SeriesPoint> points(std::size_t most) const {
        std::vector<SeriesPoint> chosen = points_;
        if (!chosen.empty() && chosen.back().seconds < last_.seconds) {
            chosen.push_back(last_);
        }
        while (chosen.size() > most) {
            thin(chosen);
            if (chosen.back().seconds < last_.seconds) {
                chosen.back() = last_;
            }
        }
        return chosen;
    }

private:
    /// Every second one.
    static void thin(std::vector<SeriesPoint>& points) {
        for (std::size_t i = 0; i < points.size(); i += 2) {
            points[i / 2] = points[i];
        }
        points.resize((points.size() + 1) / 2);
    }

    double everySeconds_ = 0.5;
    std::vector<SeriesPoint> points_;
    SeriesPoint last_;
};

} // namespace rig
