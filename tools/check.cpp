// tools/check.cpp
#include "tools/check.h"

#include <stdexcept>
#include <string_view>

#include <fmt/ostream.h>
#include <pugixml.hpp>

#include "liveries/reference_data.h"
#include "liveries/reference_tables.h"
#include "parking/airport_directory.h"

namespace fs = std::filesystem;

namespace {

bool holdsAirports(const fs::path& path) {
    pugi::xml_document document;
    document.load_file(path.c_str());
    return document.child("airports") || document.child("root").child("airports");
}

void checkAirports(const fs::path& path, const RowReport& report, std::ostream& out) {
    resetAirportDirectory();
    lf_readAirportXml(path, report);
    fmt::print(out, "{} airports\n", gAirports.size());
}

void checkReferenceData(const fs::path& path, const RowReport& report, std::ostream& out) {
    if (!lf_readReferenceXml(path, report)) {
        return;
    }
    fmt::print(out,
               "{} types, {} wing spans, {} airlines, {} publishers, {} fixes, {} similar groups, {} registrations\n",
               gAllTypes.size(), gHalfWingspans.size(), gIcaoAirlines.size(), gPublishers.size(), gFixes.size(),
               gSimilarGroups.size(), DbaseTable.size());
}

} // namespace

int checkDataFile(const fs::path& path, std::ostream& out) {
    int complaints = 0;
    const RowReport report = [&complaints, &out](std::string_view text) {
        fmt::print(out, "{}\n", text);
        ++complaints;
    };
    try {
        (holdsAirports(path) ? checkAirports : checkReferenceData)(path, report, out);
    } catch (const std::exception& exception) {
        report(exception.what());
    }
    return complaints;
}
