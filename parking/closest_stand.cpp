// parking/closest_stand.cpp
#include "parking/closest_stand.h"

#include <string_view>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "core/log.h"
#include "core/number_text.h"

namespace fs = std::filesystem;

namespace {

double degrees(const pugi::xml_node& stand, const char* name) {
    return parseDouble(stand.attribute(name).as_string()).value_or(0.0);
}

ClosestStand closestOf(const pugi::xml_node& stands, const LatLon& position) {
    ClosestStand closest;
    for (const pugi::xml_node& stand : stands.children("parkpos")) {
        const double distanceNm = greatCircleNm(position, {degrees(stand, "latitude"), degrees(stand, "longitude")});
        if (distanceNm < closest.distanceNm) {
            closest = {distanceNm, stand.attribute("id").as_string()};
        }
    }
    return closest;
}

} // namespace

ClosestStand lf_closestStandInFile(const fs::path& path, const LatLon& position) {
    try {
        pugi::xml_document document;
        if (!document.load_file(path.c_str())) {
            return {}; // what was read before the fault stands in the document, but counts for nothing
        }
        return closestOf(document.child("parkpositions"), position);
    } catch (const std::exception& exception) {
        log(fmt::format("{}: {}", "gf_readDestApfForClosestStand", exception.what()));
        return {};
    }
}

const Airport& lf_closerByStand(const Airport& best, const ClosestStand& standOfBest, const Airport& neighbour,
                                const ClosestStand& standOfNeighbour) {
    if (standOfNeighbour.distanceNm >= standOfBest.distanceNm) {
        return best;
    }
    log(fmt::format("Airport {} is closest, but stand {} at neighbouring airport {} is closer at {:.0F} meters ...",
                    best.code, standOfNeighbour.id, neighbour.code, standOfNeighbour.distanceNm * metersPerNm));
    return neighbour;
}
