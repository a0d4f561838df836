#include "sim/frame_flush.h"

#include <gmock/gmock.h>

#include <atomic>
#include <bit>
#include <charconv>
#include <functional>
#include <mutex>
#include <thread>

#include "sim/controls.h"
#include "sim/simulator_link.h"
#include "tests/sim/sim_test.h"
#include "tests/support/allocation_count.h"
#include "tests/support/eventually.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

LiveAircraft aircraftOf(std::uint32_t objectId) {
    LiveAircraft aircraft;
    aircraft.objectId = objectId;
    return aircraft;
}

CreateRequest creationOf(std::uint32_t hexid, const char* tailNumber = "SWR12") {
    CreateRequest request;
    request.lat = 47.5;
    request.lon = 8.25;
    request.alt = 1400;
    request.pitch = -0.5;
    request.bank = 2;
    request.heading = 270;
    request.onGround = 1;
    request.tailNumber = tailNumber;
    request.title = "FSX A320 Swiss";
    request.hexid = hexid;
    return request;
}

std::string hexOf(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    std::string text;
    for (int i = 0; i < 8; ++i) {
        text += fmt::format("{:02x}", bits >> (8 * i) & 0xFF);
    }
    return text;
}

double doubleFromHex(std::string_view digits) {
    std::uint64_t bits = 0;
    for (int i = 7; i >= 0; --i) {
        unsigned byte = 0;
        const char* begin = digits.data() + 2 * i;
        std::from_chars(begin, begin + 2, byte, 16);
        bits = bits << 8 | byte;
    }
    return std::bit_cast<double>(bits);
}

/// Runs something while another thread holds simLock.
void whileSimLockIsHeld(const std::function<void()>& work) {
    std::atomic<bool> held{false};
    std::atomic<bool> done{false};
    std::thread holder([&] {
        const std::lock_guard lock(simLock);
        held = true;
        while (!done) {
            std::this_thread::yield();
        }
    });
    EXPECT_TRUE(eventually([&] { return held.load(); }));
    work();
    done = true;
    holder.join();
}

class FrameFlush : public SimTest {
protected:
    std::vector<std::string> sent(const char* name) const { return simulator_().calls(name); }
    std::vector<std::string> sent() const { return simulator_().calls(); }

    /// One of everything, as the engine would leave it.
    static void queueOneOfEach() {
        appendPosition(aircraftOf(40));
        swapPositions();
        queueEvent(40, eventGear, 1);
        createRequests.push_back(creationOf(0x4B1234));
        removeRequests.push_back(41);
    }

    static void expectEmptyQueues() {
        EXPECT_THAT(positionBack, IsEmpty());
        EXPECT_THAT(eventQueue, IsEmpty());
        EXPECT_THAT(createRequests, IsEmpty());
        EXPECT_THAT(removeRequests, IsEmpty());
    }

private:
    RecordingSimulator& simulator_() const { return *const_cast<RecordingSimulatorScope&>(simulator); }
};

using FrameFlushThreads = FrameFlush;

} // namespace

TEST_F(FrameFlush, aPositionIsTheEightValuesOfTheAircraftInTheirOrder) {
    LiveAircraft aircraft = aircraftOf(40);
    aircraft.lat = 47.5;
    aircraft.lon = 8.25;
    aircraft.pitch = -0.0625;
    aircraft.bank = 0.5;
    aircraft.heading = 3.5;
    aircraft.alt = 4321;
    aircraft.vsFps = -12;
    aircraft.tas = 145;
    appendPosition(aircraft);
    swapPositions();
    flushFrame();
    std::string block;
    for (const double value : {47.5, 8.25, -0.0625, 0.5, 3.5, 4321.0, -12.0, 145.0}) {
        block += hexOf(value);
    }
    EXPECT_THAT(sent(), ElementsAre("SimConnect_SetDataOnSimObject(402, 40, 0, 0, 64, " + block + ")"));
}

TEST_F(FrameFlush, aPositionForTheUserOrBelowIsNotSent) {
    userObjectId = 40;
    for (const std::uint32_t id : {39U, 40U, 41U}) {
        appendPosition(aircraftOf(id));
    }
    swapPositions();
    flushFrame();
    ASSERT_THAT(sent(), SizeIs(1));
    EXPECT_EQ(sent()[0].find("SimConnect_SetDataOnSimObject(402, 41, "), 0U);
    EXPECT_THAT(positionBack, IsEmpty());
}

TEST_F(FrameFlush, positionsThatAreNotSwappedYetAreNotSent) {
    appendPosition(aircraftOf(40));
    flushFrame();
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_THAT(positionFront, SizeIs(1));
}

TEST_F(FrameFlush, anObjectGetsOnlyTheLatestOfSeveralTicks) {
    LiveAircraft aircraft = aircraftOf(40);
    for (const double alt : {100.0, 200.0, 300.0}) {
        aircraft.alt = alt;
        appendPosition(aircraft);
        swapPositions();
    }
    flushFrame();
    ASSERT_THAT(sent(), SizeIs(1));
    EXPECT_NE(sent()[0].find(hexOf(300.0)), std::string::npos);
}

TEST_F(FrameFlush, aPositionIsSentOnce) {
    appendPosition(aircraftOf(40));
    swapPositions();
    flushFrame();
    flushFrame();
    EXPECT_THAT(sent(), SizeIs(1));
}

TEST_F(FrameFlush, aPositionThatFailsIsLeftToTheNextFrame) {
    simulator->letFail("SimConnect_SetDataOnSimObject");
    appendPosition(aircraftOf(40));
    swapPositions();
    flushFrame();
    EXPECT_FALSE(simFailed);
    EXPECT_FALSE(gStopRun);
    EXPECT_THAT(positionBack, IsEmpty());
}

TEST_F(FrameFlush, afterASwapTheFrontIsEmpty) {
    appendPosition(aircraftOf(40));
    swapPositions();
    EXPECT_THAT(positionFront, IsEmpty());
    EXPECT_THAT(positionBack, SizeIs(1));
    appendPosition(aircraftOf(41));
    swapPositions();
    EXPECT_THAT(positionFront, IsEmpty()) << "what the frame has not fetched is out of date";
    ASSERT_THAT(positionBack, SizeIs(1));
    EXPECT_EQ(positionBack[0].objectId, 41U);
}

TEST_F(FrameFlush, appendingAndSwappingAllocateNothing) {
    const LiveAircraft aircraft = aircraftOf(40);
    const std::size_t before = allocationsOfThisThread();
    for (int tick = 0; tick < 10; ++tick) {
        for (int i = 0; i < 500; ++i) {
            appendPosition(aircraft);
        }
        swapPositions();
    }
    EXPECT_EQ(allocationsOfThisThread() - before, 0U);
    EXPECT_THAT(positionBack, SizeIs(500));
}

TEST_F(FrameFlushThreads, aSwapThatFindsTheLockTakenThrowsTheTickAway) {
    appendPosition(aircraftOf(40));
    swapPositions();
    appendPosition(aircraftOf(41));
    whileSimLockIsHeld(swapPositions);
    EXPECT_THAT(positionFront, IsEmpty());
    ASSERT_THAT(positionBack, SizeIs(1));
    EXPECT_EQ(positionBack[0].objectId, 40U);
}

TEST_F(FrameFlushThreads, appendingTakesNoLock) {
    whileSimLockIsHeld([] { appendPosition(aircraftOf(40)); });
    EXPECT_THAT(positionFront, SizeIs(1));
}

TEST_F(FrameFlushThreads, aFrameThatFindsTheLockTakenLosesNothing) {
    queueOneOfEach();
    whileSimLockIsHeld(flushFrame);
    EXPECT_THAT(sent(), IsEmpty());
    flushFrame();
    EXPECT_THAT(sent(), SizeIs(4));
}

TEST_F(FrameFlushThreads, alsoTheEmptyingAfterAFailureWaitsForTheLock) {
    simFailed = true;
    queueOneOfEach();
    whileSimLockIsHeld(flushFrame);
    EXPECT_THAT(eventQueue, SizeIs(1)) << "who holds the lock may be looking at the queues";
    flushFrame();
    expectEmptyQueues();
}

TEST_F(FrameFlush, positionsEventsCreationsAndRemovalsGoInThisOrderAndTheQueuesAreEmptyThen) {
    queueOneOfEach();
    flushFrame();
    const std::vector<std::string> calls = sent();
    ASSERT_THAT(calls, SizeIs(4));
    EXPECT_EQ(calls[0].find("SimConnect_SetDataOnSimObject("), 0U);
    EXPECT_EQ(calls[1].find("SimConnect_TransmitClientEvent("), 0U);
    EXPECT_EQ(calls[2].find("SimConnect_AICreateNonATCAircraft("), 0U);
    EXPECT_EQ(calls[3].find("SimConnect_AIRemoveObject("), 0U);
    expectEmptyQueues();
}

TEST_F(FrameFlush, onceARequestHasFailedTheQueuesAreEmptiedWithoutSending) {
    queueOneOfEach();
    simFailed = true;
    flushFrame();
    EXPECT_THAT(sent(), IsEmpty());
    EXPECT_THAT(sentList, IsEmpty());
    expectEmptyQueues();
}

TEST_F(FrameFlush, eventsGoInTheirOrderWithTheGroup) {
    queueEvent(40, eventThrottle, 4914);
    queueEvent(41, eventGear, 1);
    flushFrame();
    EXPECT_THAT(sent(), ElementsAre("SimConnect_TransmitClientEvent(40, 223, 4914, 301, 0)",
                                    "SimConnect_TransmitClientEvent(41, 220, 1, 301, 0)"));
}

TEST_F(FrameFlush, anObjectIsReleasedBeforeAndAfterItsFlapsMove) {
    queueEvent(40, eventFlaps, 3072);
    EXPECT_THAT(sent(), IsEmpty());
    flushFrame();
    EXPECT_THAT(sent(), ElementsAre("SimConnect_AIReleaseControl(40, 103)",
                                    "SimConnect_TransmitClientEvent(40, 218, 3072, 301, 0)",
                                    "SimConnect_AIReleaseControl(40, 103)"));
}

TEST_F(FrameFlush, anEventThatFailsIsShownAndTheOthersGoOn) {
    simulator->letFail("SimConnect_TransmitClientEvent");
    queueEvent(40, eventFlaps, 3072);
    queueEvent(41, eventGear, 1);
    flushFrame();
    EXPECT_THAT(sent(), ElementsAre("SimConnect_AIReleaseControl(40, 103)",
                                    "SimConnect_TransmitClientEvent(40, 218, 3072, 301, 0)",
                                    "SimConnect_TransmitClientEvent(41, 220, 1, 301, 0)"))
        << "without the second release";
    EXPECT_THAT(log.lines(),
                ElementsAre("SimConnect TransmitClientEvent: 218 fails", "SimConnect TransmitClientEvent: 220 fails"));
    EXPECT_EQ(shownMessage(), "SimConnect TransmitClientEvent: 220 fails");
    EXPECT_FALSE(simFailed);
    EXPECT_THAT(eventQueue, IsEmpty());
}

TEST_F(FrameFlush, aCreationCarriesTitleTailNumberAndInitialPosition) {
    createRequests.push_back(creationOf(0x4B1234));
    flushFrame();
    EXPECT_THAT(sent(),
                ElementsAre("SimConnect_AICreateNonATCAircraft('FSX A320 Swiss', 'SWR12', 47.5 8.25 1400 -0.5 2 "
                            "270 1 0, 104)"));
}

TEST_F(FrameFlush, aTitleThatIsOnlyPartOfALongerTextIsCutThere) {
    const std::string titles = "FSX A320 SwissFSX A321";
    createRequests.push_back(creationOf(0x4B1234));
    createRequests.back().title = std::string_view(titles).substr(0, 14);
    flushFrame();
    ASSERT_THAT(sent(), SizeIs(1));
    EXPECT_EQ(sent()[0].find("SimConnect_AICreateNonATCAircraft('FSX A320 Swiss', "), 0U);
}

TEST_F(FrameFlush, aSentCreationIsKeptWithThePacketIdOfItsOwn) {
    queueEvent(40, eventGear, 1);
    createRequests.push_back(creationOf(0x4B1234, "SWR12"));
    createRequests.push_back(creationOf(7, "SWR13*"));
    flushFrame();
    ASSERT_THAT(sentList, SizeIs(2));
    EXPECT_EQ(sentList[0].packetId, 2U);
    EXPECT_EQ(sentList[0].hexid, 0x4B1234U);
    EXPECT_EQ(sentList[0].tailNumber, "SWR12");
    EXPECT_EQ(sentList[1].packetId, 3U);
    EXPECT_EQ(sentList[1].hexid, 7U);
    EXPECT_EQ(sentList[1].tailNumber, "SWR13*");
}

TEST_F(FrameFlush, twoCreationsWithOneTailNumberStandInTheOrderOfTheirSending) {
    createRequests.push_back(creationOf(0x4B1111, "SWR12"));
    createRequests.push_back(creationOf(0x4B2222, "SWR12"));
    flushFrame();
    ASSERT_THAT(sentList, SizeIs(2));
    EXPECT_EQ(sentList[0].hexid, 0x4B1111U);
    EXPECT_EQ(sentList[1].hexid, 0x4B2222U);
}

TEST_F(FrameFlush, aCreationWhosePacketIdCannotBeToldHasZero) {
    simulator->letFail("SimConnect_GetLastSentPacketID");
    createRequests.push_back(creationOf(0x4B1234));
    flushFrame();
    EXPECT_THAT(log.lines(), ElementsAre("GetLastSentPacketID"));
    ASSERT_THAT(sentList, SizeIs(1));
    EXPECT_EQ(sentList[0].packetId, 0U);
    EXPECT_FALSE(simFailed);
}

TEST_F(FrameFlush, aTextThatTheCallCannotCarryCostsThatAircraftAlone) {
    const std::string longTitle(256, 'x');
    createRequests.push_back(creationOf(0x4B1111, "THIRTEENCHARS"));
    createRequests.push_back(creationOf(0x4B2222, "SWR12"));
    createRequests.back().title = longTitle;
    createRequests.push_back(creationOf(0x4B3333, "SWR13"));
    flushFrame();
    EXPECT_FALSE(simFailed);
    EXPECT_FALSE(gStopRun);
    ASSERT_THAT(engineInbox, SizeIs(2));
    EXPECT_EQ(engineInbox[0].kind, EngineMessageKind::creationRefused);
    EXPECT_EQ(engineInbox[0].id, 0x4B1111U);
    EXPECT_EQ(engineInbox[1].id, 0x4B2222U);
    ASSERT_THAT(sentList, SizeIs(1));
    EXPECT_EQ(sentList[0].hexid, 0x4B3333U);
}

TEST_F(FrameFlush, theTailNumberThatIsKeptIsTheOneThatWasSent) {
    createRequests.push_back(creationOf(0x4B1111));
    createRequests.back().tailNumber = std::string("SW\0R12", 6);
    flushFrame();
    ASSERT_THAT(sentList, SizeIs(1));
    EXPECT_EQ(sentList[0].tailNumber, "SW");
}

TEST_F(FrameFlush, droppedPositionsAreNotSent) {
    LiveAircraft aircraft;
    aircraft.objectId = 40;
    appendPosition(aircraft);
    swapPositions();
    appendPosition(aircraft);
    dropPositions();
    swapPositions();
    flushFrame();
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(FrameFlush, aCreationThatFailsIsLoggedAndEndsTheSession) {
    simulator->letFail("SimConnect_AICreateNonATCAircraft");
    createRequests.push_back(creationOf(4919860));
    createRequests.push_back(creationOf(4919861));
    removeRequests.push_back(41);
    flushFrame();
    EXPECT_THAT(log.lines(),
                ElementsAre("! Simcon call to create ac in sim failed, hexid:4919860, liv: 'FSX A320 Swiss', callsign: "
                            "SWR12)",
                            "SimConnect request error"));
    EXPECT_EQ(shownMessage(), "SimConnect request error");
    EXPECT_THAT(sent(), SizeIs(1)) << "all sending stops";
    EXPECT_THAT(sentList, IsEmpty());
    EXPECT_TRUE(simFailed);
    EXPECT_EQ(gf_exitReason(), ExitReason::simConnectError);
    EXPECT_EQ(gf_restartDelaySeconds(), 9);
    expectEmptyQueues();
}

TEST_F(FrameFlush, removalsGoByObjectId) {
    userObjectId = 1;
    removeRequests = {40, 41};
    flushFrame();
    EXPECT_THAT(sent(), ElementsAre("SimConnect_AIRemoveObject(40, 105)", "SimConnect_AIRemoveObject(41, 105)"));
}

TEST_F(FrameFlush, theRemovalOfTheUserOrBelowOnlyLogs) {
    userObjectId = 40;
    removeRequests = {40, 39, 41};
    flushFrame();
    EXPECT_THAT(log.lines(), ElementsAre("==> SimConnect call to remove ac with objectid 40",
                                         "==> SimConnect call to remove ac with objectid 39"));
    EXPECT_THAT(sent(), ElementsAre("SimConnect_AIRemoveObject(41, 105)"));
    EXPECT_FALSE(simFailed);
}

TEST_F(FrameFlush, aRemovalThatFailsIsLoggedWithTheTimeAndEndsTheSession) {
    const platform::ManualClock clock(platform::WallTime{} + std::chrono::hours(13));
    simulator->letFail("SimConnect_AIRemoveObject");
    removeRequests = {40, 41};
    flushFrame();
    EXPECT_THAT(log.lines(), ElementsAre("13:00:00 !SimConnect call to remove AI ac from sim failed, id 40?",
                                         "SimConnect request error"));
    EXPECT_THAT(sent(), SizeIs(1));
    EXPECT_TRUE(simFailed);
    EXPECT_EQ(gf_exitReason(), ExitReason::simConnectError);
    expectEmptyQueues();
}

TEST_F(FrameFlushThreads, noFrameSendsAnOlderPositionThanTheOneBefore) {
    constexpr int ticks = 20000;
    std::atomic<bool> engineDone{false};
    std::thread engine([&] {
        LiveAircraft aircraft = aircraftOf(100);
        for (int tick = 1; tick <= ticks; ++tick) {
            aircraft.alt = tick;
            appendPosition(aircraft);
            swapPositions();
            gf_setThrottle(aircraft, tick % 5);
        }
        engineDone = true;
    });
    double newest = 0;
    bool backwards = false;
    for (bool last = false; !last;) {
        last = engineDone;
        flushFrame();
        for (const std::string& call : sent("SimConnect_SetDataOnSimObject(402, 100, ")) {
            // The altitude is the sixth of the eight values, each of 16 digits.
            const double alt = doubleFromHex(call.substr(call.size() - 1 - 3 * 16, 16));
            backwards = backwards || alt <= newest;
            newest = alt;
        }
        simulator->forgetCalls();
    }
    engine.join();
    EXPECT_FALSE(backwards);
    EXPECT_GT(newest, 0);
}
