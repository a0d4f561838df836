// tests/platform/single_instance_test.cpp
#include "platform/single_instance.h"

#include <gtest/gtest.h>

#include <optional>

using platform::SingleInstance;

TEST(SingleInstance, theFirstGuardOfANameFindsNoOther) {
    const SingleInstance first("Local\\$tarnwing first$");
    EXPECT_FALSE(first.alreadyRuns());
}

TEST(SingleInstance, theSecondGuardOfANameFindsTheFirst) {
    const SingleInstance first("Local\\$tarnwing second$");
    const SingleInstance second("Local\\$tarnwing second$");
    EXPECT_FALSE(first.alreadyRuns());
    EXPECT_TRUE(second.alreadyRuns());
}

TEST(SingleInstance, anotherNameIsAnotherGuard) {
    const SingleInstance one("Local\\$tarnwing one$");
    const SingleInstance other("Local\\$tarnwing other$");
    EXPECT_FALSE(other.alreadyRuns());
}

TEST(SingleInstance, theNameIsFreeWhenItsGuardsAreGone) {
    std::optional<SingleInstance> guard;
    guard.emplace("Local\\$tarnwing again$");
    guard.reset();
    const SingleInstance next("Local\\$tarnwing again$");
    EXPECT_FALSE(next.alreadyRuns());
}

TEST(SingleInstance, aGuardThatFoundAnotherFreesNothingWhenItGoes) {
    const SingleInstance first("Local\\$tarnwing held$");
    { const SingleInstance second("Local\\$tarnwing held$"); }
    const SingleInstance third("Local\\$tarnwing held$");
    EXPECT_TRUE(third.alreadyRuns());
}
