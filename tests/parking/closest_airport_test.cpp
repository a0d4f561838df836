// tests/parking/closest_airport_test.cpp
#include "parking/closest_airport.h"

#include <gmock/gmock.h>
#include <random>

#include <fmt/format.h>

#include "tests/support/log_capture.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace {

class ClosestAirport : public testing::Test {
protected:
    ClosestAirport() { resetAirportDirectory(); }
    ~ClosestAirport() override {
        setAirportFileAccess({});
        resetAirportDirectory();
    }

    /// So many nautical miles north of the equator at longitude 0.
    static LatLon north(double nm) { return {nm / (earthDiameterNm / 2) * degreesPerRadian, 0}; }
    static Airport airportAt(const char* code, const LatLon& position) {
        return {code, "", position.lat, position.lon, 0, 0};
    }
    static std::string closestCode(const LatLon& position) {
        const auto airport = closest_airport(position);
        return airport ? airport->code : "none";
    }

    LogCapture log;
};

const Airport best{"AAAA", "", 0, 0, 0, 0};
const Airport neighbour{"BBBB", "", 0, 0, 0, 0};

} // namespace

TEST_F(ClosestAirport, isNoneInAnEmptyDirectory) {
    EXPECT_FALSE(closest_airport({52, 4}));
}

TEST_F(ClosestAirport, aPositionExactlyFiveMilesAwayQualifies) {
    // An airport whose distance comes out as 5.0 to the last bit.
    double lat = north(5.0).lat;
    for (int i = -100; i <= 100 && greatCircleNm({0, 0}, {lat, 0}) != 5.0; ++i) {
        lat = north(5.0).lat * (1 + i * 1e-16);
    }
    ASSERT_EQ(greatCircleNm({0, 0}, {lat, 0}), 5.0);
    gAirports = {airportAt("AAAA", {lat, 0})};
    EXPECT_EQ(closestCode({0, 0}), "AAAA");
}

TEST_F(ClosestAirport, aPositionBeyondFiveMilesFromEveryAirportYieldsNoResult) {
    gAirports = {airportAt("AAAA", north(5.01)), airportAt("BBBB", north(-5.01))};
    EXPECT_EQ(closestCode({0, 0}), "none");
}

TEST_F(ClosestAirport, theOneAirportInReachIsTheResultWithoutAWord) {
    gAirports = {airportAt("AAAA", north(4)), airportAt("BBBB", north(60))};
    EXPECT_EQ(closestCode({0, 0}), "AAAA");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ClosestAirport, theFartherListedFirstBecomesTheNeighbour) {
    gAirports = {airportAt("AAAA", north(4)), airportAt("BBBB", north(-2))};
    EXPECT_EQ(closestCode({0, 0}), "BBBB");
    EXPECT_THAT(log.lines(), ElementsAre("Airport BBBB is closest, neighbour is AAAA"));
}

TEST_F(ClosestAirport, theFartherListedLaterNeverQualifies) {
    gAirports = {airportAt("AAAA", north(2)), airportAt("BBBB", north(-4))};
    EXPECT_EQ(closestCode({0, 0}), "AAAA");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(ClosestAirport, theNeighbourIsTheOneThatHeldTheLeadLast) {
    gAirports = {airportAt("AAAA", north(4)), airportAt("BBBB", north(1)), airportAt("CCCC", north(2))};
    closest_airport({0, 0});
    EXPECT_THAT(log.lines(), ElementsAre("Airport BBBB is closest, neighbour is AAAA"));
}

TEST_F(ClosestAirport, ofTwoNeighboursTheOneWithTheNearerStandIsTheResult) {
    gAirports = {airportAt("AAAA", north(4)), airportAt("BBBB", north(-2))};
    std::vector<std::string> asked;
    setAirportFileAccess({[&asked](std::string_view icao) {
                              asked.emplace_back(icao);
                              return fmt::format("airports/{}.xml", icao);
                          },
                          nullptr});
    const auto standAt = [](const char* code, double nm) {
        writeFile(fmt::format("airports/{}.xml", code),
                  fmt::format(R"(<parkpositions><parkpos id="{}1" latitude="{}" longitude="0"/></parkpositions>)", code,
                              north(nm).lat));
    };
    standAt("AAAA", 1);
    standAt("BBBB", -1.5);
    EXPECT_EQ(closestCode({0, 0}), "AAAA");
    EXPECT_THAT(asked, ElementsAre("BBBB", "AAAA"));
    EXPECT_THAT(log.lines(), ElementsAre("Airport BBBB is closest, neighbour is AAAA",
                                         "Airport BBBB is closest, but stand AAAA1 at neighbouring airport AAAA is "
                                         "closer at 1852 meters ..."));
    standAt("BBBB", -1);
    standAt("AAAA", 1.001);
    EXPECT_EQ(closestCode({0, 0}), "BBBB");
    fs::remove("airports/AAAA.xml");
    EXPECT_EQ(closestCode({0, 0}), "BBBB");
}

TEST_F(ClosestAirport, aStandOfTheNeighbourAloneIsNearerThanNone) {
    gAirports = {airportAt("AAAA", north(4)), airportAt("BBBB", north(-2))};
    setAirportFileAccess({[](std::string_view icao) { return fmt::format("airports/{}.xml", icao); }, nullptr});
    writeFile("airports/AAAA.xml", R"(<parkpositions><parkpos id="A" latitude="0.05" longitude="0"/></parkpositions>)");
    EXPECT_EQ(closestCode({0, 0}), "AAAA");
}

TEST_F(ClosestAirport, theClosestIsTheSameAsWithAWalkOverAllDistances) {
    std::mt19937 random(11);
    std::uniform_real_distribution<double> latitude(-89.9, 89.9);
    std::uniform_real_distribution<double> longitude(-180, 180);
    std::uniform_real_distribution<double> near(-0.2, 0.2);
    for (int round = 0; round < 300; ++round) {
        const LatLon user{latitude(random), longitude(random)};
        gAirports.clear();
        std::string expected = "none";
        double bestNm = 100;
        for (int i = 0; i < 20; ++i) {
            gAirports.push_back(airportAt("", {user.lat + near(random), user.lon + near(random)}));
            gAirports.back().code = fmt::format("A{:03}", i);
            const double nm = greatCircleNm(user, {gAirports.back().lat, gAirports.back().lon});
            if (nm <= 5.0 && nm < bestNm) {
                bestNm = nm;
                expected = gAirports.back().code;
            }
        }
        EXPECT_EQ(closestCode(user), expected) << user.lat << ' ' << user.lon;
    }
}

TEST(CloserByStand, isTheBestUnlessTheNeighboursStandIsNearer) {
    const LogCapture log;
    EXPECT_EQ(&lf_closerByStand(best, {1.0, "A1"}, neighbour, {1.0, "B1"}), &best);
    EXPECT_EQ(&lf_closerByStand(best, {1.0, "A1"}, neighbour, {1.5, "B1"}), &best);
    EXPECT_EQ(&lf_closerByStand(best, {}, neighbour, {}), &best);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(CloserByStand, saysThatTheNeighboursStandIsNearer) {
    const LogCapture log;
    EXPECT_EQ(&lf_closerByStand(best, {1.0, "A1"}, neighbour, {0.5, "B1"}), &neighbour);
    EXPECT_THAT(log.lines(),
                ElementsAre("Airport AAAA is closest, but stand B1 at neighbouring airport BBBB is closer at "
                            "926 meters ..."));
}
