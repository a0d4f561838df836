// tests/rig/session/world_trace.h
// A trace in memory, of which the events can be read while it is being written.
// Belongs to the thread that steps its world.
#pragma once

#include <sstream>
#include <vector>

#include "rig/world/trace_reader.h"
#include "rig/world/trace_writer.h"

class WorldTrace {
public:
    rig::TraceWriter& writer() { return writer_; }

    std::vector<rig::TraceEvent> events() {
        writer_.flush();
        std::istringstream bytes(bytes_.str());
        rig::TraceReader reader(bytes);
        std::vector<rig::TraceEvent> events;
        rig::TraceItem item;
        while (reader.next(item)) {
            if (const auto* event = std::get_if<rig::TraceEvent>(&item)) {
                events.push_back(*event);
            }
        }
        return events;
    }

private:
    std::ostringstream bytes_;
    rig::TraceWriter writer_{bytes_};
};
