// liveries/similar_models.cpp
#include "liveries/similar_models.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <memory_resource>
#include <numeric>
#include <utility>
#include <variant>

#include <fmt/format.h>

#include "core/log.h"
#include "liveries/aircraft_types.h"
#include "liveries/livery_tables.h"

TextTable<std::vector<std::string>> SimilarAll;
TextTable<std::vector<CategorizedType>> SimilarWithLiveries;
TextTable<AirlineSubstitutes> SimilarByAirline;

namespace {

constexpr std::size_t airlineCodeLength = 3;

/// The types of SimilarWithLiveries, which it views: those that have a list in ascending order, then those that only
/// stand in lists. A type's number is its place.
FlatTextTable<std::monostate> knownTypes(std::pmr::get_default_resource());

/// As views of AirlineTable.
FlatTextTable<std::monostate> typesWithLivery() {
    FlatTextTable<std::monostate> found(std::pmr::get_default_resource());
    for (const auto& [airline, types] : AirlineTable) {
        for (const auto& [type, titles] : types) {
            found.try_emplace_view(type);
        }
    }
    return found;
}

/// Of a type that stands in several groups the first list in ascending order counts.
template <typename Lists, typename List>
void keepFirst(Lists& lists, const std::string& type, List list) {
    if (list.empty()) {
        return;
    }
    const auto [entry, isNew] = lists.try_emplace(type, list);
    if (!isNew && list < entry->second) {
        entry->second = std::move(list);
    }
}

/// Those of the group that have a livery. Views the keys of SimilarAll.
std::vector<CategorizedType> withLivery(const SimilarGroup& group, const FlatTextTable<std::monostate>& liveries) {
    std::vector<CategorizedType> types;
    for (const std::string& member : group) {
        if (const auto known = SimilarAll.find(member); known != SimilarAll.end() && liveries.contains(member)) {
            types.push_back({known->first, gf_categoryOfType(member)});
        }
    }
    return types;
}

void fillSimilarWithLiveries() {
    SimilarWithLiveries.clear();
    const FlatTextTable<std::monostate> liveries = typesWithLivery();
    for (const SimilarGroup& group : gSimilarGroups) {
        const std::vector<CategorizedType> types = withLivery(group, liveries);
        for (const std::string& member : group) {
            std::vector<CategorizedType> others;
            std::copy_if(types.begin(), types.end(), std::back_inserter(others),
                         [&member](const CategorizedType& other) { return other.type != member; });
            keepFirst(SimilarWithLiveries, member, std::move(others));
        }
    }
}

/// A set of small numbers.
class NumberSet {
public:
    explicit NumberSet(std::size_t numbers) : words_(numbers / bitsPerWord + 1) {}

    void insert(std::size_t number) { words_[number / bitsPerWord] |= std::uint64_t{1} << number % bitsPerWord; }
    /// 0 or 1.
    std::size_t count(std::size_t number) const { return words_[number / bitsPerWord] >> number % bitsPerWord & 1; }
    void clear() { std::fill(words_.begin(), words_.end(), 0); }

    std::size_t size() const {
        return std::transform_reduce(words_.begin(), words_.end(), std::size_t{0}, std::plus(),
                                     [](std::uint64_t word) { return static_cast<std::size_t>(std::popcount(word)); });
    }

    /// All of the other set, which has the same size.
    void insert(const NumberSet& others) {
        std::transform(words_.begin(), words_.end(), others.words_.begin(), words_.begin(), std::bit_or());
    }

    /// Calls with those that are not in the other set, which may be larger, ascending.
    template <typename Call>
    void forEachNotIn(const NumberSet& others, Call call) const {
        for (std::size_t word = 0; word < words_.size(); ++word) {
            for (std::uint64_t bits = words_[word] & ~others.words_[word]; bits != 0; bits &= bits - 1) {
                call(word * bitsPerWord + static_cast<std::size_t>(std::countr_zero(bits)));
            }
        }
    }

private:
    static constexpr std::size_t bitsPerWord = 64;

    std::vector<std::uint64_t> words_;
};

std::uint32_t numberOf(std::string_view type) {
    const auto entry = knownTypes.try_emplace_view(type).first; // before begin(), which it may move
    return static_cast<std::uint32_t>(entry - knownTypes.begin());
}

/// SimilarWithLiveries by number, and the other way round: from what an airline has to the types that it could stand in
/// for. A hundred thousand answers, so without a branch that nobody could foresee.
class SimilarPlaces {
public:
    SimilarPlaces() : SimilarPlaces(ascendingLists()) {}

    AirlineSubstitutes substitutesOf(const AirlineTypes& types) {
        AirlineSubstitutes substitutes;
        substitutes.makeRoom(takeFleet(types));
        wanted_.forEachNotIn(fleet_, [&](std::size_t type) {
            const std::span<const CategorizedType> found = ofFleet(lists_[type]);
            substitutes.add(static_cast<std::uint32_t>(type), found);
        });
        return substitutes;
    }

private:
    struct Member {
        CategorizedType type;
        std::uint32_t number;
    };
    using List = std::vector<Member>;

    /// The lists and those of their types that have none.
    static std::vector<List> ascendingLists() {
        std::map<std::string_view, const std::vector<CategorizedType>*> ascending;
        for (const auto& [type, similar] : SimilarWithLiveries) {
            ascending.emplace(type, &similar);
        }
        for (const auto& [type, similar] : ascending) {
            numberOf(type);
        }
        std::vector<List> lists;
        for (const auto& [type, similar] : ascending) {
            List& list = lists.emplace_back();
            std::transform(similar->begin(), similar->end(), std::back_inserter(list),
                           [](const CategorizedType& other) {
                               return Member{other, numberOf(other.type)};
                           });
        }
        return lists;
    }

    explicit SimilarPlaces(std::vector<List> lists)
        : lists_(std::move(lists)), places_(knownTypes.size(), NumberSet(lists_.size())), fleet_(knownTypes.size()),
          wanted_(lists_.size()) {
        std::size_t longest = 0;
        for (std::size_t list = 0; list < lists_.size(); ++list) {
            for (const Member& member : lists_[list]) {
                places_[member.number].insert(list);
            }
            longest = std::max(longest, lists_[list].size());
        }
        found_.resize(longest + 1);
    }

    /// How often the types of the fleet stand in lists.
    std::size_t takeFleet(const AirlineTypes& types) {
        fleet_.clear();
        wanted_.clear();
        std::size_t count = 0;
        for (const auto& [type, titles] : types) {
            if (const auto known = knownTypes.find(type); known != knownTypes.end()) {
                const auto number = static_cast<std::size_t>(known - knownTypes.begin());
                fleet_.insert(number);
                wanted_.insert(places_[number]);
                count += places_[number].size();
            }
        }
        return count;
    }

    /// Good until the next call.
    std::span<const CategorizedType> ofFleet(const List& list) {
        std::size_t count = 0;
        for (const Member& member : list) {
            found_[count] = member.type;
            count += fleet_.count(member.number);
        }
        return std::span(found_).first(count);
    }

    std::vector<List> lists_;            ///< by number of type
    std::vector<NumberSet> places_;      ///< the lists that a type stands in, by its number
    NumberSet fleet_;                    ///< the types of the airline in hand
    NumberSet wanted_;                   ///< the lists with any of them
    std::vector<CategorizedType> found_; ///< room for the longest list, and one
};

void fillSimilarByAirline() {
    SimilarByAirline.clear();
    knownTypes.clear();
    SimilarByAirline.reserve(AirlineTable.size());
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
    const auto known = knownTypes.find(missing);
    if (known == knownTypes.end()) {
        return {};
    }
    const auto number = static_cast<std::uint32_t>(known - knownTypes.begin());
    const auto list = std::lower_bound(lists_.begin(), lists_.end(), number,
                                       [](const List& one, std::uint32_t type) { return one.missing < type; });
    if (list == lists_.end() || list->missing != number) {
        return {};
    }
    return std::span(types_).subspan(list->begin, list->end - list->begin);
}

void AirlineSubstitutes::makeRoom(std::size_t substitutes) {
    lists_.reserve(substitutes);
    types_.reserve(substitutes);
}

void AirlineSubstitutes::add(std::uint32_t missing, std::span<const CategorizedType> substitutes) {
    const auto begin = static_cast<std::uint32_t>(types_.size());
    types_.insert(types_.end(), substitutes.begin(), substitutes.end());
    lists_.push_back({missing, begin, static_cast<std::uint32_t>(types_.size())});
}

void lf_buildSimilarModels() {
    fillSimilarAll();
    fillSimilarOfLiveries();
    logSimilarModels();
}

void fillSimilarAll() {
    SimilarAll.clear();
    for (const SimilarGroup& group : gSimilarGroups) {
        for (const std::string& member : group) {
            std::vector<std::string> others;
            std::remove_copy(group.begin(), group.end(), std::back_inserter(others), member);
            keepFirst(SimilarAll, member, std::move(others));
        }
    }
}

void logSimilarModels() {
    log(fmt::format("{} similar model definitions", SimilarAll.size()));
}

void fillSimilarOfLiveries() {
    fillSimilarWithLiveries();
    fillSimilarByAirline();
}

void clearSimilarModels() {
    SimilarByAirline.clear();
    knownTypes.clear();
    SimilarWithLiveries.clear();
    SimilarAll.clear();
}
