// liveries/reference_tables.h
// What is known of the world beforehand: airlines, publishers, similar types, and the real aircraft by registration.
// Filled by the reading of the data files before any other thread looks; afterwards any thread may read.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/text_hash.h"
#include "liveries/aircraft_types.h"
#include "liveries/registration_table.h"

extern TypeSet gAllTypes;         ///< every valid type code
extern TypeSet gCargoTypes;       ///< read and checked; nothing asks it
extern TypeSet gIcaoAirlines;     ///< every valid airline code
extern TypeSet gCargoOperators;   ///< read and checked; nothing asks it
extern TypeSet gSimaddonAirports; ///< the airports that come with the simulator add-on

/// Interchangeable type codes, ascending.
using SimilarGroup = std::vector<std::string>;
extern std::vector<SimilarGroup> gSimilarGroups;

/// The names of each publisher, the first being the one that is reported.
extern std::vector<std::vector<std::string>> gPublishers;

template <typename Value>
using TextTable = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

/// Wrong type code to right type code.
extern TextTable<std::string> gFixes;

/// The airports of another publisher.
struct ThirdParty {
    std::string pub;
    std::vector<std::string> arpts;
};
extern std::vector<ThirdParty> gThirdParties;

/// The real aircraft by registration.
extern RegistrationTable DbaseTable;

bool gf_isIcaoAirline(std::string_view code);

/// The forms in which a registration may stand in the table, in the order in which they are tried.
std::vector<std::string> gf_regcodeVariants(std::string_view reg);

/// The record of the first form that is in the table.
std::optional<DbaseRecord> gf_findRegcodeRecord(std::string_view reg);

/// The first registration of the table, in the table's own order, that is shorter than six characters and occurs in the
/// text.
std::optional<std::string> gf_findRegcodeInText(std::string_view text);

/// The publisher one of whose names occurs in `name`, whatever the case of the letters A to Z. An empty name occurs in
/// all.
std::optional<std::string> gf_findPublisher(std::string_view name);

/// The publisher that the text of a path tells; empty if none. A line about a path of the simulator add-on goes to
/// `scanLog`, the log of the scan that asks.
std::string gf_publisherFromFileName(std::string_view path, const std::function<void(std::string_view)>& scanLog);

/// Nothing known, aircraft types included.
void resetReferenceTables();
