// rig/report/survey.cpp
#include "rig/report/survey.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "core/number_text.h"
#include "rig/report/cross_track.h"
#include "rig/world/trace_format.h"
#include "rig/world/trace_reader.h"
#include "sim/simconnect.h"

namespace rig {

namespace {

constexpr double fitEverySeconds = 2;
constexpr double fitKnots = 60;
constexpr double fitMetres = 500;
constexpr double fitLegMetresPerSecond = 20;
constexpr std::size_t fewestToFit = 5;
constexpr double userEverySeconds = 1;
constexpr std::uint32_t userId = 1;
/// In 2001, seconds since 1970: no trace is as long.
constexpr double earliestWallClock = 1e9;

/// The simulator's answers to a write that holds what is no number, or a number that is too large.
bool isOfAWrittenValue(double exception) {
    return exception == static_cast<double>(SIMCONNECT_EXCEPTION_DATA_ERROR) ||
           exception == static_cast<double>(SIMCONNECT_EXCEPTION_OUT_OF_BOUNDS);
}

class Surveyor {
public:
    explicit Surveyor(const FeedTracks& tracks) {
        for (const auto& [hexid, aircraft] : tracks) {
            for (const std::string& name : aircraft.names) {
                byName_[name].push_back(&aircraft);
            }
        }
    }

    void take(const TraceEvent& event) {
        switch (event.kind) {
        case TraceEventKind::created:
            survey.objects[event.objectId] = {event.name, event.detail, nullptr, std::nullopt};
            break;
        case TraceEventKind::exception: survey.refusedWrites += isOfAWrittenValue(event.value) ? 1 : 0; break;
        case TraceEventKind::refused: survey.refused[event.detail] = event.name; break;
        case TraceEventKind::act:
            takeMark(event, feedBeginsAct, feedAtBegin);
            takeMark(event, traceBeginsAct, wallAtBegin);
            break;
        default: break;
        }
    }

    void take(const TraceFrame& frame) {
        ++survey.frames;
        survey.seconds = frame.elapsedSeconds;
        for (const TraceObject& object : frame.objects) {
            if (!isFinite(object.position)) {
                continue; // it is nowhere
            }
            if (object.id == userId) {
                takeUser(frame.elapsedSeconds, object.position);
            } else if (const auto known = survey.objects.find(object.id); known != survey.objects.end()) {
                take(known->second, object, frame.elapsedSeconds);
            }
        }
    }

    /// Feed time at the begin of the trace by each comparison.
    std::vector<double> candidates;
    // By the marks in the trace; seconds since 1970.
    std::optional<double> feedAtBegin;
    std::optional<double> wallAtBegin;
    Survey survey;

private:
    struct Follower {
        CrossTrack track;
        double lastSeconds = 0;
    };

    static void takeMark(const TraceEvent& event, std::string_view name, std::optional<double>& clockAtBegin) {
        if (event.name != name) {
            return;
        }
        if (const std::optional<double> clock = parseDouble(event.detail)) {
            clockAtBegin = *clock - event.value;
        }
    }

    void takeUser(double seconds, const Position& position) {
        if (survey.user.empty() || seconds - survey.user.back().seconds >= userEverySeconds) {
            survey.user.push_back({seconds, position.place(), position.altFeet});
        }
    }

    void take(SurveyedObject& known, const TraceObject& object, double seconds) {
        if (!known.firstSeen) {
            known.firstSeen = seconds;
            known.feed = whoIs(known.tailNumber, object.position.place());
            if (known.feed != nullptr && known.feed->points.size() >= 2) {
                followers_.emplace(object.id, Follower{CrossTrack(known.feed->line()), -fitEverySeconds});
            }
        }
        const auto follower = followers_.find(object.id);
        if (follower != followers_.end() && seconds - follower->second.lastSeconds >= fitEverySeconds) {
            follower->second.lastSeconds = seconds;
            compare(follower->second.track, *known.feed, object.position, seconds);
        }
    }

    /// Of several with one name the one whose track passes nearest.
    const FeedAircraft* whoIs(const std::string& tailNumber, const LatLon& at) const {
        const auto named = byName_.find(tailNumber);
        if (named == byName_.end()) {
            return nullptr;
        }
        const FeedAircraft* best = named->second.front();
        double bestMetres = 1e12;
        for (const FeedAircraft* aircraft : named->second) {
            if (aircraft->points.size() >= 2) {
                if (const double metres = CrossTrack(aircraft->line()).metres(at); metres < bestMetres) {
                    bestMetres = metres;
                    best = aircraft;
                }
            }
        }
        return best;
    }

    void compare(CrossTrack& track, const FeedAircraft& feed, const Position& position, double seconds) {
        const NearestOnLine nearest = track.nearest(position.place());
        const FeedPoint& a = feed.points[nearest.leg];
        const FeedPoint& b = feed.points[nearest.leg + 1];
        const double legSeconds = b.seconds - a.seconds;
        const double legMetres = greatCircleNm(a.at, b.at) * metersPerNm;
        if (position.trueKnots < fitKnots || nearest.isBeyondEnd || nearest.metres > fitMetres ||
            legSeconds > longestLegSeconds || legMetres < legSeconds * fitLegMetresPerSecond) {
            return;
        }
        candidates.push_back(a.seconds + nearest.share * legSeconds + feedDelaySeconds - seconds);
    }

    std::map<std::string, std::vector<const FeedAircraft*>> byName_;
    std::map<std::uint32_t, Follower> followers_;
};

/// Of a moment that is told as such, or as a wall clock.
double secondsInTrace(double moment, const std::optional<double>& wallAtBegin) {
    if (moment < earliestWallClock) {
        return moment;
    }
    if (!wallAtBegin) {
        throw std::runtime_error("the feed's start is a wall clock, but the trace does not tell when it began");
    }
    return moment - *wallAtBegin;
}

double medianOf(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

LatLon Survey::userAt(double when) const {
    const auto later = std::upper_bound(user.begin(), user.end(), when,
                                        [](double time, const UserPlace& place) { return time < place.seconds; });
    if (user.empty()) {
        return {};
    }
    return later == user.begin() ? later->at : std::prev(later)->at;
}

Survey surveyTrace(std::istream& trace, const FeedTracks& tracks, double feedBegin, std::optional<double> feedStart) {
    TraceReader reader(trace);
    Surveyor surveyor(tracks);
    TraceItem item;
    while (reader.next(item)) {
        std::visit([&surveyor](const auto& part) { surveyor.take(part); }, item);
    }
    Survey survey = std::move(surveyor.survey);
    survey.endedEarly = reader.endedEarly();
    survey.clock.feedAtBegin = feedBegin;
    if (feedStart) {
        survey.clockSource = ClockSource::given;
        survey.clock.feedAtBegin -= secondsInTrace(*feedStart, surveyor.wallAtBegin);
    } else if (surveyor.feedAtBegin) {
        survey.clockSource = ClockSource::marked;
        survey.clock.feedAtBegin = *surveyor.feedAtBegin;
    } else if (surveyor.candidates.size() >= fewestToFit) {
        survey.clockSource = ClockSource::fitted;
        survey.clock.feedAtBegin = medianOf(surveyor.candidates);
    }
    return survey;
}

} // namespace rig
