// liveries/similar_models.cpp
#include "liveries/similar_models.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "core/log.h"
#include "liveries/aircraft_types.h"
#include "liveries/livery_tables.h"

TextTable<std::vector<std::string>> SimilarAll;
TextTable<std::vector<CategorizedType>> SimilarWithLiveries;
TextTable<TextTable<std::vector<CategorizedType>>> SimilarByAirline;

namespace {

constexpr std::size_t airlineCodeLength = 3;

/// A type in front of the others of its group. Where a type stands in several groups the first list in this order counts.
using SimilarLists = std::set<std::vector<std::string>>;

bool hasLivery(std::string_view type) {
    return ModelTable[passengerIndex].contains(type) || ModelTable[cargoIndex].contains(type);
}

template <typename Accepts>
SimilarLists listsOf(Accepts accepts) {
    SimilarLists lists;
    for (const SimilarGroup& group : gSimilarGroups) {
        for (const std::string& member : group) {
            std::vector<std::string> list{member};
            std::copy_if(group.begin(), group.end(), std::back_inserter(list),
                         [&](const std::string& other) { return other != member && accepts(other); });
            if (list.size() > 1) {
                lists.insert(std::move(list));
            }
        }
    }
    return lists;
}

void fillSimilarAll() {
    SimilarAll.clear();
    for (const auto& list : listsOf([](const std::string&) { return true; })) {
        SimilarAll.try_emplace(list.front(), list.begin() + 1, list.end());
    }
}

/// Views the keys of SimilarAll, which knows every type that has a similar one.
CategorizedType categorized(std::string_view type) {
    return {SimilarAll.find(type)->first, gf_categoryOfType(type)};
}

void fillSimilarWithLiveries() {
    SimilarWithLiveries.clear();
    for (const auto& list : listsOf(hasLivery)) {
        const auto [entry, isNew] = SimilarWithLiveries.try_emplace(list.front());
        if (isNew) {
            std::transform(list.begin() + 1, list.end(), std::back_inserter(entry->second), categorized);
        }
    }
}

/// Type to the types that have it among their similar ones.
using Admirers = TextTable<std::vector<std::string_view>>;

Admirers admirers() {
    Admirers found;
    for (const auto& [type, similar] : SimilarWithLiveries) {
        for (const CategorizedType& other : similar) {
            found[std::string(other.type)].push_back(type);
        }
    }
    return found;
}

using AirlineTypes = TextTable<std::vector<AirlineTitle>>;

std::vector<CategorizedType> ofAirline(const std::vector<CategorizedType>& similar, const AirlineTypes& types) {
    std::vector<CategorizedType> had;
    had.reserve(similar.size());
    std::copy_if(similar.begin(), similar.end(), std::back_inserter(had),
                 [&types](const CategorizedType& other) { return types.contains(other.type); });
    return had;
}

/// Goes by the few types that the airline has, not by all types that have similar ones.
TextTable<std::vector<CategorizedType>> substitutesOf(const AirlineTypes& types, const Admirers& admirers) {
    TextTable<std::vector<CategorizedType>> substitutes;
    for (const auto& [type, titles] : types) {
        const auto wanted = admirers.find(type);
        if (wanted == admirers.end()) {
            continue;
        }
        for (const std::string_view missing : wanted->second) {
            if (!types.contains(missing) && !substitutes.contains(missing)) {
                substitutes.try_emplace(std::string(missing),
                                        ofAirline(SimilarWithLiveries.find(missing)->second, types));
            }
        }
    }
    return substitutes;
}

void fillSimilarByAirline() {
    SimilarByAirline.clear();
    const Admirers all = admirers();
    for (const auto& [key, unused] : AirlineTable) {
        const std::string_view code = key;
        const std::string_view airline = code.substr(0, airlineCodeLength);
        const auto known = AirlineTable.find(airline);
        if (known == AirlineTable.end()) {
            continue;
        }
        if (auto substitutes = substitutesOf(known->second, all); !substitutes.empty()) {
            SimilarByAirline.insert_or_assign(std::string(airline), std::move(substitutes));
        }
    }
}

} // namespace

void lf_buildSimilarModels() {
    fillSimilarAll();
    fillSimilarWithLiveries();
    fillSimilarByAirline();
    log(fmt::format("{} similar model definitions", SimilarAll.size()));
}

void clearSimilarModels() {
    SimilarByAirline.clear();
    SimilarWithLiveries.clear();
    SimilarAll.clear();
}
