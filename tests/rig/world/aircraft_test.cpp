// The clients' aircraft: how they come, stand, move and go.
#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "rig/world/idle_motion.h"
#include "sim/sim_ids.h"
#include "tests/rig/world/world_client.h"
#include "tests/support/temporary_folder.h"

using namespace rig;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::SizeIs;

namespace {

class WorldAircraft : public ::testing::Test {
protected:
    WorldAircraft() { client_.declares(); }

    const WorldObject& aircraft(DWORD id) { return world_.aircraft().at(id); }

    void frames(int count) {
        for (int i = 0; i < count; ++i) {
            world_.step();
        }
    }

    World world_{groundScene(), airliner()};
    WorldClient client_{world_};
};

CreateAircraftRequest creation(std::string title = "Airliner") {
    return {std::move(title), "KLM123", inTheAir(), requestCreate};
}

} // namespace

TEST_F(WorldAircraft, anUnknownTitleIsRefusedWithThePacketIdOfItsRequest) {
    client_.sends(creation());
    const DWORD refused = client_.sends(creation("Unknown"));
    client_.sends(creation());
    world_.step();

    const std::vector<Received> exceptions = client_.recordsOf(SIMCONNECT_RECV_ID_EXCEPTION);

    ASSERT_THAT(exceptions, SizeIs(1));
    EXPECT_EQ(exceptions[0].bytes.size(), sizeof(SIMCONNECT_RECV_EXCEPTION));
    EXPECT_EQ(exceptions[0].dword(12), SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED);
    EXPECT_EQ(exceptions[0].dword(16), refused);
    EXPECT_THAT(world_.aircraft(), SizeIs(2));
}

TEST_F(WorldAircraft, aTitleThatTheSceneRefusesIsRefused) {
    world_.play(RefuseTitleAct{"Airliner"});
    EXPECT_EQ(client_.exceptionOf(creation()).first, SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED);
}

TEST_F(WorldAircraft, aCreationIsAnsweredWithTheObjectIdAndItsRequest) {
    const std::vector<Received> records = client_.asks(creation());
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(records[0].id, SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID);
    EXPECT_EQ(records[0].bytes.size(), sizeof(SIMCONNECT_RECV_ASSIGNED_OBJECT_ID));
    EXPECT_EQ(records[0].dword(12), requestCreate);
    EXPECT_EQ(records[0].dword(16), firstAircraftId);
}

TEST_F(WorldAircraft, objectIdsRiseAndAreAboveTheUsers) {
    const DWORD first = client_.creates("A", inTheAir());
    client_.asks(RemoveObjectRequest{first, requestRemove});
    const DWORD second = client_.creates("B", inTheAir());
    EXPECT_GT(first, userObjectId);
    EXPECT_GT(second, first);
}

TEST_F(WorldAircraft, appearsAFewFramesAfterItsCreation) {
    client_.subscribes(eventObjectAdded, "ObjectAdded");
    client_.sends(creation());
    for (int i = 1; i < framesUntilSeen; ++i) {
        world_.step();
        EXPECT_THAT(client_.recordsOf(SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE), IsEmpty());
    }

    world_.step();

    const std::vector<Received> events = client_.recordsOf(SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE);
    ASSERT_THAT(events, SizeIs(1));
    EXPECT_EQ(events[0].bytes.size(), sizeof(SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE));
    EXPECT_EQ(events[0].dword(16), eventObjectAdded);
    EXPECT_EQ(events[0].dword(20), firstAircraftId);
    EXPECT_EQ(events[0].dword(24), SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT);
}

TEST_F(WorldAircraft, cannotBeReachedBeforeItAppears) {
    client_.sends(creation());
    world_.step();
    EXPECT_EQ(client_.exceptionOf(ReleaseControlRequest{firstAircraftId, requestRelease}).first,
              SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID);
}

TEST_F(WorldAircraft, thatIsCreatedOnTheGroundStandsOnItsWheels) {
    const DWORD id = client_.createsHeld("KLM123", onTheGround());
    EXPECT_EQ(aircraft(id).position.altFeet, 109);
    EXPECT_EQ(aircraft(id).position.pitchRad, 0.01);
    EXPECT_NEAR(aircraft(id).position.headingRad, std::numbers::pi, 0.01); // nobody held it at first
}

TEST_F(WorldAircraft, beginsWhereItsCreationSays) {
    client_.sends(CreateAircraftRequest{"Airliner", "KLM123", {52.4, 4.8, 3000, -3, 10, 90, 0, 250}, requestCreate});
    world_.step();
    const Position& position = aircraft(firstAircraftId).position;
    EXPECT_NEAR(position.lat, 52.4, 1e-4); // nobody holds it yet
    EXPECT_NEAR(position.lon, 4.8, 1e-4);
    EXPECT_NEAR(position.altFeet, 3000, 1);
    EXPECT_NEAR(position.pitchRad, -3 * radiansPerDegree, 1e-12);
    EXPECT_NEAR(position.bankRad, 10 * radiansPerDegree, 1e-12);
    EXPECT_NEAR(position.headingRad, 90 * radiansPerDegree, 1e-3);
    EXPECT_EQ(position.trueKnots, 250);
}

TEST_F(WorldAircraft, aPlaceThatIsNowhereIsRefused) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const SIMCONNECT_DATA_INITPOSITION nowhere[] = {
        {91, 0, 0, 0, 0, 0, 0, 0},  {0, 181, 0, 0, 0, 0, 0, 0}, {nan, 0, 0, 0, 0, 0, 0, 0}, {0, nan, 0, 0, 0, 0, 0, 0},
        {0, 0, nan, 0, 0, 0, 0, 0}, {0, 0, 0, nan, 0, 0, 0, 0}, {0, 0, 0, 0, 0, nan, 0, 0},
    };
    for (const SIMCONNECT_DATA_INITPOSITION& position : nowhere) {
        EXPECT_EQ(client_.exceptionOf(CreateAircraftRequest{"Airliner", "A", position, requestCreate}).first,
                  SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED);
    }
}

TEST_F(WorldAircraft, aTailNumberHasTwelveCharactersAtMost) {
    EXPECT_EQ(client_.exceptionOf(CreateAircraftRequest{"Airliner", "123456789012", inTheAir(), requestCreate}).first,
              SIMCONNECT_EXCEPTION_NONE);
    EXPECT_EQ(client_.exceptionOf(CreateAircraftRequest{"Airliner", "1234567890123", inTheAir(), requestCreate}).first,
              SIMCONNECT_EXCEPTION_OUT_OF_BOUNDS);
}

TEST_F(WorldAircraft, moreThanAThousandAreTooMany) {
    for (int i = 0; i < 1000; ++i) {
        client_.sends(creation());
    }
    world_.step();
    EXPECT_THAT(client_.recordsOf(SIMCONNECT_RECV_ID_EXCEPTION), IsEmpty());
    EXPECT_EQ(client_.exceptionOf(creation()).first, SIMCONNECT_EXCEPTION_TOO_MANY_OBJECTS);
    world_.step();
    client_.asks(RemoveObjectRequest{firstAircraftId, requestRemove});
    EXPECT_EQ(client_.exceptionOf(creation()).first, SIMCONNECT_EXCEPTION_NONE);
}

TEST_F(WorldAircraft, isOnTheGroundWhenItsHeightSaysSo) {
    const DWORD id = client_.createsHeld("KLM123", onTheGround());
    const auto onGroundAt = [&](double altFeet) {
        client_.sends(
            SetDataRequest{definitionAiPosition, id, 0, 0, 64, doubles({52.31, 4.77, 0, 0, 0, altFeet, 0, 0})});
        const std::vector<Received> records =
            client_.asks(ObjectDataRequest{1, definitionObjectInRange, id, SIMCONNECT_PERIOD_ONCE, 0, 0, 0, 0});
        return std::pair(records.at(0).int64(dataAt + 16), records.at(0).float64(dataAt));
    };
    EXPECT_THAT(onGroundAt(109), Pair(1, 9));
    EXPECT_THAT(onGroundAt(109.4), Pair(1, ::testing::DoubleNear(9.4, 1e-9)));
    EXPECT_THAT(onGroundAt(110), Pair(0, 10));
    EXPECT_THAT(onGroundAt(90), Pair(1, -10));
    EXPECT_THAT(onGroundAt(1000), Pair(0, 900));
}

TEST_F(WorldAircraft, driftsSinksAndTurnsUnlessFrozenAndReleased) {
    const struct {
        bool released;
        bool frozen;
        bool moves;
    } table[] = {{false, false, true}, {true, false, true}, {false, true, true}, {true, true, false}};
    for (const auto& row : table) {
        const DWORD id = client_.creates("KLM123", inTheAir());
        if (row.released) {
            client_.sends(ReleaseControlRequest{id, requestRelease});
        }
        for (const DWORD freeze : {eventFreezeLatLon, eventFreezeAltitude, eventFreezeAttitude}) {
            client_.sendsEvent(id, freeze, row.frozen ? 1 : 0);
        }
        frames(1);
        const Position before = aircraft(id).position;
        frames(30);
        const Position& after = aircraft(id).position;
        EXPECT_EQ(greatCircleNm(after.place(), before.place()) * 3600 > 5, row.moves);
        EXPECT_EQ(before.altFeet - after.altFeet > 9, row.moves);
        EXPECT_EQ(after.headingRad - before.headingRad > 0.01, row.moves);
    }
}

TEST_F(WorldAircraft, eachFreezeHoldsItsOwnPartOfTheMotion) {
    for (const DWORD freeze : {eventFreezeLatLon, eventFreezeAltitude, eventFreezeAttitude}) {
        const DWORD id = client_.creates("KLM123", inTheAir());
        client_.sends(ReleaseControlRequest{id, requestRelease});
        client_.sendsEvent(id, freeze, 1);
        frames(1);
        const Position before = aircraft(id).position;
        frames(10);
        const Position& after = aircraft(id).position;
        EXPECT_EQ(after.place() == before.place(), freeze == eventFreezeLatLon);
        EXPECT_EQ(after.altFeet == before.altFeet, freeze == eventFreezeAltitude);
        EXPECT_EQ(after.headingRad == before.headingRad, freeze == eventFreezeAttitude);
    }
}

TEST_F(WorldAircraft, aFreezeThatIsTakenBackLetsItDriftAgain) {
    const DWORD id = client_.createsHeld("KLM123", inTheAir());
    client_.sendsEvent(id, eventFreezeAltitude, 0);
    frames(1);
    const double before = aircraft(id).position.altFeet;
    frames(30);
    EXPECT_NEAR(before - aircraft(id).position.altFeet, sinkFeetPerSecond, 0.01);
}

TEST_F(WorldAircraft, sinksNoDeeperThanTheGround) {
    SIMCONNECT_DATA_INITPOSITION low = onTheGround();
    low.OnGround = 0;
    low.Altitude = 120;
    const DWORD id = client_.creates("KLM123", low);
    frames(90);
    EXPECT_EQ(aircraft(id).position.altFeet, 109);
    frames(30);
    EXPECT_EQ(aircraft(id).position.altFeet, 109);
}

TEST_F(WorldAircraft, aPositionIsWrittenInTheOrderOfTheDefinition) {
    const DWORD id = client_.createsHeld("KLM123", inTheAir());
    client_.asks(SetDataRequest{definitionAiPosition, id, 0, 0, 64, doubles({50, 8, -0.1, 0.2, 3, 4000, -10, 250})});
    const Position& position = aircraft(id).position;
    EXPECT_EQ(position.lat, 50);
    EXPECT_EQ(position.lon, 8);
    EXPECT_EQ(position.pitchRad, -0.1);
    EXPECT_EQ(position.bankRad, 0.2);
    EXPECT_EQ(position.headingRad, 3);
    EXPECT_EQ(position.altFeet, 4000);
    EXPECT_EQ(position.verticalFeetPerSecond, -10);
    EXPECT_EQ(position.trueKnots, 250);
}

TEST_F(WorldAircraft, ofAnArrayOfPositionsTheLastOneStays) {
    const DWORD id = client_.createsHeld("KLM123", inTheAir());
    client_.asks(SetDataRequest{definitionAiPosition, id, 0, 2, 64,
                                doubles({50, 8, 0, 0, 0, 4000, 0, 250}) + doubles({51, 9, 0, 0, 0, 4000, 0, 250})});
    EXPECT_EQ(aircraft(id).position.place(), (LatLon{51, 9}));
}

TEST_F(WorldAircraft, aWriteOfAnotherSizeIsRefusedAndChangesNothing) {
    const DWORD id = client_.createsHeld("KLM123", inTheAir());
    const LatLon before = aircraft(id).position.place();
    const std::string eight = doubles({50, 8, 0, 0, 0, 4000, 0, 250});
    const SetDataRequest wrong[] = {
        {definitionAiPosition, id, 0, 0, 56, eight.substr(8)},
        {definitionAiPosition, id, 0, 0, 72, eight + eight.substr(56)},
        {definitionAiPosition, id, 0, 0, 64, eight.substr(8)},
        {definitionAiPosition, id, 0, 2, 64, eight},
        {definitionAiPosition, id, 0, 0, 0, ""},
        {definitionAiPosition, id, 0, 0, 0, eight},
    };
    for (const SetDataRequest& request : wrong) {
        EXPECT_EQ(client_.exceptionOf(request).first, SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE);
    }
    EXPECT_EQ(aircraft(id).position.place(), before);
}

TEST_F(WorldAircraft, aWriteThatIsNoNumberIsRefusedAndChangesNothing) {
    const DWORD id = client_.createsHeld("KLM123", inTheAir());
    const LatLon before = aircraft(id).position.place();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double infinite = std::numeric_limits<double>::infinity();
    EXPECT_EQ(
        client_
            .exceptionOf(SetDataRequest{definitionAiPosition, id, 0, 0, 64, doubles({50, 8, nan, 0, 0, 4000, 0, 250})})
            .first,
        SIMCONNECT_EXCEPTION_DATA_ERROR);
    EXPECT_EQ(client_
                  .exceptionOf(
                      SetDataRequest{definitionAiPosition, id, 0, 0, 64, doubles({50, 8, 0, 0, 0, infinite, 0, 250})})
                  .first,
              SIMCONNECT_EXCEPTION_DATA_ERROR);
    EXPECT_EQ(
        client_
            .exceptionOf(SetDataRequest{definitionAiPosition, id, 0, 0, 64, doubles({50, 8, 0, 0, 0, 1e300, 0, 250})})
            .first,
        SIMCONNECT_EXCEPTION_OUT_OF_BOUNDS);
    EXPECT_EQ(aircraft(id).position.place(), before);
}

TEST_F(WorldAircraft, whatIsOnlyReadCannotBeWritten) {
    const DWORD id = client_.createsHeld("KLM123", inTheAir());
    EXPECT_EQ(client_.exceptionOf(SetDataRequest{definitionStaticData, id, 0, 0, 16, doubles({1, 2})}).first,
              SIMCONNECT_EXCEPTION_DATA_ERROR);
    EXPECT_EQ(client_.exceptionOf(SetDataRequest{definitionAiPosition, id, 1, 0, 64, std::string(64, '\0')}).first,
              SIMCONNECT_EXCEPTION_ILLEGAL_OPERATION);
}

TEST_F(WorldAircraft, goesWithObjectRemoved) {
    client_.subscribes(eventObjectRemoved, "ObjectRemoved");
    const DWORD id = client_.creates("KLM123", inTheAir());

    const std::vector<Received> records = client_.asks(RemoveObjectRequest{id, requestRemove});

    ASSERT_THAT(records, SizeIs(1));
    EXPECT_EQ(records[0].id, SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE);
    EXPECT_EQ(records[0].dword(16), eventObjectRemoved);
    EXPECT_EQ(records[0].dword(20), id);
    EXPECT_THAT(world_.aircraft(), IsEmpty());
}

TEST_F(WorldAircraft, goesWithItsClientAndTheOthersLearnOfIt) {
    client_.subscribes(eventObjectRemoved, "ObjectRemoved");
    world_.step();
    {
        WorldClient other(world_);
        other.creates("OTHER", inTheAir());
        ASSERT_THAT(world_.aircraft(), SizeIs(1));
    }
    EXPECT_THAT(world_.aircraft(), IsEmpty());
    EXPECT_THAT(client_.recordsOf(SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE), SizeIs(1));
}

TEST_F(WorldAircraft, thatNobodyHasSeenGoesWithoutAWord) {
    client_.subscribes(eventObjectRemoved, "ObjectRemoved");
    world_.step();
    {
        WorldClient other(world_);
        other.sends(creation());
        world_.step();
        ASSERT_THAT(world_.aircraft(), SizeIs(1));
    }
    EXPECT_THAT(world_.aircraft(), IsEmpty());
    EXPECT_THAT(client_.records(), IsEmpty());
}

TEST_F(WorldAircraft, anUnknownObjectIdIsAnException) {
    constexpr DWORD unknown = 4711;
    const Request requests[] = {
        TransmitClientEventRequest{unknown, eventGear, 1, notificationGroup, 0},
        ObjectDataRequest{1, definitionStaticData, unknown, SIMCONNECT_PERIOD_ONCE, 0, 0, 0, 0},
        SetDataRequest{definitionAiPosition, unknown, 0, 0, 64, std::string(64, '\0')},
        ReleaseControlRequest{unknown, requestRelease},
        RemoveObjectRequest{unknown, requestRemove},
        FlightPlanRequest{unknown, "plan.pln", requestFlightPlan},
    };
    for (const Request& request : requests) {
        EXPECT_EQ(client_.exceptionOf(request).first, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID) << request.index();
    }
}

TEST_F(WorldAircraft, theUsersAndOthersAircraftAreNotTheClients) {
    WorldClient other(world_);
    const DWORD foreign = other.creates("OTHER", inTheAir());
    for (const DWORD id : {DWORD{0}, userObjectId, foreign}) {
        EXPECT_EQ(client_.exceptionOf(RemoveObjectRequest{id, requestRemove}).first,
                  SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE);
        EXPECT_EQ(client_.exceptionOf(ReleaseControlRequest{id, requestRelease}).first,
                  SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE);
    }
    EXPECT_THAT(world_.aircraft(), SizeIs(1));
}

TEST_F(WorldAircraft, ofAnotherAddOnStandsStillAndIsSeenByAll) {
    client_.subscribes(eventObjectAdded, "ObjectAdded");
    ForeignObjectAct act;
    act.title = "Airliner";
    act.tailNumber = "N1";
    act.at = {52.31, 4.77};
    world_.play(act);
    frames(framesUntilSeen);
    EXPECT_THAT(client_.recordsOf(SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE), SizeIs(1));
    const WorldObject& foreign = world_.aircraft().begin()->second;
    EXPECT_EQ(foreign.tailNumber, "N1");
    EXPECT_EQ(foreign.position.altFeet, 109);
    frames(30);
    EXPECT_EQ(foreign.position.place(), act.at);
}

TEST_F(WorldAircraft, aFlightPlanIsTakenWhenItsFileExists) {
    const TemporaryFolder folder;
    writeFile("plan.pln", "plan");
    const DWORD id = client_.createsHeld("KLM123", inTheAir());
    EXPECT_EQ(client_.exceptionOf(FlightPlanRequest{id, "missing.pln", requestFlightPlan}).first,
              SIMCONNECT_EXCEPTION_LOAD_FLIGHTPLAN_FAILED);
    EXPECT_EQ(client_.exceptionOf(FlightPlanRequest{id, "\xFF\xFE", requestFlightPlan}).first,
              SIMCONNECT_EXCEPTION_LOAD_FLIGHTPLAN_FAILED);
    EXPECT_EQ(client_.exceptionOf(FlightPlanRequest{id, "plan.pln", requestFlightPlan}).first,
              SIMCONNECT_EXCEPTION_NONE);
    EXPECT_EQ(aircraft(id).flightPlan, "plan.pln");
}

TEST_F(WorldAircraft, aFlightPlanOfAClientUnderWineIsFoundBelowItsDriveC) {
    const TemporaryFolder folder;
    writeFile("drive/users/pilot/1.pln", "plan");
    const DWORD id = client_.createsHeld("KLM123", inTheAir());
    const FlightPlanRequest request{id, "C:\\users\\pilot\\1.pln", requestFlightPlan};
    EXPECT_EQ(client_.exceptionOf(request).first, SIMCONNECT_EXCEPTION_LOAD_FLIGHTPLAN_FAILED);
    world_.setDriveC("drive");
    EXPECT_EQ(client_.exceptionOf(request).first, SIMCONNECT_EXCEPTION_NONE);
    EXPECT_EQ(client_.exceptionOf(FlightPlanRequest{id, "C:\\users\\pilot\\2.pln", requestFlightPlan}).first,
              SIMCONNECT_EXCEPTION_LOAD_FLIGHTPLAN_FAILED);
}

TEST_F(WorldAircraft, theSameRequestsInTheSameFramesGiveTheSameWorld) {
    const auto positions = [] {
        World world(groundScene(), airliner());
        WorldClient client(world);
        for (int i = 0; i < 20; ++i) {
            client.sends(CreateAircraftRequest{"Airliner", "A", {50.0 + i, 8, 1000.0 * i, 0, 0, 17.0 * i, 0, 0}, 1});
            world.step(0.01 * (i % 5 + 1));
        }
        std::vector<double> values;
        for (const auto& [id, object] : world.aircraft()) {
            values.insert(values.end(), {object.position.lat, object.position.lon, object.position.altFeet,
                                         object.position.headingRad});
        }
        return values;
    };
    EXPECT_EQ(positions(), positions());
}
