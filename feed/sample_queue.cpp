// feed/sample_queue.cpp
#include "feed/sample_queue.h"

#include <algorithm>
#include <utility>

std::mutex gTrafficMutex;
SampleQueue gLiveSampleQueue;
bool gAcceptSamples = false;

void SampleQueue::push(FeedRecord&& record) {
    if (size_ == ring_.size()) {
        grow();
    }
    ring_[(first_ + size_) % ring_.size()] = std::move(record);
    ++size_;
}

std::optional<FeedRecord> SampleQueue::pop() {
    if (empty()) {
        return std::nullopt;
    }
    std::optional<FeedRecord> oldest(std::move(ring_[first_]));
    first_ = (first_ + 1) % ring_.size();
    --size_;
    return oldest;
}

void SampleQueue::clear() {
    first_ = 0;
    size_ = 0;
}

void SampleQueue::grow() {
    std::rotate(ring_.begin(), ring_.begin() + static_cast<std::ptrdiff_t>(first_), ring_.end());
    first_ = 0;
    ring_.resize(std::max<std::size_t>(64, 2 * ring_.size()));
}
