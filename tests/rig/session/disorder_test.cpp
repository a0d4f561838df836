// A simulator that does at random whatever a simulator can do, on a thread of its own, and a run that goes on with its
// aircraft all the while.
#include <algorithm>
#include <chrono>
#include <random>
#include <set>
#include <stop_token>
#include <thread>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/run_flags.h"
#include "engine/aircraft_tables.h"
#include "platform/clock.h"
#include "sim/controls.h"
#include "sim/light_sets.h"
#include "sim/object_life.h"
#include "sim/object_queues.h"
#include "sim/session.h"
#include "sim/sim_ids.h"
#include "sim/stand_requests.h"
#include "tests/rig/session/session_run.h"

using namespace std::chrono_literals;
using ::testing::IsEmpty;

namespace {

/// Of all ways together. The build for the thread sanitizer sets it.
#ifdef TARNWING_DISORDER_SECONDS
constexpr std::chrono::seconds disorderTime{TARNWING_DISORDER_SECONDS};
#else
constexpr auto disorderTime = 5s;
#endif

constexpr std::chrono::seconds patience{30};
constexpr int leastSessions = 3;
constexpr std::uint32_t leastCreated = 10;

constexpr unsigned simulatorSeed = 20260601;
constexpr unsigned runSeed = 4711;
constexpr auto framePause = 1ms;
/// One act in so many frames, on average.
constexpr int framesPerAct = 60;
/// One operation in so many slots, on average.
constexpr int slotsPerOperation = 3;
/// One session in so many operations is closed by the user.
constexpr int operationsPerClosing = 300;
constexpr std::size_t mostAircraft = 20;
constexpr std::uint32_t firstHexid = 0x484000;

class Chance {
public:
    explicit Chance(unsigned seed) : generator_(seed) {}
    /// 0 up to below `end`.
    int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(generator_); }
    bool oneIn(int count) { return below(count) == 0; }

private:
    std::mt19937 generator_;
};

class DisorderThreads : public SessionRun {
protected:
    // --- The simulator's thread

    void liveDisorderly(const std::stop_token& stop) {
        Chance chance(simulatorSeed);
        while (!stop.stop_requested()) {
            simulator().frames(1);
            if (chance.oneIn(framesPerAct)) {
                act(chance);
            }
            platform::sleepFor(framePause);
        }
    }

    void act(Chance& chance) {
        constexpr rig::Lie lies[] = {rig::Lie::badSize, rig::Lie::half, rig::Lie::zeroSize, rig::Lie::huge};
        constexpr DWORD exceptions[] = {SIMCONNECT_EXCEPTION_ERROR, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID,
                                        SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED,
                                        SIMCONNECT_EXCEPTION_TOO_MANY_OBJECTS};
        switch (chance.below(16)) {
        case 0: quitAndComeBack(); break;
        case 1: simulator().play(rig::DropConnectionAct{}); break;
        case 2: simulator().play(rig::LyingRecordAct{lies[chance.below(4)]}); break;
        case 3: simulator().play(rig::LoadFlightAct{"evening.fxml"}); break;
        case 4: simulator().play(rig::PositionChangedAct{}); break;
        case 5:
        case 6: simulator().play(rig::ExceptionsAct{1000, exceptions[chance.below(4)]}); break;
        case 7: simulator().play(rig::StallAct{chance.below(20) * 0.1}); break;
        case 8: simulator().play(rig::PauseAct{}); break;
        case 9:
        case 10: simulator().play(rig::ResumeAct{}); break;
        case 11: simulator().play(rig::FrameRateAct{5.0 + chance.below(116)}); break;
        case 12: simulator().play(rig::ForeignObjectAct{airliner, "FOREIGN", nearTheUser, 0, std::nullopt}); break;
        case 13: removeOneThatIsHeld(chance); break;
        case 14: simulator().play(rig::JumpAct{0.1 * chance.below(105), 10.0 * chance.below(36)}); break;
        default: break;
        }
    }

    void quitAndComeBack() {
        simulator().play(rig::QuitAct{});
        simulator().frames(5);
        startSimulator();
    }

    /// Of an object that goes before it is described its creator never hears again.
    void removeOneThatIsHeld(Chance& chance) {
        simulator().atWorld([&chance](rig::World& world) {
            std::vector<DWORD> held;
            for (const auto& [id, aircraft] : world.aircraft()) {
                if (aircraft.isSeen() && aircraft.released && aircraft.freezes.attitude) {
                    held.push_back(id);
                }
            }
            if (!held.empty()) {
                world.remove(held[static_cast<std::size_t>(chance.below(static_cast<int>(held.size())))]);
            }
        });
    }

    // --- The run thread

    /// For so long, and on until there were enough sessions: how many a slow machine makes in that time is no news.
    void run(std::chrono::nanoseconds time) {
        Chance chance(runSeed);
        const auto end = std::chrono::steady_clock::now() + time;
        const auto latestEnd = end + patience;
        const auto goesOn = [&] {
            const auto now = std::chrono::steady_clock::now();
            return now < end || (now < latestEnd && (sessions_ < leastSessions || created_ < leastCreated));
        };
        startSimClient();
        while (goesOn()) {
            turnWithoutFrame();
            if (gf_isStopping()) {
                ++sessions_;
                endRun();
                startSimClient();
            } else if (simRunning && chance.oneIn(slotsPerOperation)) {
                operate(chance);
            }
        }
    }

    void operate(Chance& chance) {
        if (chance.oneIn(operationsPerClosing)) {
            gf_userCloses();
            return;
        }
        switch (chance.below(6)) {
        case 0: create(chance); break;
        case 1: remove(chance); break;
        case 2: requestUserPosition(); break;
        case 3: requestUserIdentity(); break;
        default: control(chance); break;
        }
    }

    void create(Chance& chance) {
        if (liveTable.size() + staticTable.size() >= mostAircraft) {
            return;
        }
        const std::uint32_t number = ++created_;
        if (chance.oneIn(4)) {
            wantStatic(number, fmt::format("S{}", number));
        } else {
            wantLive(firstHexid + number, fmt::format("L{}", number),
                     chance.oneIn(2) ? Where::inTheAir : Where::onTheGround);
        }
    }

    static LiveAircraft* anyActive(Chance& chance) {
        if (liveTable.empty()) {
            return nullptr;
        }
        LiveAircraft& any = liveTable[static_cast<std::size_t>(chance.below(static_cast<int>(liveTable.size())))];
        return any.lifeState == LifeState::active ? &any : nullptr;
    }

    static void control(Chance& chance) {
        LiveAircraft* const aircraft = anyActive(chance);
        if (aircraft == nullptr) {
            return;
        }
        switch (chance.below(6)) {
        case 0: gf_setLights(aircraft->objectId, takeOffRollLights); break;
        case 1: gf_parkSystems(*aircraft); break;
        case 2: gf_setFlaps(*aircraft, chance.below(5)); break;
        case 3: gf_setThrottle(*aircraft, chance.below(5)); break;
        case 4: gf_setGear(*aircraft, chance.oneIn(2) ? Gear::up : Gear::down); break;
        default: aircraft->alt += 10; break;
        }
    }

    static void remove(Chance& chance) {
        if (chance.oneIn(2) && !liveTable.empty()) {
            removeAircraftFromSim(
                liveTable[static_cast<std::size_t>(chance.below(static_cast<int>(liveTable.size())))]);
            compactLiveTable();
        } else if (!staticTable.empty()) {
            removeStatic(staticTable[static_cast<std::size_t>(chance.below(static_cast<int>(staticTable.size())))]);
        }
    }

    static void removeStatic(AircraftRecord& aircraft) {
        removeAircraftFromSim(aircraft);
        if (aircraft.dropRecordQueued != 0) {
            eraseStaticBySwap(aircraft);
        }
    }

    // --- Afterwards

    static bool nothingIsUnderWay() {
        const auto isUnderWay = [](const AircraftRecord& aircraft) { return aircraft.lifeState != LifeState::active; };
        return std::none_of(liveTable.begin(), liveTable.end(), isUnderWay) &&
               std::none_of(staticTable.begin(), staticTable.end(), isUnderWay) && sentCreations().empty() &&
               pendingActivations.empty() && removalQueue.empty();
    }

    /// A session that stands, with aircraft in whatever state the disorder has left them.
    void comeToRest() {
        simulator().play(rig::ResumeAct{});
        bringUserHome();
        pumpUntil([this] { return !simulator().with([](rig::World& world) { return world.isStalled(); }); });
        waitForAnAnswer();
        if (gf_isStopping() || !pumpUntil([] { return simRunning.load(); })) {
            endRun();
            openSession();
        }
        wantLive(firstHexid + ++created_, "LAST", Where::inTheAir);
        wantStatic(++created_, "LASTS");
        EXPECT_TRUE(pumpUntil(nothingIsUnderWay));
        EXPECT_FALSE(gf_isStopping());
    }

    /// Answers come in the order of events: behind this one nothing is left that could end the run. One that is lost on
    /// the way is not waited for.
    void waitForAnAnswer() {
        constexpr int mostTurns = 1000;
        takeUserStandRequest();
        requestUserPosition();
        for (int turn = 0; turn < mostTurns && !gf_isStopping() && !takeUserStandRequest(); ++turn) {
            pumpTurns(1);
        }
    }

    /// Its jumps may have led it out of sight of the others.
    void bringUserHome() {
        simulator().atWorld([](rig::World& world) {
            world.user().position.lat = nearTheUser.lat;
            world.user().position.lon = nearTheUser.lon;
        });
    }

    void tablesAgreeWithTheWorld() {
        std::vector<const AircraftRecord*> records;
        for (const LiveAircraft& aircraft : liveTable) {
            records.push_back(&aircraft);
        }
        for (const AircraftRecord& aircraft : staticTable) {
            records.push_back(&aircraft);
        }
        EXPECT_GE(records.size(), 2u);
        std::set<std::uint32_t> objects;
        for (const AircraftRecord* record : records) {
            EXPECT_TRUE(objects.insert(record->objectId).second) << "two records with object " << record->objectId;
            const auto object = inWorld(record->objectId);
            EXPECT_EQ(object ? object->tailNumber : "", record->callsign);
        }
        EXPECT_EQ(ownedInWorld(), records.size());
    }

    std::size_t ownedInWorld() {
        return simulator().with([](rig::World& world) {
            std::size_t owned = 0;
            for (const auto& [id, aircraft] : world.aircraft()) {
                owned += aircraft.owner != nullptr ? 1 : 0;
            }
            return owned;
        });
    }

    void removeAll() {
        for (LiveAircraft& aircraft : liveTable) {
            removeAircraftFromSim(aircraft);
        }
        for (AircraftRecord& aircraft : staticTable) {
            removeAircraftFromSim(aircraft);
        }
    }

    int sessions_ = 0;
    std::uint32_t created_ = 0;
};

TEST_P(DisorderThreads, whateverTheSimulatorDoesTheTablesAndTheWorldAgreeInTheEnd) {
    startSimulator();
    fliesAircraft();
    {
        const std::jthread disorder([this](const std::stop_token& stop) { liveDisorderly(stop); });
        run(std::chrono::nanoseconds(disorderTime) / Front::ways().size());
    }
    EXPECT_GE(sessions_, leastSessions);
    EXPECT_GE(created_, leastCreated);
    comeToRest();
    tablesAgreeWithTheWorld();
    removeAll();
    EXPECT_TRUE(pumpUntil([this] { return liveTable.empty() && staticTable.empty() && ownedInWorld() == 0; }));
    EXPECT_THAT(pendingActivations, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(By, DisorderThreads, ::testing::ValuesIn(Front::ways()), wayName);

} // namespace
