#include "engine/aircraft_tables.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class AircraftTables : public testing::Test {
protected:
    AircraftTables() { resetAircraftTables(); }
    ~AircraftTables() override { resetAircraftTables(); }

    static void addLive(std::uint32_t hexid, const char* callsign, std::uint32_t objectId) {
        LiveAircraft& aircraft = liveTable.emplace_back();
        aircraft.hexid = hexid;
        aircraft.callsign = callsign;
        aircraft.objectId = objectId;
    }

    static void addStatic(std::uint32_t serial, std::uint32_t objectId) {
        AircraftRecord& aircraft = staticTable.emplace_back();
        aircraft.hexid = serial;
        aircraft.objectId = objectId;
    }

    static std::vector<std::uint32_t> liveHexids() {
        std::vector<std::uint32_t> ids;
        for (const LiveAircraft& aircraft : liveTable) {
            ids.push_back(aircraft.hexid);
        }
        return ids;
    }
};

TEST_F(AircraftTables, haveRoomForARunFromTheStart) {
    EXPECT_GE(liveTable.capacity(), 512U);
    EXPECT_GE(staticTable.capacity(), 256U);
    EXPECT_GE(addingStack.capacity(), 64U);
    EXPECT_GE(blockedGhosts.capacity(), 64U);
}

TEST_F(AircraftTables, theFirstHitWins) {
    addLive(20001, "SWR1", 5);
    addLive(20002, "SWR1", 6);
    EXPECT_EQ(findLiveByCallsign("SWR1")->hexid, 20001U);
    EXPECT_EQ(findLiveByHexid(20002)->objectId, 6U);
    EXPECT_EQ(findLiveByObjectId(6)->hexid, 20002U);
    EXPECT_EQ(findLiveByCallsign("SWR2"), nullptr);
    addLive(20002, "SWR3", 6);
    EXPECT_EQ(findLiveByHexid(20002)->callsign, "SWR1");
    EXPECT_EQ(findLiveByObjectId(6)->callsign, "SWR1");
}

TEST_F(AircraftTables, nothingHasObjectId0) {
    addLive(20001, "SWR1", 0);
    addStatic(17, 0);
    EXPECT_EQ(findLiveByObjectId(0), nullptr);
    EXPECT_EQ(findStaticByObjectId(0), nullptr);
    EXPECT_EQ(findAircraftByObjectId(0), nullptr);
}

TEST_F(AircraftTables, aLiveAircraftIsFoundBeforeAStaticOne) {
    addStatic(17, 40);
    addLive(20001, "SWR1", 40);
    EXPECT_EQ(findAircraftByObjectId(40)->hexid, 20001U);
    EXPECT_EQ(findAircraftByHexid(17)->objectId, 40U);
    EXPECT_EQ(findStaticByObjectId(40)->hexid, 17U);
    EXPECT_EQ(findAircraftByHexid(99), nullptr);
}

TEST_F(AircraftTables, compactionKeepsTheOrder) {
    for (std::uint32_t id = 20001; id <= 20006; ++id) {
        addLive(id, "", 0);
        liveTable.back().stream.pushBack(Sample{});
        liveTable.back().stream[0].slot = static_cast<int>(id);
    }
    liveTable[1].dropRecord = 1;
    liveTable[4].dropRecordQueued = 1;
    compactLiveTable();
    EXPECT_EQ(liveHexids(), (std::vector<std::uint32_t>{20001, 20003, 20004, 20006}));
    for (const LiveAircraft& aircraft : liveTable) {
        ASSERT_EQ(aircraft.stream.size(), 1U);
        EXPECT_EQ(aircraft.stream[0].slot, static_cast<int>(aircraft.hexid)) << "the samples go with their aircraft";
    }
}

TEST_F(AircraftTables, staticAircraftAreCompactedLikeLiveOnes) {
    addStatic(1, 0);
    addStatic(2, 0);
    addStatic(3, 0);
    staticTable[0].dropRecord = 1;
    staticTable[1].dropRecordQueued = 1;
    compactStaticTable();
    ASSERT_EQ(staticTable.size(), 1U);
    EXPECT_EQ(staticTable[0].hexid, 3U);
}

TEST_F(AircraftTables, aConfirmedRemovalMovesTheLastIntoTheGap) {
    for (std::uint32_t id = 20001; id <= 20004; ++id) {
        addLive(id, "", 0);
    }
    eraseBySwap(liveTable[1]);
    EXPECT_EQ(liveHexids(), (std::vector<std::uint32_t>{20001, 20004, 20003}));
    eraseBySwap(liveTable[2]);
    EXPECT_EQ(liveHexids(), (std::vector<std::uint32_t>{20001, 20004}));
    addStatic(1, 0);
    eraseStaticBySwap(staticTable[0]);
    EXPECT_TRUE(staticTable.empty());
}

} // namespace
