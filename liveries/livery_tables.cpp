// liveries/livery_tables.cpp
#include "liveries/livery_tables.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <memory>
#include <unordered_set>
#include <utility>

#include <fmt/format.h>

#include "core/log.h"
#include "core/parameter_file.h"
#include "core/parameters.h"
#include "liveries/livery_matching.h"
#include "platform/window_system.h"

namespace {

/// What the tables are made of. Before them, for they end first.
std::pmr::monotonic_buffer_resource memory;

} // namespace

LiveryTable<AirlineTypes> AirlineTable(&memory);
std::array<LiveryTable<LiveryTable<TitleList>>, 2> AirlineModelTable{LiveryTable<LiveryTable<TitleList>>(&memory),
                                                                     LiveryTable<LiveryTable<TitleList>>(&memory)};
std::array<LiveryTable<TitleList>, 2> ModelTable{LiveryTable<TitleList>(&memory), LiveryTable<TitleList>(&memory)};
LiveryTable<std::string_view> RegcodeTable(&memory);
RegcodeSet SpecialRegcodes;
RegcodeSet UniqueRegcodes;
std::vector<std::string_view> ReservedTitles;
std::array<std::vector<CategorizedType>, 3> RandomTypes;

namespace {

constexpr std::size_t roomForAirlineTitles = 4048;
constexpr std::size_t roomForReservedTitles = 4096;

/// Each title once, in two blocks of memory: a node for each of 60,000 titles would cost more than all other tables.
class TitleIndex {
public:
    /// Before the first title.
    void makeRoom(std::size_t titles) {
        titles_.reserve(titles);
        slots_.assign(std::bit_ceil(2 * titles + 1), {});
    }

    /// There must be room for it.
    void insert(std::string_view title) {
        const std::uint64_t hash = hashOf(title);
        if (Slot& slot = slots_[placeOf(title, hash)]; slot.isFree()) {
            titles_.push_back(title);
            slot = {tagOf(hash), static_cast<std::uint32_t>(titles_.size())};
        }
    }

    /// Empty for one that is not there.
    std::string_view find(std::string_view title) const {
        if (slots_.empty()) {
            return {};
        }
        const Slot& slot = slots_[placeOf(title, hashOf(title))];
        return slot.isFree() ? std::string_view() : titleOf(slot);
    }

    bool isEmpty() const { return titles_.empty(); }
    void clear() { *this = TitleIndex(); }

private:
    struct Slot {
        std::uint32_t tag = 0;
        std::uint32_t number = 0; ///< of the title, counted from 1

        bool isFree() const { return number == 0; }
    };

    static std::uint64_t hashOf(std::string_view title) { return std::hash<std::string_view>{}(title); }

    /// The lower bits of the hash value choose the place, the upper ones tell nearly all other titles without a look at
    /// them.
    static std::uint32_t tagOf(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32); }

    std::string_view titleOf(const Slot& slot) const { return titles_[slot.number - 1]; }

    /// The slot of the title, or the free one where it would go; at least half of them are free.
    std::size_t placeOf(std::string_view title, std::uint64_t hash) const {
        const std::size_t mask = slots_.size() - 1;
        std::size_t place = hash & mask;
        while (!slots_[place].isFree() && (slots_[place].tag != tagOf(hash) || titleOf(slots_[place]) != title)) {
            place = (place + 1) & mask;
        }
        return place;
    }

    std::vector<std::string_view> titles_;
    std::vector<Slot> slots_; // a power of two of them, or none
};

/// Owns the texts of all titles, in blocks.
std::vector<std::unique_ptr<char[]>> arena;
/// The titles that the lists of AirlineTable view, in the order of the liveries; empty for a lost one.
std::vector<AirlineTitle> allTitles;
/// Of allTitles; filled by the first search.
TitleIndex knownTitles;

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

/// A group that comes a second time, which no sorted list has, is lost.
void storeGroup(const LiveryView& first, std::span<AirlineTitle> titles) {
    auto airline = AirlineTable.find(first.airl);
    if (airline == AirlineTable.end()) {
        airline = AirlineTable.try_emplace(std::string(first.airl)).first;
    }
    if (!airline->second.try_emplace(std::string(first.type), titles).second) {
        std::fill(titles.begin(), titles.end(), AirlineTitle());
    }
}

void fillAirlineTable(std::span<const LiveryView> liveries) {
    TitleStore store;
    allTitles.clear();
    allTitles.reserve(std::max(roomForAirlineTitles, liveries.size()));
    for (const LiveryView& livery : liveries) {
        allTitles.push_back({store.keep(livery.title), livery.cargo});
    }
    for (std::size_t begin = 0; begin < liveries.size();) {
        std::size_t end = begin + 1;
        while (end < liveries.size() && isSameGroup(liveries[begin], liveries[end])) {
            ++end;
        }
        storeGroup(liveries[begin], std::span(allTitles).subspan(begin, end - begin));
        begin = end;
    }
}

void fillKnownTitles() {
    knownTitles.clear();
    knownTitles.makeRoom(allTitles.size());
    for (const AirlineTitle& one : allTitles) {
        knownTitles.insert(one.title);
    }
}

Titles titlesOf(std::span<const AirlineTitle> titles, bool cargo) {
    const auto isWanted = [cargo](const AirlineTitle& title) { return title.isCargo == cargo; };
    Titles wanted(&memory);
    wanted.reserve(static_cast<std::size_t>(std::count_if(titles.begin(), titles.end(), isWanted)));
    for (const AirlineTitle& title : titles) {
        if (isWanted(title)) {
            wanted.push_back(title.title);
        }
    }
    return wanted;
}

void splitAirline(const std::string& airline, const AirlineTypes& types, std::size_t index) {
    LiveryTable<TitleList>* table = nullptr;
    for (const auto& [type, all] : types) {
        Titles titles = titlesOf(all, index == cargoIndex);
        if (titles.empty()) {
            continue;
        }
        if (table == nullptr) {
            table = &AirlineModelTable[index][airline];
        }
        table->try_emplace(type, TitleList{std::move(titles), {}});
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

using ReservedSet = std::unordered_set<std::string_view>;

void setReservedAside(TitleList& list, const ReservedSet& reserved) {
    const auto isFree = [&reserved](std::string_view title) { return !reserved.contains(title); };
    list.unreserved.clear();
    if (!std::all_of(list.titles.begin(), list.titles.end(), isFree)) {
        std::copy_if(list.titles.begin(), list.titles.end(), std::back_inserter(list.unreserved), isFree);
    }
}

/// Done once for all, so that a match need not walk a list of thousands.
void setReservedAside() {
    if (ReservedTitles.empty()) {
        return;
    }
    const ReservedSet reserved(ReservedTitles.begin(), ReservedTitles.end());
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

/// So that the first title of a type is not another one when liveries are added that have nothing to do with it.
std::vector<const LiveryTable<LiveryTable<TitleList>>::value_type*>
byCode(const LiveryTable<LiveryTable<TitleList>>& table) {
    std::vector<const LiveryTable<LiveryTable<TitleList>>::value_type*> airlines;
    airlines.reserve(table.size());
    for (const auto& airline : table) {
        airlines.push_back(&airline);
    }
    std::sort(airlines.begin(), airlines.end(), [](const auto* a, const auto* b) { return a->first < b->first; });
    return airlines;
}

/// Empty, without the memory that clear() would keep.
template <typename Table>
void makeAnew(Table& table) {
    table = Table(table.get_allocator());
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
    ReservedTitles.reserve(roomForReservedTitles);
    fillAirlineTable(liveries);
    splitByCargo();
}

std::string_view lf_findTitle(std::string_view title) {
    if (knownTitles.isEmpty()) {
        fillKnownTitles();
    }
    return knownTitles.find(title);
}

std::string_view findTitle(std::string_view title, std::size_t number) {
    const bool isIt = number < allTitles.size() && allTitles[number].title == title;
    return isIt ? allTitles[number].title : lf_findTitle(title);
}

void lf_buildModelTables() {
    for (const std::size_t index : {passengerIndex, cargoIndex}) {
        ModelTable[index].clear();
        for (const auto* airline : byCode(AirlineModelTable[index])) {
            for (const auto& [type, list] : airline->second) {
                Titles& titles = ModelTable[index][type].titles;
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
    knownTitles.clear();
    allTitles.clear();
    allTitles.shrink_to_fit();
    arena.clear();
}
