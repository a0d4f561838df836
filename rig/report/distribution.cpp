// rig/report/distribution.cpp
#include "rig/report/distribution.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace rig {

namespace {

/// A bin's upper end is so many times its lower end.
constexpr double binRatio = 1.01;
/// Smaller ones are one bin, which counts as 0.
constexpr double smallest = 1e-3;
constexpr int binOfZero = -1;

int binOf(double magnitude) {
    static const double perBin = 1 / std::log(binRatio);
    return magnitude < smallest ? binOfZero : static_cast<int>(std::log(magnitude / smallest) * perBin);
}

double middleOf(int bin) {
    return bin == binOfZero ? 0 : smallest * std::pow(binRatio, bin + 0.5);
}

} // namespace

void Distribution::makeRoomFor(int bin) {
    if (bins_.empty()) {
        firstBin_ = bin;
    }
    if (bin < firstBin_) {
        bins_.insert(bins_.begin(), static_cast<std::size_t>(firstBin_ - bin), 0);
        firstBin_ = bin;
    }
    const auto needed = static_cast<std::size_t>(bin - firstBin_) + 1;
    bins_.resize(std::max(bins_.size(), needed));
}

void Distribution::add(double value) {
    if (!std::isfinite(value)) {
        ++noNumbers_;
        return;
    }
    const double magnitude = std::abs(value);
    const int bin = binOf(magnitude);
    makeRoomFor(bin);
    ++bins_[static_cast<std::size_t>(bin - firstBin_)];
    ++count_;
    worst_ = std::max(worst_, magnitude);
    sum_ += value;
}

void Distribution::add(const Distribution& other) {
    noNumbers_ += other.noNumbers_;
    if (other.count_ == 0) {
        return;
    }
    makeRoomFor(other.firstBin_);
    makeRoomFor(other.firstBin_ + static_cast<int>(other.bins_.size()) - 1);
    const auto shift = static_cast<std::size_t>(other.firstBin_ - firstBin_);
    for (std::size_t i = 0; i < other.bins_.size(); ++i) {
        bins_[i + shift] += other.bins_[i];
    }
    count_ += other.count_;
    worst_ = std::max(worst_, other.worst_);
    sum_ += other.sum_;
}

double Distribution::atShare(double share) const {
    if (count_ == 0) {
        return 0;
    }
    auto left = static_cast<std::uint64_t>(share * static_cast<double>(count_ - 1));
    for (std::size_t i = 0; i < bins_.size(); ++i) {
        if (left < bins_[i]) {
            const bool isLastValue = i + 1 == bins_.size() && left + 1 == bins_[i];
            return isLastValue ? worst_ : std::min(middleOf(firstBin_ + static_cast<int>(i)), worst_);
        }
        left -= bins_[i];
    }
    return worst_;
}

} // namespace rig
