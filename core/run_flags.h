// core/run_flags.h
// The flags and counters of a run that more than one part of the program looks at.
#pragma once

#include <atomic>

// Written by the simulator's session.

extern std::atomic<bool> simRunning; ///< the simulator's flight runs
extern std::atomic<bool> simFailed;  ///< the link to the simulator has failed
/// Set once a second of the simulator; the tick of the run loop alone takes it back.
extern std::atomic<bool> secondPulse;

// Written by the run thread.

extern std::atomic<int> gSecondCounter;        ///< seconds since the run loop began; wraps at a day
extern std::atomic<bool> gRealTrafficHere;     ///< the RealTraffic client is installed on this PC
extern std::atomic<bool> gRealTrafficHistoric; ///< the feed is of another time than now
extern std::atomic<bool> gBeforeFirstConnect;  ///< the run has not yet passed its RealTraffic connect
extern std::atomic<bool> gFlightPaused;        ///< the run loop is in its flight-not-running branch
extern std::atomic<int> gHardwareThreads;      ///< worker count of the livery scan
extern std::atomic<int> gSimulatorVersion;     ///< 5 or 6
extern std::atomic<int> gExitCode;             ///< given to the quit message
extern std::atomic<bool> gRestartWanted;       ///< the run that ends is followed by another one
/// Set once by the process entry: read the files, scan the liveries, and end.
extern std::atomic<bool> gProductionMode;
/// The user has pressed the close button; unlike gUserClosing this is never taken back, so no restart can lose it.
extern std::atomic<bool> gCloseButtonUsed;

/// Every flag of a run as at its start. The exit code, the restart wish and the flags of the process stay.
void gf_resetRunFlags();
