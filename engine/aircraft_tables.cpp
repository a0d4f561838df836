// engine/aircraft_tables.cpp
#include "engine/aircraft_tables.h"

#include <algorithm>
#include <utility>

std::vector<LiveAircraft> liveTable;
std::vector<AircraftRecord> staticTable;
std::vector<std::uint32_t> addingStack;
std::vector<std::string> blockedGhosts;

namespace {

constexpr std::size_t usualLive = 512;
constexpr std::size_t usualStatic = 256;
constexpr std::size_t usualAdding = 64;
constexpr std::size_t usualGhosts = 64;

template <typename Record, typename Matches>
Record* find(std::vector<Record>& table, Matches matches) {
    const auto found = std::find_if(table.begin(), table.end(), matches);
    return found == table.end() ? nullptr : &*found;
}

auto hasHexid(std::uint32_t hexid) {
    return [hexid](const AircraftRecord& aircraft) { return aircraft.hexid == hexid; };
}

auto hasObjectId(std::uint32_t objectId) {
    // 0 is what a record without an object holds.
    return [objectId](const AircraftRecord& aircraft) { return objectId != 0 && aircraft.objectId == objectId; };
}

template <typename Record>
void eraseSwapping(std::vector<Record>& table, Record& element) {
    if (&element != &table.back()) {
        element = std::move(table.back());
    }
    table.pop_back();
}

template <typename Element>
void emptyWithRoom(std::vector<Element>& table, std::size_t room) {
    table.clear();
    table.reserve(room);
}

} // namespace

LiveAircraft* findLiveByHexid(std::uint32_t hexid) {
    return find(liveTable, hasHexid(hexid));
}

LiveAircraft* findLiveByCallsign(std::string_view callsign) {
    return find(liveTable, [callsign](const LiveAircraft& aircraft) { return aircraft.callsign == callsign; });
}

LiveAircraft* findLiveByObjectId(std::uint32_t objectId) {
    return find(liveTable, hasObjectId(objectId));
}

AircraftRecord* findStaticByHexid(std::uint32_t hexid) {
    return find(staticTable, hasHexid(hexid));
}

AircraftRecord* findStaticByObjectId(std::uint32_t objectId) {
    return find(staticTable, hasObjectId(objectId));
}

AircraftRecord* findAircraftByHexid(std::uint32_t hexid) {
    LiveAircraft* live = findLiveByHexid(hexid);
    return live != nullptr ? live : findStaticByHexid(hexid);
}

AircraftRecord* findAircraftByObjectId(std::uint32_t objectId) {
    LiveAircraft* live = findLiveByObjectId(objectId);
    return live != nullptr ? live : findStaticByObjectId(objectId);
}

bool isDropped(const AircraftRecord& aircraft) {
    return aircraft.dropRecord != 0 || aircraft.dropRecordQueued != 0;
}

void compactLiveTable() {
    std::erase_if(liveTable, isDropped);
}

void compactStaticTable() {
    std::erase_if(staticTable, isDropped);
}

void eraseBySwap(LiveAircraft& aircraft) {
    eraseSwapping(liveTable, aircraft);
}

void eraseStaticBySwap(AircraftRecord& aircraft) {
    eraseSwapping(staticTable, aircraft);
}

void resetAircraftTables() {
    emptyWithRoom(liveTable, usualLive);
    emptyWithRoom(staticTable, usualStatic);
    emptyWithRoom(addingStack, usualAdding);
    emptyWithRoom(blockedGhosts, usualGhosts);
}
