// engine/aircraft_tables.h
// All aircraft of a run. Engine thread only, so there is no lock.
// Elements move: code keeps a hexid or an object id across a tick, never a pointer.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/aircraft_record.h"
#include "engine/live_aircraft.h"

extern std::vector<LiveAircraft> liveTable;
extern std::vector<AircraftRecord> staticTable;
/// The hexids of aircraft whose create request waits.
extern std::vector<std::uint32_t> addingStack;
/// Call signs of ghosts that were removed; a ghost of one of these names is never spawned again.
extern std::vector<std::string> blockedGhosts;

// Look-ups scan from the front; the first hit wins. Nothing found is a null pointer, and no record has object id 0.

LiveAircraft* findLiveByHexid(std::uint32_t hexid);
LiveAircraft* findLiveByCallsign(std::string_view callsign);
LiveAircraft* findLiveByObjectId(std::uint32_t objectId);
AircraftRecord* findStaticByHexid(std::uint32_t hexid);
AircraftRecord* findStaticByObjectId(std::uint32_t objectId);
/// Among the live aircraft first, then among the static ones.
AircraftRecord* findAircraftByHexid(std::uint32_t hexid);
AircraftRecord* findAircraftByObjectId(std::uint32_t objectId);

// The two roads by which a record leaves a table.

/// Whether it is marked with dropRecord or dropRecordQueued.
bool isDropped(const AircraftRecord& aircraft);
/// Erases the live aircraft that are so marked; the others keep their order.
void compactLiveTable();
/// The same for the static ones.
void compactStaticTable();
/// Erases one element by moving the last into its place. The element must be of that table.
void eraseBySwap(LiveAircraft& aircraft);
void eraseStaticBySwap(AircraftRecord& aircraft);

/// All tables empty, with room for as many as a run usually has.
void resetAircraftTables();
