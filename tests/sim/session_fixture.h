// tests/sim/session_fixture.h
// A session as the dispatch of records sees it: everything of a run as at its start, a log, and a simulator that writes
// down what it is told.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "core/exit_reason.h"
#include "core/user_error.h"
#include "liveries/aircraft_types.h"
#include "sim/dispatch.h"
#include "sim/engine_inbox.h"
#include "sim/session.h"
#include "sim/sim_queues.h"
#include "sim/simulator_link.h"
#include "tests/recording_simulator/recording_simulator.h"
#include "tests/sim/record_builder.h"
#include "tests/support/log_capture.h"
#include "tests/support/program_run.h"

class SessionTest : public testing::Test {
protected:
    SessionTest() {
        reset();
        simHandle = &handle;
    }
    ~SessionTest() override {
        simHandle = nullptr;
        reset();
    }

    static void reset() {
        resetProgram();
        resetSession();
        resetAircraftTypes();
    }

    /// In memory of its exact size, so that a read beyond its end is seen.
    static void dispatch(const Bytes& bytes) {
        const std::vector<std::byte> exact(bytes);
        dispatchRecord(reinterpret_cast<const SIMCONNECT_RECV*>(exact.data()), static_cast<DWORD>(exact.size()));
    }

    static void dispatchAnswer(SimRequest request, const Bytes& data, DWORD objectId = 1) {
        dispatch(answerRecord(request, objectId, data));
    }

    static UserState atParis() {
        UserState state;
        state.lat = 49.0097;
        state.lon = 2.5479;
        state.alt = 392;
        return state;
    }

    static void placeUser(const UserState& state, DWORD objectId = 1) {
        dispatchAnswer(requestPosition, userPositionData(state), objectId);
    }

    static std::vector<EngineMessage> inbox() {
        const std::lock_guard lock(inboxLock);
        return engineInbox;
    }

    static bool stopsForNewFlight() {
        return gStopRun && gf_exitReason() == ExitReason::newFlight && gf_restartDelaySeconds() == 30;
    }

    /// Code and text of the user error that the action throws; 0 when it throws none.
    template <typename Action>
    static std::pair<int, std::string> userErrorOf(Action action) {
        try {
            action();
        } catch (const kvd::UserErrorException& error) {
            return {error.code(), error.what()};
        }
        return {0, ""};
    }

    LogCapture log;
    RecordingSimulatorScope simulator;
    int handle = 0;
};

inline bool operator==(const EngineMessage& one, const EngineMessage& other) {
    return one.objectId == other.objectId && one.id == other.id && one.counter == other.counter &&
           one.kind == other.kind && one.a == other.a && one.b == other.b;
}

inline void PrintTo(const EngineMessage& message, std::ostream* out) {
    *out << "{object " << message.objectId << ", id " << message.id << ", counter " << message.counter << ", kind "
         << static_cast<int>(message.kind) << ", a " << message.a << ", b " << message.b << "}";
}
