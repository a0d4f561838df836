// parking/closest_stand.h
// How far it is to the nearest stand of an airport, by its file. Run thread.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "core/geography.h"

/// The way to the airport files, which have a unit of their own. Without it no file is found.
struct AirportFileAccess {
    /// The path of an airport's file by its ICAO code; empty when there is none. One that does not begin with
    /// "airports" is relative to the download server's root.
    std::function<std::string(std::string_view icao)> find;
    /// Fetches such a path into a local file. What failed, empty on success.
    std::function<std::string(const std::string& path, const std::filesystem::path& localPath)> download;
};

/// An empty one takes it away.
void setAirportFileAccess(AirportFileAccess access);

/// So far is the nearest stand of an airport whose file cannot be found or read.
inline constexpr double noStandNm = 100.0;

struct ClosestStand {
    double distanceNm = noStandNm;
    std::string id;
};

/// The nearest stand of an airport file of the older layout, which has its stands directly at document level; of a tie
/// the earlier one. A file that cannot be read, or has no stands there, is one without stands. Throws what reading
/// throws.
ClosestStand lf_closestStandInFile(const std::filesystem::path& path, const LatLon& position);

/// How far it is to the nearest stand of an airport's file, in nautical miles; `standId` names the stand. noStandNm
/// when the file cannot be found, fetched or read, or names no stand; never throws. Blocks for the length of a
/// download; what was downloaded is removed again, another file never.
double gf_readDestApfForClosestStand(std::string_view code, const LatLon& position, std::string& standId);
