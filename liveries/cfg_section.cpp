// liveries/cfg_section.cpp
#include "liveries/cfg_section.h"

#include <algorithm>
#include <array>
#include <utility>

#include <fmt/format.h>

#include "core/log.h"
#include "core/text_parts.h"
#include "liveries/ascii_text.h"
#include "liveries/cfg_line.h"
#include "liveries/reference_tables.h"
#include "platform/text_encoding.h"

namespace {

constexpr std::string_view genericAirline = "ZZZ";
constexpr std::string_view privateAirline = "PVT";
constexpr std::string_view unwantedAirline = "RFO";
constexpr std::size_t longestRegistration = 12; // characters of an atc_id

/// The values of a section, as views of its lines; the first of a key, as no second one of the four above is let pass.
struct SectionValues {
    std::optional<std::string_view> title;
    std::optional<std::string_view> parkingCodes;
    std::optional<std::string_view> parkingTypes;
    std::optional<std::string_view> atcId;
    std::optional<std::string_view> model;
    std::optional<std::string_view> sim;
    std::optional<std::string_view> texture;
};

/// A section on its way to a livery.
struct Section {
    SectionForm form;
    CfgLines lines;
    const SectionFile& in;
    ScanState& scan;
    SectionValues values{};
    std::string airline{};
    std::string registration{};

    const std::string& path() const { return in.file.text; }
    std::string_view header() const { return lines.front(); }
    void incomplete(std::string line) const { scan.reports.add(ScanReport::incompleteSections, std::move(line)); }
    void invalidAirline(std::string_view code) const {
        scan.reports.add(ScanReport::invalidAirlineCodes, fmt::format("{:12} in {} {}", code, path(), header()));
    }
};

// --- The lines ---

/// False, with the report, when the key was there already.
bool takeOnce(const Section& section, std::optional<std::string_view>& place, const CfgEntry& entry,
              const char* fault) {
    if (place) {
        section.incomplete(fmt::format(fmt::runtime(fault), section.path(), section.header()));
        return false;
    }
    place = entry.value;
    return true;
}

bool takeFirst(std::optional<std::string_view>& place, const CfgEntry& entry) {
    if (!place) {
        place = entry.value;
    }
    return true;
}

// --- Airline and registration ---

std::string airlineCode(std::string_view parkingCodes) {
    constexpr std::size_t codeLength = 3;
    std::string code = asciiUpper(trimmed(parkingCodes.substr(0, parkingCodes.find(','))));
    const bool hasSuffix = code.size() == codeLength + 1 && (code.back() == 'X' || code.back() == 'C');
    if (hasSuffix) {
        code.pop_back();
    }
    return code;
}

/// False when the section is to be dropped.
bool takeAirline(Section& section, std::string_view parkingCodes) {
    std::string code = airlineCode(parkingCodes);
    if (gf_isIcaoAirline(code)) {
        section.airline = std::move(code);
        return true;
    }
    if (code == unwantedAirline) {
        return false;
    }
    section.invalidAirline(code);
    return true;
}

bool isValidRegistration(std::string_view token) {
    return !token.empty() && token != " " && utf8Length(token) <= longestRegistration &&
           token.find('*') == std::string_view::npos;
}

/// What a valid value holds more than one registration of is no fault, but tells none either.
bool takeRegistration(Section& section, std::string_view atcId) {
    atcId = trimmed(atcId.substr(0, atcId.find(';')));
    const std::vector<std::string_view> tokens = partsOf(atcId, ',');
    if (!std::all_of(tokens.begin(), tokens.end(), isValidRegistration)) {
        const char* const fault =
            section.form == SectionForm::ordinary ? "invalid atc_id={} in: {}" : "invalid atc_id={} in {}";
        log(fmt::format(fmt::runtime(fault), atcId, section.path()));
    } else if (tokens.size() == 1) {
        section.registration = tokens.front();
    }
    return true;
}

/// False when the section is to be dropped.
bool takeEntry(Section& section, const CfgEntry& entry) {
    SectionValues& values = section.values;
    switch (entry.key) {
    case CfgKey::title: return takeOnce(section, values.title, entry, "{} {} has more than one title key");
    case CfgKey::atc_parking_codes:
        return section.form == SectionForm::ivao ||
               (takeOnce(section, values.parkingCodes, entry, "{} {} has more than one atc_parking_codes key") &&
                takeAirline(section, entry.value));
    case CfgKey::atc_parking_types:
        return takeOnce(section, values.parkingTypes, entry, "{} {} has more than one atc_parking_types key");
    case CfgKey::atc_id:
        return takeOnce(section, values.atcId, entry, "{}, {}, has more than one atc_id key") &&
               takeRegistration(section, entry.value);
    case CfgKey::model: return takeFirst(values.model, entry);
    case CfgKey::sim: return takeFirst(values.sim, entry);
    case CfgKey::texture: return takeFirst(values.texture, entry);
    case CfgKey::atc_model: return true;
    }
    return true;
}

/// False when the section is to be dropped.
bool takeLines(Section& section) {
    return std::all_of(section.lines.begin(), section.lines.end(), [&section](std::string_view line) {
        const std::optional<CfgEntry> entry = cfgEntry(untilZero(line));
        return !entry || takeEntry(section, *entry);
    });
}

// --- What lies beside the file ---

/// False, with the report, when one of the three is missing.
bool hasItsFiles(const Section& section) {
    const SectionValues& values = section.values;
    const std::string model = std::string("model.").append(values.model.value_or(""));
    const std::string air = std::string(values.sim.value_or("")).append(".air");
    const std::string texture = std::string("texture.").append(values.texture.value_or(""));
    const std::string* missing = nullptr;
    if (!hasFolderBeside(section.in.file, model)) {
        missing = &model;
    } else if (!hasFileBeside(section.in.file, air)) {
        missing = &air;
    } else if (!hasFolderBeside(section.in.file, texture)) {
        missing = &texture;
    }
    if (missing == nullptr) {
        return true;
    }
    const std::string_view path = section.path();
    const std::string_view folder = path.substr(0, path.rfind('\\') + 1);
    section.incomplete(section.form == SectionForm::ordinary
                           ? fmt::format("{} {} or related path does not exist: {}{}", section.path(), section.header(),
                                         folder, *missing)
                           : fmt::format("{}{} {} does not exist", folder, *missing, section.header()));
    return false;
}

// --- The two forms from the title on ---

bool isHeavy(std::string_view type) {
    return gf_categoryOfType(type) == AircraftCategory::Heavy;
}

/// The airline of a section whose parking codes tell none.
void findOrdinaryAirline(Section& section) {
    const std::string_view title = *section.values.title;
    const auto record = gf_findRegcodeRecord(section.registration);
    if (record && !record->airl.empty()) {
        section.airline = record->airl;
        return;
    }
    section.airline = privateAirline;
    if (section.registration.empty()) {
        if (isHeavy(section.in.type)) {
            section.incomplete(fmt::format("'{}' '{}' has no airline and no regcode info", section.path(), title));
        }
        section.registration = gf_findRegcodeInText(title).value_or("");
    } else if (!record && isHeavy(section.in.type)) {
        section.incomplete(fmt::format("'{}' '{}' has no airline and regcode not in dbase", section.path(), title));
    }
}

void settleOrdinaryAirline(Section& section) {
    if (section.airline == genericAirline) {
        section.registration.clear();
    } else if (section.airline.empty()) {
        findOrdinaryAirline(section);
    }
}

bool takeAirlineOfRegistration(Section& section) {
    const auto record = gf_findRegcodeRecord(section.registration);
    if (record) {
        section.airline = record->airl.empty() ? privateAirline : record->airl;
    }
    return record.has_value();
}

/// False, with the report, when neither title nor registration tells a known airline.
bool settleIvaoAirline(Section& section) {
    const std::string_view title = *section.values.title;
    if (const auto code = airlineBehindType(title, section.in.type)) {
        if (*code == genericAirline) {
            section.registration.clear();
        }
        if (gf_isIcaoAirline(*code)) {
            section.airline = *code;
            return true;
        }
        section.invalidAirline(*code);
        return takeAirlineOfRegistration(section);
    }
    if (takeAirlineOfRegistration(section)) {
        return true;
    }
    const std::string regcode =
        section.registration.empty() ? ", and no regcode" : ", and regcode unknown " + section.registration;
    section.incomplete(fmt::format("{} misses airlinecode in title: {}{}", section.path(), title, regcode));
    return false;
}

std::optional<Livery> liveryOf(const Section& section, bool cargo) {
    const std::string_view title = *section.values.title;
    if (!section.scan.titles.insert(title)) {
        section.incomplete(section.form == SectionForm::ordinary
                               ? fmt::format("{} {} title '{}' already exists", section.path(), section.header(), title)
                               : fmt::format("{} title already exists: {}", section.path(), title));
        return std::nullopt;
    }
    return Livery{section.airline,    std::string(section.in.type),
                  std::string(title), section.registration,
                  section.in.scan,    cargo};
}

bool hasUsableTitle(const Section& section) {
    if (!section.values.title) {
        section.incomplete(fmt::format("{} {} misses title", section.path(), section.header()));
        return false;
    }
    return !section.scan.dontUseTitles.contains(*section.values.title);
}

std::optional<Livery> processSection(Section& section) {
    if (!takeLines(section)) {
        return std::nullopt;
    }
    const bool isOrdinary = section.form == SectionForm::ordinary;
    if (isOrdinary && section.airline.empty()) {
        section.incomplete(
            fmt::format("{} {} icao_airline is missing, or it has invalid info ", section.path(), section.header()));
    }
    if (!hasItsFiles(section) || !hasUsableTitle(section)) {
        return std::nullopt;
    }
    if (!isOrdinary) {
        return settleIvaoAirline(section) ? liveryOf(section, false) : std::nullopt;
    }
    settleOrdinaryAirline(section);
    const bool cargo = asciiUpper(section.values.parkingTypes.value_or("")).find("CARGO") != std::string::npos;
    return liveryOf(section, cargo);
}

} // namespace

std::optional<Livery> lf_procesFltSimSection(SectionForm form, CfgLines lines, const SectionFile& file,
                                             ScanState& scan) {
    try {
        Section section{form, lines, file, scan};
        return processSection(section);
    } catch (const std::exception& error) {
        log(fmt::format("Exception in lf_procesFltSimSection: {}, file: {}", platform::readableText(error.what()),
                        file.file.text));
        return std::nullopt;
    }
}
