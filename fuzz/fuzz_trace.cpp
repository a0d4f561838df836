// A trace file: whatever it holds, it is frames and events, or a TraceError; and no frame has more objects than a
// world.
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "rig/world/trace_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
    try {
        rig::TraceReader reader(stream);
        rig::TraceItem item;
        while (reader.next(item)) {
            const auto* frame = std::get_if<rig::TraceFrame>(&item);
            if (frame != nullptr && frame->objects.size() > rig::maxTraceObjects) {
                std::abort();
            }
        }
    } catch (const rig::TraceError&) {
        return 0;
    }
    return 0;
}
