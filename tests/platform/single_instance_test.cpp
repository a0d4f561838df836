// tests/platform/single_instance_test.cpp
#include "platform/single_instance.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>

using platform::SingleInstance;

namespace {

/// A name that a second run of the tests beside this one does not use.
std::string nameOf(const std::string& guard) {
    static const unsigned thisRun = std::random_device()();
    return "Local\\$tarnwing " + guard + " " + std::to_string(thisRun) + "$";
}

} // namespace

TEST(SingleInstance, theFirstGuardOfANameFindsNoOther) {
    const SingleInstance first(nameOf("first"));
    EXPECT_FALSE(first.alreadyRuns());
}

TEST(SingleInstance, theSecondGuardOfANameFindsTheFirst) {
    const SingleInstance first(nameOf("second"));
    const SingleInstance second(nameOf("second"));
    EXPECT_FALSE(first.alreadyRuns());
    EXPECT_TRUE(second.alreadyRuns());
}

TEST(SingleInstance, anotherNameIsAnotherGuard) {
    const SingleInstance one(nameOf("one"));
    const SingleInstance other(nameOf("other"));
    EXPECT_FALSE(other.alreadyRuns());
}

TEST(SingleInstance, theNameIsFreeWhenItsGuardsAreGone) {
    std::optional<SingleInstance> guard;
    guard.emplace(nameOf("again"));
    guard.reset();
    const SingleInstance next(nameOf("again"));
    EXPECT_FALSE(next.alreadyRuns());
}

TEST(SingleInstance, aGuardThatFoundAnotherFreesNothingWhenItGoes) {
    const SingleInstance first(nameOf("held"));
    { const SingleInstance second(nameOf("held")); }
    const SingleInstance third(nameOf("held"));
    EXPECT_TRUE(third.alreadyRuns());
}
