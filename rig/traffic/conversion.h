// rig/traffic/conversion.h
// Public forms of ADS-B data as recordings. Functions without state: usable from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace rig {

struct RegisteredAircraft {
    std::string registration;
    std::string type;
};

/// By transponder address.
using AircraftRegistry = std::map<std::uint32_t, RegisteredAircraft>;

/// From the JSON object {"ABC123": ["registration", "type", ...]}.
AircraftRegistry registryFrom(std::string_view text);

/// The rows of a recording, each with its end. Knows by itself which form the text has:
/// - a list of states {"icao24", "timestamp" (ms), "latitude", "longitude", "altitude", "groundspeed", "track",
///   "vertical_rate", "callsign", "onground"},
/// - a trace {"icao", "timestamp", "trace": [[seconds, lat, lon, altitude or "ground", speed, track, ...]]},
/// - lines of the feed's older form (AITFC) or of its own (RTTFC), weather rows between them.
/// What a form does not tell comes from the registry, or stays unknown; a speed that is missing follows from the
/// positions. Throws std::runtime_error, with a text for the user, for anything else.
std::string convertToRecording(std::string_view text, const AircraftRegistry& registry);

struct ConvertOptions {
    std::filesystem::path input;
    std::filesystem::path output;
    std::filesystem::path registry; ///< empty: none
};

/// The same with files, packed or not. The count of rows that were written.
std::size_t convertFile(const ConvertOptions& options);

} // namespace rig
