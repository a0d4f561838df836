// sim/object_data.h
// The simulator's answers to requests for data, and the objects that it has just added. SimClient only.
#pragma once

#include <cstdint>
#include <vector>

#include "sim/record_reader.h"
#include "sim/simconnect.h"

/// Object ids that the simulator has added and not yet described.
extern std::vector<std::uint32_t> addedObjects;

/// Takes an id out of addedObjects; whether it was there.
bool takeAddedObject(std::uint32_t objectId);

/// The answer to a request for one object. Data that are too short, or make no sense, are one error line. Throws
/// kvd::UserErrorException as onUserModel does.
void onObjectData(const SIMCONNECT_RECV_SIMOBJECT_DATA& answer, RecordBytes data);

/// The same for one object of all that are in range.
void onObjectDataByType(const SIMCONNECT_RECV_SIMOBJECT_DATA_BYTYPE& answer, RecordBytes data);

void resetObjectData();
