#include "core/exit_reason.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <thread>

#include "tests/support/meeting.h"

namespace {

class ExitReasonTest : public testing::Test {
protected:
    ~ExitReasonTest() override { gf_resetExitReason(); }
};

using ExitReasonThreads = ExitReasonTest;

TEST_F(ExitReasonTest, ofTwoFailuresInARowTheFirstReasonStands) {
    gf_stopRun(ExitReason::simConnectError, 9);
    gf_stopRun(ExitReason::readerError, 15);
    EXPECT_EQ(gf_exitReason(), ExitReason::simConnectError);
    EXPECT_EQ(gf_restartDelaySeconds(), 9);
    EXPECT_TRUE(gStopRun);
    EXPECT_FALSE(gUserClosing);
}

TEST_F(ExitReasonTest, aClosingUserKeepsAReasonThatIsStored) {
    gf_stopRun(ExitReason::newFlight, 30);
    gf_userCloses();
    EXPECT_EQ(gf_exitReason(), ExitReason::newFlight);
    EXPECT_TRUE(gUserClosing);
}

TEST_F(ExitReasonTest, aClosingUserIsTheReasonWhenThereIsNone) {
    gf_userCloses();
    EXPECT_EQ(gf_exitReason(), ExitReason::userClosed);
    EXPECT_TRUE(gStopRun);
    EXPECT_TRUE(gf_isStopping());
}

TEST_F(ExitReasonTest, anErrorOfTheUsersReplacesTheReasonWithoutStoppingTheRun) {
    gf_stopRun(ExitReason::readerError, 15);
    gf_resetExitReason();
    gf_setSystemError();
    EXPECT_EQ(gf_exitReason(), ExitReason::systemError);
    EXPECT_FALSE(gf_isStopping());
}

TEST_F(ExitReasonTest, newSettingsAloneReplaceASystemError) {
    for (const bool stopped : {false, true}) {
        gf_resetExitReason();
        if (stopped) {
            gf_stopRun(ExitReason::systemError, 0);
        } else {
            gf_setSystemError();
        }
        gf_stopRun(ExitReason::readerError, 15);
        EXPECT_EQ(gf_exitReason(), ExitReason::systemError) << "the error on the screen stays";
        gf_userCloses();
        EXPECT_EQ(gf_exitReason(), ExitReason::systemError);
        gf_stopRun(ExitReason::newSettings, 3);
        EXPECT_EQ(gf_exitReason(), ExitReason::newSettings);
        EXPECT_EQ(gf_restartDelaySeconds(), 3);
    }
}

TEST_F(ExitReasonTest, aReasonNotYetSetIsSettledAsUserClosed) {
    gf_settleExitReason();
    EXPECT_EQ(gf_exitReason(), ExitReason::userClosed);
    gf_resetExitReason();
    gf_stopRun(ExitReason::newVersion, 0);
    gf_settleExitReason();
    EXPECT_EQ(gf_exitReason(), ExitReason::newVersion);
}

TEST_F(ExitReasonTest, everyReasonHasItsText) {
    const std::array<const char*, 9> texts{"NOT YET SET",  "SIM WAS CLOSED",  "NEW FLIGHT",
                                           "NEW SETTINGS", "USER CLOSED SIM", "SIMCONNECT ERROR",
                                           "READER ERROR", "SYSTEM ERROR",    "NEW VERSION"};
    for (int value = 0; value < 9; ++value) {
        EXPECT_EQ(gf_exitReasonText(static_cast<ExitReason>(value)), texts.at(static_cast<std::size_t>(value)));
    }
}

TEST_F(ExitReasonTest, anUnknownReasonIsOutOfRange) {
    try {
        gf_exitReasonText(static_cast<ExitReason>(9));
        FAIL() << "no exception";
    } catch (const std::out_of_range& exception) {
        EXPECT_STREQ(exception.what(), "invalid unordered_map<K, T> key");
    }
}

TEST_F(ExitReasonThreads, whoSeesTheStopFlagFindsReasonAndDelayOfOneWriter) {
    for (int round = 0; round < 200; ++round) {
        gf_resetExitReason();
        Meeting start(3);
        std::thread first([&] {
            start.arrive_and_wait();
            gf_stopRun(ExitReason::simConnectError, 9);
        });
        std::thread second([&] {
            start.arrive_and_wait();
            gf_stopRun(ExitReason::readerError, 15);
        });
        start.arrive_and_wait();
        while (!gStopRun) {
        }
        const ExitReason reason = gf_exitReason();
        const int delay = gf_restartDelaySeconds();
        first.join();
        second.join();
        EXPECT_EQ(delay, reason == ExitReason::simConnectError ? 9 : 15);
        EXPECT_EQ(gf_exitReason(), reason) << "a later writer replaced the first reason";
    }
}

} // namespace
