// rig/report/feed_clock.h
// How the time of a trace goes with the feed's. Value type: usable from any thread.
#pragma once

namespace rig {

/// The simulator shows what the feed told so long ago.
inline constexpr double feedDelaySeconds = 30;

/// Connects the times of trace and feed.
struct FeedClock {
    double feedAtBegin = 0; ///< seconds since 1970 at the begin of the trace

    /// What the feed told at this time is due in the trace at `traceSeconds`.
    double delayed(double traceSeconds) const { return feedAtBegin + traceSeconds - feedDelaySeconds; }
    double dueInTrace(double feedSeconds) const { return feedSeconds - feedAtBegin + feedDelaySeconds; }
    double receivedInTrace(double feedSeconds) const { return feedSeconds - feedAtBegin; }
};

} // namespace rig
