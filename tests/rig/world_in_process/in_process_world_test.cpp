#include "rig/world_in_process/in_process_world.h"

#include <gmock/gmock.h>

#include <cstring>
#include <thread>

#include "sim/sim_ids.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

struct Records {
    std::vector<DWORD> ids;
    std::vector<std::string> bytes;
    bool aligned = true;
};

void keepRecord(SIMCONNECT_RECV* record, DWORD recordBytes, void* context) {
    auto& records = *static_cast<Records*>(context);
    records.ids.push_back(record->dwID);
    records.bytes.emplace_back(reinterpret_cast<const char*>(record), recordBytes);
    records.aligned = records.aligned && reinterpret_cast<std::uintptr_t>(record) % 8 == 0;
}

rig::AircraftTitles someTitles() {
    rig::AircraftTitles titles;
    titles.addLines({"[fltsim.0]", "title=Airliner", "[General]", "atc_model=B738"});
    return titles;
}

class InProcessWorldFront : public ::testing::Test {
protected:
    ~InProcessWorldFront() override {
        if (client_ != nullptr) {
            SimConnect_Close(client_);
        }
    }

    HRESULT open() { return SimConnect_Open(&client_, "Tarnwing", nullptr, 0, nullptr, 0); }

    Records dispatched() {
        Records records;
        last_ = SimConnect_CallDispatch(client_, keepRecord, &records);
        return records;
    }

    /// The quit is still to be dispatched.
    void openAndQuit(rig::InProcessWorld& world) {
        ASSERT_EQ(open(), S_OK);
        world.frames(1);
        dispatched();
        world.play(rig::QuitAct{});
    }

    void createAircraft(const char* tailNumber) {
        SIMCONNECT_DATA_INITPOSITION position{};
        position.Latitude = 52.3;
        position.Longitude = 4.7;
        position.Altitude = 3000;
        ASSERT_EQ(SimConnect_AICreateNonATCAircraft(client_, "Airliner", tailNumber, position, 104), S_OK);
    }

    HANDLE client_ = nullptr;
    HRESULT last_ = S_OK;
};

} // namespace

TEST_F(InProcessWorldFront, withoutAWorldNothingOpens) {
    EXPECT_EQ(open(), E_FAIL);
    EXPECT_EQ(client_, nullptr);
}

TEST_F(InProcessWorldFront, aFramePutsTheOpenRecordInReach) {
    rig::InProcessWorld world;
    ASSERT_EQ(open(), S_OK);
    EXPECT_THAT(dispatched().ids, IsEmpty());

    world.frames(1);

    const Records records = dispatched();
    EXPECT_THAT(records.ids, ElementsAre(SIMCONNECT_RECV_ID_OPEN));
    EXPECT_EQ(records.bytes[0].size(), sizeof(SIMCONNECT_RECV_OPEN));
    EXPECT_STREQ(records.bytes[0].c_str() + 12, "Lockheed Martin Prepar3D v5");
    EXPECT_TRUE(records.aligned);
    EXPECT_EQ(last_, S_OK);
}

TEST_F(InProcessWorldFront, packetIdsCountTheCalls) {
    rig::InProcessWorld world;
    ASSERT_EQ(open(), S_OK);
    DWORD packetId = 0;
    EXPECT_EQ(SimConnect_GetLastSentPacketID(client_, &packetId), S_OK);
    EXPECT_EQ(packetId, 1u);
    EXPECT_EQ(SimConnect_AIRemoveObject(client_, 77, 105), S_OK);
    EXPECT_EQ(SimConnect_GetLastSentPacketID(client_, &packetId), S_OK);
    EXPECT_EQ(packetId, 2u);
}

TEST_F(InProcessWorldFront, anAircraftIsCreatedAndSeenAFewFramesLater) {
    rig::InProcessWorld world({}, someTitles());
    ASSERT_EQ(open(), S_OK);
    SimConnect_SubscribeToSystemEvent(client_, eventObjectAdded, "ObjectAdded");
    createAircraft("KLM123");
    world.frames(rig::framesUntilSeen - 1);
    EXPECT_THAT(dispatched().ids, ElementsAre(SIMCONNECT_RECV_ID_OPEN, SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID));

    world.frames(1);

    EXPECT_THAT(dispatched().ids, ElementsAre(SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE));
}

TEST_F(InProcessWorldFront, aProcedureMayCallTheSimulator) {
    rig::InProcessWorld world;
    ASSERT_EQ(open(), S_OK);
    world.frames(1);
    const auto subscribe = [](SIMCONNECT_RECV*, DWORD, void* client) {
        SimConnect_SubscribeToSystemEvent(client, eventSim, "Sim");
    };
    EXPECT_EQ(SimConnect_CallDispatch(client_, subscribe, client_), S_OK);
    world.frames(1);
    EXPECT_THAT(dispatched().ids, ElementsAre(SIMCONNECT_RECV_ID_EVENT));
}

TEST_F(InProcessWorldFront, aSimulatorThatQuitsSaysSoAndThenTheLinkFails) {
    rig::InProcessWorld world;
    openAndQuit(world);
    EXPECT_THAT(dispatched().ids, ElementsAre(SIMCONNECT_RECV_ID_QUIT));
    EXPECT_EQ(last_, E_FAIL);
    EXPECT_EQ(SimConnect_AIRemoveObject(client_, 7, 105), E_FAIL);
    HANDLE other = nullptr;
    EXPECT_EQ(SimConnect_Open(&other, "Tarnwing", nullptr, 0, nullptr, 0), E_FAIL);
}

TEST_F(InProcessWorldFront, theLinkWorksUntilTheClientHasSeenTheQuit) {
    rig::InProcessWorld world;
    openAndQuit(world);
    EXPECT_EQ(SimConnect_AIRemoveObject(client_, 7, 105), S_OK);
    const auto remove = [](SIMCONNECT_RECV* record, DWORD, void* client) {
        EXPECT_EQ(record->dwID, DWORD{SIMCONNECT_RECV_ID_QUIT});
        EXPECT_EQ(SimConnect_AIRemoveObject(client, 7, 105), S_OK);
    };
    EXPECT_EQ(SimConnect_CallDispatch(client_, remove, client_), E_FAIL);
    EXPECT_EQ(SimConnect_AIRemoveObject(client_, 7, 105), E_FAIL);
}

TEST_F(InProcessWorldFront, aDroppedConnectionFailsAndAnotherOneOpens) {
    rig::InProcessWorld world;
    ASSERT_EQ(open(), S_OK);
    world.play(rig::DropConnectionAct{});
    EXPECT_THAT(dispatched().ids, IsEmpty());
    EXPECT_EQ(last_, E_FAIL);
    EXPECT_EQ(SimConnect_Close(client_), S_OK);
    EXPECT_EQ(open(), S_OK);
}

TEST_F(InProcessWorldFront, aLyingRecordEndsTheLinkAsAFailedOne) {
    for (const rig::Lie lie : {rig::Lie::badSize, rig::Lie::half, rig::Lie::zeroSize, rig::Lie::huge}) {
        rig::InProcessWorld world;
        ASSERT_EQ(open(), S_OK);
        world.frames(1);
        world.play(rig::LyingRecordAct{lie});
        EXPECT_THAT(dispatched().ids, ElementsAre(SIMCONNECT_RECV_ID_OPEN));
        EXPECT_EQ(last_, E_FAIL);
        EXPECT_EQ(SimConnect_Close(client_), S_OK);
        client_ = nullptr;
    }
}

TEST_F(InProcessWorldFront, aHandleOutlivesItsWorld) {
    {
        rig::InProcessWorld world;
        ASSERT_EQ(open(), S_OK);
    }
    EXPECT_THAT(dispatched().ids, IsEmpty());
    EXPECT_EQ(last_, E_FAIL);
    EXPECT_EQ(SimConnect_AIRemoveObject(client_, 7, 105), E_FAIL);
    EXPECT_EQ(SimConnect_Close(client_), S_OK);
    EXPECT_EQ(SimConnect_Close(client_), E_INVALIDARG);
    client_ = nullptr;
}

TEST_F(InProcessWorldFront, textsThatNoPacketHoldsAreRefused) {
    rig::InProcessWorld world;
    ASSERT_EQ(open(), S_OK);
    const std::string longName(256, 'x');
    const std::string longPath(260, 'x');
    EXPECT_EQ(SimConnect_SubscribeToSystemEvent(client_, 1, longName.c_str()), E_INVALIDARG);
    EXPECT_EQ(SimConnect_MapClientEventToSimEvent(client_, 1, longName.c_str()), E_INVALIDARG);
    EXPECT_EQ(SimConnect_AddToDataDefinition(client_, 1, longName.c_str(), "feet", 4, 0, 0), E_INVALIDARG);
    EXPECT_EQ(SimConnect_AddToDataDefinition(client_, 1, nullptr, "feet", 4, 0, 0), E_INVALIDARG);
    EXPECT_EQ(SimConnect_AISetAircraftFlightPlan(client_, 1, longPath.c_str(), 110), E_INVALIDARG);
    EXPECT_EQ(SimConnect_AICreateNonATCAircraft(client_, "Airliner", "1234567890123", {}, 104), E_INVALIDARG);
    EXPECT_EQ(SimConnect_AICreateNonATCAircraft(client_, "Airliner", "123456789012", {}, 104), S_OK);
    EXPECT_EQ(SimConnect_SetDataOnSimObject(client_, 402, 1, 0, 0, 64, nullptr), E_INVALIDARG);
    EXPECT_EQ(SimConnect_AddToDataDefinition(client_, 1, "TITLE", nullptr, 11, 0, 0), S_OK);
}

TEST_F(InProcessWorldFront, callsWithoutAHandleAreRefused) {
    rig::InProcessWorld world;
    DWORD packetId = 0;
    EXPECT_EQ(SimConnect_Open(nullptr, "Tarnwing", nullptr, 0, nullptr, 0), E_INVALIDARG);
    EXPECT_EQ(SimConnect_Close(nullptr), E_INVALIDARG);
    EXPECT_EQ(SimConnect_CallDispatch(nullptr, keepRecord, nullptr), E_INVALIDARG);
    EXPECT_EQ(SimConnect_GetLastSentPacketID(nullptr, &packetId), E_INVALIDARG);
    EXPECT_EQ(SimConnect_AIReleaseControl(nullptr, 7, 103), E_INVALIDARG);
}

TEST_F(InProcessWorldFront, twoClientsHaveTheirOwnRecords) {
    rig::InProcessWorld world;
    ASSERT_EQ(open(), S_OK);
    HANDLE other = nullptr;
    ASSERT_EQ(SimConnect_Open(&other, "Other", nullptr, 0, nullptr, 0), S_OK);
    SimConnect_SubscribeToSystemEvent(other, eventFrame, "Frame");
    world.frames(2);
    EXPECT_THAT(dispatched().ids, ElementsAre(SIMCONNECT_RECV_ID_OPEN));
    Records others;
    EXPECT_EQ(SimConnect_CallDispatch(other, keepRecord, &others), S_OK);
    EXPECT_THAT(others.ids,
                ElementsAre(SIMCONNECT_RECV_ID_OPEN, SIMCONNECT_RECV_ID_EVENT_FRAME, SIMCONNECT_RECV_ID_EVENT_FRAME));
    EXPECT_EQ(SimConnect_Close(other), S_OK);
}

TEST(InProcessWorldThreads, framesDispatchAndCallsMayComeFromSeveralThreads) {
    rig::InProcessWorld world({}, someTitles());
    HANDLE client = nullptr;
    ASSERT_EQ(SimConnect_Open(&client, "Tarnwing", nullptr, 0, nullptr, 0), S_OK);
    SimConnect_SubscribeToSystemEvent(client, eventFrame, "Frame");
    constexpr int frames = 2000;
    std::jthread stepping([&] { world.frames(frames); });
    std::jthread calling([&] {
        for (int i = 0; i < frames; ++i) {
            SimConnect_AIReleaseControl(client, 999999, 103);
        }
    });
    Records records;
    while (std::count(records.ids.begin(), records.ids.end(), DWORD{SIMCONNECT_RECV_ID_EVENT_FRAME}) < frames) {
        ASSERT_EQ(SimConnect_CallDispatch(client, keepRecord, &records), S_OK);
    }
    calling.join();
    stepping.join();
    DWORD packetId = 0;
    EXPECT_EQ(SimConnect_GetLastSentPacketID(client, &packetId), S_OK);
    EXPECT_EQ(packetId, 2u + frames);
    EXPECT_EQ(SimConnect_Close(client), S_OK);
}
