// rig/report/distribution.h
// What is kept of millions of values: how many, the worst, and how they spread, each to within one per cent.
// Value type without threads of its own; it grows with the range of its values, not with their number.
#pragma once

#include <cstdint>
#include <vector>

namespace rig {

/// Of magnitudes: the sign of a value counts only for meanSigned().
class Distribution {
public:
    /// What is no finite number is counted for noNumbers() alone.
    void add(double value);
    void add(const Distribution& other);

    std::uint64_t count() const { return count_; }
    std::uint64_t noNumbers() const { return noNumbers_; }
    /// The magnitude that this share (0 to 1) of the values does not exceed; 0 of none.
    double atShare(double share) const;
    double worst() const { return worst_; }
    double meanSigned() const { return count_ == 0 ? 0 : sum_ / static_cast<double>(count_); }

private:
    void makeRoomFor(int bin);

    // bins_[i] counts the values of bin firstBin_ + i.
    int firstBin_ = 0;
    std::vector<std::uint64_t> bins_;
    std::uint64_t count_ = 0;
    std::uint64_t noNumbers_ = 0;
    double worst_ = 0;
    double sum_ = 0;
};

} // namespace rig
