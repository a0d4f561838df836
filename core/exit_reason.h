// core/exit_reason.h
// The flags that end a run, and why it ends. Any thread may stop the run and look at the flags.
#pragma once

#include <atomic>
#include <string>

/// Why a run ends; the number is what the texts and the rules of closing down go by.
enum class ExitReason : int {
    notYetSet = 0,
    simulatorClosed = 1,
    newFlight = 2,
    newSettings = 3,
    userClosed = 4,
    simConnectError = 5,
    readerError = 6,
    systemError = 7,
    newVersion = 8,
};

/// The run shall stop. Written by gf_stopRun, gf_userCloses and the reset of a run alone.
extern std::atomic<bool> gStopRun;
/// The window's close button was used. Written by gf_userCloses and the reset of a run alone.
extern std::atomic<bool> gUserClosing;

/// Stops the run with a reason and a delay before a restart. Only the first call of a run has an effect; its reason and
/// delay are stored before the flag can be seen. New settings alone replace a system error, and nothing else does: the
/// error stands on the screen and asks for them.
void gf_stopRun(ExitReason reason, int restartDelaySeconds);

/// Sets both flags, and the reason "user closed" if none is stored yet.
void gf_userCloses();

/// Stores "system error" whatever stood there, without stopping the run.
void gf_setSystemError();

/// Turns a reason that is still "not yet set" into "user closed".
void gf_settleExitReason();

ExitReason gf_exitReason();
int gf_restartDelaySeconds();

/// Whether either flag is set.
bool gf_isStopping();

/// The fixed text of a reason. Throws std::out_of_range "invalid unordered_map<K, T> key" for an unknown one.
const std::string& gf_exitReasonText(ExitReason reason);

/// Both flags, the reason and the delay as at the start of the process.
void gf_resetExitReason();
