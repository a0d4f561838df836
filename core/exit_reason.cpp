// core/exit_reason.cpp
#include "core/exit_reason.h"

#include <array>
#include <mutex>
#include <stdexcept>
#include <unordered_map>

std::atomic<bool> gStopRun{false};
std::atomic<bool> gUserClosing{false};

namespace {

// One lock round reason, delay and the writing of the flags: whoever sees a flag finds the reason that belongs to it.
std::mutex reasonLock;
ExitReason gExitReason = ExitReason::notYetSet;
int gRestartDelaySeconds = 0;

constexpr std::array<std::pair<int, const char*>, 9> reasonTexts{{
    {0, "NOT YET SET"},
    {1, "SIM WAS CLOSED"},
    {2, "NEW FLIGHT"},
    {3, "NEW SETTINGS"},
    {4, "USER CLOSED SIM"},
    {5, "SIMCONNECT ERROR"},
    {6, "READER ERROR"},
    {7, "SYSTEM ERROR"},
    {8, "NEW VERSION"},
}};

} // namespace

void gf_stopRun(ExitReason reason, int restartDelaySeconds) {
    const std::lock_guard lock(reasonLock);
    const bool errorStands = gExitReason == ExitReason::systemError;
    if (errorStands ? reason != ExitReason::newSettings : gStopRun.load()) {
        return;
    }
    gExitReason = reason;
    gRestartDelaySeconds = restartDelaySeconds;
    gStopRun = true;
}

void gf_userCloses() {
    const std::lock_guard lock(reasonLock);
    if (gExitReason == ExitReason::notYetSet) {
        gExitReason = ExitReason::userClosed;
    }
    gUserClosing = true;
    gStopRun = true;
}

void gf_setSystemError() {
    const std::lock_guard lock(reasonLock);
    gExitReason = ExitReason::systemError;
}

void gf_settleExitReason() {
    const std::lock_guard lock(reasonLock);
    if (gExitReason == ExitReason::notYetSet) {
        gExitReason = ExitReason::userClosed;
    }
}

ExitReason gf_exitReason() {
    const std::lock_guard lock(reasonLock);
    return gExitReason;
}

int gf_restartDelaySeconds() {
    const std::lock_guard lock(reasonLock);
    return gRestartDelaySeconds;
}

bool gf_isStopping() {
    return gStopRun || gUserClosing;
}

const std::string& gf_exitReasonText(ExitReason reason) {
    static const std::unordered_map<int, std::string> texts(reasonTexts.begin(), reasonTexts.end());
    const auto found = texts.find(static_cast<int>(reason));
    if (found == texts.end()) {
        throw std::out_of_range("invalid unordered_map<K, T> key");
    }
    return found->second;
}

void gf_resetExitReason() {
    const std::lock_guard lock(reasonLock);
    gExitReason = ExitReason::notYetSet;
    gRestartDelaySeconds = 0;
    gUserClosing = false;
    gStopRun = false;
}
