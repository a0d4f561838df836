// rig/report/never_shown.h
// Aircraft that the feed told of within range and that nobody saw, and why. Runs on the calling thread.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "rig/report/survey.h"
#include "rig/traffic/recording.h"

namespace rig {

struct NeverShown {
    std::uint32_t hexid = 0;
    std::string callsign;
    std::string registration;
    std::string type;
    double firstSample = 0; ///< seconds since the begin of the trace; may be before it
    std::string why;
};

struct FeedInRange {
    /// When the first line that the program takes came of each, by identity; seconds since the begin of the trace.
    std::map<std::uint32_t, double> firstSample;
    /// When each of them came, seconds since 1970, rising.
    std::map<std::uint32_t, std::vector<double>> takenAt;
    std::vector<NeverShown> neverShown;
};

/// What the log tells of why an aircraft is not there.
class LogReasons {
public:
    explicit LogReasons(std::string_view log);

    /// Empty when the log tells nothing.
    std::string reasonFor(const FeedAircraft& aircraft) const;

private:
    std::map<std::string, std::string, std::less<>> byName_; // a call sign, or a registration in its place
    std::map<std::string, std::string, std::less<>> byType_;
};

/// What the program takes of the feed.
struct ProgramReach {
    double radiusNm = 40;
    bool takesGroundTraffic = true; ///< round an airport in use, which is taken to be where the user is
};

/// Those whose first line came so late that they could not be seen before the end of the trace are left out. It uses a
/// traffic reader and the radius of this process: nothing else may use them meanwhile.
FeedInRange feedInRange(const Recording& recording, const FeedTracks& tracks, const Survey& survey,
                        const LogReasons& reasons, const ProgramReach& reach);

} // namespace rig
