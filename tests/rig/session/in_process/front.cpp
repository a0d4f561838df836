// The world in the same process.
#include "tests/rig/session/front.h"

#include <utility>

#include "rig/world_in_process/in_process_world.h"
#include "tests/rig/session/world_trace.h"

struct Front::State {
    State(rig::Scene scene, rig::AircraftTitles titles) : world(std::move(scene), std::move(titles), &trace.writer()) {}

    WorldTrace trace;
    rig::InProcessWorld world;
};

std::vector<std::string> Front::ways() {
    return {"InProcess"};
}

Front::Front(rig::Scene scene, rig::AircraftTitles titles, const std::string&)
    : state_(std::make_unique<State>(std::move(scene), std::move(titles))) {}

Front::~Front() = default;

void Front::frames(int count) {
    state_->world.frames(count);
}

void Front::atWorld(const std::function<void(rig::World&)>& look) {
    state_->world.with([&look](rig::World& world) { look(world); });
}

std::vector<rig::TraceEvent> Front::events() {
    return with([this](rig::World&) { return state_->trace.events(); });
}
