// core/injection_radius.cpp
#include "core/injection_radius.h"

#include <algorithm>
#include <cmath>

#include "core/geography.h"
#include "core/parameters.h"

std::atomic<double> gRadiusNm{40};
std::atomic<double> gRadiusMeters{40 * metersPerNm};

void gf_setInjectionRadius(double nm) {
    const double radiusNm = std::clamp<double>(nm, RANGE.minimum, RANGE.maximum);
    gRadiusNm = radiusNm;
    gRadiusMeters = radiusNm * metersPerNm;
    showChoice(RANGE, static_cast<int>(std::lround(radiusNm)));
}
