// rig/replay/replay.h
// The program's engine and a simulated world on one thread and in one virtual time, which goes as fast as the machine
// does: what takes three threads and a simulator an hour is done in seconds, and the same input gives the same flights.
// Owns the globals of the run and both clocks while it lives: one at a time, and no other thread of the program beside
// it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "feed/traffic_reader.h"
#include "platform/clock.h"
#include "rig/traffic/player.h"
#include "rig/world_in_process/in_process_world.h"

namespace rig {

struct ReplaySettings {
    Scene scene;
    double begin = 0;     ///< wall clock at the first slot, seconds since 1970
    double radiusNm = 40; ///< of injection
    std::uint32_t seed = 1;
    TraceWriter* trace = nullptr; ///< must outlive the replay
};

inline constexpr std::size_t lineOutcomes = static_cast<std::size_t>(LineOutcome::refused) + 1;

/// So far.
struct ReplayCounts {
    std::array<std::size_t, lineOutcomes> lines{}; ///< by what became of them
    std::size_t weather = 0;
    std::size_t created = 0; ///< aircraft of the simulated world, those of the scene included
    std::size_t removed = 0;
    std::size_t most = 0; ///< active ones at a time
    double mean = 0;      ///< active ones, over all seconds

    std::size_t allLines() const;
    std::size_t of(LineOutcome outcome) const { return lines.at(static_cast<std::size_t>(outcome)); }
};

class Replay {
public:
    /// Begins a run: the session is opened and the user's aircraft known. Reference data, which the replay only reads,
    /// are the caller's. Throws std::runtime_error when the scene's flight does not come to run within a minute.
    explicit Replay(ReplaySettings settings);
    ~Replay();
    Replay(const Replay&) = delete;
    Replay& operator=(const Replay&) = delete;

    /// What a reader thread would have received by now.
    void receive(const Datagram& datagram);

    /// The next 10 ms. Throws what would end the run as an error, kvd::UserErrorException among it.
    void slot();

    /// Since the first slot.
    double seconds() const;
    /// Something has ended the run: the simulator has quit, the user is elsewhere, ...
    bool runHasEnded() const;
    /// Aircraft that the engine has a record of.
    std::size_t aircraft() const;
    ReplayCounts counts();

    InProcessWorld& world() { return world_; }

private:
    /// The program's globals as at its start, before and after.
    class ProgramState {
    public:
        explicit ProgramState(const ReplaySettings& settings);
        ~ProgramState();
        ProgramState(const ProgramState&) = delete;
        ProgramState& operator=(const ProgramState&) = delete;
        static void reset();
    };
    class Session {
    public:
        Session();
        ~Session();
        Session(const Session&) = delete;
        Session& operator=(const Session&) = delete;
    };

    void meetSimulator();
    void beginFeed(double begin);
    void passTime();
    template <typename Holds>
    void passTimeUntil(Holds holds, std::int64_t lookTicks);
    void dispatch();
    void countActive();

    ProgramState program_;
    platform::ManualClock clock_;
    InProcessWorld world_;
    std::unique_ptr<Session> session_;
    std::int64_t ticks_ = 0;      // of 10 ms, since the world began
    std::int64_t slots_ = 0;      // of the engine
    double nextFrameSeconds_ = 0; // since the world began
    ReplayCounts counts_;
    std::size_t looks_ = 0; // that the mean is taken over
};

} // namespace rig
