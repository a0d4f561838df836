// sim/flight_plan.h
// The small flight-plan files that AI objects get: flight rules, departure, destination. They live in a working folder
// that exists only while the program runs. Run thread only.
#pragma once

#include <cstdint>
#include <filesystem>

#include "engine/aircraft_record.h"

/// Makes the folder; whether it exists afterwards. Throws std::runtime_error "Could not find the AppData path" when the
/// system cannot tell where, and std::filesystem::filesystem_error "exists" when it cannot tell whether.
bool gf_createFlightPlanFolder();

/// The path of an aircraft's file.
std::filesystem::path lf_flightPlanPath(std::uint32_t hexid);

/// Whether the file could be opened.
bool lf_writeFlightPlan(const std::filesystem::path& path, const AircraftRecord& aircraft);

/// Writes the file of an aircraft that has both airports, and answers its path; empty when it has not, or the file
/// cannot be written.
std::filesystem::path gf_flightPlanFor(const AircraftRecord& aircraft);

/// Deletes an aircraft's file. A failure is a log line.
void gf_removeFlightPlan(std::uint32_t hexid);

/// Deletes the folder with what is in it, if it was made. A failure is a log line.
void gf_removeFlightPlanFolder();
