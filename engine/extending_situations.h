// engine/extending_situations.h
// What a new sample means to an aircraft whose stream was extended or held. Engine thread only.
#pragma once

#include "engine/live_aircraft.h"

/// Whether the sample is to be taken; it may be changed. For an aircraft out of "birth".
bool checkExtendingSituations(LiveAircraft& aircraft, Sample& sample);
