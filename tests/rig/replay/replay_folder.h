// tests/rig/replay/replay_folder.h
// A recording and a scene in a folder of a test's own, and what their replays write there.
#pragma once

#include <string>
#include <vector>

#include "rig/replay/replay_run.h"
#include "rig/world/trace_reader.h"
#include "tests/support/temporary_folder.h"

namespace rig {

/// 1 June 2026, noon.
inline constexpr double recordingBegin = 1780315200;

/// The user stands at the airport of the scripted flights.
Scene sceneAtTheAirport();

/// The recording of so many aircraft that fly over the airport, ten seconds one after the other, a line every two
/// seconds. Their call signs are those of overflightNames().
std::string overflights(int count);
std::vector<std::string> overflightNames(int count);
/// Where they really are, as a truth file.
std::string truthOfOverflights(int count);

/// The sample data of the source folder, wherever the working directory is by then.
std::filesystem::path sampleReference();

class ReplayFolder {
public:
    explicit ReplayFolder(const std::string& recording);

    ReplayOptions options;

    /// The trace of a replay with these options; what it told is in `told`.
    std::string replay();
    ReplayResult result;
    std::string told;

private:
    TemporaryFolder folder_;
};

std::vector<TraceEvent> eventsOf(const std::string& trace);
/// Of the events of this kind, the tail numbers, in order.
std::vector<std::string> tailNumbers(const std::string& trace, TraceEventKind kind);

} // namespace rig
