#include "sim/sim_exceptions.h"

#include "core/run_flags.h"
#include "tests/sim/session_fixture.h"
#include "window/window_state.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class SimExceptions : public SessionTest {
protected:
    static void sentCreation(std::uint32_t packetId, std::uint32_t hexid) {
        const std::lock_guard lock(simLock);
        sentList.push_back({packetId, hexid, "tail"});
    }
};

TEST_F(SimExceptions, anUnrecognisedIdIsAnErrorOnceTheUserHasAPosition) {
    dispatch(exceptionRecord(3));
    EXPECT_THAT(log.lines(), IsEmpty());
    placeUser(atParis());
    dispatch(exceptionRecord(3));
    EXPECT_THAT(log.errors(), ElementsAre("==> SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID"));
}

TEST_F(SimExceptions, anUnrecognisedIdDuringAnExitOrACloseIsNoNews) {
    placeUser(atParis());
    gf_stopRun(ExitReason::newFlight, 30);
    dispatch(exceptionRecord(3));
    gf_resetExitReason();
    gUserClosing = true;
    dispatch(exceptionRecord(3));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SimExceptions, anotherVersionIsError95) {
    EXPECT_EQ(userErrorOf([] { dispatch(exceptionRecord(5, 0, 4)); }),
              (std::pair<int, std::string>(95, "SimConnect Version Mismatch, dwIndex: 4")));
}

TEST_F(SimExceptions, tooManyObjectsAreShownAndLogged) {
    dispatch(exceptionRecord(11));
    EXPECT_EQ(shownMessage(), "SimConnect: too many objects (max 1000)");
    EXPECT_THAT(log.lines(), ElementsAre("SimConnect: too many objects (max 1000)"));
}

TEST_F(SimExceptions, aCreationThatFailedForWantOfRoomIsToldAndLeavesTheSentList) {
    sentCreation(31, 20001);
    sentCreation(32, 20002);
    dispatch(exceptionRecord(11, 31));
    EXPECT_THAT(inbox(), ElementsAre(EngineMessage{0, 20001, 0, EngineMessageKind::tooManyObjects, 0, 0}));
    ASSERT_THAT(sentList, SizeIs(1));
    EXPECT_EQ(sentList[0].hexid, 20002U);
}

TEST_F(SimExceptions, anInvalidDataSizeIsLogged) {
    dispatch(exceptionRecord(19));
    EXPECT_THAT(log.lines(), ElementsAre("SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE"));
}

TEST_F(SimExceptions, aRefusedCreationIsToldAndLeavesTheSentList) {
    sentCreation(31, 20001);
    sentCreation(32, 20002);
    sentCreation(33, 20003);
    dispatch(exceptionRecord(22, 31));
    EXPECT_THAT(inbox(), ElementsAre(EngineMessage{0, 20001, 0, EngineMessageKind::creationRefused, 0, 0}));
    ASSERT_THAT(sentList, SizeIs(2));
    EXPECT_EQ(sentList[0].hexid, 20003U) << "the last has moved into its place";
    EXPECT_EQ(sentList[1].hexid, 20002U);
}

TEST_F(SimExceptions, theLastSentCreationMayBeTheRefusedOne) {
    sentCreation(31, 20001);
    dispatch(exceptionRecord(22, 31));
    EXPECT_THAT(inbox(), SizeIs(1));
    EXPECT_THAT(sentList, IsEmpty());
}

TEST_F(SimExceptions, aRefusedCreationThatNobodySentIsNoNews) {
    sentCreation(31, 20001);
    sentCreation(0, 20002);
    dispatch(exceptionRecord(22, 99));
    dispatch(exceptionRecord(22, 0));
    EXPECT_THAT(inbox(), IsEmpty());
    EXPECT_THAT(sentList, SizeIs(2));
}

TEST_F(SimExceptions, aRefusedCreationWithoutAHexidLeavesTheSentListOnly) {
    sentCreation(31, 0);
    dispatch(exceptionRecord(22, 31));
    EXPECT_THAT(inbox(), IsEmpty());
    EXPECT_THAT(sentList, IsEmpty());
}

TEST_F(SimExceptions, aFlightPlanThatDoesNotLoadIsAnError) {
    dispatch(exceptionRecord(23));
    EXPECT_THAT(log.lines(), ElementsAre("==> SimConnect exception: load flight plan failed"));
}

TEST_F(SimExceptions, anOperationInvalidForTheObjectIsLogged) {
    dispatch(exceptionRecord(24));
    EXPECT_THAT(log.lines(), ElementsAre("SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE"));
}

TEST_F(SimExceptions, anyOtherIsAnErrorWithItsNumber) {
    dispatch(exceptionRecord(1));
    dispatch(exceptionRecord(33));
    dispatch(exceptionRecord(4294967295));
    EXPECT_THAT(log.lines(), ElementsAre("==> SIMCONNECT_EXCEPTION #1", "==> SIMCONNECT_EXCEPTION #33",
                                         "==> SIMCONNECT_EXCEPTION #4294967295"));
}

TEST_F(SimExceptions, noneOfThemFailsTheLink) {
    for (DWORD number = 0; number < 64; ++number) {
        userErrorOf([number] { dispatch(exceptionRecord(number)); });
    }
    EXPECT_FALSE(simFailed);
    EXPECT_FALSE(gStopRun);
}

} // namespace
