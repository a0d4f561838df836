// sim/check_simulator.cpp
#include "sim/check_simulator.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "core/log.h"
#include "core/parameters.h"
#include "core/user_error.h"
#include "sim/record_reader.h"
#include "window/window_state.h"

namespace {

constexpr int wrongSimulator = 78;

struct SupportedVersion {
    int number;
    std::string_view mark; ///< in the simulator's name
    std::array<std::string_view, 2> pathMarks;
};

constexpr std::array<SupportedVersion, 2> supportedVersions{{
    {5, "v5", {"v5", "V5"}},
    {6, "v6", {"v6", "V6"}},
}};

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

bool isPlain(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == ' ';
}

std::string plainText(std::string_view text) {
    std::string plain;
    std::copy_if(text.begin(), text.end(), std::back_inserter(plain), isPlain);
    return plain;
}

std::string applicationName(const SIMCONNECT_RECV_OPEN& open) {
    return textOfField(std::as_bytes(std::span(open.szApplicationName)));
}

std::string nameAndVersion(const std::string& name, const SIMCONNECT_RECV_OPEN& open) {
    // Copied out: the record is packed, and the formatter takes references.
    return fmt::format("{} ({}.{}.{}.{})", name, +open.dwApplicationVersionMajor, +open.dwApplicationVersionMinor,
                       +open.dwApplicationBuildMajor, +open.dwApplicationBuildMinor);
}

bool isWanted(const SupportedVersion& version) {
    const std::string path = SIM_INSTALL_PATH.value();
    return P3D_VERSION.value == version.number ||
           std::any_of(version.pathMarks.begin(), version.pathMarks.end(),
                       [&](std::string_view mark) { return contains(path, mark); });
}

bool isAccepted(std::string_view name) {
    return std::any_of(supportedVersions.begin(), supportedVersions.end(), [name](const SupportedVersion& version) {
        return contains(name, version.mark) && isWanted(version);
    });
}

} // namespace

void checkSimulator(const SIMCONNECT_RECV_OPEN& open) {
    const std::string given = applicationName(open);
    if (given.empty()) {
        log("! Simulator name empty?");
        return;
    }
    const std::string name = plainText(given);
    if (name == "KittyHawk" || name == "SunRise") {
        throw kvd::UserErrorException(wrongSimulator, name + ", (MSFS) not being P3D connects ... ?");
    }
    const std::string shown = nameAndVersion(name, open);
    showSimulatorName(shown);
    showMessage(fmt::format("{} connected", shown), LogCopy::yes);
    if (!isAccepted(name)) {
        askForInstallPath();
        throw kvd::UserErrorException(wrongSimulator, fmt::format("wrong P3D version '{}' connects ... ?)", name));
    }
}
