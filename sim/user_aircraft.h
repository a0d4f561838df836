// sim/user_aircraft.h
// What the simulator tells of the user's aircraft: title, model, position. SimClient only.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "sim/user_state.h"

/// Keeps and shows a new title; one of more than 48 characters is cut.
void onUserTitle(std::string_view title);

/// Decides wing span and category. Throws kvd::UserErrorException 71 for an empty model, 73 when anything else goes
/// wrong.
void onUserModel(const std::string& model);

/// Counts only once there is a position.
void onUserOnGround(bool onGround);

/// Keeps the position, and asks for the stand there. One far from the last one is a new flight.
void onUserPosition(std::uint32_t objectId, const UserState& reported);

void resetUserAircraft();
