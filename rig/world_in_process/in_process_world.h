// rig/world_in_process/in_process_world.h
// The simulated world in the same process: defines the calls of sim/simconnect.h over the one world that a test owns.
// Time goes on when the test says so, as fast as it likes. Usable from any thread: a lock goes round the world and each
// call. Record procedures run without it.
#pragma once

#include <mutex>
#include <utility>

#include "rig/world/world.h"

namespace rig {

/// One at a time. While there is none, or its simulator has quit, opening fails; handles from before fail and are still
/// to be closed.
class InProcessWorld {
public:
    explicit InProcessWorld(Scene scene = {}, AircraftTitles titles = {}, TraceWriter* trace = nullptr);
    ~InProcessWorld();
    InProcessWorld(const InProcessWorld&) = delete;
    InProcessWorld& operator=(const InProcessWorld&) = delete;

    /// One frame; its records are there for the next SimConnect_CallDispatch.
    void step(double seconds);
    /// As many frames of the present frame rate.
    void frames(int count);

    /// Something of the scene happens now; clients learn of it with their next dispatch.
    template <typename Act>
    void play(const Act& act) {
        const std::lock_guard guard(lock());
        world_.play(act);
    }

    /// Answers look(World&), during which nobody else is at the world.
    template <typename Look>
    auto with(Look look) {
        const std::lock_guard guard(lock());
        return look(world_);
    }

private:
    static std::mutex& lock();

    World world_;
};

} // namespace rig
