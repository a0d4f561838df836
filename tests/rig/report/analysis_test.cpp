// Traces with known answers: each figure is what was put there.
#include "rig/report/analysis.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

#include <fmt/format.h>

#include "rig/traffic/hold_out.h"
#include "rig/world/trace_reader.h"
#include "tests/rig/report/flown_trace.h"
#include "tests/support/message_of.h"

using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace rig {
namespace {

constexpr double degree = radiansPerDegree;

Recording flight() {
    RowMaker rows;
    rows.tellFlight(0, 200);
    return rows.recording();
}

struct None {
    std::istringstream stream;
    AnalysisInputs inputs{.trace = stream};
};

Analysis analysisOfPath(const std::function<Position(double)>& path) {
    return analysisOf(path, flight(), None().inputs);
}

/// The figures of the one aircraft that is all there is.
const ObjectFigures& only(const Analysis& analysis) {
    return analysis.aircraft.at(0).figures;
}

TEST(Analysis, anAircraftOnItsTrackHasNothingToTell) {
    const Analysis analysis = analysisOfPath([](double due) { return flyingAt(placeAt(due)); });
    const StateFigures& air = only(analysis).air;
    EXPECT_NEAR(air.seconds, 120, 0.1);
    EXPECT_LT(air.crossTrack.worst(), 0.1);
    EXPECT_LT(air.alongTrack.worst(), 0.01);
    EXPECT_EQ(air.jumps, 0u);
    EXPECT_NEAR(air.largestStep, flightMetresPerSecond / FlownTrace::framesPerSecond, 0.1);
    EXPECT_NEAR(air.largestStepShare, 1, 0.02);
    EXPECT_EQ(air.sideways + air.backwards + air.overlapping, 0);
    EXPECT_EQ(only(analysis).ground.seconds, 0);
    EXPECT_THAT(analysis.worst, IsEmpty());
    EXPECT_THAT(analysis.inRange.neverShown, IsEmpty());
}

TEST(Analysis, tenMetresBesideTheTrackIsACrossTrackOfTen) {
    const Analysis analysis = analysisOfPath([](double due) { return flyingAt(shifted(placeAt(due), 180, 10)); });
    const Distribution& crossTrack = only(analysis).air.crossTrack;
    EXPECT_NEAR(crossTrack.atShare(0.5), 10, 0.15);
    EXPECT_NEAR(crossTrack.atShare(0.95), 10, 0.15);
    EXPECT_NEAR(crossTrack.worst(), 10, 0.15);
    EXPECT_LT(only(analysis).air.alongTrack.worst(), 0.01);
}

TEST(Analysis, twoSecondsAheadIsAnAlongTrackOfTwo) {
    const Analysis analysis = analysisOfPath([](double due) { return flyingAt(placeAt(due + 2)); });
    EXPECT_NEAR(only(analysis).air.alongTrack.meanSigned(), 2, 0.01);
    EXPECT_NEAR(only(analysis).air.alongTrack.atShare(0.95), 2, 0.03);
    EXPECT_LT(only(analysis).air.crossTrack.worst(), 0.1);
}

TEST(Analysis, whatIsFlownBeyondTheRecordingIsNotCompared) {
    RowMaker rows;
    rows.tellFlight(0, 60);
    const Analysis analysis = analysisOf(
        [](double due) {
            Position position = flyingAt(placeAt(due));
            position.lat += due > 60 ? (due - 60) * 1e-4 : 0;
            return position;
        },
        rows.recording(), None().inputs);
    EXPECT_LT(only(analysis).air.crossTrack.worst(), 0.1);
    EXPECT_NEAR(static_cast<double>(only(analysis).air.crossTrack.count()), 500, 5);
}

TEST(Analysis, aGapOfTheFeedIsNotCompared) {
    RowMaker rows;
    rows.tellFlight(0, 40);
    rows.tellFlight(90, 200);
    const Analysis analysis = analysisOf(
        [](double due) { return flyingAt(due > 42 && due < 88 ? shifted(placeAt(due), 0, 300) : placeAt(due)); },
        rows.recording(), None().inputs);
    EXPECT_LT(only(analysis).air.crossTrack.worst(), 0.1);
}

/// 15 seconds ahead of its time: when it passes the sample of second 60, that of second 80 has not come.
TEST(Analysis, whatIsFlownWithoutASampleAheadIsToldApartAndSoIsTheWayBack) {
    RowMaker rows;
    rows.tellFlight(0, 60);
    rows.tellFlight(80, 200);
    const Analysis analysis = analysisOf(
        [](double due) {
            const double place = due + 15;
            const double metresBeside = place <= 60 || place >= 79 ? 0 : place < 66 ? 100 : 40;
            return flyingAt(shifted(placeAt(place), 0, metresBeside));
        },
        rows.recording(), None().inputs);
    const StateFigures& air = only(analysis).air;
    EXPECT_LT(air.crossTrack.worst(), 0.1);
    EXPECT_NEAR(static_cast<double>(air.crossTrack.count()), 1000, 5);
    EXPECT_NEAR(air.withoutSamples, 6, 0.2);
    EXPECT_NEAR(air.crossTrackWithoutSamples.atShare(0.5), 100, 1.5);
    EXPECT_NEAR(air.onWayBack, 14, 0.2);
    EXPECT_NEAR(air.crossTrackOnWayBack.atShare(0.5), 40, 0.6);
}

TEST(Analysis, whoFliesPastASampleThatHasComeIsBesideTheTrack) {
    const Analysis analysis =
        analysisOfPath([](double due) { return flyingAt(shifted(placeAt(due), 0, due < 60 ? 0 : (due - 60) * 50)); });
    EXPECT_GT(only(analysis).air.crossTrack.worst(), 1000);
    EXPECT_EQ(only(analysis).air.withoutSamples + only(analysis).air.onWayBack, 0);
}

TEST(Analysis, aLineThatTheProgramsReaderLeavesOutIsNoSampleAhead) {
    RowMaker rows;
    rows.tellFlight(0, 60);
    rows.line.category = "C1";
    rows.tellFlight(62, 200);
    const Analysis analysis =
        analysisOf([](double due) { return flyingAt(shifted(placeAt(due), 0, due < 60 ? 0 : (due - 60) * 50)); },
                   rows.recording(), None().inputs);
    EXPECT_LT(only(analysis).air.crossTrack.worst(), 0.1);
    EXPECT_GT(only(analysis).air.crossTrackWithoutSamples.worst(), 1000);
    EXPECT_NEAR(only(analysis).air.withoutSamples, 70, 0.2);
}

TEST(Analysis, whatIsHeldOutIsNoSampleAhead) {
    const Recording recording = flight();
    RowMaker rows;
    rows.tellFlight(62, 200);
    Recording kept = rows.recording();
    takeDueTimes(kept, recording);
    const FeedTracks heldOut = feedTracks(kept);
    None none;
    none.inputs.heldOut = &heldOut;
    const Analysis analysis =
        analysisOf([](double due) { return flyingAt(shifted(placeAt(due), 0, due < 60 ? 0 : (due - 60) * 50)); },
                   recording, none.inputs);
    EXPECT_LT(only(analysis).air.crossTrack.worst(), 0.1);
    EXPECT_GT(only(analysis).air.crossTrackWithoutSamples.worst(), 1000);
    EXPECT_NEAR(only(analysis).air.withoutSamples, 70, 0.2);
}

TEST(Analysis, aLeapOfAHundredMetresIsOneJump) {
    const Analysis analysis =
        analysisOfPath([](double due) { return flyingAt(shifted(placeAt(due), 180, due >= 60 ? 100 : 0)); });
    EXPECT_EQ(only(analysis).air.jumps, 1u);
    EXPECT_NEAR(only(analysis).air.largestStep, 100, 1);
    ASSERT_FALSE(analysis.worst.empty());
    const Moment& moment = analysis.worst[0].moment;
    EXPECT_EQ(moment.kind, MomentKind::crossTrack);
    const auto jump = std::find_if(analysis.worst.begin(), analysis.worst.end(),
                                   [](const DetailedMoment& one) { return one.moment.kind == MomentKind::jump; });
    ASSERT_NE(jump, analysis.worst.end());
    EXPECT_NEAR(jump->moment.seconds, 90, 0.06);
    EXPECT_NEAR(jump->moment.value, 100, 1);
    EXPECT_NEAR(jump->course.front().seconds, 82, 0.1);
    EXPECT_NEAR(jump->course.back().seconds, 98, 0.1);
}

TEST(Analysis, aLeapOfTheHeightIsOneOfItsJumpsAndNoHorizontalOne) {
    const Analysis analysis =
        analysisOfPath([](double due) { return flyingAt(placeAt(due), due >= 60 ? 4554 : 5000); });
    const StateFigures& air = only(analysis).air;
    EXPECT_EQ(air.jumps, 0u);
    EXPECT_EQ(air.heightJumps, 1u);
    EXPECT_NEAR(air.largestHeightStep, 446, 0.001);
    ASSERT_FALSE(analysis.worst.empty());
    const Moment& moment = analysis.worst[0].moment;
    EXPECT_EQ(moment.kind, MomentKind::heightJump);
    EXPECT_NEAR(moment.seconds, 90, 0.06);
    EXPECT_NEAR(moment.value, 446, 0.001);
}

TEST(Analysis, aStepOfTheHeightIsAJumpAboveThreeTimesTheVerticalSpeedAndFiveMetres) {
    const auto heightJumps = [](double leapFeet, double feetPerSecond) {
        const Analysis analysis = analysisOfPath([&](double due) {
            Position position = flyingAt(placeAt(due), due >= 60 ? 5000 + leapFeet : 5000);
            position.verticalFeetPerSecond = feetPerSecond;
            return position;
        });
        return only(analysis).air.heightJumps;
    };
    EXPECT_EQ(heightJumps(16.3, 0), 0u);
    EXPECT_EQ(heightJumps(16.5, 0), 1u);
    EXPECT_EQ(heightJumps(-16.5, 0), 1u);
    // In a frame of a twentieth of a second 200 feet a second are 10 feet.
    EXPECT_EQ(heightJumps(29, 200), 0u);
    EXPECT_EQ(heightJumps(29, -200), 0u);
    EXPECT_EQ(heightJumps(31, 200), 1u);
}

TEST(Analysis, valuesThatAreNoNumberOrOutOfRangeAreCounted) {
    constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();
    const Analysis analysis = analysisOfPath([](double due) {
        Position position = flyingAt(placeAt(due));
        const auto frame = static_cast<int>(std::lround((due - 60) * FlownTrace::framesPerSecond));
        position.lat = frame == 0 ? noNumber : position.lat;
        position.trueKnots = frame == 0 ? std::numeric_limits<double>::infinity() : position.trueKnots;
        position.altFeet = frame == 1 ? 200000 : position.altFeet;
        position.headingRad = frame == 2 ? -0.1 : frame == 3 ? twoPi : position.headingRad;
        position.pitchRad = frame == 4 ? 1.6 : 0;
        position.bankRad = frame == 5 ? -3.2 : 0;
        position.verticalFeetPerSecond = frame == 6 ? -1001 : 0;
        return position;
    });
    EXPECT_EQ(only(analysis).air.allUnsound(), 7u);
    EXPECT_LT(only(analysis).air.crossTrack.worst(), 0.1);
    EXPECT_EQ(only(analysis).air.jumps, 0u);
}

TEST(Analysis, whatTheSimulatorRefusedToTakeIsCounted) {
    const Recording recording = flight();
    FlownTrace trace;
    for (const double exception : {20.0, 31.0, 22.0}) {
        trace.writer().event(TraceEventKind::exception, 0, exception, "");
    }
    trace.create(10, "KLM1");
    trace.fly(60, 160, {{10, [](double seconds) { return flyingAt(placeAt(seconds - 30)); }}});
    std::istringstream bytes(trace.bytes());
    EXPECT_EQ(analyse({.trace = bytes, .recording = &recording}).survey.refusedWrites, 2u);
}

TEST(Analysis, aStepBelowFiveMetresIsNoJumpHoweverSlowTheAircraft) {
    const auto standing = [](double leap) {
        return analysisOfPath([leap](double due) {
            Position position = flyingAt(shifted({52, 4}, 0, due >= 60 ? leap : 0), 10);
            position.trueKnots = 0;
            return position;
        });
    };
    EXPECT_EQ(only(standing(4.9)).air.jumps + only(standing(4.9)).ground.jumps, 0u);
    EXPECT_EQ(only(standing(5.1)).air.jumps + only(standing(5.1)).ground.jumps, 1u);
}

/// What is written is not the speed over the ground: an aircraft that the feed tells to be so fast does not jump.
TEST(Analysis, theSpeedOfAStepIsThatOfTheFeedWhereItIsFasterThanTheWrittenOne) {
    const auto shownAtSeventyKnots = [](double toldKnots) {
        RowMaker rows;
        rows.line.gs = toldKnots;
        rows.tellFlight(0, 200);
        return analysisOf(
            [](double due) {
                Position position = flyingAt(placeAt(due));
                position.trueKnots = 70;
                return position;
            },
            rows.recording(), None().inputs);
    };
    EXPECT_EQ(only(shownAtSeventyKnots(flightKnots)).air.jumps, 0u);
    EXPECT_NEAR(only(shownAtSeventyKnots(flightKnots)).air.largestStepShare, 1, 0.02);
    EXPECT_GT(only(shownAtSeventyKnots(70)).air.jumps, 2000u);
}

TEST(Analysis, withoutAWordOfTheTimesTheyAreFitted) {
    const Recording recording = flight();
    FlownTrace trace;
    trace.create(10, "KLM1");
    // The recording began 17 seconds after the trace.
    trace.fly(60, 160, {{10, [](double seconds) { return flyingAt(placeAt(seconds - 17 - 30)); }}});
    std::istringstream bytes(trace.bytes());
    const Analysis analysis = analyse({.trace = bytes, .recording = &recording});
    EXPECT_EQ(analysis.survey.clockSource, ClockSource::fitted);
    EXPECT_NEAR(analysis.survey.clock.feedAtBegin, feedBegin - 17, 0.01);
    EXPECT_LT(only(analysis).air.alongTrack.worst(), 0.02);
}

TEST(Analysis, anActInTheTraceTellsHowTheFeedsTimeGoes) {
    const Recording recording = flight();
    FlownTrace trace;
    // The feed was let in four seconds after its first row.
    trace.writer().event(TraceEventKind::act, 0, 21, feedBeginsAct, fmt::format("{:.3f}", feedBegin + 4));
    trace.create(10, "KLM1");
    // Three seconds late.
    trace.fly(60, 160, {{10, [](double seconds) { return flyingAt(placeAt(seconds - 17 - 33)); }}});
    std::istringstream bytes(trace.bytes());
    const Analysis analysis = analyse({.trace = bytes, .recording = &recording});
    EXPECT_EQ(analysis.survey.clockSource, ClockSource::marked);
    EXPECT_NEAR(only(analysis).air.alongTrack.meanSigned(), -3, 0.02);
}

Analysis analysisWithWallClock(double wallAtFirstRow, bool traceTellsItsOwn) {
    const Recording recording = flight();
    FlownTrace trace;
    if (traceTellsItsOwn) {
        trace.writer().event(TraceEventKind::act, 0, 2, traceBeginsAct, "1800000002.5");
    }
    trace.create(10, "KLM1");
    trace.fly(60, 160, {{10, [](double seconds) { return flyingAt(placeAt(seconds - 17 - 33)); }}});
    std::istringstream bytes(trace.bytes());
    return analyse({.trace = bytes, .recording = &recording, .feedStart = wallAtFirstRow});
}

TEST(Analysis, aWallClockTellsWhenTheFirstRowWasPlayed) {
    const Analysis analysis = analysisWithWallClock(1800000017.5, true);
    EXPECT_EQ(analysis.survey.clockSource, ClockSource::given);
    EXPECT_NEAR(only(analysis).air.alongTrack.meanSigned(), -3, 0.02);
}

TEST(Analysis, aWallClockIsNothingToATraceThatTellsNone) {
    EXPECT_EQ(messageOf([] { analysisWithWallClock(1800000017.5, false); }),
              "the feed's start is a wall clock, but the trace does not tell when it began");
}

TEST(Analysis, anActWithoutATimeTellsNothing) {
    const Recording recording = flight();
    FlownTrace trace;
    trace.writer().event(TraceEventKind::act, 0, 21, feedBeginsAct, "noon");
    trace.create(10, "KLM1");
    trace.fly(60, 160, {{10, [](double seconds) { return flyingAt(placeAt(seconds - 17 - 30)); }}});
    std::istringstream bytes(trace.bytes());
    EXPECT_EQ(analyse({.trace = bytes, .recording = &recording}).survey.clockSource, ClockSource::fitted);
}

std::string truthText(double sideMetres) {
    std::string text = "time,hexid,callsign,phase,lat,lon,alt_ft,on_ground,heading,track,gs_kt,vs_fpm,roll\n";
    for (int second = 0; second <= 200; ++second) {
        const LatLon at = shifted(placeAt(second), 180, sideMetres);
        text += fmt::format("{:.0f},4734981,KLM1,cruise,{:.7f},{:.7f},5000.0,0,90.00,90.00,240.00,0,0.0\n",
                            feedBegin + second, at.lat, at.lon);
    }
    return text;
}

TEST(Analysis, theTruthIsComparedWhereItWasAtThatTime) {
    const FeedTracks truth = truthTracks(truthText(30));
    None none;
    none.inputs.truth = &truth;
    const Analysis analysis = analysisOf([](double due) { return flyingAt(placeAt(due)); }, flight(), none.inputs);
    EXPECT_NEAR(only(analysis).air.fromTruth.atShare(0.5), 30, 0.4);
    EXPECT_LT(only(analysis).air.crossTrack.worst(), 0.1);
}

TEST(Analysis, withoutARecordingTheTruthIsTheTrack) {
    const FeedTracks truth = truthTracks(truthText(0));
    FlownTrace trace;
    trace.create(10, "KLM1");
    trace.fly(40, 160, {{10, [](double seconds) { return flyingAt(shifted(placeAt(seconds), 0, 20)); }}});
    std::istringstream bytes(trace.bytes());
    const Analysis analysis = analyse({.trace = bytes, .truth = &truth});
    EXPECT_NEAR(only(analysis).air.crossTrack.atShare(0.5), 20, 0.3);
}

TEST(Analysis, samplesThatWereHeldOutAreComparedAtTheirMoment) {
    RowMaker hidden;
    hidden.tellAll(21, 99, 10, [](double seconds) { return shifted(placeAt(seconds), 0, 40); });
    const FeedTracks heldOut = feedTracks(hidden.recording());
    None none;
    none.inputs.heldOut = &heldOut;
    const Analysis analysis = analysisOf([](double due) { return flyingAt(placeAt(due)); }, flight(), none.inputs);
    EXPECT_EQ(only(analysis).air.fromHeldOut.count(), 8u);
    EXPECT_NEAR(only(analysis).air.fromHeldOut.worst(), 40, 0.2);
}

TEST(Analysis, ratesAreMeasuredAndHowOftenTheyPassTheLimitOfTheCategory) {
    // Large: 2 degrees of bank a second, 0.75 of pitch. Two rolls at 4 for three seconds, and one at 1.
    const Analysis analysis = analysisOfPath([](double due) {
        Position position = flyingAt(placeAt(due));
        const double bank = std::clamp(due - 40, 0.0, 3.0) * 4 - std::clamp(due - 60, 0.0, 3.0) * 4 +
                            std::clamp(due - 80, 0.0, 3.0) * 1;
        position.bankRad = bank * degree;
        position.pitchRad = std::clamp(due - 90, 0.0, 4.0) * 0.5 * degree;
        return position;
    });
    const StateFigures& air = only(analysis).air;
    EXPECT_NEAR(air.bankRate.values.worst(), 4, 0.02);
    EXPECT_EQ(air.bankRate.passes, 2u);
    EXPECT_NEAR(air.bankRate.secondsAbove, 6, 0.6);
    EXPECT_NEAR(air.pitchRate.values.worst(), 0.5, 0.01);
    EXPECT_EQ(air.pitchRate.passes, 0u);
    EXPECT_EQ(air.bank.passes, 0u);
    EXPECT_NEAR(air.bank.values.worst(), 12, 0.01);
    EXPECT_EQ(analysis.moments.count(MomentKind::bankRate), 2u);
}

TEST(Analysis, aTurnThroughNorthIsNoFastOne) {
    const Analysis analysis = analysisOfPath([](double due) {
        Position position = flyingAt(placeAt(due));
        const double heading = 350 + 0.5 * (due - 40);
        position.headingRad = std::fmod(heading, 360) * degree;
        return position;
    });
    EXPECT_NEAR(only(analysis).air.headingRate.values.worst(), 0.5, 0.01);
}

TEST(Analysis, secondsSidewaysAreThoseWithTheNoseOffTheTrack) {
    const Analysis analysis = analysisOfPath([](double due) {
        Position position = flyingAt(placeAt(due));
        position.headingRad += (due >= 50 && due < 57 ? 25 : due >= 70 && due < 80 ? 15 : 0) * degree;
        return position;
    });
    EXPECT_NEAR(only(analysis).air.sideways, 7, 0.1);
    EXPECT_EQ(only(analysis).air.backwards, 0);
}

// --- On the ground

struct Airport {
    Ground ground{.defaultElevationFeet = 100, .places = {}};
    AircraftTitles titles;
    std::istringstream stream;

    Airport() { titles.addLines({"[fltsim.0]", "title=Airliner", "[General]", "atc_model=A320"}); }

    AnalysisInputs inputs() { return {.trace = stream, .ground = &ground, .titles = &titles}; }
    double standingFeet() const { return 100 + AircraftType{}.cgHeightFeet; }
};

Recording onTheGround() {
    RowMaker rows;
    rows.line.altFt = 0;
    rows.line.airborne = false;
    rows.line.gs = 0;
    rows.tellAll(0, 200, 10, [](double) { return LatLon{52, 4}; });
    return rows.recording();
}

/// An aircraft that points north, so many metres north of its place.
Position onGroundAt(const Airport& airport, double metresNorth, double knots) {
    const LatLon at = shifted({52, 4}, metresNorth < 0 ? 180 : 0, std::abs(metresNorth));
    return {at.lat, at.lon, 0, 0, 0, airport.standingFeet(), 0, knots};
}

TEST(AnalysisOfTheGround, heightsAboveItAreTimeFloatingAndBelow) {
    Airport airport;
    const Analysis analysis = analysisOf(
        [&airport](double due) {
            Position position = onGroundAt(airport, 0, 0);
            position.altFeet += due >= 30 && due < 34 ? 3 : due >= 50 && due < 55 ? -2 : 0;
            return position;
        },
        onTheGround(), airport.inputs());
    const StateFigures& ground = only(analysis).ground;
    EXPECT_NEAR(ground.seconds, 120, 0.1);
    EXPECT_NEAR(ground.floating, 4, 0.1);
    EXPECT_NEAR(ground.belowGround, 5, 0.1);
    EXPECT_EQ(only(analysis).air.seconds, 0);
}

TEST(AnalysisOfTheGround, halfAFootIsWhatTheSimulatorAllows) {
    Airport airport;
    const Analysis analysis = analysisOf(
        [&airport](double due) {
            Position position = onGroundAt(airport, 0, 0);
            position.altFeet += due < 60 ? 0.45 : -0.45;
            return position;
        },
        onTheGround(), airport.inputs());
    EXPECT_EQ(only(analysis).ground.floating + only(analysis).ground.belowGround, 0);
}

TEST(AnalysisOfTheGround, aPushFromAStandIsNotBackwards) {
    Airport airport;
    const double pushed = 6 * metersPerNm / 3600; // metres a second
    const Analysis analysis = analysisOf(
        [&](double due) {
            const double moved = std::clamp(due - 40, 0.0, 20.0) * pushed;
            return onGroundAt(airport, -moved, due >= 40 && due < 60 ? 6 : 0);
        },
        onTheGround(), airport.inputs());
    EXPECT_EQ(only(analysis).ground.backwards, 0);
    EXPECT_EQ(only(analysis).ground.sideways, 0);
}

TEST(AnalysisOfTheGround, backwardsOutOfATaxiIs) {
    Airport airport;
    const double taxi = 20 * metersPerNm / 3600;
    const Analysis analysis = analysisOf(
        [&](double due) {
            const double forth = std::clamp(due - 30, 0.0, 20.0) * taxi;
            const double back = std::clamp(due - 50, 0.0, 6.0) * taxi;
            return onGroundAt(airport, forth - back, 20);
        },
        onTheGround(), airport.inputs());
    // At the turn the half second over which a direction is taken goes both ways.
    EXPECT_NEAR(only(analysis).ground.backwards, 6, 0.6);
}

TEST(AnalysisOfTheGround, aTouchdownTellsItsSinkAndItsBank) {
    Airport airport;
    RowMaker rows;
    rows.tellFlight(0, 200);
    const Analysis analysis = analysisOf(
        [&airport](double due) {
            Position position = flyingAt(placeAt(due), airport.standingFeet());
            position.altFeet += std::max(0.0, (60 - due) * 10); // 600 feet a minute, down to the ground at 60
            position.bankRad = due < 65 ? -2 * degree : 0;      // right wing down
            return position;
        },
        rows.recording(), airport.inputs());
    ASSERT_THAT(only(analysis).touchdowns, SizeIs(1));
    const Touchdown& touchdown = only(analysis).touchdowns[0];
    EXPECT_NEAR(touchdown.seconds, 90, 0.11);
    EXPECT_NEAR(touchdown.feetPerMinute, -600, 10);
    EXPECT_NEAR(touchdown.bankDegrees, 2, 0.01);
    EXPECT_NEAR(only(analysis).air.seconds, 50, 0.2);
    EXPECT_NEAR(only(analysis).ground.seconds, 70, 0.2);
}

/// It is compared in every other frame, and on the ground in just those.
TEST(AnalysisOfTheGround, whatIsFlownWithoutSamplesCountsWhereEachFrameIs) {
    Airport airport;
    RowMaker rows;
    rows.tellFlight(0, 60);
    const Analysis analysis = analysisOf(
        [&airport](double due) {
            const auto frame = std::lround((due + 30) * FlownTrace::framesPerSecond);
            return flyingAt(placeAt(due), airport.standingFeet() + (frame % 2 == 0 ? 0 : 100));
        },
        rows.recording(), airport.inputs());
    const StateFigures& air = only(analysis).air;
    const StateFigures& ground = only(analysis).ground;
    EXPECT_NEAR(ground.withoutSamples, 35, 0.2);
    EXPECT_NEAR(air.withoutSamples, 35, 0.2);
    EXPECT_LE(ground.withoutSamples + ground.onWayBack, ground.seconds);
    EXPECT_LE(air.withoutSamples + air.onWayBack, air.seconds);
}

// --- Several aircraft

TEST(AnalysisOfSeveral, sevenSecondsInOneAnotherAreSeven) {
    FlownTrace trace;
    trace.create(10, "KLM1");
    trace.create(11, "KLM2");
    const auto first = [](double seconds) { return flyingAt(placeAt(seconds)); };
    const auto second = [](double seconds) {
        return flyingAt(shifted(placeAt(seconds), 180, seconds >= 20 && seconds < 27 ? 10 : 500));
    };
    trace.fly(0, 60, {{10, first}, {11, second}});
    std::istringstream bytes(trace.bytes());
    const Analysis analysis = analyse({.trace = bytes});
    EXPECT_NEAR(analysis.overlapSeconds, 7, 0.06);
    ASSERT_THAT(analysis.aircraft, SizeIs(2));
    EXPECT_NEAR(analysis.aircraft[0].figures.air.overlapping, 7, 0.06);
    EXPECT_NEAR(analysis.aircraft[1].figures.air.overlapping, 7, 0.06);
    EXPECT_EQ(analysis.moments.count(MomentKind::overlap), 1u);
    const auto moment = std::find_if(analysis.worst.begin(), analysis.worst.end(),
                                     [](const DetailedMoment& one) { return one.moment.kind == MomentKind::overlap; });
    ASSERT_NE(moment, analysis.worst.end());
    EXPECT_EQ(moment->moment.objectId, 10u);
    EXPECT_EQ(moment->moment.otherId, 11u);
    EXPECT_NEAR(moment->moment.begin, 20, 0.06);
    EXPECT_NEAR(moment->moment.end, 27, 0.06);
    EXPECT_FALSE(moment->other.empty());
}

TEST(AnalysisOfSeveral, theUserAndForeignAircraftAreNotMeasured) {
    FlownTrace trace;
    trace.fly(0, 10, {{700, [](double) { return flyingAt({52.1, 4.1}); }}});
    std::istringstream bytes(trace.bytes());
    EXPECT_THAT(analyse({.trace = bytes}).aircraft, IsEmpty());
}

TEST(AnalysisOfSeveral, ofTwoWithOneTailNumberEachHasItsOwnTrack) {
    RowMaker rows;
    rows.tellFlight(0, 200);
    rows.line.hexid = 4734982;
    rows.line.registration = "PH-TWO";
    rows.tellAll(0, 200, 2, [](double seconds) { return shifted(placeAt(seconds), 0, 5000); });
    const Recording recording = rows.recording();
    FlownTrace trace;
    trace.create(10, "KLM1");
    trace.create(11, "KLM1");
    trace.fly(40, 100,
              {{10, [](double seconds) { return flyingAt(shifted(placeAt(seconds - 30), 0, 5000)); }},
               {11, [](double seconds) { return flyingAt(placeAt(seconds - 30)); }}});
    std::istringstream bytes(trace.bytes());
    const Analysis analysis = analyse({.trace = bytes, .recording = &recording, .feedStart = 0});
    EXPECT_EQ(analysis.aircraft.at(0).facts.feed->hexid, 4734982u);
    EXPECT_EQ(analysis.aircraft.at(1).facts.feed->hexid, 4734981u);
    EXPECT_LT(analysis.all.air.crossTrack.worst(), 0.1);
}

TEST(AnalysisOfSeveral, theTimeToTheFirstSightCountsFromTheFirstLineThatTheProgramTakes) {
    const Recording recording = flight();
    FlownTrace trace;
    trace.create(10, "KLM1");
    trace.fly(0, 40, {});
    trace.fly(40, 100, {{10, [](double seconds) { return flyingAt(placeAt(seconds - 30)); }}});
    std::istringstream bytes(trace.bytes());
    const Analysis analysis = analyse({.trace = bytes, .recording = &recording, .feedStart = 5});
    ASSERT_TRUE(only(analysis).firstSight.has_value());
    EXPECT_NEAR(*only(analysis).firstSight, 35, 0.06);
    EXPECT_EQ(analysis.firstSight.count(), 1u);
}

TEST(AnalysisOfSeveral, aDamagedTraceIsAnError) {
    FlownTrace trace;
    trace.create(10, "KLM1");
    trace.fly(0, 10, {{10, [](double seconds) { return flyingAt(placeAt(seconds)); }}});
    std::string bytes = trace.bytes();
    std::istringstream cut(bytes.substr(0, bytes.size() - 3));
    EXPECT_TRUE(analyse({.trace = cut}).survey.endedEarly);
    bytes += std::string("\1\0", 2);
    std::istringstream damaged(bytes);
    EXPECT_THROW(analyse({.trace = damaged}), TraceError);
}

TEST(AnalysisOfSeveral, anEmptyTraceGivesNoFigures) {
    FlownTrace trace;
    std::istringstream bytes(trace.bytes());
    const Analysis analysis = analyse({.trace = bytes});
    EXPECT_THAT(analysis.aircraft, IsEmpty());
    EXPECT_THAT(analysis.worst, IsEmpty());
}

} // namespace
} // namespace rig
