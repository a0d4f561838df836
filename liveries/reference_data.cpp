// liveries/reference_data.cpp
#include "liveries/reference_data.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "core/folders.h"
#include "core/geography.h"
#include "core/log.h"
#include "core/number_text.h"
#include "core/text_parts.h"
#include "core/user_error.h"
#include "distribution/clear_file.h"
#include "distribution/sealed_file.h"
#include "liveries/aircraft_types.h"
#include "liveries/reference_tables.h"
#include "platform/files.h"
#include "window/window_state.h"

namespace fs = std::filesystem;

namespace {

constexpr int dataError = 61;
constexpr const char* rootName = "root";
constexpr const char* sealedName = "dbase.enc";
constexpr const char* clearName = "dbase.xml";

constexpr std::size_t similarGroupRoom = 64;
constexpr std::size_t publisherRoom = 640;
constexpr std::size_t thirdPartyRoom = 200;

std::string_view attribute(const pugi::xml_node& element, const char* name) {
    return element.attribute(name).as_string();
}

pugi::xml_node sectionOf(const pugi::xml_document& document, const char* section) {
    return document.child(rootName).child(section);
}

/// The trimmed tokens between the commas, empty ones too; none for an empty list.
std::vector<std::string> tokensOf(std::string_view list) {
    std::vector<std::string> tokens;
    if (!list.empty()) {
        const std::vector<std::string_view> parts = partsOf(list, ',');
        std::transform(parts.begin(), parts.end(), std::back_inserter(tokens),
                       [](std::string_view part) { return std::string(trimmed(part)); });
    }
    return tokens;
}

// --- The sections that must be there ---

struct CodeSection {
    const char* section;
    const char* element;
    const char* attribute;
    TypeSet& set;
};

void lf_readCodeSection(const pugi::xml_document& document, const CodeSection& rule) {
    if (!document.child(rootName)) {
        throw kvd::UserErrorException(dataError, fmt::format("XML root missing: {}", rootName));
    }
    const pugi::xml_node section = sectionOf(document, rule.section);
    if (!section) {
        throw kvd::UserErrorException(dataError, fmt::format("Missing section: {}", rule.section));
    }
    TypeSet codes;
    for (const pugi::xml_node& element : section.children(rule.element)) {
        for (std::string& token : tokensOf(attribute(element, rule.attribute))) {
            if (!token.empty()) {
                codes.insert(std::move(token));
            }
        }
    }
    if (codes.empty()) {
        throw kvd::UserErrorException(dataError,
                                      fmt::format("In XML file section [{}], element [{}], attribute [{}] is empty.",
                                                  rule.section, rule.element, rule.attribute));
    }
    rule.set = std::move(codes);
}

void readTypeSections(const pugi::xml_document& document) {
    const std::array<CodeSection, 7> sections{{
        {"aircrafts", "aircraft", "types", gAllTypes},
        {"high_performance", "hpf", "types", gCategoryTypes.highPerformance},
        {"heavy", "hvy", "types", gCategoryTypes.heavy},
        {"large", "lar", "types", gCategoryTypes.large},
        {"buzjet", "bzj", "types", gCategoryTypes.buzjet},
        {"rotorcraft", "rot", "types", gCategoryTypes.rotorcraft},
        {"cargo_types", "cargo_type", "types", gCargoTypes},
    }};
    for (const CodeSection& section : sections) {
        lf_readCodeSection(document, section);
    }
}

void readAirlineSections(const pugi::xml_document& document) {
    lf_readCodeSection(document, {"ICAO_airlines", "ICAO", "codes", gIcaoAirlines});
    lf_readCodeSection(document, {"cargo_operators", "ICAO", "codes", gCargoOperators});
}

// --- The sections that may be missing ---

void readSimilarGroups(const pugi::xml_document& document) {
    gSimilarGroups.clear();
    gSimilarGroups.reserve(similarGroupRoom);
    for (const pugi::xml_node& element : sectionOf(document, "similar_types").children("similar")) {
        SimilarGroup group = tokensOf(attribute(element, "types"));
        std::sort(group.begin(), group.end());
        gSimilarGroups.push_back(std::move(group));
    }
    gSimilarGroups.shrink_to_fit();
}

void readPublishers(const pugi::xml_document& document) {
    std::vector<std::string> lists;
    for (const pugi::xml_node& element : sectionOf(document, "publishers").children("pub")) {
        lists.emplace_back(attribute(element, "names"));
    }
    std::sort(lists.begin(), lists.end());
    lists.erase(std::unique(lists.begin(), lists.end()), lists.end());
    gPublishers.clear();
    gPublishers.reserve(publisherRoom);
    for (const std::string& list : lists) {
        gPublishers.push_back(tokensOf(list));
        gPublishers.back().shrink_to_fit();
    }
    log(fmt::format("{} publishers read", gPublishers.size()));
}

void readWingspan(const pugi::xml_node& element, const RowReport& report) {
    const std::string_view type = attribute(element, "type");
    if (!gAllTypes.contains(type)) {
        report(fmt::format("wingspan model {} is not valid, skipped", type));
        return;
    }
    const double meters = parseDouble(trimmed(attribute(element, "meters"))).value_or(0.0);
    const double halfSpanNm = meters * 0.5 * nmPerMeter;
    gHalfWingspans.emplace(type, halfSpanNm);
    MaxHalfWingspan = std::max(MaxHalfWingspan, halfSpanNm);
}

/// A category without spans gets not-a-number.
void averageWingspans() {
    std::array<double, aircraftCategoryCount> sums{};
    std::array<int, aircraftCategoryCount> counts{};
    for (const auto& [type, halfSpanNm] : gHalfWingspans) {
        const auto category = static_cast<std::size_t>(gf_categoryOfType(type));
        sums.at(category) += halfSpanNm;
        ++counts.at(category);
    }
    for (std::size_t i = 0; i < sums.size(); ++i) {
        gAverageHalfWingspans.at(i) = sums.at(i) / counts.at(i);
    }
}

void readWingspans(const pugi::xml_document& document, const RowReport& report) {
    for (const pugi::xml_node& element : sectionOf(document, "wingspans").children("wingspan")) {
        readWingspan(element, report);
    }
    if (!gHalfWingspans.empty()) {
        averageWingspans();
    }
}

void readFix(const pugi::xml_node& element, const RowReport& report) {
    const std::string_view wrong = attribute(element, "wro");
    const std::string_view correct = attribute(element, "cor");
    if (!gAllTypes.contains(correct)) {
        report(fmt::format("wrong fix {} -> {}, the latter is not valid", wrong, correct));
    } else if (!gFixes.emplace(wrong, correct).second) {
        report(fmt::format("wrong part of fix: '{}', already exists, skipped", wrong));
    }
}

void readFixes(const pugi::xml_document& document, const RowReport& report) {
    for (const pugi::xml_node& element : sectionOf(document, "fixes").children("fx")) {
        readFix(element, report);
    }
}

void lf_readThirdParties(const pugi::xml_document& document) {
    gThirdParties.clear();
    gThirdParties.reserve(thirdPartyRoom);
    for (const pugi::xml_node& element : sectionOf(document, "thirdpartiesP3D").children("thirdpartieP3D")) {
        gThirdParties.push_back({std::string(attribute(element, "pub")), tokensOf(attribute(element, "arpts"))});
    }
}

// --- The registrations ---

void readRegistration(const pugi::xml_node& element, const RowReport& report) {
    // The attributes come in this order in the files that we make; the hint spares the search for the next one.
    pugi::xml_attribute next = element.first_attribute();
    const char* const reg = element.attribute("reg", next).as_string();
    const char* const airl = element.attribute("airl", next).as_string();
    const char* const type = element.attribute("type", next).as_string();
    const char* const opr = element.attribute("opr", next).as_string();
    if (!DbaseTable.insert(reg, {airl, type, opr, element.attribute("cargo", next).as_bool()})) {
        report(fmt::format("regcode {} already exists", reg));
    }
}

/// Each element goes as soon as it is read: the document is many times the size of the table that grows out of it, and
/// both at once would be the program's peak.
void readRegistrations(pugi::xml_document& document, const RowReport& report) {
    DbaseTable.clear();
    pugi::xml_node section = sectionOf(document, "dbase");
    for (pugi::xml_node element = section.child("db"); element;) {
        readRegistration(element, report);
        const pugi::xml_node next = element.next_sibling("db");
        section.remove_child(element);
        element = next;
    }
    log(fmt::format("{} dbase records read", DbaseTable.size()));
}

// --- The whole ---

void readSections(pugi::xml_document& document, const RowReport& report) {
    readTypeSections(document);
    readSimilarGroups(document);
    readAirlineSections(document);
    readPublishers(document);
    readWingspans(document, report);
    readFixes(document, report);
    lf_readCodeSection(document, {"simaddonsP3D", "simaddonP3D", "arpts", gSimaddonAirports});
    lf_readThirdParties(document);
    readRegistrations(document, report);
}

bool openAndRead() {
    const fs::path input = "input";
    const ClearFile clear(input / clearName);
    if (!fs::exists(fileStatus(input / sealedName))) {
        throw std::runtime_error(fmt::format("{} not available", sealedName));
    }
    if (!gf_streamDecrypt(input / sealedName, clear.path())) {
        throw std::runtime_error(fmt::format("{} stream decrypt failed", sealedName));
    }
    return lf_readReferenceXml(clear.path(), logError);
}

} // namespace

bool gf_readDataFiles() {
    const StepMessage step("Reading the aircraft data ...");
    return openAndRead();
}

bool lf_readReferenceXml(const fs::path& path, const RowReport& report) {
    resetReferenceTables();
    pugi::xml_document document;
    const pugi::xml_parse_result loaded = document.load_file(path.c_str(), pugi::parse_default, pugi::encoding_auto);
    if (!loaded) {
        report(
            fmt::format("'{}' not read because of {}", platform::utf8FromPath(path.filename()), loaded.description()));
        return false;
    }
    readSections(document, report);
    return true;
}
