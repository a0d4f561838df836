// tests/feed/sample_queue_test.cpp
#include "feed/sample_queue.h"

#include <deque>
#include <gtest/gtest.h>
#include <random>

#include "tests/support/allocation_count.h"

namespace {

FeedRecord recordOf(std::uint32_t hexid) {
    FeedRecord record;
    record.hexid = hexid;
    record.callsign = "a call sign too long for the text's own room " + std::to_string(hexid);
    return record;
}

TEST(SampleQueue, isEmptyAtFirst) {
    SampleQueue queue;
    EXPECT_TRUE(queue.empty());
    EXPECT_FALSE(queue.pop().has_value());
}

TEST(SampleQueue, whatComesFirstGoesFirstThroughAnyMixOfPutsAndTakes) {
    std::mt19937 random(1);
    SampleQueue queue;
    std::deque<std::uint32_t> expected;
    for (std::uint32_t step = 0; step < 20000; ++step) {
        // The length of the queue swings widely, so that the ring grows and wraps round in every position.
        if (random() % 1000 < (step / 500 % 2 == 0 ? 700u : 300u)) {
            queue.push(recordOf(step));
            expected.push_back(step);
        } else if (expected.empty()) {
            EXPECT_FALSE(queue.pop().has_value());
        } else {
            const std::optional<FeedRecord> oldest = queue.pop();
            ASSERT_TRUE(oldest.has_value());
            ASSERT_EQ(oldest->hexid, expected.front());
            ASSERT_EQ(oldest->callsign, recordOf(expected.front()).callsign);
            expected.pop_front();
        }
        ASSERT_EQ(queue.size(), expected.size());
        ASSERT_EQ(queue.empty(), expected.empty());
    }
}

TEST(SampleQueue, aClearedQueueStartsAfresh) {
    SampleQueue queue;
    queue.push(recordOf(1));
    queue.push(recordOf(2));
    queue.pop();
    queue.clear();
    EXPECT_TRUE(queue.empty());
    EXPECT_FALSE(queue.pop().has_value());
    queue.push(recordOf(3));
    EXPECT_EQ(queue.pop()->hexid, 3u);
}

TEST(SampleQueue, takesMemoryOnlyWhenItIsLongerThanEver) {
    SampleQueue queue;
    for (int i = 0; i < 50; ++i) {
        queue.push(FeedRecord{});
    }
    queue.clear();
    const std::size_t before = allocationsOfThisThread();
    for (int round = 0; round < 10; ++round) {
        for (int i = 0; i < 50; ++i) {
            queue.push(FeedRecord{});
        }
        for (int i = 0; i < 50; ++i) {
            queue.pop();
        }
    }
    EXPECT_EQ(allocationsOfThisThread(), before);
}

TEST(Sample, anEmptyRecordHasNoHeadingAndNoRoll) {
    const FeedRecord record;
    EXPECT_FALSE(record.sample.heading.has_value());
    EXPECT_FALSE(record.sample.roll.has_value());
    EXPECT_EQ(record.sample.hasHeading, 0);
}

} // namespace
