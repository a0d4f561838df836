// rig/report/analysis.cpp
#include "rig/report/analysis.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <set>
#include <tuple>
#include <utility>

#include "core/geography.h"
#include "rig/report/object_meter.h"
#include "rig/report/overlap.h"
#include "rig/world/trace_reader.h"

namespace rig {

namespace {

constexpr std::uint32_t userId = 1;
constexpr double metresPerFoot = metersPerNm / feetPerNm;
constexpr double usualOverlapSeconds = 2;

constexpr std::size_t detailedMoments = 30;
constexpr std::size_t detailedOfKind = 6;
constexpr std::size_t detailedOfObject = 2;
constexpr double detailSeconds = 8;
constexpr double detailEverySeconds = 0.025;

void rewind(std::istream& trace) {
    trace.clear();
    trace.seekg(0);
}

const FeedAircraft* findTrack(const FeedTracks* tracks, std::uint32_t hexid) {
    if (tracks == nullptr) {
        return nullptr;
    }
    const auto found = tracks->find(hexid);
    return found == tracks->end() ? nullptr : &found->second;
}

/// How long pairs of aircraft were in one another.
class OverlapWatch {
public:
    void take(std::uint32_t a, std::uint32_t b, double seconds, const TraceObject& where, Moments& moments) {
        const auto [pair, isNew] = open_.try_emplace({a, b});
        Moment& moment = pair->second;
        if (!isNew && seconds - moment.end > Episode::longestPauseSeconds) {
            close(moment, moments);
        }
        if (isNew || seconds - moment.end > Episode::longestPauseSeconds) {
            moment = {.kind = MomentKind::overlap,
                      .objectId = a,
                      .otherId = b,
                      .begin = seconds,
                      .at = where.position.place(),
                      .altFeet = where.position.altFeet};
        }
        moment.end = seconds;
    }

    void finish(Moments& moments) {
        for (auto& [pair, moment] : open_) {
            close(moment, moments);
        }
        open_.clear();
    }

private:
    static void close(Moment& moment, Moments& moments) {
        moment.value = moment.end - moment.begin;
        moment.weight = moment.value / usualOverlapSeconds;
        moment.seconds = moment.begin;
        moments.add(moment);
    }

    std::map<std::pair<std::uint32_t, std::uint32_t>, Moment> open_;
};

class Measurement {
public:
    Measurement(const AnalysisInputs& inputs, Analysis& analysis) : inputs_(inputs), analysis_(analysis) {}

    void take(const TraceEvent& event) {
        if (event.kind != TraceEventKind::removed) {
            return;
        }
        if (const auto meter = meters_.find(event.objectId); meter != meters_.end()) {
            finish(*meter->second);
            meters_.erase(meter);
        }
    }

    void take(const TraceFrame& frame) {
        const auto isSound = [](const TraceObject& object) { return isFinite(object.position); };
        if (std::all_of(frame.objects.begin(), frame.objects.end(), isSound)) {
            takeSound(frame);
        } else {
            TraceFrame sound = frame;
            takeNoNumbers(sound);
            takeSound(sound);
        }
    }

    void finish() {
        for (auto& [id, meter] : meters_) {
            finish(*meter);
        }
        meters_.clear();
        watch_.finish(analysis_.moments);
        std::sort(analysis_.aircraft.begin(), analysis_.aircraft.end(),
                  [](const MeasuredAircraft& a, const MeasuredAircraft& b) { return a.facts.id < b.facts.id; });
    }

private:
    void takeSound(const TraceFrame& frame) {
        findOverlaps(frame);
        for (std::size_t i = 0; i < frame.objects.size(); ++i) {
            const TraceObject& object = frame.objects[i];
            if (ObjectMeter* meter = meterOf(object.id)) {
                meter->take({frame.elapsedSeconds, object.position, groundUnder(object.position), overlaps_[i] != 0},
                            analysis_.moments);
            }
        }
    }

    std::optional<double> groundUnder(const Position& position) const {
        return analysis_.knowsGround ? std::optional(inputs_.ground->elevationFeet(position.place())) : std::nullopt;
    }

    double spanMetresOf(const std::string& title) const {
        const AircraftType* type = inputs_.titles == nullptr ? nullptr : inputs_.titles->find(title);
        return (type == nullptr ? AircraftType{} : *type).wingSpanFeet * metresPerFoot;
    }

    double spanMetres(std::uint32_t id) {
        const auto [span, isNew] = spans_.try_emplace(id, 0);
        if (isNew) {
            const auto known = analysis_.survey.objects.find(id);
            span->second = spanMetresOf(known == analysis_.survey.objects.end() ? "" : known->second.title);
        }
        return span->second;
    }

    /// An object somewhere that is no place is counted by its meter, and is nowhere for all else.
    void takeNoNumbers(TraceFrame& frame) {
        std::erase_if(frame.objects, [&](const TraceObject& object) {
            if (isFinite(object.position)) {
                return false;
            }
            if (ObjectMeter* meter = meterOf(object.id)) {
                meter->take({frame.elapsedSeconds, object.position, std::nullopt, false}, analysis_.moments);
            }
            return true;
        });
    }

    void findOverlaps(const TraceFrame& frame) {
        footprints_.clear();
        for (const TraceObject& object : frame.objects) {
            const Position& position = object.position;
            footprints_.push_back({position.place(), position.altFeet, position.headingRad, spanMetres(object.id)});
        }
        overlaps_.assign(frame.objects.size(), 0);
        const auto& pairs = search_.pairs(footprints_);
        for (const auto& [a, b] : pairs) {
            overlaps_[a] = overlaps_[b] = 1;
            watch_.take(frame.objects[a].id, frame.objects[b].id, frame.elapsedSeconds, frame.objects[b],
                        analysis_.moments);
        }
        if (!pairs.empty()) {
            analysis_.overlapSeconds += frame.elapsedSeconds - lastFrame_;
        }
        lastFrame_ = frame.elapsedSeconds;
    }

    /// Nothing for the user's aircraft and those of other add-ons.
    ObjectMeter* meterOf(std::uint32_t id) {
        if (const auto meter = meters_.find(id); meter != meters_.end()) {
            return meter->second.get();
        }
        const auto known = analysis_.survey.objects.find(id);
        if (id == userId || known == analysis_.survey.objects.end()) {
            return nullptr;
        }
        auto meter = std::make_unique<ObjectMeter>(factsOf(id, known->second), analysis_.survey.clock);
        return meters_.emplace(id, std::move(meter)).first->second.get();
    }

    ObjectFacts factsOf(std::uint32_t id, const SurveyedObject& object) const {
        ObjectFacts facts{.id = id, .title = object.title, .tailNumber = object.tailNumber, .feed = object.feed};
        facts.spanMetres = spanMetresOf(object.title);
        if (object.feed != nullptr) {
            facts.truth = findTrack(inputs_.truth, object.feed->hexid);
            facts.heldOut = findTrack(inputs_.heldOut, object.feed->hexid);
            facts.category = categoryOf(*object.feed);
        }
        const AircraftType* type = inputs_.titles == nullptr ? nullptr : inputs_.titles->find(object.title);
        if (type != nullptr) {
            facts.cgHeightFeet = type->cgHeightFeet;
        }
        return facts;
    }

    void finish(ObjectMeter& meter) {
        meter.finish(analysis_.moments);
        analysis_.aircraft.push_back({meter.facts(), meter.figures(), meter.series()});
    }

    const AnalysisInputs& inputs_;
    Analysis& analysis_;
    std::map<std::uint32_t, std::unique_ptr<ObjectMeter>> meters_; // of those that are to be seen
    std::map<std::uint32_t, double> spans_;                        // metres, by object
    OverlapSearch search_;
    OverlapWatch watch_;
    std::vector<Footprint> footprints_;
    std::vector<char> overlaps_; // of each object of the frame
    double lastFrame_ = 0;
};

/// The frames round each of these moments.
class DetailCollector {
public:
    explicit DetailCollector(std::vector<DetailedMoment>& moments) : moments_(moments) {}

    void take(const TraceEvent& /*event*/) {}
    void take(const TraceFrame& frame) {
        for (DetailedMoment& detailed : moments_) {
            if (std::abs(frame.elapsedSeconds - detailed.moment.seconds) <= detailSeconds) {
                keep(detailed.course, frame, detailed.moment.objectId);
                if (detailed.moment.otherId != 0) {
                    keep(detailed.other, frame, detailed.moment.otherId);
                }
            }
        }
    }

private:
    static void keep(std::vector<DetailPoint>& course, const TraceFrame& frame, std::uint32_t id) {
        if (!course.empty() && frame.elapsedSeconds - course.back().seconds < detailEverySeconds) {
            return;
        }
        const auto object =
            std::lower_bound(frame.objects.begin(), frame.objects.end(), id,
                             [](const TraceObject& one, std::uint32_t value) { return one.id < value; });
        if (object != frame.objects.end() && object->id == id) {
            course.push_back({frame.elapsedSeconds, object->position});
        }
    }

    std::vector<DetailedMoment>& moments_;
};

template <typename Taker>
void readAll(std::istream& trace, Taker& taker) {
    rewind(trace);
    TraceReader reader(trace);
    TraceItem item;
    while (reader.next(item)) {
        std::visit([&taker](const auto& part) { taker.take(part); }, item);
    }
}

void sumUp(Analysis& analysis) {
    for (MeasuredAircraft& aircraft : analysis.aircraft) {
        ObjectFigures& figures = aircraft.figures;
        analysis.all.air.add(figures.air);
        analysis.all.ground.add(figures.ground);
        analysis.all.touchdowns.insert(analysis.all.touchdowns.end(), figures.touchdowns.begin(),
                                       figures.touchdowns.end());
    }
}

/// Of the first object of each aircraft: a change of livery makes another one.
void findFirstSights(Analysis& analysis) {
    std::map<std::uint32_t, double> samples = analysis.inRange.firstSample;
    for (MeasuredAircraft& aircraft : analysis.aircraft) {
        if (aircraft.facts.feed == nullptr) {
            continue;
        }
        const auto sample = samples.find(aircraft.facts.feed->hexid);
        if (sample != samples.end()) {
            aircraft.figures.firstSight = aircraft.figures.firstSeen - sample->second;
            analysis.firstSight.add(*aircraft.figures.firstSight);
            samples.erase(sample);
        }
    }
}

void collectDetails(std::istream& trace, Analysis& analysis) {
    for (const Moment& moment : analysis.moments.worst(detailedOfKind, detailedOfObject)) {
        if (analysis.worst.size() < detailedMoments) {
            analysis.worst.push_back({moment, {}, {}});
        }
    }
    if (!analysis.worst.empty()) {
        DetailCollector collector(analysis.worst);
        readAll(trace, collector);
    }
}

/// A line that is out of range, or on the ground where nobody wants it, is none for the program.
void markTaken(FeedTracks& tracks, const FeedInRange& inRange) {
    for (auto& [hexid, aircraft] : tracks) {
        const auto taken = inRange.takenAt.find(hexid);
        for (FeedPoint& point : aircraft.points) {
            point.isTaken = taken != inRange.takenAt.end() &&
                            std::binary_search(taken->second.begin(), taken->second.end(), point.seconds);
        }
    }
}

/// What was held out has never come to the program. It is known by time and place: two samples may come at once.
void markHeldOut(FeedTracks& tracks, const FeedTracks& heldOut) {
    for (const auto& [hexid, kept] : heldOut) {
        const auto aircraft = tracks.find(hexid);
        if (aircraft == tracks.end()) {
            continue;
        }
        std::set<std::tuple<double, double, double>> keptBack;
        for (const FeedPoint& point : kept.points) {
            keptBack.emplace(point.seconds, point.at.lat, point.at.lon);
        }
        for (FeedPoint& point : aircraft->second.points) {
            point.isTaken = point.isTaken && !keptBack.contains({point.seconds, point.at.lat, point.at.lon});
        }
    }
}

double beginOf(const FeedTracks& tracks) {
    double begin = 0;
    bool isFirst = true;
    for (const auto& [hexid, aircraft] : tracks) {
        begin = isFirst ? aircraft.points.front().seconds : std::min(begin, aircraft.points.front().seconds);
        isFirst = false;
    }
    return begin;
}

} // namespace

Analysis analyse(const AnalysisInputs& inputs) {
    Analysis analysis;
    if (inputs.recording != nullptr) {
        analysis.tracks = feedTracks(*inputs.recording);
    } else if (inputs.truth != nullptr) {
        analysis.tracks = *inputs.truth;
    }
    const double feedBegin = inputs.recording != nullptr ? inputs.recording->begin() : beginOf(analysis.tracks);
    rewind(inputs.trace);
    analysis.survey = surveyTrace(inputs.trace, analysis.tracks, feedBegin, inputs.feedStart);
    analysis.knowsGround = inputs.ground != nullptr && inputs.titles != nullptr;
    if (inputs.recording != nullptr) {
        analysis.inRange = feedInRange(*inputs.recording, analysis.tracks, analysis.survey, LogReasons(inputs.log),
                                       {inputs.radiusNm, inputs.takesGroundTraffic});
        markTaken(analysis.tracks, analysis.inRange);
        if (inputs.heldOut != nullptr) {
            markHeldOut(analysis.tracks, *inputs.heldOut);
        }
    }
    Measurement measurement(inputs, analysis);
    readAll(inputs.trace, measurement);
    measurement.finish();
    sumUp(analysis);
    findFirstSights(analysis);
    collectDetails(inputs.trace, analysis);
    return analysis;
}

} // namespace rig
