// liveries/similar_models.cpp
#include "liveries/similar_models.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <numeric>
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

/// The types that have a livery and a similar type. Views the keys of SimilarAll, which knows every type that has a similar
/// one.
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

/// SimilarWithLiveries by numbers: what is asked of each airline is asked of flags.
class SimilarByNumber {
public:
    SimilarByNumber() {
        for (const auto& [type, similar] : SimilarWithLiveries) {
            entries_.push_back({type, &similar, {}});
        }
        std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) { return a.type < b.type; });
        for (std::size_t entry = 0; entry < entries_.size(); ++entry) {
            noteSimilar(entry);
        }
        had_.resize(types_.size());
        isWanted_.resize(entries_.size() / bitsPerWord + 1);
    }

    AirlineSubstitutes substitutesOf(const AirlineTypes& types) {
        takeFleet(types);
        AirlineSubstitutes substitutes;
        substitutes.makeRoom(wantedCount());
        for (std::size_t word = 0; word < isWanted_.size(); ++word) {
            for (std::uint64_t bits = isWanted_[word]; bits != 0; bits &= bits - 1) {
                append(entries_[word * bitsPerWord + static_cast<std::size_t>(std::countr_zero(bits))], substitutes);
            }
        }
        return substitutes;
    }

private:
    static constexpr std::size_t bitsPerWord = 64;

    struct Entry {
        std::string_view type;
        const std::vector<CategorizedType>* similar;
        std::vector<std::size_t> numbers; ///< of the similar types, in their order
    };

    struct Type {
        std::optional<std::size_t> entry;  ///< its own
        std::vector<std::size_t> admirers; ///< the entries that have it among their similar types
    };

    std::size_t numberOf(std::string_view type) {
        const auto [known, isNew] = numbers_.try_emplace(std::string(type), types_.size());
        if (isNew) {
            types_.emplace_back();
        }
        return known->second;
    }

    void noteSimilar(std::size_t entry) {
        types_[numberOf(entries_[entry].type)].entry = entry;
        for (const CategorizedType& other : *entries_[entry].similar) {
            const std::size_t number = numberOf(other.type);
            entries_[entry].numbers.push_back(number);
            types_[number].admirers.push_back(entry);
        }
    }

    void want(std::size_t entry) { isWanted_[entry / bitsPerWord] |= std::uint64_t{1} << entry % bitsPerWord; }
    void drop(std::size_t entry) { isWanted_[entry / bitsPerWord] &= ~(std::uint64_t{1} << entry % bitsPerWord); }

    std::size_t wantedCount() const {
        return std::accumulate(
            isWanted_.begin(), isWanted_.end(), std::size_t{0},
            [](std::size_t sum, std::uint64_t bits) { return sum + static_cast<std::size_t>(std::popcount(bits)); });
    }

    /// Notes what the airline has, and the entries of what it has not that have any of it among their similar types.
    void takeFleet(const AirlineTypes& types) {
        std::fill(had_.begin(), had_.end(), false);
        std::fill(isWanted_.begin(), isWanted_.end(), 0);
        for (const auto& [type, titles] : types) {
            if (const auto known = numbers_.find(type); known != numbers_.end()) {
                had_[known->second] = true;
                const std::vector<std::size_t>& admirers = types_[known->second].admirers;
                std::for_each(admirers.begin(), admirers.end(), [this](std::size_t entry) { want(entry); });
            }
        }
        for (std::size_t number = 0; number < had_.size(); ++number) {
            if (had_[number] && types_[number].entry) {
                drop(*types_[number].entry);
            }
        }
    }

    void append(const Entry& entry, AirlineSubstitutes& substitutes) const {
        substitutes.beginType(entry.type);
        for (std::size_t i = 0; i < entry.numbers.size(); ++i) {
            if (had_[entry.numbers[i]]) {
                substitutes.add((*entry.similar)[i]);
            }
        }
    }

    std::vector<Entry> entries_; ///< ascending by type
    std::vector<Type> types_;    ///< by number
    TextTable<std::size_t> numbers_;
    std::vector<char> had_;               ///< by number: by the airline in hand; bytes are faster than bits
    std::vector<std::uint64_t> isWanted_; ///< by entry, in bits, for few are
};

void fillSimilarByAirline() {
    SimilarByAirline.clear();
    SimilarByNumber similar;
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
    const auto list = std::lower_bound(lists_.begin(), lists_.end(), missing,
                                       [](const List& one, std::string_view type) { return one.missing < type; });
    if (list == lists_.end() || list->missing != missing) {
        return {};
    }
    return std::span(types_).subspan(list->begin, list->end - list->begin);
}

void AirlineSubstitutes::makeRoom(std::size_t missingTypes) {
    lists_.reserve(missingTypes);
    types_.reserve(missingTypes);
}

void AirlineSubstitutes::beginType(std::string_view missing) {
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
    SimilarWithLiveries.clear();
    SimilarAll.clear();
}
