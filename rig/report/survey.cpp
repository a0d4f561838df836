// rig/report/survey.cpp
#include "rig/report/survey.h"

#include <algorithm>
#include <cmath>

#include "rig/report/cross_track.h"
#include "rig/world/trace_reader.h"

namespace rig {

namespace {

constexpr double fitEverySeconds = 2;
constexpr double fitKnots = 60;
constexpr double fitMetres = 500;
constexpr double fitLegMetresPerSecond = 20;
constexpr std::size_t fewestToFit = 5;
constexpr double userEverySeconds = 1;
constexpr std::uint32_t userId = 1;

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
        case TraceEventKind::refused: survey.refused[event.detail] = event.name; break;
        case TraceEventKind::act:
            if (event.name == recordingBeginsAct) {
                marked = event.value;
            }
            break;
        default: break;
        }
    }

    void take(const TraceFrame& frame) {
        ++survey.frames;
        survey.seconds = frame.elapsedSeconds;
        for (const TraceObject& object : frame.objects) {
            if (object.id == userId) {
                takeUser(frame.elapsedSeconds, object.position);
            } else if (const auto known = survey.objects.find(object.id); known != survey.objects.end()) {
                take(known->second, object, frame.elapsedSeconds);
            }
        }
    }

    /// Feed time at the begin of the trace by each comparison.
    std::vector<double> candidates;
    std::optional<double> marked;
    Survey survey;

private:
    struct Follower {
        CrossTrack track;
        double lastSeconds = 0;
    };

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
        survey.clock.feedAtBegin -= *feedStart;
    } else if (surveyor.marked) {
        survey.clockSource = ClockSource::marked;
        survey.clock.feedAtBegin -= *surveyor.marked;
    } else if (surveyor.candidates.size() >= fewestToFit) {
        survey.clockSource = ClockSource::fitted;
        survey.clock.feedAtBegin = medianOf(surveyor.candidates);
    }
    return survey;
}

} // namespace rig
