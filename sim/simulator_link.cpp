// sim/simulator_link.cpp
#include "sim/simulator_link.h"

#include "core/exit_reason.h"
#include "core/run_flags.h"
#include "window/window_state.h"

std::mutex simLock;
HANDLE simHandle = nullptr;

namespace {

constexpr int restartDelaySeconds = 9;

} // namespace

void requestFailed() {
    showMessage("SimConnect request error", LogCopy::yes);
    simFailed = true;
    if (!gf_isStopping()) {
        gf_stopRun(ExitReason::simConnectError, restartDelaySeconds);
    }
}
