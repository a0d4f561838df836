// sim/flight_plan.cpp
#include "sim/flight_plan.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

#include <fmt/format.h>

#include "core/folders.h"
#include "core/log.h"
#include "core/program_info.h"
#include "platform/files.h"
#include "platform/text_encoding.h"

namespace fs = std::filesystem;

namespace {

fs::path folder; // empty until gf_createFlightPlanFolder has run

const char* rulesOf(AircraftCategory category) {
    switch (category) {
    case AircraftCategory::Buzjets:
    case AircraftCategory::Large:
    case AircraftCategory::Heavy: return "IFR";
    default: return "VFR";
    }
}

void logFailure(const char* routine, const std::error_code& error) {
    log(fmt::format("{}: {}", routine, platform::readableText(error.message())));
}

bool hasFiles() {
    std::error_code unreadable;
    const bool isEmpty = fs::is_empty(folder, unreadable);
    return !unreadable && !isEmpty;
}

/// What would make the file something else than the simulator reads is no airport.
bool isAirportCode(const std::string& code) {
    const auto isPlain = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
    };
    return !code.empty() && std::all_of(code.begin(), code.end(), isPlain);
}

std::error_code removeFolder() {
    std::error_code error;
    fs::remove(folder, error);
    return error;
}

} // namespace

bool gf_createFlightPlanFolder() {
    const fs::path roaming = platform::roamingAppDataFolder();
    if (roaming.empty()) {
        throw std::runtime_error("Could not find the AppData path");
    }
    folder = roaming / programName / "orig_dest";
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        logFailure("gf_createFlightPlanFolder", error);
    }
    return fileExists(folder);
}

fs::path lf_flightPlanPath(std::uint32_t hexid) {
    return folder / fmt::format("{}.pln", hexid);
}

bool lf_writeFlightPlan(const fs::path& path, const AircraftRecord& aircraft) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    if (!file) {
        return false;
    }
    file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         << "<SimBase.Document Type=\"AceXML\" version=\"4,3\">\n"
         << "<FlightPlan.FlightPlan>\n"
         << "<FPType>" << rulesOf(aircraft.category) << "</FPType>\n"
         << "<DepartureID>" << aircraft.origin << "</DepartureID>\n"
         << "<DestinationID>" << aircraft.destination << "</DestinationID>\n"
         << "</FlightPlan.FlightPlan>\n"
         << "</SimBase.Document>\n"
         << '\n';
    file.close();
    if (!file) {
        // The disk is full: half a plan is worse than none.
        std::error_code ignored;
        fs::remove(path, ignored);
        return false;
    }
    return true;
}

fs::path gf_flightPlanFor(const AircraftRecord& aircraft) {
    if (folder.empty() || !isAirportCode(aircraft.origin) || !isAirportCode(aircraft.destination)) {
        return {};
    }
    fs::path path = lf_flightPlanPath(aircraft.hexid);
    return lf_writeFlightPlan(path, aircraft) ? path : fs::path();
}

void gf_removeFlightPlan(std::uint32_t hexid) {
    if (folder.empty()) {
        return;
    }
    std::error_code error;
    fs::remove(lf_flightPlanPath(hexid), error);
    if (error) {
        logFailure("gf_removeFlightPlan", error);
    }
}

void gf_removeFlightPlanFolder() {
    if (folder.empty()) {
        return;
    }
    // Not every system's code for a folder with files in it compares equal to directory_not_empty: look into the
    // folder.
    std::error_code error = removeFolder();
    if (error && hasFiles()) {
        gf_removeFilesFromDirectory(folder);
        error = removeFolder();
    }
    if (error) {
        logFailure("gf_removeFlightPlanFolder", error);
    }
    folder.clear();
}
