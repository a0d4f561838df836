// rig/report/figures_json.h
// An analysis as JSON: the figures for whoever computes on, and with the courses for the page.
// Functions without state: usable from any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "rig/report/analysis.h"

namespace rig {

/// The text of figures.json (docs/rig-report.md).
std::string figuresText(const Analysis& analysis);

/// The page, whole in itself. `name` is what it calls the trace.
std::string reportPage(const Analysis& analysis, std::string_view name);

// What pages and pictures show of an analysis.

/// Of the recorded track the points that were due in the trace from `begin` to `end`, with one more on either side; of
/// many only `most`.
std::vector<FeedPoint> recordedPart(const FeedAircraft& feed, const FeedClock& clock, double begin, double end,
                                    std::size_t most);

/// Call sign, or what else names it.
std::string nameOf(const MeasuredAircraft& aircraft);
std::string nameOf(const Analysis& analysis, std::uint32_t objectId);

const MeasuredAircraft* findAircraft(const Analysis& analysis, std::uint32_t objectId);

/// "12.3 m" with the moment's own unit.
std::string valueText(const Moment& moment);
/// "0:01:23.4" since the begin of the trace.
std::string timeText(double seconds);

} // namespace rig
