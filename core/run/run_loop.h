// core/run/run_loop.h
// The 10 ms grid of a run and what hangs on it. Run thread only.
#pragma once

#include <chrono>
#include <functional>

/// One tick of the grid: a slot of the engine.
inline constexpr std::chrono::milliseconds tickLength{10};

/// Runs until a stop flag is set.
void gf_runLoop();

/// The grid itself: runs the step every tickLength, locked to secondPulse, under a 1 ms system timer, until it answers
/// false. A grid that falls far behind starts anew, so that no burst of ticks follows a long step.
void gf_runTicks(const std::function<bool()>& step);

/// One tick; false to end the loop.
bool gf_tickStep();

/// The state of the loop as at its start, for the reset of a run.
void gf_resetRunLoop();

/// Asks for a renewal of the static parking; taken up at the next 15-second step. Any thread.
void gf_requestStaticRefresh();
bool gf_staticRefreshRuns();

/// Asks for another try of the aircraft that got no livery, as after the choice of a deeper MATCHING_DEPTH; taken up at
/// the next 30-second step. Any thread.
void gf_requestRematch();
