// Whole flights on tracks made to measure, from the feed's records to the positions that the simulator gets.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <random>

#include "core/injection_radius.h"
#include "tests/engine/engine_test.h"
#include "tests/engine/flight_world.h"

using ::testing::IsEmpty;

namespace {

constexpr double degree = radiansPerDegree;
constexpr double feetPerMeter = feetPerNm / metersPerNm;

/// Where the real aircraft is at a second, and how it moves.
struct TruePlace {
    LatLon at;
    double altFeet = 5000;
    double trackRad = 0;
    double vsFpm = 0;
    double rollRad = 0; ///< the simulator's sense
};
using Track = std::function<TruePlace(double seconds)>;

struct FlightFigures {
    double crossTrack95 = 0;     ///< metres
    double crossTrackWorst = 0;  ///< metres
    double worstStep = 0;        ///< metres
    double mostBankDeg = 0;      ///< magnitude
    double meanBankDeg = 0;      ///< the simulator's sense: negative to the right
    double worstHeadingDeg = 0;  ///< against the real track, magnitude
    double worstHeightFeet = 0;  ///< against the height that it should have at its place, where that is known
    double mostPitchStepDeg = 0; ///< per slot
    int jumps = 0;
    std::size_t slots = 0;
};

class ScriptedFlights : public EngineTest {
protected:
    static constexpr double knots = 250;
    static constexpr double mostDelaySeconds = 40; ///< against the times of the track
    static constexpr double metresPerSecond = knots * metersPerNm / 3600;

    ScriptedFlights() { gRadiusNm = 100; }
    ~ScriptedFlights() override { gRadiusNm = 40; }

    static LatLon ahead(const LatLon& from, double headingRad, double metres) {
        return project(from, headingRad, metres * feetPerMeter);
    }

    static Track straight(double headingRad) {
        return [headingRad](double seconds) {
            return TruePlace{.at = ahead(testPlace, headingRad, metresPerSecond * seconds), .trackRad = headingRad};
        };
    }

    /// To the right when positive, from north.
    static Track turning(double degreesPerSecond) {
        const double rate = degreesPerSecond * degree;
        const double radius = metresPerSecond / rate;
        const double roll = -std::atan(metresPerSecond * rate / 9.81);
        return [=](double seconds) {
            const double angle = rate * seconds;
            const double east = radius * (1 - std::cos(angle));
            const double north = radius * std::sin(angle);
            return TruePlace{.at = ahead(testPlace, std::atan2(east, north), std::hypot(east, north)),
                             .trackRad = normalizedHeading(angle),
                             .rollRad = roll};
        };
    }

    static Track changingHeight(double fpm) {
        return [fpm](double seconds) {
            TruePlace place = straight(1)(seconds);
            place.altFeet = 8000 + fpm / 60 * seconds;
            place.vsFpm = fpm;
            return place;
        };
    }

    FeedRecord recordAt(const Track& track, double seconds) {
        const TruePlace place = track(seconds);
        Sample sample;
        sample.lat = place.at.lat;
        sample.lon = place.at.lon;
        sample.alt = place.altFeet;
        sample.airborne = 1;
        sample.gs = sample.tas = knots;
        sample.track = place.trackRad * degreesPerRadian;
        sample.vs = place.vsFpm;
        if (tellsRoll && place.rollRad != 0) {
            sample.roll = place.rollRad;
        }
        return recordOf(sample, 1000 + seconds);
    }

    /// Feeds the track at these seconds and lets it be flown to its end, and 40 seconds on.
    void fly(const Track& track, const std::vector<double>& reports) {
        std::size_t next = 0;
        const auto end = static_cast<int>((reports.back() + 40) * slotsPerSecond);
        for (int slot = 0; slot < end; ++slot) {
            if (next < reports.size() && slot >= reports[next] * slotsPerSecond) {
                world.feed(recordAt(track, reports[next]));
                ++next;
            }
            world.slot();
        }
        measure(track, reports.back());
    }

    static std::vector<double> everySeconds(double gap, double duration) {
        std::vector<double> reports;
        for (double seconds = 0; seconds <= duration; seconds += gap) {
            reports.push_back(seconds);
        }
        return reports;
    }

    /// Up to that slot.
    static double metresInFrame(const std::vector<FlownSlot>& slots, std::size_t last) {
        const PositionUpdate& before = slots[last - slotsPerFrame].at;
        const PositionUpdate& now = slots[last].at;
        return metresBetween({before.lat, before.lon}, {now.lat, now.lon});
    }

    void measure(const Track& track, double lastReport) {
        std::vector<TrackPoint> line;
        for (double seconds = 0; seconds <= lastReport + 70; seconds += 0.5) {
            line.push_back({track(seconds).at, seconds});
        }
        const double end = testSlot + (lastReport + 30) * slotsPerSecond;
        std::vector<double> beside;
        double bankSum = 0;
        for (const auto& [hexid, slots] : world.flown()) {
            CrossTrack crossTrack(line, mostDelaySeconds);
            for (std::size_t i = 1; i < slots.size() && slots[i].slot < end; ++i) {
                const PositionUpdate& before = slots[i - 1].at;
                const PositionUpdate& now = slots[i].at;
                const double step = metresBetween({before.lat, before.lon}, {now.lat, now.lon});
                figures.worstStep = std::max(figures.worstStep, step);
                figures.jumps += i % slotsPerFrame == 0 && isJump(metresInFrame(slots, i), metresPerSecond) ? 1 : 0;
                figures.mostBankDeg = std::max(figures.mostBankDeg, std::abs(now.bank) * degreesPerRadian);
                figures.mostPitchStepDeg =
                    std::max(figures.mostPitchStepDeg, std::abs(now.pitch - before.pitch) * degreesPerRadian);
                bankSum += now.bank * degreesPerRadian;
                if (i % 10 == 0) {
                    beside.push_back(crossTrack.metres({now.lat, now.lon}, secondsInFeed(slots[i].slot, testSlot)));
                }
                ++figures.slots;
                compareWithTruth(track, now);
            }
        }
        figures.crossTrack95 = atShare(beside, 0.95);
        figures.crossTrackWorst = atShare(beside, 1);
        figures.meanBankDeg = bankSum / static_cast<double>(std::max<std::size_t>(figures.slots, 1));
    }

    /// At the second at which the real aircraft was at this place, by the way from the begin.
    void compareWithTruth(const Track& track, const PositionUpdate& now) {
        double seconds = 0;
        double best = 1e12;
        for (double guess = lastMatch_; guess < lastMatch_ + 5; guess += 0.05) {
            if (const double metres = metresBetween(track(guess).at, {now.lat, now.lon}); metres < best) {
                best = metres;
                seconds = guess;
            }
        }
        lastMatch_ = std::max(0.0, seconds - 0.5);
        const TruePlace truth = track(seconds);
        figures.worstHeadingDeg = std::max(figures.worstHeadingDeg,
                                           std::abs(headingDifference(now.heading, truth.trackRad)) * degreesPerRadian);
        figures.worstHeightFeet = std::max(figures.worstHeightFeet, std::abs(now.alt - truth.altFeet));
    }

    void expectASmoothFlight() const {
        EXPECT_EQ(figures.jumps, 0);
        EXPECT_LT(figures.crossTrack95, 15);
        EXPECT_LE(figures.mostBankDeg, limitsOf(AircraftCategory::Large).maxBankDeg + 1e-9);
        EXPECT_LE(figures.mostPitchStepDeg, limitsOf(AircraftCategory::Large).maxPitchRateDeg + 1e-9);
    }

    FlightWorld world;
    FlightFigures figures;
    bool tellsRoll = true;

private:
    double lastMatch_ = 0;
};

TEST_F(ScriptedFlights, straightAheadItFliesTheLineAtItsSpeed) {
    fly(straight(1), everySeconds(5, 120));
    expectASmoothFlight();
    EXPECT_GT(figures.slots, 11000u);
    EXPECT_LT(figures.crossTrackWorst, 1);
    EXPECT_LT(figures.worstStep, 1.1 * metresPerSecond * secondsPerSlot);
    EXPECT_LT(figures.worstHeadingDeg, 0.5);
    EXPECT_LT(figures.mostBankDeg, 0.5);
    EXPECT_LT(figures.worstHeightFeet, 0.01);
}

TEST_F(ScriptedFlights, itAppearsThirtySecondsBehindTheFeedAndGoesAfterIt) {
    const std::vector<double> reports = everySeconds(5, 60);
    fly(straight(1), reports);
    ASSERT_EQ(world.flown().size(), 1u);
    const std::vector<FlownSlot>& slots = world.flown().begin()->second;
    EXPECT_NEAR(slots.front().slot - testSlot, 3000, 300);
    for (int slot = 0; slot < 7000; ++slot) {
        world.slot();
    }
    EXPECT_THAT(liveTable, IsEmpty());
    // A minute on from the last report, 30 seconds late.
    EXPECT_NEAR(slots.back().slot - testSlot, 9000 + 6200, 400);
}

TEST_F(ScriptedFlights, aRightTurnIsFlownWithTheReportedBank) {
    fly(turning(1.2), everySeconds(5, 150));
    expectASmoothFlight();
    EXPECT_LT(figures.meanBankDeg, -10);
    EXPECT_LT(figures.worstHeadingDeg, 10);
}

TEST_F(ScriptedFlights, aLeftTurnWithoutReportedBankIsBankedToTheLeft) {
    tellsRoll = false;
    fly(turning(-1.2), everySeconds(5, 150));
    expectASmoothFlight();
    EXPECT_GT(figures.meanBankDeg, 3);
    EXPECT_LT(figures.worstHeadingDeg, 10);
}

TEST_F(ScriptedFlights, aSteepTurnIsBankedNoFurtherThanTheCategoryAllows) {
    fly(turning(3), everySeconds(2, 120));
    EXPECT_NEAR(figures.mostBankDeg, 30, 0.01);
    expectASmoothFlight();
}

TEST_F(ScriptedFlights, aFeedOfTwentySecondsKeepsTheNoseInFront) {
    fly(turning(0.5), everySeconds(20, 400));
    EXPECT_EQ(figures.jumps, 0);
    EXPECT_LT(figures.worstHeadingDeg, 20);
}

TEST_F(ScriptedFlights, aClimbKeepsItsHeights) {
    fly(changingHeight(1800), everySeconds(6, 180));
    expectASmoothFlight();
    EXPECT_LT(figures.worstHeightFeet, 15);
}

TEST_F(ScriptedFlights, aDescentKeepsItsHeights) {
    fly(changingHeight(-2000), everySeconds(6, 180));
    expectASmoothFlight();
    EXPECT_LT(figures.worstHeightFeet, 15);
}

TEST_F(ScriptedFlights, afterFiveMinutesWithoutSlotsItIsCreatedAnewInsteadOfRacing) {
    constexpr int pauseSlot = 8000;
    for (int slot = 0; slot < 2 * pauseSlot; ++slot) {
        if (slot % 500 == 0) {
            world.feed(recordAt(straight(1), slot * secondsPerSlot + (slot < pauseSlot ? 0 : 300)));
        }
        world.slot();
    }
    EXPECT_EQ(world.created(), 2u);
    const std::vector<FlownSlot>& slots = world.flown().begin()->second;
    double worstStep = 0;
    for (std::size_t i = 1; i < slots.size(); ++i) {
        const PositionUpdate& before = slots[i - 1].at;
        const PositionUpdate& now = slots[i].at;
        if (before.objectId == now.objectId) {
            worstStep = std::max(worstStep, metresBetween({before.lat, before.lon}, {now.lat, now.lon}));
        }
    }
    EXPECT_LT(worstStep, 1.1 * metresPerSecond * secondsPerSlot);
}

TEST_F(ScriptedFlights, gapsOfOneToThirtySecondsAreFlownOver) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> gaps(1, 30);
    std::vector<double> reports{0};
    while (reports.back() < 600) {
        reports.push_back(reports.back() + gaps(random));
    }
    fly(straight(2), reports);
    expectASmoothFlight();
    EXPECT_LT(figures.crossTrackWorst, 5);
    EXPECT_EQ(world.created(), 1u);
    EXPECT_LT(figures.worstStep, 1.6 * metresPerSecond * secondsPerSlot);
}

TEST_F(ScriptedFlights, aGapOfFiftySecondsIsBridged) {
    std::vector<double> reports = everySeconds(5, 60);
    for (double seconds = 110; seconds < 180; seconds += 5) {
        reports.push_back(seconds);
    }
    fly(straight(2), reports);
    expectASmoothFlight();
    EXPECT_EQ(world.created(), 1u);
}

TEST_F(ScriptedFlights, jitterOfPositionsAndTimesMakesNoJump) {
    std::mt19937 random(11);
    std::normal_distribution<double> metres(0, 8);
    const Track clean = straight(1);
    const Track jittering = [&](double seconds) {
        TruePlace place = clean(seconds);
        place.at = ahead(place.at, 1 + 1.5708, metres(random));
        return place;
    };
    std::vector<double> reports{0};
    std::uniform_real_distribution<double> gaps(3.5, 6);
    while (reports.back() < 200) {
        reports.push_back(reports.back() + gaps(random));
    }
    fly(jittering, reports);
    EXPECT_EQ(figures.jumps, 0);
    EXPECT_LE(figures.mostBankDeg, 30.01);
}

TEST_F(ScriptedFlights, acrossTheAntimeridianNothingJumps) {
    const Track eastward = [](double seconds) {
        return TruePlace{.at = ahead({10, 179.95}, 1.5708, metresPerSecond * seconds), .trackRad = 1.5708};
    };
    fly(eastward, everySeconds(5, 120));
    expectASmoothFlight();
    EXPECT_LT(world.flown().begin()->second.back().at.lon, 0);
}

TEST_F(ScriptedFlights, aGroundTrackIsFollowedWithoutAJump) {
    const double taxiMetresPerSecond = 15 * metersPerNm / 3600;
    openAirport(0);
    for (int slot = 0; slot < 12000; ++slot) {
        if (slot % 700 == 0 && slot < 9000) {
            FeedRecord record = recordOf(Sample{}, 1000 + slot / 100.0);
            const LatLon at = ahead(testPlace, 1, taxiMetresPerSecond * slot / 100.0);
            record.sample.lat = at.lat;
            record.sample.lon = at.lon;
            record.sample.gs = 15;
            record.sample.track = degreesPerRadian;
            world.feed(std::move(record));
        }
        world.slot();
    }
    ASSERT_EQ(world.flown().size(), 1u);
    const std::vector<FlownSlot>& slots = world.flown().begin()->second;
    EXPECT_GT(slots.size(), 5000u);
    for (std::size_t i = 1; i < slots.size(); ++i) {
        const PositionUpdate& before = slots[i - 1].at;
        const PositionUpdate& now = slots[i].at;
        ASSERT_LT(metresBetween({before.lat, before.lon}, {now.lat, now.lon}), 2 * taxiMetresPerSecond / 100);
        ASSERT_EQ(now.bank, 0);
    }
}

/// The aircraft circles and changes its speed as it likes, is told of every few seconds to half a minute, and now and
/// then not for longer.
class GapsAtRandom : public EngineTest {
protected:
    GapsAtRandom() { gRadiusNm = 100; }
    ~GapsAtRandom() override { gRadiusNm = 40; }

    double uniform(double least, double most) { return std::uniform_real_distribution<double>(least, most)(random_); }

    /// The next manoeuvre.
    void changeItsMind() {
        turnRadPerSecond_ = uniform(0, 1) < 0.3 ? 0 : uniform(-4, 4) * degree;
        knotsPerSecond_ = uniform(0, 1) < 0.5 ? 0 : uniform(-1.5, 1.5);
        vsFpm_ = uniform(0, 1) < 0.4 ? 0 : uniform(-steepestFpm, steepestFpm);
        period_ = uniform(2, 28);
        manoeuvreEnds_ = seconds_ + uniform(20, 300);
    }

    void moveReal(double seconds) {
        if (seconds_ >= manoeuvreEnds_) {
            changeItsMind();
        }
        seconds_ += seconds;
        headingRad_ = normalizedHeading(headingRad_ + turnRadPerSecond_ * seconds);
        knots_ = std::clamp(knots_ + knotsPerSecond_ * seconds, 100.0, 480.0);
        at_ = project(at_, headingRad_, knots_ / 3600 * seconds * feetPerNm);
        const double feet = altFeet_ + vsFpm_ / 60 * seconds;
        altFeet_ = std::clamp(feet, 3000.0, 38000.0);
        vsFpm_ = altFeet_ == feet ? vsFpm_ : 0;
    }

    double nextGap() { return uniform(0, 1) < 0.1 ? uniform(30, 110) : period_ * uniform(0.7, 1.3); }

    FeedRecord report() const {
        Sample sample = airSample(0, 0, 0, altFeet_, knots_);
        sample.vs = vsFpm_;
        sample.lat = at_.lat;
        sample.lon = at_.lon;
        sample.track = headingRad_ * degreesPerRadian;
        return recordOf(sample, 1000 + seconds_);
    }

    void watch(const PositionUpdate& now) {
        if (slotClock % slotsPerFrame != 0) {
            return;
        }
        if (last_ && lastSlot_ == slotClock - slotsPerFrame) {
            const double metres = metresBetween({last_->lat, last_->lon}, {now.lat, now.lon});
            const double speed = std::max(last_->tas, now.tas) * metersPerNm / 3600;
            worstShare = std::max(worstShare, stepShare(metres, speed));
            jumps += isJump(metres, speed) ? 1 : 0;
            const double feet = now.alt - last_->alt;
            const double feetPerSecond = std::max(std::abs(last_->vsFps), std::abs(now.vsFps));
            heightJumps += isHeightJump(feet, feetPerSecond) ? 1 : 0;
            steepestClimb = std::max(steepestClimb, feet / secondsPerFrame * 60);
            steepestDescent = std::max(steepestDescent, -feet / secondsPerFrame * 60);
            ++frames;
        }
        last_ = now;
        lastSlot_ = slotClock;
    }

    void fly(double duration) {
        FlightWorld world([this](std::uint32_t, const PositionUpdate& now) { watch(now); });
        double nextReport = 0;
        for (int slot = 0; slot < duration * slotsPerSecond; ++slot) {
            gUserState.lat = at_.lat;
            gUserState.lon = at_.lon;
            if (seconds_ >= nextReport) {
                world.feed(report());
                nextReport = seconds_ + nextGap();
            }
            world.slot();
            moveReal(secondsPerSlot);
        }
    }

    static constexpr double steepestFpm = 2500; ///< of the real aircraft

    int jumps = 0;
    int frames = 0;
    double worstShare = 0;
    int heightJumps = 0;
    double steepestClimb = 0; ///< feet a minute, as flown
    double steepestDescent = 0;

private:
    std::mt19937 random_{5};
    double altFeet_ = 12000;
    double vsFpm_ = 0;
    LatLon at_ = testPlace;
    double headingRad_ = 1;
    double knots_ = 250;
    double turnRadPerSecond_ = 0;
    double knotsPerSecond_ = 0;
    double manoeuvreEnds_ = 0;
    double period_ = 5; // seconds between two reports
    double seconds_ = 0;
    std::optional<PositionUpdate> last_;
    std::int32_t lastSlot_ = 0;
};

TEST_F(GapsAtRandom, noFrameStepsMoreThanThreeTimesTheSpeed) {
    fly(10000);
    EXPECT_EQ(jumps, 0) << "the worst step is " << worstShare << " times the speed";
    EXPECT_EQ(heightJumps, 0);
    const double categoryClimbs = limitsOf(AircraftCategory::Large).maxClimbPerSlotFeet * slotsPerSecond * 60;
    EXPECT_LE(steepestClimb, categoryClimbs + 1e-6);
    // Where it is early or late it makes up for it in the height as on the way.
    EXPECT_LE(steepestDescent, 3 * steepestFpm);
    EXPECT_GT(frames, 200000);
}

} // namespace
