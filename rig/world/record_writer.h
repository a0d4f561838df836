// rig/world/record_writer.h
// Puts the records for a client together.
// A writer belongs to its client's session.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "sim/simconnect.h"

namespace rig {

/// begin() starts a record behind the ones that are there; the values follow in their order; end() fills in its size.
class RecordWriter {
public:
    void begin(SIMCONNECT_RECV_ID id);
    void dword(DWORD value);
    void float32(float value);
    /// A text field of this size, with a zero behind the text: what is longer is cut.
    void text(std::string_view value, std::size_t fieldBytes);
    /// For whoever appends bytes of his own.
    std::string& bytes() { return bytes_; }
    void end();

    /// All whole records so far; the writer begins anew.
    std::string take();

private:
    std::string bytes_;
    std::size_t begun_ = 0; // where the record under way begins
};

} // namespace rig
