// tests/engine/flight_world.h
// A simulator reduced to what the engine sees of one: it answers creations and removals a few slots later, tells the
// height above a flat ground at sea level once a second, and keeps every position that a frame would get.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/slot_clock.h"
#include "engine/aircraft_tables.h"
#include "engine/slot.h"
#include "feed/sample_queue.h"
#include "sim/engine_inbox.h"
#include "sim/sim_queues.h"
#include "tests/engine/flown_track.h"

class FlightWorld {
public:
    /// Called with each position; without it they are kept in flown().
    using Watch = std::function<void(std::uint32_t hexid, const PositionUpdate& position)>;

    FlightWorld() = default;
    explicit FlightWorld(Watch watch) : watch_(std::move(watch)) {}

    void feed(FeedRecord record) {
        record.sample.slot = slotClock + 3000;
        gLiveSampleQueue.push(std::move(record));
    }

    void slot() {
        lf_handleAddingStack();
        takePositions();
        answerRequests();
        if (slotClock % slotsPerSecond == 50) {
            tellHeights();
        }
    }

    const std::map<std::uint32_t, std::vector<FlownSlot>>& flown() const { return flown_; }
    const std::map<std::uint32_t, std::uint32_t>& objects() const { return objects_; } ///< object id to hexid
    std::size_t created() const { return created_; }

private:
    static constexpr std::int32_t answerSlots = 7;

    void takePositions() {
        for (const PositionUpdate& update : positionBack) {
            const std::uint32_t hexid = objects_.at(update.objectId);
            if (watch_) {
                watch_(hexid, update);
            } else {
                flown_[hexid].push_back({slotClock, update});
            }
            heights_[update.objectId] = update.alt;
        }
        positionBack.clear();
        eventQueue.clear();
    }

    void answerRequests() {
        for (const CreateRequest& request : createRequests) {
            const std::uint32_t objectId = nextObject_++;
            objects_[objectId] = request.hexid;
            heights_[objectId] = request.alt;
            ++created_;
            answers_.push_back({slotClock + answerSlots,
                                {objectId, request.hexid, 0, EngineMessageKind::liveObjectExists, 0, request.alt}});
        }
        for (const std::uint32_t objectId : removeRequests) {
            heights_.erase(objectId);
            answers_.push_back({slotClock + answerSlots, {objectId, 0, 0, EngineMessageKind::objectRemoved, 0, 0}});
        }
        createRequests.clear();
        removeRequests.clear();
        while (!answers_.empty() && answers_.front().first <= slotClock) {
            pushEngineMessage(answers_.front().second);
            answers_.pop_front();
        }
    }

    void tellHeights() {
        for (const auto& [objectId, altFeet] : heights_) {
            pushEngineMessage({objectId, altFeet <= 0 ? 1u : 0u, 0, EngineMessageKind::groundData, 0, altFeet});
        }
    }

    Watch watch_;
    std::map<std::uint32_t, std::vector<FlownSlot>> flown_; // by hexid
    std::map<std::uint32_t, std::uint32_t> objects_;
    std::map<std::uint32_t, double> heights_; // feet, by object id
    std::deque<std::pair<std::int32_t, EngineMessage>> answers_;
    std::uint32_t nextObject_ = 100;
    std::size_t created_ = 0;
};
