#include "rig/report/distribution.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace rig {
namespace {

TEST(Distribution, ofNothingAllIsZero) {
    const Distribution none;
    EXPECT_EQ(none.count(), 0u);
    EXPECT_EQ(none.atShare(0.5), 0);
    EXPECT_EQ(none.worst(), 0);
    EXPECT_EQ(none.meanSigned(), 0);
}

TEST(Distribution, sharesAreThoseOfTheSortedValuesWithinOnePerCent) {
    std::mt19937 random(7);
    std::lognormal_distribution<double> spread(1, 2);
    Distribution distribution;
    std::vector<double> values;
    for (int i = 0; i < 20000; ++i) {
        values.push_back(spread(random));
        distribution.add(values.back());
    }
    std::sort(values.begin(), values.end());
    for (const double share : {0.0, 0.1, 0.5, 0.95, 0.999}) {
        const double exact = values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
        EXPECT_NEAR(distribution.atShare(share), exact, exact * 0.01 + 1e-3) << share;
    }
    EXPECT_EQ(distribution.worst(), values.back());
    EXPECT_EQ(distribution.atShare(1), values.back());
}

TEST(Distribution, theSignCountsForTheMeanAlone) {
    Distribution distribution;
    distribution.add(-8);
    distribution.add(2);
    EXPECT_EQ(distribution.meanSigned(), -3);
    EXPECT_EQ(distribution.worst(), 8);
    EXPECT_NEAR(distribution.atShare(0), 2, 0.02);
}

TEST(Distribution, whatIsNoNumberIsCountedApart) {
    Distribution distribution;
    distribution.add(std::numeric_limits<double>::quiet_NaN());
    distribution.add(std::numeric_limits<double>::infinity());
    EXPECT_EQ(distribution.count(), 0u);
    EXPECT_EQ(distribution.noNumbers(), 2u);
    Distribution sum;
    sum.add(distribution);
    sum.add(distribution);
    EXPECT_EQ(sum.count(), 0u);
    EXPECT_EQ(sum.noNumbers(), 4u);
}

TEST(Distribution, sumsAreAsIfAllValuesHadGoneIntoOne) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> spread(-1000, 1000);
    Distribution whole;
    Distribution parts;
    for (int part = 0; part < 10; ++part) {
        Distribution one;
        for (int i = 0; i < 50; ++i) {
            const double value = spread(random) * std::pow(10, -part);
            one.add(value);
            whole.add(value);
        }
        parts.add(one);
    }
    EXPECT_EQ(parts.count(), whole.count());
    EXPECT_EQ(parts.worst(), whole.worst());
    EXPECT_NEAR(parts.meanSigned(), whole.meanSigned(), 1e-9);
    for (const double share : {0.05, 0.5, 0.95}) {
        EXPECT_EQ(parts.atShare(share), whole.atShare(share));
    }
}

} // namespace
} // namespace rig
