// Where each field of the simulator's records lies.
#include <gtest/gtest.h>

#include <cstddef>

#include "sim/simconnect.h"

namespace {

template <typename Record, typename Owner, typename Field>
std::size_t offsetIn(Field Owner::*field) {
    alignas(8) const Record record{};
    const auto* const at = reinterpret_cast<const char*>(&(record.*field));
    return static_cast<std::size_t>(at - reinterpret_cast<const char*>(&record));
}

struct Row {
    const char* field;
    std::size_t offset;
    std::size_t expected;
};

#define FIELD(record, field, expected)                                                                                 \
    Row {                                                                                                              \
#record "::" #field, offsetIn < record>(&record::field), expected                                              \
    }

} // namespace

TEST(RecordLayout, everyFieldLiesWhereTheSimulatorPutsIt) {
    const Row rows[] = {
        FIELD(SIMCONNECT_RECV, dwSize, 0),
        FIELD(SIMCONNECT_RECV, dwVersion, 4),
        FIELD(SIMCONNECT_RECV, dwID, 8),
        FIELD(SIMCONNECT_RECV_EXCEPTION, dwID, 8),
        FIELD(SIMCONNECT_RECV_EXCEPTION, dwException, 12),
        FIELD(SIMCONNECT_RECV_EXCEPTION, dwSendID, 16),
        FIELD(SIMCONNECT_RECV_EXCEPTION, dwIndex, 20),
        FIELD(SIMCONNECT_RECV_OPEN, dwID, 8),
        FIELD(SIMCONNECT_RECV_OPEN, szApplicationName, 12),
        FIELD(SIMCONNECT_RECV_OPEN, dwApplicationVersionMajor, 268),
        FIELD(SIMCONNECT_RECV_OPEN, dwApplicationVersionMinor, 272),
        FIELD(SIMCONNECT_RECV_OPEN, dwApplicationBuildMajor, 276),
        FIELD(SIMCONNECT_RECV_OPEN, dwApplicationBuildMinor, 280),
        FIELD(SIMCONNECT_RECV_OPEN, dwSimConnectVersionMajor, 284),
        FIELD(SIMCONNECT_RECV_OPEN, dwSimConnectVersionMinor, 288),
        FIELD(SIMCONNECT_RECV_OPEN, dwSimConnectBuildMajor, 292),
        FIELD(SIMCONNECT_RECV_OPEN, dwSimConnectBuildMinor, 296),
        FIELD(SIMCONNECT_RECV_OPEN, dwReserved1, 300),
        FIELD(SIMCONNECT_RECV_OPEN, dwReserved2, 304),
        FIELD(SIMCONNECT_RECV_EVENT, dwID, 8),
        FIELD(SIMCONNECT_RECV_EVENT, uGroupID, 12),
        FIELD(SIMCONNECT_RECV_EVENT, uEventID, 16),
        FIELD(SIMCONNECT_RECV_EVENT, dwData, 20),
        FIELD(SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE, dwData, 20),
        FIELD(SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE, eObjType, 24),
        FIELD(SIMCONNECT_RECV_EVENT_FILENAME, dwData, 20),
        FIELD(SIMCONNECT_RECV_EVENT_FILENAME, szFileName, 24),
        FIELD(SIMCONNECT_RECV_EVENT_FILENAME, dwFlags, 284),
        FIELD(SIMCONNECT_RECV_EVENT_FRAME, dwData, 20),
        FIELD(SIMCONNECT_RECV_EVENT_FRAME, fFrameRate, 24),
        FIELD(SIMCONNECT_RECV_EVENT_FRAME, fSimSpeed, 28),
        FIELD(SIMCONNECT_RECV_SIMOBJECT_DATA, dwID, 8),
        FIELD(SIMCONNECT_RECV_SIMOBJECT_DATA, dwRequestID, 12),
        FIELD(SIMCONNECT_RECV_SIMOBJECT_DATA, dwObjectID, 16),
        FIELD(SIMCONNECT_RECV_SIMOBJECT_DATA, dwDefineID, 20),
        FIELD(SIMCONNECT_RECV_SIMOBJECT_DATA, dwFlags, 24),
        FIELD(SIMCONNECT_RECV_SIMOBJECT_DATA, dwentrynumber, 28),
        FIELD(SIMCONNECT_RECV_SIMOBJECT_DATA, dwoutof, 32),
        FIELD(SIMCONNECT_RECV_SIMOBJECT_DATA, dwDefineCount, 36),
        FIELD(SIMCONNECT_RECV_ASSIGNED_OBJECT_ID, dwID, 8),
        FIELD(SIMCONNECT_RECV_ASSIGNED_OBJECT_ID, dwRequestID, 12),
        FIELD(SIMCONNECT_RECV_ASSIGNED_OBJECT_ID, dwObjectID, 16),
        FIELD(SIMCONNECT_DATA_INITPOSITION, Latitude, 0),
        FIELD(SIMCONNECT_DATA_INITPOSITION, Longitude, 8),
        FIELD(SIMCONNECT_DATA_INITPOSITION, Altitude, 16),
        FIELD(SIMCONNECT_DATA_INITPOSITION, Pitch, 24),
        FIELD(SIMCONNECT_DATA_INITPOSITION, Bank, 32),
        FIELD(SIMCONNECT_DATA_INITPOSITION, Heading, 40),
        FIELD(SIMCONNECT_DATA_INITPOSITION, OnGround, 48),
        FIELD(SIMCONNECT_DATA_INITPOSITION, Airspeed, 52),
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.offset, row.expected) << row.field;
    }
}
