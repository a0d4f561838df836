// rig/world/trace_writer.h
// Writes what happens in a world into a trace file.
// Belongs to its world.
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <map>
#include <string>
#include <string_view>

#include "rig/world/trace_format.h"
#include "rig/world/world_object.h"

namespace rig {

/// A frame is begin, its objects in rising order of their ids, end. Objects that are left out have gone.
class TraceWriter {
public:
    /// `to` must live as long as the writer. Bytes reach it in large pieces, the last ones with flush() or the end.
    explicit TraceWriter(std::ostream& to);
    ~TraceWriter();
    TraceWriter(const TraceWriter&) = delete;
    TraceWriter& operator=(const TraceWriter&) = delete;

    void beginFrame(double simulatedSeconds, double elapsedSeconds);
    void object(DWORD id, const Position& position);
    void endFrame();

    void event(TraceEventKind kind, DWORD objectId, double value, std::string_view name, std::string_view detail = {});

    void flush();

private:
    struct Known {
        std::array<std::int64_t, positionValues> values{};
        std::uint64_t frame = 0; ///< the last one that it was in
    };

    void record(TraceTag tag, std::string_view body);
    void forgetGone(std::string& gone, std::uint64_t& goneCount);

    std::ostream& to_;
    std::string buffer_;
    std::string body_;
    std::string changed_; // the frame's objects that have changed
    std::map<DWORD, Known> objects_;
    std::uint64_t frame_ = 0;
    std::uint64_t changedCount_ = 0;
    std::int64_t simulated_ = 0; // time of the last frame, in its steps
    std::int64_t elapsed_ = 0;
};

} // namespace rig
