// rig/report/object_figures.cpp
#include "rig/report/object_figures.h"

#include <algorithm>

namespace rig {

void RateFigures::add(const RateFigures& other) {
    values.add(other.values);
    passes += other.passes;
    secondsAbove += other.secondsAbove;
}

void StateFigures::add(const StateFigures& other) {
    seconds += other.seconds;
    crossTrack.add(other.crossTrack);
    crossTrackWithoutSamples.add(other.crossTrackWithoutSamples);
    crossTrackOnWayBack.add(other.crossTrackOnWayBack);
    withoutSamples += other.withoutSamples;
    onWayBack += other.onWayBack;
    alongTrack.add(other.alongTrack);
    fromTruth.add(other.fromTruth);
    fromHeldOut.add(other.fromHeldOut);
    largestStep = std::max(largestStep, other.largestStep);
    largestStepShare = std::max(largestStepShare, other.largestStepShare);
    jumps += other.jumps;
    largestHeightStep = std::max(largestHeightStep, other.largestHeightStep);
    heightJumps += other.heightJumps;
    unsoundValues += other.unsoundValues;
    headingRate.add(other.headingRate);
    pitchRate.add(other.pitchRate);
    bankRate.add(other.bankRate);
    bank.add(other.bank);
    sideways += other.sideways;
    backwards += other.backwards;
    belowGround += other.belowGround;
    floating += other.floating;
    overlapping += other.overlapping;
}

std::uint64_t StateFigures::allUnsound() const {
    std::uint64_t sum = unsoundValues;
    for (const Distribution* values :
         {&crossTrack, &crossTrackWithoutSamples, &crossTrackOnWayBack, &alongTrack, &fromTruth, &fromHeldOut,
          &headingRate.values, &pitchRate.values, &bankRate.values, &bank.values}) {
        sum += values->noNumbers();
    }
    return sum;
}

Distribution& StateFigures::crossTrackOf(Course course) {
    switch (course) {
    case Course::withoutSamples: return crossTrackWithoutSamples;
    case Course::wayBack: return crossTrackOnWayBack;
    case Course::onTrack: break;
    }
    return crossTrack;
}

} // namespace rig
