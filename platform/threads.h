// Names for threads, as debuggers and profilers show them, and threads that nobody joins.
#pragma once

#include <functional>
#include <string_view>

namespace platform {

/// Names the calling thread. A name that the system refuses (natively above 15 bytes) is cut.
void nameThisThread(std::string_view name);

/// Starts a thread that nobody joins. Throws std::system_error when the system has none to give. An exception that
/// leaves the body ends the process.
void startDetached(std::function<void()> body);

} // namespace platform
