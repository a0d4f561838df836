#include "sim/stand_requests.h"

#include <gtest/gtest.h>

#include "sim/user_state.h"

namespace {

class StandRequests : public testing::Test {
protected:
    StandRequests() { reset(); }
    ~StandRequests() override { reset(); }

    static void reset() {
        resetStandRequests();
        resetUserState();
    }

    static void rollAt(double knots) {
        UserState state;
        state.groundSpeed = knots;
        setUserState(state);
    }
};

TEST_F(StandRequests, theStandUnderTheUserIsAskedForOnceHoweverOftenItIsWanted) {
    EXPECT_FALSE(takeUserStandRequest());
    wantUserStand();
    wantUserStand();
    EXPECT_TRUE(takeUserStandRequest());
    EXPECT_FALSE(takeUserStandRequest());
}

TEST_F(StandRequests, aUserWhoStandsHasAClosestStand) {
    userOnGroundKnown = true;
    rollAt(0);
    refreshClosestStand();
    EXPECT_TRUE(takeClosestStandRequest());
    EXPECT_FALSE(takeClosestStandRequest());
}

TEST_F(StandRequests, aUserWhoRollsFasterThan2KnotsHasNone) {
    userOnGroundKnown = true;
    rollAt(2.01);
    refreshClosestStand();
    EXPECT_FALSE(takeClosestStandRequest());
    rollAt(2);
    refreshClosestStand();
    EXPECT_TRUE(takeClosestStandRequest());
}

TEST_F(StandRequests, beforeTheFirstAnswerAboutTheGroundThereIsNone) {
    rollAt(0);
    refreshClosestStand();
    EXPECT_FALSE(takeClosestStandRequest());
}

TEST_F(StandRequests, noneIsLeftAfterAReset) {
    userOnGroundKnown = true;
    wantUserStand();
    refreshClosestStand();
    resetStandRequests();
    EXPECT_FALSE(takeUserStandRequest());
    EXPECT_FALSE(takeClosestStandRequest());
}

} // namespace
