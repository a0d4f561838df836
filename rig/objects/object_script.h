// rig/objects/object_script.h
// A set of aircraft that is created, flown round the user, lit and removed by the program's own simulator side, without
// a feed: shows that the link carries everything. Runs on the calling thread, which plays the run thread.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace rig {

struct ObjectScriptOptions {
    std::vector<std::string> titles; ///< taken in turn
    int count = 5;
    double seconds = 20; ///< of flight, after the first one is active
};

/// Tells on `out` what became of them. Throws std::runtime_error when the simulator does not come up within 20 seconds,
/// or not all of them are created, flown and removed.
void runObjectScript(const ObjectScriptOptions& options, std::ostream& out);

} // namespace rig
