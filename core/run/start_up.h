// core/run/start_up.h
// One run, from reading the files to closing down. The body of the run thread.
#pragma once

#include <exception>

/// A whole run. Lets no exception out; its last act is to post what follows to the window.
void lf_startUpTRNW();

/// As at the start of a process, when no data file has been read.
void gf_resetStartUp();

/// What an exception at the top of a run leads to: its text on the error line, and the reason "system error".
void gf_endRunOn(const std::exception_ptr& failure);
