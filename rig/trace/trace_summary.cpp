// rig/trace/trace_summary.cpp
#include "rig/trace/trace_summary.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <ostream>
#include <string>

#include <fmt/format.h>

#include "core/geography.h"
#include "rig/world/trace_reader.h"

namespace rig {

namespace {

constexpr std::array<const char*, 13> eventNames{
    "",         "created",     "appeared", "removed",   "refused",       "client event", "written",
    "released", "flight plan", "act",      "exception", "client opened", "client gone",
};

struct Track {
    std::string title;
    std::string tailNumber;
    double firstSeen = 0;
    double lastSeen = 0;
    double flownNm = 0;
    double largestStepMetres = 0;
    LatLon last;
    int frames = 0;
};

class Summary {
public:
    void take(const TraceFrame& frame) {
        ++frames_;
        seconds_ = frame.simulatedSeconds;
        for (const TraceObject& object : frame.objects) {
            take(tracks_[object.id], object.position.place(), frame.simulatedSeconds);
        }
    }

    void take(const TraceEvent& event) {
        ++events_.at(std::min(static_cast<std::size_t>(event.kind), eventNames.size() - 1));
        if (event.kind == TraceEventKind::appeared) {
            tracks_[event.objectId].title = event.name;
            tracks_[event.objectId].tailNumber = event.detail;
        }
    }

    void print(std::ostream& out) const {
        out << fmt::format("frames: {}, simulated seconds: {:.1f}\n", frames_, seconds_);
        for (std::size_t i = 1; i < events_.size(); ++i) {
            if (events_[i] > 0) {
                out << fmt::format("{}: {}\n", eventNames[i], events_[i]);
            }
        }
        for (const auto& [id, track] : tracks_) {
            out << fmt::format("object {}: {} {}, {:.1f} s, {:.2f} nm, largest step {:.2f} m\n", id, track.tailNumber,
                               track.title, track.lastSeen - track.firstSeen, track.flownNm, track.largestStepMetres);
        }
    }

private:
    static void take(Track& track, const LatLon& at, double seconds) {
        if (track.frames++ == 0) {
            track.firstSeen = seconds;
        } else {
            const double nm = greatCircleNm(track.last, at);
            track.flownNm += nm;
            track.largestStepMetres = std::max(track.largestStepMetres, nm * metersPerNm);
        }
        track.last = at;
        track.lastSeen = seconds;
    }

    int frames_ = 0;
    double seconds_ = 0;
    std::array<int, eventNames.size()> events_{};
    std::map<DWORD, Track> tracks_;
};

} // namespace

void summariseTrace(std::istream& trace, std::ostream& out) {
    TraceReader reader(trace);
    Summary summary;
    TraceItem item;
    while (reader.next(item)) {
        std::visit([&summary](const auto& part) { summary.take(part); }, item);
    }
    summary.print(out);
    if (reader.endedEarly()) {
        out << "the file ends within a record\n";
    }
}

} // namespace rig
