// rig/world/trace_reader.h
// Reads a trace file frame by frame, event by event.
// Belongs to whoever reads.
#pragma once

#include <array>
#include <cstdint>
#include <istream>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "rig/world/trace_format.h"
#include "rig/world/world_object.h"

namespace rig {

/// Its text says at which byte of the file what is wrong.
class TraceError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct TraceObject {
    DWORD id = 0;
    Position position; ///< what was no number, or too large for the file, is not-a-number
};

struct TraceFrame {
    double simulatedSeconds = 0; ///< without pauses and stalls
    double elapsedSeconds = 0;
    std::vector<TraceObject> objects; ///< all that could be seen, by id; 1 is the user's aircraft
};

/// Its time is that of the frame that follows it.
struct TraceEvent {
    TraceEventKind kind = TraceEventKind::act;
    DWORD objectId = 0; ///< 0: of none
    double value = 0;
    std::string name;
    std::string detail;
};

using TraceItem = std::variant<TraceFrame, TraceEvent>;

class TraceReader {
public:
    /// `from` must live as long as the reader. Throws TraceError when it is no trace of this version.
    explicit TraceReader(std::istream& from);

    /// The next frame or event; false at the end. Records of a kind that this version does not know are left out.
    /// Throws TraceError for a record that cannot be.
    bool next(TraceItem& item);

    /// Whether the file ended within a record, as that of a program that was killed.
    bool endedEarly() const { return endedEarly_; }

private:
    using Values = std::array<std::int64_t, positionValues>;

    bool readRecord(std::uint8_t& tag);
    TraceFrame frameFrom(std::string_view bytes);
    TraceEvent eventFrom(std::string_view bytes) const;
    [[noreturn]] void fail(std::string_view what) const;

    std::istream& from_;
    std::uint64_t at_ = 0; // of the record, in bytes
    std::uint64_t read_ = 0;
    std::string body_;
    std::map<DWORD, Values> objects_;
    std::int64_t simulated_ = 0;
    std::int64_t elapsed_ = 0;
    bool endedEarly_ = false;
};

} // namespace rig
