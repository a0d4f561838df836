// rig/trace/trace_summary.h
// What a trace holds, in a few lines for a reader.
// Functions without state: usable from any thread.
#pragma once

#include <iosfwd>

namespace rig {

/// Frames and time, the number of each kind of event, and one line per aircraft: how long it was to be seen, how far it
/// flew, its largest step between two frames. Throws TraceError for a file that is no trace.
void summariseTrace(std::istream& trace, std::ostream& out);

} // namespace rig
