// platform/sibling_program.h
// Running another program of ours, which stands beside this one. Usable from any thread.
#pragma once

#include <string>
#include <vector>

namespace platform {

/// Runs the program of this name (without its ending) from the folder of the running one, with its own console, and
/// waits for its end; answers its exit code. Throws std::runtime_error, with a text for the user, when it cannot be
/// started.
int runSibling(const std::string& name, const std::vector<std::string>& arguments);

} // namespace platform
