// liveries/failed_titles.cpp
#include "liveries/failed_titles.h"

#include <cstddef>

#include <fmt/format.h>

#include "core/exit_reason.h"
#include "core/log.h"
#include "core/user_error.h"
#include "window/window_state.h"

TextSet FailedTitles;
TextSet NoCreateList;

namespace {

constexpr int tooManyTitlesError = 81;
/// So many refused titles mean that something is wrong with the user's liveries as a whole.
constexpr std::size_t tooManyTitles = 20;

void refuseToGoOn() {
    const std::string text = "There are too many liveries that could not be created!";
    showMessage(text, LogCopy::no);
    log(fmt::format("\n{}Error 81, {}\n", "===> ", text));
    throw kvd::UserErrorException(tooManyTitlesError, fmt::format("{}, see Log.txt", text));
}

} // namespace

void gf_noteFailedTitle(const AircraftRecord& aircraft) {
    if (!gf_isStopping()) {
        showMessage(fmt::format("{} '{}' could not be created by your Sim!", aircraft.callsign, aircraft.liveryTitle),
                    LogCopy::yes);
    }
    FailedTitles.emplace(aircraft.liveryTitle);
    NoCreateList.insert(fmt::format("{} {}", aircraft.model, aircraft.airline));
    if (FailedTitles.size() >= tooManyTitles) {
        refuseToGoOn();
    }
}

void resetFailedTitles() {
    FailedTitles.clear();
    NoCreateList.clear();
}
