// tests/rig/session/front.h
// The simulated world as a session of the program reaches it: in the same process, or over the wire. One source for
// each, and an executable for each of the sources. Usable from any thread. No two fronts at a time.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "rig/world/trace_reader.h"
#include "rig/world/world.h"

class Front {
public:
    /// The names of the ways by which this front can be reached.
    static std::vector<std::string> ways();

    /// Sessions that are opened in the present working directory find it, by one of its ways.
    Front(rig::Scene scene, rig::AircraftTitles titles, const std::string& way);
    ~Front();
    Front(const Front&) = delete;
    Front& operator=(const Front&) = delete;

    /// As many frames of the world's present frame rate, in no time.
    void frames(int count);

    /// Something of the scene happens now; clients learn of it with the next frame.
    template <typename Act>
    void play(const Act& act) {
        atWorld([&act](rig::World& world) { world.play(act); });
    }

    /// look(World&), between two frames.
    void atWorld(const std::function<void(rig::World&)>& look);
    /// The same for a look that answers something; not a reference into the world.
    template <typename Look>
    auto with(Look look) {
        std::invoke_result_t<Look, rig::World&> answer{};
        atWorld([&](rig::World& world) { answer = look(world); });
        return answer;
    }

    /// What the world has noted so far.
    std::vector<rig::TraceEvent> events();

private:
    struct State;
    std::unique_ptr<State> state_;
};
