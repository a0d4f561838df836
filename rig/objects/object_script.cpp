// rig/objects/object_script.cpp
#include "rig/objects/object_script.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <ostream>
#include <stdexcept>

#include <fmt/format.h>

#include "core/geography.h"
#include "core/parameters.h"
#include "core/run/run_loop.h"
#include "core/run_flags.h"
#include "core/slot_clock.h"
#include "engine/aircraft_tables.h"
#include "engine/slot.h"
#include "sim/controls.h"
#include "sim/light_sets.h"
#include "sim/object_queues.h"
#include "sim/session.h"
#include "window/window_state.h"

namespace rig {

namespace {

constexpr std::uint32_t firstHexid = 20001;
constexpr double radiusFeet = 6000;
constexpr double heightFeet = 1500;
constexpr double heightStepFeet = 300;
constexpr double knots = 150;
constexpr double feetPerSecondPerKnot = 1.6878098571011957;
constexpr double slotSeconds = 0.01;
constexpr double bankRad = 0.35;
constexpr int patienceSlots = 2000;
constexpr std::int32_t landingFlaps = 2;

class ObjectScript {
public:
    explicit ObjectScript(const ObjectScriptOptions& options)
        : options_(options), flownSlots_(static_cast<std::size_t>(options.count)) {}

    void run(std::ostream& out) {
        resetEngine();
        gSimulatorVersion = P3D_VERSION.value.load(); // its pipe is named after it
        startSimClient();
        phase("no simulator", [] { return simRunning && !simFailed && isPosition(positionOf(gUserState)); });
        out << fmt::format("connected to {}\n", simLampText().simulator);
        centre_ = positionOf(gUserState);
        for (int i = 0; i < options_.count; ++i) {
            queue(i);
        }
        phase("not all aircraft have come into being", [this] { return activeCount() == options_.count; });
        out << fmt::format("active: {}\n", activeCount());
        fly();
        for (LiveAircraft& aircraft : liveTable) {
            removeAircraftFromSim(aircraft);
        }
        phase("not all aircraft have gone", [] { return liveTable.empty(); });
        out << fmt::format("removed: {}\n", options_.count);
    }

private:
    /// Slots until the condition holds.
    template <typename Condition>
    void phase(const char* failure, Condition holds) {
        int left = patienceSlots + options_.count * 50;
        gf_runTicks([&] {
            slot();
            return !holds() && --left > 0 && !simFailed;
        });
        if (!holds()) {
            throw std::runtime_error(failure);
        }
    }

    void queue(int i) {
        LiveAircraft aircraft;
        aircraft.hexid = firstHexid + static_cast<std::uint32_t>(i);
        aircraft.callsign = fmt::format("RIG{:03}", i + 1);
        aircraft.liveryTitle = options_.titles.at(static_cast<std::size_t>(i) % options_.titles.size());
        aircraft.phase = FlightPhase::flying;
        aircraft.lifeState = LifeState::adding2sim;
        aircraft.stream.pushBack(neverLeft());
        place(aircraft, i);
        CreateRequest request{
            aircraft.lat,      aircraft.lon,         aircraft.alt,  0, 0, aircraft.heading * degreesPerRadian, 0, 0,
            aircraft.callsign, aircraft.liveryTitle, aircraft.hexid};
        liveCreateQueue.push_back(std::move(request));
        liveTable.push_back(std::move(aircraft));
    }

    /// The engine sends where the script has placed the aircraft, and flies it nowhere itself.
    static Sample neverLeft() {
        Sample sample;
        sample.airborne = 1;
        sample.stationary = 1;
        sample.slot = std::numeric_limits<std::int32_t>::max();
        return sample;
    }

    /// All on one circle to the right, evenly apart.
    void place(LiveAircraft& aircraft, int i) const {
        const int flownSlots = flownSlots_[static_cast<std::size_t>(i)];
        const double turned = knots * feetPerSecondPerKnot * slotSeconds * flownSlots / radiusFeet;
        const double bearing = std::fmod(turned + twoPi * i / options_.count, twoPi);
        const LatLon at = project(centre_, bearing, radiusFeet);
        aircraft.lat = at.lat;
        aircraft.lon = at.lon;
        aircraft.alt = gUserState.alt + heightFeet + heightStepFeet * i;
        aircraft.heading = std::fmod(bearing + std::numbers::pi / 2, twoPi);
        aircraft.bank = -bankRad;
        aircraft.tas = knots;
    }

    void slot() {
        for (LiveAircraft& aircraft : liveTable) {
            if (aircraft.lifeState == LifeState::active) {
                const auto i = static_cast<int>(aircraft.hexid - firstHexid);
                ++flownSlots_[static_cast<std::size_t>(i)];
                place(aircraft, i);
            }
        }
        lf_handleAddingStack();
    }

    static int activeCount() {
        int count = 0;
        for (const LiveAircraft& aircraft : liveTable) {
            count += aircraft.lifeState == LifeState::active ? 1 : 0;
        }
        return count;
    }

    /// A third of the time each: clean, set up for the landing, clean again.
    void fly() {
        const int slots = static_cast<int>(options_.seconds / slotSeconds);
        int flown = 0;
        gf_runTicks([&] {
            slot();
            ++flown;
            if (flown == slots / 3) {
                setUp(Gear::down, landingFlaps, takeOffRollLights);
            } else if (flown == 2 * slots / 3) {
                setUp(Gear::up, 0, above10000FeetLights);
            }
            return flown < slots && !simFailed;
        });
    }

    static void setUp(Gear gear, std::int32_t flaps, const LightSet& lights) {
        for (LiveAircraft& aircraft : liveTable) {
            gf_setGear(aircraft, gear);
            gf_setFlaps(aircraft, flaps);
            gf_setLights(aircraft.objectId, lights);
        }
    }

    const ObjectScriptOptions& options_;
    LatLon centre_;
    std::vector<int> flownSlots_; // of each, since it became active
};

/// However the script ends, the session ends with it.
class SessionEnd {
public:
    SessionEnd() = default;
    ~SessionEnd() {
        stopSimClient();
        joinSimClient();
        resetEngine();
    }
    SessionEnd(const SessionEnd&) = delete;
    SessionEnd& operator=(const SessionEnd&) = delete;
};

} // namespace

void runObjectScript(const ObjectScriptOptions& options, std::ostream& out) {
    const SessionEnd end;
    ObjectScript(options).run(out);
}

} // namespace rig
