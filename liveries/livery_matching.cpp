// liveries/livery_matching.cpp
#include "liveries/livery_matching.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

#include <fmt/format.h>

#include "core/log.h"
#include "core/parameters.h"
#include "core/random.h"
#include "liveries/aircraft_types.h"

std::array<std::uint32_t, match_step::count> MatchesAtStep{};
TextSet NoMatchList;
std::unordered_map<std::uint32_t, std::string_view> hexidLiveries;

namespace {

constexpr std::size_t summaryWidth = 100;

/// Aircraft of a maker whose thrust reversers answer to levers that are pulled back.
constexpr std::string_view reversingMaker = "FSLTL_";

// MATCHING_DEPTH from which on a step is taken.
constexpr int depthOfAirline = 2;
constexpr int depthOfSimilar = 3;
constexpr int depthOfGenericForAll = 4;

std::size_t drawnIndex(std::size_t count) {
    if (!RANDOM.value || count == 1) {
        return 0;
    }
    return static_cast<std::size_t>(gf_randomInt(0, static_cast<int>(count) - 1));
}

/// From the front on; only with RANDOM.
void shuffle(std::span<CategorizedType> types) {
    if (!RANDOM.value) {
        return;
    }
    for (std::size_t i = 0; i + 1 < types.size(); ++i) {
        std::swap(types[i], types[i + drawnIndex(types.size() - i)]);
    }
}

/// Formatted on the stack, for this is in a slot.
void logTitle(const AircraftRecord& aircraft, std::string_view mark) {
    fmt::memory_buffer line;
    fmt::format_to(std::back_inserter(line), "          {} {} {:3} {:4} ={}= {}", aircraft.callsign,
                   aircraft.registration, aircraft.airline, aircraft.model, mark, aircraft.liveryTitle);
    log({line.data(), line.size()});
}

void logStep(const AircraftRecord& aircraft, int step) {
    constexpr std::string_view digits = "0123456";
    logTitle(aircraft, digits.substr(static_cast<std::size_t>(step), 1));
}

void logNoMatch(const AircraftRecord& aircraft) {
    fmt::memory_buffer line;
    fmt::format_to(std::back_inserter(line), "{:8}: {} {} {} no livery match ...", aircraft.callsign, aircraft.airline,
                   aircraft.registration, aircraft.model);
    log({line.data(), line.size()});
}

/// Whether the title is one that the simulator creates; else it goes.
bool dropRefusedTitle(AircraftRecord& aircraft) {
    if (aircraft.liveryTitle.empty() || !FailedTitles.contains(aircraft.liveryTitle)) {
        return !aircraft.liveryTitle.empty();
    }
    aircraft.liveryTitle = {};
    return false;
}

bool acceptStatic(AircraftRecord& aircraft, int step) {
    if (!dropRefusedTitle(aircraft)) {
        return false;
    }
    logStep(aircraft, step);
    return true;
}

bool hasTitleAlready(const AircraftRecord& aircraft) {
    if (aircraft.liveryTitle.empty()) {
        return false;
    }
    logTitle(aircraft, "s");
    return true;
}

// --- The ladder ---

/// What differs between static and live aircraft.
struct Rules {
    bool (*accept)(AircraftRecord&, int step);
    bool needsAirline;        ///< for the steps that go by airline
    bool needsSameCategory;   ///< of a similar type
    bool usesDatabaseSimilar; ///< the similar types of the data base's airline, not of the aircraft's own
};

constexpr Rules staticRules{acceptStatic, false, false, false};
constexpr Rules liveRules{lf_acceptTitle, true, true, true};

/// One walk up the ladder.
class Ladder {
public:
    Ladder(AircraftRecord& aircraft, const Rules& rules) : aircraft_(aircraft), rules_(rules) {}

    bool climb() {
        if (byRegistration()) {
            return true;
        }
        if (MATCHING_DEPTH.value < depthOfAirline) {
            return false;
        }
        if (genericOfPrivateOwner()) {
            return true;
        }
        databaseAirline_ = airlineOfDatabase();
        if (ofAirline()) {
            return true;
        }
        return MATCHING_DEPTH.value >= depthOfSimilar && (similarOfAirline() || generic());
    }

private:
    bool byRegistration() {
        return gf_liveryByRegcode(aircraft_) &&
               accept(UniqueRegcodes.contains(aircraft_.registration) ? match_step::ownAirframe
                                                                      : match_step::registration);
    }

    bool genericOfPrivateOwner() {
        return aircraft_.airline == privateAirline &&
               lf_airlineModelSearch(aircraft_, {genericAirline, aircraft_.model}) &&
               accept(match_step::genericAndType);
    }

    /// Only where the data base knows an operator: it may then correct the feed's airline.
    std::optional<std::string_view> airlineOfDatabase() const {
        const std::optional<DbaseRecord> known = gf_findRegcodeRecord(aircraft_.registration);
        return known && !known->opr.empty() ? std::optional(known->airl) : std::nullopt;
    }

    bool goesByAirline() const { return !rules_.needsAirline || !aircraft_.airline.empty(); }

    bool ofAirline() {
        return goesByAirline() && (exactly(aircraft_.airline) || (databaseAirline_ && exactly(*databaseAirline_)));
    }

    bool exactly(std::string_view airline) {
        return lf_airlineModelSearch(aircraft_, {airline, aircraft_.model}) && accept(match_step::airlineAndType);
    }

    bool similarOfAirline() {
        if (!goesByAirline()) {
            return false;
        }
        std::span<const CategorizedType> similar = gf_similarForAirline(aircraft_.airline, aircraft_.model);
        if (lf_similarSearch(aircraft_.airline, similar)) {
            return true;
        }
        if (!databaseAirline_) {
            return false;
        }
        if (rules_.usesDatabaseSimilar) {
            similar = gf_similarForAirline(*databaseAirline_, aircraft_.model);
        }
        return lf_similarSearch(*databaseAirline_, similar);
    }

    bool lf_similarSearch(std::string_view airline, std::span<const CategorizedType> similar) {
        return std::any_of(similar.begin(), similar.end(), [this, airline](const CategorizedType& other) {
            return (!rules_.needsSameCategory || other.category == aircraft_.category) &&
                   lf_airlineModelSearch(aircraft_, {airline, other.type}) && accept(match_step::airlineAndSimilar);
        });
    }

    bool generic() {
        const int step = lf_genericFallback(aircraft_);
        return !aircraft_.liveryTitle.empty() && accept(step);
    }

    bool accept(int step) { return rules_.accept(aircraft_, step); }

    AircraftRecord& aircraft_;
    const Rules& rules_;
    std::optional<std::string_view> databaseAirline_;
};

/// Airliners and fighters show another airline's paint too plainly.
bool mayWearAnyPaint(AircraftCategory category) {
    return category == AircraftCategory::Light || category == AircraftCategory::Buzjets ||
           category == AircraftCategory::Rotorcraft;
}

bool genericOfType(AircraftRecord& aircraft) {
    return lf_airlineModelSearch(aircraft, {genericAirline, aircraft.model});
}

bool ofSimilarType(AircraftRecord& aircraft) {
    const std::span<const CategorizedType> similar = gf_similarOfType(aircraft.model);
    return std::any_of(similar.begin(), similar.end(),
                       [&aircraft](const CategorizedType& other) { return lf_modelSearch(aircraft, other.type); });
}

void logSorted(const TextSet& texts, std::string_view indent) {
    for (const std::string_view text : std::set<std::string_view>(texts.begin(), texts.end())) {
        log(fmt::format("{}{}", indent, text));
    }
}

} // namespace

std::string noMatchKey(const AircraftRecord& aircraft) {
    return fmt::format("{} {}", aircraftTag(aircraft), aircraft.registration);
}

// With RANDOM the rule is to draw up to five times until the title is not reserved, and then from the unreserved ones
// alone: each unreserved title is as likely as the others, so drawing among them at once is the same.
void lf_pickTitle(AircraftRecord& aircraft, const TitleList& list) {
    const Titles candidates = list.candidates();
    if (!candidates.empty()) {
        aircraft.liveryTitle = candidates[drawnIndex(candidates.size())];
    }
}

bool lf_tableSearch(AircraftRecord& aircraft, const AirlineModelKey& key, std::size_t index) {
    const auto& airlines = AirlineModelTable.at(index);
    if (const auto airline = airlines.find(key.airline); airline != airlines.end()) {
        if (const auto type = airline->second.find(key.model); type != airline->second.end()) {
            lf_pickTitle(aircraft, type->second);
        }
    }
    return !aircraft.liveryTitle.empty();
}

bool lf_airlineModelSearch(AircraftRecord& aircraft, const AirlineModelKey& key) {
    return (aircraft.isCargo != 0 && lf_tableSearch(aircraft, key, cargoIndex)) ||
           lf_tableSearch(aircraft, key, passengerIndex);
}

bool lf_modelSearch(AircraftRecord& aircraft, std::string_view type) {
    const auto& types = ModelTable[aircraft.isCargo != 0 ? cargoIndex : passengerIndex];
    if (const auto known = types.find(type); known != types.end()) {
        lf_pickTitle(aircraft, known->second);
    }
    return !aircraft.liveryTitle.empty();
}

bool gf_liveryByRegcode(AircraftRecord& aircraft) {
    if (aircraft.registration.empty()) {
        return false;
    }
    const auto own = RegcodeTable.find(aircraft.registration);
    aircraft.liveryTitle = own == RegcodeTable.end() ? std::string_view() : own->second;
    return !aircraft.liveryTitle.empty();
}

std::span<const CategorizedType> gf_similarForAirline(std::string_view airline, std::string_view type) {
    const auto ofAirline = SimilarByAirline.find(airline);
    if (ofAirline == SimilarByAirline.end()) {
        return {};
    }
    const std::span<CategorizedType> similar = ofAirline->second.of(type);
    shuffle(similar);
    return similar;
}

std::span<const CategorizedType> gf_similarOfType(std::string_view type) {
    if (const auto similar = SimilarWithLiveries.find(type); similar != SimilarWithLiveries.end()) {
        shuffle(similar->second);
        return similar->second;
    }
    const std::vector<CategorizedType>* types = randomTypesOf(gf_categoryOfType(type));
    if (types == nullptr || types->empty()) {
        return {};
    }
    return {&(*types)[drawnIndex(types->size())], 1};
}

int lf_genericFallback(AircraftRecord& aircraft) {
    if (aircraft.liveryTitle.empty() && MATCHING_DEPTH.value == depthOfGenericForAll && genericOfType(aircraft)) {
        return match_step::genericAndType;
    }
    if (!aircraft.liveryTitle.empty() || !mayWearAnyPaint(aircraft.category)) {
        return match_step::genericAndType;
    }
    if (MATCHING_DEPTH.value >= depthOfSimilar && aircraft.airline != privateAirline && genericOfType(aircraft)) {
        return match_step::genericAndType;
    }
    if (lf_modelSearch(aircraft, aircraft.model)) {
        return match_step::anyAirlineAndType;
    }
    ofSimilarType(aircraft);
    return match_step::anyAirlineAndSimilar;
}

bool lf_acceptTitle(AircraftRecord& aircraft, int step) {
    if (!dropRefusedTitle(aircraft)) {
        return false;
    }
    ++MatchesAtStep.at(static_cast<std::size_t>(step));
    logStep(aircraft, step);
    aircraft.reverseOnLanding = aircraft.liveryTitle.find(reversingMaker) != std::string_view::npos ? 1 : 0;
    return true;
}

bool gf_matchLivery(AircraftRecord& aircraft, bool isCargo) {
    if (hasTitleAlready(aircraft)) {
        return true;
    }
    aircraft.isCargo = isCargo ? 1 : 0;
    if (Ladder(aircraft, staticRules).climb()) {
        return true;
    }
    logNoMatch(aircraft);
    return false;
}

void gf_rematchLivery(AircraftRecord& aircraft) {
    if (!hasTitleAlready(aircraft)) {
        Ladder(aircraft, liveRules).climb();
    }
}

void gf_matchingSummary() {
    if (std::all_of(MatchesAtStep.begin(), MatchesAtStep.end(), [](std::uint32_t count) { return count == 0; })) {
        return;
    }
    log(bannerLine("live traffic livery matching summary", summaryWidth));
    log("Matches at step: ");
    for (std::size_t step = 0; step < MatchesAtStep.size(); ++step) {
        log(fmt::format("  {}: {}", step, MatchesAtStep[step]));
    }
    if (!NoCreateList.empty()) {
        log("\nCould not be created");
        logSorted(NoCreateList, "  ");
    }
    log(bannerLine({}, summaryWidth));
}

void gf_noMatchReport() {
    if (NoMatchList.empty()) {
        return;
    }
    log("\nNo match found for:");
    logSorted(NoMatchList, "");
    log("");
}

void forgetLiveMatches() {
    NoMatchList.clear();
    hexidLiveries.clear();
}

void resetLiveryMatching() {
    forgetLiveMatches();
    MatchesAtStep = {};
}
