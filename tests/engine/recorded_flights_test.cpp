// The airborne part of real recordings, from the feed's records to the positions that the simulator gets: what flew is held
// against what was recorded, and the figures are printed.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <tuple>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "core/injection_radius.h"
#include "core/number_text.h"
#include "feed/traffic_reader.h"
#include "tests/engine/engine_test.h"
#include "tests/engine/flight_world.h"
#include "tests/support/recorded_lines.h"

namespace {

constexpr double mostCrossTrackMetres = 15;
constexpr double leastMovingMetresPerSecond = 20;

std::vector<std::string> fieldsOf(const std::string& line) {
    std::vector<std::string> fields{""};
    for (const char c : line) {
        if (c == ',') {
            fields.emplace_back();
        } else {
            fields.back() += c;
        }
    }
    return fields;
}

/// A line of the feed's older form of 15 fields.
std::optional<FeedRecord> recordOfOldLine(const std::string& line) {
    const std::vector<std::string> fields = fieldsOf(line);
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

/// What one aircraft has flown so far.
struct Flight {
    std::vector<LatLon> recorded;
    std::unique_ptr<CrossTrack> crossTrack;
    std::optional<PositionUpdate> last;
    std::int32_t lastSlot = 0;
};

struct Figures {
    std::vector<double> crossTrack; ///< metres, ten times a second
    double worstStep = 0;           ///< metres
    double worstStepShare = 0;      ///< against the speed
    double mostBankDeg = 0;
    double mostPitchDeg = 0;
    int jumps = 0;
    int unsound = 0;
};

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
            std::vector<LatLon>& recorded = flights[record.hexid].recorded;
            if (const LatLon at{record.sample.lat, record.sample.lon}; recorded.empty() || recorded.back() != at) {
                recorded.push_back(at);
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
        print(title, records.size(), world.created());
    }

    void watch(std::uint32_t hexid, const PositionUpdate& at) {
        const LiveAircraft* aircraft = findLiveByHexid(hexid);
        Flight& flight = flights[hexid];
        if (!std::isfinite(at.lat + at.lon + at.alt + at.pitch + at.bank + at.heading + at.vsFps + at.tas)) {
            ++figures.unsound;
        }
        if (flight.last && flight.lastSlot == slotClock - 1) {
            watchStep(*flight.last, at);
        }
        flight.last = at;
        flight.lastSlot = slotClock;
        figures.mostBankDeg = std::max(figures.mostBankDeg, std::abs(at.bank) * degreesPerRadian);
        figures.mostPitchDeg = std::max(figures.mostPitchDeg, std::abs(at.pitch) * degreesPerRadian);
        // What is made up beyond the recording has nothing to be compared with.
        if (slotClock % 10 == 0 && aircraft != nullptr && aircraft->extensions == 0) {
            if (!flight.crossTrack) {
                flight.crossTrack = std::make_unique<CrossTrack>(flight.recorded);
            }
            figures.crossTrack.push_back(flight.crossTrack->metres({at.lat, at.lon}));
        }
    }

    void watchStep(const PositionUpdate& before, const PositionUpdate& now) {
        const double step = metresBetween({before.lat, before.lon}, {now.lat, now.lon});
        const double speed = std::max(now.tas * metersPerNm / 3600, leastMovingMetresPerSecond);
        figures.worstStep = std::max(figures.worstStep, step);
        figures.worstStepShare = std::max(figures.worstStepShare, step / (speed * secondsPerSlot));
        figures.jumps += isJump(step, speed) ? 1 : 0;
    }

    void print(const std::string& title, std::size_t records, std::size_t created) const {
        std::cout << fmt::format("{}: {} records, {} of {} aircraft created\n"
                                 "    cross-track median {:.1f} m, 95th {:.1f} m, worst {:.0f} m\n"
                                 "    worst step {:.2f} m, {:.2f} times the speed, {} jumps; bank up to {:.1f}, pitch "
                                 "up to {:.1f} degrees\n",
                                 title, records, created, flights.size(), atShare(figures.crossTrack, 0.5),
                                 atShare(figures.crossTrack, 0.95), atShare(figures.crossTrack, 1), figures.worstStep,
                                 figures.worstStepShare, figures.jumps, figures.mostBankDeg, figures.mostPitchDeg);
    }

    void expectRealism() const {
        EXPECT_LT(atShare(figures.crossTrack, 0.95), mostCrossTrackMetres);
        EXPECT_EQ(figures.jumps, 0);
        EXPECT_EQ(figures.unsound, 0);
        EXPECT_LE(figures.mostPitchDeg, 20);
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

} // namespace
