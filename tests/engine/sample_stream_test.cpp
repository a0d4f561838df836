#include "engine/sample_stream.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>
#include <vector>

#include "tests/support/allocation_count.h"
#include "tests/support/log_capture.h"

namespace {

Sample at(int slot) {
    Sample sample;
    sample.slot = slot;
    return sample;
}

std::vector<int> slotsOf(const SampleStream& stream) {
    std::vector<int> slots;
    for (std::size_t i = 0; i < stream.size(); ++i) {
        slots.push_back(stream[i].slot);
    }
    return slots;
}

SampleStream streamOf(std::initializer_list<int> slots) {
    SampleStream stream;
    for (const int slot : slots) {
        stream.pushBack(at(slot));
    }
    return stream;
}

TEST(SampleStream, isFirstInFirstOut) {
    SampleStream stream = streamOf({1, 2, 3});
    EXPECT_EQ(slotsOf(stream), (std::vector<int>{1, 2, 3}));
    stream.popFront();
    EXPECT_EQ(slotsOf(stream), (std::vector<int>{2, 3}));
    stream.popBack();
    EXPECT_EQ(slotsOf(stream), (std::vector<int>{2}));
}

TEST(SampleStream, takesAndLosesSamplesAnywhere) {
    SampleStream stream = streamOf({1, 2, 3});
    stream.insert(1, at(10));
    stream.insert(4, at(20));
    stream.pushFront(at(0));
    EXPECT_EQ(slotsOf(stream), (std::vector<int>{0, 1, 10, 2, 3, 20}));
    stream.erase(2);
    stream.erase(0);
    EXPECT_EQ(slotsOf(stream), (std::vector<int>{1, 2, 3, 20}));
}

TEST(SampleStream, anEmptyOneBearsRemovals) {
    SampleStream stream;
    stream.popFront();
    stream.popBack();
    stream.clear();
    EXPECT_TRUE(stream.empty());
}

TEST(SampleStream, aReferenceOutlivesGrowth) {
    SampleStream stream = streamOf({7});
    const Sample& first = stream[0];
    for (int i = 0; i < 300; ++i) {
        stream.pushBack(at(i));
    }
    EXPECT_EQ(first.slot, 7);
    EXPECT_EQ(&first, &stream[0]);
}

TEST(SampleStream, aCopyIsItsOwnAndAMovedOneIsEmpty) {
    SampleStream stream = streamOf({1, 2});
    SampleStream copy = stream;
    copy[0].slot = 9;
    EXPECT_EQ(slotsOf(stream), (std::vector<int>{1, 2}));
    const SampleStream moved = std::move(copy);
    EXPECT_EQ(slotsOf(moved), (std::vector<int>{9, 2}));
    EXPECT_TRUE(copy.empty()); // NOLINT(bugprone-use-after-move): that is what is tested
}

TEST(SampleStream, oneThatWasMovedIntoAnotherIsEmpty) {
    SampleStream from = streamOf({1, 2});
    SampleStream to = streamOf({7, 8, 9});
    to = std::move(from);
    EXPECT_EQ(slotsOf(to), (std::vector<int>{1, 2}));
    EXPECT_TRUE(from.empty()); // NOLINT(bugprone-use-after-move): that is what is tested
}

TEST(SampleStream, takesACopyOfItsOwnElementWhileItGrows) {
    SampleStream stream = streamOf({1, 2, 3, 4, 5, 6, 7, 8});
    stream.pushBack(stream[0]);
    EXPECT_EQ(stream[8].slot, 1);
    while (stream.size() < 16) {
        stream.pushFront(stream[stream.size() - 1]);
    }
    stream.pushFront(stream[15]);
    EXPECT_EQ(stream[0].slot, 1);
    EXPECT_EQ(stream.size(), 17U);
}

TEST(SampleStream, theFirstOfAnEmptyOneIsALogLine) {
    LogCapture log;
    SampleStream stream;
    EXPECT_EQ(stream.firstOrLog("nextPosMain"), nullptr);
    EXPECT_TRUE(log.contains("nextPosMain empty sz?"));
    stream.pushBack(at(4));
    EXPECT_EQ(stream.firstOrLog("nextPosMain")->slot, 4);
}

TEST(SampleStream, behavesAsADequeUnderAnyOrderOfOperations) {
    std::mt19937 random(3);
    SampleStream stream;
    std::deque<int> model;
    for (int i = 0; i < 20000; ++i) {
        const std::size_t place = model.empty() ? 0 : random() % model.size();
        switch (random() % 7) {
        case 0:
        case 1:
            stream.pushBack(at(i));
            model.push_back(i);
            break;
        case 2:
            stream.pushFront(at(i));
            model.push_front(i);
            break;
        case 3:
            stream.insert(place, at(i));
            model.insert(model.begin() + static_cast<std::ptrdiff_t>(place), i);
            break;
        case 4:
            if (!model.empty()) {
                stream.erase(place);
                model.erase(model.begin() + static_cast<std::ptrdiff_t>(place));
            }
            break;
        case 5:
            stream.popFront();
            if (!model.empty()) {
                model.pop_front();
            }
            break;
        default:
            stream.popBack();
            if (!model.empty()) {
                model.pop_back();
            }
        }
        ASSERT_EQ(slotsOf(stream), std::vector<int>(model.begin(), model.end())) << "operation " << i;
    }
}

TEST(SampleStream, allocatesNothingInSteadyState) {
    SampleStream stream;
    for (int i = 0; i < 200; ++i) {
        stream.pushBack(at(i));
    }
    // One round through the whole ring has made every block.
    for (int i = 0; i < 256; ++i) {
        stream.popFront();
        stream.pushBack(at(i));
    }
    const std::size_t before = allocationsOfThisThread();
    for (int i = 0; i < 10000; ++i) {
        stream.popFront();
        stream.pushBack(at(i));
        stream.insert(3, at(i));
        stream.erase(5);
        stream.popBack();
        stream.pushFront(at(i));
    }
    EXPECT_EQ(allocationsOfThisThread(), before);
}

} // namespace
