// tests/sim/sim_test.h
// What the tests of the simulator's side have in common: empty queues and tables, a log, and the simulator's calls
// written down.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/parameters.h"
#include "core/run_flags.h"
#include "core/week_slot.h"
#include "engine/aircraft_tables.h"
#include "liveries/failed_titles.h"
#include "sim/engine_inbox.h"
#include "sim/object_life.h"
#include "sim/object_queues.h"
#include "sim/sim_ids.h"
#include "sim/sim_queues.h"
#include "sim/simulator_link.h"
#include "sim/user_state.h"
#include "tests/recording_simulator/recording_simulator.h"
#include "tests/support/log_capture.h"
#include "window/window_state.h"

class SimTest : public testing::Test {
protected:
    SimTest() {
        reset();
        simHandle = this;
    }
    ~SimTest() override { reset(); }

    static void reset() {
        resetAircraftTables();
        resetEngineInbox();
        resetSimQueues();
        resetObjectQueues();
        resetObjectLife();
        resetFailedTitles();
        resetParameters();
        resetWindowState();
        gf_resetRunFlags();
        gf_resetExitReason();
        gWeekSlot = 0;
        userObjectId = 0;
        simHandle = nullptr;
    }

    /// The queued events as "objectId eventId value".
    static std::vector<std::string> events() {
        std::vector<std::string> texts;
        for (const SimEventRequest& event : eventQueue) {
            texts.push_back(fmt::format("{} {} {}", event.objectId, event.eventId, event.value));
        }
        return texts;
    }

    LogCapture log;
    RecordingSimulatorScope simulator;
};
