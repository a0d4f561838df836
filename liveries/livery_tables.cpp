// liveries/livery_tables.cpp
#include "liveries/livery_tables.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <memory_resource>
#include <numeric>
#include <unordered_set>
#include <variant>

#include <fmt/format.h>

#include "core/log.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "core/side_by_side.h"
#include "liveries/livery_matching.h"
#include "platform/window_system.h"

namespace {

/// What the tables are made of. Before them, for they end first. One thread at a time takes of the first: the similar
/// types, which come into being beside the tables, must not.
std::pmr::monotonic_buffer_resource memory;
std::pmr::monotonic_buffer_resource registrationMemory;

} // namespace

FlatTextTable<AirlineTypes> AirlineTable(&memory);
std::array<FlatTextTable<FlatTextTable<TitleList>>, 2> AirlineModelTable{
    FlatTextTable<FlatTextTable<TitleList>>(&memory), FlatTextTable<FlatTextTable<TitleList>>(&memory)};
std::array<FlatTextTable<TitleList>, 2> ModelTable{FlatTextTable<TitleList>(&memory),
                                                   FlatTextTable<TitleList>(&memory)};
FlatTextTable<std::string_view> RegcodeTable(&registrationMemory);
RegcodeSet SpecialRegcodes;
RegcodeSet UniqueRegcodes;
std::vector<std::string_view> ReservedTitles;
std::array<std::vector<CategorizedType>, 3> RandomTypes;

namespace {

constexpr std::size_t roomForReservedTitles = 4096;

/// Owns the texts of all titles, in blocks.
std::vector<std::unique_ptr<char[]>> arena;
/// The titles that the lists of AirlineTable view, in the order of the liveries; empty for a lost one.
std::vector<AirlineTitle> allTitles;
/// Of allTitles, each once; filled by the first search.
FlatTextTable<std::monostate, std::hash<std::string_view>> knownTitles(std::pmr::get_default_resource());
/// What the lists of AirlineModelTable and of ModelTable view.
std::array<std::vector<std::string_view>, 2> titlesByAirline;
std::array<std::vector<std::string_view>, 2> titlesByType;
std::vector<std::vector<std::string_view>> unreservedTitles;

/// Fills the arena.
class TitleStore {
public:
    std::string_view keep(std::string_view title) {
        if (title.size() > room_) {
            room_ = std::max(blockBytes, title.size());
            next_ = arena.emplace_back(std::make_unique<char[]>(room_)).get();
        }
        const std::string_view kept(next_, title.size());
        next_ = std::copy(title.begin(), title.end(), next_);
        room_ -= title.size();
        return kept;
    }

private:
    static constexpr std::size_t blockBytes = std::size_t{1} << 18;

    char* next_ = nullptr;
    std::size_t room_ = 0;
};

bool isSameGroup(const LiveryView& a, const LiveryView& b) {
    return a.airl == b.airl && a.type == b.type;
}

void keepTitles(std::span<const LiveryView> liveries) {
    TitleStore store;
    std::transform(liveries.begin(), liveries.end(), allTitles.begin(), [&store](const LiveryView& livery) {
        return AirlineTitle{store.keep(livery.title), livery.cargo};
    });
}

/// Whether the group is new. One that comes a second time, which no sorted list has, is lost.
bool storeGroup(const LiveryView& first, std::span<const AirlineTitle> titles) {
    AirlineTypes& types = AirlineTable.try_emplace(first.airl, &memory).first->second;
    return types.try_emplace(first.type, titles).second;
}

/// The answer are the lost groups.
std::vector<std::span<AirlineTitle>> storeGroups(std::span<const LiveryView> liveries) {
    std::vector<std::span<AirlineTitle>> lost;
    for (std::size_t begin = 0; begin < liveries.size();) {
        std::size_t end = begin + 1;
        while (end < liveries.size() && isSameGroup(liveries[begin], liveries[end])) {
            ++end;
        }
        const auto titles = std::span(allTitles).subspan(begin, end - begin);
        if (!storeGroup(liveries[begin], titles)) {
            lost.push_back(titles);
        }
        begin = end;
    }
    return lost;
}

void fillKnownTitles() {
    knownTitles.reserve(allTitles.size());
    for (const AirlineTitle& one : allTitles) {
        knownTitles.try_emplace_view(one.title);
    }
}

/// The titles of the wanted kind, behind those of the former groups.
Titles splitGroup(std::span<const AirlineTitle> titles, std::size_t index) {
    std::vector<std::string_view>& all = titlesByAirline[index];
    const std::size_t begin = all.size();
    for (const AirlineTitle& title : titles) {
        if (title.isCargo == (index == cargoIndex)) {
            all.push_back(title.title);
        }
    }
    return Titles(all).subspan(begin);
}

void splitAirline(std::string_view airline, const AirlineTypes& types, std::size_t index) {
    FlatTextTable<TitleList>* table = nullptr;
    for (const auto& [type, all] : types) {
        const Titles titles = splitGroup(all, index);
        if (titles.empty()) {
            continue;
        }
        if (table == nullptr) {
            table = &AirlineModelTable[index].try_emplace(airline, &memory).first->second;
        }
        table->try_emplace(type, TitleList{titles, {}});
    }
}

// --- Reservations ---

/// Where the texts of the reserved titles begin: to look at each text in each list takes longer than all else.
using ReservedPlaces = std::unordered_set<const char*>;

ReservedPlaces reservedPlaces() {
    const std::unordered_set<std::string_view> reserved(ReservedTitles.begin(), ReservedTitles.end());
    ReservedPlaces places;
    for (const AirlineTitle& one : allTitles) {
        if (!one.title.empty() && reserved.contains(one.title)) {
            places.insert(one.title.data());
        }
    }
    return places;
}

void setReservedAside(TitleList& list, const ReservedPlaces& reserved) {
    const auto isFree = [&reserved](std::string_view title) {
        return title.empty() || !reserved.contains(title.data());
    };
    if (!std::all_of(list.titles.begin(), list.titles.end(), isFree)) {
        std::vector<std::string_view>& unreserved = unreservedTitles.emplace_back();
        std::copy_if(list.titles.begin(), list.titles.end(), std::back_inserter(unreserved), isFree);
        list.unreserved = unreserved;
    }
}

/// Done once for all, so that a match need not walk a list of thousands.
void setReservedAside() {
    if (ReservedTitles.empty()) {
        return;
    }
    const ReservedPlaces reserved = reservedPlaces();
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

/// The categories that the user can switch off.
const std::array<CategorySwitch, 3> categorySwitches{{
    {AircraftCategory::Light, LIGHT_AIRCRAFT, "light aircraft"},
    {AircraftCategory::HighPerf, HIGH_PERF_AIRCRAFT, "High Perf aircraft"},
    {AircraftCategory::Rotorcraft, HELICOPTERS, "Helicopters"},
}};

void switchOff(const CategorySwitch& one) {
    if (!one.parameter.value) {
        return;
    }
    one.parameter.value = false;
    saveParameter(one.parameter);
    showParameter(one.parameter);
    log(fmt::format("{} temporarily switched off because you do not have {} installed", one.parameter.key, one.name));
}

/// Nobody is to switch on what there is no livery for.
void setSwitch(AircraftCategory category, bool hasLivery) {
    for (const CategorySwitch& one : categorySwitches) {
        if (one.category == category) {
            if (!hasLivery) {
                switchOff(one);
            }
            window_system::enableControl(one.parameter.controlId, hasLivery);
        }
    }
}

std::string cargoText(std::size_t titles) {
    return titles == 0 ? "" : fmt::format(" and {} cargo liverie{}", titles, pluralS(titles));
}

void summarize(AircraftCategory category, const CategoryStock& stock) {
    if (stock.types.empty()) {
        log(fmt::format("Category {}: No livery found", printedName(category)));
        setSwitch(category, false);
        return;
    }
    const auto [passenger, cargo] = stock.titles;
    log(fmt::format("Category {}: {} pax liverie{}{}", printedName(category), passenger, pluralS(passenger),
                    cargoText(cargo)));
    logInRows(stock.types);
    setSwitch(category, true);
    if (std::vector<CategorizedType>* random = randomTypesOf(category)) {
        for (const std::string_view type : stock.types) {
            random->push_back({type, category});
        }
    }
}

using AirlineEntry = FlatTextTable<FlatTextTable<TitleList>>::value_type;

/// So that the first title of a type is not another one when liveries are added that have nothing to do with it.
std::vector<const AirlineEntry*> byCode(const FlatTextTable<FlatTextTable<TitleList>>& table) {
    std::vector<const AirlineEntry*> airlines;
    airlines.reserve(table.size());
    for (const AirlineEntry& airline : table) {
        airlines.push_back(&airline);
    }
    std::sort(airlines.begin(), airlines.end(), [](const auto* a, const auto* b) { return a->first < b->first; });
    return airlines;
}

/// The titles that an airline has of a type.
struct TypeGroup {
    std::size_t type = 0; ///< its number in ModelTable
    Titles titles;
};

/// All groups, in the order of their airlines; the types come into ModelTable meanwhile.
std::vector<TypeGroup> typeGroups(std::size_t index) {
    FlatTextTable<TitleList>& types = ModelTable[index];
    std::vector<TypeGroup> groups;
    for (const AirlineEntry* airline : byCode(AirlineModelTable[index])) {
        for (const auto& [type, list] : airline->second) {
            const auto entry = types.try_emplace(type).first;
            groups.push_back({static_cast<std::size_t>(entry - types.begin()), list.titles});
        }
    }
    return groups;
}

/// Where the titles of each type begin among those of all types.
std::vector<std::size_t> typeBegins(std::span<const TypeGroup> groups, std::size_t types) {
    std::vector<std::size_t> begins(types + 1);
    for (const TypeGroup& group : groups) {
        begins[group.type + 1] += group.titles.size();
    }
    std::partial_sum(begins.begin(), begins.end(), begins.begin());
    return begins;
}

void fillModelTable(std::size_t index) {
    ModelTable[index].clear();
    const std::vector<TypeGroup> groups = typeGroups(index);
    const std::vector<std::size_t> begins = typeBegins(groups, ModelTable[index].size());
    std::vector<std::string_view>& all = titlesByType[index];
    all.resize(begins.back());
    std::vector<std::size_t> ends = begins;
    for (const TypeGroup& group : groups) {
        std::copy(group.titles.begin(), group.titles.end(),
                  all.begin() + static_cast<std::ptrdiff_t>(ends[group.type]));
        ends[group.type] += group.titles.size();
    }
    std::size_t type = 0;
    for (auto& [code, list] : ModelTable[index]) {
        list.titles = Titles(all).subspan(begins[type], ends[type] - begins[type]);
        ++type;
    }
}

/// Empty, without the memory that clear() would keep.
template <typename Table>
void makeAnew(Table& table) {
    table = Table(table.memory());
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

void lf_buildAirlineTables(std::span<const LiveryView> liveries) {
    fillAirlineTable(liveries);
    fillAirlineModelTables();
}

void fillAirlineTable(std::span<const LiveryView> liveries) {
    ReservedTitles.reserve(roomForReservedTitles);
    allTitles.assign(liveries.size(), {});
    std::vector<std::span<AirlineTitle>> lost;
    runSideBySide([&] { keepTitles(liveries); }, "LiveryGroups", [&] { lost = storeGroups(liveries); });
    for (const std::span<AirlineTitle> titles : lost) {
        std::fill(titles.begin(), titles.end(), AirlineTitle());
    }
}

void fillAirlineModelTables() {
    for (const std::size_t index : {passengerIndex, cargoIndex}) {
        titlesByAirline[index].clear();
        titlesByAirline[index].reserve(allTitles.size()); // the lists view them, so they must stay where they are
        AirlineModelTable[index].reserve(AirlineTable.size());
        for (const auto& [airline, types] : AirlineTable) {
            splitAirline(airline, types, index);
        }
    }
}

std::string_view lf_findTitle(std::string_view title) {
    if (knownTitles.empty()) {
        fillKnownTitles();
    }
    const auto known = knownTitles.find(title);
    return known == knownTitles.end() ? std::string_view() : known->first;
}

std::string_view findTitle(std::string_view title, std::size_t number) {
    const bool isIt = number < allTitles.size() && allTitles[number].title == title;
    return isIt ? allTitles[number].title : lf_findTitle(title);
}

void lf_buildModelTables() {
    fillModelTable(passengerIndex);
    fillModelTable(cargoIndex);
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
    SpecialRegcodes.clear();
    UniqueRegcodes.clear();
    ReservedTitles.clear();
    clearSimilarModels();
    for (auto& types : RandomTypes) {
        types.clear();
    }
    makeAnew(RegcodeTable);
    for (auto& table : AirlineModelTable) {
        makeAnew(table);
    }
    for (auto& table : ModelTable) {
        makeAnew(table);
    }
    makeAnew(AirlineTable);
    memory.release();
    registrationMemory.release();
    makeAnew(knownTitles);
    titlesByAirline = {};
    titlesByType = {};
    unreservedTitles.clear();
    allTitles.clear();
    allTitles.shrink_to_fit();
    arena.clear();
}
