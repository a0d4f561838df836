// fuzz/fuzz_liveries_scanned.cpp
// LiveriesScanned.xml: it is refused with one of its errors and leaves nothing, or it is read, as the library reads it,
// and reads the same again when written anew; and whatever order its liveries are in, the tables built of it give its
// titles alone.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <pugixml.hpp>

#include "core/user_error.h"
#include "engine/aircraft_record.h"
#include "fuzz/memory_folder.h"
#include "liveries/livery.h"
#include "liveries/livery_driver.h"
#include "liveries/livery_file.h"
#include "liveries/livery_matching.h"
#include "liveries/livery_tables.h"
#include "liveries/reference_tables.h"

namespace {

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

bool holds(pugi::xml_node element, const LiveryView& livery) {
    const auto has = [element](const char* name, std::string_view value) {
        return element.attribute(name).value() == value;
    };
    return has("airl", livery.airl) && has("type", livery.type) && has("title", livery.title) &&
           has("atcid", livery.atcid) && element.attribute("cargo").as_bool() == livery.cargo;
}

/// Whether they are those that the library finds in the whole file.
bool areOfFile(const std::vector<LiveryView>& liveries) {
    pugi::xml_document document;
    document.load_file(scannedLiveriesFile);
    const auto elements = document.child("root").child("liveries").children("liv");
    return std::equal(elements.begin(), elements.end(), liveries.begin(), liveries.end(),
                      [](pugi::xml_node element, const LiveryView& livery) { return holds(element, livery); });
}

std::optional<ScannedLiveries> read() {
    try {
        return lf_readLiveries();
    } catch (const kvd::UserErrorException& error) {
        require(error.code() == 51 || error.code() == 52 || error.code() == 999);
        return std::nullopt;
    }
}

Livery liveryOf(const LiveryView& view) {
    return {std::string(view.airl),
            std::string(view.type),
            std::string(view.title),
            std::string(view.atcid),
            0,
            view.cargo};
}

/// What an aircraft of the livery's airline, type and registration would get.
std::string_view titleFor(const LiveryView& livery, AircraftCategory category) {
    AircraftRecord aircraft;
    aircraft.airline = livery.airl;
    aircraft.model = livery.type;
    aircraft.registration = livery.atcid;
    aircraft.isCargo = livery.cargo ? 1 : 0;
    aircraft.category = category;
    gf_rematchLivery(aircraft);
    return aircraft.liveryTitle;
}

bool isEmptyOrKnown(std::string_view title) {
    return lf_findTitle(title) == title;
}

/// As at a start of the program.
void requireTablesOf(const std::vector<LiveryView>& liveries) {
    resetLiveryDriver();
    gf_processScannedLiveries();
    for (const LiveryView& livery : liveries) {
        require(isEmptyOrKnown(lf_findTitle(livery.title)));
        require(isEmptyOrKnown(titleFor(livery, AircraftCategory::Large)));
        require(isEmptyOrKnown(titleFor(livery, AircraftCategory::Light)));
    }
    clearLiveryTables();
}

/// So that types are similar to each other.
void makeWorld() {
    gAllTypes = {"A320", "A321", "C172"};
    gCategoryTypes.large = {"A320", "A321"};
    gSimilarGroups = {{"A320", "A321"}};
}

bool isSame(const LiveryView& a, const LiveryView& b) {
    return a.airl == b.airl && a.type == b.type && a.title == b.title && a.atcid == b.atcid && a.cargo == b.cargo;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const MemoryFolder folder("fuzz_liveries_scanned");
    makeWorld();
    const WorkingDirectory here(folder.file("."));
    std::filesystem::create_directories("output");
    writeInput(scannedLiveriesFile, data, size);
    const std::optional<ScannedLiveries> first = read();
    if (!first) {
        return 0;
    }
    require(areOfFile(first->liveries));
    Liveries.clear();
    std::transform(first->liveries.begin(), first->liveries.end(), std::back_inserter(Liveries), liveryOf);
    lf_writeLiveries();
    const std::optional<ScannedLiveries> again = read();
    require(again.has_value());
    require(std::equal(first->liveries.begin(), first->liveries.end(), again->liveries.begin(), again->liveries.end(),
                       isSame));
    requireTablesOf(first->liveries);
    return 0;
}
