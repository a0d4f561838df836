#include "rig/report/never_shown.h"

#include <gmock/gmock.h>

#include <set>
#include <sstream>

#include <fmt/format.h>

#include "core/injection_radius.h"
#include "engine/aircraft_log.h"
#include "engine/aircraft_record.h"
#include "tests/rig/report/flown_trace.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace rig {
namespace {

FeedAircraft known(const std::string& callsign, const std::string& type) {
    FeedAircraft aircraft;
    aircraft.names = {callsign, "PH-" + callsign};
    aircraft.type = type;
    return aircraft;
}

AircraftRecord flightOf(const std::string& callsign, const std::string& origin, const std::string& destination) {
    AircraftRecord aircraft;
    aircraft.callsign = callsign;
    aircraft.registration = "PH-" + callsign;
    aircraft.airline = "KLM";
    aircraft.model = "A320";
    aircraft.origin = origin;
    aircraft.destination = destination;
    return aircraft;
}

/// As the engine says it.
std::string goesLine(const AircraftRecord& aircraft, const std::string& reason) {
    return fmt::format("          {} goes: {}\n", longLine(aircraft), reason);
}

TEST(LogReasons, areThoseOfTheLinesThatNameTheAircraft) {
    const LogReasons reasons(
        "RealTraffic connected\n" + goesLine(flightOf("KLM105", "AMS", "LHR"), "there is no livery for it\r") +
        goesLine(flightOf("SAS7", "", ""), "it was not seen again") +
        goesLine(flightOf("SWR38", "LSZH", "EGLL"), "no positions any more") +
        goesLine(flightOf("TRA44", "EHAM", ""), "too many positions") +
        "Aircraft of type 'ZEPP' are not shown: the type is not known\n"
        "EZY12 'Orange' could not be created by your Sim!\n" +
        shortLine(flightOf("BAW9", "AMS", "LHR")) + " will be removed from buffer while blocked\n" +
        shortLine(flightOf("BAW10", "", "")) + " removed from simulator immediately while blocked\n");
    EXPECT_EQ(reasons.reasonFor(known("KLM105", "A320")), "there is no livery for it");
    EXPECT_EQ(reasons.reasonFor(known("SAS7", "A320")), "it was not seen again");
    EXPECT_EQ(reasons.reasonFor(known("SWR38", "A320")), "no positions any more");
    EXPECT_EQ(reasons.reasonFor(known("TRA44", "A320")), "too many positions");
    EXPECT_EQ(reasons.reasonFor(known("DZR1", "ZEPP")), "aircraft of type 'ZEPP': the type is not known");
    EXPECT_EQ(reasons.reasonFor(known("EZY12", "A320")), "the simulator cannot create 'Orange'");
    EXPECT_EQ(reasons.reasonFor(known("BAW9", "A320")), "it was blocked");
    EXPECT_EQ(reasons.reasonFor(known("BAW10", "A320")), "it was blocked");
    EXPECT_EQ(reasons.reasonFor(known("KLM10", "A320")), "");
}

/// Whatever the log says of it, the report says the same.
TEST(LogReasons, eachCauseOfLostSamplesIsReadAsItIsSaid) {
    std::set<std::string> told;
    for (auto cause = SamplesLostTo::nothing; cause <= SamplesLostTo::rangeEdge;
         cause = static_cast<SamplesLostTo>(static_cast<int>(cause) + 1)) {
        const std::string why = whyLost(cause, "no positions any more");
        const LogReasons reasons(goesLine(flightOf("SWR38", "LSZH", "EGLL"), why));
        EXPECT_EQ(reasons.reasonFor(known("SWR38", "A320")), why);
        told.insert(why);
    }
    EXPECT_THAT(told, SizeIs(9));
}

TEST(LogReasons, anAirportOrAirlineOrTypeInALineIsNobodysCallSign) {
    const LogReasons reasons(goesLine(flightOf("KLM105", "AMS", "LHR"), "it was not seen again") +
                             shortLine(flightOf("BAW9", "OSL", "ARN")) +
                             " will be removed from buffer while blocked\n" +
                             "EZY12 'Orange' could not be created by your Sim!\n");
    for (const char* word :
         {"AMS->LHR", "AMS", "LHR", "KLM", "A320", "OSL", "ARN", "will", "be", "while", "'Orange'"}) {
        EXPECT_EQ(reasons.reasonFor(known(word, "B738")), "") << word;
    }
}

TEST(LogReasons, anAircraftWithoutCallSignIsKnownByItsRegistration) {
    AircraftRecord nameless = flightOf("", "", "");
    nameless.registration = "PH-AAA";
    AircraftRecord placeholder = flightOf("@@@@@@@@", "AMS", "LHR");
    placeholder.registration = "PH-BBB";
    const LogReasons reasons(goesLine(nameless, "it was not seen again") + goesLine(placeholder, "too many positions"));
    FeedAircraft aircraft;
    aircraft.names = {"PH-AAA"};
    EXPECT_EQ(reasons.reasonFor(aircraft), "it was not seen again");
    aircraft.names = {"@@@@@@@@", "PH-BBB"};
    EXPECT_EQ(reasons.reasonFor(aircraft), "too many positions");
    aircraft.names = {"@@@@@@@@", "PH-CCC"};
    EXPECT_EQ(reasons.reasonFor(aircraft), "");
}

class NeverShownTest : public ::testing::Test {
protected:
    void TearDown() override { gf_setInjectionRadius(40); }

    FeedInRange find(const RowMaker& rows, const std::string& log = {}, bool takesGroundTraffic = true) {
        const Recording recording = rows.recording();
        const FeedTracks tracks = feedTracks(recording);
        FlownTrace trace;
        trace.writer().event(TraceEventKind::refused, 0, 22, "Unknown Title", "TRA5");
        trace.create(10, "KLM1");
        trace.fly(0, 120, {{10, [](double seconds) { return flyingAt(placeAt(seconds)); }}});
        std::istringstream bytes(trace.bytes());
        const Survey survey = surveyTrace(bytes, tracks, recording.begin(), 0);
        return feedInRange(recording, tracks, survey, LogReasons(log), {40, takesGroundTraffic});
    }

    static void tellAnother(RowMaker& rows, std::uint32_t hexid, const std::string& callsign, int from) {
        rows.line.hexid = hexid;
        rows.line.callsign = callsign;
        rows.line.registration = "PH-" + callsign;
        rows.tellAll(from, 199, 5, [](double seconds) { return shifted(placeAt(seconds), 0, 3000); });
    }
};

TEST_F(NeverShownTest, whoWasSeenIsNotAmongThem) {
    RowMaker rows;
    rows.tellFlight(0, 200);
    const FeedInRange found = find(rows);
    EXPECT_THAT(found.neverShown, IsEmpty());
    EXPECT_EQ(found.firstSample.at(4734981), 0);
}

TEST_F(NeverShownTest, theLogTellsWhy) {
    RowMaker rows;
    rows.tellFlight(0, 200);
    tellAnother(rows, 4800000, "KLM2", 10);
    const FeedInRange found = find(rows, goesLine(flightOf("KLM2", "AMS", "LHR"), "there is no livery for it"));
    ASSERT_THAT(found.neverShown, SizeIs(1));
    EXPECT_EQ(found.neverShown[0].callsign, "KLM2");
    EXPECT_EQ(found.neverShown[0].firstSample, 10);
    EXPECT_EQ(found.neverShown[0].why, "there is no livery for it");
}

TEST_F(NeverShownTest, withoutALogTheTraceOrTheFeedMayTell) {
    RowMaker rows;
    rows.tellFlight(0, 200);
    tellAnother(rows, 4800000, "TRA5", 0);
    tellAnother(rows, 4800001, "KLM3", 0);
    rows.line.type = "";
    rows.line.category = "C2";
    tellAnother(rows, 4800002, "FOLLOW", 0);
    std::vector<std::string> why;
    for (const NeverShown& one : find(rows).neverShown) {
        why.push_back(one.why);
    }
    EXPECT_THAT(why, ElementsAre("the simulator cannot create 'Unknown Title'", "the log does not tell",
                                 "it is of no kind that is shown"));
}

TEST_F(NeverShownTest, withoutAnAirportInUseWhoStaysOnTheGroundIsNotTaken) {
    RowMaker rows;
    rows.tellFlight(0, 200);
    rows.line.altFt = 0;
    rows.line.gs = 0;
    tellAnother(rows, 4800000, "KLM4", 10);
    const FeedInRange found = find(rows, {}, false);
    ASSERT_THAT(found.neverShown, SizeIs(1));
    EXPECT_EQ(found.neverShown[0].why, "it is on the ground elsewhere");
    EXPECT_FALSE(found.firstSample.contains(4800000));
    EXPECT_TRUE(find(rows, {}, true).firstSample.contains(4800000));
}

TEST_F(NeverShownTest, whoIsOutOfRangeOrComesAtTheVeryEndIsNotAmongThem) {
    RowMaker rows;
    rows.tellFlight(0, 200);
    tellAnother(rows, 4800000, "LATE", 90);
    rows.line.hexid = 4800001;
    rows.line.callsign = "FAR";
    rows.tellAll(0, 199, 5, [](double seconds) { return shifted(placeAt(seconds), 0, 90000); });
    EXPECT_THAT(find(rows).neverShown, IsEmpty());
}

} // namespace
} // namespace rig
