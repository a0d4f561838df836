// engine/airport_in_use.h
// The airport whose ground traffic the program looks after. Run thread only.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/geography.h"

struct AirportInUse {
    std::string code; ///< ICAO
    std::string iata; ///< the feed's routes may have either
    LatLon position;
    double altFeet = 0; ///< field elevation

    bool hasCode(std::string_view text) const { return !text.empty() && (text == code || text == iata); }
};

/// Nothing while the user is near none.
extern std::optional<AirportInUse> gAirportInUse;

/// Its field elevation in feet, or the other value while there is none.
double airportAltitudeOr(double otherwiseFeet);
