// liveries/livery_tables.cpp
#include "liveries/livery_tables.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <unordered_set>
#include <utility>

#include <fmt/format.h>

#include "core/log.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "liveries/livery.h"
#include "liveries/livery_matching.h"

TextTable<TextTable<std::vector<AirlineTitle>>> AirlineTable;
std::array<TextTable<TextTable<TitleList>>, 2> AirlineModelTable;
std::array<TextTable<TitleList>, 2> ModelTable;
TextTable<std::string_view> RegcodeTable;
RegcodeSet SpecialRegcodes;
RegcodeSet UniqueRegcodes;
std::vector<std::string_view> ReservedTitles;
std::array<std::vector<CategorizedType>, 3> RandomTypes;

namespace {

constexpr std::size_t roomForAirlineTitles = 4048;
constexpr std::size_t roomForReservedTitles = 4096;

using TitleSet = std::unordered_set<std::string_view, TextHash, std::equal_to<>>;

/// Owns the texts of all titles: a block for each time that the tables were built since they were cleared.
std::vector<std::unique_ptr<char[]>> arena;
/// What stands in AirlineTable.
TitleSet knownTitles;

/// A block of the arena that is being filled.
class TitleStore {
public:
    explicit TitleStore(std::size_t bytes) : next_(arena.emplace_back(std::make_unique<char[]>(bytes)).get()) {}

    std::string_view keep(std::string_view title) {
        char* const begin = next_;
        next_ = std::copy(title.begin(), title.end(), begin);
        return {begin, title.size()};
    }

private:
    char* next_;
};

std::size_t bytesOfTitles() {
    std::size_t bytes = 0;
    for (const Livery& livery : Liveries) {
        bytes += livery.title.size();
    }
    return bytes;
}

bool isSameGroup(const Livery& a, const Livery& b) {
    return a.airl == b.airl && a.type == b.type;
}

/// A group that comes a second time, which no sorted list has, is lost.
void storeGroup(const Livery& first, const std::vector<AirlineTitle>& titles) {
    auto airline = AirlineTable.find(first.airl);
    if (airline == AirlineTable.end()) {
        airline = AirlineTable.try_emplace(first.airl).first;
    }
    const auto [stored, isNew] = airline->second.try_emplace(first.type, titles.begin(), titles.end());
    if (isNew) {
        for (const AirlineTitle& title : stored->second) {
            knownTitles.insert(title.title);
        }
    }
}

void fillAirlineTable() {
    TitleStore store(bytesOfTitles());
    knownTitles.reserve(knownTitles.size() + Liveries.size());
    std::vector<AirlineTitle> titles;
    titles.reserve(roomForAirlineTitles);
    const Livery* first = nullptr;
    for (const Livery& livery : Liveries) {
        if (first != nullptr && !isSameGroup(*first, livery)) {
            storeGroup(*first, titles);
            titles.clear();
        }
        if (titles.empty()) {
            first = &livery;
        }
        titles.push_back({store.keep(livery.title), livery.cargo});
    }
    if (first != nullptr) {
        storeGroup(*first, titles);
    }
}

std::vector<std::string_view> titlesOf(const std::vector<AirlineTitle>& titles, bool cargo) {
    const auto isWanted = [cargo](const AirlineTitle& title) { return title.isCargo == cargo; };
    std::vector<std::string_view> wanted;
    wanted.reserve(static_cast<std::size_t>(std::count_if(titles.begin(), titles.end(), isWanted)));
    for (const AirlineTitle& title : titles) {
        if (isWanted(title)) {
            wanted.push_back(title.title);
        }
    }
    return wanted;
}

void splitAirline(const std::string& airline, const TextTable<std::vector<AirlineTitle>>& types, std::size_t index) {
    TextTable<TitleList>* table = nullptr;
    for (const auto& [type, all] : types) {
        std::vector<std::string_view> titles = titlesOf(all, index == cargoIndex);
        if (titles.empty()) {
            continue;
        }
        if (table == nullptr) {
            table = &AirlineModelTable[index][airline];
        }
        (*table)[type].titles = std::move(titles);
    }
}

void splitByCargo() {
    for (const std::size_t index : {passengerIndex, cargoIndex}) {
        AirlineModelTable[index].clear();
        AirlineModelTable[index].reserve(AirlineTable.size());
        for (const auto& [airline, types] : AirlineTable) {
            splitAirline(airline, types, index);
        }
    }
}

// --- Reservations ---

void setReservedAside(TitleList& list, const TitleSet& reserved) {
    std::vector<std::string_view> free;
    std::copy_if(list.titles.begin(), list.titles.end(), std::back_inserter(free),
                 [&reserved](std::string_view title) { return !reserved.contains(title); });
    list.unreserved.clear();
    if (free.size() < list.titles.size()) {
        list.unreserved = std::move(free);
        list.unreserved.shrink_to_fit();
    }
}

/// Done once for all, so that a match need not walk a list of thousands.
void setReservedAside() {
    if (ReservedTitles.empty()) {
        return;
    }
    const TitleSet reserved(ReservedTitles.begin(), ReservedTitles.end());
    for (auto& airlines : AirlineModelTable) {
        for (auto& [airline, types] : airlines) {
            for (auto& [type, list] : types) {
                setReservedAside(list, reserved);
            }
        }
    }
    for (auto& types : ModelTable) {
        for (auto& [type, list] : types) {
            setReservedAside(list, reserved);
        }
    }
}

// --- Summaries ---

constexpr std::size_t typesPerRow = 20;
constexpr std::array<std::size_t, 3> roomForRandomTypes{64, 128, 32};

/// What there is of a category.
struct CategoryStock {
    std::set<std::string_view> types;
    std::array<std::size_t, 2> titles{}; ///< by passengerIndex or cargoIndex
};

using Stock = std::array<CategoryStock, aircraftCategoryCount>;

Stock stockByCategory() {
    Stock stock;
    for (const std::size_t index : {passengerIndex, cargoIndex}) {
        for (const auto& [type, list] : ModelTable[index]) {
            CategoryStock& category = stock.at(static_cast<std::size_t>(gf_categoryOfType(type)));
            category.types.insert(type);
            category.titles[index] += list.titles.size();
        }
    }
    return stock;
}

const char* pluralS(std::size_t count) {
    return count == 1 ? "" : "s";
}

void logInRows(const std::set<std::string_view>& types) {
    for (auto row = types.begin(); row != types.end();) {
        const auto left = static_cast<std::size_t>(std::distance(row, types.end()));
        const auto end = std::next(row, static_cast<std::ptrdiff_t>(std::min(typesPerRow, left)));
        log(fmt::format("  {}", fmt::join(row, end, ",")));
        row = end;
    }
}

struct CategorySwitch {
    AircraftCategory category;
    CheckBoxParameter& parameter;
    const char* name;
};

void switchOffWithoutLivery(AircraftCategory category) {
    const std::array<CategorySwitch, 3> switches{{
        {AircraftCategory::Light, LIGHT_AIRCRAFT, "light aircraft"},
        {AircraftCategory::HighPerf, HIGH_PERF_AIRCRAFT, "High Perf aircraft"},
        {AircraftCategory::Rotorcraft, HELICOPTERS, "Helicopters"},
    }};
    for (const CategorySwitch& one : switches) {
        if (one.category == category && one.parameter.value) {
            one.parameter.value = false;
            saveParameter(one.parameter);
            log(fmt::format("{} temporarily switched off because you do not have {} installed", one.parameter.key,
                            one.name));
        }
    }
}

std::string cargoText(std::size_t titles) {
    return titles == 0 ? "" : fmt::format(" and {} cargo liverie{}", titles, pluralS(titles));
}

void summarize(AircraftCategory category, const CategoryStock& stock) {
    if (stock.types.empty()) {
        log(fmt::format("Category {}: No livery found", printedName(category)));
        switchOffWithoutLivery(category);
        return;
    }
    const auto [passenger, cargo] = stock.titles;
    log(fmt::format("Category {}: {} pax liverie{}{}", printedName(category), passenger, pluralS(passenger),
                    cargoText(cargo)));
    logInRows(stock.types);
    if (std::vector<CategorizedType>* random = randomTypesOf(category)) {
        for (const std::string_view type : stock.types) {
            random->push_back({type, category});
        }
    }
}

} // namespace

std::vector<CategorizedType>* randomTypesOf(AircraftCategory category) {
    switch (category) {
    case AircraftCategory::Light: return &RandomTypes[0];
    case AircraftCategory::Buzjets: return &RandomTypes[1];
    case AircraftCategory::Rotorcraft: return &RandomTypes[2];
    default: return nullptr;
    }
}

void lf_buildAirlineTables() {
    ReservedTitles.reserve(roomForReservedTitles);
    fillAirlineTable();
    splitByCargo();
}

std::string_view lf_findTitle(std::string_view title) {
    const auto known = knownTitles.find(title);
    return known == knownTitles.end() ? std::string_view() : *known;
}

void lf_buildModelTables() {
    for (const std::size_t index : {passengerIndex, cargoIndex}) {
        ModelTable[index].clear();
        for (const auto& [airline, types] : AirlineModelTable[index]) {
            for (const auto& [type, list] : types) {
                std::vector<std::string_view>& titles = ModelTable[index][type].titles;
                titles.insert(titles.end(), list.titles.begin(), list.titles.end());
            }
        }
        for (auto& [type, list] : ModelTable[index]) {
            list.titles.shrink_to_fit();
        }
    }
    setReservedAside();
}

void logModelTables() {
    log(fmt::format("{} airlines, {} pax aircraft models and {} cargo aircraft models", AirlineTable.size(),
                    ModelTable[passengerIndex].size(), ModelTable[cargoIndex].size()));
}

void summarizeCategories() {
    for (std::size_t i = 0; i < RandomTypes.size(); ++i) {
        RandomTypes[i].clear();
        RandomTypes[i].reserve(roomForRandomTypes[i]);
    }
    const Stock stock = stockByCategory();
    for (std::size_t i = 0; i < stock.size(); ++i) {
        summarize(static_cast<AircraftCategory>(i), stock[i]);
    }
}

void summarizeGenericLiveries() {
    const auto generic = AirlineTable.find(genericAirline);
    if (generic == AirlineTable.end()) {
        log("No generic liveries");
        return;
    }
    std::set<std::string_view> types;
    for (const auto& [type, titles] : generic->second) {
        types.insert(type);
    }
    log(fmt::format("{} model{} have a generic livery", types.size(), pluralS(types.size())));
    logInRows(types);
}

void logRegistrationCodes() {
    log(fmt::format("{} registration codes", RegcodeTable.size()));
}

void clearLiveryTables() {
    hexidLiveries.clear();
    RegcodeTable.clear();
    SpecialRegcodes.clear();
    UniqueRegcodes.clear();
    ReservedTitles.clear();
    for (auto& table : AirlineModelTable) {
        table.clear();
    }
    clearSimilarModels();
    for (auto& types : RandomTypes) {
        types.clear();
    }
    for (auto& table : ModelTable) {
        table.clear();
    }
    AirlineTable.clear();
    knownTitles.clear();
    arena.clear();
}
