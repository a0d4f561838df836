// core/run_flags.cpp
#include "core/run_flags.h"

std::atomic<bool> simRunning{false};
std::atomic<bool> simFailed{false};
std::atomic<bool> secondPulse{false};
std::atomic<int> gSecondCounter{0};
std::atomic<bool> gRealTrafficHere{false};
std::atomic<bool> gRealTrafficHistoric{false};
std::atomic<bool> gBeforeFirstConnect{true};
std::atomic<bool> gFlightPaused{false};
std::atomic<int> gHardwareThreads{0};
std::atomic<int> gSimulatorVersion{0};
std::atomic<int> gExitCode{0};
std::atomic<bool> gRestartWanted{false};
std::atomic<bool> gProductionMode{false};
std::atomic<bool> gCloseButtonUsed{false};

void gf_resetRunFlags() {
    simRunning = false;
    simFailed = false;
    secondPulse = false;
    gFlightPaused = false;
    gRealTrafficHistoric = false;
    gBeforeFirstConnect = true;
}
