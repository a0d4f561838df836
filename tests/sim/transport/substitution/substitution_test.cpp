// Another library than sim/transport/ may define the simulator's calls: this program links one, and its calls arrive
// there.
#include <gmock/gmock.h>

#include "sim/simconnect.h"
#include "tests/sim/transport/substitution/stand_in.h"

using ::testing::ElementsAre;

TEST(Substitution, everyCallReachesTheLibraryThatIsLinkedIn) {
    HANDLE handle = nullptr;
    DWORD packetId = 0;
    DWORD dispatched = SIMCONNECT_RECV_ID_NULL;
    double data = 0;

    SimConnect_Open(&handle, "Tarnwing", nullptr, 0, nullptr, 0);
    SimConnect_SubscribeToSystemEvent(handle, 1, "Sim");
    SimConnect_MapClientEventToSimEvent(handle, 1, "GEAR_UP");
    SimConnect_AddClientEventToNotificationGroup(handle, 1, 1, 0);
    SimConnect_SetNotificationGroupPriority(handle, 1, 1);
    SimConnect_TransmitClientEvent(handle, 1, 1, 0, 1, 0);
    SimConnect_AddToDataDefinition(handle, 1, "PLANE LATITUDE", "degrees", SIMCONNECT_DATATYPE_FLOAT64, 0, 0);
    SimConnect_RequestDataOnSimObject(handle, 1, 1, 0, SIMCONNECT_PERIOD_SECOND, 0, 0, 0, 0);
    SimConnect_RequestDataOnSimObjectType(handle, 1, 1, 1000, SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT);
    SimConnect_SetDataOnSimObject(handle, 1, 1, 0, 0, sizeof data, &data);
    SimConnect_AICreateNonATCAircraft(handle, "title", "PH-EXF", {}, 1);
    SimConnect_AIReleaseControl(handle, 1, 1);
    SimConnect_AIRemoveObject(handle, 1, 1);
    SimConnect_AISetAircraftFlightPlan(handle, 1, "plan", 1);
    SimConnect_GetLastSentPacketID(handle, &packetId);
    SimConnect_CallDispatch(
        handle, [](SIMCONNECT_RECV* record, DWORD, void* context) { *static_cast<DWORD*>(context) = record->dwID; },
        &dispatched);
    SimConnect_Close(handle);

    EXPECT_EQ(handle, &callsOfStandIn);
    EXPECT_EQ(packetId, 17u);
    EXPECT_EQ(dispatched, SIMCONNECT_RECV_ID_QUIT);
    EXPECT_THAT(callsOfStandIn,
                ElementsAre("Open", "SubscribeToSystemEvent", "MapClientEventToSimEvent",
                            "AddClientEventToNotificationGroup", "SetNotificationGroupPriority", "TransmitClientEvent",
                            "AddToDataDefinition", "RequestDataOnSimObject", "RequestDataOnSimObjectType",
                            "SetDataOnSimObject", "AICreateNonATCAircraft", "AIReleaseControl", "AIRemoveObject",
                            "AISetAircraftFlightPlan", "GetLastSentPacketID", "CallDispatch", "Close"));
}
