// core/run/simulator_detection.cpp
#include "core/run/simulator_detection.h"

#include <algorithm>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "core/log.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "core/run_flags.h"
#include "core/user_error.h"
#include "platform/registry.h"
#include "platform/text_encoding.h"
#include "platform/window_system.h"
#include "window/window_state.h"

namespace {

constexpr const char* keyOfVersion5 = "SOFTWARE\\Lockheed Martin\\Prepar3D v5";
constexpr const char* keyOfVersion6 = "SOFTWARE\\Lockheed Martin\\Prepar3D v6";
constexpr const char* pathValue = "SetupPath";

constexpr int twoSimulatorsError = 2;
constexpr int noSimulatorError = 3;
constexpr int versionUnknownError = 4;
constexpr int oldestSimulator = 5;

/// Whether the user has given folders of his own to scan, so that the program is of use without a simulator's path.
bool hasScanFolders() {
    const auto holdsText = [](const StringParameter& folder) { return !folder.value().empty(); };
    return std::any_of(lfolder.begin(), lfolder.end(), holdsText) ||
           std::any_of(afolder.begin(), afolder.end(), holdsText);
}

void simulatorNotDetected() {
    showMessage("P3D not detected?", LogCopy::no);
    if (hasScanFolders()) {
        return;
    }
    ALL_INSTALL_PATH.setValue({});
    showParameter(ALL_INSTALL_PATH);
    throw kvd::UserErrorException(noSimulatorError,
                                  "No P3D install path detected. Type the full Install Path above, then press Enter");
}

/// Empty when the registry does not tell: an installation that was taken away leaves its key behind.
std::string installedPath(const char* key) {
    try {
        return platform::readRegistryString(platform::RegistryHive::machine, key, pathValue);
    } catch (const winreg::RegException& exception) {
        logError(platform::readableText(exception.what()));
        return {};
    }
}

void detectSimulator() {
    using platform::RegistryHive;
    const bool has5 = platform::registryKeyExists(RegistryHive::machine, keyOfVersion5);
    const bool has6 = platform::registryKeyExists(RegistryHive::machine, keyOfVersion6);
    if (has5 && has6) {
        throw kvd::UserErrorException(
            twoSimulatorsError, "More than one P3D version detected. Type the full Install Path to the wanted version "
                                "above, then press Enter");
    }
    if (!has5 && !has6) {
        simulatorNotDetected();
        return;
    }
    log(fmt::format("{} detected", has5 ? "P3Dv5" : "P3Dv6"));
    const std::string path = installedPath(has5 ? keyOfVersion5 : keyOfVersion6);
    if (path.empty()) {
        simulatorNotDetected();
        return;
    }
    ALL_INSTALL_PATH.setValue(path);
    SIM_INSTALL_PATH.setValue(path);
    saveParameter(SIM_INSTALL_PATH);
    showParameter(ALL_INSTALL_PATH);
}

int simulatorVersion(std::string_view path) {
    const auto holds = [path](std::string_view part) { return path.find(part) != std::string_view::npos; };
    if (holds("v5") || holds("V5")) {
        return 5;
    }
    if (holds("v6") || holds("V6")) {
        return 6;
    }
    if (P3D_VERSION.value < oldestSimulator) {
        throw kvd::UserErrorException(
            versionUnknownError,
            fmt::format("P3D install path does not contain v5 or v6. Use hidden parameter {}, set it to 5 or 6.",
                        P3D_VERSION.key));
    }
    return P3D_VERSION.value;
}

} // namespace

void gf_findSimulator() {
    ALL_INSTALL_PATH.setValue(SIM_INSTALL_PATH.value());
    window_system::enableControl(ALL_INSTALL_PATH.controlId, true);
    showParameter(ALL_INSTALL_PATH);
    if (ALL_INSTALL_PATH.value().empty()) {
        detectSimulator();
    }
    gSimulatorVersion = simulatorVersion(ALL_INSTALL_PATH.value());
}
