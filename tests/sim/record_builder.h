// tests/sim/record_builder.h
// Records as a simulator sends them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "sim/sim_ids.h"
#include "sim/simconnect.h"
#include "sim/user_state.h"

using Bytes = std::vector<std::byte>;

template <typename Value>
void append(Bytes& bytes, const Value& value) {
    const auto* const first = reinterpret_cast<const std::byte*>(&value);
    bytes.insert(bytes.end(), first, first + sizeof value);
}

/// Data of an answer, value behind value.
template <typename... Values>
Bytes dataOf(const Values&... values) {
    Bytes bytes;
    (append(bytes, values), ...);
    return bytes;
}

/// A text in a field of fixed size, filled with zeros.
inline Bytes fieldOf(std::string_view text, std::size_t fieldBytes) {
    Bytes bytes(fieldBytes, std::byte{0});
    std::memcpy(bytes.data(), text.data(), std::min(text.size(), fieldBytes));
    return bytes;
}

inline Bytes operator+(Bytes first, const Bytes& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

template <typename Record>
Bytes recordOf(Record record, SIMCONNECT_RECV_ID id, const Bytes& data = {}) {
    record.dwSize = static_cast<DWORD>(sizeof record + data.size());
    record.dwVersion = 1;
    record.dwID = id;
    Bytes bytes;
    append(bytes, record);
    return bytes + data;
}

inline Bytes exceptionRecord(DWORD exception, DWORD sendId = 0, DWORD index = 0) {
    SIMCONNECT_RECV_EXCEPTION record{};
    record.dwException = exception;
    record.dwSendID = sendId;
    record.dwIndex = index;
    return recordOf(record, SIMCONNECT_RECV_ID_EXCEPTION);
}

inline Bytes openRecord(std::string_view name) {
    SIMCONNECT_RECV_OPEN record{};
    std::memcpy(record.szApplicationName, name.data(), std::min(name.size(), sizeof record.szApplicationName));
    record.dwApplicationVersionMajor = 5;
    record.dwApplicationVersionMinor = 4;
    record.dwApplicationBuildMajor = 9;
    record.dwApplicationBuildMinor = 28482;
    return recordOf(record, SIMCONNECT_RECV_ID_OPEN);
}

inline Bytes quitRecord() {
    return recordOf(SIMCONNECT_RECV{}, SIMCONNECT_RECV_ID_QUIT);
}

inline Bytes eventRecord(DWORD eventId, DWORD data = 0) {
    SIMCONNECT_RECV_EVENT record{};
    record.uEventID = eventId;
    record.dwData = data;
    return recordOf(record, SIMCONNECT_RECV_ID_EVENT);
}

inline Bytes objectRecord(DWORD eventId, DWORD objectId,
                          SIMCONNECT_SIMOBJECT_TYPE type = SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT) {
    SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE record{};
    record.uEventID = eventId;
    record.dwData = objectId;
    record.eObjType = type;
    return recordOf(record, SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE);
}

inline Bytes fileNameRecord() {
    return recordOf(SIMCONNECT_RECV_EVENT_FILENAME{}, SIMCONNECT_RECV_ID_EVENT_FILENAME);
}

inline Bytes answerRecord(SimRequest request, DWORD objectId, const Bytes& data,
                          SIMCONNECT_RECV_ID id = SIMCONNECT_RECV_ID_SIMOBJECT_DATA) {
    SIMCONNECT_RECV_SIMOBJECT_DATA record{};
    record.dwRequestID = request;
    record.dwObjectID = objectId;
    return recordOf(record, id, data);
}

inline Bytes userPositionData(const UserState& state) {
    return dataOf(state.lat, state.lon, state.pitch, state.bank, state.heading, state.alt, state.altAboveGround,
                  state.groundSpeed, state.zuluSeconds, state.zuluDayOfYear, state.zuluYear, state.lightStates);
}

inline Bytes inRangeRecord(DWORD objectId, double altAboveGround, double groundAltitude, std::int64_t onGround,
                           std::string_view atcId) {
    return answerRecord(requestInRange, objectId, dataOf(altAboveGround, groundAltitude, onGround) + fieldOf(atcId, 32),
                        SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE);
}
