// engine/airport_in_use.cpp
#include "engine/airport_in_use.h"

std::optional<AirportInUse> gAirportInUse;

double airportAltitudeOr(double otherwiseFeet) {
    return gAirportInUse ? gAirportInUse->altFeet : otherwiseFeet;
}
