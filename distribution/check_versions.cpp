// distribution/check_versions.cpp
#include "distribution/check_versions.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "core/folders.h"
#include "core/log.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "distribution/clear_file.h"
#include "distribution/download.h"
#include "platform/files.h"
#include "window/window_state.h"

namespace fs = std::filesystem;

namespace {

using WebVersions = std::map<std::string, ProgramVersion>;

constexpr const char* versionFile = "versions.json";

/// What is done when the server's version is newer, or the file is missing.
enum class Effect { download, scanLiveries, scanAirports };

struct VersionRule {
    const char* key;
    StringParameter& installed;
    const char* file; ///< empty: the version alone counts
    Effect effect;
};

const std::array<VersionRule, 5> versionRules{{
    {"airports", AIRPORTS_VERSION, "input/airports.enc", Effect::download},
    {"aig", AIG_VERSION, "input/AIG-regcodes.enc", Effect::download},
    {"liveries", LIV_SCAN_VERSION, "output/LiveriesScanned.xml", Effect::scanLiveries},
    {"addons", ADDONS_SCAN_VERSION, "", Effect::scanAirports},
    {"dbase", DBASE_VERSION, "input/dbase.enc", Effect::download},
}};

std::optional<int> part(const nlohmann::json& version, const char* name) {
    const auto found = version.find(name);
    if (found == version.end() || !found->is_number_integer()) {
        return std::nullopt;
    }
    const auto number = found->get<std::int64_t>();
    if (number < 0 || number > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    return static_cast<int>(number);
}

std::optional<ProgramVersion> versionOf(const nlohmann::json& value) {
    if (!value.is_object()) {
        return std::nullopt;
    }
    const auto major = part(value, "major");
    const auto minor = part(value, "minor");
    const auto patch = part(value, "patch");
    if (!major || !minor || !patch) {
        return std::nullopt;
    }
    return ProgramVersion{*major, *minor, *patch};
}

void logNoVersionInfo() {
    logError("Downloading version info from my web site failed!");
}

bool downloadVersionFile() {
    const DownloadHandle handle = gf_newDownloadHandle();
    return lf_downloadTo(handle.get(), gf_downloadUrl(fmt::format("downloads/{}", versionFile)), versionFile,
                         DownloadMode::text);
}

/// Nothing, with the reason in the log, when there is no such file or it holds something else: a portal's page, say.
std::optional<WebVersions> readVersionFile() {
    std::ifstream file{fs::path(versionFile)};
    if (!file) {
        log("Cannot open versions.json");
        return std::nullopt;
    }
    const std::string text(std::istreambuf_iterator<char>(file), {});
    file.close();
    lf_removeClearFile(versionFile);
    std::optional<WebVersions> versions = parseWebVersions(text);
    if (!versions) {
        logNoVersionInfo();
    }
    return versions;
}

/// A fresh install has no version yet.
ProgramVersion installedVersion(const VersionRule& rule) {
    const std::string text = rule.installed.value();
    return text.empty() ? ProgramVersion{} : parseVersion(text);
}

bool isMissing(const VersionRule& rule) {
    return *rule.file != '\0' && !fileExists(rule.file);
}

bool askForScan(CheckBoxParameter& scan) {
    scan.value = true;
    saveParameter(scan);
    showParameter(scan);
    return true;
}

bool downloadFile(const fs::path& path) {
    const std::string fileName = platform::utf8FromPath(path.filename());
    const StepMessage step(fmt::format("Downloading {} ...", fileName));
    return lf_downloadDataFile(fileName, path);
}

/// Whether it succeeded.
bool carryOut(const VersionRule& rule) {
    switch (rule.effect) {
    case Effect::scanLiveries: return askForScan(SCAN_LIVERIES);
    case Effect::scanAirports: return askForScan(SCAN_AIRPORTS);
    default: return downloadFile(rule.file);
    }
}

/// Nothing, with a log line, when the server tells no such version.
std::optional<ProgramVersion> webVersion(const WebVersions& web, const char* key) {
    const auto found = web.find(key);
    if (found == web.end()) {
        log(fmt::format("{} version not found", key));
        return std::nullopt;
    }
    return found->second;
}

void bringUpToDate(const VersionRule& rule, const ProgramVersion& web) {
    if (web <= installedVersion(rule) && !isMissing(rule)) {
        log(fmt::format("{} version up-to-date", rule.key));
        return;
    }
    if (carryOut(rule)) {
        const std::string version = versionText(web);
        rule.installed.setValue(version);
        saveParameter(rule.installed);
        log(fmt::format("{} updated to {}", rule.key, version));
    }
}

void bringAllUpToDate() {
    if (!downloadVersionFile()) {
        logNoVersionInfo();
        return;
    }
    const auto web = readVersionFile();
    if (!web) {
        return;
    }
    webVersion(*web, "p3d"); // the program itself stands first; missing, it is named like the others
    for (const VersionRule& rule : versionRules) {
        if (const auto version = webVersion(*web, rule.key)) {
            bringUpToDate(rule, *version);
        }
    }
}

} // namespace

std::optional<WebVersions> parseWebVersions(std::string_view text) {
    const nlohmann::json document = nlohmann::json::parse(text, nullptr, false);
    if (!document.is_object()) {
        return std::nullopt;
    }
    WebVersions versions;
    for (const auto& [key, value] : document.items()) {
        if (const auto version = versionOf(value)) {
            versions.emplace(key, *version);
        }
    }
    return versions;
}

bool gf_checkVersions() {
    const StepMessage step("Looking for new data ...");
    bringAllUpToDate();
    return true;
}
