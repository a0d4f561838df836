// feed/sample_queue.h
// The queue in which accepted feed lines wait for the engine. The Traffic Reader fills it, the run thread empties it.
#pragma once

#include <cstddef>
#include <mutex>
#include <optional>
#include <vector>

#include "feed/feed_record.h"

/// First in, first out, without a limit. It allocates only when it holds more records than ever before.
class SampleQueue {
public:
    void push(FeedRecord&& record);
    /// The oldest record, or nothing.
    std::optional<FeedRecord> pop();
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    void clear();

private:
    void grow();

    std::vector<FeedRecord> ring_;
    std::size_t first_ = 0;
    std::size_t size_ = 0;
};

/// Guards gLiveSampleQueue and gAcceptSamples; held only to put a record in or take one out.
extern std::mutex gTrafficMutex;
extern SampleQueue gLiveSampleQueue; // under gTrafficMutex
/// Whether the engine wants records; those that come while it does not are lost. Under gTrafficMutex, written by the
/// run thread.
extern bool gAcceptSamples;
