// tests/feed/traffic_reader_test.cpp
#include "feed/traffic_reader.h"

#include <cmath>
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

#include "core/injection_radius.h"
#include "core/parameters.h"
#include "core/slot_clock.h"
#include "feed/sample_queue.h"
#include "platform/text_encoding.h"
#include "tests/support/allocation_count.h"
#include "tests/support/log_capture.h"
#include "tests/support/traffic_line_builder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr LatLon amsterdam{52.31, 4.76};
constexpr double radians = 0.017453292519943295;

std::vector<std::string> sorted(const CallSignSet& set) {
    return {set.begin(), set.end()};
}

class TrafficReaderTest : public testing::Test {
protected:
    TrafficReaderTest() {
        resetParameters();
        gRadiusNm = 40;
        slotClock = 500;
        gAcceptSamples = true;
        gLiveSampleQueue.clear();
        reader.setUserLatLon(amsterdam);
    }

    ~TrafficReaderTest() override {
        resetParameters();
        slotClock = 0;
        gAcceptSamples = false;
        gLiveSampleQueue.clear();
    }

    LineOutcome outcome() { return reader.processLine(builder.line()); }

    LineOutcome outcomeWith(std::size_t field, const std::string& text) {
        TrafficLineBuilder changed = builder;
        return reader.processLine(changed.with(field, text).line());
    }

    /// The record that the line becomes; an empty one when it becomes none.
    FeedRecord record() {
        EXPECT_EQ(outcome(), LineOutcome::accepted);
        return gLiveSampleQueue.pop().value_or(FeedRecord{});
    }

    FeedRecord recordWith(std::size_t field, const std::string& text) {
        EXPECT_EQ(outcomeWith(field, text), LineOutcome::accepted);
        return gLiveSampleQueue.pop().value_or(FeedRecord{});
    }

    Sample sampleWith(std::size_t field, const std::string& text) { return recordWith(field, text).sample; }

    void onGroundAtAmsterdam() {
        reader.setParkingAirport(ParkingAirport{amsterdam, -11});
        builder.with(traffic_field::altitude, "0").with(traffic_field::gs, "12").with(traffic_field::lat, "52.31");
        builder.with(traffic_field::lon, "4.77");
    }

    void expectDroppedWithoutHeap(const TrafficLineBuilder& dropped, LineOutcome expected) {
        const std::string line = dropped.line();
        const std::size_t before = allocationsOfThisThread();
        const LineOutcome result = reader.processLine(line);
        const std::size_t after = allocationsOfThisThread();
        EXPECT_EQ(result, expected) << line;
        EXPECT_EQ(after, before) << line;
    }

    LogCapture log;
    TrafficReader reader;
    TrafficLineBuilder builder;
};

TEST_F(TrafficReaderTest, anAcceptedLineBecomesARecord) {
    const FeedRecord r = record();

    EXPECT_EQ(r.type, "E190");
    EXPECT_EQ(r.origin, "AMS");
    EXPECT_EQ(r.destination, "LHR");
    EXPECT_EQ(r.callsign, "KLM1627");
    EXPECT_EQ(r.registration, "PH-EXF");
    EXPECT_EQ(r.feedTime, 1666985865.8);
    EXPECT_EQ(r.hexid, 4739591u);
    EXPECT_EQ(r.sample.lat, 52.25382);
    EXPECT_EQ(r.sample.lon, 4.92249);
    EXPECT_EQ(r.sample.alt, 24525);
    EXPECT_EQ(r.sample.gs, 281.30);
    EXPECT_EQ(r.sample.track, 92.45);
    EXPECT_EQ(r.sample.vs, 2368);
    EXPECT_EQ(r.sample.tas, 258);
    EXPECT_EQ(r.sample.slot, 3500);
    EXPECT_EQ(r.sample.airborne, 1);
    EXPECT_EQ(r.sample.stationary, 0);
    EXPECT_EQ(r.sample.hasHeading, 1);
    EXPECT_EQ(r.sample.roll, -0.4 * radians);
    EXPECT_EQ(r.sample.heading, 98.16 * radians);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(TrafficReaderTest, aGroundVehicleAnywhereInTheLineIsDroppedBeforeItIsSplit) {
    EXPECT_EQ(reader.processLine(builder.line() + " VEH"), LineOutcome::groundVehicle);
    EXPECT_EQ(reader.processLine("not a line at all VEH"), LineOutcome::groundVehicle);
    EXPECT_EQ(outcomeWith(traffic_field::callsign, "AMS VEH1"), LineOutcome::groundVehicle);
    EXPECT_EQ(reader.lastFeedTime, 0);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(TrafficReaderTest, aVehicleWithoutTheBlankIsALine) {
    EXPECT_EQ(recordWith(traffic_field::callsign, "VEH1").callsign, "VEH1");
}

TEST_F(TrafficReaderTest, aLineOf29FieldsIsWhole) {
    EXPECT_EQ(reader.processLine(builder.firstFields(29)), LineOutcome::accepted);
}

TEST_F(TrafficReaderTest, aShorterLineDoesNotParseWhateverItHolds) {
    for (std::size_t count = 1; count < 29; ++count) {
        EXPECT_EQ(reader.processLine(builder.firstFields(count)), LineOutcome::doesNotParse) << count;
    }
    EXPECT_EQ(reader.processLine(""), LineOutcome::doesNotParse);
    EXPECT_EQ(log.lines().size(), 29u);
    EXPECT_TRUE(log.contains("exception in processLineSub: 28 fields, 29 are needed"));
    EXPECT_EQ(reader.lastFeedTime, 0);
}

TEST_F(TrafficReaderTest, afterABadLineTheNextOneIsRead) {
    EXPECT_EQ(reader.processLine("bad"), LineOutcome::doesNotParse);
    EXPECT_EQ(outcome(), LineOutcome::accepted);
}

TEST_F(TrafficReaderTest, theTimeStampStaysEvenIfTheLineIsDroppedLater) {
    EXPECT_EQ(outcomeWith(traffic_field::lat, "10"), LineOutcome::outOfRange);
    EXPECT_EQ(reader.lastFeedTime, 1666985865.8);
    builder.with(traffic_field::timestamp, "1666985870.2");
    EXPECT_EQ(outcomeWith(traffic_field::lat, "x"), LineOutcome::doesNotParse);
    EXPECT_EQ(reader.lastFeedTime, 1666985870.2);
}

TEST_F(TrafficReaderTest, aTimeStampThatCannotBeReadLeavesTheFormerOne) {
    EXPECT_EQ(outcome(), LineOutcome::accepted);
    EXPECT_EQ(outcomeWith(traffic_field::timestamp, "x"), LineOutcome::doesNotParse);
    EXPECT_EQ(reader.lastFeedTime, 1666985865.8);
}

struct BadField {
    std::size_t index;
    std::string before; ///< of the log text, up to the field's own
    std::string after;
};

const std::vector<BadField> numericFields{
    {traffic_field::timestamp, "timestamp:", ""},
    {traffic_field::lat, "lat:", ""},
    {traffic_field::lon, "lon:", ""},
    {traffic_field::altitude, "altitude ", " incorrect, from: adsb_icao"},
    {traffic_field::vs, "vs:", ""},
    {traffic_field::track, "track incorrect ", ""},
    {traffic_field::gs, "gs:", ""},
    {traffic_field::tas, "TAS incorrect", ""},
    {traffic_field::roll, "roll:", ""},
    {traffic_field::trueHeading, "trueheading:", ""},
};

TEST_F(TrafficReaderTest, whatIsNoDecimalNumberFailsInEveryNumericField) {
    for (const BadField& field : numericFields) {
        for (const std::string text : {"nan", "NaN", "nan(1)", "inf", "-inf", "Infinity", "1e999", "-1e999", "0x1F",
                                       "1p3", "12abc", " 12", "12 ", "+12", "null", "--1", "-", ".", "e5"}) {
            EXPECT_EQ(outcomeWith(field.index, text), LineOutcome::doesNotParse) << field.before << text;
            EXPECT_EQ(log.lines().back(), "exception in processLineSub: " + field.before + text + field.after);
        }
    }
    EXPECT_TRUE(gLiveSampleQueue.empty());
}

TEST_F(TrafficReaderTest, anEmptyFieldFailsWhereANumberIsNeeded) {
    for (const BadField& field : numericFields) {
        if (field.index != traffic_field::track) {
            EXPECT_EQ(outcomeWith(field.index, ""), LineOutcome::doesNotParse) << field.before;
            EXPECT_EQ(log.lines().back(), "exception in processLineSub: " + field.before + field.after);
        }
    }
}

TEST_F(TrafficReaderTest, anIdentityThatIsNoNumberFails) {
    for (const std::string text : {"", "null", "nan", "inf", "-4739591", "ABC", "4294967296", "\xC3\xBC"}) {
        EXPECT_EQ(outcomeWith(traffic_field::hexid, text), LineOutcome::doesNotParse) << text;
        EXPECT_EQ(log.lines().back(), "exception in processLineSub: hexid incorrect" + text);
    }
}

TEST_F(TrafficReaderTest, anIdentityEndsAtTheFirstOtherCharacter) {
    EXPECT_EQ(recordWith(traffic_field::hexid, "4739591x").hexid, 4739591u);
    EXPECT_EQ(outcomeWith(traffic_field::hexid, "0x485147"), LineOutcome::hexidTooLow);
    EXPECT_EQ(outcomeWith(traffic_field::hexid, "1e999"), LineOutcome::hexidTooLow);
}

TEST_F(TrafficReaderTest, identity10000IsDroppedAnd10001IsNot) {
    EXPECT_EQ(outcomeWith(traffic_field::hexid, "0"), LineOutcome::hexidTooLow);
    EXPECT_EQ(outcomeWith(traffic_field::hexid, "10000"), LineOutcome::hexidTooLow);
    EXPECT_EQ(recordWith(traffic_field::hexid, "10001").hexid, 10001u);
    EXPECT_EQ(recordWith(traffic_field::hexid, "4294967295").hexid, 4294967295u);
}

TEST_F(TrafficReaderTest, aPositionOffTheGlobeOrAtZeroIsInvalid) {
    const std::vector<std::tuple<std::string, std::string, std::string>> positions{
        {"90.5", "4.9", "90.500000,4.900000"},       {"-90.5", "4.9", "-90.500000,4.900000"},
        {"52.3", "180.5", "52.300000,180.500000"},   {"52.3", "-180.5", "52.300000,-180.500000"},
        {"0.0001", "-0.0001", "0.000100,-0.000100"}, {"0", "0", "0.000000,0.000000"},
    };
    for (const auto& [lat, lon, text] : positions) {
        builder.with(traffic_field::lat, lat).with(traffic_field::lon, lon);
        EXPECT_EQ(outcome(), LineOutcome::doesNotParse);
        EXPECT_EQ(log.lines().back(), "exception in processLineSub: invalid lalo: " + text);
    }
}

TEST_F(TrafficReaderTest, anAircraftBeyondTheRadiusIsDropped) {
    EXPECT_EQ(outcomeWith(traffic_field::lat, "52.96"), LineOutcome::accepted); // 39.4 nm
    EXPECT_EQ(outcomeWith(traffic_field::lat, "52.98"), LineOutcome::outOfRange);
    EXPECT_EQ(outcomeWith(traffic_field::lon, "5.9"), LineOutcome::outOfRange);
    gRadiusNm = 100;
    EXPECT_EQ(outcomeWith(traffic_field::lat, "52.98"), LineOutcome::accepted);
    gRadiusNm = 2;
    EXPECT_EQ(outcome(), LineOutcome::outOfRange);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(TrafficReaderTest, anAircraftExactlyOnTheRadiusIsWithinIt) {
    const double distanceNm = greatCircleNm(amsterdam, {52.25382, 4.92249});
    gRadiusNm = distanceNm;
    EXPECT_EQ(outcome(), LineOutcome::accepted);
    gRadiusNm = std::nextafter(distanceNm, 0);
    EXPECT_EQ(outcome(), LineOutcome::outOfRange);
}

TEST_F(TrafficReaderTest, theRadiusLiesRoundTheUser) {
    reader.setUserLatLon({40, -74});
    EXPECT_EQ(outcome(), LineOutcome::outOfRange);
    builder.with(traffic_field::lat, "40.1").with(traffic_field::lon, "-74.1");
    EXPECT_EQ(outcome(), LineOutcome::accepted);
}

TEST_F(TrafficReaderTest, aRegistrationHasAtMost12Characters) {
    EXPECT_EQ(recordWith(traffic_field::registration, "123456789012").registration, "123456789012");
    EXPECT_EQ(outcomeWith(traffic_field::registration, "1234567890123"), LineOutcome::registrationTooLong);
}

TEST_F(TrafficReaderTest, nullTextsBecomeEmpty) {
    EXPECT_EQ(recordWith(traffic_field::registration, "null").registration, "");
    EXPECT_EQ(recordWith(traffic_field::callsign, "null").callsign, "");
    EXPECT_EQ(recordWith(traffic_field::origin, "null").origin, "");
    EXPECT_EQ(recordWith(traffic_field::destination, "null").destination, "");
}

TEST_F(TrafficReaderTest, callSignsAreCollectedOnlyWhileAskedFor) {
    EXPECT_EQ(outcome(), LineOutcome::accepted);
    EXPECT_THAT(sorted(reader.seenCallSignsNow()), IsEmpty());
    reader.collectCallSigns = true;
    EXPECT_EQ(outcome(), LineOutcome::accepted);
    EXPECT_EQ(outcome(), LineOutcome::accepted);
    EXPECT_EQ(outcomeWith(traffic_field::callsign, "TRA22N"), LineOutcome::accepted);
    reader.collectCallSigns = false;
    EXPECT_EQ(outcomeWith(traffic_field::callsign, "LATE1"), LineOutcome::accepted);
    EXPECT_THAT(sorted(reader.seenCallSignsNow()), UnorderedElementsAre("KLM1627", "TRA22N"));
    reader.clearSeenCallSigns();
    EXPECT_THAT(sorted(reader.seenCallSignsNow()), IsEmpty());
}

TEST_F(TrafficReaderTest, aCallSignThatIsNoneIsNotCollected) {
    reader.collectCallSigns = true;
    for (const char* callsign : {"null", "", "@@@@@@@@", "KLM@"}) {
        outcomeWith(traffic_field::callsign, callsign);
    }
    EXPECT_THAT(sorted(reader.seenCallSignsNow()), IsEmpty());
}

TEST_F(TrafficReaderTest, aCallSignIsCollectedEvenIfItsLineIsDroppedLater) {
    reader.collectCallSigns = true;
    EXPECT_EQ(outcomeWith(traffic_field::type, "ZZZZ"), LineOutcome::unwantedKind);
    EXPECT_THAT(sorted(reader.seenCallSignsNow()), ElementsAre("KLM1627"));
}

TEST_F(TrafficReaderTest, aCallSignOutOfRangeOrWithTooLongARegistrationIsNotCollected) {
    reader.collectCallSigns = true;
    EXPECT_EQ(outcomeWith(traffic_field::lat, "10"), LineOutcome::outOfRange);
    EXPECT_EQ(outcomeWith(traffic_field::registration, "1234567890123"), LineOutcome::registrationTooLong);
    EXPECT_THAT(sorted(reader.seenCallSignsNow()), IsEmpty());
}

TEST_F(TrafficReaderTest, aTypeThatIsNotKnownDropsTheLine) {
    for (const char* type : {"ZZZZ", "null", "0", ""}) {
        EXPECT_EQ(outcomeWith(traffic_field::type, type), LineOutcome::unwantedKind) << type;
    }
    builder.with(traffic_field::category, "");
    EXPECT_EQ(outcomeWith(traffic_field::type, "ZZZZ"), LineOutcome::unwantedKind);
}

TEST_F(TrafficReaderTest, aParachutistIsDroppedWithACategoryAndPassesWithoutOne) {
    builder.with(traffic_field::type, "PARA");
    EXPECT_EQ(outcomeWith(traffic_field::category, "A3"), LineOutcome::unwantedKind);
    EXPECT_EQ(recordWith(traffic_field::category, "").type, "PARA");
    EXPECT_EQ(recordWith(traffic_field::category, "null").type, "PARA");
}

TEST_F(TrafficReaderTest, anUnwantedCategoryDropsTheLine) {
    for (const char* category : {"B1", "B2", "B4", "C1", "C2"}) {
        EXPECT_EQ(outcomeWith(traffic_field::category, category), LineOutcome::unwantedKind) << category;
    }
}

TEST_F(TrafficReaderTest, aTrueHeadingOfZeroBecomesTwoPi) {
    const Sample sample = sampleWith(traffic_field::trueHeading, "0.0");
    EXPECT_EQ(sample.heading, 6.283185307179586);
    EXPECT_EQ(sample.hasHeading, 1);
}

TEST_F(TrafficReaderTest, aTrueHeadingOf360Counts) {
    EXPECT_EQ(sampleWith(traffic_field::trueHeading, "360").heading, 360 * radians);
}

TEST_F(TrafficReaderTest, aNegativeTrueHeadingIsNone) {
    const Sample sample = sampleWith(traffic_field::trueHeading, "-1.00");
    EXPECT_FALSE(sample.heading.has_value());
    EXPECT_EQ(sample.hasHeading, 0);
}

TEST_F(TrafficReaderTest, aTrueHeadingAbove360Fails) {
    EXPECT_EQ(outcomeWith(traffic_field::trueHeading, "361"), LineOutcome::doesNotParse);
    EXPECT_THAT(log.lines(), ElementsAre("exception in processLineSub: trueheading: 361.00"));
}

TEST_F(TrafficReaderTest, otherSourcesHaveNoTrueHeadingAndItIsNotEvenRead) {
    for (const char* source : {"adsb_icao_nt", "mlat", "other", "ADSB_ICAO", ""}) {
        builder.with(traffic_field::source, source);
        const Sample sample = sampleWith(traffic_field::trueHeading, "garbage");
        EXPECT_FALSE(sample.heading.has_value()) << source;
        EXPECT_EQ(sample.hasHeading, 0);
    }
}

TEST_F(TrafficReaderTest, anAltitudeOf14000IsPulledToTheGroundBySpeedAlone) {
    reader.setParkingAirport(ParkingAirport{amsterdam, 13990});
    reader.setReferenceElevation(13990);
    builder.with(traffic_field::gs, "36").with(traffic_field::lat, "52.31").with(traffic_field::lon, "4.77");
    EXPECT_EQ(sampleWith(traffic_field::altitude, "14000").alt, 14000);
    EXPECT_EQ(sampleWith(traffic_field::altitude, "13999").alt, 0);
    builder.with(traffic_field::gs, "35");
    const Sample sample = sampleWith(traffic_field::altitude, "14000");
    EXPECT_EQ(sample.alt, 0);
    EXPECT_EQ(sample.airborne, 0);
}

TEST_F(TrafficReaderTest, withoutAReferenceElevationOnlySlowAircraftArePulledToTheGround) {
    reader.setParkingAirport(ParkingAirport{amsterdam, 0});
    builder.with(traffic_field::altitude, "10").with(traffic_field::gs, "100").with(traffic_field::lat, "52.31");
    builder.with(traffic_field::lon, "4.77");
    EXPECT_EQ(record().sample.alt, 10);
    reader.setReferenceElevation(-11);
    EXPECT_EQ(record().sample.alt, 0);
    reader.clearReferenceElevation();
    EXPECT_EQ(record().sample.alt, 10);
    EXPECT_EQ(sampleWith(traffic_field::gs, "35").alt, 0);
}

TEST_F(TrafficReaderTest, airborneOnlyWantsMoreThan300FeetAboveTheParkingAirport) {
    AIRBORNE_ONLY.value = true;
    EXPECT_EQ(outcomeWith(traffic_field::altitude, "300"), LineOutcome::notAirborneEnough);
    EXPECT_EQ(outcomeWith(traffic_field::altitude, "301"), LineOutcome::accepted);
    reader.setParkingAirport(ParkingAirport{amsterdam, 1000});
    EXPECT_EQ(outcomeWith(traffic_field::altitude, "1300"), LineOutcome::notAirborneEnough);
    EXPECT_EQ(outcomeWith(traffic_field::altitude, "1301"), LineOutcome::accepted);
    // Below the airport by more than that is no flight either.
    EXPECT_EQ(outcomeWith(traffic_field::altitude, "500"), LineOutcome::notAirborneEnough);
    EXPECT_EQ(outcomeWith(traffic_field::altitude, "0"), LineOutcome::notAirborneEnough);
    AIRBORNE_ONLY.value = false;
    EXPECT_EQ(outcomeWith(traffic_field::altitude, "500"), LineOutcome::accepted);
}

TEST_F(TrafficReaderTest, aCallSignWithAnAtBecomesEmpty) {
    const FeedRecord r = recordWith(traffic_field::callsign, "@@@@@@@@");
    EXPECT_EQ(r.callsign, "");
    EXPECT_EQ(r.registration, "PH-EXF");
    EXPECT_EQ(recordWith(traffic_field::callsign, "KLM@1").callsign, "");
}

TEST_F(TrafficReaderTest, theCallSignsOfNoAircraftAreDropped) {
    for (const char* callsign : {"ERARMTR1", "AIRPORT1", "00000000"}) {
        EXPECT_EQ(outcomeWith(traffic_field::callsign, callsign), LineOutcome::unwantedCallSign) << callsign;
    }
    EXPECT_EQ(outcomeWith(traffic_field::callsign, "0000000"), LineOutcome::accepted);
}

TEST_F(TrafficReaderTest, withNeitherCallSignNorRegistrationALineIsDropped) {
    builder.with(traffic_field::registration, "");
    EXPECT_EQ(outcomeWith(traffic_field::callsign, ""), LineOutcome::nameless);
    EXPECT_EQ(outcomeWith(traffic_field::callsign, "null"), LineOutcome::nameless);
    EXPECT_EQ(outcomeWith(traffic_field::callsign, "@@@@@@@@"), LineOutcome::nameless);
    builder.with(traffic_field::registration, "null");
    EXPECT_EQ(outcomeWith(traffic_field::callsign, ""), LineOutcome::nameless);
    EXPECT_EQ(outcomeWith(traffic_field::callsign, "KLM1"), LineOutcome::accepted);
}

TEST_F(TrafficReaderTest, groundTrafficIsWantedOnlyNearTheParkingAirport) {
    onGroundAtAmsterdam();
    const Sample sample = record().sample;
    EXPECT_EQ(sample.airborne, 0);
    EXPECT_EQ(sample.alt, 0);
    EXPECT_EQ(outcomeWith(traffic_field::lat, "52.39"), LineOutcome::accepted); // 4.8 nm
    EXPECT_EQ(outcomeWith(traffic_field::lat, "52.40"), LineOutcome::groundNotWanted);
    reader.setParkingAirport(std::nullopt);
    EXPECT_EQ(outcome(), LineOutcome::groundNotWanted);
}

/// The last latitude north of Amsterdam, on its meridian, that is at most so far away.
double lastLatWithin(double nm) {
    double inside = amsterdam.lat;
    double outside = amsterdam.lat + 1;
    while (std::nextafter(inside, outside) != outside) {
        const double middle = inside + (outside - inside) / 2;
        (greatCircleNm(amsterdam, {middle, amsterdam.lon}) <= nm ? inside : outside) = middle;
    }
    return inside;
}

TEST_F(TrafficReaderTest, groundTrafficIsWantedUpToFiveMilesExactly) {
    onGroundAtAmsterdam();
    builder.with(traffic_field::lon, fmt::format("{}", amsterdam.lon));
    const double lat = lastLatWithin(5);
    EXPECT_EQ(outcomeWith(traffic_field::lat, fmt::format("{}", lat)), LineOutcome::accepted);
    EXPECT_EQ(outcomeWith(traffic_field::lat, fmt::format("{}", std::nextafter(lat, 90))),
              LineOutcome::groundNotWanted);
}

TEST_F(TrafficReaderTest, airborneTrafficIsWantedFarFromTheParkingAirport) {
    reader.setParkingAirport(ParkingAirport{{50, 8}, 364});
    EXPECT_EQ(outcome(), LineOutcome::accepted);
}

TEST_F(TrafficReaderTest, anEmptyTrackIsTheHeadingWhenThereIsOne) {
    EXPECT_EQ(sampleWith(traffic_field::track, "").track, 98.16 * radians * 57.29577951308232);
    EXPECT_EQ(sampleWith(traffic_field::track, "0.00").track, 98.16 * radians * 57.29577951308232);
    builder.with(traffic_field::trueHeading, "-1");
    EXPECT_EQ(sampleWith(traffic_field::track, "").track, 0);
    EXPECT_EQ(sampleWith(traffic_field::track, "0").track, 0);
    EXPECT_EQ(sampleWith(traffic_field::track, "0.01").track, 0.01);
}

TEST_F(TrafficReaderTest, aTrackThatIsNotKnownIs360WithATrueHeadingOfZero) {
    builder.with(traffic_field::trueHeading, "0.0");
    EXPECT_EQ(sampleWith(traffic_field::track, "0").track, 360);
    EXPECT_EQ(sampleWith(traffic_field::track, "").track, 360);
}

TEST_F(TrafficReaderTest, theRollIsTurnedToTheSimulatorsSense) {
    EXPECT_EQ(sampleWith(traffic_field::roll, "25.3").roll, -25.3 * radians);
    EXPECT_EQ(sampleWith(traffic_field::roll, "-25.3").roll, 25.3 * radians);
    EXPECT_FALSE(sampleWith(traffic_field::roll, "-1.0").roll.has_value());
    EXPECT_FALSE(sampleWith(traffic_field::roll, "0.0").roll.has_value());
}

TEST_F(TrafficReaderTest, onTheGroundTheRollIsNotEvenRead) {
    onGroundAtAmsterdam();
    EXPECT_FALSE(sampleWith(traffic_field::roll, "garbage").roll.has_value());
    EXPECT_FALSE(sampleWith(traffic_field::roll, "5").roll.has_value());
}

TEST_F(TrafficReaderTest, anAirspeedThatIsNotKnownIsTheUsualOneOfTheAltitude) {
    builder.with(traffic_field::tas, "-1.0");
    const std::vector<std::pair<std::string, double>> rows{{"2000", 180},  {"2001", 220},  {"5000", 220},
                                                           {"5001", 250},  {"10000", 250}, {"10001", 350},
                                                           {"20000", 350}, {"20001", 430}, {"45000", 430}};
    for (const auto& [altitude, knots] : rows) {
        EXPECT_EQ(sampleWith(traffic_field::altitude, altitude).tas, knots) << altitude;
    }
    EXPECT_EQ(sampleWith(traffic_field::tas, "-1").tas, 430);
    EXPECT_EQ(sampleWith(traffic_field::tas, "-1.1").tas, -1.1);
}

TEST_F(TrafficReaderTest, anAirspeedThatIsNotKnownOnTheGroundIsThatOfTheLowestRow) {
    onGroundAtAmsterdam();
    EXPECT_EQ(sampleWith(traffic_field::tas, "-1").tas, 180);
}

TEST_F(TrafficReaderTest, aSampleIsDue30SecondsAhead) {
    slotClock = 123456;
    EXPECT_EQ(record().sample.slot, 126456);
}

TEST_F(TrafficReaderTest, theFeedTimeIsTheLinesOwn) {
    EXPECT_EQ(recordWith(traffic_field::timestamp, "1700000000.25").feedTime, 1700000000.25);
    EXPECT_EQ(reader.lastFeedTime, 1700000000.25);
}

TEST_F(TrafficReaderTest, whatTheEngineDoesNotTakeIsLost) {
    gAcceptSamples = false;
    EXPECT_EQ(outcome(), LineOutcome::refused);
    EXPECT_TRUE(gLiveSampleQueue.empty());
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(TrafficReaderTest, textsThatAreNoUtf8FailAndLeaveTheLogWhole) {
    const std::vector<std::pair<std::size_t, std::string>> texts{{traffic_field::callsign, "callsign"},
                                                                 {traffic_field::type, "type"},
                                                                 {traffic_field::registration, "registration"},
                                                                 {traffic_field::origin, "origin"},
                                                                 {traffic_field::destination, "destination"}};
    for (const auto& [index, name] : texts) {
        EXPECT_EQ(outcomeWith(index, "K\xFFL\nM"), LineOutcome::doesNotParse) << name;
        EXPECT_EQ(log.lines().back(), "exception in processLineSub: " + name + ":K?L?M");
        EXPECT_EQ(recordWith(index, "\xC3\xBC").hexid, 4739591u) << name;
    }
}

TEST_F(TrafficReaderTest, aCallSignThatIsNoUtf8IsNotCollected) {
    reader.collectCallSigns = true;
    EXPECT_EQ(outcomeWith(traffic_field::callsign, "K\xFFL"), LineOutcome::doesNotParse);
    EXPECT_THAT(sorted(reader.seenCallSignsNow()), IsEmpty());
}

TEST_F(TrafficReaderTest, badNumbersOfAnyBytesLeaveTheLogWhole) {
    EXPECT_EQ(outcomeWith(traffic_field::lat, "5\n\x01\xFE"), LineOutcome::doesNotParse);
    EXPECT_THAT(log.lines(), ElementsAre("exception in processLineSub: lat:5???"));
}

TEST_F(TrafficReaderTest, noGarbageEverReachesASample) {
    std::mt19937 random(6);
    const std::vector<std::string> garbage{"nan",    "-nan", "inf",  "-inf", "1e999", "1e308",  "-1e308",
                                           "1e-320", "0x7f", "",     "null", "-0.0",  "0",      "-1",
                                           "360",    "\xFF", "1e18", "1.",   ".5",    "-.5e-3", "99999999999999999999"};
    onGroundAtAmsterdam();
    int accepted = 0;
    for (int round = 0; round < 50000; ++round) {
        TrafficLineBuilder line = builder;
        if (random() % 2 == 0) {
            line.with(traffic_field::altitude, "9000").with(traffic_field::gs, "250");
        }
        line.with(random() % 29, garbage[random() % garbage.size()]);
        line.with(random() % 29, garbage[random() % garbage.size()]);
        if (reader.processLine(line.line()) != LineOutcome::accepted) {
            continue;
        }
        ++accepted;
        const FeedRecord r = gLiveSampleQueue.pop().value();
        for (const double value : {r.sample.lat, r.sample.lon, r.sample.alt, r.sample.gs, r.sample.track, r.sample.vs,
                                   r.sample.tas, r.sample.roll.value_or(0), r.sample.heading.value_or(0), r.feedTime}) {
            ASSERT_TRUE(std::isfinite(value)) << line.line();
        }
        for (const std::string& text : {r.type, r.origin, r.destination, r.callsign, r.registration}) {
            ASSERT_TRUE(platform::isValidUtf8(text)) << line.line();
        }
    }
    EXPECT_GT(accepted, 5000);
}

TEST_F(TrafficReaderTest, aDroppedLineTakesNothingFromTheHeap) {
    const std::vector<std::pair<TrafficLineBuilder, LineOutcome>> droppedLines{
        {TrafficLineBuilder().with(traffic_field::lat, "10"), LineOutcome::outOfRange},
        {TrafficLineBuilder().with(traffic_field::lon, "5.9"), LineOutcome::outOfRange},
        {TrafficLineBuilder().with(traffic_field::callsign, "A VEH"), LineOutcome::groundVehicle},
        {TrafficLineBuilder().with(traffic_field::registration, "1234567890123"), LineOutcome::registrationTooLong},
        {TrafficLineBuilder().with(traffic_field::category, "C1"), LineOutcome::unwantedKind},
        {TrafficLineBuilder().with(traffic_field::hexid, "5"), LineOutcome::hexidTooLow},
        {TrafficLineBuilder().with(traffic_field::callsign, "AIRPORT1"), LineOutcome::unwantedCallSign},
        {TrafficLineBuilder().with(traffic_field::callsign, "").with(traffic_field::registration, ""),
         LineOutcome::nameless},
        {TrafficLineBuilder().with(traffic_field::altitude, "0"), LineOutcome::groundNotWanted},
    };
    reader.processLine(builder.line());
    for (const auto& [dropped, expected] : droppedLines) {
        expectDroppedWithoutHeap(dropped, expected);
    }
    AIRBORNE_ONLY.value = true;
    expectDroppedWithoutHeap(TrafficLineBuilder().with(traffic_field::altitude, "200"), LineOutcome::notAirborneEnough);
    gAcceptSamples = false;
    expectDroppedWithoutHeap(builder, LineOutcome::refused);
}

TEST_F(TrafficReaderTest, anAcceptedLineTakesOnlyItsOwnTextsFromTheHeap) {
    const std::string line = builder.line();
    const std::string longLine = TrafficLineBuilder(builder)
                                     .with(traffic_field::callsign, "A CALL SIGN OF 25 LETTERS")
                                     .with(traffic_field::origin, "AN ORIGIN OF 22 LETTERS")
                                     .line();
    reader.processLine(line);
    gLiveSampleQueue.clear();

    const std::size_t before = allocationsOfThisThread();
    const LineOutcome first = reader.processLine(line);
    const std::size_t afterShort = allocationsOfThisThread();
    const LineOutcome second = reader.processLine(longLine);
    const std::size_t afterLong = allocationsOfThisThread();

    EXPECT_EQ(first, LineOutcome::accepted);
    EXPECT_EQ(second, LineOutcome::accepted);
    EXPECT_EQ(afterShort - before, 0u);
    EXPECT_EQ(afterLong - afterShort, 2u);
}

TEST_F(TrafficReaderTest, aDatagramIsALine) {
    const std::string line = builder.line();
    reader.datagram = line;
    reader.onDatagram();
    EXPECT_EQ(gLiveSampleQueue.size(), 1u);
}

TEST_F(TrafficReaderTest, whenStoppedItPutsOutTheTrafficLamp) {
    gWindowState.trafficLamp = FeedLamp::flowing;
    gWindowState.weatherLamp = FeedLamp::flowing;
    reader.onStopped();
    EXPECT_EQ(gWindowState.trafficLamp, FeedLamp::notRunning);
    EXPECT_EQ(gWindowState.weatherLamp, FeedLamp::flowing);
    EXPECT_THAT(log.lines(), ElementsAre("Traffic Reader has stopped"));
}

TEST_F(TrafficReaderTest, theResetForgetsWhatOneRunHasSeen) {
    reader.collectCallSigns = true;
    EXPECT_EQ(outcome(), LineOutcome::accepted);
    reader.qnh = 990;
    reader.stopRequested = true;
    reader.datagramCount = 7;
    reader.lastCount = 5;
    reader.reset();
    EXPECT_THAT(sorted(reader.seenCallSignsNow()), IsEmpty());
    EXPECT_EQ(reader.qnh, 1013);
    EXPECT_EQ(reader.lastFeedTime, 0);
    EXPECT_FALSE(reader.stopRequested);
    EXPECT_EQ(reader.datagramCount, 0u);
    EXPECT_EQ(reader.lastCount, 0u);
}

} // namespace
