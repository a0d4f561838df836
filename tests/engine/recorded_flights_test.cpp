// The airborne part of real recordings, from the feed's records to the positions that the simulator gets: what flew is
// held against what was recorded, and the figures are printed.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <map>
#include <memory>
#include <tuple>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "core/injection_radius.h"
#include "core/number_text.h"
#include "core/text_parts.h"
#include "feed/traffic_reader.h"
#include "tests/engine/engine_test.h"
#include "tests/engine/flight_world.h"
#include "tests/support/recorded_lines.h"

namespace {

constexpr double mostCrossTrackMetres = 15;
constexpr double mostDelaySeconds = 60; ///< against the times of the recording

/// A line of the feed's older form of 15 fields.
std::optional<FeedRecord> recordOfOldLine(const std::string& line) {
    const std::vector<std::string_view> fields = partsOf(line, ',');
    if (fields.size() != 15 || fields[6] != "1" || fields[10].empty()) {
        return std::nullopt;
    }
    const auto number = [&fields](std::size_t i) { return parseDouble(fields[i]).value_or(0); };
    FeedRecord record;
    record.hexid = static_cast<std::uint32_t>(number(1));
    record.sample.lat = number(2);
    record.sample.lon = number(3);
    record.sample.alt = number(4);
    record.sample.vs = number(5);
    record.sample.track = number(7);
    record.sample.gs = record.sample.tas = number(8);
    record.sample.airborne = record.sample.alt > 0 ? 1 : 0;
    record.callsign = fields[9];
    record.type = fields[10];
    record.registration = fields[11];
    record.feedTime = number(14);
    if (record.sample.airborne == 0) {
        return std::nullopt;
    }
    return record;
}

std::optional<FeedRecord> recordOfJson(const nlohmann::json& row) {
    for (const char* key : {"altitude", "groundspeed", "latitude", "longitude", "track", "vertical_rate"}) {
        if (!row.contains(key) || !row[key].is_number()) {
            return std::nullopt;
        }
    }
    FeedRecord record;
    record.hexid = static_cast<std::uint32_t>(std::stoul(row["icao24"].get<std::string>(), nullptr, 16));
    record.sample.lat = row["latitude"];
    record.sample.lon = row["longitude"];
    record.sample.alt = row["altitude"];
    record.sample.gs = record.sample.tas = row["groundspeed"];
    record.sample.track = row["track"];
    record.sample.vs = row["vertical_rate"];
    record.sample.airborne = record.sample.alt > 0 ? 1 : 0;
    record.callsign = row.value("callsign", "");
    record.registration = row["icao24"];
    record.type = "A320";
    record.feedTime = row["timestamp"].get<double>() / 1000;
    return record;
}

/// A row of a receiver network's trace: seconds, position, height, speed, track, flags, vertical speed, more.
std::optional<FeedRecord> recordOfTrace(const nlohmann::json& row) {
    for (const std::size_t i : {1, 2, 3, 4, 5, 7}) {
        if (!row.at(i).is_number()) {
            return std::nullopt;
        }
    }
    FeedRecord record;
    record.hexid = 0xac671b;
    record.sample.lat = row.at(1);
    record.sample.lon = row.at(2);
    record.sample.alt = row.at(3);
    record.sample.gs = record.sample.tas = row.at(4);
    record.sample.track = row.at(5);
    record.sample.vs = row.at(7);
    record.sample.airborne = record.sample.alt > 0 ? 1 : 0;
    if (const nlohmann::json& more = row.at(8); more.is_object()) {
        if (more.contains("roll")) {
            record.sample.roll = -more["roll"].get<double>() * radiansPerDegree;
        }
        if (more.contains("true_heading")) {
            record.sample.heading = more["true_heading"].get<double>() * radiansPerDegree;
            record.sample.hasHeading = 1;
        }
    }
    record.callsign = "DAL1812";
    record.registration = "N899DN";
    record.type = "A320";
    record.feedTime = row.at(0);
    return record;
}

/// Where the aircraft is in relation to its samples.
enum class Course { onTrack, madeUp, wayBack };

/// What one aircraft has flown so far.
struct Flight {
    std::string registration;
    std::vector<TrackPoint> recorded;
    std::unique_ptr<CrossTrack> crossTrack;
    std::optional<PositionUpdate> last;
    std::int32_t lastSlot = 0;
    std::optional<PositionUpdate> lastFrame;
    std::int32_t lastFrameSlot = 0;
    Course course = Course::onTrack;
    LatLon target;
    int created = 0;
    std::string callsign;
    std::string type;

    /// Two transmitters that report one call sign and type are one aircraft for the engine.
    bool isSecondOf(const std::map<std::uint32_t, Flight>& others) const {
        return std::any_of(others.begin(), others.end(), [this](const auto& one) {
            return &one.second != this && !callsign.empty() && one.second.callsign == callsign &&
                   one.second.type == type;
        });
    }
};

struct Figures {
    std::vector<double> crossTrack;  ///< metres, ten times a second
    std::vector<double> wayBack;     ///< the same on the way to the first sample after a gap in the feed
    std::vector<double> headingRate; ///< degrees per second, ten times a second
    double worstStep = 0;            ///< metres in a frame
    double worstStepShare = 0;       ///< against the speed, or against what can be seen where that is more
    double mostBankDeg = 0;
    double mostBankShare = 0; ///< against what the category banks
    double mostPitchDeg = 0;
    double mostPitchRateShare = 0;    ///< against the category's rate
    double mostBankRateShare = 0;     ///< of legs without a reported roll
    double mostToldBankRateShare = 0; ///< of those with one, which is flown as it is told
    double mostClimbShare = 0;        ///< against what the category climbs
    double steepestDescent = 0;       ///< feet a minute
    double worstHeightStep = 0;       ///< feet in a frame
    double worstHeightStepShare = 0;
    int heightJumps = 0;
    std::map<std::string, int> jumps;      ///< by registration
    int unsound = 0;                       ///< positions with a value that is no number or out of range
    std::size_t silentLosses = 0;          ///< aircraft that went, or never came, without a line in the log
    std::map<std::string, int> neverShown; ///< aircraft by what the log says about them
};

/// What the log says of aircraft that went after they had been created.
constexpr std::array<const char*, 6> reasonsToGo{"no positions any more",
                                                 "its positions end at the edge of the range",
                                                 "its positions end where another one is in the way",
                                                 "too many positions",
                                                 "it held here, and has moved on",
                                                 "it makes room for a nearer one"};

class RecordedFlights : public EngineTest {
protected:
    RecordedFlights() {
        gRadiusNm = 100;
        GUID_CHANGES.value = false;
    }
    ~RecordedFlights() override { gRadiusNm = 40; }

    /// Plays all of it and prints the figures under this title.
    void play(const std::string& title, std::vector<FeedRecord> records) {
        std::sort(records.begin(), records.end(), [](const FeedRecord& a, const FeedRecord& b) {
            return std::tie(a.feedTime, a.hexid) < std::tie(b.feedTime, b.hexid);
        });
        for (FeedRecord& record : records) {
            if (record.registration.empty()) {
                record.registration = fmt::format("H-{:X}", record.hexid);
            }
            RegcodeTable[record.registration] = "Some Livery";
            gAllTypes.insert(record.type);
            Flight& flight = flights[record.hexid];
            flight.registration = record.registration;
            flight.callsign = record.callsign;
            flight.type = record.type;
            const LatLon at{record.sample.lat, record.sample.lon};
            if (flight.recorded.empty() || flight.recorded.back().at != at) {
                flight.recorded.push_back({at, record.feedTime - records.front().feedTime});
            }
        }
        gUserState.lat = records.front().sample.lat;
        gUserState.lon = records.front().sample.lon;
        FlightWorld world([this](std::uint32_t hexid, const PositionUpdate& at) { watch(hexid, at); });
        const double begin = records.front().feedTime;
        const double end = records.back().feedTime - begin + 100;
        std::size_t next = 0;
        for (int slot = 0; slot < end * slotsPerSecond; ++slot) {
            while (next < records.size() && (records[next].feedTime - begin) * slotsPerSecond <= slot) {
                world.feed(records[next]);
                ++next;
            }
            world.slot();
        }
        for (const auto& [objectId, hexid] : world.objects()) {
            ++flights[hexid].created;
        }
        countLosses();
        print(title, records.size(), world.created());
    }

    /// Holds what was created and is not there any more against what the log says.
    void countLosses() {
        const std::vector<std::string> lines = log.lines();
        for (const auto& [hexid, flight] : flights) {
            const std::vector<std::string> reasons = reasonsFor(flight, lines);
            const auto told =
                static_cast<std::size_t>(std::count_if(reasons.begin(), reasons.end(), [](const auto& reason) {
                    return std::find(reasonsToGo.begin(), reasonsToGo.end(), reason) != reasonsToGo.end();
                }));
            const auto gone = static_cast<std::size_t>(flight.created - (findLiveByHexid(hexid) != nullptr ? 1 : 0));
            figures.silentLosses += flight.created > 0 && gone > told ? gone - told : 0;
            if (flight.created == 0) {
                const std::string reason = reasons.empty() ? wordOfOthers(hexid, flight) : reasons.back();
                ++figures.neverShown[reason.empty() ? "no word" : reason];
                figures.silentLosses += reason.empty() ? 1 : 0;
            }
        }
    }

    /// Of an aircraft that never had a record of its own, or still waits with it; empty: nobody can tell.
    std::string wordOfOthers(std::uint32_t hexid, const Flight& flight) const {
        if (findLiveByHexid(hexid) != nullptr) {
            return "it is still to be created";
        }
        return flight.isSecondOf(flights) ? "another transmitter tells of the same aircraft" : "";
    }

    static std::vector<std::string> reasonsFor(const Flight& flight, const std::vector<std::string>& lines) {
        static constexpr std::string_view goes = " goes: ";
        std::vector<std::string> reasons;
        for (const std::string& line : lines) {
            const std::size_t at = line.find(goes);
            if (at != std::string::npos && line.find(" " + flight.registration + " ") < at) {
                reasons.push_back(line.substr(at + goes.size()));
            }
        }
        return reasons;
    }

    void watch(std::uint32_t hexid, const PositionUpdate& at) {
        const LiveAircraft* found = findLiveByHexid(hexid);
        if (found == nullptr) {
            ++figures.unsound; // a position of an aircraft that does not exist
            return;
        }
        const LiveAircraft& aircraft = *found;
        Flight& flight = flights[hexid];
        figures.unsound += isSound(at) ? 0 : 1;
        const CategoryLimits& limits = limitsOf(aircraft.category);
        if (flight.last && flight.lastSlot == slotClock - 1) {
            watchAttitude(*flight.last, at, limits, aircraft.stream[0].roll.has_value());
            watchHeight(*flight.last, at, aircraft.maxClimbPerSlot);
        }
        if (slotClock % slotsPerFrame == 0) {
            if (flight.lastFrame && flight.lastFrameSlot == slotClock - slotsPerFrame) {
                watchFrame(flight.registration, *flight.lastFrame, at);
            }
            flight.lastFrame = at;
            flight.lastFrameSlot = slotClock;
        }
        flight.last = at;
        flight.lastSlot = slotClock;
        const double bankDeg = std::abs(at.bank) * degreesPerRadian;
        figures.mostBankDeg = std::max(figures.mostBankDeg, bankDeg);
        figures.mostBankShare = std::max(figures.mostBankShare, bankDeg / limits.maxBankDeg);
        figures.mostPitchDeg = std::max(figures.mostPitchDeg, std::abs(at.pitch) * degreesPerRadian);
        watchCourse(flight, aircraft);
        if (slotClock % 10 == 0) {
            compareWithRecording(flight, {at.lat, at.lon});
        }
    }

    void watchFrame(const std::string& registration, const PositionUpdate& before, const PositionUpdate& now) {
        const double step = metresBetween({before.lat, before.lon}, {now.lat, now.lon});
        const double speed = std::max(before.tas, now.tas) * metersPerNm / 3600;
        figures.worstStep = std::max(figures.worstStep, step);
        figures.worstStepShare = std::max(figures.worstStepShare, stepShare(step, speed));
        if (isJump(step, speed)) {
            ++figures.jumps[registration];
        }
        const double feet = std::abs(now.alt - before.alt);
        const double feetPerSecond = std::max(std::abs(before.vsFps), std::abs(now.vsFps));
        figures.worstHeightStep = std::max(figures.worstHeightStep, feet);
        figures.worstHeightStepShare = std::max(figures.worstHeightStepShare, heightStepShare(feet, feetPerSecond));
        figures.heightJumps += isHeightJump(feet, feetPerSecond) ? 1 : 0;
    }

    void watchAttitude(const PositionUpdate& before, const PositionUpdate& now, const CategoryLimits& limits,
                       bool isRollTold) {
        const auto share = [](double turnRad, double limitDeg) {
            return std::abs(turnRad) * degreesPerRadian / limitDeg;
        };
        figures.mostPitchRateShare =
            std::max(figures.mostPitchRateShare, share(now.pitch - before.pitch, limits.maxPitchRateDeg));
        double& mostBankRate = isRollTold ? figures.mostToldBankRateShare : figures.mostBankRateShare;
        mostBankRate = std::max(mostBankRate, share(now.bank - before.bank, limits.maxBankRateDeg));
        if (slotClock % 10 == 0) {
            figures.headingRate.push_back(share(headingDifference(now.heading, before.heading), secondsPerSlot));
        }
    }

    /// Slot by slot. How steeply it comes down is told only: that is what its samples ask.
    void watchHeight(const PositionUpdate& before, const PositionUpdate& now, double maxClimbPerSlot) {
        const double feet = now.alt - before.alt;
        figures.mostClimbShare = std::max(figures.mostClimbShare, feet / maxClimbPerSlot);
        figures.steepestDescent = std::max(figures.steepestDescent, -feet / secondsPerSlot * 60);
    }

    /// Behind what was made up, the next target is the first sample after the gap; when that is left, all is as before.
    static void watchCourse(Flight& flight, const LiveAircraft& aircraft) {
        const LatLon target = positionOf(aircraft.stream[0]);
        if (aircraft.extensions != 0) {
            flight.course = Course::madeUp;
        } else if (target != flight.target && flight.course != Course::onTrack) {
            flight.course = flight.course == Course::madeUp ? Course::wayBack : Course::onTrack;
        }
        flight.target = target;
    }

    void compareWithRecording(Flight& flight, const LatLon& at) {
        // What is made up beyond the recording has nothing to be compared with.
        if (flight.course == Course::madeUp) {
            return;
        }
        if (!flight.crossTrack) {
            flight.crossTrack = std::make_unique<CrossTrack>(flight.recorded, mostDelaySeconds);
        }
        std::vector<double>& beside = flight.course == Course::onTrack ? figures.crossTrack : figures.wayBack;
        beside.push_back(flight.crossTrack->metres(at, secondsInFeed(slotClock, testSlot)));
    }

    void print(const std::string& title, std::size_t records, std::size_t created) const {
        std::cout << fmt::format(
            "{}: {} records of {} aircraft, {} objects created\n"
            "    cross-track median {:.1f} m, 95th {:.1f} m, worst {:.0f} m; on the way back "
            "after a gap, {:.1f}% of the "
            "time, median {:.0f} m, worst {:.0f} m\n"
            "    worst step in a frame {:.2f} m, {:.2f} times the speed, {} jumps; heading rate 95th {:.2f}, "
            "worst {:.1f} degrees a "
            "second\n"
            "    bank up to {:.1f} degrees, {:.2f} of the category's, its rate up to {:.2f}, with a reported roll "
            "{:.2f}; "
            "pitch up to {:.1f} degrees, "
            "its rate up to {:.2f} of the category's\n"
            "    height up to {:.1f} ft in a frame, {:.2f} times the vertical speed, {} jumps; climb up to {:.2f} of "
            "the "
            "category's, descent up to {:.0f} feet a minute\n"
            "    {} positions unsound; {} aircraft lost without a line in the log\n",
            title, records, flights.size(), created, atShare(figures.crossTrack, 0.5),
            atShare(figures.crossTrack, 0.95), atShare(figures.crossTrack, 1),
            100.0 * static_cast<double>(figures.wayBack.size()) /
                static_cast<double>(figures.crossTrack.size() + figures.wayBack.size() + 1),
            atShare(figures.wayBack, 0.5), atShare(figures.wayBack, 1), figures.worstStep, figures.worstStepShare,
            jumpsInAll(), atShare(figures.headingRate, 0.95), atShare(figures.headingRate, 1), figures.mostBankDeg,
            figures.mostBankShare, figures.mostBankRateShare, figures.mostToldBankRateShare, figures.mostPitchDeg,
            figures.mostPitchRateShare, figures.worstHeightStep, figures.worstHeightStepShare, figures.heightJumps,
            figures.mostClimbShare, figures.steepestDescent, figures.unsound, figures.silentLosses);
        for (const auto& [reason, count] : figures.neverShown) {
            std::cout << fmt::format("    {} aircraft never shown: {}\n", count, reason);
        }
        for (const auto& [registration, count] : figures.jumps) {
            std::cout << fmt::format("    {} jumps {} times\n", registration, count);
        }
    }

    int jumpsInAll() const {
        int sum = 0;
        for (const auto& [registration, count] : figures.jumps) {
            sum += count;
        }
        return sum;
    }

    /// The way back to the first sample behind a gap in the feed counts for all but the distance from the recorded
    /// track, which lies where nobody knew it when the aircraft went on: jumps, bank, pitch and soundness are asked
    /// there as everywhere. A reported roll is flown as fast as it is told, and a turn within the leg that it has, so
    /// that the worst of both rates are told only; what is asked of the heading's is that they are exceptions.
    void expectRealism() const {
        ASSERT_FALSE(figures.crossTrack.empty());
        EXPECT_LT(atShare(figures.crossTrack, 0.95), mostCrossTrackMetres);
        EXPECT_EQ(jumpsInAll(), 0);
        EXPECT_EQ(figures.heightJumps, 0);
        EXPECT_LE(figures.mostClimbShare, 1 + 1e-6);
        EXPECT_EQ(figures.unsound, 0);
        EXPECT_EQ(figures.silentLosses, 0u);
        EXPECT_LE(figures.mostBankShare, 1 + 1e-9);
        EXPECT_LE(figures.mostPitchRateShare, 1 + 1e-6);
        EXPECT_LE(figures.mostPitchDeg, 20);
        EXPECT_LE(figures.mostBankRateShare, 1 + 1e-6);
        EXPECT_LE(atShare(figures.headingRate, 0.95),
                  limitsOf(AircraftCategory::Heavy).baseTurnRateDeg * slotsPerSecond);
    }

    std::map<std::uint32_t, Flight> flights; // by hexid
    Figures figures;
};

TEST_F(RecordedFlights, aMinuteRoundAmsterdam) {
    const std::vector<std::string> lines = recordedTrafficLines();
    if (lines.empty()) {
        GTEST_SKIP() << "no recorded lines on this machine";
    }
    TrafficReader reader;
    reader.setUserLatLon({52.31, 4.76});
    gAcceptSamples = true;
    std::vector<FeedRecord> records;
    for (const std::string& line : lines) {
        if (reader.processLine(line) == LineOutcome::accepted) {
            records.push_back(*gLiveSampleQueue.pop());
        }
    }
    gAcceptSamples = false;
    play("Amsterdam", std::move(records));
    expectRealism();
}

TEST_F(RecordedFlights, aQuarterOfAnHourRoundLosAngeles) {
    std::vector<FeedRecord> records;
    for (const std::string& line : linesOf(recordedText("klax_2020-06-24.aitfc.csv.gz"))) {
        if (std::optional<FeedRecord> record = recordOfOldLine(line)) {
            records.push_back(std::move(*record));
        }
    }
    if (records.empty()) {
        GTEST_SKIP() << "no such recording on this machine";
    }
    play("Los Angeles", std::move(records));
    expectRealism();
}

TEST_F(RecordedFlights, twoHoursOverSwitzerland) {
    const std::string text = recordedText("switzerland_2018-08-01_2h.json.gz");
    if (text.empty()) {
        GTEST_SKIP() << "no such recording on this machine";
    }
    std::vector<FeedRecord> records;
    for (const nlohmann::json& row : nlohmann::json::parse(text)) {
        if (std::optional<FeedRecord> record = recordOfJson(row)) {
            records.push_back(std::move(*record));
        }
    }
    play("Switzerland", std::move(records));
    expectRealism();
}

TEST_F(RecordedFlights, finalApproachesToZurich) {
    const std::string text = recordedText("lszh_ground_2019.json.gz");
    if (text.empty()) {
        GTEST_SKIP() << "no such recording on this machine";
    }
    // They were recorded on several days; here they fly at the same time, side by side in their own places.
    std::map<std::uint32_t, double> begins;
    std::vector<FeedRecord> records;
    for (const nlohmann::json& row : nlohmann::json::parse(text)) {
        std::optional<FeedRecord> record = recordOfJson(row);
        if (record && !row.value("onground", true)) {
            record->feedTime -= begins.try_emplace(record->hexid, record->feedTime).first->second;
            records.push_back(std::move(*record));
        }
    }
    play("Zurich, airborne", std::move(records));
    expectRealism();
}

/// With the reports of heading that the other recordings lack; those of roll lie outside of these hours.
TEST_F(RecordedFlights, anAirlinersFlight) {
    const std::string text = recordedText("n899dn_b739_trace.json.gz");
    if (text.empty()) {
        GTEST_SKIP() << "no such recording on this machine";
    }
    const nlohmann::json trace = nlohmann::json::parse(text);
    std::vector<FeedRecord> records;
    for (const nlohmann::json& row : trace["trace"]) {
        std::optional<FeedRecord> record = recordOfTrace(row);
        if (record && record->feedTime >= 5000 && record->feedTime < 15000) {
            records.push_back(std::move(*record));
        }
    }
    play("An airliner", std::move(records));
    expectRealism();
}

} // namespace
