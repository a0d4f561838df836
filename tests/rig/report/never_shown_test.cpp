#include "rig/report/never_shown.h"

#include <gmock/gmock.h>

#include <sstream>

#include "core/injection_radius.h"
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

TEST(LogReasons, areThoseOfTheLinesThatNameTheAircraft) {
    const LogReasons reasons("12:00:01 RealTraffic connected\n"
                             "          AMS-LHR KLM105   PH-KLM105 A320KLM goes: there is no livery for it\r\n"
                             "          OSL-AMS  PH-SAS7 goes: it was seen only once\n"
                             "Aircraft of type 'ZEPP' are not shown: the type is not known\n"
                             "EZY12 'Orange' could not be created by your Sim!\n"
                             "AMS-LHR BAW9     G-BAW9 will be removed from buffer while blocked\n");
    EXPECT_EQ(reasons.reasonFor(known("KLM105", "A320")), "there is no livery for it");
    EXPECT_EQ(reasons.reasonFor(known("SAS7", "A320")), "it was seen only once");
    EXPECT_EQ(reasons.reasonFor(known("DZR1", "ZEPP")), "aircraft of type 'ZEPP': the type is not known");
    EXPECT_EQ(reasons.reasonFor(known("EZY12", "A320")), "the simulator cannot create 'Orange'");
    EXPECT_EQ(reasons.reasonFor(known("BAW9", "A320")), "it was blocked");
    EXPECT_EQ(reasons.reasonFor(known("KLM10", "A320")), "");
}

class NeverShownTest : public ::testing::Test {
protected:
    void TearDown() override { gf_setInjectionRadius(40); }

    FeedInRange find(const RowMaker& rows, const std::string& log = {}) {
        const Recording recording = rows.recording();
        const FeedTracks tracks = feedTracks(recording);
        FlownTrace trace;
        trace.writer().event(TraceEventKind::refused, 0, 22, "Unknown Title", "TRA5");
        trace.create(10, "KLM1");
        trace.fly(0, 120, {{10, [](double seconds) { return flyingAt(placeAt(seconds)); }}});
        std::istringstream bytes(trace.bytes());
        const Survey survey = surveyTrace(bytes, tracks, recording.begin(), 0);
        return feedInRange(recording, tracks, survey, LogReasons(log), 40);
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
    const FeedInRange found = find(rows, "          KLM2 PH-KLM2 A320 goes: there is no livery for it\n");
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
