#include "sim/object_data.h"

#include <limits>

#include "core/run_flags.h"
#include "tests/sim/session_fixture.h"
#include "window/window_state.h"

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

constexpr auto notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr auto infinite = std::numeric_limits<double>::infinity();

class ObjectData : public SessionTest {};

TEST_F(ObjectData, staticDataGoToTheInbox) {
    dispatchAnswer(requestStaticData, dataOf(9.5, -0.02), 77);
    EXPECT_THAT(inbox(), ElementsAre(EngineMessage{77, 0, 0, EngineMessageKind::staticData, 9.5, -0.02}));
}

TEST_F(ObjectData, staticDataThatAreNoNumbersGoNowhere) {
    dispatchAnswer(requestStaticData, dataOf(notANumber, -0.02), 77);
    dispatchAnswer(requestStaticData, dataOf(9.5, infinite), 77);
    EXPECT_THAT(inbox(), IsEmpty());
    EXPECT_THAT(log.errors(), Each("==> SimConnect: answer 102 with 16 bytes of data is of no use"));
    EXPECT_THAT(log.errors(), SizeIs(2));
}

TEST_F(ObjectData, answersToOtherRequestsAreIgnored) {
    for (const SimRequest request : {requestInRange, requestRelease, requestCreate, requestRemove, requestFlightPlan}) {
        dispatchAnswer(request, Bytes(96, std::byte{1}));
    }
    EXPECT_THAT(inbox(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_FALSE(secondPulse);
}

TEST_F(ObjectData, anAnswerThatIsOneByteShortCostsItself) {
    struct Case {
        SimRequest request;
        std::size_t bytes;
    };
    for (const Case& c : {Case{requestStaticData, 15}, Case{requestTitle, 0}, Case{requestModel, 31},
                          Case{requestOnGround, 7}, Case{requestPosition, 95}}) {
        dispatchAnswer(c.request, Bytes(c.bytes, std::byte{0x31}));
        EXPECT_TRUE(log.contains("==> SimConnect: answer " + std::to_string(c.request) + " with " +
                                 std::to_string(c.bytes) + " bytes of data is of no use"));
    }
    EXPECT_THAT(log.lines(), SizeIs(5));
    EXPECT_THAT(inbox(), IsEmpty());
    EXPECT_FALSE(secondPulse);
    EXPECT_EQ(userStateNow(), UserState());
}

class ObjectInRange : public SessionTest {
protected:
    ObjectInRange() { userObjectId = 10; }

    static void sentCreation(std::uint32_t hexid, const std::string& tailNumber) {
        const std::lock_guard lock(simLock);
        sentList.push_back({static_cast<std::uint32_t>(sentList.size()) + 1, hexid, tailNumber});
    }

    static std::vector<std::uint32_t> sentHexids() {
        std::vector<std::uint32_t> hexids;
        for (const SentCreation& creation : sentList) {
            hexids.push_back(creation.hexid);
        }
        return hexids;
    }

    static std::vector<std::vector<std::uint32_t>> queuedEvents() {
        std::vector<std::vector<std::uint32_t>> events;
        for (const SimEventRequest& event : eventQueue) {
            events.push_back({event.objectId, event.eventId, event.value});
        }
        return events;
    }

    static void addObject(DWORD objectId) { dispatch(objectRecord(eventObjectAdded, objectId)); }
};

TEST_F(ObjectInRange, aLiveObjectOfOursIsReleasedFrozenAndTold) {
    sentCreation(0x4CA123, "EIN123");
    addObject(70);
    dispatch(inRangeRecord(70, 2.5, 300, 1, "EIN123"));
    EXPECT_THAT(simulator->calls(), ElementsAre("SimConnect_AIReleaseControl(70, 103)"));
    EXPECT_THAT(queuedEvents(),
                ElementsAre(ElementsAre(70U, 215U, 1U), ElementsAre(70U, 216U, 1U), ElementsAre(70U, 217U, 1U)));
    EXPECT_THAT(inbox(), ElementsAre(EngineMessage{70, 0x4CA123, 0, EngineMessageKind::liveObjectExists, 0, 2.5}));
    EXPECT_THAT(sentList, IsEmpty());
    EXPECT_THAT(addedObjects, IsEmpty());
}

TEST_F(ObjectInRange, aStaticObjectOfOursIsToldWithoutItsHeight) {
    sentCreation(10000, "EIN123");
    addObject(70);
    dispatch(inRangeRecord(70, 2.5, 300, 1, "EIN123"));
    EXPECT_THAT(inbox(), ElementsAre(EngineMessage{70, 10000, 0, EngineMessageKind::staticObjectExists, 0, 0}));
}

TEST_F(ObjectInRange, hexid10001IsLive) {
    sentCreation(10001, "EIN123");
    addObject(70);
    dispatch(inRangeRecord(70, 2.5, 300, 1, "EIN123"));
    ASSERT_THAT(inbox(), SizeIs(1));
    EXPECT_EQ(inbox()[0].kind, EngineMessageKind::liveObjectExists);
}

TEST_F(ObjectInRange, ofTwoWithOneTailNumberTheFirstSentIsTheFirstMatched) {
    sentCreation(20001, "KLM1");
    sentCreation(20002, "EIN1");
    sentCreation(20003, "KLM1");
    addObject(70);
    addObject(71);
    dispatch(inRangeRecord(70, 0, 0, 1, "KLM1"));
    EXPECT_THAT(sentHexids(), ElementsAre(20002U, 20003U));
    dispatch(inRangeRecord(71, 0, 0, 1, "KLM1"));
    ASSERT_THAT(inbox(), SizeIs(2));
    EXPECT_EQ(inbox()[0].id, 20001U);
    EXPECT_EQ(inbox()[1].id, 20003U);
}

TEST_F(ObjectInRange, theTailNumberMustMatchExactly) {
    sentCreation(20001, "KLM12");
    addObject(70);
    dispatch(inRangeRecord(70, 0, 0, 1, "KLM1"));
    EXPECT_THAT(inbox(), IsEmpty());
    EXPECT_THAT(sentHexids(), ElementsAre(20001U));
}

TEST_F(ObjectInRange, anObjectOfAnotherAddonIsOneLogLineAndThenForeign) {
    addObject(70);
    dispatch(inRangeRecord(70, 12.4, 300.6, 1, "N123"));
    EXPECT_THAT(log.lines(),
                ElementsAre("just spawned, but not by Tarnwing_P3D, oid: 70, callsign 'N123', altaboveGnd:12 ft, "
                            "onground:1, gnd_alt:301 ft"));
    EXPECT_THAT(inbox(), IsEmpty());
    EXPECT_THAT(simulator->calls(), IsEmpty());
    dispatch(inRangeRecord(70, 12.4, 300.6, 1, "N123"));
    EXPECT_THAT(log.lines(), SizeIs(1));
    EXPECT_THAT(inbox(), ElementsAre(EngineMessage{70, 1, 0, EngineMessageKind::groundData, 300.6, 12.4}));
}

TEST_F(ObjectInRange, aKnownObjectTellsOfTheGround) {
    dispatch(inRangeRecord(70, 40, 300, 0, "EIN123"));
    EXPECT_THAT(inbox(), ElementsAre(EngineMessage{70, 0, 0, EngineMessageKind::groundData, 300, 40}));
}

TEST_F(ObjectInRange, above2500FeetTheGroundIsOfNoInterest) {
    dispatch(inRangeRecord(70, 2500.1, 300, 0, "EIN123"));
    EXPECT_THAT(inbox(), IsEmpty());
    dispatch(inRangeRecord(70, 2500, 300, 0, "EIN123"));
    EXPECT_THAT(inbox(), SizeIs(1));
}

TEST_F(ObjectInRange, withoutACallSignOrWithAStarBehindItIsIgnored) {
    dispatch(inRangeRecord(70, 40, 300, 0, ""));
    dispatch(inRangeRecord(70, 40, 300, 0, "EIN123*"));
    EXPECT_THAT(inbox(), IsEmpty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ObjectInRange, theUserAndWhatWasThereBeforeAreIgnored) {
    dispatch(inRangeRecord(10, 40, 300, 0, "EIN123"));
    dispatch(inRangeRecord(9, 40, 300, 0, "EIN123"));
    EXPECT_THAT(inbox(), IsEmpty());
    dispatch(inRangeRecord(11, 40, 300, 0, "EIN123"));
    EXPECT_THAT(inbox(), SizeIs(1));
}

TEST_F(ObjectInRange, anAnswerToAnotherRequestIsIgnored) {
    dispatch(answerRecord(requestStaticData, 70, dataOf(1.0, 2.0, std::int64_t{1}) + fieldOf("EIN123", 32),
                          SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE));
    EXPECT_THAT(inbox(), IsEmpty());
}

TEST_F(ObjectInRange, nothingInRangeIsAnAnswerWithoutData) {
    dispatch(answerRecord(requestInRange, 70, {}, SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE));
    EXPECT_THAT(log.lines(), IsEmpty());
    EXPECT_THAT(inbox(), IsEmpty());
}

TEST_F(ObjectInRange, halfAnAnswerOrOneWithoutNumbersCostsItselfAndTheObjectWaits) {
    addObject(70);
    dispatch(answerRecord(requestInRange, 70, Bytes(55), SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE));
    dispatch(inRangeRecord(70, notANumber, 300, 1, "EIN123"));
    dispatch(inRangeRecord(70, 1, infinite, 1, "EIN123"));
    EXPECT_THAT(log.errors(), ElementsAre("==> SimConnect: answer 101 with 55 bytes of data is of no use",
                                          "==> SimConnect: answer 101 with 56 bytes of data is of no use",
                                          "==> SimConnect: answer 101 with 56 bytes of data is of no use"));
    EXPECT_THAT(addedObjects, ElementsAre(70U));
    EXPECT_THAT(inbox(), IsEmpty());
}

TEST_F(ObjectInRange, aReleaseThatFailsIsAFailedRequest) {
    simulator->letFail("SimConnect_AIReleaseControl");
    sentCreation(20001, "KLM1");
    addObject(70);
    dispatch(inRangeRecord(70, 0, 0, 1, "KLM1"));
    EXPECT_TRUE(simFailed);
    EXPECT_EQ(gf_exitReason(), ExitReason::simConnectError);
    EXPECT_EQ(gf_restartDelaySeconds(), 9);
}

TEST_F(ObjectInRange, afterAFailedRequestNothingIsSent) {
    simFailed = true;
    sentCreation(20001, "KLM1");
    addObject(70);
    dispatch(inRangeRecord(70, 0, 0, 1, "KLM1"));
    EXPECT_THAT(simulator->calls(), IsEmpty());
    EXPECT_THAT(inbox(), SizeIs(1));
}

TEST_F(ObjectInRange, objectsAreForgottenWithTheSession) {
    addObject(70);
    resetSession();
    EXPECT_THAT(addedObjects, IsEmpty());
}

} // namespace
