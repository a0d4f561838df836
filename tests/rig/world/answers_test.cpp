// What the world answers: data requests, subscriptions, acts of the simulator, exceptions.
#include <gmock/gmock.h>

#include "sim/sim_ids.h"
#include "tests/rig/world/world_client.h"

using namespace rig;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

class WorldAnswers : public ::testing::Test {
protected:
    WorldAnswers() { client_.declares(); }

    void frames(int count) {
        for (int i = 0; i < count; ++i) {
            world_.step();
        }
    }

    World world_{groundScene(), airliner()};
    WorldClient client_{world_};
};

ObjectDataRequest request(DWORD defineId, DWORD objectId, DWORD period) {
    return {7, defineId, objectId, period, 0, 0, 0, 0};
}

std::vector<DWORD> idsOf(const std::vector<Received>& records) {
    std::vector<DWORD> ids;
    ids.reserve(records.size());
    for (const Received& record : records) {
        ids.push_back(record.id);
    }
    return ids;
}

} // namespace

TEST_F(WorldAnswers, theOpenRecordTellsNameAndVersionOfTheSimulator) {
    Scene scene;
    scene.simulator = {"SunRise", {12, 1, 282174, 999}};
    World world(scene, {});
    ClientSession session(world);
    session.receive(1, OpenRequest{"Test"});
    world.step();
    const Received record{SIMCONNECT_RECV_ID_OPEN, session.takeOutput().records};
    ASSERT_EQ(record.bytes.size(), sizeof(SIMCONNECT_RECV_OPEN));
    EXPECT_EQ(record.dword(0), sizeof(SIMCONNECT_RECV_OPEN));
    EXPECT_EQ(record.text(12), "SunRise");
    EXPECT_EQ(record.dword(268), 12u);
    EXPECT_EQ(record.dword(272), 1u);
    EXPECT_EQ(record.dword(276), 282174u);
    EXPECT_EQ(record.dword(280), 999u);
    EXPECT_EQ(session.clientName(), "Test");
}

TEST_F(WorldAnswers, aRequestBeforeTheOpenIsAnException) {
    ClientSession session(world_);
    session.receive(1, SubscribeRequest{eventSim, "Sim"});
    world_.step();
    const Received record{0, session.takeOutput().records};
    EXPECT_EQ(record.dword(8), SIMCONNECT_RECV_ID_EXCEPTION);
    EXPECT_EQ(record.dword(12), SIMCONNECT_EXCEPTION_UNOPENED);
}

TEST_F(WorldAnswers, staticDataComeFromTheAircraftsType) {
    const DWORD id = client_.createsHeld("KLM123", inTheAir());
    client_.records();
    const std::vector<Received> records = client_.asks(request(definitionStaticData, id, SIMCONNECT_PERIOD_ONCE));
    ASSERT_THAT(records, SizeIs(1));
    const Received& data = records[0];
    EXPECT_EQ(data.id, SIMCONNECT_RECV_ID_SIMOBJECT_DATA);
    EXPECT_EQ(data.bytes.size(), dataAt + 16);
    EXPECT_EQ(data.dword(12), 7u);
    EXPECT_EQ(data.dword(16), id);
    EXPECT_EQ(data.dword(20), definitionStaticData);
    EXPECT_EQ(data.dword(28), 1u);
    EXPECT_EQ(data.dword(32), 1u);
    EXPECT_EQ(data.dword(36), 2u);
    EXPECT_EQ(data.float64(dataAt), 9);
    EXPECT_EQ(data.float64(dataAt + 8), 0.01);
}

TEST_F(WorldAnswers, byTypeTellsEachAircraftInRangeInTheOrderOfTheDefinition) {
    const DWORD near = client_.createsHeld("KLM123", onTheGround());
    SIMCONNECT_DATA_INITPOSITION farAway = inTheAir();
    farAway.Latitude = 54;
    client_.createsHeld("FAR", farAway);
    client_.records();

    const std::vector<Received> records =
        client_.asks(DataByTypeRequest{requestInRange, definitionObjectInRange, 20 * 1852, 2});

    ASSERT_THAT(records, SizeIs(2));
    EXPECT_EQ(records[0].dword(16), userObjectId);
    const Received& data = records[1];
    EXPECT_EQ(data.id, SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE);
    EXPECT_EQ(data.bytes.size(), dataAt + 56);
    EXPECT_EQ(data.dword(12), requestInRange);
    EXPECT_EQ(data.dword(16), near);
    EXPECT_EQ(data.dword(28), 2u);
    EXPECT_EQ(data.dword(32), 2u);
    EXPECT_EQ(data.float64(dataAt), 9);
    EXPECT_EQ(data.float64(dataAt + 8), 100);
    EXPECT_EQ(data.int64(dataAt + 16), 1);
    EXPECT_EQ(data.text(dataAt + 24), "KLM123");
}

TEST_F(WorldAnswers, byTypeDoesNotTellWhatIsNotSeenYet) {
    client_.sends(CreateAircraftRequest{"Airliner", "KLM123", inTheAir(), requestCreate});
    client_.sends(DataByTypeRequest{requestInRange, definitionObjectInRange, 100000, 2});
    world_.step();
    EXPECT_THAT(client_.recordsOf(SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE), SizeIs(1));
}

TEST_F(WorldAnswers, aByTypeRequestThatFindsNothingAnswersOnceWithoutData) {
    const std::vector<Received> records =
        client_.asks(DataByTypeRequest{requestInRange, definitionObjectInRange, 100000, 4});
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(records[0].bytes.size(), dataAt);
    EXPECT_EQ(records[0].dword(28), 0u);
    EXPECT_EQ(records[0].dword(32), 0u);
}

TEST_F(WorldAnswers, byTypeUserTellsTheUserAlone) {
    client_.createsHeld("KLM123", onTheGround());
    client_.records();
    EXPECT_THAT(client_.asks(DataByTypeRequest{requestInRange, definitionObjectInRange, 100000, 0}), SizeIs(1));
    EXPECT_THAT(client_.asks(DataByTypeRequest{requestInRange, definitionObjectInRange, 100000, 1}), SizeIs(2));
}

TEST_F(WorldAnswers, theUserIsObject0AndObject1) {
    for (const DWORD id : {DWORD{0}, userObjectId}) {
        const std::vector<Received> records = client_.asks(request(definitionObjectInRange, id, 1));
        ASSERT_THAT(records, SizeIs(1));
        EXPECT_EQ(records[0].dword(16), userObjectId);
        EXPECT_EQ(records[0].text(dataAt + 24), "USER");
    }
}

TEST_F(WorldAnswers, onceIsAnsweredOnce) {
    client_.sends(request(definitionStaticData, 0, SIMCONNECT_PERIOD_ONCE));
    frames(100);
    EXPECT_THAT(client_.records(), SizeIs(1));
}

TEST_F(WorldAnswers, eachSecondIsAnsweredEachSecondOfTheSimulator) {
    client_.sends(request(definitionStaticData, 0, SIMCONNECT_PERIOD_SECOND));
    frames(30 * 5);
    EXPECT_THAT(client_.records(), SizeIs(5));
    world_.play(PauseAct{});
    frames(30 * 5);
    EXPECT_THAT(client_.records(), IsEmpty());
    world_.play(ResumeAct{});
    frames(30 * 2);
    EXPECT_THAT(client_.records(), SizeIs(2));
}

TEST_F(WorldAnswers, eachFrameIsAnsweredEachFrameUntilNever) {
    client_.sends(request(definitionStaticData, 0, SIMCONNECT_PERIOD_SIM_FRAME));
    frames(10);
    EXPECT_THAT(client_.records(), SizeIs(10));
    client_.sends(request(definitionStaticData, 0, SIMCONNECT_PERIOD_NEVER));
    frames(10);
    EXPECT_THAT(client_.records(), IsEmpty());
}

TEST_F(WorldAnswers, aPeriodicRequestEndsWithItsObject) {
    const DWORD id = client_.createsHeld("KLM123", inTheAir());
    client_.sends(request(definitionStaticData, id, SIMCONNECT_PERIOD_SIM_FRAME));
    frames(2);
    client_.sends(RemoveObjectRequest{id, requestRemove});
    frames(1);
    client_.records();
    frames(10);
    EXPECT_THAT(client_.records(), IsEmpty());
}

TEST_F(WorldAnswers, requestsThatMakeNoSenseAreExceptions) {
    const struct {
        Request request;
        DWORD exception;
    } table[] = {
        {ObjectDataRequest{7, 999, 0, 1, 0, 0, 0, 0}, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID},
        {ObjectDataRequest{7, definitionStaticData, 0, 5, 0, 0, 0, 0}, SIMCONNECT_EXCEPTION_INVALID_ENUM},
        {ObjectDataRequest{7, definitionStaticData, 0, 4, 1, 0, 0, 0}, SIMCONNECT_EXCEPTION_OUT_OF_BOUNDS},
        {ObjectDataRequest{7, definitionStaticData, 0, 4, 0, 1, 0, 0}, SIMCONNECT_EXCEPTION_OUT_OF_BOUNDS},
        {ObjectDataRequest{7, definitionStaticData, 0, 4, 0, 0, 1, 0}, SIMCONNECT_EXCEPTION_OUT_OF_BOUNDS},
        {ObjectDataRequest{7, definitionStaticData, 0, 4, 0, 0, 0, 1}, SIMCONNECT_EXCEPTION_OUT_OF_BOUNDS},
        {DataByTypeRequest{7, 999, 1000, 2}, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID},
        {DataByTypeRequest{7, definitionStaticData, 1000, 6}, SIMCONNECT_EXCEPTION_INVALID_ENUM},
        {SetDataRequest{999, 0, 0, 0, 8, std::string(8, '\0')}, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID},
        {TransmitClientEventRequest{0, 999, 1, notificationGroup, 0}, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID},
        {MapClientEventRequest{500, "NO_SUCH_EVENT"}, SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED},
        {MapClientEventRequest{eventGear, "FLAPS_SET"}, SIMCONNECT_EXCEPTION_EVENT_ID_DUPLICATE},
        {AddEventToGroupRequest{notificationGroup, 999, 1}, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID},
        {AddEventToGroupRequest{notificationGroup, eventGear, 1}, SIMCONNECT_EXCEPTION_NONE},
        {GroupPriorityRequest{notificationGroup, 1}, SIMCONNECT_EXCEPTION_NONE},
        {SubscribeRequest{300, "NoSuchEvent"}, SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED},
        {AddToDefinitionRequest{410, "NO SUCH VARIABLE", "feet", 4, 0, 0}, SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED},
    };
    for (const auto& row : table) {
        EXPECT_EQ(client_.exceptionOf(row.request).first, row.exception) << row.request.index();
    }
}

TEST_F(WorldAnswers, aSubscriptionTwiceIsAnException) {
    client_.subscribes(eventFrame, "Frame");
    EXPECT_EQ(client_.exceptionOf(SubscribeRequest{300, "frame"}).first, SIMCONNECT_EXCEPTION_ALREADY_SUBSCRIBED);
    EXPECT_EQ(client_.exceptionOf(SubscribeRequest{eventFrame, "Sim"}).first, SIMCONNECT_EXCEPTION_EVENT_ID_DUPLICATE);
}

TEST_F(WorldAnswers, simTellsItsStateAtSubscriptionAndAtEachChange) {
    const auto states = [this] {
        std::vector<DWORD> data;
        for (const Received& record : client_.recordsOf(SIMCONNECT_RECV_ID_EVENT)) {
            EXPECT_EQ(record.dword(16), eventSim);
            data.push_back(record.dword(20));
        }
        return data;
    };
    client_.subscribes(eventSim, "Sim");
    frames(1);
    EXPECT_THAT(states(), ElementsAre(1));
    world_.play(PauseAct{});
    EXPECT_THAT(states(), ElementsAre(0));
    world_.play(ResumeAct{});
    EXPECT_THAT(states(), ElementsAre(1));

    world_.play(PauseAct{});
    WorldClient late(world_);
    late.subscribes(eventSim, "Sim");
    frames(1);
    EXPECT_EQ(late.recordsOf(SIMCONNECT_RECV_ID_EVENT).at(0).dword(20), 0u);
}

TEST_F(WorldAnswers, whileItIsPausedFramesGoOnAndNothingMoves) {
    client_.subscribes(eventFrame, "Frame");
    const DWORD id = client_.creates("KLM123", inTheAir());
    world_.play(PauseAct{});
    const LatLon before = world_.aircraft().at(id).position.place();
    const double time = world_.zulu().seconds;
    client_.records();
    frames(30);
    EXPECT_EQ(world_.aircraft().at(id).position.place(), before);
    EXPECT_EQ(world_.zulu().seconds, time);
    EXPECT_THAT(client_.recordsOf(SIMCONNECT_RECV_ID_EVENT_FRAME), SizeIs(30));
}

TEST_F(WorldAnswers, frameComesEachFrameWithItsRate) {
    client_.subscribes(eventFrame, "Frame");
    world_.play(FrameRateAct{60});
    frames(3);
    world_.step(2.0 / 60);
    const std::vector<Received> records = client_.recordsOf(SIMCONNECT_RECV_ID_EVENT_FRAME);
    ASSERT_THAT(records, SizeIs(4));
    EXPECT_EQ(records[0].bytes.size(), sizeof(SIMCONNECT_RECV_EVENT_FRAME));
    EXPECT_EQ(records[0].dword(16), eventFrame);
    EXPECT_EQ(records[0].float32(24), 60.0F);
    EXPECT_EQ(records[0].float32(28), 1.0F);
    EXPECT_EQ(records[3].float32(28), 2.0F);
}

TEST_F(WorldAnswers, theFrameRateStaysBetween5And120) {
    world_.play(FrameRateAct{1});
    EXPECT_EQ(world_.framesPerSecond(), 5);
    world_.play(FrameRateAct{500});
    EXPECT_EQ(world_.framesPerSecond(), 120);
}

TEST_F(WorldAnswers, positionChangedIsAnEvent) {
    client_.subscribes(eventPositionChanged, "PositionChanged");
    frames(1);
    world_.play(PositionChangedAct{});
    const std::vector<Received> records = client_.records();
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(records[0].id, SIMCONNECT_RECV_ID_EVENT);
    EXPECT_EQ(records[0].bytes.size(), sizeof(SIMCONNECT_RECV_EVENT));
    EXPECT_EQ(records[0].dword(16), eventPositionChanged);
}

TEST_F(WorldAnswers, flightLoadedNamesItsFile) {
    client_.subscribes(eventFlightLoaded, "FlightLoaded");
    frames(1);
    world_.play(LoadFlightAct{"C:\\flight.fxml"});
    world_.play(LoadFlightAct{std::string(300, 'x')});
    const std::vector<Received> records = client_.records();
    ASSERT_THAT(records, SizeIs(2));
    EXPECT_EQ(records[0].id, SIMCONNECT_RECV_ID_EVENT_FILENAME);
    EXPECT_EQ(records[0].bytes.size(), sizeof(SIMCONNECT_RECV_EVENT_FILENAME));
    EXPECT_EQ(records[0].dword(16), eventFlightLoaded);
    EXPECT_EQ(records[0].text(24), "C:\\flight.fxml");
    EXPECT_EQ(records[1].text(24), std::string(259, 'x'));
}

TEST_F(WorldAnswers, whoHasNotSubscribedHearsNothing) {
    world_.play(PositionChangedAct{});
    world_.play(LoadFlightAct{"file"});
    world_.play(PauseAct{});
    world_.play(ResumeAct{});
    client_.creates("KLM123", inTheAir());
    EXPECT_THAT(client_.records(), IsEmpty());
}

TEST_F(WorldAnswers, aStallAnswersNothingUntilItIsOver) {
    client_.subscribes(eventFrame, "Frame");
    frames(1);
    client_.records();
    const double simulated = world_.simulatedSeconds();
    world_.play(StallAct{2});
    client_.sends(request(definitionStaticData, 0, SIMCONNECT_PERIOD_ONCE));
    frames(59);
    EXPECT_TRUE(world_.isStalled());
    EXPECT_THAT(client_.records(), IsEmpty());
    EXPECT_EQ(world_.simulatedSeconds(), simulated);
    frames(3);
    EXPECT_FALSE(world_.isStalled());
    EXPECT_THAT(client_.recordsOf(SIMCONNECT_RECV_ID_SIMOBJECT_DATA), SizeIs(1));
    EXPECT_NEAR(world_.elapsedSeconds() - world_.simulatedSeconds(), 2, 0.05);
}

TEST_F(WorldAnswers, aQuitSaysSoClosesAndEndsTheWorld) {
    world_.play(QuitAct{});
    EXPECT_THAT(idsOf(client_.records()), ElementsAre(SIMCONNECT_RECV_ID_QUIT));
    EXPECT_TRUE(client_.isClosed());
    EXPECT_TRUE(world_.hasQuit());
    const double elapsed = world_.elapsedSeconds();
    frames(1);
    EXPECT_EQ(world_.elapsedSeconds(), elapsed);
}

TEST_F(WorldAnswers, aDroppedConnectionTakesTheClientsAircraftAway) {
    client_.creates("KLM123", inTheAir());
    world_.play(DropConnectionAct{});
    EXPECT_THAT(client_.records(), IsEmpty());
    EXPECT_TRUE(client_.isClosed());
    EXPECT_THAT(world_.aircraft(), IsEmpty());
    client_.sends(CreateAircraftRequest{"Airliner", "KLM123", inTheAir(), requestCreate});
    frames(1);
    EXPECT_THAT(world_.aircraft(), IsEmpty());
}

TEST_F(WorldAnswers, aFloodOfExceptionsIsAsManyAsTheSceneSays) {
    world_.play(ExceptionsAct{5000, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID});
    const std::vector<Received> records = client_.records();
    EXPECT_THAT(records, SizeIs(5000));
    EXPECT_THAT(idsOf(records), Each(SIMCONNECT_RECV_ID_EXCEPTION));
    EXPECT_EQ(records.back().dword(12), SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID);
}

TEST_F(WorldAnswers, aLyingRecordIsTheLastThatComes) {
    const struct {
        Lie lie;
        DWORD size;
    } table[] = {{Lie::badSize, 8}, {Lie::half, 24}, {Lie::zeroSize, 0}, {Lie::huge, 100'000'000}};
    for (const auto& row : table) {
        WorldClient client(world_);
        client.subscribes(eventFrame, "Frame");
        frames(1);
        client.records();
        world_.play(LyingRecordAct{row.lie});
        frames(3);
        EXPECT_THAT(client.records(), IsEmpty());
        EXPECT_TRUE(client.isClosed());
        EXPECT_EQ((Received{0, client.lyingTail()}).dword(0), row.size);
        EXPECT_EQ(client.lyingTail().size(), 12u);
    }
}

TEST_F(WorldAnswers, theUsersRecordHasItsPlaceTimeAndLights) {
    const std::pair<const char*, const char*> numbers[] = {
        {"Plane Latitude", "degree"},       {"Plane Longitude", "degree"}, {"Plane Heading degrees true", "radians"},
        {"Plane Alt Above Ground", "feet"}, {"Ground Velocity", "knots"},
    };
    for (const auto& [name, unit] : numbers) {
        client_.defines(definitionUserPosition, name, unit, SIMCONNECT_DATATYPE_FLOAT64);
    }
    const std::pair<const char*, const char*> wholeNumbers[] = {
        {"ZULU TIME", "Seconds"}, {"ZULU DAY OF YEAR", "Number"}, {"ZULU YEAR", "Number"}, {"LIGHT STATES", "Mask"}};
    for (const auto& [name, unit] : wholeNumbers) {
        client_.defines(definitionUserPosition, name, unit, SIMCONNECT_DATATYPE_INT64);
    }
    world_.user().controls.lights = lightNav | lightLogo;
    world_.user().position.headingRad = 2;
    frames(60);
    client_.records();

    const std::vector<Received> records = client_.asks(request(definitionUserPosition, 0, 1));

    ASSERT_THAT(records, SizeIs(1));
    const Received& data = records[0];
    EXPECT_EQ(data.bytes.size(), dataAt + 72);
    EXPECT_EQ(data.float64(dataAt), 52.3086);
    EXPECT_EQ(data.float64(dataAt + 8), 4.7639);
    EXPECT_EQ(data.float64(dataAt + 16), 2);
    EXPECT_EQ(data.float64(dataAt + 24), 10);
    EXPECT_EQ(data.float64(dataAt + 32), 0);
    EXPECT_EQ(data.int64(dataAt + 40), 12 * 3600 + 2);
    EXPECT_EQ(data.int64(dataAt + 48), 152);
    EXPECT_EQ(data.int64(dataAt + 56), 2026);
    EXPECT_EQ(data.int64(dataAt + 64), 0x101);
}
