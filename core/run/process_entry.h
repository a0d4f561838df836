// core/run/process_entry.h
// The life of the process: one instance, log, window, runs, quit. On the window thread.
#pragma once

#include <string>
#include <vector>

/// The whole program. `arguments` begins with the program's own name. Answers the quit code, -1 when another instance
/// runs, 0 when the program could not come up.
int gf_processEntry(const std::vector<std::string>& arguments);

/// What the command line asks for: the last of the words "--production" and "--no-production" wins, a slash does as
/// well as the two dashes, and case does not count.
bool gf_asksForProduction(const std::vector<std::string>& arguments);
