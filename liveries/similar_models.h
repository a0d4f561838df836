// liveries/similar_models.h
// Which types may stand in for another one: part of the tables that the search for a livery reads
// (liveries/livery_tables.h). Built at the start-up, beside the tables of titles, before traffic
// starts; afterwards the engine thread reads them and changes their order.
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/aircraft_category.h"
#include "liveries/reference_tables.h"

/// A type code and its category, which is dear to look up.
struct CategorizedType {
    std::string_view type; ///< good as long as the tables
    AircraftCategory category = AircraftCategory::Light;

    friend auto operator<=>(const CategorizedType&, const CategorizedType&) = default;
};

/// What an airline may take for the types that it has no livery of: one list a missing type, all in two blocks of
/// memory, for there are a hundred thousand of them.
class AirlineSubstitutes {
public:
    /// The types in place of a missing one, in an order that the caller may change; none if it has none.
    std::span<CategorizedType> of(std::string_view missing);

    void makeRoom(std::size_t substitutes);
    /// By the number of the missing type among those of SimilarWithLiveries; numbers must ascend.
    void add(std::uint32_t missing, std::span<const CategorizedType> substitutes);

    /// The number of missing types.
    std::size_t size() const { return lists_.size(); }

private:
    /// A number, for the text of a type lies elsewhere, and the search for one looks at many.
    struct List {
        std::uint32_t missing = 0;
        std::uint32_t begin = 0; ///< in types_
        std::uint32_t end = 0;
    };
    std::vector<List> lists_;
    std::vector<CategorizedType> types_;
};

/// Type to the other types of its similar group.
extern TextTable<std::vector<std::string>> SimilarAll;
/// The same, as far as there is a livery of them.
extern TextTable<std::vector<CategorizedType>> SimilarWithLiveries;
/// Airline and a type that it has no livery of, to the similar types that it has liveries of.
extern TextTable<AirlineSubstitutes> SimilarByAirline;

/// SimilarAll, SimilarWithLiveries and SimilarByAirline from AirlineTable, and one log line.
void lf_buildSimilarModels();

// The pieces of it, for who has other work to do meanwhile.

/// SimilarAll, for which no livery is needed.
void fillSimilarAll();
/// How many definitions SimilarAll holds, to the log.
void logSimilarModels();
/// The other two, from SimilarAll and AirlineTable; looks at no other table.
void fillSimilarOfLiveries();

/// No similar types.
void clearSimilarModels();
