// tools/check.cpp
#include "tools/check.h"

#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include <fmt/ostream.h>
#include <pugixml.hpp>

#include "liveries/reference_data.h"
#include "liveries/reference_tables.h"
#include "parking/airport_directory.h"

namespace fs = std::filesystem;

namespace {

bool holdsAirports(const pugi::xml_document& document) {
    return document.child("airports") || document.child("root").child("airports");
}

/// What the program passes over without a word: it takes the first span of a type, and a publisher once.
void reportSilentSkips(const pugi::xml_node& root, const RowReport& report) {
    std::set<std::string> types;
    for (const pugi::xml_node& span : root.child("wingspans").children("wingspan")) {
        const std::string type = span.attribute("type").as_string();
        if (gAllTypes.contains(type) && !types.insert(type).second) {
            report(fmt::format("wingspan of {} already exists, skipped", type));
        }
    }
    std::set<std::string> publishers;
    for (const pugi::xml_node& publisher : root.child("publishers").children("pub")) {
        if (const std::string names = publisher.attribute("names").as_string(); !publishers.insert(names).second) {
            report(fmt::format("publisher {} already exists, skipped", names));
        }
    }
}

void checkAirports(const fs::path& path, const RowReport& report, std::ostream& out) {
    resetAirportDirectory();
    lf_readAirportXml(path, report);
    fmt::print(out, "{} airports\n", gAirports.size());
}

void checkReferenceData(const fs::path& path, const pugi::xml_node& root, const RowReport& report, std::ostream& out) {
    if (!lf_readReferenceXml(path, report)) {
        return;
    }
    reportSilentSkips(root, report);
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
        pugi::xml_document document;
        document.load_file(path.c_str());
        if (holdsAirports(document)) {
            checkAirports(path, report, out);
        } else {
            checkReferenceData(path, document.child("root"), report, out);
        }
    } catch (const std::exception& exception) {
        report(exception.what());
    }
    return complaints;
}
