// tests/parking/airport_directory_test.cpp
#include "parking/airport_directory.h"

#include <gmock/gmock.h>
#include <random>

#include <fmt/format.h>

#include "parking/closest_stand.h"
#include "tests/support/log_capture.h"
#include "tests/support/message_of.h"
#include "tests/support/sealed_input.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

namespace {

constexpr const char* schiphol =
    R"(<airport code="EHAM" iata="AMS" lat="52.308056" lon="4.764167" alt="-11" stands="2"/>)";

class AirportDirectory : public testing::Test {
protected:
    AirportDirectory() { resetAirportDirectory(); }
    ~AirportDirectory() override {
        setAirportFileAccess({});
        resetAirportDirectory();
    }

    static bool readText(std::string_view text) {
        resetAirportDirectory();
        writeSealed("input/airports.enc", text);
        return gf_readAirports();
    }
    static bool readRows(std::string_view rows) {
        return readText(fmt::format("<root><airports>{}</airports></root>", rows));
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

} // namespace

// --- Reading ---

TEST_F(AirportDirectory, holdsWhatARowSays) {
    EXPECT_TRUE(readRows(schiphol));
    ASSERT_EQ(gAirports.size(), 1U);
    EXPECT_EQ(gAirports[0].code, "EHAM");
    EXPECT_EQ(gAirports[0].iata, "AMS");
    EXPECT_EQ(gAirports[0].lat, 52.308056);
    EXPECT_EQ(gAirports[0].lon, 4.764167);
    EXPECT_EQ(gAirports[0].alt, -11.0);
    EXPECT_EQ(gAirports[0].stands, 2);
    EXPECT_THAT(log.lines(), ElementsAre("1 airports read"));
}

TEST_F(AirportDirectory, isReadWithoutARootElementToo) {
    EXPECT_TRUE(readText(fmt::format("<airports>{}</airports>", schiphol)));
    EXPECT_NE(find_airport("EHAM"), nullptr);
}

TEST_F(AirportDirectory, isSortedByCodeByteByByteTheShorterFirst) {
    std::string rows;
    for (const char* code : {"LSZH", "EHAM", "EHA", "eham", "EHAM2", "9"}) {
        rows += fmt::format(R"(<airport code="{}" iata="" lat="1" lon="2" alt="3" stands="0"/>)", code);
    }
    readRows(rows);
    std::vector<std::string> codes;
    for (const Airport& airport : gAirports) {
        codes.push_back(airport.code);
    }
    EXPECT_THAT(codes, ElementsAre("9", "EHA", "EHAM", "EHAM2", "LSZH", "eham"));
}

TEST_F(AirportDirectory, aFileWithNoAirportReadsWithoutErrorAndAnswersFalse) {
    EXPECT_FALSE(readRows(""));
    EXPECT_THAT(log.lines(), ElementsAre("0 airports read"));
}

TEST_F(AirportDirectory, isReadOnce) {
    readRows(schiphol);
    fs::remove("input/airports.enc");
    EXPECT_TRUE(gf_readAirports());
    EXPECT_THAT(log.lines(), ElementsAre("1 airports read"));
}

TEST_F(AirportDirectory, aRowWithoutAPositionIsSkipped) {
    readRows(R"(<airport code="AAAA" iata="" lon="2" alt="3" stands="0"/>)"
             R"(<airport code="BBBB" iata="" lat="1" alt="3" stands="0"/>)");
    EXPECT_THAT(log.errors(),
                ElementsAre("==> Missing latLons for airport 'AAAA'", "==> Missing latLons for airport 'BBBB'"));
    EXPECT_THAT(gAirports, IsEmpty());
    EXPECT_FALSE(is_supported_airport("AAAA"));
}

TEST_F(AirportDirectory, aRowWithoutAnAltitudeIsSkipped) {
    readRows(R"(<airport code="AAAA" iata="" lat="1" lon="2" stands="0"/>)");
    EXPECT_THAT(log.errors(), ElementsAre("==> Missing alt for airport 'AAAA'"));
    EXPECT_THAT(gAirports, IsEmpty());
}

TEST_F(AirportDirectory, aRowWithoutStandsIsKeptWithStandsZeroAfterOneLoggedLine) {
    EXPECT_TRUE(readRows(R"(<airport code="AAAA" iata="" lat="1" lon="2" alt="3"/>)"));
    EXPECT_THAT(log.errors(), ElementsAre("==> Missing stands for airport 'AAAA'"));
    ASSERT_NE(find_airport("AAAA"), nullptr);
    EXPECT_EQ(find_airport("AAAA")->stands, 0);
    EXPECT_TRUE(is_supported_airport("AAAA"));
}

TEST_F(AirportDirectory, aRowWithoutAnIataCodeIsSkippedAfterTheStandsWereMissed) {
    readRows(R"(<airport code="AAAA" lat="1" lon="2" alt="3"/>)");
    EXPECT_THAT(log.errors(),
                ElementsAre("==> Missing stands for airport 'AAAA'", "==> Missing IATA for airport 'AAAA'"));
    EXPECT_THAT(gAirports, IsEmpty());
}

TEST_F(AirportDirectory, emptyNumbersAreZero) {
    readRows(R"(<airport code="AAAA" iata="" lat="" lon="" alt="" stands=""/>)");
    ASSERT_EQ(gAirports.size(), 1U);
    EXPECT_EQ(gAirports[0].lat, 0.0);
    EXPECT_EQ(gAirports[0].stands, 0);
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(AirportDirectory, blanksAroundANumberDoNotCount) {
    readRows(R"(<airport code="AAAA" iata="" lat=" 52.3" lon="4.7 " alt=" -11 " stands=" 2 "/>)");
    EXPECT_THAT(log.errors(), IsEmpty());
    ASSERT_EQ(gAirports.size(), 1U);
    EXPECT_EQ(gAirports[0].lat, 52.3);
    EXPECT_EQ(gAirports[0].lon, 4.7);
    EXPECT_EQ(gAirports[0].alt, -11.0);
    EXPECT_EQ(gAirports[0].stands, 2);
}

TEST_F(AirportDirectory, withAnAttributeOfAMegabyteIsRead) {
    const std::string iata(1'000'000, 'X');
    EXPECT_TRUE(readRows(
        fmt::format(R"(<airport code="AAAA" iata="{}" lat="1" lon="2" alt="3" stands="0"/>{})", iata, schiphol)));
    EXPECT_EQ(find_airport("AAAA")->iata, iata);
    EXPECT_TRUE(is_supported_airport("EHAM"));
}

TEST_F(AirportDirectory, aPositionThatIsNoNumberIsLostAndReadingGoesOn) {
    readRows(fmt::format(R"(<airport code="AAAA" iata="" lat="52,3" lon="2" alt="3" stands="0"/>{})", schiphol));
    EXPECT_THAT(log.errors(), ElementsAre("==> Error parsing coordinates for airport 'AAAA': lat '52,3' is no number"));
    EXPECT_FALSE(is_supported_airport("AAAA"));
    EXPECT_TRUE(is_supported_airport("EHAM"));
}

TEST_F(AirportDirectory, thatDoesNotOpenIsLogged) {
    writeFile("input/airports.enc", "");
    EXPECT_FALSE(gf_readAirports());
    fs::remove("input/airports.enc");
    EXPECT_FALSE(gf_readAirports());
    EXPECT_THAT(log.errors(),
                ElementsAre("==> gf_streamDecrypt exception: Invalid header or key",
                            "==> gf_readAirports exception : airports.enc stream decrypt failed",
                            "==> gf_streamDecrypt exception: Could not open input file: input/airports.enc",
                            "==> gf_readAirports exception : airports.enc stream decrypt failed"));
    EXPECT_FALSE(fs::exists("input/airports.xml"));
}

TEST_F(AirportDirectory, thatDoesNotParseIsLogged) {
    EXPECT_FALSE(readText("<root><airports>"));
    EXPECT_THAT(log.errors(), ElementsAre("==> gf_readAirports exception : input/airports.xml not loaded: "
                                          "Start-end tags mismatch"));
    EXPECT_FALSE(fs::exists("input/airports.xml"));
}

TEST_F(AirportDirectory, withoutItsElementIsLogged) {
    EXPECT_FALSE(readText("<root><other/></root>"));
    EXPECT_THAT(log.errors(),
                ElementsAre("==> gf_readAirports exception : Missing <airports> root in: input/airports.xml"));
    EXPECT_FALSE(fs::exists("input/airports.xml"));
}

TEST_F(AirportDirectory, isReadAfterAFailureWasMended) {
    EXPECT_FALSE(readText("<root/>"));
    writeSealed("input/airports.enc", fmt::format("<airports>{}</airports>", schiphol));
    EXPECT_TRUE(gf_readAirports());
}

TEST_F(AirportDirectory, leavesNoClearFile) {
    readRows(schiphol);
    EXPECT_FALSE(fs::exists("input/airports.xml"));
}

// --- Looking up ---

TEST_F(AirportDirectory, thatIsEmptyYieldsNothing) {
    EXPECT_EQ(find_airport("EHAM"), nullptr);
    EXPECT_FALSE(is_supported_airport("EHAM"));
    EXPECT_FALSE(closest_airport({52, 4}));
}

TEST_F(AirportDirectory, codesAreComparedExactly) {
    readRows(schiphol);
    EXPECT_EQ(find_airport("eham"), nullptr);
    EXPECT_EQ(find_airport("EHA"), nullptr);
    EXPECT_FALSE(is_supported_airport("eham"));
}

// --- The closest one ---

TEST_F(AirportDirectory, aPositionExactlyFiveMilesAwayQualifies) {
    // An airport whose distance comes out as 5.0 to the last bit.
    double lat = north(5.0).lat;
    for (int i = -100; i <= 100 && greatCircleNm({0, 0}, {lat, 0}) != 5.0; ++i) {
        lat = north(5.0).lat * (1 + i * 1e-16);
    }
    ASSERT_EQ(greatCircleNm({0, 0}, {lat, 0}), 5.0);
    gAirports = {airportAt("AAAA", {lat, 0})};
    EXPECT_EQ(closestCode({0, 0}), "AAAA");
}

TEST_F(AirportDirectory, aPositionBeyondFiveMilesFromEveryAirportYieldsNoResult) {
    gAirports = {airportAt("AAAA", north(5.01)), airportAt("BBBB", north(-5.01))};
    EXPECT_EQ(closestCode({0, 0}), "none");
}

TEST_F(AirportDirectory, theOneAirportInReachIsTheResultWithoutAWord) {
    gAirports = {airportAt("AAAA", north(4)), airportAt("BBBB", north(60))};
    EXPECT_EQ(closestCode({0, 0}), "AAAA");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(AirportDirectory, theFartherListedFirstBecomesTheNeighbour) {
    gAirports = {airportAt("AAAA", north(4)), airportAt("BBBB", north(-2))};
    EXPECT_EQ(closestCode({0, 0}), "BBBB");
    EXPECT_THAT(log.lines(), ElementsAre("Airport BBBB is closest, neighbour is AAAA"));
}

TEST_F(AirportDirectory, theFartherListedLaterNeverQualifies) {
    gAirports = {airportAt("AAAA", north(2)), airportAt("BBBB", north(-4))};
    EXPECT_EQ(closestCode({0, 0}), "AAAA");
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(AirportDirectory, theNeighbourIsTheOneThatHeldTheLeadLast) {
    gAirports = {airportAt("AAAA", north(4)), airportAt("BBBB", north(1)), airportAt("CCCC", north(2))};
    closest_airport({0, 0});
    EXPECT_THAT(log.lines(), ElementsAre("Airport BBBB is closest, neighbour is AAAA"));
}

TEST_F(AirportDirectory, ofTwoNeighboursTheOneWithTheNearerStandIsTheResult) {
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

TEST_F(AirportDirectory, aStandOfTheNeighbourAloneIsNearerThanNone) {
    gAirports = {airportAt("AAAA", north(4)), airportAt("BBBB", north(-2))};
    setAirportFileAccess({[](std::string_view icao) { return fmt::format("airports/{}.xml", icao); }, nullptr});
    writeFile("airports/AAAA.xml", R"(<parkpositions><parkpos id="A" latitude="0.05" longitude="0"/></parkpositions>)");
    EXPECT_EQ(closestCode({0, 0}), "AAAA");
}

TEST_F(AirportDirectory, theClosestIsTheSameAsWithAWalkOverAllDistances) {
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
