// rig/report/analysis.h
// What flew, in figures: a trace held against the recording that it was made from, and against the truth.
// Runs on the calling thread. It keeps no frame: the trace is read three times.
#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "rig/report/never_shown.h"
#include "rig/report/object_figures.h"
#include "rig/report/series.h"
#include "rig/report/survey.h"
#include "rig/world/aircraft_titles.h"
#include "rig/world/ground.h"

namespace rig {

/// All but the trace may be missing; what is there must live as long as the analysis.
struct AnalysisInputs {
    std::istream& trace; ///< that can be set back to its begin
    const Recording* recording = nullptr;
    const FeedTracks* truth = nullptr;   ///< without a recording it is the recorded track, too
    const FeedTracks* heldOut = nullptr; ///< samples that the program was not given
    std::string_view log = {};
    const Ground* ground = nullptr;                 ///< with the titles: heights above the ground
    const AircraftTitles* titles = nullptr;         ///< wing spans, and how high aircraft stand
    std::optional<double> feedStart = std::nullopt; ///< as surveyTrace() takes it
    double radiusNm = 40;
    bool takesGroundTraffic = true; ///< round the user
};

/// One frame of an aircraft near a moment.
struct DetailPoint {
    double seconds = 0; ///< since the begin of the trace
    Position position;
};

struct DetailedMoment {
    Moment moment;
    std::vector<DetailPoint> course; ///< frame by frame
    std::vector<DetailPoint> other;  ///< of the second one of an overlap
};

struct MeasuredAircraft {
    ObjectFacts facts;
    ObjectFigures figures;
    Series series;
};

struct Analysis {
    Survey survey;
    FeedTracks tracks; ///< that the facts of the aircraft point to
    bool knowsGround = false;
    std::vector<MeasuredAircraft> aircraft; ///< by object id
    ObjectFigures all;                      ///< times of sight left empty
    Distribution firstSight;                ///< seconds
    double overlapSeconds = 0;              ///< in which any two were in one another
    FeedInRange inRange;
    Moments moments;
    std::vector<DetailedMoment> worst; ///< the weightiest first
};

/// Throws TraceError for a trace that is damaged.
Analysis analyse(const AnalysisInputs& inputs);

} // namespace rig
