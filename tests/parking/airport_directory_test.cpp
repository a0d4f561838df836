// tests/parking/airport_directory_test.cpp
#include "parking/airport_directory.h"

#include <gmock/gmock.h>

#include <fmt/format.h>

#include "tests/support/damaged_containers.h"
#include "tests/support/log_capture.h"
#include "tests/support/sealed_input.h"
#include "window/window_state.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using testing::StrEq;

namespace fs = std::filesystem;

namespace {

constexpr const char* schiphol =
    R"(<airport code="EHAM" iata="AMS" lat="52.308056" lon="4.764167" alt="-11" stands="2"/>)";

class AirportDirectory : public testing::Test {
protected:
    AirportDirectory() { resetAirportDirectory(); }
    ~AirportDirectory() override { resetAirportDirectory(); }

    static bool readText(std::string_view text) {
        resetAirportDirectory();
        writeSealed("input/airports.enc", text);
        return gf_readAirports();
    }
    static bool readRows(std::string_view rows) {
        return readText(fmt::format("<root><airports>{}</airports></root>", rows));
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

TEST_F(AirportDirectory, thatIsDamagedIsNotReadAndStaysAsItIs) {
    const std::string sound = fmt::format("<root><airports>{}</airports></root>", schiphol);
    std::vector<testing::Matcher<std::string>> complaints;
    for (const DamagedContainer& damaged : damagedContainers(sound)) {
        SCOPED_TRACE(damaged.name);
        install(damaged, "input/airports.enc");
        EXPECT_FALSE(gf_readAirports());
        EXPECT_THAT(gAirports, IsEmpty());
        EXPECT_FALSE(is_supported_airport("EHAM"));
        EXPECT_FALSE(fs::exists("input/airports.xml"));
        EXPECT_TRUE(isInstalled(damaged, "input/airports.enc"));
        if (damaged.failure.empty()) {
            complaints.push_back(StartsWith("==> gf_readAirports exception : input/airports.xml not loaded: "));
        } else {
            complaints.push_back(StartsWith("==> gf_streamDecrypt exception: " + damaged.failure));
            complaints.push_back(StrEq("==> gf_readAirports exception : airports.enc stream decrypt failed"));
        }
    }
    EXPECT_THAT(log.errors(), testing::ElementsAreArray(complaints));
}

TEST_F(AirportDirectory, withoutAFinalChunkOrWithBytesBehindItIsRead) {
    for (const DamagedContainer& tolerated :
         toleratedContainers(fmt::format("<root><airports>{}</airports></root>", schiphol))) {
        SCOPED_TRACE(tolerated.name);
        resetAirportDirectory();
        install(tolerated, "input/airports.enc");
        EXPECT_TRUE(gf_readAirports());
        EXPECT_TRUE(is_supported_airport("EHAM"));
    }
    EXPECT_THAT(log.errors(), IsEmpty());
}

TEST_F(AirportDirectory, leavesTheMessageLineAsItWas) {
    resetWindowState();
    readRows(schiphol);
    EXPECT_EQ(shownMessage(), "");
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
}

TEST_F(AirportDirectory, codesAreComparedExactly) {
    readRows(schiphol);
    EXPECT_EQ(find_airport("eham"), nullptr);
    EXPECT_EQ(find_airport("EHA"), nullptr);
    EXPECT_FALSE(is_supported_airport("eham"));
}
