// core/run/run_reset.h
// The run state as at the start of a run. Run thread only, when no thread of the run is left.
#pragma once

void gf_resetRun();
