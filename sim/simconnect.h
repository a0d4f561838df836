// sim/simconnect.h
// The simulator vendor's client interface, as far as the program uses it: calls, enumerations and records under the
// names that the vendor gives them. Who defines the calls is decided when the program is linked: sim/transport/, the
// vendor's own library, or a simulated world. Nothing here depends on which of them it is. The calls on one handle may
// come from several threads side by side, but SimConnect_CallDispatch from one thread at a time, and SimConnect_Close
// alone, when all others have returned.
#pragma once

#include <cstddef>
#include <cstdint>

using DWORD = std::uint32_t;
using HRESULT = std::int32_t; ///< negative means failure
using HANDLE = void*;
using HWND = void*;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);

inline constexpr DWORD SIMCONNECT_UNUSED = 0xFFFFFFFF;
/// The user's aircraft in a request.
inline constexpr DWORD SIMCONNECT_OBJECT_ID_USER = 0;

enum SIMCONNECT_DATATYPE : DWORD {
    SIMCONNECT_DATATYPE_INVALID = 0,
    SIMCONNECT_DATATYPE_INT32 = 1,
    SIMCONNECT_DATATYPE_INT64 = 2,
    SIMCONNECT_DATATYPE_FLOAT32 = 3,
    SIMCONNECT_DATATYPE_FLOAT64 = 4,
    SIMCONNECT_DATATYPE_STRING8 = 5,
    SIMCONNECT_DATATYPE_STRING32 = 6,
    SIMCONNECT_DATATYPE_STRING64 = 7,
    SIMCONNECT_DATATYPE_STRING128 = 8,
    SIMCONNECT_DATATYPE_STRING256 = 9,
    SIMCONNECT_DATATYPE_STRING260 = 10,
    SIMCONNECT_DATATYPE_STRINGV = 11, ///< the characters and a zero byte
};

enum SIMCONNECT_PERIOD : DWORD {
    SIMCONNECT_PERIOD_NEVER = 0,
    SIMCONNECT_PERIOD_ONCE = 1,
    SIMCONNECT_PERIOD_VISUAL_FRAME = 2,
    SIMCONNECT_PERIOD_SIM_FRAME = 3,
    SIMCONNECT_PERIOD_SECOND = 4,
};

enum SIMCONNECT_SIMOBJECT_TYPE : DWORD {
    SIMCONNECT_SIMOBJECT_TYPE_USER = 0,
    SIMCONNECT_SIMOBJECT_TYPE_ALL = 1,
    SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT = 2,
    SIMCONNECT_SIMOBJECT_TYPE_HELICOPTER = 3,
    SIMCONNECT_SIMOBJECT_TYPE_BOAT = 4,
    SIMCONNECT_SIMOBJECT_TYPE_GROUND = 5,
};

enum SIMCONNECT_EXCEPTION : DWORD {
    SIMCONNECT_EXCEPTION_NONE = 0,
    SIMCONNECT_EXCEPTION_ERROR = 1,
    SIMCONNECT_EXCEPTION_SIZE_MISMATCH = 2,
    SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID = 3,
    SIMCONNECT_EXCEPTION_UNOPENED = 4,
    SIMCONNECT_EXCEPTION_VERSION_MISMATCH = 5,
    SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED = 7,
    SIMCONNECT_EXCEPTION_EVENT_ID_DUPLICATE = 9,
    SIMCONNECT_EXCEPTION_TOO_MANY_OBJECTS = 11,
    SIMCONNECT_EXCEPTION_TOO_MANY_REQUESTS = 12,
    SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE = 18,
    SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE = 19,
    SIMCONNECT_EXCEPTION_DATA_ERROR = 20,
    SIMCONNECT_EXCEPTION_INVALID_ARRAY = 21,
    SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED = 22,
    SIMCONNECT_EXCEPTION_LOAD_FLIGHTPLAN_FAILED = 23,
    SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE = 24,
    SIMCONNECT_EXCEPTION_ILLEGAL_OPERATION = 25,
    SIMCONNECT_EXCEPTION_ALREADY_SUBSCRIBED = 26,
    SIMCONNECT_EXCEPTION_INVALID_ENUM = 27,
    SIMCONNECT_EXCEPTION_DEFINITION_ERROR = 28,
    SIMCONNECT_EXCEPTION_DUPLICATE_ID = 29,
    SIMCONNECT_EXCEPTION_DATUM_ID = 30,
    SIMCONNECT_EXCEPTION_OUT_OF_BOUNDS = 31,
    SIMCONNECT_EXCEPTION_ALREADY_CREATED = 32,
    SIMCONNECT_EXCEPTION_OBJECT_OUTSIDE_REALITY_BUBBLE = 33,
};

enum SIMCONNECT_RECV_ID : DWORD {
    SIMCONNECT_RECV_ID_NULL = 0,
    SIMCONNECT_RECV_ID_EXCEPTION = 1,
    SIMCONNECT_RECV_ID_OPEN = 2,
    SIMCONNECT_RECV_ID_QUIT = 3,
    SIMCONNECT_RECV_ID_EVENT = 4,
    SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE = 5,
    SIMCONNECT_RECV_ID_EVENT_FILENAME = 6,
    SIMCONNECT_RECV_ID_EVENT_FRAME = 7,
    SIMCONNECT_RECV_ID_SIMOBJECT_DATA = 8,
    SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE = 9,
    SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID = 12,
};

#pragma pack(push, 1)

/// Head of every record from the simulator.
struct SIMCONNECT_RECV {
    DWORD dwSize;    ///< 0: of the whole record, bytes
    DWORD dwVersion; ///< 4
    DWORD dwID;      ///< 8: a SIMCONNECT_RECV_ID
};

struct SIMCONNECT_RECV_EXCEPTION : SIMCONNECT_RECV {
    DWORD dwException; ///< 12: a SIMCONNECT_EXCEPTION
    DWORD dwSendID;    ///< 16: packet id of the request that caused it
    DWORD dwIndex;     ///< 20: number of the parameter, SIMCONNECT_UNUSED when not known
};

struct SIMCONNECT_RECV_OPEN : SIMCONNECT_RECV {
    char szApplicationName[256];     ///< 12
    DWORD dwApplicationVersionMajor; ///< 268
    DWORD dwApplicationVersionMinor; ///< 272
    DWORD dwApplicationBuildMajor;   ///< 276
    DWORD dwApplicationBuildMinor;   ///< 280
    DWORD dwSimConnectVersionMajor;  ///< 284
    DWORD dwSimConnectVersionMinor;  ///< 288
    DWORD dwSimConnectBuildMajor;    ///< 292
    DWORD dwSimConnectBuildMinor;    ///< 296
    DWORD dwReserved1;               ///< 300
    DWORD dwReserved2;               ///< 304
};

struct SIMCONNECT_RECV_EVENT : SIMCONNECT_RECV {
    DWORD uGroupID; ///< 12
    DWORD uEventID; ///< 16
    DWORD dwData;   ///< 20
};

struct SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE : SIMCONNECT_RECV_EVENT { // dwData is the object id
    DWORD eObjType;                                                     ///< 24: a SIMCONNECT_SIMOBJECT_TYPE
};

struct SIMCONNECT_RECV_EVENT_FILENAME : SIMCONNECT_RECV_EVENT {
    char szFileName[260]; ///< 24
    DWORD dwFlags;        ///< 284
};

struct SIMCONNECT_RECV_EVENT_FRAME : SIMCONNECT_RECV_EVENT {
    float fFrameRate; ///< 24: frames a second
    float fSimSpeed;  ///< 28: times real time
};

/// Also the by-type answer. The data follows, in the order of the definition.
struct SIMCONNECT_RECV_SIMOBJECT_DATA : SIMCONNECT_RECV {
    DWORD dwRequestID;   ///< 12
    DWORD dwObjectID;    ///< 16
    DWORD dwDefineID;    ///< 20
    DWORD dwFlags;       ///< 24
    DWORD dwentrynumber; ///< 28: from 1 to dwoutof
    DWORD dwoutof;       ///< 32
    DWORD dwDefineCount; ///< 36: data elements
};

using SIMCONNECT_RECV_SIMOBJECT_DATA_BYTYPE = SIMCONNECT_RECV_SIMOBJECT_DATA;

struct SIMCONNECT_RECV_ASSIGNED_OBJECT_ID : SIMCONNECT_RECV {
    DWORD dwRequestID; ///< 12
    DWORD dwObjectID;  ///< 16
};

struct SIMCONNECT_DATA_INITPOSITION {
    double Latitude;  ///< 0: degrees
    double Longitude; ///< 8: degrees
    double Altitude;  ///< 16: feet
    double Pitch;     ///< 24: degrees
    double Bank;      ///< 32: degrees
    double Heading;   ///< 40: degrees
    DWORD OnGround;   ///< 48
    DWORD Airspeed;   ///< 52: knots
};

#pragma pack(pop)

static_assert(sizeof(SIMCONNECT_RECV) == 12);
static_assert(sizeof(SIMCONNECT_RECV_EXCEPTION) == 24);
static_assert(sizeof(SIMCONNECT_RECV_OPEN) == 308);
static_assert(sizeof(SIMCONNECT_RECV_EVENT) == 24);
static_assert(sizeof(SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE) == 28);
static_assert(sizeof(SIMCONNECT_RECV_EVENT_FILENAME) == 288);
static_assert(sizeof(SIMCONNECT_RECV_EVENT_FRAME) == 32);
static_assert(sizeof(SIMCONNECT_RECV_SIMOBJECT_DATA) == 40);
static_assert(sizeof(SIMCONNECT_RECV_ASSIGNED_OBJECT_ID) == 20);
static_assert(sizeof(SIMCONNECT_DATA_INITPOSITION) == 56);

extern "C" {

/// Runs on the thread that calls SimConnect_CallDispatch; must let no exception out.
using DispatchProc = void (*)(SIMCONNECT_RECV* record, DWORD recordBytes, void* context);

/// Waits while the host's addresses are looked up, as long as the system takes for that, and until one of them takes
/// the connection: a second and a half for all of them.
HRESULT SimConnect_Open(HANDLE* handle, const char* name, HWND window, DWORD userEventWin32, HANDLE event,
                        DWORD configIndex);
/// Waits at most a second, so that the last packets reach the simulator.
HRESULT SimConnect_Close(HANDLE handle);
/// Runs the procedure for every waiting record. Fails when the connection has, and every record that came before has
/// been given to the procedure.
HRESULT SimConnect_CallDispatch(HANDLE handle, DispatchProc procedure, void* context);
/// That of the last packet that this client has put on its way; it may not have gone yet.
HRESULT SimConnect_GetLastSentPacketID(HANDLE handle, DWORD* packetId);

HRESULT SimConnect_SubscribeToSystemEvent(HANDLE handle, DWORD eventId, const char* name);
HRESULT SimConnect_MapClientEventToSimEvent(HANDLE handle, DWORD eventId, const char* name);
HRESULT SimConnect_AddClientEventToNotificationGroup(HANDLE handle, DWORD groupId, DWORD eventId,
                                                     std::int32_t maskable);
HRESULT SimConnect_SetNotificationGroupPriority(HANDLE handle, DWORD groupId, DWORD priority);
HRESULT SimConnect_TransmitClientEvent(HANDLE handle, DWORD objectId, DWORD eventId, DWORD data, DWORD groupId,
                                       DWORD flags);

HRESULT SimConnect_AddToDataDefinition(HANDLE handle, DWORD defineId, const char* datumName, const char* unitsName,
                                       DWORD datumType, float epsilon, DWORD datumId);
HRESULT SimConnect_RequestDataOnSimObject(HANDLE handle, DWORD requestId, DWORD defineId, DWORD objectId, DWORD period,
                                          DWORD flags, DWORD origin, DWORD interval, DWORD limit);
HRESULT SimConnect_RequestDataOnSimObjectType(HANDLE handle, DWORD requestId, DWORD defineId, DWORD radiusMeters,
                                              DWORD objectType);
/// An arrayCount of 0 means one element.
HRESULT SimConnect_SetDataOnSimObject(HANDLE handle, DWORD defineId, DWORD objectId, DWORD flags, DWORD arrayCount,
                                      DWORD unitSize, void* data);

/// The tail number has 12 characters at most.
HRESULT SimConnect_AICreateNonATCAircraft(HANDLE handle, const char* title, const char* tailNumber,
                                          SIMCONNECT_DATA_INITPOSITION initPosition, DWORD requestId);
HRESULT SimConnect_AIReleaseControl(HANDLE handle, DWORD objectId, DWORD requestId);
HRESULT SimConnect_AIRemoveObject(HANDLE handle, DWORD objectId, DWORD requestId);
HRESULT SimConnect_AISetAircraftFlightPlan(HANDLE handle, DWORD objectId, const char* path, DWORD requestId);
}
