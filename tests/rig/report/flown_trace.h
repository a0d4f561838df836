// A trace and the recording that it was made from, both made to measure.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "core/geography.h"
#include "rig/report/analysis.h"
#include "rig/traffic/feed_line.h"
#include "rig/world/trace_writer.h"

namespace rig {

inline constexpr double feetPerMetre = feetPerNm / metersPerNm;
inline constexpr double feedBegin = 1780315200; ///< the recording's first row, and the begin of the trace
inline constexpr double flightKnots = 240;
inline constexpr double flightMetresPerSecond = flightKnots * metersPerNm / 3600;
inline constexpr double eastRad = 90 * radiansPerDegree;

inline LatLon shifted(const LatLon& from, double headingDegrees, double metres) {
    return project(from, headingDegrees * radiansPerDegree, metres * feetPerMetre);
}

/// Flying east at 240 kt: so many seconds after the recording's begin.
inline LatLon placeAt(double seconds) {
    return shifted({52.0, 4.0}, 90, seconds * flightMetresPerSecond);
}

inline Position flyingAt(const LatLon& at, double altFeet = 5000) {
    return {at.lat, at.lon, 0, 0, eastRad, altFeet, 0, flightKnots};
}

/// The rows of one aircraft.
class RowMaker {
public:
    FeedLine line = eastbound();

    void tell(double seconds, const LatLon& at) {
        line.positionDecimals = 7;
        line.timestamp = feedBegin + seconds;
        line.lat = at.lat;
        line.lon = at.lon;
        rows[seconds] += textOf(line) + '\n';
    }
    /// Every so many seconds.
    void tellAll(int from, int to, int every, const std::function<LatLon(double seconds)>& place) {
        for (int seconds = from; seconds <= to; seconds += every) {
            tell(seconds, place(seconds));
        }
    }
    /// On its way east, every two seconds.
    void tellFlight(int from, int to) { tellAll(from, to, 2, placeAt); }
    Recording recording() const {
        std::string text;
        for (const auto& [seconds, row] : rows) {
            text += row;
        }
        return recordingFrom(text);
    }

    std::map<double, std::string> rows; // by time

private:
    static FeedLine eastbound() {
        FeedLine line;
        line.hexid = 4734981;
        line.altFt = 5000;
        line.track = 90;
        line.gs = flightKnots;
        line.callsign = "KLM1";
        line.type = "A320";
        line.registration = "PH-ONE";
        line.category = "A3";
        return line;
    }
};

class FlownTrace {
public:
    static constexpr double framesPerSecond = 20;
    using Path = std::function<Position(double seconds)>;

    FlownTrace() : writer_(std::make_unique<TraceWriter>(bytes_)) {}

    /// Object 1 is the user; he stands where the tracks begin when nobody says otherwise.
    void create(DWORD id, const std::string& tailNumber, const std::string& title = "Airliner") {
        writer_->event(TraceEventKind::created, id, 0, title, tailNumber);
        writer_->event(TraceEventKind::appeared, id, 0, title, tailNumber);
    }
    TraceWriter& writer() { return *writer_; }

    /// Frames from `from` up to `to`, with the user and these.
    void fly(double from, double to, const std::map<DWORD, Path>& objects) {
        const auto first = static_cast<int>(from * framesPerSecond);
        const auto end = static_cast<int>(to * framesPerSecond);
        for (int i = first; i < end; ++i) {
            const double seconds = i / framesPerSecond;
            writer_->beginFrame(seconds, seconds);
            writer_->object(1, user);
            for (const auto& [id, path] : objects) {
                writer_->object(id, path(seconds));
            }
            writer_->endFrame();
        }
    }

    /// The whole file; nothing can be added afterwards.
    std::string bytes() {
        writer_.reset();
        return bytes_.str();
    }

    Position user{52.0, 4.0, 0, 0, 0, 10, 0, 0};

private:
    std::ostringstream bytes_;
    std::unique_ptr<TraceWriter> writer_;
};

/// The analysis of one aircraft with tail number KLM1, object 10, seen from 40 to 160 seconds; `path` is where it is
/// when it is due at the place of `dueSeconds`.
inline Analysis analysisOf(const std::function<Position(double dueSeconds)>& path, const Recording& recording,
                           AnalysisInputs inputs) {
    FlownTrace trace;
    trace.create(10, "KLM1");
    trace.fly(40, 160, {{10, [&path](double seconds) { return path(seconds - 30); }}});
    std::istringstream bytes(trace.bytes());
    return analyse({.trace = bytes,
                    .recording = &recording,
                    .truth = inputs.truth,
                    .heldOut = inputs.heldOut,
                    .log = inputs.log,
                    .ground = inputs.ground,
                    .titles = inputs.titles,
                    .feedStart = 0});
}

} // namespace rig
