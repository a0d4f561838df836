// core/parameter_migration.cpp
#include "core/parameter_migration.h"

#include <array>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>

#include "core/folders.h"
#include "core/log.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "core/program_info.h"
#include "core/program_version.h"
#include "platform/files.h"

namespace fs = std::filesystem;

namespace {

/// From this version on the settings of the old text boxes are kept.
constexpr ProgramVersion firstWithDropDowns{11, 0, 2};

constexpr std::array<const char*, 14> removedKeys{
    "CALLSIGN_OBJECTIDS",
    "PARK_FAKE",
    "SUPPRESS_STUB",
    "LOG",
    "LEARN_SOFT",
    "PROGRAM_INSTALL_PATH",
    "LATERAL_RANGE",
    "CUSTOM_MAX_PARK",
    "MAX_LIVE",
    "AIRPORT_RANGE",
    "AUTO_RANGE_ABOVE_HEIGHT",
    "AIRPORT_HEIGHT",
    "MSFS_2020",
    "AI_PACKAGE_ORDER",
};

void storeThisVersion() {
    PROGRAM_VERSION.setValue(versionText(thisVersion));
    saveParameter(PROGRAM_VERSION);
}

void restartWithDefaults() {
    log("\nYour previous version was too old to convert the old text box parameters to the newdropbox values.");
    log(fmt::format("{} re-starts with default parameter values ...\n", programName));
    gf_writeDefaultParameters();
}

void dropOldKeys() {
    for (const char* key : removedKeys) {
        if (removeParameter(key)) {
            log(fmt::format("Parameter '{}' removed", key));
        }
    }
}

bool isOldAirportFile(const fs::directory_entry& entry) {
    return entry.is_regular_file() && entry.path().extension() == ".xml" && entry.path().stem().native().size() == 4;
}

void deleteOldAirportFiles() {
    log(platform::utf8FromPath(fs::current_path()));
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::current_path())) {
        if (isOldAirportFile(entry)) {
            files.push_back(entry.path());
        }
    }
    for (const fs::path& file : files) {
        removeFile(file);
    }
}

void deleteLeftOvers() {
    fs::remove_all("TO_BE_LEARNED_OFFLINE");
    removeFile("versions.json");
    deleteOldAirportFiles();
    removeFile(fs::path("input") / "airports_p3d.xml");
    fs::remove_all("new_version");
}

} // namespace

void gf_migrateParameters() {
    const std::string stored = PROGRAM_VERSION.value();
    if (stored.empty()) {
        storeThisVersion();
        return;
    }
    ProgramVersion former;
    try {
        former = parseVersion(stored);
    } catch (const std::runtime_error& error) {
        // Thrown on, this would keep the user out at every start until the file is mended by hand.
        logError(fmt::format("{} '{}': {}", PROGRAM_VERSION.key, stored, error.what()));
        storeThisVersion();
        return;
    }
    if (former != thisVersion) {
        storeThisVersion();
    }
    if (thisVersion <= former) {
        return;
    }
    log(fmt::format("This is a version update from {} -> {}", versionText(thisVersion), versionText(former)));
    if (former < firstWithDropDowns) {
        restartWithDefaults();
        return;
    }
    dropOldKeys();
    deleteLeftOvers();
}
