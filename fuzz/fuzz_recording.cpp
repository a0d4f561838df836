// fuzz/fuzz_recording.cpp
// Any bytes as a recording: no fault, its rows never go back in time, and a player comes to its end.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "rig/traffic/player.h"
#include "rig/traffic/recording.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const rig::Recording recording = rig::recordingFrom({reinterpret_cast<const char*>(data), size});
    double former = recording.begin();
    for (const rig::RecordedRow& row : recording.rows) {
        if (row.due < former) {
            std::abort();
        }
        former = row.due;
    }
    if (recording.rows.empty()) {
        return 0;
    }
    rig::PlayerOptions options;
    options.loops = 2;
    options.late = 0.5;
    options.outOfOrder = 0.5;
    options.radiusNm = 100;
    rig::Player player(recording, options, 1700000000);
    player.tellPosition({52.3, 4.7});
    constexpr double longEnough = 1e300;
    player.advanceTo(longEnough);
    if (!player.isOver()) {
        std::abort();
    }
    return 0;
}
