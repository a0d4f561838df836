// core/injection_radius.h
// The radius round the user within which traffic is injected; chosen or computed.
#pragma once

#include <atomic>

/// Written by gf_setInjectionRadius alone (window thread or run thread), read by any thread. The pair is not read as
/// one.
extern std::atomic<double> gRadiusNm;
extern std::atomic<double> gRadiusMeters;

/// Clamps the radius into the limits of RANGE, selects it in that combo and keeps it; the setting itself stays as
/// chosen.
void gf_setInjectionRadius(double nm);
