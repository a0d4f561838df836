// parking/airport_directory.cpp
#include "parking/airport_directory.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <stdexcept>
#include <unordered_set>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "core/log.h"
#include "core/number_text.h"
#include "core/text_hash.h"
#include "core/text_parts.h"
#include "distribution/clear_file.h"
#include "distribution/sealed_file.h"
#include "platform/files.h"
#include "window/window_state.h"

namespace fs = std::filesystem;

std::vector<Airport> gAirports;

namespace {

using Report = std::function<void(std::string_view)>;

std::unordered_set<std::string, TextHash, std::equal_to<>> codes;
bool isRead = false;

constexpr std::size_t airportRoom = 15000;

// --- Reading ---

/// What the row lacks, as the log tells it; empty when it can be used. The row without stands is told and used.
std::string faultOf(const pugi::xml_node& row, std::string_view code, const Report& report) {
    if (!row.attribute("lat") || !row.attribute("lon")) {
        return fmt::format("Missing latLons for airport '{}'", code);
    }
    if (!row.attribute("alt")) {
        return fmt::format("Missing alt for airport '{}'", code);
    }
    if (!row.attribute("stands")) {
        report(fmt::format("Missing stands for airport '{}'", code));
    }
    if (!row.attribute("iata")) {
        return fmt::format("Missing IATA for airport '{}'", code);
    }
    return {};
}

/// The text of an attribute without the blanks around it.
std::string_view numberText(const pugi::xml_node& row, const char* name) {
    return trimmed(row.attribute(name).as_string());
}

/// An empty text counts as 0.
double numberOf(const pugi::xml_node& row, const char* name) {
    const std::string_view text = numberText(row, name);
    if (text.empty()) {
        return 0.0;
    }
    if (const std::optional<double> number = parseDouble(text)) {
        return *number;
    }
    throw std::runtime_error(fmt::format("{} '{}' is no number", name, text));
}

void addAirport(const pugi::xml_node& row, std::string_view code) {
    gAirports.push_back({std::string(code), row.attribute("iata").as_string(), numberOf(row, "lat"),
                         numberOf(row, "lon"), numberOf(row, "alt"), parseInt(numberText(row, "stands")).value_or(0)});
    codes.emplace(code);
}

void readRow(const pugi::xml_node& row, const Report& report) {
    const std::string_view code = row.attribute("code").as_string();
    if (const std::string fault = faultOf(row, code, report); !fault.empty()) {
        report(fault);
        return;
    }
    try {
        addAirport(row, code);
    } catch (const std::exception& exception) {
        report(fmt::format("Error parsing coordinates for airport '{}': {}", code, exception.what()));
    }
}

pugi::xml_node airportsOf(const pugi::xml_document& document, const fs::path& path) {
    const pugi::xml_node root = document.child("root");
    const pugi::xml_node airports = root ? root.child("airports") : document.child("airports");
    if (!airports) {
        throw std::runtime_error("Missing <airports> root in: " + platform::utf8FromPath(path));
    }
    return airports;
}

void openAndRead() {
    const ClearFile clear("input/airports.xml");
    if (!gf_streamDecrypt("input/airports.enc", clear.path())) {
        throw std::runtime_error("airports.enc stream decrypt failed");
    }
    lf_readAirportXml(clear.path(), logError);
}

} // namespace

bool gf_readAirports() {
    if (isRead) {
        return !gAirports.empty();
    }
    const StepMessage step("Reading the airports ...");
    try {
        openAndRead();
        isRead = true;
    } catch (const std::exception& exception) {
        resetAirportDirectory();
        logError(fmt::format("{} exception : {}", "gf_readAirports", exception.what()));
    }
    return !gAirports.empty();
}

void lf_readAirportXml(const fs::path& path, const Report& report) {
    pugi::xml_document document;
    const pugi::xml_parse_result loaded = document.load_file(path.c_str(), pugi::parse_default, pugi::encoding_auto);
    if (!loaded) {
        throw std::runtime_error(platform::utf8FromPath(path) + " not loaded: " + loaded.description());
    }
    gAirports.reserve(airportRoom);
    for (const pugi::xml_node& row : airportsOf(document, path).children("airport")) {
        readRow(row, report);
    }
    std::sort(gAirports.begin(), gAirports.end(), [](const Airport& a, const Airport& b) { return a.code < b.code; });
    log(fmt::format("{} airports read", gAirports.size()));
    gAirports.shrink_to_fit();
}

const Airport* find_airport(std::string_view code) {
    const auto found = std::find_if(gAirports.begin(), gAirports.end(),
                                    [code](const Airport& airport) { return airport.code == code; });
    return found == gAirports.end() ? nullptr : &*found;
}

bool is_supported_airport(std::string_view code) {
    return codes.contains(code);
}

void resetAirportDirectory() {
    gAirports.clear();
    codes.clear();
    isRead = false;
}
