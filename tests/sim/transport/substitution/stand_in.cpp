#include "tests/sim/transport/substitution/stand_in.h"

#include "sim/simconnect.h"

std::vector<std::string> callsOfStandIn;

namespace {

HRESULT called(const char* name) {
    callsOfStandIn.emplace_back(name);
    return S_OK;
}

} // namespace

HRESULT SimConnect_Open(HANDLE* handle, const char*, HWND, DWORD, HANDLE, DWORD) {
    *handle = &callsOfStandIn;
    return called("Open");
}

HRESULT SimConnect_Close(HANDLE) {
    return called("Close");
}

HRESULT SimConnect_CallDispatch(HANDLE, DispatchProc procedure, void* context) {
    SIMCONNECT_RECV quit{sizeof quit, 0, SIMCONNECT_RECV_ID_QUIT};
    procedure(&quit, sizeof quit, context);
    return called("CallDispatch");
}

HRESULT SimConnect_GetLastSentPacketID(HANDLE, DWORD* packetId) {
    *packetId = 17;
    return called("GetLastSentPacketID");
}

HRESULT SimConnect_SubscribeToSystemEvent(HANDLE, DWORD, const char*) {
    return called("SubscribeToSystemEvent");
}

HRESULT SimConnect_MapClientEventToSimEvent(HANDLE, DWORD, const char*) {
    return called("MapClientEventToSimEvent");
}

HRESULT SimConnect_AddClientEventToNotificationGroup(HANDLE, DWORD, DWORD, std::int32_t) {
    return called("AddClientEventToNotificationGroup");
}

HRESULT SimConnect_SetNotificationGroupPriority(HANDLE, DWORD, DWORD) {
    return called("SetNotificationGroupPriority");
}

HRESULT SimConnect_TransmitClientEvent(HANDLE, DWORD, DWORD, DWORD, DWORD, DWORD) {
    return called("TransmitClientEvent");
}

HRESULT SimConnect_AddToDataDefinition(HANDLE, DWORD, const char*, const char*, DWORD, float, DWORD) {
    return called("AddToDataDefinition");
}

HRESULT SimConnect_RequestDataOnSimObject(HANDLE, DWORD, DWORD, DWORD, DWORD, DWORD, DWORD, DWORD, DWORD) {
    return called("RequestDataOnSimObject");
}

HRESULT SimConnect_RequestDataOnSimObjectType(HANDLE, DWORD, DWORD, DWORD, DWORD) {
    return called("RequestDataOnSimObjectType");
}

HRESULT SimConnect_SetDataOnSimObject(HANDLE, DWORD, DWORD, DWORD, DWORD, DWORD, void*) {
    return called("SetDataOnSimObject");
}

HRESULT SimConnect_AICreateNonATCAircraft(HANDLE, const char*, const char*, SIMCONNECT_DATA_INITPOSITION, DWORD) {
    return called("AICreateNonATCAircraft");
}

HRESULT SimConnect_AIReleaseControl(HANDLE, DWORD, DWORD) {
    return called("AIReleaseControl");
}

HRESULT SimConnect_AIRemoveObject(HANDLE, DWORD, DWORD) {
    return called("AIRemoveObject");
}

HRESULT SimConnect_AISetAircraftFlightPlan(HANDLE, DWORD, const char*, DWORD) {
    return called("AISetAircraftFlightPlan");
}
