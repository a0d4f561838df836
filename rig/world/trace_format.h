// rig/world/trace_format.h
// The trace file, byte for byte: docs/rig.md describes it. Writer and reader take everything from here.
// Constants: usable from any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace rig {

// The head: magic text, then the version as 4 bytes, the low one first.
inline constexpr std::string_view traceMagic{"RIGTRACE", 8};
inline constexpr std::uint32_t traceVersion = 1;
inline constexpr std::size_t traceHeadBytes = 12;

// Records follow: a tag (1 byte), the size of the rest (a variable-length number), the rest.
enum class TraceTag : std::uint8_t { frame = 1, event = 2 };

/// Longer ones are no records: a frame of 1000 objects takes a tenth of it.
inline constexpr std::size_t maxTraceRecordBytes = std::size_t{1} << 20;

/// More than a world ever holds.
inline constexpr std::size_t maxTraceObjects = 4096;

inline constexpr std::size_t positionValues = 8;
/// Values are whole multiples of these: 1e-9 degree is a tenth of a millimetre.
inline constexpr std::array<double, positionValues> traceSteps{
    //  lat, lon     pitch, bank, heading  alt   vs            tas
    //  degree       radian                ft    ft a second   kt
    1e-9, 1e-9, 1e-7, 1e-7, 1e-7, 1e-4, 1e-4, 1e-4,
};
inline constexpr double traceTimeStep = 1e-6; ///< seconds

/// So many steps at most, up or down; the differences of any two still fit.
inline constexpr double mostTraceSteps = 4e18;
/// These many are a value that is no number, or too large.
inline constexpr std::int64_t noNumberSteps = 4'500'000'000'000'000'000;

enum class TraceEventKind : std::uint8_t {
    created = 1,       ///< a client's aircraft: title, tail number
    appeared = 2,      ///< clients can see it: title, tail number
    removed = 3,       ///< title, tail number
    refused = 4,       ///< a creation; value is the exception: title, tail number
    clientEvent = 5,   ///< value is its parameter: name of the event
    written = 6,       ///< a variable other than the position, with its value: name of the variable
    released = 7,      ///< the simulator's pilot has given up control
    flightPlan = 8,    ///< path
    act = 9,           ///< of the scene: what happened
    exception = 10,    ///< sent to a client; value is its number
    clientOpened = 11, ///< name of the client
    clientGone = 12,   ///< name of the client
};

/// The act that tells how the feed's time goes with that of the trace: its detail is the wall clock of the feed at that
/// moment, seconds since 1970, its value the second of the trace.
inline constexpr std::string_view feedBeginsAct = "feed begins";
/// The same of the machine's wall clock, once at the begin of a trace that goes with the machine's time.
inline constexpr std::string_view traceBeginsAct = "trace begins";

} // namespace rig
