// tests/support/circling_traffic.h
// Aircraft that circle for ever, and the feed's records of them: for what has to be measured or counted while many fly.
#pragma once

#include <cmath>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>

#include <fmt/format.h>

#include "core/geography.h"
#include "core/injection_radius.h"
#include "core/slot_clock.h"
#include "engine/aircraft_tables.h"
#include "engine/live_aircraft.h"
#include "engine/slot.h"
#include "feed/sample_queue.h"

/// The real aircraft, each on a circle of its own.
class CirclingTraffic {
public:
    CirclingTraffic(int aircraft, double recordsPerSecond)
        : count_(aircraft), recordsPerSlot_(recordsPerSecond / 100) {}

    /// All of them fly, and nothing else does; nobody is out of range.
    void takeOff() const {
        resetEngine();
        gLiveSampleQueue.clear();
        slotClock = firstSlot;
        gRadiusNm = 10000;
        for (int i = 0; i < count_; ++i) {
            liveTable.push_back(flying(i));
        }
    }

    /// What comes in a slot, of one aircraft after the other.
    void feed() {
        const double seconds = (slotClock - firstSlot) / 100.0;
        const std::lock_guard lock(gTrafficMutex);
        due_ += recordsPerSlot_;
        const int count = static_cast<int>(due_);
        due_ -= count;
        for (int i = 0; i < count; ++i) {
            FeedRecord record;
            record.type = "A320";
            record.origin = "AMS";
            record.destination = "LHR";
            record.callsign = callsign(next_);
            record.registration = "PH-ABC";
            record.sample = at(next_, seconds);
            record.sample.slot = slotClock + delaySlots;
            record.feedTime = seconds;
            record.hexid = firstHexid + static_cast<std::uint32_t>(next_);
            gLiveSampleQueue.push(std::move(record));
            next_ = (next_ + 1) % count_;
        }
    }

private:
    static constexpr std::uint32_t firstHexid = 20000;
    static constexpr std::uint32_t firstObject = 100;
    static constexpr double knots = 400;
    static constexpr std::int32_t firstSlot = 10000;
    static constexpr std::int32_t delaySlots = 3000;
    static constexpr double turnRadPerSecond = 0.01;
    static constexpr double radiusDegrees = knots / 3600 / turnRadPerSecond / 60;
    static constexpr double quarterTurn = 1.5707963;

    static std::string callsign(int aircraft) { return fmt::format("KLM{}", aircraft); }

    static Sample at(int aircraft, double seconds) {
        const double angle = aircraft * 0.7 + seconds * turnRadPerSecond;
        Sample sample;
        sample.lat = 40 + aircraft % 50 * 0.2 + radiusDegrees * std::cos(angle);
        const int row = aircraft / 50;
        sample.lon = 5 + row * 0.2 + radiusDegrees * std::sin(angle) / std::cos(sample.lat * radiansPerDegree);
        sample.alt = 20000 + 100 * (aircraft % 100);
        sample.airborne = 1;
        sample.gs = sample.tas = knots;
        sample.track = std::fmod((angle + quarterTurn) * degreesPerRadian, 360);
        return sample;
    }

    /// Active, at the begin of its circle, with samples for the first 30 seconds.
    LiveAircraft flying(int aircraft) const {
        LiveAircraft flying;
        flying.callsign = callsign(aircraft);
        flying.registration = "PH-ABC";
        flying.origin = "AMS";
        flying.destination = "LHR";
        flying.airline = "KLM";
        flying.model = "A320";
        takeCategoryLimits(flying);
        flying.hexid = firstHexid + static_cast<std::uint32_t>(aircraft);
        flying.objectId = firstObject + static_cast<std::uint32_t>(aircraft);
        flying.lifeState = LifeState::active;
        flying.phase = FlightPhase::flying;
        flying.lightsHighSet = 1;
        flying.lastFeedTime = -1;
        // The legs of the aircraft begin at different slots.
        constexpr int legs = 11;
        for (int leg = -1; leg < legs - 1; ++leg) {
            const double seconds = 3.0 * leg + 3.0 * aircraft / count_;
            Sample sample = at(aircraft, seconds - 30);
            sample.slot = firstSlot + static_cast<std::int32_t>(seconds * 100);
            flying.stream.pushBack(sample);
        }
        flying.lat = flying.stream[0].lat;
        flying.lon = flying.stream[0].lon;
        flying.alt = flying.stream[0].alt;
        return flying;
    }

    int count_;
    double recordsPerSlot_;
    double due_ = 0; ///< records that are to be told by now
    int next_ = 0;
};
