// parking/airport_directory.h
// Every airport that the live feed can serve. Read once by the run thread during start-up; afterwards it does not
// change, and any thread may read.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

struct Airport {
    std::string code; ///< ICAO
    std::string iata; ///< may be empty
    double lat = 0;   ///< degrees
    double lon = 0;   ///< degrees
    double alt = 0;   ///< field elevation, feet
    /// 1 or more: the download server has an airport file; it also sets the share of occupied stands.
    std::int32_t stands = 0;
};

/// Ascending by code.
extern std::vector<Airport> gAirports;

/// Opens "input/airports.enc" and fills the directory, once; a later call only answers. Whether there are airports. A
/// failure is an error line and false; the clear file is gone afterwards whatever happens.
bool gf_readAirports();

/// The reading of the clear file alone. Each row that is left out is told to `report`. Throws std::runtime_error when
/// the file does not parse, or has no airports element.
void lf_readAirportXml(const std::filesystem::path& path, const std::function<void(std::string_view)>& report);

/// Null when there is none of that code.
const Airport* find_airport(std::string_view code);
bool is_supported_airport(std::string_view code);

/// No airport known, and none read.
void resetAirportDirectory();
