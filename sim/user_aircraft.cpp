// sim/user_aircraft.cpp
#include "sim/user_aircraft.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include <fmt/format.h>

#include "core/geography.h"
#include "core/log.h"
#include "core/run_flags.h"
#include "core/user_error.h"
#include "liveries/aircraft_types.h"
#include "platform/text_encoding.h"
#include "sim/simulator_link.h"
#include "sim/stand_requests.h"
#include "window/window_state.h"

namespace {

constexpr std::size_t longestTitle = 48;
constexpr std::size_t longestTypeCode = 4;
constexpr double teleportNm = 10;

constexpr int modelIsEmpty = 71;
constexpr int noAircraftSelected = 73;

/// What stands in for vehicles that are no aircraft.
constexpr const char* standInModel = "E190";

/// Add-ons whose model is no type code.
struct TitledModel {
    std::string_view titleBegin;
    const char* model;
};

constexpr std::array<TitledModel, 3> titledModels{{
    {"Aerosoft A319", "A319"},
    {"Aerosoft A320", "A320"},
    {"Aerosoft A321", "A321"},
}};

LatLon userPreviousPos;

/// Counts characters, and leaves none of them half.
std::string_view cutAtCharacters(std::string_view utf8, std::size_t most) {
    std::size_t characters = 0;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const bool begins = (static_cast<unsigned char>(utf8[i]) & 0xC0U) != 0x80U;
        if (begins && ++characters > most) {
            return utf8.substr(0, i);
        }
    }
    return utf8;
}

/// Half the wing span in nautical miles, as the type itself has it.
std::optional<double> knownSpan(std::string_view type) {
    const auto found = gHalfWingspans.find(type);
    if (found == gHalfWingspans.end() || !std::isfinite(found->second) || found->second == 0) {
        return std::nullopt;
    }
    return found->second;
}

std::optional<double> spanOfModel(std::string_view model) {
    return model.size() > longestTypeCode ? std::nullopt : knownSpan(model);
}

const char* modelFromTitle(std::string_view title) {
    const auto found = std::find_if(titledModels.begin(), titledModels.end(), [title](const TitledModel& titled) {
        return title.starts_with(titled.titleBegin);
    });
    return found == titledModels.end() ? nullptr : found->model;
}

void takeSpan(const std::optional<double>& span) {
    userHalfSpan = span.value_or(MaxHalfWingspan);
    halfSpanKnown = span.has_value();
}

std::string modelLine(const std::string& model) {
    return "SimConnect: User aircraft model: " + model;
}

/// A camera or a boat: small enough for any place.
void takeStandIn(const std::string& model) {
    takeSpan(knownSpan(standInModel));
    halfSpanKnown = true;
    userCategory = AircraftCategory::Light;
    log(modelLine(model));
}

void takeAircraft(const std::string& rawModel) {
    std::string model = rawModel;
    std::optional<double> span = spanOfModel(model);
    if (const char* const deduced = modelFromTitle(userTitle); !span && deduced != nullptr) {
        model = deduced;
        log("SimConnect: User aircraft model deduced from title: " + model);
        span = spanOfModel(model);
    }
    takeSpan(span);
    std::string line = modelLine(rawModel);
    if (span) {
        line += fmt::format(", half wing span: {:.1F} meter", *span * metersPerNm);
    } else {
        showMessage("User aircraft wing span unknown, max is taken instead, please report in my Forum!", LogCopy::no);
    }
    userCategory = gf_categoryOfType(model);
    log(line + fmt::format(", category: {}", printedName(userCategory)));
}

void decideSpanAndCategory(const std::string& model) {
    log(fmt::format("model raw: {}", model));
    if (model.find("camerapod") != std::string::npos || model.find("Crew Vessel") != std::string::npos) {
        takeStandIn(model);
    } else {
        takeAircraft(model);
    }
}

bool isTeleport(const LatLon& from, const LatLon& to) {
    return isPosition(from) && isPosition(to) && greatCircleNm(from, to) > teleportNm;
}

} // namespace

void onUserTitle(std::string_view title) {
    if (title.empty()) {
        log("! Title of your aircraft is empty?");
        return;
    }
    const std::string readable = platform::readableText(title);
    const std::string_view cut = cutAtCharacters(readable, longestTitle);
    if (cut == userTitle) {
        return;
    }
    userTitle = cut;
    showUserTitle(userTitle);
    log("SimConnect: User aircraft title: " + userTitle);
}

void onUserModel(const std::string& model) {
    if (model.empty()) {
        throw kvd::UserErrorException(modelIsEmpty,
                                      "atc_model= in [General] section of your aircraft.cfg is empty or missing");
    }
    try {
        decideSpanAndCategory(platform::readableText(model));
    } catch (const kvd::UserErrorException&) {
        throw;
    } catch (...) {
        throw kvd::UserErrorException(noAircraftSelected,
                                      "It looks like you have not selected an aircraft as user vehicle");
    }
}

void onUserOnGround(bool onGround) {
    if (isPosition(positionOf(userStateNow()))) {
        userOnGround = onGround;
        userOnGroundKnown = true;
    }
    secondPulse = true;
}

void onUserPosition(std::uint32_t objectId, const UserState& reported) {
    UserState state = reported;
    state.altAboveGround = std::max(state.altAboveGround, 0.0);
    setUserState(state);
    const LatLon position = positionOf(state);
    if (isTeleport(userPreviousPos, position)) {
        log("Teleport");
        newFlightBegins();
    }
    userPreviousPos = position;
    wantUserStand();
    if (gRealTrafficHistoric) {
        simSeconds = epochSeconds(state);
    }
    userObjectId = objectId;
}

void resetUserAircraft() {
    userPreviousPos = {};
}
