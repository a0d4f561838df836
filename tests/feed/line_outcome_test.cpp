// tests/feed/line_outcome_test.cpp
#include "feed/line_outcome.h"

#include <gtest/gtest.h>
#include <set>

namespace {

TEST(LineOutcome, eachHasANameOfItsOwn) {
    std::set<std::string_view> names;
    for (std::size_t i = 0; i < lineOutcomes; ++i) {
        EXPECT_TRUE(names.insert(nameOf(static_cast<LineOutcome>(i))).second) << i;
    }
    EXPECT_EQ(nameOf(LineOutcome::accepted), "accepted");
    EXPECT_EQ(nameOf(LineOutcome::nameless), "neither call sign nor registration");
    EXPECT_EQ(nameOf(LineOutcome::refused), "refused");
}

TEST(OutcomeCounts, areOneLineOfText) {
    EXPECT_EQ(textOf({}), "none");
    EXPECT_EQ(textOf({{LineOutcome::outOfRange, 1122}, {LineOutcome::accepted, 102}}),
              "accepted 102, out of range 1122");
}

TEST(OutcomeCounts, comeBackFromTheirText) {
    OutcomeCounts all;
    for (std::size_t i = 0; i < lineOutcomes; ++i) {
        all[static_cast<LineOutcome>(i)] = i * 1000 + 1;
    }
    for (const OutcomeCounts& counts : {OutcomeCounts{}, OutcomeCounts{{LineOutcome::refused, 7}}, all}) {
        EXPECT_EQ(outcomeCountsFrom(textOf(counts)), counts) << textOf(counts);
    }
}

TEST(OutcomeCounts, anyOtherTextIsNone) {
    for (const char* text :
         {"", "accepted", "accepted x", "accepted 1x", "accepted -1", "lost 3", "accepted 1,refused 2", "accepted 1, ",
          "accepted 1, accepted 1", "none, accepted 1", "accepted  1"}) {
        EXPECT_EQ(outcomeCountsFrom(text), std::nullopt) << text;
    }
}

TEST(LineCounter, countsByOutcomeUntilItIsCleared) {
    LineCounter counter;
    EXPECT_EQ(counter.counts(), OutcomeCounts{});
    counter.count(LineOutcome::accepted);
    counter.count(LineOutcome::refused);
    counter.count(LineOutcome::accepted);
    EXPECT_EQ(counter.counts(), (OutcomeCounts{{LineOutcome::accepted, 2}, {LineOutcome::refused, 1}}));
    counter.clear();
    EXPECT_EQ(counter.counts(), OutcomeCounts{});
}

} // namespace
