// tests/core/run/running_simulator.h
// A simulated world whose frames run by themselves, for tests of the whole program.
#pragma once

#include <chrono>
#include <thread>
#include <utility>

#include "rig/world_in_process/in_process_world.h"

/// The simulator is up while it lives. Unless told otherwise its frames follow each other as fast as the program can
/// see them apart, so that its second takes some thirty milliseconds.
class RunningSimulator {
public:
    explicit RunningSimulator(rig::Scene scene = {}, rig::AircraftTitles titles = {},
                              std::chrono::milliseconds frameTime = std::chrono::milliseconds(1))
        : world_(std::move(scene), std::move(titles)), frameTime_(frameTime),
          frames_([this](const std::stop_token& stop) { run(stop); }) {}

    template <typename Act>
    void play(const Act& act) {
        world_.play(act);
    }

    template <typename Look>
    auto with(Look look) {
        return world_.with(look);
    }

private:
    void run(const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            world_.frames(1);
            std::this_thread::sleep_for(frameTime_);
        }
    }

    rig::InProcessWorld world_;
    std::chrono::milliseconds frameTime_;
    std::jthread frames_;
};
