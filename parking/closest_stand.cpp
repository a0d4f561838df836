// parking/closest_stand.cpp
#include "parking/closest_stand.h"

#include <exception>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "core/log.h"
#include "core/number_text.h"
#include "core/text_parts.h"
#include "distribution/clear_file.h"
#include "platform/files.h"

namespace fs = std::filesystem;

namespace {

AirportFileAccess fileAccess; // run thread

double degrees(const pugi::xml_node& stand, const char* name) {
    return parseDouble(trimmed(stand.attribute(name).as_string())).value_or(0.0);
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

ClosestStand closestStandOnServer(const std::string& path, const LatLon& position) {
    const fs::path local = "airports/airport.xml";
    if (!fileAccess.download || !fileAccess.download(path, local).empty()) {
        return {}; // a file of that name is not the download, and stays
    }
    const ClearFile arrived(local); // goes in the end, whatever came
    return lf_closestStandInFile(arrived.path(), position);
}

ClosestStand closestStandOf(std::string_view code, const LatLon& position) {
    const std::string path = fileAccess.find ? fileAccess.find(code) : std::string();
    if (path.empty()) {
        return {};
    }
    if (!path.starts_with("airports")) {
        return closestStandOnServer(path, position);
    }
    return lf_closestStandInFile(platform::pathFromUtf8(path), position);
}

} // namespace

void setAirportFileAccess(AirportFileAccess access) {
    fileAccess = std::move(access);
}

ClosestStand lf_closestStandInFile(const fs::path& path, const LatLon& position) {
    pugi::xml_document document;
    if (!document.load_file(path.c_str())) {
        return {}; // what was read before the fault stands in the document, but counts for nothing
    }
    return closestOf(document.child("parkpositions"), position);
}

double gf_readDestApfForClosestStand(std::string_view code, const LatLon& position, std::string& standId) {
    try {
        ClosestStand closest = closestStandOf(code, position);
        standId = std::move(closest.id);
        return closest.distanceNm;
    } catch (const std::exception& exception) {
        log(fmt::format("{}: {}", "gf_readDestApfForClosestStand", exception.what()));
        return noStandNm;
    }
}
