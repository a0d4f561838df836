// liveries/reference_tables.cpp
#include "liveries/reference_tables.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

TypeSet gAllTypes;
TypeSet gCargoTypes;
TypeSet gIcaoAirlines;
TypeSet gCargoOperators;
TypeSet gSimaddonAirports;
std::vector<SimilarGroup> gSimilarGroups;
std::vector<std::vector<std::string>> gPublishers;
TextTable<std::string> gFixes;
std::vector<ThirdParty> gThirdParties;
RegistrationTable DbaseTable;

namespace {

constexpr std::size_t shortestHyphenated = 5;
constexpr std::size_t longestInText = 5;

bool mayLackHyphen(std::string_view reg) {
    return reg.size() >= shortestHyphenated && !reg.starts_with('N') && reg.find('-') == std::string_view::npos;
}

/// A two-letter nationality is tried before a one-letter one.
constexpr std::array<std::size_t, 2> hyphenPlaces{2, 1};

std::string hyphenatedAt(std::string_view reg, std::size_t place) {
    std::string hyphenated(reg.substr(0, place));
    hyphenated += '-';
    hyphenated += reg.substr(place);
    return hyphenated;
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

} // namespace

bool gf_isIcaoAirline(std::string_view code) {
    return !code.empty() && gIcaoAirlines.contains(code);
}

std::vector<std::string> gf_regcodeVariants(std::string_view reg) {
    std::vector<std::string> variants;
    if (mayLackHyphen(reg)) {
        for (const std::size_t place : hyphenPlaces) {
            variants.push_back(hyphenatedAt(reg, place));
        }
    }
    variants.emplace_back(reg);
    return variants;
}

std::optional<DbaseRecord> gf_findRegcodeRecord(std::string_view reg) {
    if (reg.empty()) {
        return std::nullopt;
    }
    // The variants without a list of them: this is asked for each livery and each new aircraft.
    if (mayLackHyphen(reg)) {
        for (const std::size_t place : hyphenPlaces) {
            if (const auto record = DbaseTable.find(hyphenatedAt(reg, place))) {
                return record;
            }
        }
    }
    return DbaseTable.find(reg);
}

/// Trying the text's own pieces is a few hundred look-ups, where trying each registration would be half a million
/// searches.
std::optional<std::string> gf_findRegcodeInText(std::string_view text) {
    std::optional<std::size_t> first;
    std::string_view found;
    for (std::size_t begin = 0; begin <= text.size(); ++begin) {
        for (std::size_t length = 0; length <= std::min(longestInText, text.size() - begin); ++length) {
            const std::string_view piece = text.substr(begin, length);
            if (const auto place = DbaseTable.placeOf(piece); place && (!first || *place < *first)) {
                first = place;
                found = piece;
            }
        }
    }
    return first ? std::optional<std::string>(found) : std::nullopt;
}

std::optional<std::string> gf_findPublisher(std::string_view name) {
    // A name that occurs as it stands occurs folded as well, so one search does for both.
    const std::string folded = lowerCase(name);
    for (const std::vector<std::string>& names : gPublishers) {
        for (const std::string& alias : names) {
            if (folded.find(lowerCase(alias)) != std::string::npos) {
                return names.front();
            }
        }
    }
    return std::nullopt;
}

std::string gf_publisherFromFileName(std::string_view path, const std::function<void(std::string_view)>& scanLog) {
    if (lowerCase(path).find("orbx") != std::string::npos) {
        constexpr const char* publisher = "simaddon";
        scanLog(fmt::format("from filename => publisher {}", publisher));
        return publisher;
    }
    return gf_findPublisher(path).value_or("");
}

void resetReferenceTables() {
    for (TypeSet* set : {&gAllTypes, &gCargoTypes, &gIcaoAirlines, &gCargoOperators, &gSimaddonAirports}) {
        set->clear();
    }
    gSimilarGroups.clear();
    gPublishers.clear();
    gFixes.clear();
    gThirdParties.clear();
    DbaseTable.clear();
    resetAircraftTypes();
}
