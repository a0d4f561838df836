// liveries/livery_matching.cpp
#include "liveries/livery_matching.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <fmt/format.h>

TextTable<std::string_view> RegcodeTable;
TextSet NoMatchList;
std::unordered_map<std::uint32_t, std::string_view> hexidLiveries;

namespace {

std::vector<std::pair<AircraftCategory, std::string_view>> titles;

bool isAccepted(std::string_view title) {
    return !FailedTitles.contains(title);
}

} // namespace

std::string noMatchKey(const AircraftRecord& aircraft) {
    return fmt::format("{} {}", aircraftTag(aircraft), aircraft.registration);
}

void gf_rematchLivery(AircraftRecord& aircraft) {
    if (const auto own = RegcodeTable.find(aircraft.registration);
        own != RegcodeTable.end() && isAccepted(own->second)) {
        aircraft.liveryTitle = own->second;
        return;
    }
    const auto found = std::find_if(titles.begin(), titles.end(), [&aircraft](const auto& entry) {
        return entry.first == aircraft.category && isAccepted(entry.second);
    });
    aircraft.liveryTitle = found == titles.end() ? std::string_view() : found->second;
}

void registerLivery(AircraftCategory category, std::string_view title) {
    titles.emplace_back(category, title);
}

void resetLiveryMatching() {
    titles.clear();
    RegcodeTable.clear();
    NoMatchList.clear();
    hexidLiveries.clear();
}
