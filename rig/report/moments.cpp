// rig/report/moments.cpp
#include "rig/report/moments.h"

#include <algorithm>
#include <map>
#include <utility>

namespace rig {

namespace {

constexpr std::array<MomentKindFacts, momentKindCount> kinds{{
    {"jump", "jump", "m"},
    {"height_jump", "jump of the height", "ft"},
    {"cross_track", "beside the recorded track", "m"},
    {"heading_rate", "turns too fast", "deg/s"},
    {"pitch_rate", "pitches too fast", "deg/s"},
    {"bank_rate", "rolls too fast", "deg/s"},
    {"bank", "banks too far", "deg"},
    {"sideways", "moves sideways", "deg"},
    {"backwards", "moves backwards", "kt"},
    {"below_ground", "below the ground", "ft"},
    {"floating", "floats above the ground", "ft"},
    {"overlap", "in another aircraft", "s"},
    {"hard_landing", "touches down hard", "ft/min"},
    {"banked_landing", "touches down banked", "deg"},
}};

bool isWeightier(const Moment& a, const Moment& b) {
    return a.weight > b.weight;
}

} // namespace

const MomentKindFacts& factsOf(MomentKind kind) {
    return kinds.at(static_cast<std::size_t>(kind));
}

void Moments::add(const Moment& moment) {
    const auto kind = static_cast<std::size_t>(moment.kind);
    ++counts_.at(kind);
    std::vector<Moment>& kept = kept_.at(kind);
    kept.insert(std::upper_bound(kept.begin(), kept.end(), moment, isWeightier), moment);
    if (kept.size() > keptOfKind) {
        kept.pop_back();
    }
}

std::vector<Moment> Moments::worst(std::size_t ofKind, std::size_t ofObject) const {
    std::vector<Moment> all;
    for (const std::vector<Moment>& kept : kept_) {
        std::map<std::uint32_t, std::size_t> taken; // by object
        std::size_t left = ofKind;
        for (const Moment& moment : kept) {
            if (left > 0 && taken[moment.objectId]++ < ofObject) {
                all.push_back(moment);
                --left;
            }
        }
    }
    std::stable_sort(all.begin(), all.end(), isWeightier);
    return all;
}

void Episode::goesOn(const Moment& moment, Moments& to) {
    ends(moment.seconds, to);
    if (!isOpen_) {
        isOpen_ = true;
        worst_ = moment;
        worst_.begin = moment.seconds;
    } else if (moment.weight > worst_.weight) {
        const double begin = worst_.begin;
        worst_ = moment;
        worst_.begin = begin;
    }
    worst_.end = moment.seconds;
}

void Episode::ends(double seconds, Moments& to) {
    if (isOpen_ && seconds - worst_.end > longestPauseSeconds) {
        isOpen_ = false;
        to.add(worst_);
    }
}

} // namespace rig
