// platform/threads.h
// Names for threads, as debuggers and profilers show them.
#pragma once

#include <string_view>

namespace platform {

/// Names the calling thread. A name that the system refuses (natively above 15 bytes) is cut.
void nameThisThread(std::string_view name);

} // namespace platform
