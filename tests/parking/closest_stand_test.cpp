// tests/parking/closest_stand_test.cpp
#include "parking/closest_stand.h"

#include <gmock/gmock.h>

#include <map>
#include <stdexcept>

#include "tests/support/log_capture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace {

/// A hundredth of a degree of latitude is 0.6 nm.
constexpr const char* stands = R"(<parkpositions>
    <parkpos id="far" latitude="0.03" longitude="0"/>
    <parkpos id="near" latitude="0.01" longitude="0"/>
    <parkpos id="as near" latitude="-0.01" longitude="0"/>
</parkpositions>)";

ClosestStand closestIn(std::string_view text) {
    writeFile("airport.xml", text);
    return lf_closestStandInFile("airport.xml", {0, 0});
}

/// Airport files by code, and a download server that has those whose path is not below "airports".
class StandOfAirport : public testing::Test {
protected:
    StandOfAirport() {
        setAirportFileAccess({[this](std::string_view icao) { return paths[std::string(icao)]; },
                              [this](const std::string& path, const fs::path& local) { return fetch(path, local); }});
    }
    ~StandOfAirport() override { setAirportFileAccess({}); }

    std::string fetch(const std::string& path, const fs::path& local) {
        fetched.push_back(path + " to " + local.generic_string());
        if (!server.contains(path)) {
            return "no such file";
        }
        writeFile(local, server[path]);
        return "";
    }

    double distanceOf(const char* code) { return gf_readDestApfForClosestStand(code, {0, 0}, id); }

    LogCapture log;
    std::map<std::string, std::string> paths;
    std::map<std::string, std::string> server;
    std::vector<std::string> fetched;
    std::string id;
};

} // namespace

TEST(ClosestStand, isTheNearestAndTheEarlierOfATie) {
    const LogCapture log;
    const ClosestStand closest = closestIn(stands);
    EXPECT_EQ(closest.id, "near");
    EXPECT_NEAR(closest.distanceNm, 0.6, 0.001);
}

TEST(ClosestStand, isNotLookedForBelowARoot) {
    const LogCapture log;
    const ClosestStand closest = closestIn(std::string("<root>") + stands + "</root>");
    EXPECT_EQ(closest.distanceNm, noStandNm);
    EXPECT_EQ(closest.id, "");
}

TEST(ClosestStand, isNoneInAFileThatDoesNotLoadOrHasNoStands) {
    const LogCapture log;
    EXPECT_EQ(closestIn("<parkpositions>").distanceNm, noStandNm);
    EXPECT_EQ(closestIn("<parkpositions/>").distanceNm, noStandNm);
    EXPECT_EQ(closestIn("<other/>").distanceNm, noStandNm);
    EXPECT_EQ(lf_closestStandInFile("none.xml", {0, 0}).distanceNm, noStandNm);
}

TEST(ClosestStand, isNoneInAFileThatBreaksOffBehindAStand) {
    const LogCapture log;
    const std::string whole = stands;
    const ClosestStand closest = closestIn(whole.substr(0, whole.rfind("</parkpositions>")));
    EXPECT_EQ(closest.distanceNm, noStandNm);
    EXPECT_EQ(closest.id, "");
}

TEST(ClosestStand, beyondAHundredMilesIsNone) {
    const LogCapture log;
    EXPECT_EQ(closestIn(R"(<parkpositions><parkpos id="x" latitude="2" longitude="0"/></parkpositions>)").id, "");
}

TEST(ClosestStand, leavesTheFileWhereItIs) {
    const LogCapture log;
    closestIn(stands);
    EXPECT_TRUE(fs::exists("airport.xml"));
}

TEST_F(StandOfAirport, isReadFromTheAirportsFileWhichStays) {
    paths["AAAA"] = "airports/my_thirdparty/AAAA.xml";
    writeFile(paths["AAAA"], stands);
    EXPECT_NEAR(distanceOf("AAAA"), 0.6, 0.001);
    EXPECT_EQ(id, "near");
    EXPECT_TRUE(fs::exists(paths["AAAA"]));
    EXPECT_THAT(fetched, IsEmpty());
}

TEST_F(StandOfAirport, isReadFromTheDownloadServersFileWhichGoesAgain) {
    paths["AAAA"] = "archive/stock/AAAA.xml";
    server[paths["AAAA"]] = stands;
    EXPECT_NEAR(distanceOf("AAAA"), 0.6, 0.001);
    EXPECT_EQ(id, "near");
    EXPECT_THAT(fetched, ElementsAre("archive/stock/AAAA.xml to airports/airport.xml"));
    EXPECT_FALSE(fs::exists("airports/airport.xml"));
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(StandOfAirport, aDownloadedFileGoesAlsoWhenItHasNoStandsOrDoesNotLoad) {
    paths["AAAA"] = "archive/stock/AAAA.xml";
    for (const char* text : {"<root><parkpositions/></root>", "<parkpositions>"}) {
        server[paths["AAAA"]] = text;
        EXPECT_EQ(distanceOf("AAAA"), noStandNm) << text;
        EXPECT_FALSE(fs::exists("airports/airport.xml")) << text;
    }
}

TEST_F(StandOfAirport, aUsersFileOfTheDownloadsNameStays) {
    paths["AAAA"] = "airports/airport.xml";
    for (const char* text : {stands, "<root><parkpositions/></root>", "<parkpositions>"}) {
        writeFile(paths["AAAA"], text);
        distanceOf("AAAA");
        EXPECT_EQ(readFile("airports/airport.xml"), text);
    }
}

TEST_F(StandOfAirport, isNoneWithoutAPathAndAfterADownloadThatFailed) {
    writeFile("airports/airport.xml", stands);
    EXPECT_EQ(distanceOf("AAAA"), noStandNm);
    paths["AAAA"] = "archive/stock/AAAA.xml";
    EXPECT_EQ(distanceOf("AAAA"), noStandNm);
    EXPECT_EQ(id, "");
    EXPECT_TRUE(fs::exists("airports/airport.xml"));
}

TEST_F(StandOfAirport, isNoneWhileNobodyKnowsAirportFiles) {
    setAirportFileAccess({});
    EXPECT_EQ(distanceOf("AAAA"), noStandNm);
    setAirportFileAccess({[](std::string_view) { return std::string("archive/stock/AAAA.xml"); }, nullptr});
    EXPECT_EQ(distanceOf("AAAA"), noStandNm);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(StandOfAirport, whatFailsIsToldAndCountsAsNone) {
    setAirportFileAccess({[](std::string_view) -> std::string { throw std::runtime_error("disk gone"); }, nullptr});
    EXPECT_EQ(distanceOf("AAAA"), noStandNm);
    EXPECT_THAT(log.lines(), ElementsAre("gf_readDestApfForClosestStand: disk gone"));
}
