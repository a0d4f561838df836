// liveries/similar_models.cpp
#include "liveries/similar_models.h"

#include <algorithm>
#include <compare>
#include <cstdint>
#include <iterator>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>

#include "core/log.h"
#include "liveries/aircraft_types.h"
#include "liveries/livery_tables.h"

TextTable<std::vector<std::string>> SimilarAll;
TextTable<std::vector<CategorizedType>> SimilarWithLiveries;
TextTable<AirlineSubstitutes> SimilarByAirline;

namespace {

constexpr std::size_t airlineCodeLength = 3;

/// The types that have a list in SimilarWithLiveries, whose keys it views, numbered in ascending order.
std::unordered_map<std::string_view, std::uint32_t> typeNumbers;

/// A type in front of the others of its group. Where a type stands in several groups the first list in this order
/// counts.
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

/// The types that have a livery and a similar type. Views the keys of SimilarAll, which knows every type that has a
/// similar one.
std::unordered_map<std::string_view, CategorizedType> typesWithLivery() {
    std::unordered_map<std::string_view, CategorizedType> types;
    for (const auto& [type, unused] : SimilarAll) {
        if (hasLivery(type)) {
            types.try_emplace(type, CategorizedType{type, gf_categoryOfType(type)});
        }
    }
    return types;
}

void fillSimilarWithLiveries() {
    SimilarWithLiveries.clear();
    const auto types = typesWithLivery();
    for (const auto& list : listsOf([&types](const std::string& type) { return types.contains(type); })) {
        const auto [entry, isNew] = SimilarWithLiveries.try_emplace(list.front());
        if (isNew) {
            std::transform(list.begin() + 1, list.end(), std::back_inserter(entry->second),
                           [&types](const std::string& type) { return types.at(type); });
        }
    }
}

/// SimilarWithLiveries the other way round: from what an airline has to the types that it could stand in for.
class SimilarPlaces {
public:
    SimilarPlaces() {
        for (const auto& [type, similar] : SimilarWithLiveries) {
            lists_.push_back({type, &similar});
        }
        std::sort(lists_.begin(), lists_.end(), [](const List& a, const List& b) { return a.type < b.type; });
        typeNumbers.clear();
        for (std::uint32_t list = 0; list < lists_.size(); ++list) {
            typeNumbers.emplace(lists_[list].type, list);
            notePlaces(list);
        }
        isOwn_.resize(lists_.size());
    }

    AirlineSubstitutes substitutesOf(const AirlineTypes& types) {
        takeFleet(types);
        AirlineSubstitutes substitutes;
        substitutes.makeRoom(places_.size());
        const std::uint32_t* last = nullptr;
        for (const Place& place : places_) {
            if (last == nullptr || *last != place.list) {
                substitutes.beginType(place.list);
            }
            substitutes.add((*lists_[place.list].similar)[place.position]);
            last = &place.list;
        }
        return substitutes;
    }

private:
    /// Of SimilarWithLiveries.
    struct List {
        std::string_view type;
        const std::vector<CategorizedType>* similar;
    };

    struct Place {
        std::uint32_t list;
        std::uint32_t position; ///< among the similar types

        friend auto operator<=>(const Place&, const Place&) = default;
    };

    /// Where a type stands.
    struct Type {
        std::optional<std::uint32_t> ownList;
        std::vector<Place> places;
    };

    void notePlaces(std::uint32_t list) {
        types_[lists_[list].type].ownList = list;
        const std::vector<CategorizedType>& similar = *lists_[list].similar;
        for (std::uint32_t position = 0; position < similar.size(); ++position) {
            types_[similar[position].type].places.push_back({list, position});
        }
    }

    /// The places of all that the airline has, but for the lists of types that it has itself; in their order.
    void takeFleet(const AirlineTypes& types) {
        places_.clear();
        std::fill(isOwn_.begin(), isOwn_.end(), false);
        for (const auto& [type, titles] : types) {
            if (const auto known = types_.find(type); known != types_.end()) {
                places_.insert(places_.end(), known->second.places.begin(), known->second.places.end());
                if (known->second.ownList) {
                    isOwn_[*known->second.ownList] = true;
                }
            }
        }
        std::erase_if(places_, [this](const Place& place) { return isOwn_[place.list] != 0; });
        std::sort(places_.begin(), places_.end());
    }

    std::vector<List> lists_; ///< ascending by type
    std::unordered_map<std::string_view, Type> types_;
    std::vector<Place> places_; ///< of the airline in hand
    std::vector<char> isOwn_;   ///< by list: of a type that the airline has; bytes are faster than bits
};

void fillSimilarByAirline() {
    SimilarByAirline.clear();
    SimilarPlaces similar;
    for (const auto& [key, unused] : AirlineTable) {
        const std::string_view code = key;
        const std::string_view airline = code.substr(0, airlineCodeLength);
        const auto known = AirlineTable.find(airline);
        if (known == AirlineTable.end()) {
            continue;
        }
        if (AirlineSubstitutes substitutes = similar.substitutesOf(known->second); substitutes.size() > 0) {
            SimilarByAirline.insert_or_assign(std::string(airline), std::move(substitutes));
        }
    }
}

} // namespace

std::span<CategorizedType> AirlineSubstitutes::of(std::string_view missing) {
    const auto number = typeNumbers.find(missing);
    if (number == typeNumbers.end()) {
        return {};
    }
    const auto list = std::lower_bound(lists_.begin(), lists_.end(), number->second,
                                       [](const List& one, std::uint32_t type) { return one.missing < type; });
    if (list == lists_.end() || list->missing != number->second) {
        return {};
    }
    return std::span(types_).subspan(list->begin, list->end - list->begin);
}

void AirlineSubstitutes::makeRoom(std::size_t missingTypes) {
    lists_.reserve(missingTypes);
    types_.reserve(missingTypes);
}

void AirlineSubstitutes::beginType(std::uint32_t missing) {
    const auto end = static_cast<std::uint32_t>(types_.size());
    lists_.push_back({missing, end, end});
}

void AirlineSubstitutes::add(const CategorizedType& substitute) {
    types_.push_back(substitute);
    ++lists_.back().end;
}

void lf_buildSimilarModels() {
    fillSimilarAll();
    fillSimilarWithLiveries();
    fillSimilarByAirline();
    log(fmt::format("{} similar model definitions", SimilarAll.size()));
}

void clearSimilarModels() {
    SimilarByAirline.clear();
    typeNumbers.clear();
    SimilarWithLiveries.clear();
    SimilarAll.clear();
}
